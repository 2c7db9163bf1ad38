// SPDX-License-Identifier: MIT
//
// Seed and length of random tests that draw by the standard library. A file that calls SeedOfRun is among
// the tests that SecondSeed repeats where its folder says tiltpole_second_seed.
#pragma once

#include <cstdlib>
#include <string>

namespace reference {

/// N of RC_PARAMS="seed=N", which CTest sets; without it the seed that CTest has.
inline unsigned SeedOfRun()
{
    constexpr unsigned long kUsual = 20261121;
    const char* const parameters = std::getenv("RC_PARAMS");
    const std::string text = parameters == nullptr ? "" : parameters;
    const std::size_t at = text.find("seed=");
    if (at == std::string::npos) return static_cast<unsigned>(kUsual);
    return static_cast<unsigned>(std::strtoul(text.c_str() + at + 5, nullptr, 10));
}

/// How many rounds a long test runs, each with its own seed: TILTPOLE_ROUNDS, 1 without it.
inline unsigned Rounds()
{
    const char* const rounds = std::getenv("TILTPOLE_ROUNDS");
    const unsigned long count = rounds == nullptr ? 1 : std::strtoul(rounds, nullptr, 10);
    return count == 0 ? 1U : static_cast<unsigned>(count);
}

} // namespace reference
