// SPDX-License-Identifier: MIT
//
// Antenna positions around a tip, of which the search of the core and the estimate of quality are asked.
#pragma once

#include "simulation/Points.h"

namespace portable {

/// What set number `set` simulates: `points` positions whose noise in plan is `noise` [m] and twice that in
/// height. Leans, shares of the circle and outliers change from set to set.
inline simulation::PointsPlan PlanOfSet(int set, int points, double noise)
{
    return {
        .points = points,
        .tip = {500.0, 300.0, 100.0},
        .mostLean = 15.0 + 10.0 * (set % 4),
        .width = set % 3 == 2 ? 90.0 : 360.0,
        .spacing = 0.1,
        .planNoise = noise,
        .heightNoise = 2.0 * noise,
        .outliers = set % 6 == 5 ? 1 : 0
    };
}

} // namespace portable
