// SPDX-License-Identifier: MIT
//
// The joint fit of both magnetometers, before it is reduced to eight values.
#pragma once

#include "quality/JointFitResult.h"
#include "quality/calibration/LevelFrame.h"
#include "quality/calibration/SphereFit.h"
#include "quality/calibration/TurnGeometry.h"
#include "survey/TurnAxis.h"

namespace tiltpole::quality {

using ::quality::CalibrationTurns;
using ::quality::JointFit;
using ::quality::JointFitOutcome;
using survey::TurnAxis;

/// The samples of a turn as one magnetometer sees them.
Turn TurnOf(const std::vector<PoseSensorData>& samples, int sensorType, Magnetometer which);

/// Readings of a turn in the plane perpendicular to its axis: x and y, or x and z for the vertical
/// turn.
std::vector<Eigen::Vector2d> InPlane(const Turn& turn, TurnAxis axis);

/// Gaps of a turn, by the azimuths of its readings about the center of their circle.
std::vector<Gap> GapsOfTurn(const Turn& turn, TurnAxis axis);

struct JointModel
{
    JointFitOutcome outcome = JointFitOutcome::NoSolution;
    SphereFit a; // meaningful when outcome is Fitted
    SphereFit b;
};

/// Fits both magnetometers to the samples that were not swung (Swing.h), readings far outside their
/// turn left out.
JointModel FitBoth(const CalibrationTurns& turns, int sensorType);

/// The samples that were not swung and that both fits keep.
CalibrationTurns KeptBy(const JointModel& model, const CalibrationTurns& turns, int sensorType);

/// The eight values of both magnetometers, their bias angles, and from the samples that the fits
/// kept the translation.
JointFit InEightValues(const JointModel& model, const CalibrationTurns& turns, int sensorType);

} // namespace tiltpole::quality
