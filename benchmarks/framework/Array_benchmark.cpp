// SPDX-License-Identifier: MIT
//
// Filling a CArray element by element beside std::vector, numbers and samples.
#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace {

template <class T>
void FillArray(benchmark::State& state)
{
    const T element{};
    for ([[maybe_unused]] auto _ : state) {
        CArray<T> filled;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            filled.Add(element);
        benchmark::DoNotOptimize(filled.GetData());
        benchmark::ClobberMemory();
    }
}

template <class T>
void FillVector(benchmark::State& state)
{
    const T element{};
    for ([[maybe_unused]] auto _ : state) {
        std::vector<T> filled;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            filled.push_back(element);
        benchmark::DoNotOptimize(filled.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK_TEMPLATE(FillArray, double)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(FillVector, double)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(FillArray, PoseSensorData)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK_TEMPLATE(FillVector, PoseSensorData)->Arg(10)->Arg(1000)->Arg(10000);

} // namespace
