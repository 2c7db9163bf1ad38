#include "quality/detail/LevelFrame.h"

#include <cmath>

namespace quality::detail {

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
    const double cp = std::cos(p);
    const double sp = std::sin(p);
    const double cr = std::cos(r);
    const double sr = std::sin(r);
    if (sensorType == 1)
        return {
            {cp,  -sp * sr, -sp * cr},
            {0.0, -cr,      sr      },
            {sp,  cp * sr,  cp * cr }
        };
    return {
        {sr * sp,  cp,  -cr * sp},
        {cr,       0.0, sr      },
        {-sr * cp, sp,  cr * cp }
    };
}

LevelFrame FrameOfLean(double tilt, double direction, int sensorType, Magnetometer which)
{
    const double lean = std::sin(tilt / kDegreesPerRadian);
    const double upX = lean * std::cos(direction / kDegreesPerRadian);
    const double upY = lean * std::sin(direction / kDegreesPerRadian);
    const double upZ = std::cos(tilt / kDegreesPerRadian);
    const double pitch = std::asin(sensorType == 1 ? upX : upY) * kDegreesPerRadian;
    const double roll = std::atan2(sensorType == 1 ? upY : -upX, upZ) * kDegreesPerRadian;
    return FrameOf(pitch, roll, sensorType, which);
}

double Wrapped(double degrees)
{
    return std::remainder(degrees, 360.0);
}

} // namespace quality::detail
