// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereFit.h"

#include "quality/calibration/SphereSystem.h"
#include "quality/statistics/Statistics.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace tiltpole::quality {
namespace {

constexpr int kMostSteps = 80;           // Levenberg-Marquardt, weights renewed at each
constexpr double kSmallStep = 1e-7;      // of unknowns near one: 1e-5 degrees of heading
constexpr double kDisturbed = 5.0;       // spreads beyond which a reading counts as disturbed
constexpr int kBlocks = 24;              // of a turn: 15 degrees, within which readings err alike
constexpr double kPriorScatter = 0.25;   // of the variance that the prior allows: irons and mounts
                                         // turn a magnetometer half as much, by a degree or so
constexpr double kLeastCurvature = 0.25; // share of the weights; 0.7 where errors are normal

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

// Share of the readings that are further off than noise takes them.
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

// Levenberg-Marquardt; the weights follow the solution, so that a wide first spread of a coarse
// start takes every reading in and a narrow last one leaves the spoilt ones out.
Solution Minimised(const Scaled& data, Unknowns p)
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

// Two starts: an undistorted magnetometer, centred by the extremes of the turns, and one whose
// offset is the mean of the readings instead.
Unknowns StartOf(const Scaled& data, int which)
{
    Unknowns p = Unknowns::Zero();
    p[0] = p[4] = p[8] = 1.0;
    if (which == 1) {
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
    return p.allFinite() && m.determinant() > 0.0 && m.diagonal().minCoeff() > 0.0;
}

// Sum over blocks of readings of the squared gradient that each block adds: what errors that
// neighbours share do to the solution. Scaled up as the unknowns fit a part of them.
Normal ScatterOfBlocks(const Scaled& data, const Unknowns& p, const Residuals& residuals,
                       const Weighting& weighting)
{
    Normal scatter = Normal::Zero();
    double blocks = 0.0;
    for (std::size_t turn = 0; turn < 2; ++turn) {
        const Turn& readings = data.turns[turn];
        const std::size_t count = std::min<std::size_t>(kBlocks, readings.size());
        std::size_t i = 0;
        for (std::size_t block = 1; block <= count; ++block) {
            Unknowns sum = Unknowns::Zero();
            for (; i < block * readings.size() / count; ++i) {
                const ResidualSlopes slopes = SlopesOf(readings[i], turn, p);
                const Residual& residual = residuals.turns[turn][i];
                sum += weighting.turns[turn][i]
                       * (residual.sphere * slopes.sphere + residual.elevation * slopes.elevation);
            }
            scatter += weighting.scale * weighting.scale * sum * sum.transpose();
        }
        blocks += static_cast<double>(count);
    }
    return scatter * (blocks / (blocks - kUnknowns));
}

// A share falls as its reading is moved away, which makes the cost flatter than its weights: by
// this factor, the mean of d(share·residual)/d(residual) over that of the shares.
double CurvatureOf(const Weighting& weighting)
{
    double slopes = 0.0;
    double shares = 0.0;
    for (const std::vector<double>& turn : weighting.turns) {
        for (const double share : turn) {
            slopes += share * (2.0 * std::sqrt(share) - 1.0);
            shares += share;
        }
    }
    return std::max(slopes / shares, kLeastCurvature);
}

// Covariance of the unknowns, by the spread that the blocks of readings show among themselves.
Normal CovarianceOf(const Scaled& data, const Unknowns& p)
{
    const Residuals residuals = ResidualsOf(data, p);
    const Weighting weighting = WeightingOf(residuals);
    System prior;
    AddPrior(p, prior);
    System all = SystemOf(data, p, residuals, weighting);
    all.normal = CurvatureOf(weighting) * all.normal + prior.normal;

    const Normal known = prior.normal.selfadjointView<Eigen::Lower>();
    const Normal scatter = ScatterOfBlocks(data, p, residuals, weighting) + kPriorScatter * known;
    const Normal normal = all.normal.selfadjointView<Eigen::Lower>();
    const Normal inverse = normal.ldlt().solve(Normal::Identity());
    return inverse * scatter * inverse;
}

// matrix = weights / scale,  offset = offsets + matrix·centre
CorrectionCovariance InCounts(const Normal& covariance, const Scaled& data)
{
    Eigen::Matrix<double, 12, kUnknowns> slopes = Eigen::Matrix<double, 12, kUnknowns>::Identity();
    slopes.topLeftCorner<9, 9>() /= data.scale;
    for (Eigen::Index row = 0; row < 3; ++row)
        slopes.row(kOffset + row).segment<3>(3 * row) = data.centre.transpose() / data.scale;
    return slopes * covariance * slopes.transpose();
}

SphereFit InCounts(const Scaled& data, const Solution& solution)
{
    SphereFit fit;
    const Unknowns& p = solution.p;
    fit.correction.matrix << p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8];
    fit.correction.matrix /= data.scale;
    fit.correction.offset = p.segment<3>(kOffset) + fit.correction.matrix * data.centre;
    fit.elevationHorizontal = p[kElevation];
    fit.elevationVertical = p[kElevation + 1];
    fit.sphereSpread = solution.spread.sphere;
    fit.elevationSpread = solution.spread.elevation;
    fit.disturbed = solution.disturbed;
    fit.steps = solution.steps;
    fit.covariance = InCounts(CovarianceOf(data, p), data);
    return fit;
}

} // namespace

std::optional<SphereFit> FitSphere(const Turn& horizontal, const Turn& vertical)
{
    const std::optional<Scaled> data = ScaledTurns(horizontal, vertical);
    if (!data) return {};
    std::optional<Solution> best;
    for (const int start : {0, 1}) {
        const Solution found = Minimised(*data, StartOf(*data, start));
        if (!IsNearOwnAxes(found.p)) continue;
        const auto misfit = [](const Solution& s) { return s.spread.sphere + s.spread.elevation; };
        if (!best || misfit(found) < misfit(*best)) best = found;
    }
    if (!best) return {};
    return InCounts(*data, *best);
}

} // namespace tiltpole::quality
