// SPDX-License-Identifier: MIT
//
// Pitch and roll of a sample as sines and cosines, and the pole's lean from them.
//
// Everything a sample asks for (two headings, the tilt-direction angle, the tip) needs the same
// four values, so they are computed once and handed on.
#pragma once

#include "survey/SensorAxes.h"

namespace tiltpole::positioning {

/// The two tilt angles u, v of the pole: pitch and roll, or for the other sensor types
/// u = −asin(cos p·sin r) and v = p.
struct TiltAngles
{
    double sinU, cosU;
    double sinV, cosV;
};

inline TiltAngles TiltAnglesOf(const survey::Pose& pose, survey::SensorAxes axes)
{
    if (axes == survey::SensorAxes::ForwardLeftUp)
        return {pose.sinPitch, pose.cosPitch, pose.sinRoll, pose.cosRoll};
    const double sinU = -(pose.cosPitch * pose.sinRoll);
    return {sinU, survey::OtherLeg(sinU), pose.sinPitch, pose.cosPitch};
}

/// Cosine of the angle between the tilt direction and the heading,
///
///   q = (cos²u·sin²v + cos²v·sin²u − (sin²v + sin²u)) / (2·cos u·cos v·sin u·sin v)
///
/// It equals −tan u·tan v but is formed as written, terms cancelling: its rounding is about
/// 1e-16·(sin²u + sin²v)/(sin u·sin v). Where u or v is 0 the quotient is 0/0; its limit q = 0 is
/// used, so a plumb pole gives a number.
inline double TiltDirectionCosine(double u, double v)
{
    const TiltAngles tilt{std::sin(u), std::cos(u), std::sin(v), std::cos(v)};
    const double sin2U = tilt.sinU * tilt.sinU;
    const double cos2U = tilt.cosU * tilt.cosU;
    const double sin2V = tilt.sinV * tilt.sinV;
    const double cos2V = tilt.cosV * tilt.cosV;
    const double under = 2.0 * tilt.cosU * tilt.cosV * tilt.sinU * tilt.sinV;
    return under == 0.0 ? 0.0 : (cos2U * sin2V + cos2V * sin2U - (sin2V + sin2U)) / under;
}

} // namespace tiltpole::positioning
