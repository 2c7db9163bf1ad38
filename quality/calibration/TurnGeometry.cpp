// SPDX-License-Identifier: MIT
#include "quality/calibration/TurnGeometry.h"

#include "quality/statistics/Statistics.h"
#include "survey/Angle.h"
#include "survey/TurnAngle.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tiltpole::quality {
namespace {

using survey::InTurn;
using survey::kDegreesPerRadian;

// The circle u² + v² = 2·cu·u + 2·cv·v + k that fits in the algebraic sense.
Circle AlgebraicCircle(const std::vector<Eigen::Vector2d>& points, const Eigen::Vector2d& mean)
{
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Vector3d right = Eigen::Vector3d::Zero();
    for (const Eigen::Vector2d& p : points) {
        const Eigen::Vector3d row(2.0 * (p.x() - mean.x()), 2.0 * (p.y() - mean.y()), 1.0);
        normal += row * row.transpose();
        right += row * (p - mean).squaredNorm();
    }
    const Eigen::Vector3d s = normal.ldlt().solve(right);
    const double square = s.z() + s.x() * s.x() + s.y() * s.y();
    return {mean.x() + s.x(), mean.y() + s.y(), std::sqrt(std::max(square, 0.0))};
}

// One Gauss-Newton step on the distances.
Circle Improved(const Circle& c, const std::vector<Eigen::Vector2d>& points)
{
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Vector3d gradient = Eigen::Vector3d::Zero();
    for (const Eigen::Vector2d& p : points) {
        const Eigen::Vector2d out = p - Eigen::Vector2d(c.u, c.v);
        const double distance = out.norm();
        if (!(distance > 0.0)) continue;
        const Eigen::Vector3d row(-out.x() / distance, -out.y() / distance, -1.0);
        normal += row * row.transpose();
        gradient += row * (distance - c.radius);
    }
    const Eigen::Vector3d step = normal.ldlt().solve(gradient);
    return {c.u - step.x(), c.v - step.y(), c.radius - step.z()};
}

// The plane through a point whose normal is the direction in which the vectors scatter least.
Plane PlaneAt(const Eigen::Vector3d& point, const std::vector<Eigen::Vector3d>& vectors)
{
    Eigen::Matrix3d scatter = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& v : vectors)
        scatter += (v - point) * (v - point).transpose();
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> axes(
        scatter / static_cast<double>(vectors.size()));
    Plane plane;
    plane.normal = axes.eigenvectors().col(0);
    plane.distance = plane.normal.dot(point);
    plane.spread = std::sqrt(std::max(axes.eigenvalues()[0], 0.0));
    return plane;
}

// A gap in the angles of a turn, sorted, stands out from the steps between them.
double WidestStepOf(const std::vector<double>& sorted)
{
    std::vector<double> steps;
    for (std::size_t i = 1; i < sorted.size(); ++i)
        steps.push_back(sorted[i] - sorted[i - 1]);
    return std::clamp(kStepsOfGap * Median(std::move(steps)), kWidestGap, kWidestSparseGap);
}

} // namespace

double Gap::Width() const
{
    const double width = InTurn(to - from);
    return width > 0.0 ? width : 360.0;
}

std::vector<Gap> GapsOf(std::vector<double> angles)
{
    if (angles.empty())
        return {
            {0.0, 0.0}
        };
    std::sort(angles.begin(), angles.end());
    const double widest = WidestStepOf(angles);
    std::vector<Gap> gaps;
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const bool last = i + 1 == angles.size();
        const double next = last ? angles.front() + 360.0 : angles[i + 1];
        if (next - angles[i] > widest) gaps.push_back({angles[i], InTurn(next)});
    }
    return gaps;
}

double CoveredBy(const std::vector<Gap>& gaps)
{
    double covered = 360.0;
    for (const Gap& gap : gaps)
        covered -= gap.Width();
    return std::max(covered, 0.0); // widths that make a whole turn are rounded
}

Circle CircleThrough(const std::vector<Eigen::Vector2d>& points)
{
    constexpr int kSteps = 10;
    if (points.empty()) return {};
    Eigen::Vector2d mean = Eigen::Vector2d::Zero();
    for (const Eigen::Vector2d& p : points)
        mean += p;
    mean /= static_cast<double>(points.size());
    Circle circle = AlgebraicCircle(points, mean);
    for (int i = 0; i < kSteps; ++i)
        circle = Improved(circle, points);
    return circle;
}

std::vector<double> AzimuthsAbout(const Circle& circle, const std::vector<Eigen::Vector2d>& points)
{
    std::vector<double> azimuths;
    azimuths.reserve(points.size());
    for (const Eigen::Vector2d& p : points) {
        const double angle = std::atan2(p.x() - circle.u, p.y() - circle.v);
        azimuths.push_back(InTurn(angle * kDegreesPerRadian));
    }
    return azimuths;
}

Plane PlaneThrough(const std::vector<Eigen::Vector3d>& vectors)
{
    if (vectors.empty()) return {};
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const Eigen::Vector3d& v : vectors)
        mean += v;
    return PlaneAt(mean / static_cast<double>(vectors.size()), vectors);
}

Plane PlaneThroughOrigin(const std::vector<Eigen::Vector3d>& vectors)
{
    if (vectors.empty()) return {};
    return PlaneAt(Eigen::Vector3d::Zero(), vectors);
}

std::vector<double> AnglesAbout(const Eigen::Vector3d& axis,
                                const std::vector<Eigen::Vector3d>& vectors)
{
    const Eigen::Vector3d first = axis.unitOrthogonal();
    const Eigen::Vector3d second = axis.cross(first);
    std::vector<double> angles;
    angles.reserve(vectors.size());
    for (const Eigen::Vector3d& v : vectors) {
        angles.push_back(InTurn(std::atan2(v.dot(second), v.dot(first)) * kDegreesPerRadian));
    }
    return angles;
}

} // namespace tiltpole::quality
