// SPDX-License-Identifier: MIT
//
// A straight pole somewhere on the Earth, and what its sensor reads: attitude from true north, field with
// a declination and a dip. Written from the axes of the sensor, not from the library's formulas.
//
//   heading  of the leveled forward axis, from true north [degrees]
//   pitch    raises the forward axis; roll: turn about it, lowers the right side [degrees]
#pragma once

#include "field/Bridge.h"
#include "survey/Point.h"

#include <cmath>

namespace tip_tests {

using tiltpole::survey::Dot;
using tiltpole::survey::Point3;

inline constexpr double kRadian = 57.29577951308232;
inline constexpr double kLength = 2.1165; // tip to phase center [m]

struct LeaningPole
{
    double heading = 0.0;
    double pitch = 0.0;
    double roll = 0.0;
    int sensorType = 2;
    double declination = 0.0; ///< of the field at the sensor [degrees]
    double dip = 66.0;        ///< [degrees]

    // Forward, right, up of the sensor in north, east, up.
    Point3 Forward() const { return std::cos(P()) * Level() + Point3{0.0, 0.0, std::sin(P())}; }
    Point3 Right() const { return std::cos(R()) * Aside() - std::sin(R()) * Raised(); }
    Point3 Up() const { return std::sin(R()) * Aside() + std::cos(R()) * Raised(); }

    field::PoseSample Sample() const
    {
        const double d = declination / kRadian;
        const double i = dip / kRadian;
        const Point3 field{500.0 * std::cos(i) * std::cos(d), 500.0 * std::cos(i) * std::sin(d),
                           -500.0 * std::sin(i)};
        const double forward = Dot(field, Forward());
        const double right = Dot(field, Right());
        field::PoseSample sample;
        PoseSensorData& data = sample.data;
        data.dPitch = pitch;
        data.dRoll = roll;
        data.dMag_x = sensorType == 1 ? forward : right;
        data.dMag_y = sensorType == 1 ? -right : forward;
        data.dMag_z = Dot(field, Up());
        data.dMag_x_2 = -data.dMag_x;
        data.dMag_y_2 = -data.dMag_y;
        data.dMag_z_2 = data.dMag_z;
        return sample;
    }

private:
    double P() const { return pitch / kRadian; }
    double R() const { return roll / kRadian; }
    double H() const { return heading / kRadian; }
    Point3 Level() const { return {std::cos(H()), std::sin(H()), 0.0}; }
    Point3 Aside() const { return {-std::sin(H()), std::cos(H()), 0.0}; }
    Point3 Raised() const { return Point3{0.0, 0.0, std::cos(P())} - std::sin(P()) * Level(); }
};

/// A pole of kLength whose magnetometers need no correction.
inline field::Setup SetupOf(int sensorType)
{
    field::Setup setup;
    setup.poleLength = 2.0;
    setup.phaseCenter = 0.1165;
    setup.sensorType = sensorType;
    setup.calibration.bytes = "[MagneticA.a]0\r\n";
    setup.calibration.complete = true;
    return setup;
}

} // namespace tip_tests
