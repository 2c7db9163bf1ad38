// SPDX-License-Identifier: MIT
//
// Which way a turn goes round: the angular rate of the sensor against what its vectors do.
//
//   dv/dt = −ω × v      a vector v at rest in space, seen from a sensor that turns with ω
//
// The rate is believed only where it agrees with pitch and roll over the vertical turn, so that
// sensors without gyros, or with gyros in other axes, are left alone.
#pragma once

#include "quality/Calibration.h"
#include "quality/calibration/FieldModel.h"
#include "survey/Reading.h"

namespace tiltpole::quality {

/// Correlation of the change of the vectors with −ω × v, over all pairs of samples a few apart:
/// near 1 where the vectors turn as the rate tells, near −1 where they turn the other way, near 0
/// where the rate tells nothing.
/// @param samples  with angular rates in the axes of the vectors of magnetometer A
/// @param vectors  one for each sample
double SenseOf(const std::vector<PoseSensorData>& samples,
               const std::vector<Eigen::Vector3d>& vectors, survey::Magnetometer axes);

/// Whether pitch and roll of the vertical turn follow the angular rate.
bool RateIsUsable(const std::vector<PoseSensorData>& vertical, int sensorType);

} // namespace tiltpole::quality
