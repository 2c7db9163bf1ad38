// SPDX-License-Identifier: MIT
//
// The level directions as a magnetometer sees them, and the headings that follow from them.
//
//   heading = atan2(−rightward·m, forward·m)      m the corrected reading
//
// forward and rightward are the level directions that headings refer to, up is against gravity:
// three perpendicular unit vectors in the axes of the magnetometer's corrected reading. They depend
// on pitch, roll and sensor type alone. survey/SensorAxes.h has the axes and signs.
#pragma once

#include "quality/calibration/FieldModel.h"
#include "survey/Angle.h"

namespace tiltpole::quality {

using survey::kDegreesPerRadian;
using survey::Magnetometer;
using survey::Wrapped;

struct LevelFrame
{
    Eigen::Vector3d forward;
    Eigen::Vector3d rightward;
    Eigen::Vector3d up;

    /// Heading of a corrected reading [degrees] in [−180, 180].
    double Heading(const Eigen::Vector3d& corrected) const;

    /// Derivative of that heading by the corrected reading [radians per unit of it].
    Eigen::Vector3d HeadingSlope(const Eigen::Vector3d& corrected) const;

    /// The unit field that reads as this heading.
    /// @param heading    [degrees]
    /// @param elevation  sine of the field's angle above the horizon
    Eigen::Vector3d Field(double heading, double elevation) const;
};

/// The frame of a pose.
/// @param pitch, roll  as the sensor reports them, the same for A and B [degrees]
LevelFrame FrameOf(double pitch, double roll, int sensorType, Magnetometer which);

/// Pitch and roll of a pose. [degrees]
struct PitchAndRoll
{
    double pitch = 0.0;
    double roll = 0.0;
};

/// The pitch and roll at which `up`, a unit vector along the axes of magnetometer A, is vertical.
PitchAndRoll TiltOf(const Eigen::Vector3d& up, int sensorType);

/// The frame of a pole that leans.
/// @param tilt       from plumb [degrees], below 90
/// @param direction  of the lean about the sensor's z axis, from its x axis [degrees]
LevelFrame FrameOfLean(double tilt, double direction, int sensorType, Magnetometer which);

} // namespace tiltpole::quality
