// SPDX-License-Identifier: MIT
#include "field/ExactAttitude.h"

#include "survey/Angle.h"
#include "survey/Point.h"
#include "survey/SensorAxes.h"

#include <cmath>

namespace field {

namespace survey = tiltpole::survey;

using survey::Cross;
using survey::Deg2Rad;
using survey::Dot;
using survey::Point3;

namespace {

SensorVector VectorOf(const Point3& p)
{
    return {p.x, p.y, p.z};
}

Point3 PointOf(const SensorVector& v)
{
    return {v.x, v.y, v.z};
}

// From forward, left, up to the axes of the sensor. Both are right-handed.
Point3 InSensorAxes(const Point3& p, survey::SensorAxes axes)
{
    return axes == survey::SensorAxes::ForwardLeftUp ? p : Point3{-p.y, p.x, p.z};
}

// The vertical in the directions forward, left, up of the sensor.
Point3 UpOf(const Tilt& tilt)
{
    const double p = Deg2Rad(tilt.pitch);
    const double r = Deg2Rad(tilt.roll);
    if (tilt.meaning == PitchRoll::Turns)
        return {std::sin(p), std::cos(p) * std::sin(r), std::cos(p) * std::cos(r)};
    const double sinRoll = std::sin(r);
    // (cos p)² − (sin r)² as a product, which stays accurate where the pole is almost level.
    const double cosPitch = std::cos(p);
    return {std::sin(p), sinRoll, std::sqrt((cosPitch - sinRoll) * (cosPitch + sinRoll))};
}

} // namespace

LevelAxes LevelAxesOf(const Tilt& tilt)
{
    const auto axes = survey::AxesOf(tilt.sensorType);
    const Point3 up = UpOf(tilt);
    const Point3 levelled = Point3{1.0, 0.0, 0.0} - up.x * up;
    const Point3 forward = (1.0 / survey::Length(levelled)) * levelled;
    return {VectorOf(InSensorAxes(forward, axes)), VectorOf(InSensorAxes(Cross(up, forward), axes)),
            VectorOf(InSensorAxes(up, axes))};
}

double MagneticHeading(const Tilt& tilt, const SensorVector& reading)
{
    const LevelAxes level = LevelAxesOf(tilt);
    const Point3 m = PointOf(reading);
    const double degrees =
        survey::Rad2Deg(std::atan2(Dot(PointOf(level.left), m), Dot(PointOf(level.forward), m)));
    const double heading = degrees < 0.0 ? survey::AdjustedAzimuth(degrees) : degrees;
    return heading >= 360.0 ? 0.0 : heading; // a tiny negative angle and 360 are 360 in double
}

xyhCoordinate PoleDirection(const Tilt& tilt, double heading)
{
    const LevelAxes level = LevelAxesOf(tilt);
    const double h = Deg2Rad(heading);
    // The pole is the sensor's z axis, whatever the other two are called.
    return {std::cos(h) * level.forward.z + std::sin(h) * level.left.z,
            std::sin(h) * level.forward.z - std::cos(h) * level.left.z, level.up.z};
}

xyhCoordinate ExactTip(const xyhCoordinate& antenna, double poleLength, const Tilt& tilt,
                       double heading)
{
    return survey::RecordOf<xyhCoordinate>(
        survey::PointOf(antenna) - poleLength * survey::PointOf(PoleDirection(tilt, heading)));
}

} // namespace field
