// SPDX-License-Identifier: MIT
#include "field/occupation/LastingErrors.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kLasting = 3.0; // that errors are taken to last at least [s]

} // namespace

double KeptByMean(double span, double lasting)
{
    constexpr double kShort = 1e-3;
    const double x = span / lasting;
    return x < kShort ? 1.0 : 2.0 * (x - 1.0 + std::exp(-x)) / (x * x);
}

// On average a variance is what residuals about a mean show and the variance of that mean: what is
// missing of the stated one is in the mean. In plan the tip depends more on lean and heading, and
// the stated variance counts as the residuals scale it.
Eigen::Vector3d LastingVariance(const Fitter& fitter, const FitSetup& setup)
{
    const auto& rows = fitter.Rows();
    const double n = static_cast<double>(rows.size());
    double plan = 0.0; // stated variances
    double height = 0.0;
    double seen = 0.0;
    for (const EpochRow& row : rows) {
        const double byPlan = row.epoch->planSigma > 0.0 ? row.epoch->planSigma : setup.planSigma;
        const double byHeight =
            row.epoch->heightSigma > 0.0 ? row.epoch->heightSigma : setup.heightSigma;
        plan += byPlan * byPlan / n;
        height += byHeight * byHeight / n;
        seen += row.residual.z() * row.residual.z() / n;
    }
    const double kept = KeptByMean(rows.back().epoch->time - rows.front().epoch->time, kLasting);
    const double counted = setup.antennaFactor / (fitter.Share() * n);
    const double ofPlan = plan * std::max(0.0, setup.antennaFactor * kept - counted);
    const double ofHeight = std::max(height * (kept - counted), height - seen);
    return {ofPlan, ofPlan, std::max(0.0, ofHeight)};
}

} // namespace tiltpole::field
