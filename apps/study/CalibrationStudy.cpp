// SPDX-License-Identifier: MIT
#include "apps/study/CalibrationStudy.h"

#include "apps/study/Trials.h"
#include "apps/study/VerdictStudy.h"
#include <cmath>
#include <fmt/format.h>

namespace study {

namespace {

using quality::Verdict;

double SolverError(const Trial& t)
{
    return t.solver.error.asUsed;
}

Chosen Is(Verdict verdict)
{
    return [verdict](const Trial& t) { return t.solver.report.verdict == verdict; };
}

std::string ConditionHead()
{
    return "                       joint     solver       joint eight    full\n"
           "condition                  %     RMS median     RMS median    RMS    good usab. unch. "
           "poor  ref.  weak  below 1, above 3\n";
}

std::string ConditionLine(std::string_view name, const Trials& trials)
{
    const Chosen all = [](const Trial&) { return true; };
    const Figure joint = [](const Trial& t) { return t.joint.error.asUsed; };
    return fmt::format(
        "{:24}{:6.1f}{:8.2f}{:7.2f}{:8.2f}{:7.2f}{:8.2f}{:8.0f}{:6.0f}{:6.0f}{:6.0f}{:6.0f}{:6.0f}"
        "{:8.0f}{:9.0f}\n",
        name, ShareOf(trials, all, Comparable), RmsOf(trials, Comparable, SolverError),
        QuantileOf(trials, Comparable, SolverError, 0.5), RmsOf(trials, Comparable, joint),
        QuantileOf(trials, Comparable, joint, 0.5),
        RmsOf(trials, Comparable, [](const Trial& t) { return t.jointFull.asUsed; }),
        ShareOf(trials, all, Is(Verdict::Good)), ShareOf(trials, all, Is(Verdict::Usable)),
        ShareOf(trials, all, Is(Verdict::Unchecked)), ShareOf(trials, all, Is(Verdict::Poor)),
        ShareOf(trials, all, Is(Verdict::Refused)),
        ShareOf(trials, all, [](const Trial& t) { return t.solver.report.weak; }),
        ShareOf(trials, all, [](const Trial& t) { return SolverError(t) < 1.0; }),
        ShareOf(trials, all, [](const Trial& t) { return !(SolverError(t) <= 3.0); }));
}

// Why the joint fit refuses turns of less than 270 degrees.
std::string Refusals(const Trials& trials)
{
    const auto refused = [](const Trial& t) {
        const quality::JointFitOutcome why = t.solver.report.jointFit;
        return (why == quality::JointFitOutcome::HorizontalIncomplete
                || why == quality::JointFitOutcome::VerticalIncomplete)
               && std::isfinite(t.jointUnasked) && t.solver.finite;
    };
    const Figure unasked = [](const Trial& t) { return t.jointUnasked; };
    const auto above = [](double limit) {
        return [limit](const Trial& t) { return t.jointUnasked > limit; };
    };
    return fmt::format(
        "Turns of less than 270 degrees, error of the joint fit, were it made\n"
        "  RMS {:.1f}, median {:.1f} degrees; above 10 degrees {:.1f} %, above 30 {:.1f} %; "
        "solver RMS {:.1f}\n",
        RmsOf(trials, refused, unasked), QuantileOf(trials, refused, unasked, 0.5),
        ShareOf(trials, refused, above(10.0)), ShareOf(trials, refused, above(30.0)),
        RmsOf(trials, refused, SolverError));
}

} // namespace

std::string CalibrationStudy(const Plan& plan)
{
    std::string text = ConditionHead();
    std::string closeness = ClosenessHead();
    const Trials all = SimulateAll(plan, [&](std::string_view name, const Trials& trials) {
        text += ConditionLine(name, trials);
        closeness += Closeness(name, trials);
    });
    text += ConditionLine("all", all);
    closeness += Closeness("all", all);
    return fmt::format("{}\n{}\n{}\n{}\n{}\n{}", text, closeness, Correlations(all),
                       Acceptance(all), Certainties(all), Refusals(all));
}

} // namespace study
