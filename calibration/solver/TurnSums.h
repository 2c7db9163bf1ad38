// SPDX-License-Identifier: MIT
//
// The loops behind TurnMoments.h. Readings are summed in groups of four places, so that every
// vector width gives the same bits.
#pragma once

#include "calibration/solver/TurnMoments.h"

#include <cstddef>

namespace tiltpole::calibration {

// A column less its origin, as one coordinate of the sums.
struct Column
{
    const double* values;
    double origin;
};

// What the sums run over; `padded` entries, a multiple of four.
struct Passage
{
    Column x, y, z;
    std::size_t padded;
    int count;
};

struct TurnSums
{
    // Moments of (x, y, z) as (u, v, w).
    TurnMoments (*ofThree)(const Passage& p);

    // Moments of (x, c·x + d·y + e·z).
    TurnMoments (*ofCorrectedZ)(const Passage& p, const Incline_MagneticCorrectParameter& P);

    // Over vectors of Width doubles: 2, and 4 where vector/Dispatch.h has it.
    template <int Width>
    static const TurnSums& Of();
};

} // namespace tiltpole::calibration
