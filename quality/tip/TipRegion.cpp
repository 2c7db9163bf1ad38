// SPDX-License-Identifier: MIT
#include "quality/tip/TipRegion.h"

#include "quality/statistics/Quantiles.h"
#include "survey/Angle.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tiltpole::quality {

using Eigen::Matrix2d;
using Eigen::Matrix3d;
using Eigen::Vector2d;
using Eigen::Vector3d;

namespace {

constexpr double kConfidence = 0.95;
constexpr int kStatementFreedom = 10;            // what the stated errors count for
constexpr double kChiSquareOfTwo = 5.9914645471; // 95 %, two degrees of freedom: -2·ln 0.05
constexpr double kChiSquareOfOne = 3.8414588207; // 95 %, one degree of freedom
constexpr double kFurthest = 1.0;                // [m] beyond it, a region is open

// 99 % of chi-square: E. B. Wilson, M. M. Hilferty, The distribution of chi-square, Proc. Nat.
// Acad. Sci. 17 (1931) 684.
double LargestUsualMisfit(int freedom)
{
    constexpr double kNormal = 2.3263478740; // 99 % of the normal distribution
    const double part = 2.0 / (9.0 * freedom);
    return freedom * std::pow(1.0 - part + kNormal * std::sqrt(part), 3.0);
}

// By how much the misfit's own shape along a unit vector exceeds the one that its curvature at the
// tip predicts: few positions close together leave it flat on one side.
double Widening(const TipFit& fit, const Vector3d& along, double cofactor, double growth)
{
    const double linear = std::sqrt(growth * cofactor);
    return fit.Reach(along, linear, growth, kFurthest) / linear;
}

// What all positions share.
Matrix3d SharedCovariance(const TipFit& fit, const ::quality::AntennaErrors& errors)
{
    const Vector3d byHeight = errors.antennaHeight * fit.HeightSlope();
    Matrix3d shared = byHeight * byHeight.transpose();
    shared.diagonal() +=
        Vector3d(errors.sharedPlan, errors.sharedPlan, errors.sharedHeight).cwiseAbs2();
    return shared;
}

void SetEllipse(TipRegion& region, const Matrix2d& shape)
{
    const Eigen::SelfAdjointEigenSolver<Matrix2d> axes(shape);
    region.minor = std::sqrt(std::max(0.0, axes.eigenvalues()[0]));
    region.major = std::sqrt(std::max(0.0, axes.eigenvalues()[1]));
    const Vector2d major = axes.eigenvectors().col(1);
    const double azimuth = survey::Rad2Deg(std::atan2(major.y(), major.x()));
    region.azimuth = azimuth < 0.0 ? azimuth + 180.0 : azimuth >= 180.0 ? 0.0 : azimuth;
}

} // namespace

ErrorScale::ErrorScale(double misfit, int freedom)
    : m_variance(std::max(1.0, (kStatementFreedom + misfit) / (kStatementFreedom + freedom))),
      m_freedom(kStatementFreedom + freedom)
{
    // The residuals contradict the statement: they alone count.
    if (freedom > 0 && misfit > LargestUsualMisfit(freedom)) {
        m_variance = misfit / freedom;
        m_freedom = freedom;
    }
}

TipRegion RegionOf(const TipFit& fit, const Matrix3d& cofactor,
                   const ::quality::AntennaErrors& errors)
{
    const ErrorScale scale(fit.Misfit(), fit.Freedom());
    const double ellipseBound = 2.0 * FisherBoundOfTwo(kConfidence, scale.Freedom());
    const double student = StudentBound(kConfidence, scale.Freedom());
    const double heightBound = student * student;

    // Along the axes of the ellipse and along the height the linear figures are widened.
    const Eigen::SelfAdjointEigenSolver<Matrix2d> axes(cofactor.topLeftCorner<2, 2>());
    Matrix3d widen = Matrix3d::Zero();
    for (int i = 0; i < 2; ++i) {
        const Vector2d axis = axes.eigenvectors().col(i);
        const double growth = scale.Variance() * ellipseBound;
        const double wider =
            Widening(fit, {axis.x(), axis.y(), 0.0}, axes.eigenvalues()[i], growth);
        widen.topLeftCorner<2, 2>() += wider * axis * axis.transpose();
    }
    widen(2, 2) = Widening(fit, Vector3d::UnitZ(), cofactor(2, 2), scale.Variance() * heightBound);

    TipRegion region;
    if (!widen.allFinite()) {
        region.major = region.minor = region.height = std::numeric_limits<double>::infinity();
        region.covariance = scale.Variance() * cofactor + SharedCovariance(fit, errors);
        return region;
    }
    const Matrix3d own = scale.Variance() * widen * cofactor * widen;
    const Matrix3d shared = SharedCovariance(fit, errors);
    region.covariance = own + shared;
    SetEllipse(region, ellipseBound * own.topLeftCorner<2, 2>()
                           + kChiSquareOfTwo * shared.topLeftCorner<2, 2>());
    region.height = std::sqrt(heightBound * own(2, 2) + kChiSquareOfOne * shared(2, 2));
    return region;
}

} // namespace tiltpole::quality
