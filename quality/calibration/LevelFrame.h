// SPDX-License-Identifier: MIT
//
// The level directions as a magnetometer sees them: where its corrected reading meets the heading.
//
//   heading = atan2(−rightward·m, forward·m)      m the corrected reading
//
// forward and rightward are the level directions that the heading computation refers to, up is
// against gravity; all three are unit vectors in the axes of the magnetometer's corrected reading,
// mutually at right angles. They depend on pitch, roll and the sensor type alone.
#pragma once

#include "survey/Angle.h"
#include "survey/Reading.h"

#include <Eigen/Core>

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

    /// How that heading follows the corrected reading [radians per unit of it].
    Eigen::Vector3d HeadingSlope(const Eigen::Vector3d& corrected) const;

    /// The unit field that reads as this heading.
    /// @param heading    [degrees]
    /// @param elevation  sine of the field's angle above the horizon
    Eigen::Vector3d Field(double heading, double elevation) const;
};

/// The frame of a pose.
/// @param pitch, roll  as the sensor reports them, for A and for B alike [degrees]
/// @param sensorType   1: x forward, y left, z up; any other: x right, y forward, z up
LevelFrame FrameOf(double pitch, double roll, int sensorType, Magnetometer which);

/// The frame of a pole that leans.
/// @param tilt       from plumb [degrees], below 90
/// @param direction  of the lean about the sensor's z axis, from its x axis [degrees]
LevelFrame FrameOfLean(double tilt, double direction, int sensorType, Magnetometer which);

} // namespace tiltpole::quality
