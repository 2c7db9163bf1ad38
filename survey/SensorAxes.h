// SPDX-License-Identifier: MIT
//
// How the sensor's axes lie on the pole, and where pitch and roll turn them.
//
//                      x         y         z
//   ForwardLeftUp    forward   left      up the pole     sensor type 1
//   RightForwardUp   right     forward   up the pole     every other sensor type
//
// Positive pitch raises the forward axis, positive roll lowers the right side. Sensor type 2 has the
// axes RightForwardUp and adds the tilt direction to the azimuth of the pole's projection.
#pragma once

#include "survey/Angle.h"
#include "survey/Point.h"
#include "survey/Reading.h"

#include <cmath>

namespace tiltpole::survey {

enum class SensorAxes { ForwardLeftUp, RightForwardUp };

// Sensor types. Every number but the first and the last means the same as 0.
inline constexpr int kForwardLeftUpType = 1;
inline constexpr int kRightForwardUpType = 0;
inline constexpr int kTurnedProjectionType = 2; // RightForwardUp, with the projection turned

constexpr SensorAxes AxesOf(int sensorType)
{
    return sensorType == kForwardLeftUpType ? SensorAxes::ForwardLeftUp
                                            : SensorAxes::RightForwardUp;
}

/// Pitch p and roll r given by their sines and cosines. All that is computed from a sample (two
/// headings, the tilt direction, the tip) needs these values, so they are computed once.
struct Pose
{
    double sinPitch, cosPitch;
    double sinRoll, cosRoll;
    double sinSin, sinCos; // sin p·sin r, sin p·cos r

    /// The pose as magnetometer B sees it: both angles change sign.
    Pose Reversed() const { return {-sinPitch, cosPitch, -sinRoll, cosRoll, sinSin, -sinCos}; }
};

/// The pose of pitch and roll [rad].
inline Pose PoseOfRadians(double pitch, double roll)
{
    const double sinPitch = std::sin(pitch);
    const double sinRoll = std::sin(roll);
    const double cosRoll = std::cos(roll);
    return {sinPitch, std::cos(pitch), sinRoll, cosRoll, sinPitch * sinRoll, sinPitch * cosRoll};
}

/// The pose of pitch and roll [degrees].
inline Pose PoseOf(double pitch, double roll)
{
    return PoseOfRadians(Deg2Rad(pitch), Deg2Rad(roll));
}

/// The level directions and the vertical in the axes of a magnetometer at `pose`: unit vectors at
/// right angles to each other. The heading of a corrected reading m is
///
///   atan2(−rightward·m, forward·m)
///
/// Derivation: docs/formulas.md, "Level frame".
struct LevelFrame
{
    Point3 forward;
    Point3 rightward;
    Point3 up;
};

inline LevelFrame LevelFrameOf(const Pose& pose, SensorAxes axes)
{
    const auto [sp, cp, sr, cr, spsr, spcr] = pose;
    if (axes == SensorAxes::ForwardLeftUp)
        return {
            {cp,  -spsr,   -spcr  },
            {0.0, -cr,     sr     },
            {sp,  cp * sr, cp * cr}
        };
    return {
        {spsr,     cp,  -spcr  },
        {cr,       0.0, sr     },
        {-sr * cp, sp,  cr * cp}
    };
}

/// The horizontal part of the field along the two level directions [counts].
struct LevelledField
{
    double forward, rightward;
};

/// (forward·m, rightward·m) of LevelFrameOf, without its products by 0: where one component of the
/// reading is infinite, the part that does not depend on it stays finite.
/// Derivation: docs/formulas.md, "Leveling".
inline LevelledField Levelled(const Pose& pose, const Reading& m, SensorAxes axes)
{
    if (axes == SensorAxes::ForwardLeftUp)
        return {pose.cosPitch * m.x + pose.sinSin * -m.y + pose.sinCos * -m.z,
                pose.cosRoll * -m.y - pose.sinRoll * -m.z};
    return {pose.sinSin * m.x + pose.cosPitch * m.y - pose.sinCos * m.z,
            pose.cosRoll * m.x + pose.sinRoll * m.z};
}

} // namespace tiltpole::survey
