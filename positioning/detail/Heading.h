// SPDX-License-Identifier: MIT
//
// The heading of one corrected magnetometer reading.
//
//   heading = atan2(−rightward, forward) − bias      forward, rightward: the leveled field
//
// Degrees. Levelled (survey/SensorAxes.h) removes the lean of the pole from the reading.
// Magnetometer B is mounted the other way around, so its pose is reversed. Derivation:
// docs/formulas.md, "Leveling".
#pragma once

#include "survey/Angle.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"
#include "vector/ArcTangent.h"

#include <cmath>

namespace tiltpole::positioning {

using survey::LevelledField;
using survey::Magnetometer;
using survey::Pose;
using survey::Reading;
using survey::Rotation;
using survey::SensorAxes;

// Mounting angle of magnetometer B about the pole. It is 0 for this sensor; the formulas include it
// for a sensor whose second magnetometer is mounted at another angle.
inline constexpr double kMountingAngleB = 0.0;      // [rad]
inline constexpr Rotation kMountingTurnB{1.0, 0.0}; // by that angle

/// The reading of magnetometer B turned about the z axis by its mounting angle.
inline Reading TurnedToPole(const Reading& m)
{
    const auto [cos, sin] = kMountingTurnB;
    return {m.x * cos + m.y * sin, -m.x * sin + m.y * cos, m.z};
}

/// The horizontal field that a magnetometer sees at this pose of the sample.
inline LevelledField LevelledOf(const Pose& pose, const Reading& m, Magnetometer which,
                                SensorAxes axes)
{
    return which == Magnetometer::A ? Levelled(pose, m, axes)
                                    : Levelled(pose.Reversed(), TurnedToPole(m), axes);
}

/// atan2(−rightward, forward) [degrees] in [-180, 180]; 0 or ±180 for a vanishing field.
inline double AzimuthOf(const LevelledField& field)
{
    return survey::Rad2Deg(std::atan2(-field.rightward, field.forward));
}

using Pair = vector::Lanes<2>;

/// Both azimuths at once, that of A first, where the fields have usual strengths: each agrees with
/// AzimuthOf within 6e-14 degrees, two units in the last place of 180.
inline Pair QuickAzimuthsOf(const LevelledField& a, const LevelledField& b)
{
    return vector::ArcTangent(Pair::Of(-a.rightward, -b.rightward), Pair::Of(a.forward, b.forward));
}

/// The azimuth minus the bias of its magnetometer [degrees], normalized by one step.
inline double LessBias(double azimuth, Magnetometer which, double bias)
{
    return survey::AdjustedAzimuth(which == Magnetometer::A
                                       ? azimuth - bias
                                       : azimuth - bias + survey::Rad2Deg(kMountingAngleB));
}

/// The heading [degrees], normalized by one step: -400 becomes -40.
inline double HeadingOf(const Pose& pose, const Reading& m, Magnetometer which, SensorAxes axes,
                        double bias)
{
    return LessBias(AzimuthOf(LevelledOf(pose, m, which, axes)), which, bias);
}

} // namespace tiltpole::positioning
