// SPDX-License-Identifier: MIT
//
// The tip from an occupation, sensors at 50 Hz and antenna at 5 Hz:
//
//   Estimate      the whole of what was added: tip, region, advice
//   WithoutGyros  the same from pitch, roll and magnetic heading
//   AddSample     one sample
//   OnlineStep    what a display asks for five times a second, ten samples, an epoch and an estimate,
//                 on the mean of the steps from 2 to 10 s
#include "field/Occupation.h"
#include "tests/field/SimulatedPole.h"

#include <benchmark/benchmark.h>

namespace {

using field::Occupation;
using field_tests::PoleLog;

constexpr double kRate = 50.0;          // [Hz]
constexpr std::size_t kPerEpoch = 10;   // samples
constexpr std::size_t kFirstStep = 100; // sample from which there are estimates

PoleLog LeanInOf(double seconds)
{
    return {field_tests::SimulatedPole(field_tests::LeanIn(25.0), 40.0, {}, 1), seconds, kRate,
            kPerEpoch};
}

void Fill(Occupation& occupation, const PoleLog& log)
{
    for (std::size_t i = 0; i < log.samples.size(); ++i)
        log.Give(occupation, i);
}

void Estimate(benchmark::State& state)
{
    Occupation occupation({});
    Fill(occupation, LeanInOf(static_cast<double>(state.range(0))));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(occupation.Estimate());
}
BENCHMARK(Estimate)->ArgName("seconds")->Arg(5)->Arg(10)->Arg(60)->Unit(benchmark::kMicrosecond);

void WithoutGyros(benchmark::State& state)
{
    Occupation occupation({});
    Fill(occupation, LeanInOf(10.0));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(occupation.EstimateWithoutGyros());
}
BENCHMARK(WithoutGyros)->Unit(benchmark::kMicrosecond);

void AddSample(benchmark::State& state)
{
    const PoleLog log = LeanInOf(10.0);
    Occupation occupation({});
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (i == log.samples.size()) {
            occupation.Clear();
            i = 0;
        }
        benchmark::DoNotOptimize(occupation.Add(log.samples[i++]));
    }
}
BENCHMARK(AddSample);

void OnlineStep(benchmark::State& state)
{
    const PoleLog log = LeanInOf(10.0);
    Occupation occupation({});
    std::size_t next = log.samples.size();
    for ([[maybe_unused]] auto _ : state) {
        if (next + kPerEpoch > log.samples.size()) {
            state.PauseTiming();
            occupation.Clear();
            for (next = 0; next < kFirstStep; ++next)
                log.Give(occupation, next);
            state.ResumeTiming();
        }
        for (const std::size_t end = next + kPerEpoch; next < end; ++next)
            log.Give(occupation, next);
        benchmark::DoNotOptimize(occupation.Estimate());
    }
}
BENCHMARK(OnlineStep)->Unit(benchmark::kMicrosecond);

} // namespace
