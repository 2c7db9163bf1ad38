// SPDX-License-Identifier: MIT
#include "field/occupation/GyroFree.h"

#include "field/occupation/Region.h"
#include "survey/Angle.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;

namespace {

using Column6 = Eigen::Matrix<double, kGyroFreeUnknowns, 1>;

constexpr double kAcross = 2.5 / survey::kDegreesPerRadian; // heading error of one epoch [rad]
// Error of pitch and roll that differs from second to second: they lag and are accelerated [rad].
constexpr double kAlong = 0.5 / survey::kDegreesPerRadian;
// Heights of the antenna wander for half a minute: those of two leans differ by more than an
// epoch's sigma says.
constexpr double kSlowHeight = 1.7;

bool HasLean(const Epoch& epoch)
{
    return epoch.lean.squaredNorm() > 0.5;
}

// Way, extent and spread of the pole's directions.
void SetMotion(GyroFreeFit& fit, const Track& track)
{
    Vector3d low = Vector3d::Constant(2.0);
    Vector3d high = Vector3d::Constant(-2.0);
    Vector3d mean = Vector3d::Zero();
    double square = 0.0;
    double way = 0.0;
    const Epoch* last = nullptr;
    const Epoch* first = nullptr;
    for (const Epoch& epoch : track.Epochs()) {
        if (!HasLean(epoch)) continue;
        ++fit.epochs;
        low = low.cwiseMin(epoch.lean);
        high = high.cwiseMax(epoch.lean);
        mean += epoch.lean;
        square += epoch.lean.squaredNorm();
        if (last != nullptr) way += (epoch.lean - last->lean).norm();
        if (first == nullptr) first = &epoch;
        last = &epoch;
    }
    if (last != nullptr) fit.lean = last->lean;
    if (fit.epochs < 2) return;
    mean /= fit.epochs;
    const double extent = (high - low).head<2>().norm();
    fit.rocking = extent > 0.0 ? way / extent : 0.0;
    fit.pace = way / (last->time - first->time);
    fit.spread = std::sqrt(std::max(0.0, square / fit.epochs - mean.squaredNorm()));
}

LeanRow RowOf(const Epoch& epoch, const GyroFreeFit& fit, const GyroFreeSetup& setup, double share)
{
    const Matrix3d north = Eigen::AngleAxisd(fit.offset, Vector3d::UnitZ()).toRotationMatrix();
    const Vector3d left = epoch.lean.cross(epoch.forward);
    const Vector3d along = epoch.lean + fit.tilt.x() * epoch.forward + fit.tilt.y() * left;
    LeanRow row;
    row.epoch = &epoch;
    row.pole = north * along.normalized();
    const Vector3d pole = setup.poleLength * row.pole;
    const Vector3d across(-pole.y(), pole.x(), 0.0); // its derivative by the heading offset
    row.residual = fit.tip + pole - epoch.position;
    const double plan = epoch.planSigma > 0.0 ? epoch.planSigma : setup.planSigma;
    const double height =
        kSlowHeight * (epoch.heightSigma > 0.0 ? epoch.heightSigma : setup.heightSigma);
    const Matrix3d swing = setup.poleLength
                           * (Matrix3d::Identity() - row.pole * row.pole.transpose())
                           / along.norm(); // derivative of the pole by a shift of its direction
    Matrix3d covariance = kAcross * kAcross * across * across.transpose();
    covariance += kAlong * kAlong * swing * swing.transpose();
    covariance.diagonal() += Vector3d(plan * plan, plan * plan, height * height);
    row.weight = share * covariance.inverse();
    row.jacobian << Matrix3d::Identity(), across, swing * (north * epoch.forward),
        swing * (north * left);
    return row;
}

// A step of the tip before the epochs that were added.
struct StepSum
{
    Matrix3d own = Matrix3d::Zero();
    Vector3d right = Vector3d::Zero();
    Eigen::Matrix<double, kGyroFreeUnknowns, 3> mixed =
        Eigen::Matrix<double, kGyroFreeUnknowns, 3>::Zero();

    void Add(const LeanRow& row)
    {
        own += row.weight;
        right -= row.weight * row.residual;
        mixed += row.jacobian.transpose() * row.weight;
    }
    Matrix3d Covariance(const GyroFreeMatrix& cofactor) const
    {
        return (own - mixed.transpose() * cofactor * mixed).inverse();
    }
};

} // namespace

void GyroFreeFitter::SetRows(const Track& track, const GyroFreeFit& fit, const GyroFreeSetup& setup)
{
    m_rows.clear();
    for (const Epoch& epoch : track.Epochs())
        if (HasLean(epoch)) m_rows.push_back(RowOf(epoch, fit, setup, m_share));
}

// One pass; the length of its step.
double GyroFreeFitter::Improve(GyroFreeFit& fit, const GyroFreeSetup& setup)
{
    GyroFreeMatrix normal = GyroFreeMatrix::Zero();
    Column6 right = Column6::Zero();
    fit.misfit = 0.0;
    fit.square.setZero();
    for (const LeanRow& row : m_rows) {
        normal += row.jacobian.transpose() * row.weight * row.jacobian;
        right -= row.jacobian.transpose() * row.weight * row.residual;
        fit.misfit += row.residual.dot(row.weight * row.residual);
        fit.square += row.residual.cwiseAbs2() / fit.epochs;
    }
    const Vector3d weight =
        Vector3d(setup.offsetSigma, setup.tiltSigma, setup.tiltSigma).cwiseAbs2().cwiseInverse();
    normal.diagonal().tail<3>() += weight;
    right.tail<3>() -= weight.cwiseProduct(Vector3d(fit.offset, fit.tilt.x(), fit.tilt.y()));
    const Eigen::LDLT<GyroFreeMatrix> solver(normal);
    const Column6 step = solver.solve(right);
    if (!step.allFinite()) return std::numeric_limits<double>::quiet_NaN();
    fit.tip += step.head<3>();
    fit.offset += step[3];
    fit.tilt += step.tail<2>();
    fit.cofactor = solver.solve(GyroFreeMatrix::Identity());
    return step.norm();
}

// Another length as one more unknown at the minimum, as in Alternatives.h.
Score GyroFreeFitter::LengthScore(const GyroFreeFit& fit) const
{
    double own = 0.0;
    double right = 0.0;
    Column6 mixed = Column6::Zero();
    for (const LeanRow& row : m_rows) {
        const Vector3d weighted = row.weight * row.pole;
        own += row.pole.dot(weighted);
        mixed += row.jacobian.transpose() * weighted;
        right -= weighted.dot(row.residual);
    }
    const double reduced = own - mixed.dot(fit.cofactor * mixed);
    Score score;
    score.sigma =
        reduced > 0.0 ? 1.0 / std::sqrt(reduced) : std::numeric_limits<double>::infinity();
    score.value = reduced > 0.0 ? right / reduced : 0.0;
    score.gain = score.value * right;
    return score;
}

// A step of the tip between two epochs, a second from the first one and from the last one at least.
// The residuals tell how far pitch, roll and heading can be believed from second to second.
void GyroFreeFitter::SetStep(GyroFreeFit& fit) const
{
    constexpr double kStatement = 2.0; // of the stated variances, in observations
    constexpr double kEdge = 1.0;      // [s]
    constexpr double kExcluded = 2.33; // 99 % [sigma]
    constexpr double kClear = 7.0;     // of a sudden one [sigma]
    const double first = m_rows.front().epoch->time + kEdge;
    const double last = m_rows.back().epoch->time - kEdge;
    const auto each = [&](auto take) {
        StepSum sum;
        for (std::size_t i = m_rows.size(); i-- > 1 && m_rows[i].epoch->time > first;) {
            sum.Add(m_rows[i]);
            if (m_rows[i].epoch->time <= last)
                take(m_rows[i].epoch->time, sum, sum.Covariance(fit.cofactor));
        }
    };
    double gain = 0.0;
    each([&](double, const StepSum& sum, const Matrix3d& covariance) {
        gain = std::max(gain, sum.right.dot(covariance * sum.right));
    });
    const double factor = PooledFactor(std::max(0.0, fit.misfit - gain),
                                       std::max(1.0, fit.freedom - 3.0), kStatement);
    each([&](double time, const StepSum& sum, const Matrix3d& covariance) {
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> axes;
        axes.computeDirect(covariance.topLeftCorner<2, 2>());
        const double step = (covariance * sum.right).head<2>().norm();
        const double bound = step + kExcluded * std::sqrt(factor * axes.eigenvalues()[1]);
        if (bound <= fit.stepBound) return;
        fit.step = step;
        fit.stepBound = bound;
        fit.stepAt = time;
    });
    fit.jump = LargestJump(m_rows, kClear);
}

GyroFreeFit GyroFreeFitter::Run(const Track& track, const GyroFreeSetup& setup)
{
    constexpr int kMostPasses = 10;
    constexpr double kSettled = 1e-7;
    GyroFreeFit fit;
    SetMotion(fit, track);
    if (fit.epochs < kFewestEpochs) return fit;
    const double span = track.Epochs().back().time - track.Epochs().front().time;
    m_share = std::min(1.0, (span + 1.0) / fit.epochs);
    for (int pass = 0; pass < kMostPasses && !fit.converged; ++pass) {
        SetRows(track, fit, setup);
        const double step = Improve(fit, setup);
        if (!std::isfinite(step)) return fit;
        fit.converged = step < kSettled;
    }
    fit.freedom = std::max(1.0, 3.0 * m_share * fit.epochs - 4.0);
    if (!fit.converged) return fit;
    fit.length = LengthScore(fit);
    SetStep(fit);
    return fit;
}

} // namespace tiltpole::field
