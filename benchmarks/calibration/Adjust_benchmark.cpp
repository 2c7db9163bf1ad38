// SPDX-License-Identifier: MIT
//
// Adjust beside the same fits in Eigen and beside a literal port.
#include "benchmarks/calibration/PlainMatrix.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "framework/core/MessageBox.h"
#include "tests/reference/Turns.h"

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace {

using Turn = std::vector<PoseSensorData>;

struct Turns
{
    Turn horizontal, vertical;
};

enum Kind { Round, Skewed, RealNoise };

// RealNoise: round turns with the differences between successive recorded readings as noise.
Turns MakeTurns(int samples, Kind kind)
{
    turns::Shape shape{.samples = samples, .revolutions = 1.1, .noise = 2, .seed = 21};
    if (kind == Skewed) {
        shape.skew = 0.3;
        shape.scale = 0.7;
        shape.offset = 600;
    }
    Turns made{turns::Make(shape, turns::TurnAxis::Horizontal),
               turns::Make(shape, turns::TurnAxis::Vertical)};
    if (kind != RealNoise) return made;
    const Turn recorded = turns::Recorded();
    for (Turn* turn : {&made.horizontal, &made.vertical})
        for (std::size_t i = 0; i < turn->size(); ++i) {
            const PoseSensorData& a = recorded[i % (recorded.size() - 1)];
            const PoseSensorData& b = recorded[i % (recorded.size() - 1) + 1];
            (*turn)[i].dMag_x += b.dMag_x - a.dMag_x;
            (*turn)[i].dMag_y += b.dMag_y - a.dMag_y;
            (*turn)[i].dMag_z += b.dMag_z - a.dMag_z;
        }
    return made;
}

double Field(const PoseSensorData& s, int sensor, int axis)
{
    const double values[2][3] = {
        {s.dMag_x,   s.dMag_y,   s.dMag_z  },
        {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2}
    };
    return values[sensor][axis];
}

struct Weights
{
    double a, b, c, d, e, x0, y0, z0;
};

// The first correction from both conics and slopes.
Weights FirstWeights(double E0, double F0, double F1, double k, double m)
{
    const double Q = (E0 - k * k) + E0 * k * k, S = std::sqrt(-Q * (E0 - 1));
    const double T = std::sqrt(-F1 * F1 + 4 * F0 - 4 * F0 * F0);
    const double a = -1 / Q * S * k, b = S / Q;
    return {a,
            b,
            ((b * F1 - 2 * a * m) + 2 * F0 * a * m) / T / b,
            2 / T * (F0 - 1) * m,
            -2 / T * (F0 - 1),
            0,
            0,
            0};
}

// --- the fits in Eigen

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

// --- the steps one by one on checked matrices

namespace port {

using plain::Matrix;

Matrix Read(const Turn& turn, int sensor)
{
    Matrix m(static_cast<int>(turn.size()), 3);
    for (int i = 0; i < m.Rows(); ++i)
        for (int axis = 0; axis < 3; ++axis)
            m.Set(i, axis, Field(turn[static_cast<std::size_t>(i)], sensor, axis));
    return m;
}

Matrix Column(const Matrix& m, int c)
{
    Matrix column(m.Rows(), 1);
    for (int i = 0; i < m.Rows(); ++i)
        column.Set(i, 0, m.Get(i, c));
    return column;
}

Matrix Ellipse(const Matrix& u, const Matrix& v)
{
    Matrix A(u.Rows(), 5), b(u.Rows(), 1);
    for (int i = 0; i < u.Rows(); ++i) {
        const double x = u.Get(i, 0), y = v.Get(i, 0);
        A.Set(i, 0, x * x - y * y);
        A.Set(i, 1, x * y);
        A.Set(i, 2, x);
        A.Set(i, 3, y);
        A.Set(i, 4, 1);
        b.Set(i, 0, -y * y);
    }
    return (A.Transpose() * A).Inverse() * (A.Transpose() * b);
}

double Slope(const Matrix& u, const Matrix& v)
{
    const double n = u.Rows();
    double sumU = 0, sumV = 0, uu = 0, uv = 0;
    for (int i = 0; i < u.Rows(); ++i) {
        sumU += u.Get(i, 0);
        sumV += v.Get(i, 0);
        uu += u.Get(i, 0) * u.Get(i, 0);
        uv += u.Get(i, 0) * v.Get(i, 0);
    }
    double spreadU = 0, spreadV = 0, joint = 0;
    for (int i = 0; i < u.Rows(); ++i) {
        const double du = u.Get(i, 0) - sumU / n, dv = v.Get(i, 0) - sumV / n;
        spreadU += du * du;
        spreadV += dv * dv;
        joint += du * dv;
    }
    benchmark::DoNotOptimize(joint / std::sqrt(spreadU * spreadV));
    const double D = n * uu - sumU * sumU, slope = (n * uv - sumU * sumV) / D;
    const double intercept = (uu * sumV - sumU * uv) / D;
    double residual = 0;
    for (int i = 0; i < u.Rows(); ++i) {
        const double error = slope * u.Get(i, 0) + intercept - v.Get(i, 0);
        residual += error * error / n;
    }
    benchmark::DoNotOptimize(residual);
    return slope;
}

void Correct(Matrix& m, const Weights& P)
{
    for (int i = 0; i < m.Rows(); ++i) {
        const double x = m.Get(i, 0), y = m.Get(i, 1), z = m.Get(i, 2);
        m.Set(i, 0, x - P.x0);
        m.Set(i, 1, P.a * x + P.b * y - P.y0);
        m.Set(i, 2, P.c * x + P.d * y + P.e * z - P.z0);
    }
}

Weights Calibrate(Matrix H, Matrix V)
{
    const Matrix E = Ellipse(Column(H, 0), Column(H, 1));
    benchmark::DoNotOptimize(Slope(Column(H, 0), Column(H, 2)));
    const double m = Slope(Column(H, 1), Column(H, 2));
    const Matrix F = Ellipse(Column(V, 0), Column(V, 2));
    Weights P =
        FirstWeights(E.Get(0, 0), F.Get(0, 0), F.Get(1, 0), Slope(Column(V, 0), Column(V, 1)), m);
    for (int pass = 1; pass < 15; ++pass) {
        Matrix corrected = H;
        Correct(corrected, P);
        const double s1 = Slope(Column(corrected, 0), Column(corrected, 2));
        const double s2 = Slope(Column(corrected, 1), Column(corrected, 2));
        P.c -= s1;
        P.d -= s2;
        if (std::fabs(s1) < 0.001 && std::fabs(s2) < 0.001) break;
    }
    Correct(H, P);
    Correct(V, P);
    const auto center = [](const Matrix& p, double& u, double& v) {
        const double p0 = p.Get(0, 0), p1 = p.Get(1, 0), p2 = p.Get(2, 0), p3 = p.Get(3, 0);
        const double den = 4 * p0 * (1 - p0) - p1 * p1;
        u = (p1 * p3 - 2 * (1 - p0) * p2) / den;
        v = (p1 * p2 - 2 * p0 * p3) / den;
    };
    double unused = 0;
    center(Ellipse(Column(H, 0), Column(H, 1)), P.x0, P.y0);
    center(Ellipse(Column(V, 0), Column(V, 2)), unused, P.z0);
    return P;
}

Weights Adjust(const Turns& turns, double& offset)
{
    Matrix HA = Read(turns.horizontal, 0), HB = Read(turns.horizontal, 1);
    const Weights A = Calibrate(HA, Read(turns.vertical, 0));
    const Weights B = Calibrate(HB, Read(turns.vertical, 1));
    Correct(HA, A);
    Correct(HB, B);
    double sum[3] = {};
    for (int i = 0; i < HA.Rows(); ++i) {
        sum[0] += -HB.Get(i, 0) - HA.Get(i, 0);
        sum[1] += -HB.Get(i, 1) - HA.Get(i, 1);
        sum[2] += HB.Get(i, 2) - HA.Get(i, 2);
    }
    offset = (sum[0] + sum[1] + sum[2]) / HA.Rows();
    return A;
}

} // namespace port

void CheckAgreement(const Weights& peer, const Turns& turns)
{
    CInclineSensor_MagneticAdjust adjust;
    for (PoseSensorData s : turns.horizontal)
        adjust.Horizontal_Add(&s);
    for (PoseSensorData s : turns.vertical)
        adjust.Vertical_Add(&s);
    const bool done = adjust.Adjust() == 1;
    const auto P = adjust.GetCorrectPar_A();
    if (!done || !(std::fabs(P.c - peer.c) < 1e-6 && std::fabs(P.z0 - peer.z0) < 1e-3))
        throw std::runtime_error("the peer does not solve the same calibration");
}

Turns TurnsOf(const benchmark::State& state)
{
    return MakeTurns(static_cast<int>(state.range(0)), static_cast<Kind>(state.range(1)));
}

void Adjust_Ours(benchmark::State& state)
{
    const Turns turns = TurnsOf(state);
    CInclineSensor_MagneticAdjust adjust;
    for (PoseSensorData s : turns.horizontal)
        adjust.Horizontal_Add(&s);
    for (PoseSensorData s : turns.vertical)
        adjust.Vertical_Add(&s);
    for (auto _ : state)
        benchmark::DoNotOptimize(adjust.Adjust());
}

// The same through the protected operations on matrices, which form every fit from the samples.
void Adjust_OursStageByStage(benchmark::State& state)
{
    struct Stages : CInclineSensor_MagneticAdjust
    {
        using CInclineSensor_MagneticAdjust::MagCorrPara;
    };
    const Turns turns = TurnsOf(state);
    Stages adjust;
    const auto matrix = [](const Turn& turn, int sensor) {
        CSZMatrix m(static_cast<int>(turn.size()), 3);
        for (int i = 0; i < m.getRowSize(); ++i)
            for (int axis = 0; axis < 3; ++axis)
                m.SetData(i, axis, Field(turn[static_cast<std::size_t>(i)], sensor, axis));
        return m;
    };
    for (auto _ : state) {
        for (const int sensor : {0, 1}) {
            Incline_MagneticCorrectParameter P;
            adjust.MagCorrPara(matrix(turns.horizontal, sensor), matrix(turns.vertical, sensor), P);
            benchmark::DoNotOptimize(P);
        }
    }
}

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

void Adjust_LiteralPort(benchmark::State& state)
{
    const Turns turns = TurnsOf(state);
    double offset = 0;
    CheckAgreement(port::Adjust(turns, offset), turns);
    for (auto _ : state) {
        benchmark::DoNotOptimize(port::Adjust(turns, offset));
        benchmark::DoNotOptimize(offset);
    }
}

void Sizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"samples", "kind"});
    for (const int samples : {100, 300, 500, 1000, 3000})
        b->Args({samples, Round});
    b->Args({500, Skewed});
    b->Args({500, RealNoise});
}

BENCHMARK(Adjust_Ours)->Apply(Sizes);
BENCHMARK(Adjust_OursStageByStage)->Apply(Sizes);
BENCHMARK(Adjust_Eigen)->Apply(Sizes);
BENCHMARK(Adjust_LiteralPort)->Apply(Sizes);

} // namespace
