// SPDX-License-Identifier: MIT
//
// From the tip of a pole to its antenna, and the antenna's noise.
#pragma once

#include "simulation/Attitude.h"
#include "simulation/Random.h"
#include <cstdint>

namespace simulation {

/// A point of the plane coordinate system [m].
struct Point
{
    double x = 0.0; // northing
    double y = 0.0; // easting
    double h = 0.0; // height

    friend constexpr Point operator+(const Point& p, const Point& q)
    {
        return {p.x + q.x, p.y + q.y, p.h + q.h};
    }
    friend constexpr Point operator-(const Point& p, const Point& q)
    {
        return {p.x - q.x, p.y - q.y, p.h - q.h};
    }
};

/// How the antenna stands over the tip.
enum class PoleGeometry : std::uint8_t {
    AsSolved, // so that the step from antenna to tip, as the library takes it, ends on the tip
    Rigid,    // a straight pole along the body's down axis
};

/// From the antenna to the tip of a pole 1 m long, straight along the body's down axis.
Point RigidStep(const PoseAngles& angles);

/// The same step as the positioning takes it from heading and reported pitch and roll. For sensor
/// type 2 it is the rigid one. For type 1 it takes pitch and roll as slopes of two axes and is the
/// rigid one where either of them is 0; for other types the heading is that of the right axis.
Point SolvedStep(int sensorType, const PoseAngles& angles);

/// Noise of a satellite receiver in real-time kinematic mode: a white share and a slow one, which
/// is a first-order autoregression. The figures are near those of a recorded fixed antenna at 1 Hz
/// (docs/simulation.md).
struct AntennaNoise
{
    double whitePlan = 0.0015;   // standard deviation of each plane coordinate [m]
    double whiteHeight = 0.0035; // [m]
    double slowPlan = 0.0025;    // [m]
    double slowHeight = 0.010;   // [m]
    double correlation = 30.0;   // time in which the slow share's correlation falls to 1/e [s]
};

/// A sequence of antenna errors at an even rate.
class AntennaErrors
{
public:
    /// @param interval  between two errors [s]
    AntennaErrors(const AntennaNoise& noise, double interval, std::uint64_t seed);
    Point Next();

private:
    AntennaNoise m_noise;
    double m_keep;  // of the slow share from one error to the next
    double m_renew; // sqrt(1 - keep^2)
    Point m_slow;   // in standard deviations
    Generator m_random;
};

} // namespace simulation
