// SPDX-License-Identifier: MIT
//
// How a pole stands: heading, pitch and roll, and the axes of the sensor on it.
//
//   level frame  x north, y east, z down; points of the plane frame have z up instead
//   body frame   forward, right, down along the pole, from the antenna to the tip
//   heading      of the forward axis, from north towards east
//   pitch        of the forward axis above the horizon; positive is nose up
//   roll         about the forward axis; positive is right side down
//
// attitude = Rz(heading) Ry(pitch) Rx(roll) takes body to level: the rotation that the heading
// computation undoes. All angles are in degrees.
//
//     const Matrix attitude = AttitudeOf({.heading = 40.0, .pitch = 5.0, .roll = -3.0});
//     const Point3 magneticAtA = ToSensorAxes(1, attitude.Transposed() * LevelField(field));
#pragma once

#include "simulation/Matrix.h"

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

/// The angles of a pole that leans by `lean`, in [0, 90), its upper end towards `leanAzimuth` and
/// its forward axis towards `heading`.
PoseAngles AnglesOfLean(double heading, double lean, double leanAzimuth);

/// The rotation by `degrees` about a unit axis, right-handed.
Matrix RotationAbout(const Point3& axis, double degrees);

/// The components of a body vector along the axes of magnetometer A, the gyros and the
/// accelerometers; which axes a sensor type has: survey/SensorAxes.h.
Point3 ToSensorAxes(int sensorType, const Point3& body);

/// The reverse: the body vector of components along those axes.
Point3 FromSensorAxes(int sensorType, const Point3& components);

/// The same along the axes of magnetometer B: those of A with x and y opposed.
Point3 ToSensorAxesB(int sensorType, const Point3& body);

/// The mean angular rate between two attitudes `seconds` apart, in body axes [degrees/s].
Point3 RateBetween(const Matrix& from, const Matrix& to, double seconds);

} // namespace simulation
