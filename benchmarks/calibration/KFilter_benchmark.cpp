// SPDX-License-Identifier: MIT
//
// One step of the Kalman filter, 6 states and 6 measurements, beside Eigen with fixed sizes and a
// literal port. Argument 0: a general model, 1: identities, no control and diagonal covariances, as
// the screening uses, 2: the same with a full covariance of the state.
#include "benchmarks/calibration/PlainMatrix.h"
#include "calibration/KFilter.h"

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int kOrder = 6;

struct Model
{
    double Phi[36], B[36], Gamma[36], H[36], D[36], R[36], Q[36], P[36], x[6], z[6], u[6];

    explicit Model(const benchmark::State& state)
    {
        const bool identities = state.range(0) != 0;
        std::mt19937 random(3);
        std::uniform_real_distribution<double> value(-0.4, 0.4);
        for (int i = 0; i < 36; ++i) {
            const double one = i % 7 == 0;
            for (double* matrix : {Phi, Gamma, H})
                matrix[i] = identities ? one : one + value(random);
            for (double* matrix : {B, D})
                matrix[i] = identities ? 0 : value(random);
            R[i] = Q[i] = 16 * one;
            P[i] = 25 * one + (state.range(0) == 2 ? 5 : 0);
        }
        for (int i = 0; i < 6; ++i) {
            x[i] = 100 * value(random);
            z[i] = x[i] + value(random);
            u[i] = identities ? 0 : value(random);
        }
    }
};

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

void Kalman_Eigen(benchmark::State& state)
{
    using Square = Eigen::Matrix<double, kOrder, kOrder, Eigen::RowMajor>;
    using Vector = Eigen::Matrix<double, kOrder, 1>;
    const Model m(state);
    const Square Phi(m.Phi), B(m.B), Gamma(m.Gamma), H(m.H), D(m.D), R(m.R), Q(m.Q);
    Square P(m.P);
    Vector x(m.x);
    const Vector z(m.z), u(m.u);
    for (auto _ : state) {
        const Square predicted = Phi * P * Phi.transpose() + Gamma * Q * Gamma.transpose();
        const Square S = H * predicted * H.transpose() + R;
        const Square K = predicted * H.transpose() * S.inverse();
        P = (Square::Identity() - K * H) * predicted;
        const Vector before = Phi * x + B * u;
        x = before + K * (z - D * u - H * before);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(P);
    }
}

void Kalman_LiteralPort(benchmark::State& state)
{
    using plain::Matrix;
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
        const Matrix predicted = Phi * P * Phi.Transpose() + Gamma * Q * Gamma.Transpose();
        const Matrix S = H * predicted * H.Transpose() + R;
        const Matrix K = predicted * H.Transpose() * S.Inverse();
        P = (Matrix::Identity(6) - K * H) * predicted;
        const Matrix before = Phi * x + B * u;
        x = before + K * (z - D * u - H * before);
        benchmark::DoNotOptimize(x.Get(0, 0));
    }
}

BENCHMARK(Kalman_Ours)->DenseRange(0, 2);
BENCHMARK(Kalman_Eigen)->DenseRange(0, 2);
BENCHMARK(Kalman_LiteralPort)->DenseRange(0, 2);

} // namespace
