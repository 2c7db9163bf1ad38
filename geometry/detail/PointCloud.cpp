// SPDX-License-Identifier: MIT
#include "geometry/detail/PointCloud.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace tiltpole::geometry {

PointCloud::PointCloud(const std::vector<Point3>& positions)
    : m_count(positions.size()), m_positions(positions.size())
{
    Point3 mean;
    for (const Point3& p : positions)
        mean = mean + p;
    mean = (1.0 / static_cast<double>(m_count)) * mean;
    for (std::size_t k = 0; k < m_count; ++k)
        m_positions.Set(k, positions[k] - mean);
    CollectMoments();
    FitAlgebraicSphere();
}

void PointCloud::CollectMoments()
{
    const double n = static_cast<double>(m_count);
    for (std::size_t k = 0; k < m_count; ++k)
        m_spread.AddSquare(At(k));
    m_spread = m_spread.Scaled(1.0 / n);
    m_moments.count = n;
    m_moments.trace = m_spread.Trace();
    const double elements[] = {m_spread.xx, m_spread.xy, m_spread.xh,
                               m_spread.yy, m_spread.yh, m_spread.hh};
    std::copy(std::begin(elements), std::end(elements), m_moments.spread);

    Point3 skew;
    for (std::size_t k = 0; k < m_count; ++k) {
        const double excess = Dot(At(k), At(k)) - m_moments.trace;
        skew = skew + (excess / n) * At(k);
        m_moments.squareVariance += excess * excess / n;
        m_moments.reach = std::max(m_moments.reach, Length(At(k)));
    }
    m_moments.skew[0] = skew.x;
    m_moments.skew[1] = skew.y;
    m_moments.skew[2] = skew.z;
}

// The center with the smallest variance of squared distances. Coplanar positions have none; the
// distances then stay at the values that promise nothing.
void PointCloud::FitAlgebraicSphere()
{
    const Point3 skew = {m_moments.skew[0], m_moments.skew[1], m_moments.skew[2]};
    const Point3 center = (0.5 / m_spread.Determinant()) * (m_spread.Adjugate() * skew);
    m_moments.center[0] = center.x;
    m_moments.center[1] = center.y;
    m_moments.center[2] = center.z;
    m_moments.nearest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < m_count; ++k) {
        const double distance = Length(At(k) - center);
        m_moments.nearest = std::min(m_moments.nearest, distance);
        m_moments.farthest = std::max(m_moments.farthest, distance);
    }
}

} // namespace tiltpole::geometry
