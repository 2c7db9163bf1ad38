// SPDX-License-Identifier: MIT
//
// Access to the protected operations of the class under test, and samples that the tests share.
#pragma once

#include "positioning/InclineSensor_Position.h"

struct Reach : CInclineSensor_Position
{
    using CInclineSensor_Position::ACOS;
    using CInclineSensor_Position::AdjustAzimuth;
    using CInclineSensor_Position::ASIN;
    using CInclineSensor_Position::Deg2Rad;
    using CInclineSensor_Position::GetDistance;
    using CInclineSensor_Position::GetInclinePoint;
    using CInclineSensor_Position::GetSolvePoint;
    using CInclineSensor_Position::GetTiltAngle;
    using CInclineSensor_Position::Rad2Deg;

    explicit Reach(int sensorType = 1) { SetSensorType(sensorType); }
};

inline constexpr double kPi = 3.141592653589793;
inline constexpr int kSensorTypes[] = {1, 2, 0, 3, -1};

struct Field
{
    double x, y, z;
};

inline PoseSensorData Sample(double pitch, double roll, Field a, Field b)
{
    PoseSensorData s;
    s.dPitch = pitch;
    s.dRoll = roll;
    s.dMag_x = a.x;
    s.dMag_y = a.y;
    s.dMag_z = a.z;
    s.dMag_x_2 = b.x;
    s.dMag_y_2 = b.y;
    s.dMag_z_2 = b.z;
    return s;
}

/// Magnetometer B reads what the undisturbed magnetometer A predicts.
inline PoseSensorData Sample(double pitch, double roll, Field a)
{
    return Sample(pitch, roll, a, {-a.x, -a.y, a.z});
}
