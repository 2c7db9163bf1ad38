// SPDX-License-Identifier: MIT
#include "simulation/Pole.h"

#include "simulation/PortableMath.h"
#include "survey/Angle.h"
#include "survey/SensorAxes.h"
#include <algorithm>

namespace simulation {

namespace {

using tiltpole::survey::AxesOf;
using tiltpole::survey::kDegreesPerRadian;
using tiltpole::survey::kTurnedProjectionType;
using tiltpole::survey::Rotation;
using tiltpole::survey::SensorAxes;

constexpr double kPlumb = 1e-6 * kDegreesPerRadian; // [degrees]: below it the pole counts as plumb

// The angle in [0, 180] degrees whose cosine is given.
Rotation ArcCosineOf(double cosine)
{
    const double limited = std::clamp(cosine, -1.0, 1.0);
    return {limited, std::sqrt(1.0 - limited * limited)};
}

// Slopes of the two tilt axes: sines and cosines of the angles that CInclineSensor_Position uses.
struct Slopes
{
    SineCosine first;
    SineCosine second;
    double sineOfLean;
    double cosineOfLean;
};

Slopes SlopesOf(int sensorType, const PoseAngles& angles)
{
    const SineCosine pitch = SineCosineOf(angles.pitch);
    const SineCosine roll = SineCosineOf(angles.roll);
    if (AxesOf(sensorType) == SensorAxes::ForwardLeftUp) {
        const double square = std::min(pitch.sine * pitch.sine + roll.sine * roll.sine, 1.0);
        return {pitch, roll, std::sqrt(square), std::sqrt(1.0 - square)};
    }
    const double right = -pitch.cosine * roll.sine;
    const double forward = pitch.sine;
    const double up = pitch.cosine * roll.cosine;
    return {
        {right, std::sqrt(1.0 - right * right)},
        pitch,
        std::sqrt(right * right + forward * forward),
        std::fabs(up)
    };
}

} // namespace

Point3 RigidStep(const PoseAngles& angles)
{
    const Matrix attitude = AttitudeOf(angles);
    const Point3 down = attitude.Column(2);
    return {down.x, down.y, -down.z};
}

Point3 SolvedStep(int sensorType, const PoseAngles& angles)
{
    const Slopes s = SlopesOf(sensorType, angles);
    const bool plumb = std::fabs(s.first.sine) * kDegreesPerRadian < kPlumb
                       && std::fabs(s.second.sine) * kDegreesPerRadian < kPlumb;
    if (plumb) return {0.0, 0.0, -1.0};

    const SineCosine heading = SineCosineOf(angles.heading);
    const double steep = s.cosineOfLean / s.sineOfLean; // tangent of the elevation
    const double first = s.first.sine / s.first.cosine;
    const double second = s.second.sine / s.second.cosine;
    const Rotation beside = ArcCosineOf(steep * first);
    Rotation azimuth =
        Rotation{heading.cosine, heading.sine} + (s.second.sine > 0.0 ? -beside : beside);
    if (sensorType == kTurnedProjectionType) azimuth = azimuth + ArcCosineOf(-first * second);
    return {s.sineOfLean * azimuth.cos, s.sineOfLean * azimuth.sin, -s.cosineOfLean};
}

// The coefficient (2T - t)/(2T + t) is exp(-t/T) to (t/T)^3/12 and needs no exponential.
AntennaErrors::AntennaErrors(const AntennaNoise& noise, double interval, std::uint64_t seed,
                             std::uint64_t index)
    : m_noise(noise), m_keep(0.0), m_random(seed, Stream::Antenna, index)
{
    const double twice = 2.0 * noise.correlation;
    if (twice > interval) m_keep = (twice - interval) / (twice + interval);
    m_renew = std::sqrt(1.0 - m_keep * m_keep);
    m_slow = {m_random.Normal(), 0.0, 0.0};
    m_slow.y = m_random.Normal();
    m_slow.z = m_random.Normal();
}

Point3 AntennaErrors::Next()
{
    const auto step = [this](double& slow, double slowDeviation, double whiteDeviation) {
        const double error = slowDeviation * slow + whiteDeviation * m_random.Normal();
        slow = m_keep * slow + m_renew * m_random.Normal();
        return error;
    };
    Point3 error;
    error.x = step(m_slow.x, m_noise.slowPlan, m_noise.whitePlan);
    error.y = step(m_slow.y, m_noise.slowPlan, m_noise.whitePlan);
    error.z = step(m_slow.z, m_noise.slowHeight, m_noise.whiteHeight);
    return error;
}

} // namespace simulation
