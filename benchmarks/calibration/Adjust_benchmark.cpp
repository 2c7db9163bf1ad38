// SPDX-License-Identifier: MIT
//
// Adjust beside the same fits in Eigen (Adjust_peers.cpp) and beside a literal port.
#include "benchmarks/calibration/AdjustTurns.h"
#include "framework/core/MessageBox.h"
#include "tests/reference/LiteralMatrix.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace adjusting;

// --- the steps one by one on checked matrices

namespace port {

using literal::Matrix;
using literal::Product;

Matrix Read(const Turn& turn, int sensor)
{
    Matrix m(static_cast<int>(turn.size()), 3);
    for (int i = 0; i < m.rows; ++i)
        for (int axis = 0; axis < 3; ++axis)
            m.Set(i, axis, Field(turn[static_cast<std::size_t>(i)], sensor, axis));
    return m;
}

Matrix Column(const Matrix& m, int c)
{
    Matrix column(m.rows, 1);
    for (int i = 0; i < m.rows; ++i)
        column.Set(i, 0, m.Get(i, c));
    return column;
}

Matrix Ellipse(const Matrix& u, const Matrix& v)
{
    Matrix A(u.rows, 5), b(u.rows, 1);
    for (int i = 0; i < u.rows; ++i) {
        const double x = u.Get(i, 0), y = v.Get(i, 0);
        A.Set(i, 0, x * x - y * y);
        A.Set(i, 1, x * y);
        A.Set(i, 2, x);
        A.Set(i, 3, y);
        A.Set(i, 4, 1);
        b.Set(i, 0, -y * y);
    }
    return Product(Inverted(Product(Transpose(A), A)), Product(Transpose(A), b));
}

double Slope(const Matrix& u, const Matrix& v)
{
    const double n = u.rows;
    double sumU = 0, sumV = 0, uu = 0, uv = 0;
    for (int i = 0; i < u.rows; ++i) {
        sumU += u.Get(i, 0);
        sumV += v.Get(i, 0);
        uu += u.Get(i, 0) * u.Get(i, 0);
        uv += u.Get(i, 0) * v.Get(i, 0);
    }
    double spreadU = 0, spreadV = 0, joint = 0;
    for (int i = 0; i < u.rows; ++i) {
        const double du = u.Get(i, 0) - sumU / n, dv = v.Get(i, 0) - sumV / n;
        spreadU += du * du;
        spreadV += dv * dv;
        joint += du * dv;
    }
    benchmark::DoNotOptimize(joint / std::sqrt(spreadU * spreadV));
    const double D = n * uu - sumU * sumU, slope = (n * uv - sumU * sumV) / D;
    const double intercept = (uu * sumV - sumU * uv) / D;
    double residual = 0;
    for (int i = 0; i < u.rows; ++i) {
        const double error = slope * u.Get(i, 0) + intercept - v.Get(i, 0);
        residual += error * error / n;
    }
    benchmark::DoNotOptimize(residual);
    return slope;
}

void Correct(Matrix& m, const Weights& P)
{
    for (int i = 0; i < m.rows; ++i) {
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
    for (int i = 0; i < HA.rows; ++i) {
        sum[0] += -HB.Get(i, 0) - HA.Get(i, 0);
        sum[1] += -HB.Get(i, 1) - HA.Get(i, 1);
        sum[2] += HB.Get(i, 2) - HA.Get(i, 2);
    }
    offset = (sum[0] + sum[1] + sum[2]) / HA.rows;
    return A;
}

} // namespace port

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

// One conic, beside Conic_Eigen.
void Conic_Ours(benchmark::State& state)
{
    struct Fits : CInclineSensor_MagneticAdjust
    {
        using CInclineSensor_MagneticAdjust::EllipseFit;
    };
    const Turn turn = MakeTurns(static_cast<int>(state.range(0)), Round).horizontal;
    CSZMatrix u(static_cast<int>(turn.size()), 1);
    CSZMatrix v(static_cast<int>(turn.size()), 1);
    for (int i = 0; i < u.getRowSize(); ++i) {
        u.SetData(i, Field(turn[static_cast<std::size_t>(i)], 0, 0));
        v.SetData(i, Field(turn[static_cast<std::size_t>(i)], 0, 1));
    }
    Fits fits;
    CSZMatrix conic;
    for (auto _ : state) {
        benchmark::DoNotOptimize(fits.EllipseFit(u, v, conic));
        benchmark::DoNotOptimize(conic);
    }
}

BENCHMARK(Conic_Ours)->Arg(100)->Arg(1000);
BENCHMARK(Adjust_Ours)->Apply(Sizes);
BENCHMARK(Adjust_OursStageByStage)->Apply(Sizes);
BENCHMARK(Adjust_LiteralPort)->Apply(Sizes);

} // namespace
