// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereFit.h"

#include "quality/calibration/SphereCovariance.h"
#include "quality/calibration/SphereSystem.h"
#include "quality/statistics/Statistics.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace tiltpole::quality {
namespace {

constexpr int kMostSteps = 80;      // Levenberg-Marquardt, weights renewed at each
constexpr double kSmallStep = 1e-7; // of unknowns near one: 1e-5 degrees of heading
constexpr double kDisturbed = 5.0;  // spreads beyond which a reading counts as disturbed

double CostOf(const Residuals& residuals, const Weighting& weighting, const Unknowns& p)
{
    double cost = 0.0;
    for (std::size_t turn = 0; turn < 2; ++turn) {
        for (std::size_t i = 0; i < residuals.turns[turn].size(); ++i) {
            const Residual& r = residuals.turns[turn][i];
            cost += weighting.turns[turn][i] * (r.sphere * r.sphere + r.elevation * r.elevation);
        }
    }
    return cost * weighting.scale + PriorCost(p);
}

// Share of the readings that are further off than noise explains.
double DisturbedShare(const Residuals& residuals, const Spread& spread)
{
    const auto isFar = [&spread](const Residual& r) {
        return std::fabs(r.sphere) > kDisturbed * spread.sphere
               || std::fabs(r.elevation) > kDisturbed * spread.elevation;
    };
    std::ptrdiff_t far = 0;
    std::size_t all = 0;
    for (const std::vector<Residual>& turn : residuals.turns) {
        far += std::count_if(turn.begin(), turn.end(), isFar);
        all += turn.size();
    }
    return static_cast<double>(far) / static_cast<double>(all);
}

struct Solution
{
    Unknowns p;
    Spread spread;
    double disturbed = 0.0;
    int steps = 0;
};

// From a coarse start, or with bad pitch and roll, a length of its own lets a turn shrink out of
// sight: the fit begins with one length for both, and keeps to it where that happens.
enum class Lengths { Alike, Own };

void HoldLength(Normal& normal, Unknowns& gradient)
{
    normal.row(kLength).setZero();
    normal.col(kLength).setZero();
    normal(kLength, kLength) = 1.0;
    gradient[kLength] = 0.0;
}

// Levenberg-Marquardt. The weights follow the solution: from a coarse start the spread is wide and
// every reading counts; near the end it is narrow and disturbed readings are left out.
Solution Minimized(const Scaled& data, Unknowns p, Lengths lengths)
{
    double damping = 1e-3;
    Residuals residuals = ResidualsOf(data, p);
    int step = 0;
    for (; step < kMostSteps && damping < 1e9; ++step) {
        const Weighting weighting = WeightingOf(residuals);
        System system = SystemOf(data, p, residuals, weighting);
        AddPrior(p, system);
        const double cost = CostOf(residuals, weighting, p);
        Normal damped = system.normal.selfadjointView<Eigen::Lower>();
        if (lengths == Lengths::Alike) HoldLength(damped, system.gradient);
        damped.diagonal() *= 1.0 + damping;
        const Unknowns change = damped.ldlt().solve(system.gradient);
        const Unknowns trial = p - change;
        Residuals trialResiduals = ResidualsOf(data, trial);
        if (CostOf(trialResiduals, weighting, trial) <= cost) {
            p = trial;
            residuals = std::move(trialResiduals);
            damping = std::max(damping * 0.1, 1e-9);
            if (change.norm() < kSmallStep) break;
        } else {
            damping *= 10.0;
        }
    }
    const Spread spread = SpreadOf(residuals);
    return {p, spread, DisturbedShare(residuals, spread), step};
}

// Where the iteration starts: an undistorted magnetometer whose offset is the middle of the extreme
// readings, or their mean.
enum class Start { Middle, Mean };

Unknowns StartOf(const Scaled& data, Start start)
{
    Unknowns p = Unknowns::Zero();
    p[0] = p[4] = p[8] = p[kLength] = 1.0;
    if (start == Start::Mean) {
        Eigen::Vector3d means[2];
        for (std::size_t turn = 0; turn < 2; ++turn) {
            means[turn].setZero();
            for (const Observation& o : data.turns[turn])
                means[turn] += o.reading;
            means[turn] /= static_cast<double>(data.turns[turn].size());
        }
        p[kOffset] = (means[0].x() + means[1].x()) / 2.0;
        p[kOffset + 1] = means[0].y();
        p[kOffset + 2] = means[1].z();
    }
    for (std::size_t turn = 0; turn < 2; ++turn) {
        std::vector<double> rises;
        for (const Observation& o : data.turns[turn]) {
            rises.push_back(Corrected(p, o.reading).dot(o.up));
        }
        p[ElevationOf(turn)] = Median(std::move(rises));
    }
    return p;
}

bool IsNearOwnAxes(const Unknowns& p)
{
    Eigen::Matrix3d m;
    m << p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8];
    return p.allFinite() && m.determinant() > 0.0 && m.diagonal().minCoeff() > 0.0
           && p[kLength] > 0.0;
}

// matrix = weights / scale,  offset = offsets + matrix·center
CorrectionCovariance InCounts(const Normal& covariance, const Scaled& data)
{
    Eigen::Matrix<double, 12, kUnknowns> slopes = Eigen::Matrix<double, 12, kUnknowns>::Identity();
    slopes.topLeftCorner<9, 9>() /= data.scale;
    for (Eigen::Index row = 0; row < 3; ++row)
        slopes.row(kOffset + row).segment<3>(3 * row) = data.center.transpose() / data.scale;
    return slopes * covariance * slopes.transpose();
}

SphereFit InCounts(const Scaled& data, const Solution& solution)
{
    SphereFit fit;
    const Unknowns& p = solution.p;
    fit.correction.matrix << p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8];
    fit.correction.matrix /= data.scale;
    fit.correction.offset = p.segment<3>(kOffset) + fit.correction.matrix * data.center;
    fit.elevationHorizontal = p[kElevation];
    fit.elevationVertical = p[kElevation + 1] / p[kLength];
    fit.lengthRatio = p[kLength];
    fit.sphereSpread = solution.spread.sphere;
    fit.elevationSpread = solution.spread.elevation;
    fit.disturbed = solution.disturbed;
    fit.steps = solution.steps;
    fit.covariance = InCounts(CovarianceOf(data, p), data);
    return fit;
}

} // namespace

bool SphereFit::Keeps(const Observation& o, TurnAxis axis) const
{
    const bool isVertical = axis == TurnAxis::Vertical;
    const double length = isVertical ? lengthRatio : 1.0;
    const double rise = length * (isVertical ? elevationVertical : elevationHorizontal);
    const Eigen::Vector3d c = correction(o.reading);
    return std::fabs(c.norm() - length) <= kDisturbed * sphereSpread
           && std::fabs(c.dot(o.up) - rise) <= kDisturbed * elevationSpread;
}

std::optional<SphereFit> FitSphere(const Turn& horizontal, const Turn& vertical)
{
    const std::optional<Scaled> data = ScaledTurns(horizontal, vertical);
    if (!data) return {};
    std::optional<Solution> best;
    for (const Start start : {Start::Middle, Start::Mean}) {
        const Solution alike = Minimized(*data, StartOf(*data, start), Lengths::Alike);
        if (!IsNearOwnAxes(alike.p)) continue;
        const Solution own = Minimized(*data, alike.p, Lengths::Own);
        const Solution& found = IsNearOwnAxes(own.p) ? own : alike;
        const auto misfit = [](const Solution& s) { return s.spread.sphere + s.spread.elevation; };
        if (!best || misfit(found) < misfit(*best)) best = found;
    }
    if (!best) return {};
    return InCounts(*data, *best);
}

} // namespace tiltpole::quality
