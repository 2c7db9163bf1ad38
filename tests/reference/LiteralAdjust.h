// SPDX-License-Identifier: MIT
//
// The calibration, step by step in extended precision: the reference for the solver.
#pragma once

#include "positioning/MagneticParameters.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace literal {

using Real = long double;
using Reading = std::array<Real, 3>;
using Readings = std::vector<Reading>;

// Solves a linear system by elimination with row pivots.
template <std::size_t N>
std::array<Real, N> Solve(std::array<std::array<Real, N + 1>, N> m)
{
    for (std::size_t k = 0; k < N; ++k) {
        std::size_t best = k;
        for (std::size_t r = k; r < N; ++r)
            if (std::fabs(m[r][k]) > std::fabs(m[best][k])) best = r;
        std::swap(m[k], m[best]);
        for (std::size_t r = 0; r < N; ++r) {
            if (r == k) continue;
            const Real factor = m[r][k] / m[k][k];
            for (std::size_t c = k; c <= N; ++c)
                m[r][c] -= factor * m[k][c];
        }
    }
    std::array<Real, N> x{};
    for (std::size_t k = 0; k < N; ++k)
        x[k] = m[k][N] / m[k][k];
    return x;
}

// (p0 ... p4) of p0·u² + p1·uv + (1 − p0)·v² + p2·u + p3·v + p4 = 0, least squares.
inline std::array<Real, 5> Ellipse(const Readings& m, std::size_t u, std::size_t v)
{
    std::array<std::array<Real, 6>, 5> normal{};
    for (const Reading& r : m) {
        const std::array<Real, 6> row{
            r[u] * r[u] - r[v] * r[v], r[u] * r[v], r[u], r[v], 1, -r[v] * r[v]};
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t j = 0; j < 6; ++j)
                normal[i][j] += row[i] * row[j];
    }
    return Solve<5>(normal);
}

inline Real Slope(const Readings& m, std::size_t v, std::size_t u)
{
    Real meanU = 0, meanV = 0, uu = 0, uv = 0;
    for (const Reading& r : m) {
        meanU += r[u] / m.size();
        meanV += r[v] / m.size();
    }
    for (const Reading& r : m) {
        uu += (r[u] - meanU) * (r[u] - meanU);
        uv += (r[u] - meanU) * (r[v] - meanV);
    }
    return uv / uu;
}

struct Correction
{
    Real x0 = 0, y0 = 0, z0 = 0, a = 0, c = 0, d = 0, b = 1, e = 1;

    Readings Apply(const Readings& m) const
    {
        Readings corrected;
        for (const auto& [x, y, z] : m)
            corrected.push_back({x - x0, a * x + b * y - y0, c * x + d * y + e * z - z0});
        return corrected;
    }
};

inline Correction Calibrate(const Readings& H, const Readings& V, int* passes = nullptr)
{
    const auto E = Ellipse(H, 0, 1);
    const auto F = Ellipse(V, 0, 2);
    const Real m = Slope(H, 2, 1), k = Slope(V, 1, 0);
    Correction P;
    const Real Q = E[0] - k * k + E[0] * k * k, S = std::sqrt(-Q * (E[0] - 1));
    P.a = -S * k / Q;
    P.b = S / Q;
    const Real T = std::sqrt(4 * F[0] - 4 * F[0] * F[0] - F[1] * F[1]);
    P.c = (P.b * F[1] - 2 * P.a * m + 2 * F[0] * P.a * m) / (T * P.b);
    P.d = 2 * (F[0] - 1) * m / T;
    P.e = -2 * (F[0] - 1) / T;
    for (int pass = 1; pass <= 14; ++pass) {
        const Readings corrected = P.Apply(H);
        const Real s1 = Slope(corrected, 2, 0), s2 = Slope(corrected, 2, 1);
        P.c -= s1;
        P.d -= s2;
        if (passes) *passes = pass;
        if (std::fabs(s1) < 0.001L && std::fabs(s2) < 0.001L) break;
    }
    const auto center = [](const std::array<Real, 5>& p) {
        const Real den = 4 * p[0] * (1 - p[0]) - p[1] * p[1];
        return std::pair{(p[1] * p[3] - 2 * (1 - p[0]) * p[2]) / den,
                         (p[1] * p[2] - 2 * p[0] * p[3]) / den};
    };
    const auto [cx, cy] = center(Ellipse(P.Apply(H), 0, 1));
    const auto [vx, cz] = center(Ellipse(P.Apply(V), 0, 2));
    P.x0 = cx;
    P.y0 = cy;
    P.z0 = cz;
    return P;
}

} // namespace literal
