// SPDX-License-Identifier: MIT
//
// One axis of a chart: its range, and ticks at round numbers.
#pragma once

#include <string>
#include <vector>

namespace charts {

struct Range
{
    double low = 0.0;
    double high = 1.0;

    double Width() const { return high - low; }
};

/// The ticks of a range: multiples of 1, 2 or 5 times a power of ten, at most `most` of them, but
/// at least three; where those need a finer step, it may be 4 times a power of ten.
/// @param range  low < high, both finite
/// @param most   2 or more; up to six ticks where it is less
std::vector<double> Ticks(const Range& range, int most);

/// Tick labels with the decimals that the step between them needs, and a minus sign (U+2212)
/// before negative ones.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

/// The range with a margin of `share` times its width on each side. A range without width becomes
/// one unit wide, one that is not finite becomes [-0.5, 0.5].
Range Padded(const Range& range, double share);

/// Widens `range` about its middle to the given width, if it is narrower.
Range Widened(const Range& range, double width);

} // namespace charts
