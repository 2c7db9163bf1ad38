// Pitch and roll of a sample as sines and cosines, and the pole's lean from them.
//
// Everything a sample asks for (two headings, the tilt-direction angle, the tip) needs the same
// four values, so they are computed once and handed on.
#pragma once

#include "positioning/detail/Angles.h"

namespace detail {

inline constexpr int kFirstConvention = 1;      // sensor type whose tilt angles are pitch and roll
inline constexpr int kTurnedProjectionType = 2; // sensor type whose projection is turned further

struct Pose
{
    double sinPitch, cosPitch;
    double sinRoll, cosRoll;

    /// The same pose seen from magnetometer B: both angles change sign.
    Pose Reversed() const { return {-sinPitch, cosPitch, -sinRoll, cosRoll}; }
};

inline Pose PoseOf(double pitch, double roll) // [degrees]
{
    const double p = Deg2Rad(pitch);
    const double r = Deg2Rad(roll);
    return {std::sin(p), std::cos(p), std::sin(r), std::cos(r)};
}

/// The two tilt angles u, v of the pole: pitch and roll, or for the other sensor types
/// u = −asin(cos p·sin r) and v = p.
struct TiltAngles
{
    double sinU, cosU;
    double sinV, cosV;
};

inline TiltAngles TiltAnglesOf(const Pose& pose, int sensorType)
{
    if (sensorType == kFirstConvention)
        return {pose.sinPitch, pose.cosPitch, pose.sinRoll, pose.cosRoll};
    const double sinU = -(pose.cosPitch * pose.sinRoll);
    return {sinU, OtherLeg(sinU), pose.sinPitch, pose.cosPitch};
}

/// The same angles, u by its arc sine and back: the digits that the written formulas see.
inline TiltAngles WrittenTiltAnglesOf(const Pose& pose, int sensorType)
{
    if (sensorType == kFirstConvention) return TiltAnglesOf(pose, sensorType);
    const double u = -ArcSine(pose.cosPitch * pose.sinRoll);
    return {std::sin(u), std::cos(u), pose.sinPitch, pose.cosPitch};
}

/// Cosine q of the angle between the tilt direction and the heading:
///
///   q = (cos²u·sin²v + cos²v·sin²u − (sin²v + sin²u)) / (2·cos u·cos v·sin u·sin v)
///
/// It equals −tan u·tan v but is formed as written, terms cancelling: its rounding is about
/// 1e-16·(sin²u + sin²v)/(sin u·sin v). Where u or v is 0 the quotient is 0/0; its limit q = 0 is
/// used, so a plumb pole gives a number.
struct TiltQuotient
{
    double q;
    bool trusted; // false where rounding moves the angle by more than about 1e-11 degrees
};

inline TiltQuotient TiltQuotientOf(const TiltAngles& tilt)
{
    constexpr double kLeastMargin = 2e-3;
    const double sin2U = tilt.sinU * tilt.sinU;
    const double cos2U = tilt.cosU * tilt.cosU;
    const double sin2V = tilt.sinV * tilt.sinV;
    const double cos2V = tilt.cosV * tilt.cosV;
    const double over = cos2U * sin2V + cos2V * sin2U - (sin2V + sin2U);
    const double under = 2.0 * tilt.cosU * tilt.cosV * tilt.sinU * tilt.sinV;
    if (under == 0.0) return {0.0, true};
    const double q = over / under;
    return {q, OtherLeg(q) * std::fabs(under) > kLeastMargin * (sin2U + sin2V)};
}

/// acos q [degrees], of the limited quotient. Measured against the formulas written out, in poses
/// of all directions: within 1e-10 degrees.
inline double TiltDirection(const Pose& pose, const TiltAngles& tilt, int sensorType)
{
    TiltQuotient quotient = TiltQuotientOf(tilt);
    if (!quotient.trusted) quotient = TiltQuotientOf(WrittenTiltAnglesOf(pose, sensorType));
    return Rad2Deg(ArcCosine(quotient.q));
}

} // namespace detail
