// SPDX-License-Identifier: MIT
#include "apps/charts/ThinnedPoints.h"

namespace charts {

void ThinnedPoints::Add(PlotPoint point)
{
    if (m_seen++ % m_every != 0) return;
    if (m_points.size() == kMost) {
        for (std::size_t i = 0; i < kMost / 2; ++i)
            m_points[i] = m_points[2 * i];
        m_points.resize(kMost / 2);
        m_every *= 2;
    }
    m_points.push_back(point);
}

} // namespace charts
