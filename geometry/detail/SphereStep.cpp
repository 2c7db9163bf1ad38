#include "geometry/detail/SphereStep.h"

#include <cmath>

namespace detail::sphere {

double Length(const SpacePoint& a)
{
    return std::sqrt(Dot(a, a));
}

double Symmetric3::Determinant() const
{
    return xx * (yy * hh - yh * yh) - xy * (xy * hh - yh * xh) + xh * (xy * yh - yy * xh);
}

Symmetric3 Symmetric3::Adjugate() const
{
    return {yy * hh - yh * yh, xh * yh - xy * hh, xy * yh - xh * yy,
            xx * hh - xh * xh, xy * xh - xx * yh, xx * yy - xy * xy};
}

SpacePoint Symmetric3::operator*(const SpacePoint& v) const
{
    return {xx * v.x + xy * v.y + xh * v.h, xy * v.x + yy * v.y + yh * v.h,
            xh * v.x + yh * v.y + hh * v.h};
}

void Symmetric3::AddSquare(const SpacePoint& v)
{
    xx += v.x * v.x;
    xy += v.x * v.y;
    xh += v.x * v.h;
    yy += v.y * v.y;
    yh += v.y * v.h;
    hh += v.h * v.h;
}

Symmetric3 Symmetric3::Scaled(double factor) const
{
    return {factor * xx, factor * xy, factor * xh, factor * yy, factor * yh, factor * hh};
}

namespace {

// VᵀV of the residuals after the step: the linearised row at the new tip times the step, plus the
// misclosure there.
double SquaredResiduals(const SpacePoint* positions, std::size_t count, const SphereStep& step,
                        const SpacePoint& correction)
{
    double sum = 0.0;
    for (std::size_t k = 0; k < count; ++k) {
        const SpacePoint towardsTip = step.tip - positions[k];
        const double residual =
            Dot(correction, towardsTip) / step.radius + step.radius - Length(towardsTip);
        sum += residual * residual;
    }
    return sum;
}

} // namespace

SphereStep StepSphere(const SpacePoint* positions, std::size_t count, const SpacePoint& tip,
                      double radius)
{
    Symmetric3 normal;
    SpacePoint right;
    for (std::size_t k = 0; k < count; ++k) {
        const SpacePoint towardsTip = tip - positions[k];
        const SpacePoint row = {towardsTip.x / radius, towardsTip.y / radius,
                                towardsTip.h / radius};
        const double misclosure = Length(towardsTip) - radius;
        normal.AddSquare(row);
        right = right + misclosure * row;
    }
    const Symmetric3 cofactor = normal.Adjugate().Scaled(1.0 / normal.Determinant());
    const SpacePoint correction = cofactor * right;
    const double n = static_cast<double>(count);

    SphereStep step;
    step.tip = tip + correction;
    step.radius = radius + (right.x + right.y + right.h) / n;
    const double squares = SquaredResiduals(positions, count, step, correction);
    const double unitError = std::sqrt(squares / (n - 4.0));
    step.pointError = std::sqrt(unitError * unitError * normal.Trace());
    step.geometryFigure = std::sqrt(cofactor.Trace());
    step.heightCofactor = cofactor.hh;
    return step;
}

} // namespace detail::sphere
