// SPDX-License-Identifier: MIT
//
// From the antenna down the pole to its tip, without the trigonometry that pitch and roll already
// paid for.
#pragma once

#include "positioning/detail/Tilt.h"
#include "survey/SensorAxes.h"

namespace tiltpole::positioning {

using survey::Rotation;

/// The way from the antenna to the tip per metre of pole; `level` counts from the heading.
///
///   level = (cos t·cos k1, cos t·sin k1)     down = sin t
///
/// t is the elevation of the pole, k1 = ±acos(tan t·tan u), negative for v > 0, the angle from the
/// heading to its projection. For the sensor type whose projection is turned further, `level` is
/// turned by k3 = acos(−tan u·tan v), which is the tilt direction, too.
///
/// An arc cosine near its ends, a pole near the plumb line or near the horizontal, tilt angles of
/// which one hardly counts beside the other amplify the last digit of what they are given; there
/// the result is not trusted, and the written formulas are to be evaluated step by step. Elsewhere
/// both agree within 5e-10 degrees, k3 within 1.3e-11.
struct WayDown
{
    Rotation level;
    double down;
    double cosK3;
    bool trusted;
};

// Written so that neither k1 nor t is needed for themselves:
//
//   ahead = sin t·tan u        aside² = cos² t − ahead²        cos² t = sin² u + sin² v
//
// Where v is 0 the pole leans along one axis, aside vanishes, and the result is not trusted.
inline WayDown WayDownOf(const survey::Pose& pose, double v, int sensorType)
{
    constexpr double kLeastMargin = 1e-4; // relative rounding of 1e-16 grows to 1e-12 here
    constexpr double kLeastRatio = 1e-3;  // the written k3 rounds by 1e-11 degrees here
    double down = 0.0;
    double level2 = 0.0; // cos² t
    const survey::SensorAxes axes = survey::AxesOf(sensorType);
    if (axes == survey::SensorAxes::ForwardLeftUp) {
        level2 = pose.sinRoll * pose.sinRoll + pose.sinPitch * pose.sinPitch;
        down = std::sqrt(1.0 - level2);
    } else {
        const double cosLean = pose.cosPitch * pose.cosRoll;
        level2 = (1.0 - cosLean) * (1.0 + cosLean);
        down = std::fabs(cosLean);
    }
    const TiltAngles tilt = TiltAnglesOf(pose, axes);
    const double tanU = tilt.sinU / tilt.cosU;
    const double ahead = down * tanU;
    const double side = std::sqrt(level2 - ahead * ahead);
    const double aside = std::copysign(side, -v);
    const double cosK3 = -tanU * (tilt.sinV / tilt.cosV);
    const double sinK3 = survey::OtherLeg(cosK3);
    const bool trusted =
        side * down * std::fabs(tilt.cosU) > kLeastMargin
        && sinK3 * std::fabs(tilt.cosU * tilt.cosV * tilt.sinU * tilt.sinV) > kLeastRatio * level2;
    const Rotation way{ahead, aside};
    const Rotation level =
        sensorType == survey::kTurnedProjectionType ? Rotation{cosK3, sinK3} + way : way;
    return {level, down, cosK3, trusted};
}

} // namespace tiltpole::positioning
