// SPDX-License-Identifier: MIT
//
// One step of the Kalman filter, 6 states and 6 measurements, beside Eigen with fixed sizes
// (KFilter_peers.cpp) and a literal port. KalmanModel.h explains the argument.
#include "benchmarks/calibration/KalmanModel.h"
#include "calibration/KFilter.h"
#include "tests/reference/LiteralMatrix.h"

#include <benchmark/benchmark.h>

#include <functional>

namespace {

using kalman::kOrder;
using kalman::Model;

void Kalman_Ours(benchmark::State& state)
{
    const Model m(state);
    const auto square = [](const double* v) { return CSZMatrix(v, 36, kOrder, kOrder); };
    CKFilter filter;
    filter.SetMatrixOrder(kOrder, kOrder);
    filter.SetSystemMatrix(square(m.Phi), square(m.B), square(m.Gamma), square(m.H), square(m.D));
    filter.SetNoise(square(m.R), square(m.Q));
    filter.SetInitialData(CSZMatrix(m.x, 6, 6, 1), square(m.P));
    const CSZMatrix z(m.z, 6, 6, 1), u(m.u, 6, 6, 1);
    for (auto _ : state) {
        const CSZMatrix estimate = filter.Filter(z, u);
        benchmark::DoNotOptimize(estimate.GetData(0, 0));
    }
}

namespace port {

using literal::Matrix;

Matrix operator*(const Matrix& a, const Matrix& b)
{
    return literal::Product(a, b);
}
Matrix operator+(const Matrix& a, const Matrix& b)
{
    return literal::Combined(a, b, std::plus<>());
}
Matrix operator-(const Matrix& a, const Matrix& b)
{
    return literal::Combined(a, b, std::minus<>());
}

} // namespace port

void Kalman_LiteralPort(benchmark::State& state)
{
    using namespace port;
    const Model m(state);
    const auto fill = [](const double* v, int rows, int columns) {
        Matrix matrix(rows, columns);
        for (int i = 0; i < rows * columns; ++i)
            matrix.Set(i / columns, i % columns, v[i]);
        return matrix;
    };
    const Matrix Phi = fill(m.Phi, 6, 6), B = fill(m.B, 6, 6), Gamma = fill(m.Gamma, 6, 6),
                 H = fill(m.H, 6, 6), D = fill(m.D, 6, 6), R = fill(m.R, 6, 6), Q = fill(m.Q, 6, 6),
                 z = fill(m.z, 6, 1), u = fill(m.u, 6, 1);
    Matrix P = fill(m.P, 6, 6), x = fill(m.x, 6, 1);
    for (auto _ : state) {
        const Matrix predicted = Phi * P * Transpose(Phi) + Gamma * Q * Transpose(Gamma);
        const Matrix S = H * predicted * Transpose(H) + R;
        const Matrix K = predicted * Transpose(H) * Inverted(S);
        P = (literal::Identity(6) - K * H) * predicted;
        const Matrix before = Phi * x + B * u;
        x = before + K * (z - D * u - H * before);
        benchmark::DoNotOptimize(x.Get(0, 0));
    }
}

BENCHMARK(Kalman_Ours)->DenseRange(0, 2);
BENCHMARK(Kalman_LiteralPort)->DenseRange(0, 2);

} // namespace
