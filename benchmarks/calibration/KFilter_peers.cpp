// SPDX-License-Identifier: MIT
//
// One step of the Kalman filter in Eigen with fixed sizes.
#include "benchmarks/PeerName.h"
#include "benchmarks/calibration/KalmanModel.h"

#include <Eigen/Dense>

namespace {

using kalman::kOrder;
using kalman::Model;

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

BENCHMARK(Kalman_Eigen)->Name(TILTPOLE_PEER("Kalman_Eigen"))->DenseRange(0, 2);

} // namespace
