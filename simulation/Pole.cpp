// SPDX-License-Identifier: MIT
#include "simulation/Pole.h"

#include "simulation/PortableMath.h"
#include <algorithm>

namespace simulation {

namespace {

constexpr double kPlumb = 1e-6 * 57.2957795130823208768; // [degrees]: below it there is no step

// The direction whose cosine is given, to the left or to the right of an azimuth.
struct Direction
{
    double cosine;
    double sine;
};

Direction Beside(double cosine, bool left)
{
    const double cut = std::clamp(cosine, -1.0, 1.0);
    const double sine = std::sqrt(1.0 - cut * cut);
    return {cut, left ? -sine : sine};
}

Direction Sum(const Direction& a, const Direction& b)
{
    return {a.cosine * b.cosine - a.sine * b.sine, a.sine * b.cosine + a.cosine * b.sine};
}

// Slopes of the two tilt axes: sines and cosines of the angles that the positioning works with.
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
    if (sensorType == 1) {
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

Point RigidStep(const PoseAngles& angles)
{
    const Matrix attitude = AttitudeOf(angles);
    const Vector down = attitude.Column(2);
    return {down.x, down.y, -down.z};
}

Point SolvedStep(int sensorType, const PoseAngles& angles)
{
    const Slopes s = SlopesOf(sensorType, angles);
    const bool plumb = std::fabs(s.first.sine) * 57.2957795130823208768 < kPlumb
                       && std::fabs(s.second.sine) * 57.2957795130823208768 < kPlumb;
    if (plumb) return {0.0, 0.0, -1.0};

    const SineCosine heading = SineCosineOf(angles.heading);
    const double steep = s.cosineOfLean / s.sineOfLean; // tangent of the elevation
    const double first = s.first.sine / s.first.cosine;
    const double second = s.second.sine / s.second.cosine;
    Direction azimuth =
        Sum({heading.cosine, heading.sine}, Beside(steep * first, s.second.sine > 0.0));
    if (sensorType == 2) azimuth = Sum(azimuth, Beside(-first * second, false));
    return {s.sineOfLean * azimuth.cosine, s.sineOfLean * azimuth.sine, -s.cosineOfLean};
}

// The coefficient (2T - t)/(2T + t) is exp(-t/T) to (t/T)^3/12 and needs no exponential.
AntennaErrors::AntennaErrors(const AntennaNoise& noise, double interval, std::uint64_t seed)
    : m_noise(noise), m_keep(0.0), m_random(seed, Stream::Antenna)
{
    const double twice = 2.0 * noise.correlation;
    if (twice > interval) m_keep = (twice - interval) / (twice + interval);
    m_renew = std::sqrt(1.0 - m_keep * m_keep);
    m_slow = {m_random.Normal(), 0.0, 0.0};
    m_slow.y = m_random.Normal();
    m_slow.h = m_random.Normal();
}

Point AntennaErrors::Next()
{
    const auto step = [this](double& slow, double slowDeviation, double whiteDeviation) {
        const double error = slowDeviation * slow + whiteDeviation * m_random.Normal();
        slow = m_keep * slow + m_renew * m_random.Normal();
        return error;
    };
    Point error;
    error.x = step(m_slow.x, m_noise.slowPlan, m_noise.whitePlan);
    error.y = step(m_slow.y, m_noise.slowPlan, m_noise.whitePlan);
    error.h = step(m_slow.h, m_noise.slowHeight, m_noise.whiteHeight);
    return error;
}

} // namespace simulation
