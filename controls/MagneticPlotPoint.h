// SPDX-License-Identifier: MIT
/// @file
/// One magnetometer reading of a scatter plot.
#pragma once

#include <cstdint>

/// Components of a reading or of a center, in raw counts.
struct MagneticPlotPoint
{
    std::int32_t nFirst = 0;
    std::int32_t nSecond = 0;
    std::int32_t nThird = 0;
};
