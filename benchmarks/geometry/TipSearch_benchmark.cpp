// The search of the tip beside its literal form (four nested loops, four starts each), once on
// small plain matrices and once on CTiltMatrix throughout, on positions with field-like noise: 8 mm
// in plan, 15 mm in height, tilts up to 40 degrees. The literal form takes seconds from 60
// positions on and is run once.
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

// The two steps as the matrix class would have them written.
struct MatrixSteps
{
    static literal::Point Centre(const std::array<literal::Point, 4>& p)
    {
        CTiltMatrix system(3, 3);
        CTiltMatrix right(3);
        for (unsigned row = 0; row < 3; ++row) {
            double squares = 0.0;
            for (unsigned c = 0; c < 3; ++c) {
                system.SetData(row, c, p[row][c] - p[row + 1][c]);
                squares += p[row][c] * p[row][c] - p[row + 1][c] * p[row + 1][c];
            }
            right.SetData(row, 0.5 * squares);
        }
        return poles::ToPoint(system.MatInv() * right);
    }

    static literal::State Step(const std::vector<literal::Point>& obs, literal::Point& tip,
                               double& radius)
    {
        const auto n = static_cast<unsigned>(obs.size());
        CTiltMatrix design(n, 3);
        CTiltMatrix misclosure(n);
        for (unsigned k = 0; k < n; ++k) {
            for (unsigned c = 0; c < 3; ++c)
                design.SetData(k, c, (tip[c] - obs[k][c]) / radius);
            misclosure.SetData(k, literal::Distance(tip, obs[k]) - radius);
        }
        const CTiltMatrix normal = design.MatTran() * design;
        const CTiltMatrix u = design.MatTran() * misclosure;
        const CTiltMatrix step = normal.MatInv() * u;
        for (unsigned c = 0; c < 3; ++c)
            tip[c] += step.GetData(c);
        radius += (u.GetData(0) + u.GetData(1) + u.GetData(2)) / n;

        CTiltMatrix residuals(n);
        for (unsigned k = 0; k < n; ++k) {
            double linear = 0.0;
            for (unsigned c = 0; c < 3; ++c)
                linear += step.GetData(c) * (tip[c] - obs[k][c]);
            residuals.SetData(k, linear / radius + radius - literal::Distance(tip, obs[k]));
        }
        const CTiltMatrix squares = residuals.MatTran() * residuals;
        const double variance = squares.GetData(0) / (n - 4.0);
        const CTiltMatrix cofactor = normal.MatInv();
        literal::State state;
        state.radius = radius;
        state.pointError = std::sqrt(variance * normal.Trace());
        state.geometryFigure = std::sqrt(cofactor.Trace());
        state.heightCofactor = cofactor.GetData(2, 2);
        return state;
    }
};

void CalculateWithMatrices(benchmark::State& state)
{
    const auto positions = Positions(state);
    for (auto _ : state) {
        literal::State result;
        benchmark::DoNotOptimize(literal::Search<MatrixSteps>(positions, kHeight, result));
    }
}

void CalculateLiterally(benchmark::State& state)
{
    const auto positions = Positions(state);
    for (auto _ : state) {
        literal::State result;
        benchmark::DoNotOptimize(literal::Search<>(positions, kHeight, result));
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
BENCHMARK(CalculateWithMatrices)->Arg(15)->Arg(30)->Unit(benchmark::kMillisecond);
BENCHMARK(CalculateWithMatrices)
    ->Arg(45)
    ->Arg(60)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK(CalculateExact)->Arg(15)->Arg(30)->Unit(benchmark::kMillisecond);
BENCHMARK(Estimate)->Arg(15)->Arg(80)->Unit(benchmark::kMicrosecond);

} // namespace
