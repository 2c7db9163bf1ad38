// SPDX-License-Identifier: MIT
//
// How the sensor's axes lie on the pole, and what pitch and roll make of them.
//
//                      x         y         z
//   ForwardLeftUp    forward   left      up the pole     sensor type 1
//   RightForwardUp   right     forward   up the pole     every other sensor type
//
// Pitch turns about the rightward axis (nose up is positive), roll about the forward axis (right
// side down is positive). Sensor type 2 has the axes RightForwardUp and adds the tilt direction to
// the azimuth of the pole's projection.
#pragma once

#include "survey/Angle.h"
#include "survey/Point.h"
#include "survey/Reading.h"

#include <cmath>

namespace tiltpole::survey {

enum class SensorAxes { ForwardLeftUp, RightForwardUp };

inline constexpr int kForwardLeftUpType = 1;    // the sensor type with axes of its own
inline constexpr int kRightForwardUpType = 0;   // stands for every type but the two with a name
inline constexpr int kTurnedProjectionType = 2; // sensor type whose projection is turned further

constexpr SensorAxes AxesOf(int sensorType)
{
    return sensorType == kForwardLeftUpType ? SensorAxes::ForwardLeftUp
                                            : SensorAxes::RightForwardUp;
}

/// Pitch p and roll r by their sines and cosines. Everything a sample needs (two headings, the tilt
/// direction, the tip) comes from these values, so they are computed once and handed on.
struct Pose
{
    double sinPitch, cosPitch;
    double sinRoll, cosRoll;
    double sinSin, sinCos; // sin p·sin r, sin p·cos r

    /// The same pose as magnetometer B sees it: both angles change sign.
    Pose Reversed() const { return {-sinPitch, cosPitch, -sinRoll, cosRoll, sinSin, -sinCos}; }
};

inline Pose PoseOfRadians(double pitch, double roll)
{
    const double sinPitch = std::sin(pitch);
    const double sinRoll = std::sin(roll);
    const double cosRoll = std::cos(roll);
    return {sinPitch, std::cos(pitch), sinRoll, cosRoll, sinPitch * sinRoll, sinPitch * cosRoll};
}

inline Pose PoseOf(double pitch, double roll) // [degrees]
{
    return PoseOfRadians(Deg2Rad(pitch), Deg2Rad(roll));
}

/// The level directions in the axes of a magnetometer that stands at `pose`: unit vectors, mutually
/// at right angles. A heading is atan2(−rightward·m, forward·m) of the corrected reading m.
/// Derivation: docs/formulas.md, "Levelling".
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

/// The horizontal part of the field in the frame of the pole [counts], the lean taken out.
struct LevelledField
{
    double forward, rightward;
};

/// (forward·m, rightward·m) of LevelFrameOf, without the products by 0: a reading with an infinite
/// component keeps the other part of its field.
inline LevelledField Levelled(const Pose& pose, const Reading& m, SensorAxes axes)
{
    if (axes == SensorAxes::ForwardLeftUp)
        return {pose.cosPitch * m.x + pose.sinSin * -m.y + pose.sinCos * -m.z,
                pose.cosRoll * -m.y - pose.sinRoll * -m.z};
    return {pose.sinSin * m.x + pose.cosPitch * m.y - pose.sinCos * m.z,
            pose.cosRoll * m.x + pose.sinRoll * m.z};
}

} // namespace tiltpole::survey
