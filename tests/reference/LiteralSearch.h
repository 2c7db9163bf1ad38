// SPDX-License-Identifier: MIT
//
// The search of the tip in its plainest form: every combination, every cyclic order, every
// refinement, with small matrices that are allocated as they come. Written independently of the
// library, to compare results and speed with. Works in the coordinates it is given: pass them
// about a local origin.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace literal {

using Point = std::array<double, 3>;

struct State
{
    double radius = 0, pointError = 0, geometryFigure = 0, heightCofactor = 0, excess = 0;
    int status = 0;
};

struct Dense
{
    Dense(std::size_t r, std::size_t c) : rows(r), columns(c), data(r * c) {}

    double& At(std::size_t r, std::size_t c) { return data[r * columns + c]; }
    double At(std::size_t r, std::size_t c) const { return data[r * columns + c]; }

    std::size_t rows, columns;
    std::vector<double> data;
};

inline Dense Times(const Dense& a, const Dense& b)
{
    Dense product(a.rows, b.columns);
    for (std::size_t r = 0; r < a.rows; ++r)
        for (std::size_t c = 0; c < b.columns; ++c)
            for (std::size_t k = 0; k < a.columns; ++k)
                product.At(r, c) += a.At(r, k) * b.At(k, c);
    return product;
}

inline Dense Transposed(const Dense& a)
{
    Dense t(a.columns, a.rows);
    for (std::size_t r = 0; r < a.rows; ++r)
        for (std::size_t c = 0; c < a.columns; ++c)
            t.At(c, r) = a.At(r, c);
    return t;
}

// Gauss–Jordan with full pivoting on the matrix beside the identity; no test for singularity.
inline Dense Inverted(Dense a)
{
    const std::size_t n = a.rows;
    Dense b(n, n);
    for (std::size_t k = 0; k < n; ++k)
        b.At(k, k) = 1.0;
    std::vector<std::size_t> columnOf(n);
    for (std::size_t k = 0; k < n; ++k)
        columnOf[k] = k;
    for (std::size_t step = 0; step < n; ++step) {
        std::size_t row = step;
        std::size_t column = step;
        for (std::size_t r = step; r < n; ++r)
            for (std::size_t c = step; c < n; ++c)
                if (std::fabs(a.At(r, c)) > std::fabs(a.At(row, column))) {
                    row = r;
                    column = c;
                }
        for (std::size_t c = 0; c < n; ++c) {
            std::swap(a.At(step, c), a.At(row, c));
            std::swap(b.At(step, c), b.At(row, c));
        }
        for (std::size_t r = 0; r < n; ++r)
            std::swap(a.At(r, step), a.At(r, column));
        std::swap(columnOf[step], columnOf[column]);
        const double pivot = a.At(step, step);
        for (std::size_t c = 0; c < n; ++c) {
            a.At(step, c) /= pivot;
            b.At(step, c) /= pivot;
        }
        for (std::size_t r = 0; r < n; ++r) {
            if (r == step) continue;
            const double factor = a.At(r, step);
            for (std::size_t c = 0; c < n; ++c) {
                a.At(r, c) -= factor * a.At(step, c);
                b.At(r, c) -= factor * b.At(step, c);
            }
        }
    }
    Dense inverse(n, n);
    for (std::size_t k = 0; k < n; ++k)
        for (std::size_t c = 0; c < n; ++c)
            inverse.At(columnOf[k], c) = b.At(k, c);
    return inverse;
}

inline double Distance(const Point& a, const Point& b)
{
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1])
                     + (a[2] - b[2]) * (a[2] - b[2]));
}

inline Point SphereCenter(const std::array<Point, 4>& p)
{
    Dense system(3, 3);
    Dense right(3, 1);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            system.At(i, c) = p[i][c] - p[i + 1][c];
            right.At(i, 0) += 0.5 * (p[i][c] * p[i][c] - p[i + 1][c] * p[i + 1][c]);
        }
    }
    const Dense center = Times(Inverted(system), right);
    return {center.At(0, 0), center.At(1, 0), center.At(2, 0)};
}

inline State Refine(const std::vector<Point>& obs, Point& tip, double& radius)
{
    const std::size_t n = obs.size();
    Dense design(n, 3);
    Dense misclosure(n, 1);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t c = 0; c < 3; ++c)
            design.At(k, c) = (tip[c] - obs[k][c]) / radius;
        misclosure.At(k, 0) = Distance(tip, obs[k]) - radius;
    }
    const Dense transposed = Transposed(design);
    const Dense normal = Times(transposed, design);
    const Dense u = Times(transposed, misclosure);
    const Dense step = Times(Inverted(normal), u);
    for (std::size_t c = 0; c < 3; ++c)
        tip[c] += step.At(c, 0);
    radius += (u.At(0, 0) + u.At(1, 0) + u.At(2, 0)) / static_cast<double>(n);

    double squares = 0;
    for (std::size_t k = 0; k < n; ++k) {
        double linear = 0;
        for (std::size_t c = 0; c < 3; ++c)
            linear += step.At(c, 0) * (tip[c] - obs[k][c]);
        const double v = linear / radius + radius - Distance(tip, obs[k]);
        squares += v * v;
    }
    const double sigma = std::sqrt(squares / (static_cast<double>(n) - 4));
    State state;
    double error = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const double m = sigma * std::sqrt(normal.At(c, c));
        error += m * m;
    }
    const Dense cofactor = Inverted(normal);
    state.radius = radius;
    state.pointError = std::sqrt(error);
    state.geometryFigure = std::sqrt(cofactor.At(0, 0) + cofactor.At(1, 1) + cofactor.At(2, 2));
    state.heightCofactor = cofactor.At(2, 2);
    return state;
}

inline void Grade(State& s, double tipHeight, double firstHeight, double height)
{
    s.status = 1;
    if (std::fabs(s.radius) < 1e-6) {
        s.status = -100;
        return;
    }
    s.excess = s.radius - height;
    if (s.pointError > 0.05 || s.geometryFigure > 2.0)
        s.status = -1;
    else if (s.pointError > 0.04 && s.geometryFigure > 1.0)
        s.status = -2;
    else if (s.pointError > 0.035 && s.geometryFigure > 1.2)
        s.status = -3;
    else if (s.pointError > 0.03 && s.geometryFigure > 1.5)
        s.status = -4;
    else if (s.pointError > 0.02 && s.geometryFigure > 1.2 && std::fabs(s.excess) > 0.04)
        s.status = -5;
    if (tipHeight > firstHeight || firstHeight - tipHeight - height > height) s.status = -88;
}

struct PlainSteps
{
    using Vector = Point;
    static double Get(const Point& p, std::size_t c) { return p[c]; }
    static void Raise(Point& p, double by) { p[2] += by; }
    static double Distance(const Point& a, const Point& b) { return literal::Distance(a, b); }
    static Point Center(const Point& a, const Point& b, const Point& c, const Point& d)
    {
        return SphereCenter({a, b, c, d});
    }
    static State Step(const std::vector<Point>& obs, Point& tip, double& radius)
    {
        return Refine(obs, tip, radius);
    }
};

// `Steps` gives vectors, the center of a sphere and the refinement of a start.
template <class Steps = PlainSteps>
typename Steps::Vector Search(const std::vector<typename Steps::Vector>& obs, double height,
                              State& state, typename Steps::Vector result = {})
{
    using Vector = typename Steps::Vector;
    state = {};
    const std::size_t n = obs.size();
    if (n < 4) {
        state.status = -99;
        return result;
    }
    const auto meet = [&](const Vector& a, const Vector& b, const Vector& c, const Vector& d) {
        Vector tip = Steps::Center(a, b, c, d);
        double radius = Steps::Distance(tip, a);
        if (!std::isfinite(radius) || std::fabs(radius - height) > 0.05) return;
        const State candidate = Steps::Step(obs, tip, radius);
        const double gain = state.pointError - candidate.pointError;
        const bool none = state.pointError < 1e-6;
        const bool better = candidate.pointError < state.pointError
                            && !(gain < 0.0005 && state.geometryFigure < candidate.geometryFigure);
        if (!none && !better) return;
        state = candidate;
        result = tip;
        Steps::Raise(result, radius - height);
    };
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = i + 1; j < n; ++j)
            for (std::size_t k = j + 1; k < n; ++k)
                for (std::size_t l = k + 1; l < n; ++l) {
                    meet(obs[i], obs[j], obs[k], obs[l]);
                    meet(obs[j], obs[k], obs[l], obs[i]);
                    meet(obs[k], obs[l], obs[i], obs[j]);
                    meet(obs[l], obs[i], obs[j], obs[k]);
                }
    Grade(state, Steps::Get(result, 2), Steps::Get(obs[0], 2), height);
    return result;
}

} // namespace literal
