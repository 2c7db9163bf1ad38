// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereCovariance.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr int kBlocks = 24;              // of a turn: 15 degrees, in which readings err alike
constexpr double kPriorScatter = 0.25;   // of the variance that the prior allows: iron and mounting
                                         // turn a magnetometer half as much, by a degree or so
constexpr double kLeastCurvature = 0.25; // share of the weights

} // namespace

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

// C = N⁻¹·S·N⁻¹ with the second derivatives N of the cost and the scatter S of its gradient.
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

} // namespace tiltpole::quality
