// SPDX-License-Identifier: MIT
//
// How a pole stands: heading, pitch and roll, and the axes of the sensor on it.
//
//   level frame  x north, y east, z down; plane coordinates x, y and height h = -z
//   body frame   forward, right, down along the pole, from the antenna to the tip
//   heading      of the forward axis, from north towards east
//   pitch        of the forward axis above the horizon; positive is nose up
//   roll         about the forward axis; positive is right side down
//
// attitude = Rz(heading) Ry(pitch) Rx(roll) takes body to level: the rotation that the heading
// computation undoes. All angles are degrees.
#pragma once

#include "simulation/Vector.h"

namespace simulation {

struct PoseAngles
{
    double heading = 0.0;
    double pitch = 0.0;
    double roll = 0.0;
};

/// The rotation from body to level.
Matrix AttitudeOf(const PoseAngles& angles);

/// The angles of an attitude: heading in [0, 360), pitch in [-90, 90], roll in [-180, 180].
PoseAngles AnglesOf(const Matrix& attitude);

/// The angles at which a pole leans by `lean` with its upper end towards `leanAzimuth`, the forward
/// axis heading for `heading`; lean in [0, 90).
PoseAngles AnglesOfLean(double heading, double lean, double leanAzimuth);

/// The rotation by `degrees` about a unit axis, right-handed.
Matrix RotationAbout(const Vector& axis, double degrees);

/// A body vector along the axes of magnetometer A, the gyros and the accelerometers.
/// Sensor type 1: x forward, y left, z up the pole; any other: x right, y forward, z up.
Vector ToSensorAxes(int sensorType, const Vector& body);

/// A body vector along the axes of magnetometer B: as A with x and y opposed.
Vector ToSensorAxesB(int sensorType, const Vector& body);

/// The mean rate of turn between two attitudes `seconds` apart, in body axes [degrees/s].
Vector RateBetween(const Matrix& from, const Matrix& to, double seconds);

/// The same direction in [0, 360).
double WrapHeading(double degrees);

} // namespace simulation
