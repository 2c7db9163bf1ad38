// SPDX-License-Identifier: MIT
//
// Positions laid out for the search kernels, and their moments.
#pragma once

#include "geometry/detail/SearchKernels.h"
#include "geometry/detail/SphereStep.h"

#include <cstddef>
#include <vector>

namespace tiltpole::geometry {

// One array per coordinate, with room for the last group of lanes.
class CoordinateArrays
{
public:
    explicit CoordinateArrays(std::size_t count)
        : m_x(count + kGroup), m_y(count + kGroup), m_h(count + kGroup), m_held(count + kGroup)
    {}

    void Set(std::size_t k, const Point3& p)
    {
        m_x[k] = p.x;
        m_y[k] = p.y;
        m_h[k] = p.z;
        m_held[k] = 1.0;
    }
    Point3 At(std::size_t k) const { return {m_x[k], m_y[k], m_h[k]}; }
    Coordinates View() const { return {m_x.data(), m_y.data(), m_h.data(), m_held.data()}; }

private:
    std::vector<double> m_x;
    std::vector<double> m_y;
    std::vector<double> m_h;
    std::vector<double> m_held;
};

// Positions about their mean.
class PointCloud
{
public:
    explicit PointCloud(const std::vector<Point3>& positions);

    Point3 At(std::size_t k) const { return m_positions.At(k); }
    Coordinates View() const { return m_positions.View(); }
    const Cloud& Moments() const { return m_moments; }
    const Symmetric3& Spread() const { return m_spread; } // mean of p·pᵀ

private:
    void CollectMoments();
    void FitAlgebraicSphere();

    std::size_t m_count;
    CoordinateArrays m_positions;
    Symmetric3 m_spread;
    Cloud m_moments = {};
};

} // namespace tiltpole::geometry
