// SPDX-License-Identifier: MIT
#include "field/time/DelayFit.h"

#include <cmath>

namespace tiltpole::field {

namespace {

survey::Point3 MeanOf(std::span<const survey::Point3> points)
{
    survey::Point3 sum;
    for (const survey::Point3& point : points)
        sum = sum + point;
    return (1.0 / static_cast<double>(points.size())) * sum;
}

survey::Point3 Turned(const survey::Point3& v, double azimuth)
{
    const double c = std::cos(azimuth);
    const double s = std::sin(azimuth);
    return {c * v.x - s * v.y, s * v.x + c * v.y, v.z};
}

} // namespace

RockingFit FitRocking(std::span<const survey::Point3> antenna, std::span<const survey::Point3> up,
                      double heightWeight)
{
    const survey::Point3 meanAntenna = MeanOf(antenna);
    const survey::Point3 meanUp = MeanOf(up);
    double along = 0.0;  // A
    double across = 0.0; // C
    double height = 0.0; // w·H
    double up2 = 0.0;
    double antenna2 = 0.0;
    for (std::size_t i = 0; i < antenna.size(); ++i) {
        const survey::Point3 a = antenna[i] - meanAntenna;
        const survey::Point3 u = up[i] - meanUp;
        along += a.x * u.x + a.y * u.y;
        across += a.y * u.x - a.x * u.y;
        height += heightWeight * a.z * u.z;
        up2 += u.x * u.x + u.y * u.y + heightWeight * u.z * u.z;
        antenna2 += a.x * a.x + a.y * a.y + heightWeight * a.z * a.z;
    }

    RockingFit fit;
    const double common = std::hypot(along, across) + height;
    fit.headingOffset = std::atan2(across, along);
    fit.length = up2 > 0.0 ? common / up2 : 0.0;
    fit.sum = antenna2 - fit.length * common;
    fit.tip = meanAntenna - fit.length * Turned(meanUp, fit.headingOffset);
    return fit;
}

std::vector<survey::Point3> ResidualsOf(std::span<const survey::Point3> antenna,
                                        std::span<const survey::Point3> up, const RockingFit& fit)
{
    std::vector<survey::Point3> residuals;
    residuals.reserve(antenna.size());
    for (std::size_t i = 0; i < antenna.size(); ++i)
        residuals.push_back(antenna[i] - fit.tip - fit.length * Turned(up[i], fit.headingOffset));
    return residuals;
}

} // namespace tiltpole::field
