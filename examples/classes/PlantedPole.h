// SPDX-License-Identifier: MIT
//
// A pole of 2 m that stands on a point and rocks about it, and what sensors and a receiver without
// errors say of it. Sensor type 1: x forward, y left, z up the pole. Magnetic north is true north.
#pragma once

#include "field/ExactAttitude.h"
#include "field/Geodesy.h"
#include "field/Occupation.h"

#include <cmath>
#include <numbers>

namespace planted {

inline constexpr double kLength = 2.0;                                  // antenna to tip [m]
inline constexpr xyhCoordinate kTip{4500000.0, 500000.0, 150.0};        // where it stands [m]
inline constexpr field::Geodetic kPlace{47.5660567, 19.0083599, 150.0}; // the same on the ellipsoid
inline constexpr double kStrength = 500.0; // of the Earth's field [counts]
inline constexpr double kDip = 64.0;       // [degrees]

struct Pole
{
    double lean = 15.0;    // most that it rocks to each side [degrees]
    double turns = 0.0;    // likewise about its own axis [degrees]
    double pitch = 0.0;    // about which it rocks [degrees]
    double heading = 40.0; // of the sensor's forward axis [degrees]

    field::Tilt TiltAt(double t) const
    {
        return {.pitch = pitch + lean * std::sin(1.9 * t), .roll = lean * std::sin(1.3 * t)};
    }
    double HeadingAt(double t) const { return heading + turns * std::sin(0.7 * t); }

    /// Up the pole, from the tip to the antenna [m].
    xyhCoordinate AntennaFromTip(double t) const
    {
        const xyhCoordinate up = field::PoleDirection(TiltAt(t), HeadingAt(t));
        return {kLength * up.x, kLength * up.y, kLength * up.h};
    }
    field::AntennaEpoch EpochAt(double t) const
    {
        const xyhCoordinate d = AntennaFromTip(t);
        return {
            .seconds = t, .position = {kTip.x + d.x, kTip.y + d.y, kTip.h + d.h}
        };
    }

    /// Directions of the world that the sensor sees turn: v' = v x rate.
    field::SensorVector RateAt(double t) const
    {
        constexpr double h = 1e-4; // [s]
        const field::LevelAxes a = field::LevelAxesOf(TiltAt(t - h));
        const field::LevelAxes b = field::LevelAxesOf(TiltAt(t + h));
        const field::LevelAxes now = field::LevelAxesOf(TiltAt(t));
        field::SensorVector sum;
        const auto add = [&sum](const field::SensorVector& v, const field::SensorVector& from,
                                const field::SensorVector& to) {
            const field::SensorVector d{to.x - from.x, to.y - from.y, to.z - from.z};
            sum.x += v.y * d.z - v.z * d.y;
            sum.y += v.z * d.x - v.x * d.z;
            sum.z += v.x * d.y - v.y * d.x;
        };
        add(now.forward, a.forward, b.forward);
        add(now.left, a.left, b.left);
        add(now.up, a.up, b.up);
        const double scale = -0.25 / h * 180.0 / std::numbers::pi;
        const double about = -(HeadingAt(t + h) - HeadingAt(t - h)) / (2.0 * h);
        return {scale * sum.x + about * now.up.x, scale * sum.y + about * now.up.y,
                scale * sum.z + about * now.up.z};
    }

    field::SensorVector MagneticAt(double t) const
    {
        const field::LevelAxes axes = field::LevelAxesOf(TiltAt(t));
        const double radian = std::numbers::pi / 180.0;
        const double forward =
            kStrength * std::cos(kDip * radian) * std::cos(HeadingAt(t) * radian);
        const double left = kStrength * std::cos(kDip * radian) * std::sin(HeadingAt(t) * radian);
        const double up = -kStrength * std::sin(kDip * radian);
        return {forward * axes.forward.x + left * axes.left.x + up * axes.up.x,
                forward * axes.forward.y + left * axes.left.y + up * axes.up.y,
                forward * axes.forward.z + left * axes.left.z + up * axes.up.z};
    }

    /// The sensor sits at the tip, where the pole's motion adds nothing to gravity.
    field::InertialSample SampleAt(double t) const
    {
        field::InertialSample sample;
        sample.seconds = t;
        sample.rate = RateAt(t);
        sample.acceleration = field::LevelAxesOf(TiltAt(t)).up;
        sample.magnetic = MagneticAt(t);
        sample.tilt = TiltAt(t);
        return sample;
    }
};

} // namespace planted
