// SPDX-License-Identifier: MIT
//
// The calibration as a host runs it: both sample filters, then the solver.
//
//     const CalibrationRun run = RunSolver(recorded);
//     const CalibrationReport report = AssessCalibration(run);
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"

namespace quality {

/// Screens each turn by its filter (CInclineSensor_Filter_XY, CInclineSensor_Filter_XZ) and hands
/// what is left to CInclineSensor_MagneticAdjust, which tells its failures by message boxes and
/// leaves a dump of the samples. The bias angles stay 0.
///
/// @param recorded    raw samples of both turns, in order of time
/// @param sensorType  goes into the run
/// @param select      thins each screened turn to about so many samples; 0 keeps them all
TILTPOLE_API CalibrationRun RunSolver(CalibrationTurns recorded, int sensorType = 1,
                                      int select = 0);

/// The solver alone, on turns that are screened already: `used` becomes the run's both turns.
TILTPOLE_API CalibrationRun RunSolverUnscreened(CalibrationTurns used, int sensorType = 1);

} // namespace quality
