// SPDX-License-Identifier: MIT
#include "simulation/Random.h"

#include "simulation/PortableMath.h"
#include <bit>
#include <cmath>

namespace simulation {

std::uint64_t SplitMix(std::uint64_t& state)
{
    state += 0x9E3779B97F4A7C15;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

// Seed, stream and index are mixed one after the other, so that neighboring values of any of them
// give unrelated states.
Generator::Generator(std::uint64_t seed, Stream stream, std::uint64_t index) : m_state{}
{
    std::uint64_t mix = seed;
    mix = SplitMix(mix) ^ static_cast<std::uint64_t>(stream);
    mix = SplitMix(mix) ^ index;
    for (std::uint64_t& word : m_state)
        word = SplitMix(mix);
}

std::uint64_t Generator::Next()
{
    const std::uint64_t result = std::rotl(m_state[1] * 5, 7) * 9;
    const std::uint64_t shifted = m_state[1] << 17;
    m_state[2] ^= m_state[0];
    m_state[3] ^= m_state[1];
    m_state[1] ^= m_state[2];
    m_state[0] ^= m_state[3];
    m_state[2] ^= shifted;
    m_state[3] = std::rotl(m_state[3], 45);
    return result;
}

double Generator::Uniform()
{
    return static_cast<double>(Next() >> 11) * 0x1.0p-53;
}

double Generator::Normal()
{
    if (m_hasSpare) {
        m_hasSpare = false;
        return m_spare;
    }
    double u = 0.0;
    double v = 0.0;
    double square = 0.0;
    do {
        u = 2.0 * Uniform() - 1.0;
        v = 2.0 * Uniform() - 1.0;
        square = u * u + v * v;
    } while (square >= 1.0 || square == 0.0);
    const double scale = std::sqrt(-2.0 * Logarithm(square) / square);
    m_spare = v * scale;
    m_hasSpare = true;
    return u * scale;
}

} // namespace simulation
