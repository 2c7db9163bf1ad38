// SPDX-License-Identifier: MIT
//
// The search for the four antenna positions whose sphere, refined once over all positions, gives
// the tip with the smallest point error.
//
// Every combination of four is visited, in rising order of its indices. Work that cannot change the
// outcome is left out: the four cyclic orders of a combination give one start up to rounding, so
// one is taken; a start that is certain to lose against the best so far is not refined. Singular
// combinations, whose sphere would be rounding noise, give no start.
#pragma once

#include "geometry/detail/SearchKernels.h"
#include "geometry/detail/SphereStep.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace tiltpole::geometry {

using Quadruple = std::array<std::size_t, 4>;

struct TipSearchResult
{
    bool cancelled = false;
    std::optional<Quadruple> best; // none: no start had a fitting radius
};

// Called with the share done, 0 to 1; returning false cancels.
using ProgressObserver = std::function<bool(double)>;

// `positions` are finite, at least four, about an origin among them [m]. `flatness` is the volume
// of four positions relative to the product of three edges, up to which they are singular.
// `progress` may be empty.
TipSearchResult SearchTip(const std::vector<Point3>& positions, double antennaHeight,
                          double flatness, const ProgressObserver& progress,
                          const SearchKernels& kernels = BestSearchKernels());

} // namespace tiltpole::geometry
