// SPDX-License-Identifier: MIT
#include "quality/TipEstimate.h"

#include "quality/statistics/Quantiles.h"
#include "quality/tip/TipFit.h"
#include "quality/tip/TipRegion.h"
#include "survey/Angle.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inside = tiltpole::quality;

namespace quality {

namespace {

using Eigen::Matrix3d;
using Eigen::Matrix4d;
using Eigen::Vector3d;
using Eigen::Vector4d;
using inside::Antenna;
using inside::ErrorScale;
using inside::Sight;
using inside::TipFit;
using tiltpole::survey::kDegreesPerRadian;

constexpr double kOutlierConfidence = 0.999; // for the whole set
constexpr double kRadiusConfidence = 0.999;
constexpr std::size_t kFewest = 4;
constexpr double kOpenDirection = 1e-10; // least to largest eigenvalue of the normal equations
constexpr double kSecondGrowth = 16.266; // 99.9 % of chi-square with three degrees of freedom

void FindLargestResidual(TipEstimate& estimate, const TipFit& fit,
                         const std::vector<Antenna>& antennas)
{
    for (std::size_t k = 0; k < fit.Count(); ++k) {
        const double residual = fit.At(k).residual;
        if (std::fabs(residual) <= std::fabs(estimate.largestResidual)) continue;
        estimate.largestResidual = residual;
        estimate.largestResidualIndex = antennas[k].index;
    }
}

// The residual that is largest by the deviation to be expected of it without it (externally
// studentized), against what the largest of n may be.
void FindSuspect(TipEstimate& estimate, const TipFit& fit, const std::vector<Antenna>& antennas,
                 const Matrix3d& cofactor)
{
    double largest = -1.0;
    for (std::size_t k = 0; k < fit.Count(); ++k) {
        const Sight sight = fit.At(k);
        const double leverage = sight.weight * sight.direction.dot(cofactor * sight.direction);
        const double ownSquare =
            sight.weight * sight.residual * sight.residual / std::max(1e-12, 1.0 - leverage);
        if (ownSquare <= largest) continue;
        largest = ownSquare;
        estimate.suspectIndex = antennas[k].index;
        estimate.suspectResidual = sight.residual;
    }
    if (fit.Freedom() < 2) return;
    const ErrorScale others(fit.Misfit() - largest, fit.Freedom() - 1);
    const double chance = (1.0 - kOutlierConfidence) / static_cast<double>(fit.Count());
    const double bound = inside::StudentBound(1.0 - chance, others.Freedom());
    estimate.suspectRatio = std::sqrt(largest / others.Variance()) / bound;
}

// The fit once more with the radius as a fourth unknown, one step from the solution.
void TestRadius(TipEstimate& estimate, const TipFit& fit)
{
    const int freedom = fit.Freedom() - 1;
    if (freedom < 1) return;
    Matrix4d normal = Matrix4d::Zero();
    Vector4d right = Vector4d::Zero();
    for (std::size_t k = 0; k < fit.Count(); ++k) {
        const Sight sight = fit.At(k);
        Vector4d row;
        row << sight.direction, -1.0;
        normal += sight.weight * row * row.transpose();
        right -= sight.weight * sight.residual * row;
    }
    const Matrix4d cofactor = normal.inverse();
    if (!cofactor.allFinite()) return;
    const Vector4d step = cofactor * right;
    const ErrorScale scale(fit.Misfit() - step.dot(right), freedom);
    estimate.radiusExcess = step[3];
    estimate.radiusExcessLimit = inside::StudentBound(kRadiusConfidence, scale.Freedom())
                                 * std::sqrt(scale.Variance() * cofactor(3, 3));
}

bool LeavesNoDirectionOpen(const Matrix3d& normal)
{
    const Eigen::SelfAdjointEigenSolver<Matrix3d> axes(normal, Eigen::EigenvaluesOnly);
    return axes.eigenvalues()[0] > kOpenDirection * axes.eigenvalues()[2];
}

// Whether `other` is a second tip that the residuals do not rule out: whether the misfit at the
// true tip may exceed the least one by that much.
bool FitsAsWell(const TipFit& other, const TipFit& best)
{
    const ErrorScale scale(best.Misfit(), best.Freedom());
    return (other.Tip() - best.Tip()).norm() > kTipTolerance && other.IsBelowTheAntennas()
           && other.Misfit() - best.Misfit() <= kSecondGrowth * scale.Variance();
}

void DescribeRegion(TipEstimate& estimate, const TipFit& fit, const Matrix3d& cofactor,
                    const AntennaErrors& errors)
{
    const inside::TipRegion region = inside::RegionOf(fit, cofactor, errors);
    Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(&estimate.covariance[0][0]) =
        region.covariance;
    estimate.ellipseMajor = region.major;
    estimate.ellipseMinor = region.minor;
    estimate.ellipseAzimuth = region.azimuth;
    estimate.heightHalfInterval = region.height;
}

TipVerdict Judge(const TipEstimate& estimate)
{
    if (estimate.suspectRatio > 1.0) return TipVerdict::Outlier;
    if (estimate.radiusExcessLimit > 0.0
        && std::fabs(estimate.radiusExcess) > estimate.radiusExcessLimit)
        return TipVerdict::WrongRadius;
    if (estimate.ambiguous) return TipVerdict::Ambiguous;
    if (!(estimate.ellipseMajor <= kTipTolerance && estimate.heightHalfInterval <= kTipTolerance))
        return TipVerdict::TooUncertain;
    return TipVerdict::Store;
}

void DescribeSpread(TipEstimate& estimate, const TipFit& fit)
{
    const Eigen::SelfAdjointEigenSolver<Matrix3d> spread(fit.DirectionScatter());
    const double least = std::clamp(spread.eigenvalues()[0], 0.0, 1.0);
    estimate.directionSpread = std::asin(std::sqrt(least)) * kDegreesPerRadian;
    estimate.narrowCone = estimate.directionSpread < kNarrowSpread;
}

// What all positions share may be nothing, but not less.
bool IsUsual(const AntennaErrors& errors)
{
    return errors.sharedPlan >= 0.0 && errors.sharedHeight >= 0.0 && errors.antennaHeight >= 0.0;
}

} // namespace

TipEstimate EstimateTip(const std::vector<xyhCoord>& antennas, double antennaHeight,
                        const AntennaErrors& errors)
{
    const std::vector<Antenna> finite = inside::FiniteAntennas(antennas);
    if (finite.size() < kFewest || !(antennaHeight > 0.0) || !(errors.plan > 0.0)
        || !(errors.height > 0.0) || !IsUsual(errors))
        return {};
    TipFit fit(finite, antennaHeight, Vector3d(errors.plan, errors.plan, errors.height));
    if (!fit.Converge()) return {};
    TipFit other = fit.Mirrored();
    const bool hasOther = other.Converge();
    if (hasOther && other.IsBelowTheAntennas()
        && (!fit.IsBelowTheAntennas() || other.Misfit() < fit.Misfit()))
        std::swap(fit, other);
    const Matrix3d normal = fit.Normal();
    if (!LeavesNoDirectionOpen(normal)) return {};
    const Matrix3d cofactor = normal.inverse();

    TipEstimate estimate;
    const xyhCoord& origin = antennas[finite.front().index];
    const auto given = [&origin](const Vector3d& tip) {
        return xyhCoord{origin.x + tip.x(), origin.y + tip.y(), origin.h + tip.z()};
    };
    estimate.tip = given(fit.Tip());
    estimate.used = finite.size();
    estimate.iterations = fit.Iterations();
    estimate.ambiguous = hasOther && FitsAsWell(other, fit);
    if (estimate.ambiguous) estimate.otherTip = given(other.Tip());
    estimate.errorFactor = std::max(kLeastErrorFactor, std::sqrt(fit.Misfit() / fit.Freedom()));
    double squares = 0.0;
    for (std::size_t k = 0; k < fit.Count(); ++k)
        squares += fit.At(k).residual * fit.At(k).residual;
    estimate.residualRms = std::sqrt(squares / static_cast<double>(fit.Count()));
    DescribeRegion(estimate, fit, cofactor, errors);
    FindLargestResidual(estimate, fit, finite);
    FindSuspect(estimate, fit, finite, cofactor);
    TestRadius(estimate, fit);
    DescribeSpread(estimate, fit);
    estimate.verdict = Judge(estimate);
    return estimate;
}

} // namespace quality
