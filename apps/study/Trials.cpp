// SPDX-License-Identifier: MIT
#include "apps/study/Trials.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace study {

namespace {

std::vector<double> ValuesOf(const Trials& trials, const Chosen& chosen, const Figure& figure)
{
    std::vector<double> values;
    for (const Trial& t : trials)
        if (chosen(t)) values.push_back(figure(t));
    return values;
}

std::vector<double> Ranks(const std::vector<double>& values)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t i, std::size_t j) { return values[i] < values[j]; });
    std::vector<double> ranks(values.size());
    for (std::size_t place = 0; place < order.size(); ++place)
        ranks[order[place]] = static_cast<double>(place);
    return ranks;
}

} // namespace

Trials SimulateAll(const Plan& plan,
                   const std::function<void(std::string_view, const Trials&)>& report)
{
    Trials all;
    std::uint64_t next = plan.seed * 1000003;
    for (const Condition& condition : plan.conditions) {
        Trials trials;
        for (int i = 0; i < plan.runs; ++i) {
            simulation::Generator random(++next, simulation::Stream::Placement);
            Setting setting = Ordinary(random);
            condition.apply(setting, random);
            setting.faults.noGyros = plan.noGyros;
            trials.push_back(Simulate(setting, next));
        }
        report(condition.name, trials);
        all.insert(all.end(), trials.begin(), trials.end());
    }
    return all;
}

bool Comparable(const Trial& t)
{
    return t.solver.finite && t.answered && t.jointFitted && t.solver.report.agreement;
}

double RankCorrelation(const Trials& trials, const Chosen& chosen, const Figure& x, const Figure& y)
{
    const std::vector<double> rx = Ranks(ValuesOf(trials, chosen, x));
    const std::vector<double> ry = Ranks(ValuesOf(trials, chosen, y));
    const double middle = (static_cast<double>(rx.size()) - 1.0) / 2.0;
    double xy = 0.0;
    double xx = 0.0;
    for (std::size_t i = 0; i < rx.size(); ++i) {
        xy += (rx[i] - middle) * (ry[i] - middle);
        xx += (rx[i] - middle) * (rx[i] - middle);
    }
    return xx > 0.0 ? xy / xx : 0.0;
}

double RmsOf(const Trials& trials, const Chosen& chosen, const Figure& figure)
{
    const std::vector<double> values = ValuesOf(trials, chosen, figure);
    double squares = 0.0;
    for (const double v : values)
        squares += v * v;
    return values.empty() ? 0.0 : std::sqrt(squares / static_cast<double>(values.size()));
}

double QuantileOf(const Trials& trials, const Chosen& chosen, const Figure& figure, double share)
{
    std::vector<double> values = ValuesOf(trials, chosen, figure);
    if (values.empty()) return 0.0;
    const auto last = static_cast<double>(values.size() - 1);
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(std::floor(share * last + 0.5));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

double ShareOf(const Trials& trials, const Chosen& among, const Chosen& chosen)
{
    int n = 0;
    int hits = 0;
    for (const Trial& t : trials) {
        if (!among(t)) continue;
        ++n;
        if (chosen(t)) ++hits;
    }
    return n > 0 ? 100.0 * hits / n : 0.0;
}

} // namespace study
