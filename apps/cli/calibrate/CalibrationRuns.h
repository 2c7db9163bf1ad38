// SPDX-License-Identifier: MIT
//
// Both ways from two turns to a calibration, each with its report.
#pragma once

#include "quality/CalibrationReport.h"

#include <string>

namespace cli {

struct Assessed
{
    quality::CalibrationRun run;
    quality::CalibrationReport report;
};

/// Runs the solver. Where it fails, standard error says which dump the library appended the
/// horizontal samples to, if any. Arguments as for quality::RunSolver.
Assessed AssessSolver(quality::CalibrationTurns turns, int sensorType, int select);

/// Runs the joint fit; `select` thins what the figures of the report are taken from. Standard error
/// says why where there is none.
Assessed AssessJointFit(quality::CalibrationTurns turns, int sensorType, int select);

/// What the report of a solver's calibration that is not accepted adds about the joint fit of the
/// same turns: its verdict, and how to take it.
std::string DescribeAlternative(const quality::CalibrationReport& joint);

} // namespace cli
