// SPDX-License-Identifier: MIT
//
// The scale of one axis of a chart: its range, and ticks at round numbers.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct Range
{
    double low = 0.0;
    double high = 1.0;

    double Width() const { return high - low; }
};

/// The ticks of a range: multiples of 1, 2 or 5 times a power of ten, at most `most` of them.
/// @param range  low < high, both finite
/// @param most   2 or more
std::vector<double> Ticks(const Range& range, int most);

/// Tick texts with as many decimals as the step between them needs, a true minus sign before
/// those below zero.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

/// The range with a margin of `share` of its width on each side. A range without width, and one
/// that is not finite, becomes one metre wide.
Range Padded(const Range& range, double share);

/// Widens `range` about its middle to the given width, if it is narrower.
Range Widened(const Range& range, double width);

} // namespace cli
