// SPDX-License-Identifier: MIT
#include "apps/study/FaultStudy.h"

#include "apps/study/Trials.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace study {

namespace {

using quality::Verdict;

// One method: the result, and whether it gave one that is judged by the joint fit.
struct Method
{
    const char* name;
    Result Trial::*result;

    bool IsJudged(const Trial& t) const
    {
        const Result& r = t.*result;
        return t.jointFitted && r.finite && r.report.headingBound > 0.0;
    }

    bool Is(Verdict verdict, const Trial& t) const
    {
        return (result == &Trial::solver || t.jointFitted) && (t.*result).report.verdict == verdict
               && !(t.*result).report.weak;
    }
};

constexpr Method kMethods[] = {
    {"solver",    &Trial::solver},
    {"joint fit", &Trial::joint }
};

double Worse(const TrueError& error)
{
    return std::max(error.asUsed, error.trueTilt);
}

int Count(const Trials& trials, const Chosen& chosen)
{
    return static_cast<int>(std::count_if(trials.begin(), trials.end(), chosen));
}

// Called so, and of these truly above the limit: as used, against the true tilt.
std::string Counts(const Method& method, const Trials& trials, Verdict verdict, double limit)
{
    const auto called = [&](const Trial& t) { return method.Is(verdict, t); };
    const auto wrong = [&](double TrueError::*error) {
        return Count(trials, [&](const Trial& t) {
            return called(t) && !((t.*(method.result)).error.*error <= limit);
        });
    };
    return fmt::format("{:6}{:5}{:5}", Count(trials, called), wrong(&TrueError::asUsed),
                       wrong(&TrueError::trueTilt));
}

double StatedOf(const Method& method, const Trial& t)
{
    return (t.*(method.result)).report.headingBound;
}

// The usable bound speaks of headings as used, the good one of both truths.
double UsableBoundOf(const Method& method, const Trial& t)
{
    return (t.*(method.result)).report.headingUncertainty;
}

std::string Line(std::string_view name, const Trials& trials)
{
    std::string text = fmt::format("{:24}", name);
    for (const Method& method : kMethods) {
        const auto judged = [&](const Trial& t) { return method.IsJudged(t); };
        const Figure error = [&](const Trial& t) { return (t.*(method.result)).error.asUsed; };
        const Figure worse = [&](const Trial& t) { return Worse((t.*(method.result)).error); };
        const Figure bound = [&](const Trial& t) { return UsableBoundOf(method, t); };
        text += fmt::format(
            "{}{}{:6.2f}{:6.2f}{:6.2f}   ", Counts(method, trials, Verdict::Good, 1.0),
            Counts(method, trials, Verdict::Usable, 3.0), QuantileOf(trials, judged, error, 0.5),
            QuantileOf(trials, judged, worse, 0.5), RankCorrelation(trials, judged, bound, error));
    }
    return text + "\n";
}

std::string Correlation(const Method& method, const Trials& trials)
{
    const auto judged = [&](const Trial& t) { return method.IsJudged(t); };
    const auto error = [&](const Trial& t) -> const TrueError& {
        return (t.*(method.result)).error;
    };
    const auto correlation = [&](auto stated, const Figure& figure) {
        return RankCorrelation(
            trials, judged, [&](const Trial& t) { return stated(method, t); }, figure);
    };
    const Figure asUsed = [&](const Trial& t) { return error(t).asUsed; };
    const Figure trueTilt = [&](const Trial& t) { return error(t).trueTilt; };
    const Figure worse = [&](const Trial& t) { return Worse(error(t)); };
    return fmt::format("  {:10}{:8.3f}{:8.3f}{:8.3f}   {:8.3f}", method.name,
                       correlation(StatedOf, asUsed), correlation(StatedOf, trueTilt),
                       correlation(StatedOf, worse), correlation(UsableBoundOf, asUsed));
}

// What the stated bound could reach at best, were it the right standard deviation: errors drawn
// from it, RMS of so many independent parts.
double Attainable(const Method& method, const Trials& trials, int parts)
{
    const auto judged = [&](const Trial& t) { return method.IsJudged(t); };
    simulation::Generator random(1, simulation::Stream::Placement);
    const auto drawn = [&](const Trial& t) {
        double squares = 0.0;
        for (int i = 0; i < parts; ++i)
            squares += std::pow(random.Normal(), 2);
        return StatedOf(method, t) * std::sqrt(squares / parts);
    };
    return RankCorrelation(
        trials, judged, [&](const Trial& t) { return StatedOf(method, t); }, drawn);
}

// The solver is measured by its difference from the joint fit. That figure alone, and with the
// joint fit's own error taken off its square, as if its size, not its direction, were known.
std::string ByTheReference(const Trials& trials)
{
    const auto judged = [](const Trial& t) { return kMethods[0].IsJudged(t); };
    const Figure error = [](const Trial& t) { return t.solver.error.asUsed; };
    const Figure difference = [](const Trial& t) { return t.solver.report.headingError; };
    const Figure known = [&](const Trial& t) {
        const double joint = t.jointFull.asUsed;
        return std::sqrt(std::fabs(std::pow(difference(t), 2) - joint * joint));
    };
    const auto sound = [&](const Trial& t) {
        return judged(t) && t.jointFull.asUsed < t.solver.error.asUsed / 2.0;
    };
    return fmt::format("Solver, as used, of its difference from the joint fit:{:6.3f}; were the "
                       "size of the joint fit's\nerror known:{:6.3f}; where that is below half of "
                       "the solver's:{:6.3f} ({} of {})\n",
                       RankCorrelation(trials, judged, difference, error),
                       RankCorrelation(trials, judged, known, error),
                       RankCorrelation(trials, sound, difference, error), Count(trials, sound),
                       Count(trials, judged));
}

} // namespace

std::string FaultStudy(const Plan& plan)
{
    std::string text =
        "                        solver                                              joint fit\n"
        "                          good   >1   tt usable >3   tt     median   rank      good   >1  "
        " "
        "tt usable >3   tt     median   rank\n";
    const Trials all = SimulateAll(
        plan, [&text](std::string_view name, const Trials& trials) { text += Line(name, trials); });
    text += Line("all", all);
    text +=
        "Rank correlation with the true error, of the bound for good: as used, against the true "
        "tilt, the\nlarger of both; of the bound for usable: as used; of errors drawn from the "
        "bound for good, in 1, 2, 5 parts\n";
    for (const Method& method : kMethods) {
        text += Correlation(method, all);
        for (const int parts : {1, 2, 5})
            text += fmt::format("{:8.3f}", Attainable(method, all, parts));
        text += '\n';
    }
    return text + ByTheReference(all);
}

} // namespace study
