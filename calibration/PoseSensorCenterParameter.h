// SPDX-License-Identifier: MIT
/// @file
/// The circle that the readings of one turn trace: center and radius.
#pragma once

#include <cstdint>

/// Center of a recorded turn in raw counts of magnetometer A. A new record is all zero.
struct PoseSensorCenterParameter
{
    std::int32_t nValid = 0; ///< 1 once a center has been computed
    double dX = 0.0;         ///< center of dMag_x [counts]
    double dY = 0.0;         ///< center of dMag_y [counts]
    double dZ = 0.0;         ///< center of dMag_z [counts]
    double dRadius = 0.0;    ///< mean distance of the samples from the center [counts]
};
