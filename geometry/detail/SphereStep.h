// SPDX-License-Identifier: MIT
//
// One least-squares step of a sphere through antenna positions: the pole tip T is the center, the
// antenna height r the radius, |P_k − T| = r for every antenna position P_k.
//
// Coordinates and radii in meters. Formulas: docs/formulas.md, "Tip from many antenna positions".
#pragma once

#include "survey/Point.h"

#include <cmath>
#include <cstddef>

namespace tiltpole::geometry {

using survey::Point3;

// A symmetric 3 × 3 matrix, upper triangle.
struct Symmetric3
{
    double xx = 0.0, xy = 0.0, xh = 0.0;
    double yy = 0.0, yh = 0.0;
    double hh = 0.0;

    double Trace() const { return xx + yy + hh; }

    double Determinant() const
    {
        return xx * (yy * hh - yh * yh) - xy * (xy * hh - yh * xh) + xh * (xy * yh - yy * xh);
    }

    // Inverse times determinant.
    Symmetric3 Adjugate() const
    {
        return {yy * hh - yh * yh, xh * yh - xy * hh, xy * yh - xh * yy,
                xx * hh - xh * xh, xy * xh - xx * yh, xx * yy - xy * xy};
    }

    Symmetric3 Scaled(double factor) const
    {
        return {factor * xx, factor * xy, factor * xh, factor * yy, factor * yh, factor * hh};
    }

    Point3 operator*(const Point3& v) const
    {
        return {xx * v.x + xy * v.y + xh * v.z, xy * v.x + yy * v.y + yh * v.z,
                xh * v.x + yh * v.y + hh * v.z};
    }

    // Adds v·vᵀ.
    void AddSquare(const Point3& v)
    {
        xx += v.x * v.x;
        xy += v.x * v.y;
        xh += v.x * v.z;
        yy += v.y * v.y;
        yh += v.y * v.z;
        hh += v.z * v.z;
    }
};

// A tip after one step, with the figures that grade it.
struct SphereStep
{
    Point3 tip;                  // [m]
    double radius = 0.0;         // [m]
    double pointError = 0.0;     // [m]
    double geometryFigure = 0.0; // root of the trace of N⁻¹
    double heightCofactor = 0.0; // last diagonal element of N⁻¹
};

// The step from `tip` and `radius` over `count` positions. The step is added with the sign of the
// misclosure d − r, and the point error comes from the diagonal of the normal matrix N itself. With
// four positions the redundancy is 0 and the point error not finite; a singular N gives figures
// that are not finite.
SphereStep StepSphere(const Point3* positions, std::size_t count, const Point3& tip, double radius);

} // namespace tiltpole::geometry
