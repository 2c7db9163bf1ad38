// SPDX-License-Identifier: MIT
/// @file
/// A calibration, and the samples it was computed from.
///
///     angles    degrees
///     readings  raw sensor counts; A and B are mounted with x and y opposed
///
///     CalibrationTurns turns;
///     turns.horizontal.push_back(sample); // for every sample of either turn
///     const CalibrationRun run = RunSolver(turns);
#pragma once

#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"

#include <vector>

namespace quality {

/// Everything a host stores in CInclineSensor_Position after a calibration.
struct Calibration
{
    Incline_MagneticCorrectParameter correctionA;
    Incline_MagneticCorrectParameter correctionB;
    Incline_MagneticTranslationParameter translation;
    double biasAngleA = 0.0; // subtracted from the heading of A [degrees]
    double biasAngleB = 0.0; // subtracted from the heading of B [degrees]
};

/// The samples of both turns, in order of time.
struct CalibrationTurns
{
    std::vector<PoseSensorData> horizontal; // turned about the sensor's z axis
    std::vector<PoseSensorData> vertical;   // turned about the sensor's y axis
};

/// A calibration and what it was computed from.
struct CalibrationRun
{
    CalibrationTurns recorded; // before screening
    CalibrationTurns used;     // after it: the input of the solver
    Calibration calibration;   // the result, with the bias angles that the host will use with it
    int solverAnswer = 1;      // result of CInclineSensor_MagneticAdjust::Adjust
    int sensorType = 1;        // as for CInclineSensor_Position::SetSensorType
    bool isJoint = false;      // `calibration` is the joint fit of `recorded`, not the solver's
};

} // namespace quality
