// SPDX-License-Identifier: MIT
//
// A straight pole of 2 m that is rocked about its tip, for tests: exact poses of a sensor of type 2
// (x right, y forward, z up the pole) at any time, and where its antenna is.
#pragma once

#include "field/Bridge.h"
#include "survey/Angle.h"
#include "survey/Point.h"

#include <chrono>
#include <cmath>
#include <random>

namespace rocked_pole {

using field::Instant;
using tiltpole::survey::Cross;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Dot;
using tiltpole::survey::Length;
using tiltpole::survey::Point3;
using tiltpole::survey::Rad2Deg;

inline constexpr double kLength = 2.0; // [m]

inline Instant MomentOf(double seconds)
{
    return Instant(std::llround(seconds * 1e9));
}

/// Leans to both sides as sines, the heading swings along.
struct Rocking
{
    double amplitude = 12.0;    // of the lean to north and to east each [degrees]
    double rate = 0.45;         // of rocking to the north [Hz]; to the east 0.73 of it
    double heading = 40.0;      // mean [degrees]
    double swing = 10.0;        // of the heading [degrees]
    double magneticNorth = 0.0; // from true north [degrees]

    double HeadingAt(double t) const { return heading + swing * std::sin(0.9 * t); }

    /// Unit vector up the pole: north, east, up.
    Point3 UpAt(double t) const
    {
        const double turn = 2.0 * tiltpole::survey::kPi * rate * t;
        const double north = std::tan(Deg2Rad(amplitude)) * std::sin(turn);
        const double east = std::tan(Deg2Rad(amplitude)) * std::sin(0.73 * turn + 1.0);
        const Point3 up{north, east, 1.0};
        return (1.0 / Length(up)) * up;
    }

    field::PoseSample PoseAt(double t) const
    {
        const Point3 z = UpAt(t);
        const double h = Deg2Rad(HeadingAt(t));
        const Point3 level{std::cos(h), std::sin(h), 0.0};
        // The forward axis lies in the vertical plane of the heading, at right angles to the pole.
        const Point3 leaning = level - (Dot(level, z) / z.z) * Point3{0.0, 0.0, 1.0};
        const Point3 y = (1.0 / Length(leaning)) * leaning;
        const Point3 x = Cross(z, y); // north, east, up is left-handed: right = z × y
        const double m = Deg2Rad(magneticNorth);
        const Point3 magnetic{300.0 * std::cos(m), 300.0 * std::sin(m), -620.0};
        field::PoseSample sample;
        sample.data.dPitch = Rad2Deg(std::asin(y.z));
        sample.data.dRoll = Rad2Deg(std::atan2(-x.z, z.z));
        sample.data.dMag_x = Dot(x, magnetic);
        sample.data.dMag_y = Dot(y, magnetic);
        sample.data.dMag_z = Dot(z, magnetic);
        sample.data.dMag_x_2 = -sample.data.dMag_x;
        sample.data.dMag_y_2 = -sample.data.dMag_y;
        sample.data.dMag_z_2 = sample.data.dMag_z;
        sample.deviceSeconds = t;
        sample.moment = MomentOf(t);
        sample.arrival = sample.moment;
        return sample;
    }
};

} // namespace rocked_pole
