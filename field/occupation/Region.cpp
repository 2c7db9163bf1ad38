// SPDX-License-Identifier: MIT
#include "field/occupation/Region.h"

#include "survey/Angle.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kChiSquareOfTwo = 5.9914645471; // 95 %, two degrees of freedom: -2·ln 0.05
constexpr double kNormal = 1.9599639845;         // 95 % of the normal distribution

double Squared(double x)
{
    return x * x;
}

} // namespace

double PooledFactor(double misfit, double freedom, double statement)
{
    return (statement + misfit) / (statement + freedom);
}

void SetRegion(::field::OccupationEstimate& estimate, const Eigen::Matrix3d& own, double factor,
               const ::field::OccupationSetup& setup)
{
    // North, east, up: the second axis is reversed.
    const Eigen::Vector3d reverse(1.0, -1.0, 1.0);
    Eigen::Matrix3d c = std::max(1.0, factor) * (reverse.asDiagonal() * own * reverse.asDiagonal());
    c(0, 0) += Squared(setup.sharedPlanSigma);
    c(1, 1) += Squared(setup.sharedPlanSigma);
    c(2, 2) += Squared(setup.sharedHeightSigma) + Squared(setup.poleSigma);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            estimate.covariance[i][j] = c(i, j);
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> axes;
    axes.computeDirect(c.topLeftCorner<2, 2>());
    estimate.ellipseMinor = std::sqrt(kChiSquareOfTwo * std::max(0.0, axes.eigenvalues()[0]));
    estimate.ellipseMajor = std::sqrt(kChiSquareOfTwo * std::max(0.0, axes.eigenvalues()[1]));
    const Eigen::Vector2d major = axes.eigenvectors().col(1);
    const double azimuth = survey::Rad2Deg(std::atan2(major.y(), major.x()));
    const double upper = azimuth < 0.0 ? azimuth + 180.0 : azimuth;
    estimate.ellipseAzimuth = upper >= 180.0 ? 0.0 : upper;
    estimate.heightHalfInterval = kNormal * std::sqrt(c(2, 2));
}

} // namespace tiltpole::field
