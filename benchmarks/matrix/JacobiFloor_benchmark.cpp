// SPDX-License-Identifier: MIT
//
// The arithmetic of the Jacobi eigen-solver alone: as many rotations as the solver makes, each with
// its two roots and four quotients and the lines it turns, on bare arrays. Set beside Eigen/ours/n.
#include "benchmarks/matrix/Matrices.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr double kTolerance = 1e-9;

bool HasElementAboveDiagonal(const literal::Matrix& d)
{
    for (int p = 0; p < d.rows; ++p)
        for (int q = p + 1; q < d.rows; ++q)
            if (std::fabs(d.Get(p, q)) > kTolerance) return true;
    return false;
}

// Counts the rotations that are not the identity in one run of the solver.
int CountRotations(literal::Matrix d)
{
    int count = 0;
    do {
        for (int p = 0; p < d.rows; ++p)
            for (int q = p + 1; q < d.rows; ++q) {
                const literal::Matrix j = literal::Rotation(d, p, q, kTolerance);
                if (j.Get(p, q) == 0.0) continue;
                ++count;
                d = literal::Product(literal::Product(literal::Transpose(j), d), j);
            }
    } while (HasElementAboveDiagonal(d));
    return count;
}

void TurnLines(double* x, double* y, int n, int step, double c, double s)
{
    for (int i = 0; i < n; ++i, x += step, y += step) {
        const double before = *x;
        *x = before * c + *y * s;
        *y = *y * c - before * s;
    }
}

void Turn(std::vector<double>& d, std::vector<double>& v, int n, int p, int q)
{
    const double theta =
        (d[static_cast<std::size_t>(p * n + p)] - d[static_cast<std::size_t>(q * n + q)])
        / d[static_cast<std::size_t>(p * n + q)] / 2.0;
    const double t =
        std::copysign(1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta)), theta);
    const double c = 1.0 / std::sqrt(1.0 + t * t);
    TurnLines(d.data() + p * n, d.data() + q * n, n, 1, c, t * c);
    TurnLines(d.data() + p, d.data() + q, n, n, c, t * c);
    TurnLines(v.data() + p * n, v.data() + q * n, n, 1, c, t * c);
}

void JacobiFloor(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const literal::Matrix a = PositiveDefinite(n);
    const int rotations = CountRotations(a);
    for (auto _ : state) {
        std::vector<double> d = a.elements;
        std::vector<double> v = a.elements;
        int p = 0;
        int q = 1;
        for (int i = 0; i < rotations; ++i) {
            Turn(d, v, n, p, q);
            if (++q < n) continue;
            p = p + 2 < n ? p + 1 : 0;
            q = p + 1;
        }
        benchmark::DoNotOptimize(d.data());
        benchmark::DoNotOptimize(v.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(std::to_string(rotations) + " rotations");
}

BENCHMARK(JacobiFloor)->Arg(3)->Arg(4)->Arg(6)->Arg(12)->Arg(40);

} // namespace
