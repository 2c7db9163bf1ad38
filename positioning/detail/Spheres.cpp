// SPDX-License-Identifier: MIT
#include "positioning/detail/Spheres.h"

#include <cmath>
#include <limits>

namespace tiltpole::positioning {

namespace {

constexpr double kLeastDiscriminant = 1e-9; // below: a touching pair counts as no point
constexpr double kSameHeight = 1e-6;        // [m]; near-equal heights favour the second root

// Plane of the points that two spheres share, relative to the centre of the first:
// dx·x + dy·y + dh·h = rhs.
struct SharedPlane
{
    double dx, dy, dh, rhs;
};

SharedPlane PlaneBetween(const Sphere& origin, const Sphere& other)
{
    const double dx = other.center.x - origin.center.x;
    const double dy = other.center.y - origin.center.y;
    const double dh = other.center.h - origin.center.h;
    const double squares =
        dx * dx + dy * dy + dh * dh + origin.radius * origin.radius - other.radius * other.radius;
    return {dx, dy, dh, squares / 2.0};
}

} // namespace

bool LowerMeetingPoint(const Sphere& first, const Sphere& second, const Sphere& third,
                       xyhCoordinate& result)
{
    const SharedPlane p = PlaneBetween(first, second);
    const SharedPlane q = PlaneBetween(first, third);
    const double determinant = p.dy * q.dh - q.dy * p.dh;
    const double rounding = 4.0 * std::numeric_limits<double>::epsilon()
                            * (std::fabs(p.dy * q.dh) + std::fabs(q.dy * p.dh));
    if (!(std::fabs(determinant) > rounding)) return false;

    // y = c1 − m1·x, h = c2 − m2·x
    const double c1 = (p.rhs * q.dh - q.rhs * p.dh) / determinant;
    const double m1 = (p.dx * q.dh - q.dx * p.dh) / determinant;
    const double c2 = (p.dy * q.rhs - q.dy * p.rhs) / determinant;
    const double m2 = (p.dy * q.dx - q.dy * p.dx) / determinant;

    const double a = 1.0 + m1 * m1 + m2 * m2;
    const double b = -2.0 * (m1 * c1 + m2 * c2);
    const double c = c1 * c1 + c2 * c2 - first.radius * first.radius;
    const double discriminant = b * b - 4.0 * a * c;
    if (!(discriminant >= kLeastDiscriminant)) return false;

    const double x1 = (-b + std::sqrt(discriminant)) / (2.0 * a);
    const double x2 = (-b - std::sqrt(discriminant)) / (2.0 * a);
    const double h1 = c2 - m2 * x1;
    const double h2 = c2 - m2 * x2;
    const bool secondIsLower = h2 - h1 < kSameHeight;
    const double x = secondIsLower ? x2 : x1;
    const double h = secondIsLower ? h2 : h1;
    result = {first.center.x + x, first.center.y + (c1 - m1 * x), first.center.h + h};
    return true;
}

} // namespace tiltpole::positioning
