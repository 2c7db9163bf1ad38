// SPDX-License-Identifier: MIT
//
// The search of the tip beside its literal form (four nested loops, four starts each), on positions
// with field-like noise: 8 mm in plan, 15 mm in height, tilts up to 25 degrees or to the usual
// cut-off of 45. The literal form stands on three kinds of matrices, and is run once where it takes
// seconds:
//
//   CalculateLiterally      the matrix class written out as well: checked elements on the heap
//   CalculateWithMatrices   CTiltMatrix
//   CalculateOnDense        bare arrays, nothing checked
#include "geometry/detail/TipSearch.h"

#include "quality/TipEstimate.h"
#include "tests/geometry/PoleSets.h"
#include "tests/reference/LiteralMatrix.h"
#include "tests/reference/LiteralSearch.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <initializer_list>

namespace {

constexpr double kHeight = 2.0; // [m]

std::vector<literal::Point> Positions(const benchmark::State& state, double noise = 1.0)
{
    return poles::Antennas({.count = static_cast<int>(state.range(0)),
                            .tilt = static_cast<double>(state.range(1)),
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
    std::vector<tiltpole::geometry::Point3> positions;
    for (const literal::Point& p : Positions(state))
        positions.push_back({p[0], p[1], p[2]});
    for (auto _ : state)
        benchmark::DoNotOptimize(tiltpole::geometry::SearchTip(
            positions, kHeight, 1e-9, {}, tiltpole::geometry::SearchKernels::Of<2>()));
}

struct OwnAlgebra
{
    using Matrix = CTiltMatrix;
    static Matrix Make(unsigned rows, unsigned columns) { return {rows, columns}; }
    static void Set(Matrix& m, unsigned row, unsigned column, double value)
    {
        m.SetData(row, column, value);
    }
    static double Get(const Matrix& m, unsigned row, unsigned column)
    {
        return m.GetData(row, column);
    }
    static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
    static Matrix Transpose(const Matrix& a) { return a.MatTran(); }
    static Matrix Inverse(const Matrix& a) { return a.MatInv(); }
};

struct LiteralAlgebra
{
    using Matrix = literal::Matrix;
    static Matrix Make(unsigned rows, unsigned columns)
    {
        return {static_cast<int>(rows), static_cast<int>(columns)};
    }
    static void Set(Matrix& m, unsigned row, unsigned column, double value)
    {
        m.Set(static_cast<int>(row), static_cast<int>(column), value);
    }
    static double Get(const Matrix& m, unsigned row, unsigned column)
    {
        return m.Get(static_cast<int>(row), static_cast<int>(column));
    }
    static Matrix Product(const Matrix& a, const Matrix& b) { return literal::Product(a, b); }
    static Matrix Transpose(const Matrix& a) { return literal::Transpose(a); }
    static Matrix Inverse(const Matrix& a)
    {
        return literal::GaussJordan(a, literal::PivotTest::None).matrix;
    }
};

// The two steps as a matrix class would have them written, positions and tip included; the four
// positions of a center are passed by value, as ProbableCoor declares them.
template <class Algebra>
struct MatrixSteps
{
    using Matrix = typename Algebra::Matrix;
    using Vector = Matrix;

    static Vector ToVector(const literal::Point& p)
    {
        Vector v = Algebra::Make(3, 1);
        for (unsigned c = 0; c < 3; ++c)
            Algebra::Set(v, c, 0, p[c]);
        return v;
    }

    static double Get(const Vector& v, unsigned c) { return Algebra::Get(v, c, 0); }
    static void Raise(Vector& v, double by) { Algebra::Set(v, 2, 0, Get(v, 2) + by); }

    static double Distance(const Vector& a, const Vector& b)
    {
        double squares = 0.0;
        for (unsigned c = 0; c < 3; ++c)
            squares += (Get(a, c) - Get(b, c)) * (Get(a, c) - Get(b, c));
        return std::sqrt(squares);
    }

    static Vector Center(Vector p1, Vector p2, Vector p3, Vector p4)
    {
        Matrix system = Algebra::Make(3, 3);
        Matrix right = Algebra::Make(3, 1);
        const std::array<const Vector*, 4> p = {&p1, &p2, &p3, &p4};
        for (unsigned row = 0; row < 3; ++row) {
            double squares = 0.0;
            for (unsigned c = 0; c < 3; ++c) {
                const double here = Get(*p[row], c);
                const double next = Get(*p[row + 1], c);
                Algebra::Set(system, row, c, here - next);
                squares += here * here - next * next;
            }
            Algebra::Set(right, row, 0, 0.5 * squares);
        }
        return Algebra::Product(Algebra::Inverse(system), right);
    }

    static literal::State Step(const std::vector<Vector>& obs, Vector& tip, double& radius)
    {
        const auto n = static_cast<unsigned>(obs.size());
        Matrix design = Algebra::Make(n, 3);
        Matrix misclosure = Algebra::Make(n, 1);
        for (unsigned k = 0; k < n; ++k) {
            for (unsigned c = 0; c < 3; ++c)
                Algebra::Set(design, k, c, (Get(tip, c) - Get(obs[k], c)) / radius);
            Algebra::Set(misclosure, k, 0, Distance(tip, obs[k]) - radius);
        }
        const Matrix normal = Algebra::Product(Algebra::Transpose(design), design);
        const Matrix u = Algebra::Product(Algebra::Transpose(design), misclosure);
        const Matrix step = Algebra::Product(Algebra::Inverse(normal), u);
        for (unsigned c = 0; c < 3; ++c)
            Algebra::Set(tip, c, 0, Get(tip, c) + Get(step, c));
        radius += (Get(u, 0) + Get(u, 1) + Get(u, 2)) / n;

        Matrix residuals = Algebra::Make(n, 1);
        for (unsigned k = 0; k < n; ++k) {
            double linear = 0.0;
            for (unsigned c = 0; c < 3; ++c)
                linear += Get(step, c) * (Get(tip, c) - Get(obs[k], c));
            Algebra::Set(residuals, k, 0, linear / radius + radius - Distance(tip, obs[k]));
        }
        const Matrix squares = Algebra::Product(Algebra::Transpose(residuals), residuals);
        const double variance = Get(squares, 0) / (n - 4.0);
        const Matrix cofactor = Algebra::Inverse(normal);
        literal::State state;
        state.radius = radius;
        state.pointError = std::sqrt(variance * Trace(normal));
        state.geometryFigure = std::sqrt(Trace(cofactor));
        state.heightCofactor = Algebra::Get(cofactor, 2, 2);
        return state;
    }

private:
    static double Trace(const Matrix& m)
    {
        return Algebra::Get(m, 0, 0) + Algebra::Get(m, 1, 1) + Algebra::Get(m, 2, 2);
    }
};

template <class Algebra>
void SearchOnMatrices(benchmark::State& state)
{
    using Steps = MatrixSteps<Algebra>;
    std::vector<typename Steps::Vector> positions;
    for (const literal::Point& p : Positions(state))
        positions.push_back(Steps::ToVector(p));
    for (auto _ : state) {
        literal::State result;
        benchmark::DoNotOptimize(
            literal::Search<Steps>(positions, kHeight, result, Steps::ToVector({})));
    }
}

void CalculateLiterally(benchmark::State& state)
{
    SearchOnMatrices<LiteralAlgebra>(state);
}

void CalculateWithMatrices(benchmark::State& state)
{
    SearchOnMatrices<OwnAlgebra>(state);
}

void CalculateOnDense(benchmark::State& state)
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

void ForCounts(benchmark::internal::Benchmark* work, std::initializer_list<std::int64_t> counts)
{
    work->ArgNames({"positions", "tilt"})->Unit(benchmark::kMillisecond);
    for (const std::int64_t tilt : {25, 45})
        for (const std::int64_t count : counts)
            work->Args({count, tilt});
}

void Few(benchmark::internal::Benchmark* work)
{
    ForCounts(work, {15, 30});
}

void Many(benchmark::internal::Benchmark* work)
{
    ForCounts(work, {45, 60, 80});
}

BENCHMARK(Calculate)->Apply(Few)->Apply(Many);
BENCHMARK(CalculatePlain)->Apply(Few)->Apply(Many);
BENCHMARK(CalculateLiterally)->Apply(Few);
BENCHMARK(CalculateLiterally)->Apply(Many)->Iterations(1);
BENCHMARK(CalculateWithMatrices)->Apply(Few);
BENCHMARK(CalculateWithMatrices)->Apply(Many)->Iterations(1);
BENCHMARK(CalculateOnDense)->Apply(Few);
BENCHMARK(CalculateOnDense)->Apply(Many)->Iterations(1);
BENCHMARK(CalculateExact)->Apply(Few);
BENCHMARK(Estimate)->Apply(Few)->Apply(Many)->Unit(benchmark::kMicrosecond);

} // namespace
