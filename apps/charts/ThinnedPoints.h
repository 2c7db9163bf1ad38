// SPDX-License-Identifier: MIT
//
// An even selection from any number of points, in bounded memory.
#pragma once

#include "apps/charts/Chart.h"
#include <cstddef>
#include <cstdint>
#include <vector>

namespace charts {

/// Keeps every n-th point, with n the power of two that leaves at most `kMost` of them.
class ThinnedPoints
{
public:
    static constexpr std::size_t kMost = 8192; // even

    void Add(PlotPoint point);
    const std::vector<PlotPoint>& Points() const { return m_points; }

private:
    std::vector<PlotPoint> m_points;
    std::uint64_t m_seen = 0;
    std::uint64_t m_every = 1;
};

} // namespace charts
