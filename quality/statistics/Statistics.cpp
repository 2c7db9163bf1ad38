// SPDX-License-Identifier: MIT
#include "quality/statistics/Statistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tiltpole::quality {

double Median(std::vector<double> series)
{
    if (series.empty()) return 0.0;
    const auto middle = series.begin() + static_cast<std::ptrdiff_t>(series.size() / 2);
    std::nth_element(series.begin(), middle, series.end());
    return *middle;
}

double RobustSpread(std::vector<double> series)
{
    constexpr double kNormal = 1.4826; // 1 / Φ⁻¹(3/4)
    for (double& x : series)
        x = std::fabs(x);
    return kNormal * Median(std::move(series));
}

} // namespace tiltpole::quality
