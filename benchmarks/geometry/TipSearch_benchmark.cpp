// The search of the tip beside its literal form (four nested loops, four starts each, matrices
// allocated as they come), on positions with field-like noise: 8 mm in plan, 15 mm in height, tilts
// up to 40 degrees. The literal form takes seconds from 60 positions on and is run once.
#include "geometry/detail/TipSearch.h"

#include "quality/TipEstimate.h"
#include "tests/geometry/LiteralSearch.h"
#include "tests/geometry/PoleSets.h"

#include <benchmark/benchmark.h>

namespace {

constexpr double kHeight = 2.0; // [m]

std::vector<literal::Point> Positions(const benchmark::State& state, double noise = 1.0)
{
    return poles::Antennas({.count = static_cast<int>(state.range(0)),
                            .planNoise = 0.008 * noise,
                            .heightNoise = 0.015 * noise},
                           11);
}

void Calculate(benchmark::State& state)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(kHeight);
    auto positions = poles::Vectors(Positions(state));
    for (auto _ : state) {
        TiltPoint_State result;
        benchmark::DoNotOptimize(
            geometry.Adjustment(positions.data(), static_cast<int>(positions.size()), result));
    }
}

void CalculateExact(benchmark::State& state)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(kHeight);
    auto positions = poles::Vectors(Positions(state, 0.0));
    for (auto _ : state) {
        TiltPoint_State result;
        benchmark::DoNotOptimize(
            geometry.Adjustment(positions.data(), static_cast<int>(positions.size()), result));
    }
}

// Without 256-bit vectors.
void CalculatePlain(benchmark::State& state)
{
    std::vector<detail::sphere::SpacePoint> positions;
    for (const literal::Point& p : Positions(state))
        positions.push_back({p[0], p[1], p[2]});
    for (auto _ : state)
        benchmark::DoNotOptimize(detail::sphere::SearchTip(positions, kHeight, 1e-9, {},
                                                           detail::sphere::PlainSearchKernels()));
}

void CalculateLiterally(benchmark::State& state)
{
    const auto positions = Positions(state);
    for (auto _ : state) {
        literal::State result;
        benchmark::DoNotOptimize(literal::Search(positions, kHeight, result));
    }
}

void Estimate(benchmark::State& state)
{
    std::vector<xyhCoord> positions;
    for (const literal::Point& p : Positions(state))
        positions.push_back({p[0], p[1], p[2]});
    for (auto _ : state)
        benchmark::DoNotOptimize(quality::EstimateTip(positions, kHeight));
}

BENCHMARK(Calculate)->Arg(15)->Arg(30)->Arg(45)->Arg(60)->Arg(80)->Unit(benchmark::kMillisecond);
BENCHMARK(CalculatePlain)
    ->Arg(15)
    ->Arg(30)
    ->Arg(45)
    ->Arg(60)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(CalculateLiterally)->Arg(15)->Arg(30)->Unit(benchmark::kMillisecond);
BENCHMARK(CalculateLiterally)
    ->Arg(45)
    ->Arg(60)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK(CalculateExact)->Arg(15)->Arg(30)->Unit(benchmark::kMillisecond);
BENCHMARK(Estimate)->Arg(15)->Arg(80)->Unit(benchmark::kMicrosecond);

} // namespace
