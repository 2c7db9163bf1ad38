// SPDX-License-Identifier: MIT
//
// Heading from one magnetometer reading, the lean of the pole taken out.
#pragma once

#include "survey/Angle.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"

#include <cmath>

namespace tiltpole::positioning {

using survey::LevelledField;
using survey::Pose;
using survey::Reading;
using survey::SensorAxes;

/// The reading turned about the z axis by the mounting angle of magnetometer B, which is 0. Kept
/// as a rotation: this is the place for another angle.
inline Reading TurnedToPole(const Reading& m)
{
    constexpr double kCos = 1.0;
    constexpr double kSin = 0.0;
    return {m.x * kCos + m.y * kSin, -m.x * kSin + m.y * kCos, m.z};
}

/// Magnetometer B is mounted the other way round: it sees the pose reversed.
inline LevelledField LevelledOfB(const Pose& pose, const Reading& b, SensorAxes axes)
{
    return Levelled(pose.Reversed(), TurnedToPole(b), axes);
}

/// atan2(−rightward, forward) [degrees] in [-180, 180]; 0 or ±180 for a vanishing field.
inline double HeadingOf(const LevelledField& field)
{
    return survey::Rad2Deg(std::atan2(-field.rightward, field.forward));
}

/// The same within 6e-14 degrees, two units of the last digit of 180, but sooner; not a number for
/// a vanishing field.
inline double QuickHeadingOf(const LevelledField& field)
{
    return survey::Rad2Deg(survey::ArcTangent(-field.rightward, field.forward));
}

/// Whether the field can be squared without loss.
inline bool IsUsualStrength(double strength)
{
    constexpr double kLeast = 1e-150;
    constexpr double kMost = 1e150;
    return strength > kLeast && strength < kMost;
}

} // namespace tiltpole::positioning
