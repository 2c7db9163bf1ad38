// SPDX-License-Identifier: MIT
//
// The points of a plane transform that are timed, and the time of one of them.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

namespace plane {

constexpr double kScale = 1.0000015504;
constexpr double kRotation = 7.5874e-6; // [radians]

struct Place
{
    double x, y;
};

inline std::vector<Place> Places(const benchmark::State& state)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> share(0.0, 100000.0);
    std::vector<Place> places(static_cast<std::size_t>(state.range(0)));
    for (Place& p : places)
        p = {4500000.0 + share(random), 500000.0 + share(random)};
    return places;
}

inline void CountPoints(benchmark::State& state)
{
    state.counters["per point"] =
        benchmark::Counter(static_cast<double>(state.range(0) * state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

inline void Sizes(benchmark::internal::Benchmark* work)
{
    work->ArgName("points")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
}

} // namespace plane
