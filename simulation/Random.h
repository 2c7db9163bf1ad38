// SPDX-License-Identifier: MIT
//
// The random numbers of a simulation: same seed and stream, same numbers, on every platform.
//
// Generator: xoshiro256** 1.0, seeded through splitmix64 (D. Blackman, S. Vigna, "Scrambled linear
// pseudorandom number generators", ACM TOMS 47(4), 2021). Normal deviates: the polar method
// (G. Marsaglia, T. A. Bray, SIAM Review 6, 1964) on the portable logarithm.
#pragma once

#include <array>
#include <cstdint>

namespace simulation {

/// What a sequence of random numbers is for. Each purpose has its own sequence, so that, for one,
/// more dropped samples leave the noise of the others as it was. The values are part of the
/// meaning of a seed: add, never renumber.
enum class Stream : std::uint64_t {
    Motion = 1,
    MagnetometerA = 2,
    MagnetometerB = 3,
    Tilt = 4,
    Inertial = 5,
    Drops = 6,
    Antenna = 7,
    Placement = 8,
    Incline = 9,
    Outliers = 10,
    Mounting = 11,
    Epochs = 12,
    Gyros = 13,
};

/// One step of splitmix64: advances `state` and returns its output.
std::uint64_t SplitMix(std::uint64_t& state);

class Generator
{
public:
    /// @param seed    any value
    /// @param stream  what the numbers are for
    /// @param index   tells sequences of one purpose apart, as the two turns of a calibration
    explicit Generator(std::uint64_t seed, Stream stream, std::uint64_t index = 0);

    /// The generator in a given state, not all zero.
    explicit Generator(const std::array<std::uint64_t, 4>& state) : m_state(state) {}

    std::uint64_t Next();

    /// Evenly spread in [0, 1), a multiple of 2^-53.
    double Uniform();

    /// Evenly spread in [low, high).
    double Uniform(double low, double high) { return low + (high - low) * Uniform(); }

    /// Normal, mean 0, standard deviation 1.
    double Normal();

private:
    std::array<std::uint64_t, 4> m_state;
    double m_spare = 0.0; // the second deviate of a pair
    bool m_hasSpare = false;
};

} // namespace simulation
