// SPDX-License-Identifier: MIT
//
// How far a turn goes round, and about which axis. Angles are in degrees.
#pragma once

#include "quality/calibration/FieldModel.h"

#include <vector>

namespace tiltpole::quality {

/// A gap between two neighboring angles of a turn [degrees], both in [0, 360). `to` is below `from`
/// where the gap extends across 0.
struct Gap
{
    double from = 0.0;
    double to = 0.0;

    double Width() const; // in (0, 360]
};

/// Gaps wider than this count as missing: three sectors of the sample filters. [degrees]
inline constexpr double kWidestGap = 15.0;

/// Samples further apart than usual are a gap only beyond so many of their median steps, and gaps
/// wider than kWidestSparseGap count as missing however few samples there are. [degrees]
inline constexpr double kStepsOfGap = 1.9;
inline constexpr double kWidestSparseGap = 45.0;

/// The gaps wider than kWidestGap, or kStepsOfGap median steps where that is more, in ascending
/// order of `from`. Without any angle the whole turn is one gap.
std::vector<Gap> GapsOf(std::vector<double> angles);

/// 360 degrees minus the gaps.
double CoveredBy(const std::vector<Gap>& gaps);

/// A circle in the plane of two coordinates.
struct Circle
{
    double u = 0.0;
    double v = 0.0;
    double radius = 0.0;
};

/// The circle with the least sum of squared distances from the points; they may cover a part of it.
Circle CircleThrough(const std::vector<Eigen::Vector2d>& points);

/// Azimuths of points about the center of a circle, counted like those of the sample filters: from
/// the second coordinate towards the first. [degrees] in [0, 360)
std::vector<double> AzimuthsAbout(const Circle& circle, const std::vector<Eigen::Vector2d>& points);

/// A plane fitted to the ends of vectors by least squares.
struct Plane
{
    Eigen::Vector3d normal = Eigen::Vector3d::UnitZ();
    double distance = 0.0; // of the plane from the origin, along the normal
    double spread = 0.0;   // standard deviation of the ends from the plane
};

Plane PlaneThrough(const std::vector<Eigen::Vector3d>& vectors);

/// Of the planes that contain the origin, the one nearest to the ends of the vectors.
Plane PlaneThroughOrigin(const std::vector<Eigen::Vector3d>& vectors);

/// Angles of vectors about an axis, from an arbitrary zero direction. [degrees] in [0, 360)
std::vector<double> AnglesAbout(const Eigen::Vector3d& axis,
                                const std::vector<Eigen::Vector3d>& vectors);

} // namespace tiltpole::quality
