// SPDX-License-Identifier: MIT
//
// Doubles become pixels by adding one half and truncating toward zero, so negative values do not
// round symmetrically. Values beyond the range of int saturate; NaN gives 0.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

namespace tiltpole::controls {

/// Truncates toward zero.
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

/// pixel + by, saturated.
constexpr int Shifted(int pixel, std::int64_t by)
{
    return static_cast<int>(std::clamp<std::int64_t>(pixel + by, INT_MIN, INT_MAX));
}

} // namespace tiltpole::controls
