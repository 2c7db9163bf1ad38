// SPDX-License-Identifier: MIT
//
// The joint fit of both magnetometers, before it is brought into eight values.
#pragma once

#include "quality/JointFit.h"
#include "quality/calibration/LevelFrame.h"
#include "quality/calibration/SphereFit.h"
#include "quality/calibration/TurnGeometry.h"

namespace tiltpole::quality {

/// One sample as one magnetometer saw it.
Observation ObservationOf(const PoseSensorData& sample, int sensorType, Magnetometer which);

Turn TurnOf(const std::vector<PoseSensorData>& samples, int sensorType, Magnetometer which);

/// Readings of a turn in the plane it was made in: x and y, or x and z for the vertical turn.
std::vector<Eigen::Vector2d> InPlane(const Turn& turn, bool vertical);

/// Gaps of a turn, from the readings about the centre of their circle.
std::vector<Gap> GapsOfTurn(const Turn& turn, bool vertical);

struct JointModel
{
    ::quality::JointFitOutcome outcome = ::quality::JointFitOutcome::NoSolution;
    SphereFit a; // meaningful when outcome is Fitted
    SphereFit b;
};

JointModel FitBoth(const ::quality::CalibrationTurns& turns, int sensorType);

/// The eight values of both, their bias angles and the translation.
::quality::JointFit InEightValues(const JointModel& model, const ::quality::CalibrationTurns& turns,
                                  int sensorType);

} // namespace tiltpole::quality
