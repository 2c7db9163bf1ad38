// SPDX-License-Identifier: MIT
//
// The lean of the pole from pitch p and roll r: its tilt angles, its elevation, the azimuth of its
// projection.
//
//   axes             tilt angles                    lean g
//   ForwardLeftUp    u = p                  v = r   sin² g = sin² p + sin² r
//   RightForwardUp   u = −asin(cos p·sin r) v = p   cos g = |cos p·cos r|
//
//   elevation        t = π/2 − g
//   projection       k1 = acos(tan t·tan u), negative for v > 0, counted from the heading
//   tilt direction   k3 = acos(−tan u·tan v)
//
// Arguments of arc sines and arc cosines are limited to [-1, 1], so every finite pose has an angle.
// Derivations: docs/formulas.md, "Tilt" and "Projection azimuth".
#pragma once

#include "survey/Angle.h"
#include "survey/SensorAxes.h"

#include <cmath>

namespace tiltpole::positioning {

struct TiltAngles // [rad]
{
    double u, v;
};

/// The tilt angles of pitch and roll [rad].
inline TiltAngles TiltAnglesOf(double pitch, double roll, survey::SensorAxes axes)
{
    if (axes == survey::SensorAxes::ForwardLeftUp) return {pitch, roll};
    return {-survey::ArcSine(std::cos(pitch) * std::sin(roll)), pitch};
}

/// The elevation t of the pole above the horizontal, of pitch and roll [rad] in [0, 90] [degrees].
inline double ElevationOf(double pitch, double roll, survey::SensorAxes axes)
{
    double lean = 0.0;
    if (axes == survey::SensorAxes::ForwardLeftUp) {
        lean = survey::ArcSine(
            std::sqrt(std::sin(roll) * std::sin(roll) + std::sin(pitch) * std::sin(pitch)));
    } else {
        lean = survey::ArcCosine(std::cos(pitch) * std::cos(roll));
        if (lean > survey::kHalfPi) lean = survey::kPi - lean;
    }
    return survey::Rad2Deg(survey::kHalfPi - lean);
}

/// The angle k1 from the heading to the projection, of pitch and roll [rad] in [-180, 180]
/// [degrees].
inline double ProjectionAngleOf(double pitch, double roll, survey::SensorAxes axes)
{
    const double t = survey::Deg2Rad(ElevationOf(pitch, roll, axes));
    const auto [u, v] = TiltAnglesOf(pitch, roll, axes);
    const double k1 = survey::Rad2Deg(survey::ArcCosine(std::tan(t) * std::tan(u)));
    return v > 0.0 ? -k1 : k1;
}

/// The azimuth of the projection: heading + k1, for the turned projection heading + k3 + k1
/// [degrees], normalized by one step.
inline double ProjectionAzimuthOf(double heading, double k1, double pitch, double roll,
                                  int sensorType)
{
    if (sensorType != survey::kTurnedProjectionType) return survey::AdjustedAzimuth(heading + k1);
    const auto [u, v] = TiltAnglesOf(pitch, roll, survey::AxesOf(sensorType));
    const double k3 = survey::Rad2Deg(survey::ArcCosine(-std::tan(u) * std::tan(v)));
    return survey::AdjustedAzimuth(heading + k3 + k1);
}

/// Cosine of the tilt direction by the law of cosines,
///
///   q = (cos²u·sin²v + cos²v·sin²u − (sin²v + sin²u)) / (2·cos u·cos v·sin u·sin v)
///
/// which equals −tan u·tan v except for rounding of about 1e-16·(sin²u + sin²v)/(sin u·sin v). If u
/// or v is 0 the quotient is 0/0; its limit q = 0 is used, so a plumb pole has a tilt direction,
/// too.
inline double TiltDirectionCosine(double sinU, double cosU, double sinV, double cosV)
{
    const double sin2U = sinU * sinU;
    const double cos2U = cosU * cosU;
    const double sin2V = sinV * sinV;
    const double cos2V = cosV * cosV;
    const double under = 2.0 * cosU * cosV * sinU * sinV;
    return under == 0.0 ? 0.0 : (cos2U * sin2V + cos2V * sin2U - (sin2V + sin2U)) / under;
}

/// The tilt direction by the law of cosines, in [0, 180] [degrees].
inline double TiltDirectionOf(const survey::Pose& pose, survey::SensorAxes axes)
{
    double sinU = pose.sinPitch;
    double cosU = pose.cosPitch;
    double sinV = pose.sinRoll;
    double cosV = pose.cosRoll;
    if (axes != survey::SensorAxes::ForwardLeftUp) {
        const double u = -survey::ArcSine(pose.cosPitch * pose.sinRoll);
        sinU = std::sin(u);
        cosU = std::cos(u);
        sinV = pose.sinPitch;
        cosV = pose.cosPitch;
    }
    return survey::Rad2Deg(survey::ArcCosine(TiltDirectionCosine(sinU, cosU, sinV, cosV)));
}

} // namespace tiltpole::positioning
