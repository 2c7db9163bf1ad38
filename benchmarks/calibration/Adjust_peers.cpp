// SPDX-License-Identifier: MIT
//
// The fits of Adjust in Eigen.
#include "benchmarks/PeerName.h"
#include "benchmarks/calibration/AdjustTurns.h"

#include <Eigen/Dense>

namespace {

using namespace adjusting;

namespace eigen {

using Column = Eigen::ArrayXd;
using Conic = Eigen::Matrix<double, 5, 1>;

struct Readings
{
    Column x, y, z;
};

Readings Read(const Turn& turn, int sensor)
{
    const auto n = static_cast<Eigen::Index>(turn.size());
    Readings r{Column(n), Column(n), Column(n)};
    for (Eigen::Index i = 0; i < n; ++i) {
        const PoseSensorData& s = turn[static_cast<std::size_t>(i)];
        r.x[i] = Field(s, sensor, 0);
        r.y[i] = Field(s, sensor, 1);
        r.z[i] = Field(s, sensor, 2);
    }
    return r;
}

Conic Ellipse(const Column& u, const Column& v)
{
    Eigen::Matrix<double, Eigen::Dynamic, 5> A(u.size(), 5);
    A.col(0) = u * u - v * v;
    A.col(1) = u * v;
    A.col(2) = u;
    A.col(3) = v;
    A.col(4).setOnes();
    const Eigen::Matrix<double, 5, 5> normal = A.transpose() * A;
    const Conic right = A.transpose() * (-v * v).matrix();
    return normal.ldlt().solve(right);
}

double Slope(const Column& u, const Column& v)
{
    const double n = static_cast<double>(u.size());
    const double sumU = u.sum(), sumV = v.sum();
    return (n * (u * v).sum() - sumU * sumV) / (n * (u * u).sum() - sumU * sumU);
}

Weights Calibrate(const Readings& H, const Readings& V)
{
    const Conic E = Ellipse(H.x, H.y), F = Ellipse(V.x, V.z);
    Weights P = FirstWeights(E[0], F[0], F[1], Slope(V.x, V.y), Slope(H.y, H.z));
    for (int pass = 1; pass < 15; ++pass) {
        const Column y = P.a * H.x + P.b * H.y, z = P.c * H.x + P.d * H.y + P.e * H.z;
        const double s1 = Slope(H.x, z), s2 = Slope(y, z);
        P.c -= s1;
        P.d -= s2;
        if (std::fabs(s1) < 0.001 && std::fabs(s2) < 0.001) break;
    }
    const Conic h = Ellipse(H.x, P.a * H.x + P.b * H.y);
    const Conic v = Ellipse(V.x, P.c * V.x + P.d * V.y + P.e * V.z);
    const double hd = 4 * h[0] * (1 - h[0]) - h[1] * h[1];
    const double vd = 4 * v[0] * (1 - v[0]) - v[1] * v[1];
    P.x0 = (h[1] * h[3] - 2 * (1 - h[0]) * h[2]) / hd;
    P.y0 = (h[1] * h[2] - 2 * h[0] * h[3]) / hd;
    P.z0 = (v[1] * v[2] - 2 * v[0] * v[3]) / vd;
    return P;
}

Weights Adjust(const Turns& turns, Eigen::Array3d& offset)
{
    const Readings HA = Read(turns.horizontal, 0), HB = Read(turns.horizontal, 1);
    const Weights A = Calibrate(HA, Read(turns.vertical, 0));
    const Weights B = Calibrate(HB, Read(turns.vertical, 1));
    const auto mean = [](const Readings& r, const Weights& P) {
        const double x = r.x.mean(), y = r.y.mean(), z = r.z.mean();
        return Eigen::Array3d(x - P.x0, P.a * x + P.b * y - P.y0,
                              P.c * x + P.d * y + P.e * z - P.z0);
    };
    const Eigen::Array3d a = mean(HA, A), b = mean(HB, B);
    offset = {-b[0] - a[0], -b[1] - a[1], b[2] - a[2]};
    return A;
}

} // namespace eigen

void Adjust_Eigen(benchmark::State& state)
{
    const Turns turns = TurnsOf(state);
    Eigen::Array3d offset;
    CheckAgreement(eigen::Adjust(turns, offset), turns);
    for (auto _ : state) {
        benchmark::DoNotOptimize(eigen::Adjust(turns, offset));
        benchmark::DoNotOptimize(offset);
    }
}

void Conic_Eigen(benchmark::State& state)
{
    const eigen::Readings r =
        eigen::Read(MakeTurns(static_cast<int>(state.range(0)), Round).horizontal, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(eigen::Ellipse(r.x, r.y));
}

BENCHMARK(Conic_Eigen)->Name(TILTPOLE_PEER("Conic_Eigen"))->Arg(100)->Arg(1000);

BENCHMARK(Adjust_Eigen)->Name(TILTPOLE_PEER("Adjust_Eigen"))->Apply(Sizes);

} // namespace
