// SPDX-License-Identifier: MIT
#include "simulation/TiltFilter.h"

#include "simulation/PortableMath.h"
#include "survey/Angle.h"
#include <algorithm>
#include <cmath>

namespace simulation {

namespace {

// Unchanged where there is no direction.
Point3 Normalized(const Point3& v)
{
    const double length = Length(v);
    return length > 0.0 ? 1.0 / length * v : v;
}

} // namespace

PoseAngles TiltFilter::Next(const Point3& rate, const Point3& force, double interval)
{
    const Point3 measured = Normalized(force);
    if (!m_started) m_up = measured;
    m_started = true;

    const double degrees = Length(rate) * interval;
    if (degrees > 0.0) m_up = RotationAbout(Normalized(rate), -degrees) * m_up;
    const double share = std::min(interval / m_timeConstant, 1.0);
    m_up = Normalized(m_up + share * (measured - m_up));

    // up = (sin p, -cos p sin r, -cos p cos r) in body axes: forward, right, down
    const double level = std::sqrt(m_up.y * m_up.y + m_up.z * m_up.z);
    return {0.0, ArcTangent(m_up.x, level), ArcTangent(-m_up.y, -m_up.z)};
}

} // namespace simulation
