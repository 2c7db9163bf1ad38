// SPDX-License-Identifier: MIT
//
// quality::CalibrationReport: whether a calibration may be used, and what to do if not.
#include "quality/CalibrationReport.h"

#include "Turn.h"
#include "quality/SolverRun.h"

#include <cstdio>
#include <string>

namespace {

void Judge(const char* name, const quality::CalibrationRun& run)
{
    const quality::CalibrationReport report = quality::AssessCalibration(run);
    std::printf("%s: %s\n", name, quality::Headline(report).c_str());
    std::printf("  %s\n", std::string(quality::Explain(report.reason)).c_str());
    std::printf("  %s\n", std::string(quality::Advice(report.reason)).c_str());
    std::printf("  %s\n", quality::IsAccepted(report.verdict) ? "store it" : "do not store it");
}

} // namespace

int main()
{
    quality::CalibrationTurns turns;
    turns.horizontal = turn::Record(turn::Axis::Z);
    turns.vertical = turn::Record(turn::Axis::Y);
    Judge("both turns", quality::RunSolver(turns));

    quality::CalibrationTurns disturbed = turns;
    disturbed.horizontal[30].dMag_x += 400.0; // a key ring came close
    Judge("one reading off, solver", quality::RunSolver(disturbed));
    Judge("one reading off, joint fit", quality::RunJointFit(disturbed));

    turns.vertical.resize(turns.vertical.size() / 2);
    Judge("half of the vertical turn", quality::RunJointFit(turns));
}
