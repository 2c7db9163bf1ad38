// SPDX-License-Identifier: MIT
//
// How doubles become pixels: half added, then cut towards zero; negative values are not rounded
// symmetrically. What an int cannot hold becomes its nearest limit, not a number becomes 0.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

namespace tiltpole::controls {

constexpr double kPi = 3.141592653589793;

/// Cuts towards zero.
constexpr int ToInt(double value)
{
    if (value >= INT_MAX) return INT_MAX;
    if (value <= INT_MIN) return INT_MIN;
    return value == value ? static_cast<int>(value) : 0;
}

constexpr int ToPixel(double value)
{
    return ToInt(value + 0.5);
}

/// The pixel that lies `by` pixels on.
constexpr int Shifted(int pixel, std::int64_t by)
{
    return static_cast<int>(std::clamp<std::int64_t>(pixel + by, INT_MIN, INT_MAX));
}

} // namespace tiltpole::controls
