// SPDX-License-Identifier: MIT
//
// From the tip of a pole to its antenna, and the antenna's noise.
//
// Points are those of the plane frame [m]: x north, y east, z up.
//
//     AntennaErrors errors({}, 0.1, seed);
//     const Point3 antenna = tip - 2.0 * RigidStep(angles) + errors.Next();
#pragma once

#include "simulation/Attitude.h"
#include "simulation/Random.h"
#include <cstdint>

namespace simulation {

/// How the antenna stands over the tip.
enum class PoleGeometry : std::uint8_t {
    Rigid,     // on a straight pole along the body's down axis
    ByFormula, // where CInclineSensor_Position has to find it to arrive at the tip
};

/// From the antenna to the tip of a pole 1 m long, straight along the body's down axis.
Point3 RigidStep(const PoseAngles& angles);

/// The same step as CInclineSensor_Position computes it from heading and reported pitch and roll.
/// For sensor type 2 that is the rigid step. For type 1 pitch and roll count as slopes of two axes,
/// which is the rigid step where either of them is 0; for other types the heading is that of the
/// right axis.
Point3 SolvedStep(int sensorType, const PoseAngles& angles);

/// Noise of a GNSS receiver in real-time kinematic mode: a white part and a slow one, a first-order
/// autoregression. The defaults are close to a fixed antenna recorded at 1 Hz (docs/simulation.md).
struct AntennaNoise
{
    double whitePlan = 0.0015;   // standard deviation of each plane coordinate [m]
    double whiteHeight = 0.0035; // [m]
    double slowPlan = 0.0025;    // [m]
    double slowHeight = 0.010;   // [m]
    double correlation = 30.0;   // time in which the slow part's autocorrelation falls to 1/e [s]
};

/// A sequence of antenna errors at a constant rate.
class AntennaErrors
{
public:
    /// @param interval  between two errors [s]
    /// @param index     tells sequences of one seed apart
    AntennaErrors(const AntennaNoise& noise, double interval, std::uint64_t seed,
                  std::uint64_t index = 0);
    /// The error of the next position [m].
    Point3 Next();

private:
    AntennaNoise m_noise;
    double m_keep;  // of the slow part from one error to the next
    double m_renew; // sqrt(1 - keep^2)
    Point3 m_slow;  // in standard deviations
    Generator m_random;
};

} // namespace simulation
