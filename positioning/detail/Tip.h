// SPDX-License-Identifier: MIT
//
// The direction from the antenna to the tip, from the sines and cosines of pitch and roll that are
// known already.
//
//   down = sin t
//   level·cos u = (down·sin u, ∓|sin v|)         counted from the heading, negative for v > 0
//   (cos k3, sin k3)·cos u·cos v = (−sin u·sin v, down)
//
// t is the elevation of the pole; the length of `level` is cos t. For the turned projection the
// level direction counts from the heading plus k3. Angles: Tilt.h. Derivation: docs/formulas.md,
// "Tip".
#pragma once

#include "survey/Angle.h"
#include "survey/SensorAxes.h"

#include <cmath>

namespace tiltpole::positioning {

/// The vector from the antenna to the tip per meter of pole.
///
/// `trusted` is false where the formulas of Tilt.h, evaluated one by one, amplify the last digit of
/// their arguments: an arc cosine near its ends, a pole near the plumb line or near the horizontal,
/// one tilt angle that is tiny compared with the other. A pole that leans along one axis (v = 0) is
/// among them, because aside vanishes. So is a pole beyond the horizontal, where cosines change
/// sign. Elsewhere both agree within 5e-10 degrees, k3 within 1.3e-11.
struct WayDown
{
    survey::Rotation level; // (ahead, aside), turned by k3 for the turned projection
    double levelDivisor;    // by which `level` is too long
    double down;
    survey::Rotation tilt; // k3, and some length
    bool trusted;
};

struct TiltSines
{
    double sinU, cosU;
    double sinV, cosV;
};

inline TiltSines TiltSinesOf(const survey::Pose& pose, survey::SensorAxes axes)
{
    if (axes == survey::SensorAxes::ForwardLeftUp)
        return {pose.sinPitch, pose.cosPitch, pose.sinRoll, pose.cosRoll};
    const double sinU = -(pose.cosPitch * pose.sinRoll);
    return {sinU, survey::OtherLeg(sinU), pose.sinPitch, pose.cosPitch};
}

/// @param v  any number with the sign of the tilt angle v
inline WayDown WayDownOf(const survey::Pose& pose, double v, int sensorType)
{
    constexpr double kLeastMargin = 1e-4; // a relative rounding of 1e-16 grows to 1e-12 here
    constexpr double kLeastRatio = 1e-3;  // k3 by the law of cosines rounds by 1e-11 degrees here
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
    const auto [sinU, cosU, sinV, cosV] = TiltSinesOf(pose, axes);
    const double sinSin = sinU * sinV;
    const survey::Rotation tilt{-sinSin, down};
    const survey::Rotation way{down * sinU, std::copysign(sinV, -v)};
    const bool trusted = std::fabs(sinV) * down > kLeastMargin
                         && std::fabs(sinSin) * down > kLeastRatio * level2 && cosU > 0.0
                         && cosV > 0.0;
    if (sensorType == survey::kTurnedProjectionType)
        return {tilt + way, cosU * cosU * cosV, down, tilt, trusted};
    return {way, cosU, down, tilt, trusted};
}

} // namespace tiltpole::positioning
