// SPDX-License-Identifier: MIT
#include "positioning/detail/Spheres.h"

#include <cmath>
#include <limits>

namespace tiltpole::positioning {

namespace {

constexpr double kLeastDiscriminant = 1e-9; // spheres that only touch count as apart
constexpr double kSameHeight = 1e-6;        // [m]; nearly equal heights favor the second root

// The plane of the circle in which two spheres intersect, relative to the center of the first:
// normal.x·x + normal.y·y + normal.z·z = offset.
struct SharedPlane
{
    survey::Point3 normal; // from the first center to the other
    double offset;
};

SharedPlane PlaneBetween(const Sphere& origin, const Sphere& other)
{
    const survey::Point3 line = other.center - origin.center;
    const double squares =
        Dot(line, line) + origin.radius * origin.radius - other.radius * other.radius;
    return {line, squares / 2.0};
}

} // namespace

std::optional<survey::Point3> LowerMeetingPoint(const Sphere& first, const Sphere& second,
                                                const Sphere& third)
{
    const auto [p, pOffset] = PlaneBetween(first, second);
    const auto [q, qOffset] = PlaneBetween(first, third);
    const double determinant = p.y * q.z - q.y * p.z;
    const double rounding = 4.0 * std::numeric_limits<double>::epsilon()
                            * (std::fabs(p.y * q.z) + std::fabs(q.y * p.z));
    if (!(std::fabs(determinant) > rounding)) return std::nullopt;

    // y = c1 − m1·x, z = c2 − m2·x
    const double c1 = (pOffset * q.z - qOffset * p.z) / determinant;
    const double m1 = (p.x * q.z - q.x * p.z) / determinant;
    const double c2 = (p.y * qOffset - q.y * pOffset) / determinant;
    const double m2 = (p.y * q.x - q.y * p.x) / determinant;

    const double a = 1.0 + m1 * m1 + m2 * m2;
    const double b = -2.0 * (m1 * c1 + m2 * c2);
    const double c = c1 * c1 + c2 * c2 - first.radius * first.radius;
    const double discriminant = b * b - 4.0 * a * c;
    if (!(discriminant >= kLeastDiscriminant)) return std::nullopt;

    const double x1 = (-b + std::sqrt(discriminant)) / (2.0 * a);
    const double x2 = (-b - std::sqrt(discriminant)) / (2.0 * a);
    const double z1 = c2 - m2 * x1;
    const double z2 = c2 - m2 * x2;
    const bool secondIsLower = z2 - z1 < kSameHeight;
    const double x = secondIsLower ? x2 : x1;
    const double z = secondIsLower ? z2 : z1;
    return first.center + survey::Point3{x, c1 - m1 * x, z};
}

} // namespace tiltpole::positioning
