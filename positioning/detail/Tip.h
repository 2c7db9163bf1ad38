// SPDX-License-Identifier: MIT
//
// The direction from the antenna to the tip, from the sines and cosines of pitch and roll that are
// known already.
//
//   ahead = sin t·tan u        aside² = cos² t − ahead²        down = sin t
//
// t is the elevation of the pole; ahead = cos t·cos k1 and aside = cos t·sin k1 count from the
// heading, for the turned projection from the heading plus k3. aside is negative for v > 0. Neither
// k1 nor t has to be computed. Angles: Tilt.h. Derivation: docs/formulas.md, "Tip".
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
/// among them, because aside vanishes. Elsewhere both agree within 5e-10 degrees, k3 within
/// 1.3e-11.
struct WayDown
{
    survey::Rotation level; // (ahead, aside), turned by k3 for the turned projection
    double down;
    double cosK3;
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
    const TiltSines tilt = TiltSinesOf(pose, axes);
    const double tanU = tilt.sinU / tilt.cosU;
    const double ahead = down * tanU;
    const double side = std::sqrt(level2 - ahead * ahead);
    const double aside = std::copysign(side, -v);
    const double cosK3 = -tanU * (tilt.sinV / tilt.cosV);
    const double sinK3 = survey::OtherLeg(cosK3);
    const bool trusted =
        side * down * std::fabs(tilt.cosU) > kLeastMargin
        && sinK3 * std::fabs(tilt.cosU * tilt.cosV * tilt.sinU * tilt.sinV) > kLeastRatio * level2;
    const survey::Rotation way{ahead, aside};
    const survey::Rotation level =
        sensorType == survey::kTurnedProjectionType ? survey::Rotation{cosK3, sinK3} + way : way;
    return {level, down, cosK3, trusted};
}

} // namespace tiltpole::positioning
