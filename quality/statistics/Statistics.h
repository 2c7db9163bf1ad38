// SPDX-License-Identifier: MIT
//
// Figures of a series of numbers.
#pragma once

#include <vector>

namespace tiltpole::quality {

/// The middle number, the upper one of two; 0 for an empty series.
double Median(std::vector<double> series);

/// Median distance from zero, scaled to the standard deviation of normal noise; 0 when empty.
double RobustSpread(std::vector<double> series);

} // namespace tiltpole::quality
