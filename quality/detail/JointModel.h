// The joint fit of both magnetometers, before it is brought into eight values.
#pragma once

#include "quality/JointFit.h"
#include "quality/detail/LevelFrame.h"
#include "quality/detail/SphereFit.h"
#include "quality/detail/TurnGeometry.h"

namespace quality::detail {

/// One sample as one magnetometer saw it.
Observation ObservationOf(const PoseSensorData& sample, int sensorType, Magnetometer which);

Turn TurnOf(const std::vector<PoseSensorData>& samples, int sensorType, Magnetometer which);

/// Readings of a turn in the plane it was made in: x and y, or x and z for the vertical turn.
std::vector<Eigen::Vector2d> InPlane(const Turn& turn, bool vertical);

/// Gaps of a turn, from the readings about the centre of their circle.
std::vector<Gap> GapsOfTurn(const Turn& turn, bool vertical);

struct JointModel
{
    JointFitOutcome outcome = JointFitOutcome::NoSolution;
    SphereFit a; // meaningful when outcome is Fitted
    SphereFit b;
};

JointModel FitBoth(const CalibrationTurns& turns, int sensorType);

/// The eight values of both, their bias angles and the translation.
JointFit InEightValues(const JointModel& model, const CalibrationTurns& turns, int sensorType);

} // namespace quality::detail
