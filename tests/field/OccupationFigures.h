// SPDX-License-Identifier: MIT
//
// How far estimates of tips are off, for tests that know the true ones.
#pragma once

#include "field/Occupation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace field_tests {

// [m]
inline double PlanError(const field::OccupationEstimate& e, const xyhCoordinate& truth)
{
    return std::hypot(e.tip.x - truth.x, e.tip.y - truth.y);
}

// Whether the ellipse holds the plan position of the truth.
inline bool Covers(const field::OccupationEstimate& e, const xyhCoordinate& truth)
{
    const double dx = truth.x - e.tip.x;
    const double dy = truth.y - e.tip.y;
    const double a = e.ellipseAzimuth * 3.14159265358979 / 180.0;
    const double along = (dx * std::cos(a) + dy * std::sin(a)) / e.ellipseMajor;
    const double across = (dy * std::cos(a) - dx * std::sin(a)) / e.ellipseMinor;
    return along * along + across * across <= 1.0;
}

// Between the two values about it; `values` is not empty.
inline double Quantile(std::vector<double> values, double q)
{
    std::sort(values.begin(), values.end());
    const double at = q * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(at);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (at - static_cast<double>(below)) * (values[above] - values[below]);
}

} // namespace field_tests
