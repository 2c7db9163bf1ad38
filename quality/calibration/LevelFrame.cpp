// SPDX-License-Identifier: MIT
#include "quality/calibration/LevelFrame.h"

#include "survey/SensorAxes.h"

#include <cmath>

namespace tiltpole::quality {

double LevelFrame::Heading(const Eigen::Vector3d& corrected) const
{
    return std::atan2(-rightward.dot(corrected), forward.dot(corrected)) * kDegreesPerRadian;
}

Eigen::Vector3d LevelFrame::HeadingSlope(const Eigen::Vector3d& corrected) const
{
    const double along = forward.dot(corrected);
    const double across = rightward.dot(corrected);
    return (across * forward - along * rightward) / (along * along + across * across);
}

Eigen::Vector3d LevelFrame::Field(double heading, double elevation) const
{
    const double level = std::sqrt(1.0 - elevation * elevation);
    const double angle = heading / kDegreesPerRadian;
    return level * (std::cos(angle) * forward - std::sin(angle) * rightward) + elevation * up;
}

LevelFrame FrameOf(double pitch, double roll, int sensorType, Magnetometer which)
{
    const double sign = which == Magnetometer::A ? 1.0 : -1.0;
    const double p = sign * pitch / kDegreesPerRadian;
    const double r = sign * roll / kDegreesPerRadian;
    const survey::LevelFrame frame =
        survey::LevelFrameOf(survey::PoseOfRadians(p, r), survey::AxesOf(sensorType));
    return {VectorOf(frame.forward), VectorOf(frame.rightward), VectorOf(frame.up)};
}

PitchAndRoll TiltOf(const Eigen::Vector3d& up, int sensorType)
{
    const bool forwardIsX = survey::AxesOf(sensorType) == survey::SensorAxes::ForwardLeftUp;
    return {std::asin(forwardIsX ? up.x() : up.y()) * kDegreesPerRadian,
            std::atan2(forwardIsX ? up.y() : -up.x(), up.z()) * kDegreesPerRadian};
}

LevelFrame FrameOfLean(double tilt, double direction, int sensorType, Magnetometer which)
{
    const double lean = std::sin(tilt / kDegreesPerRadian);
    const double upX = lean * std::cos(direction / kDegreesPerRadian);
    const double upY = lean * std::sin(direction / kDegreesPerRadian);
    const double upZ = std::cos(tilt / kDegreesPerRadian);
    const auto [pitch, roll] = TiltOf({upX, upY, upZ}, sensorType);
    return FrameOf(pitch, roll, sensorType, which);
}

} // namespace tiltpole::quality
