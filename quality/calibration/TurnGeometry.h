// SPDX-License-Identifier: MIT
//
// How far round a turn goes, and about which axis.
#pragma once

#include "quality/calibration/FieldModel.h"

#include <vector>

namespace tiltpole::quality {

/// A gap in a turn between two of its angles. [degrees] in [0, 360), `to` may be below `from`.
struct Gap
{
    double from = 0.0;
    double to = 0.0;

    double Width() const;
};

/// Gaps wider than this count as missing: three sectors of the sample filters. [degrees]
inline constexpr double kWidestGap = 15.0;

/// The gaps wider than kWidestGap, in ascending order of `from`. No angle at all: one whole turn.
std::vector<Gap> GapsOf(std::vector<double> angles);

/// 360 degrees less the gaps.
double CoveredBy(const std::vector<Gap>& gaps);

/// A circle in the plane of two coordinates.
struct Circle
{
    double u = 0.0;
    double v = 0.0;
    double radius = 0.0;
};

/// The circle with the least squared distances from the points; partial turns included.
Circle CircleThrough(const std::vector<Eigen::Vector2d>& points);

/// Azimuths of points about a centre, as the sample filters count them: from the second coordinate
/// towards the first. [degrees] in [0, 360)
std::vector<double> AzimuthsAbout(const Circle& circle, const std::vector<Eigen::Vector2d>& points);

/// The plane in which the ends of the vectors lie best.
struct Plane
{
    Eigen::Vector3d normal = Eigen::Vector3d::UnitZ();
    double distance = 0.0; // of the plane from the origin, along the normal
    double spread = 0.0;   // standard deviation of the ends from the plane
};

/// @param throughOrigin  the plane is to contain the origin
Plane PlaneThrough(const std::vector<Eigen::Vector3d>& vectors, bool throughOrigin);

/// Angles of vectors about an axis, from an arbitrary zero. [degrees] in [0, 360)
std::vector<double> AnglesAbout(const Eigen::Vector3d& axis,
                                const std::vector<Eigen::Vector3d>& vectors);

} // namespace tiltpole::quality
