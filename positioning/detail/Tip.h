// From the antenna down the pole to its tip, without the trigonometry that pitch and roll already
// paid for.
#pragma once

#include "positioning/detail/Angles.h"
#include "positioning/detail/Tilt.h"

namespace detail {

/// Elevation of the pole above the horizontal, t = π/2 − g, by its sine and cosine:
///
///   sensor type 1       sin g = √(sin²r + sin²p), at most 1
///   every other type    cos g = |cos p·cos r|
struct Elevation
{
    double sin, cos;
};

inline Elevation ElevationOf(const Pose& pose, int sensorType)
{
    if (sensorType == kFirstConvention) {
        const double sinLean =
            std::sqrt(pose.sinRoll * pose.sinRoll + pose.sinPitch * pose.sinPitch);
        return sinLean > 1.0 ? Elevation{0.0, 1.0} : Elevation{OtherLeg(sinLean), sinLean};
    }
    const double cosLean = pose.cosPitch * pose.cosRoll;
    return {std::fabs(cosLean), OtherLeg(cosLean)};
}

/// Where the pole's projection points, relative to the heading, by roots alone:
///
///   k1 = ±acos(tan t·tan u), negative for v > 0        k3 = acos(−tan u·tan v)
///
/// An arc cosine near its ends, a pole near the plumb line or near the horizontal amplify the last
/// digit of what they are given; there the result is not trusted, and the written formulas are to
/// be evaluated step by step. Elsewhere both agree within 5e-10 degrees.
struct Projection
{
    Turn k1;
    Turn turn; // k1, or k3 + k1 for the sensor type whose projection is turned further
    bool trusted;
};

inline Projection ProjectionOf(const TiltAngles& tilt, bool positiveV, const Elevation& t,
                               int sensorType)
{
    constexpr double kLeastMargin = 1e-4; // relative rounding of 1e-16 grows to 1e-12 rad here
    const double cosK1 = t.sin * tilt.sinU / (t.cos * tilt.cosU);
    const double sinK1 = OtherLeg(cosK1);
    const Turn k1{cosK1, std::copysign(sinK1, positiveV ? -1.0 : 1.0)};
    const bool trusted = sinK1 * t.cos * std::fabs(tilt.cosU) > kLeastMargin;
    if (sensorType != kTurnedProjectionType) return {k1, k1, trusted};

    const double cosK3 = -(tilt.sinU * tilt.sinV) / (tilt.cosU * tilt.cosV);
    const double sinK3 = OtherLeg(cosK3);
    const double margin = sinK3 * tilt.cosU * tilt.cosU * std::fabs(tilt.cosV);
    return {
        k1, Turn{cosK3, sinK3}
         + k1, trusted && margin > kLeastMargin
    };
}

/// The angle of a turn [degrees] in [-180, 180].
inline double AngleOf(const Turn& turn)
{
    return std::copysign(Rad2Deg(std::acos(turn.cos)), turn.sin);
}

} // namespace detail
