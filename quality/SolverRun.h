// SPDX-License-Identifier: MIT
/// @file
/// The calibration as a host runs it: both sample filters, then the solver.
///
///     const CalibrationRun run = RunSolver(recorded);
///     const CalibrationReport report = AssessCalibration(run);
///
/// Where memory runs out, std::bad_alloc is thrown, or a filter leaves samples out, which are then
/// missing in `used`, or the solver's answer is 0.
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"

namespace quality {

/// Screens each turn with its filter (CInclineSensor_Filter_XY, CInclineSensor_Filter_XZ) and
/// passes the remaining samples to CInclineSensor_MagneticAdjust, which shows a message box and
/// appends the samples to a dump file when it fails. The bias angles stay 0.
///
/// @param recorded    raw samples of both turns, in order of time [counts, degrees]
/// @param sensorType  stored in the run
/// @param select      thins each screened turn to about this many samples; 0 keeps them all
TILTPOLE_API CalibrationRun RunSolver(CalibrationTurns recorded, int sensorType = 1,
                                      int select = 0);

/// The samples that both filters leave of the turns. Arguments as for RunSolver.
TILTPOLE_API CalibrationTurns ScreenTurns(const CalibrationTurns& recorded, int select = 0);

/// Runs the solver alone, on turns that are screened already: the run has `used` as its recorded
/// and its used turns.
TILTPOLE_API CalibrationRun RunSolverUnscreened(CalibrationTurns used, int sensorType = 1);

/// The joint fit (FitJointly) of the turns as a run, for AssessCalibration: its `used` turns are
/// those that the fit kept, or, where it found nothing (`solverAnswer` 0), those that the filters
/// leave. Arguments as for RunSolver; the bias angles are those of the fit.
TILTPOLE_API CalibrationRun RunJointFit(CalibrationTurns recorded, int sensorType = 1,
                                        int select = 0);

} // namespace quality
