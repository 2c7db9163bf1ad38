// SPDX-License-Identifier: MIT
#include "quality/TipEstimate.h"

#include "quality/statistics/Quantiles.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <utility>

namespace inside = tiltpole::quality;

namespace quality {

namespace {

using Eigen::Matrix2d;
using Eigen::Matrix3d;
using Eigen::Matrix4d;
using Eigen::Vector3d;
using Eigen::Vector4d;

constexpr double kConfidence = 0.95;
constexpr double kOutlierConfidence = 0.999; // for the whole set
constexpr double kRadiusConfidence = 0.999;
constexpr double kConverged = 1e-9; // step [m]
constexpr int kMostIterations = 100;
constexpr double kDegrees = 180.0 / std::numbers::pi;
constexpr std::size_t kFewest = 4;
constexpr double kOpenDirection = 1e-10; // least to largest eigenvalue of the normal equations
constexpr double kSecondConfidence = 0.999;
constexpr double kAside = 0.1; // of the antenna height

struct Antenna
{
    Vector3d position; // about the first one [m]
    std::size_t index; // as given
};

std::vector<Antenna> FiniteAntennas(const std::vector<xyhCoord>& given)
{
    std::vector<Antenna> antennas;
    Vector3d origin = Vector3d::Zero();
    for (std::size_t k = 0; k < given.size(); ++k) {
        const Vector3d position(given[k].x, given[k].y, given[k].h);
        if (!position.allFinite()) continue;
        if (antennas.empty()) origin = position;
        antennas.push_back({position - origin, k});
    }
    return antennas;
}

// Of unit weight.
double Variance(double misfit, int freedom)
{
    return std::max(misfit / freedom, kLeastErrorFactor * kLeastErrorFactor);
}

// One antenna position seen from a tip.
struct Sight
{
    Vector3d direction; // unit, antenna to tip
    double residual;    // distance − antenna height [m]
    double weight;      // 1 / variance of the distance [1/m²]
};

class Fit
{
public:
    Fit(const std::vector<Antenna>& antennas, double antennaHeight, const AntennaErrors& errors)
        : m_antennas(antennas), m_antennaHeight(antennaHeight),
          m_variance(errors.plan * errors.plan, errors.plan * errors.plan,
                     errors.height * errors.height)
    {
        for (const Antenna& antenna : m_antennas)
            m_middle += antenna.position / static_cast<double>(Count());
        Matrix3d scatter = Matrix3d::Zero();
        for (const Antenna& antenna : m_antennas)
            scatter += (antenna.position - m_middle) * (antenna.position - m_middle).transpose();
        m_across = Eigen::SelfAdjointEigenSolver<Matrix3d>(scatter).eigenvectors().col(0);
        // Aside of the plane of a swing, in which the way across it could not be told.
        m_tip = m_middle + antennaHeight * (Vector3d(0.0, 0.0, -1.0) + kAside * m_across);
    }

    bool Converge();
    Fit Mirrored() const;

    Sight At(std::size_t k, const Vector3d& tip) const
    {
        const Vector3d towards = tip - m_antennas[k].position;
        const double distance = towards.norm();
        const Vector3d direction = towards / distance;
        return {direction, distance - m_antennaHeight, 1.0 / direction.cwiseAbs2().dot(m_variance)};
    }
    Sight At(std::size_t k) const { return At(k, m_tip); }
    std::size_t Count() const { return m_antennas.size(); }
    int Freedom() const { return static_cast<int>(Count()) - 3; }
    const Vector3d& Tip() const { return m_tip; }
    bool IsBelowTheAntennas() const { return m_tip.z() < m_middle.z(); }
    int Iterations() const { return m_iterations; }
    double Misfit() const { return Misfit(m_tip); }
    Matrix3d Normal() const;
    Matrix3d DirectionScatter() const;

private:
    double Misfit(const Vector3d& tip) const;
    Vector3d Step() const;

    std::span<const Antenna> m_antennas;
    double m_antennaHeight;
    Vector3d m_variance;
    Vector3d m_middle = Vector3d::Zero(); // of the antennas
    Vector3d m_across;                    // normal of the plane in which the antennas lie best
    Vector3d m_tip;                       // begins below the middle of the antennas
    int m_iterations = 0;
};

double Fit::Misfit(const Vector3d& tip) const
{
    double sum = 0.0;
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k, tip);
        sum += sight.weight * sight.residual * sight.residual;
    }
    return sum;
}

Matrix3d Fit::Normal() const
{
    Matrix3d normal = Matrix3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k);
        normal += sight.weight * sight.direction * sight.direction.transpose();
    }
    return normal;
}

Matrix3d Fit::DirectionScatter() const
{
    Matrix3d scatter = Matrix3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Vector3d direction = At(k).direction;
        scatter += direction * direction.transpose();
    }
    return scatter / static_cast<double>(Count());
}

Vector3d Fit::Step() const
{
    Vector3d right = Vector3d::Zero();
    for (std::size_t k = 0; k < Count(); ++k) {
        const Sight sight = At(k);
        right -= sight.weight * sight.residual * sight.direction;
    }
    return Normal().ldlt().solve(right);
}

// Gauss–Newton; a step that makes the misfit larger is halved.
bool Fit::Converge()
{
    for (m_iterations = 1; m_iterations <= kMostIterations; ++m_iterations) {
        Vector3d step = Step();
        if (!step.allFinite()) return false;
        const double before = Misfit();
        while (step.norm() > kConverged && !(Misfit(m_tip + step) <= before))
            step *= 0.5;
        m_tip += step;
        if (step.norm() <= kConverged) return true;
    }
    return false;
}

// The fit that begins at the other side of the plane of the antennas: there a second tip fits as
// well as this one the nearer they come to that plane.
Fit Fit::Mirrored() const
{
    Fit mirrored = *this;
    mirrored.m_tip -= 2.0 * m_across.dot(m_tip - m_middle) * m_across;
    return mirrored;
}

void DescribeEllipse(TipEstimate& estimate, const Matrix3d& covariance, int freedom)
{
    const Matrix2d plan = covariance.topLeftCorner<2, 2>();
    const Eigen::SelfAdjointEigenSolver<Matrix2d> axes(plan);
    const double bound = 2.0 * inside::FisherBoundOfTwo(kConfidence, freedom);
    estimate.ellipseMinor = std::sqrt(bound * std::max(0.0, axes.eigenvalues()[0]));
    estimate.ellipseMajor = std::sqrt(bound * std::max(0.0, axes.eigenvalues()[1]));
    const Eigen::Vector2d major = axes.eigenvectors().col(1);
    const double azimuth = std::atan2(major.y(), major.x()) * kDegrees;
    estimate.ellipseAzimuth = azimuth < 0.0 ? azimuth + 180.0 : azimuth >= 180.0 ? 0.0 : azimuth;
}

void FindLargestResidual(TipEstimate& estimate, const Fit& fit,
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
// studentised), against what the largest of n may be.
void FindSuspect(TipEstimate& estimate, const Fit& fit, const std::vector<Antenna>& antennas,
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
    const double others = Variance(fit.Misfit() - largest, fit.Freedom() - 1);
    const double chance = (1.0 - kOutlierConfidence) / static_cast<double>(fit.Count());
    const double bound = inside::StudentBound(1.0 - chance, fit.Freedom() - 1);
    estimate.suspectRatio = std::sqrt(largest / others) / bound;
}

// The fit once more with the radius as a fourth unknown, one step from the solution.
void TestRadius(TipEstimate& estimate, const Fit& fit)
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
    const double variance = Variance(fit.Misfit() - step.dot(right), freedom);
    estimate.radiusExcess = step[3];
    estimate.radiusExcessLimit =
        inside::StudentBound(kRadiusConfidence, freedom) * std::sqrt(variance * cofactor(3, 3));
}

bool LeavesNoDirectionOpen(const Matrix3d& normal)
{
    const Eigen::SelfAdjointEigenSolver<Matrix3d> axes(normal, Eigen::EigenvaluesOnly);
    return axes.eigenvalues()[0] > kOpenDirection * axes.eigenvalues()[2];
}

// Whether `other` is a second tip that the residuals do not rule out: whether chance may make the
// variance of one set of positions so much larger than that of another.
bool FitsAsWell(const Fit& other, const Fit& best, double variance)
{
    const double bound = inside::VarianceRatioBound(kSecondConfidence, best.Freedom());
    return (other.Tip() - best.Tip()).norm() > kTipTolerance && other.IsBelowTheAntennas()
           && other.Misfit() / other.Freedom() <= bound * variance;
}

TipVerdict Judge(const TipEstimate& estimate)
{
    if (estimate.suspectRatio > 1.0) return TipVerdict::Outlier;
    if (estimate.radiusExcessLimit > 0.0
        && std::fabs(estimate.radiusExcess) > estimate.radiusExcessLimit)
        return TipVerdict::WrongRadius;
    if (estimate.ambiguous) return TipVerdict::Ambiguous;
    if (estimate.ellipseMajor > kTipTolerance || estimate.heightHalfInterval > kTipTolerance)
        return TipVerdict::TooUncertain;
    return TipVerdict::Store;
}

void DescribeSpread(TipEstimate& estimate, const Fit& fit)
{
    const Eigen::SelfAdjointEigenSolver<Matrix3d> spread(fit.DirectionScatter());
    const double least = std::clamp(spread.eigenvalues()[0], 0.0, 1.0);
    estimate.directionSpread = std::asin(std::sqrt(least)) * kDegrees;
    estimate.narrowCone = estimate.directionSpread < kNarrowSpread;
}

} // namespace

TipEstimate EstimateTip(const std::vector<xyhCoord>& antennas, double antennaHeight,
                        const AntennaErrors& errors)
{
    const std::vector<Antenna> finite = FiniteAntennas(antennas);
    if (finite.size() < kFewest || !(antennaHeight > 0.0) || !(errors.plan > 0.0)
        || !(errors.height > 0.0))
        return {};
    Fit fit(finite, antennaHeight, errors);
    if (!fit.Converge()) return {};
    Fit other = fit.Mirrored();
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
    const double variance = Variance(fit.Misfit(), fit.Freedom());
    estimate.ambiguous = hasOther && FitsAsWell(other, fit, variance);
    if (estimate.ambiguous) estimate.otherTip = given(other.Tip());
    const Matrix3d covariance = variance * cofactor;
    Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(&estimate.covariance[0][0]) =
        covariance;
    estimate.errorFactor = std::sqrt(variance);
    double squares = 0.0;
    for (std::size_t k = 0; k < fit.Count(); ++k)
        squares += fit.At(k).residual * fit.At(k).residual;
    estimate.residualRms = std::sqrt(squares / static_cast<double>(fit.Count()));
    estimate.heightHalfInterval =
        inside::StudentBound(kConfidence, fit.Freedom()) * std::sqrt(covariance(2, 2));
    DescribeEllipse(estimate, covariance, fit.Freedom());
    FindLargestResidual(estimate, fit, finite);
    FindSuspect(estimate, fit, finite, cofactor);
    TestRadius(estimate, fit);
    DescribeSpread(estimate, fit);
    estimate.verdict = Judge(estimate);
    return estimate;
}

} // namespace quality
