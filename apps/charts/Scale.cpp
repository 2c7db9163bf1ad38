// SPDX-License-Identifier: MIT
#include "apps/charts/Scale.h"

#include <cmath>
#include <fmt/format.h>

namespace charts {

namespace {

constexpr std::size_t kFewest = 3;
// Bounds for ranges too narrow for the numbers in them.
constexpr int kMostTicks = 100;
constexpr int kMostRefinements = 8;

// Steps are these times a power of ten, the finer ones first.
constexpr double kFactors[] = {1.0, 2.0, 4.0, 5.0};

// The smallest of 1, 2, 5 times a power of ten that is not below `least`.
double RoundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1.0 - 1e-9)) return factor * power;
    }
    return 10.0 * power;
}

// The largest step below this one.
double FinerStep(double step)
{
    const double power = std::pow(10.0, std::floor(std::log10(step) + 1e-6));
    double finer = 0.5 * power;
    for (const double factor : kFactors)
        if (factor * power < step * (1.0 - 1e-6)) finer = factor * power;
    return finer;
}

std::vector<double> Multiples(const Range& range, double step)
{
    std::vector<double> ticks;
    const double slack = 1e-9 * range.Width();
    const double first = std::ceil((range.low - slack) / step);
    for (int i = 0; i < kMostTicks; ++i) {
        const double tick = (first + i) * step;
        if (!(tick <= range.high + slack)) break;
        ticks.push_back(tick);
    }
    return ticks;
}

} // namespace

std::vector<double> Ticks(const Range& range, int most)
{
    double step = RoundStep(range.Width() / (most - 1));
    std::vector<double> ticks = Multiples(range, step);
    for (int tries = 0; tries < kMostRefinements && ticks.size() < kFewest; ++tries) {
        step = FinerStep(step);
        ticks = Multiples(range, step);
    }
    return ticks;
}

std::vector<std::string> TickTexts(const std::vector<double>& ticks)
{
    int decimals = 0;
    if (ticks.size() > 1) {
        const double step = ticks[1] - ticks[0];
        decimals = static_cast<int>(std::fmax(0.0, std::ceil(-std::log10(step) - 1e-6)));
    }
    std::vector<std::string> texts;
    for (const double tick : ticks) {
        const bool below = tick < 0.0 && std::fabs(tick) > 0.5 * std::pow(10.0, -decimals);
        texts.push_back(fmt::format("{}{:.{}f}", below ? "\u2212" : "", std::fabs(tick), decimals));
    }
    return texts;
}

Range Padded(const Range& range, double share)
{
    const double width = range.Width();
    if (!std::isfinite(width)) return {-0.5, 0.5};
    if (!(width > 0.0)) return {range.low - 0.5, range.low + 0.5};
    return {range.low - share * width, range.high + share * width};
}

Range Widened(const Range& range, double width)
{
    const double more = std::fmax(0.0, width - range.Width());
    return {range.low - more / 2.0, range.high + more / 2.0};
}

} // namespace charts
