// SPDX-License-Identifier: MIT
//
// What all recordings share: when samples are taken, which are lost, how a hand trembles.
#pragma once

#include "simulation/Moving.h"
#include "simulation/PoseSensor.h"
#include <array>
#include <string>
#include <vector>

namespace simulation {

/// A stretch of time without samples.
struct Gap
{
    double from = 0.0; // [s] since the start
    double to = 0.0;   // [s] since the start, not included
};

/// Losses between sensor and log.
struct Losses
{
    double share = 0.0;      // of the samples, at random, in [0, 1)
    std::vector<Gap> gaps{}; // lost as a whole
};

/// Tells recordings with one seed apart: 0 and 1 are the turns.
constexpr std::uint64_t kWalkIndex = 2;
/// The first of the points of an occupation log, the others follow.
constexpr std::uint64_t kOccupationIndex = 16;

/// Samples and what they show, one beside the other.
struct Recording
{
    std::vector<PoseSensorData> samples;
    std::vector<PoseTruth> truth;
};

/// A smooth random movement: three waves of 0.2 to 1.5 Hz with random phases, standard deviation 1.
class Tremor
{
public:
    explicit Tremor(Generator& random);
    double At(double seconds) const;
    /// The same with its derivatives.
    Moving MovingAt(double seconds) const;

private:
    struct Wave
    {
        double frequency; // [Hz]
        double phase;     // [degrees]
    };
    std::array<Wave, 3> m_waves;
};

/// Decides which samples are lost; called once for each sample, in order.
class LossDecision
{
public:
    LossDecision(const Losses& losses, std::uint64_t seed, std::uint64_t index)
        : m_losses(losses), m_random(seed, Stream::Drops, index)
    {}
    bool Loses(double seconds);

private:
    Losses m_losses;
    Generator m_random;
};

/// What is wrong with losses, or an empty text.
std::string ProblemOf(const Losses& losses);

/// 0 at 0, 1 at 1, level at both ends: 3s^2 - 2s^3, s cut to [0, 1].
double Smoothly(double s);

} // namespace simulation
