// SPDX-License-Identifier: MIT
#include "geometry/detail/SphereStep.h"

#include <cmath>

namespace tiltpole::geometry {

namespace {

// VᵀV of the residuals after the step: the linearised row at the new tip times the step, plus the
// misclosure there.
double SquaredResiduals(const Point3* positions, std::size_t count, const SphereStep& step,
                        const Point3& correction)
{
    double sum = 0.0;
    for (std::size_t k = 0; k < count; ++k) {
        const Point3 towardsTip = step.tip - positions[k];
        const double residual =
            Dot(correction, towardsTip) / step.radius + step.radius - Length(towardsTip);
        sum += residual * residual;
    }
    return sum;
}

} // namespace

SphereStep StepSphere(const Point3* positions, std::size_t count, const Point3& tip, double radius)
{
    Symmetric3 normal;
    Point3 right;
    for (std::size_t k = 0; k < count; ++k) {
        const Point3 towardsTip = tip - positions[k];
        const Point3 row = {towardsTip.x / radius, towardsTip.y / radius, towardsTip.z / radius};
        const double misclosure = Length(towardsTip) - radius;
        normal.AddSquare(row);
        right = right + misclosure * row;
    }
    const Symmetric3 cofactor = normal.Adjugate().Scaled(1.0 / normal.Determinant());
    const Point3 correction = cofactor * right;
    const double n = static_cast<double>(count);

    SphereStep step;
    step.tip = tip + correction;
    step.radius = radius + (right.x + right.y + right.z) / n;
    const double squares = SquaredResiduals(positions, count, step, correction);
    const double unitError = std::sqrt(squares / (n - 4.0));
    step.pointError = std::sqrt(unitError * unitError * normal.Trace());
    step.geometryFigure = std::sqrt(cofactor.Trace());
    step.heightCofactor = cofactor.hh;
    return step;
}

} // namespace tiltpole::geometry
