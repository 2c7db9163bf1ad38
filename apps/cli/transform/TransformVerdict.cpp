// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformVerdict.h"

#include "quality/TipEstimate.h"
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

static_assert(FitLimits{}.residual == quality::kTipTolerance);

bool Complies(const TransformFit& fit, const FitLimits& limits)
{
    return std::fabs(fit.ScaleExcess()) <= limits.scale && fit.LargestResidual() <= limits.residual;
}

// The fit with a reflection: to the same pairs with the sign of y reversed in the source.
TransformFit FitMirrored(std::vector<PairRow> rows)
{
    for (PairRow& row : rows)
        row.pair.ySource = -row.pair.ySource;
    return FitTransform(std::move(rows));
}

// A reflection that turns by this angle [degrees], as the mistake that causes it.
std::string MistakeOf(double rotation)
{
    constexpr double kNear = 5.0; // systems that a survey joins are seldom turned further
    const double degrees = rotation * 180.0 / tiltpole::survey::kPi;
    const auto isNear = [degrees](double angle) {
        return std::fabs(std::remainder(degrees - angle, 360.0)) <= kNear;
    };
    if (isNear(90.0)) return "x and y exchanged on one side";
    if (isNear(0.0)) return "the sign of y reversed on one side";
    if (isNear(180.0)) return "the sign of x reversed on one side";
    return "one side mirrored";
}

std::string MirrorReason(const TransformFit& fit, const TransformFit& mirrored)
{
    return fmt::format("the axes look exchanged or mirrored: with {} the scale is {:+.1f} ppm and "
                       "the rms {:.4f} m instead of {:.4f} m",
                       MistakeOf(mirrored.parameters.dRotate), mirrored.ScaleExcess(),
                       mirrored.Rms(), fit.Rms());
}

bool IsOutlier(const PairResult& result)
{
    return result.without && result.chance < kOutlierChance
           && std::hypot(result.without->missX, result.without->missY) > kLeastOutlier;
}

std::string WorstPairReason(const TransformFit& fit)
{
    const std::size_t worst = *fit.Worst();
    const PairResult& result = fit.results[worst];
    const std::string& name = fit.rows[worst].name;
    if (IsOutlier(result)) {
        return fmt::format("{} does not belong to the others, whose fit misses it by {:.4f} m "
                           "(--drop \"{}\" leaves it out)",
                           name, std::hypot(result.without->missX, result.without->missY), name);
    }
    return fit.rows.size() == 3
               ? "three pairs cannot tell which of them is wrong"
               : fmt::format("no single pair explains it; {} agrees least with the others", name);
}

std::vector<std::string> ReasonsAgainst(const TransformFit& fit, const TransformFit& mirrored,
                                        const FitLimits& limits)
{
    constexpr double kMuchBetter = 0.1; // of the rms
    const bool looksMirrored =
        fit.determinant < 0.0
        && (Complies(mirrored, limits) || mirrored.Rms() < kMuchBetter * fit.Rms());
    if (!Complies(fit, limits) && looksMirrored) return {MirrorReason(fit, mirrored)};

    std::vector<std::string> reasons;
    if (!(std::fabs(fit.ScaleExcess()) <= limits.scale)) {
        reasons.push_back(fmt::format("the scale differs from 1 by {:+.1f} ppm, more than {} ppm "
                                      "(--scale-limit)",
                                      fit.ScaleExcess(), limits.scale));
    }
    const bool isFar = !(fit.LargestResidual() <= limits.residual);
    if (isFar) {
        reasons.push_back(fmt::format("the largest residual is {:.4f} m, more than {} m "
                                      "(--residual-limit)",
                                      fit.LargestResidual(), limits.residual));
    }
    const auto worst = fit.Worst();
    if (worst && (isFar || IsOutlier(fit.results[*worst]))) {
        reasons.push_back(WorstPairReason(fit));
    }
    return reasons;
}

std::vector<std::string> NotCheckedBy(const TransformFit& fit, const TransformFit& mirrored,
                                      const FitLimits& limits)
{
    if (!fit.HasWithout()) {
        return {"two pairs leave no redundancy: a wrong pair, exchanged axes and the accuracy "
                "cannot be noticed, only the scale"};
    }
    std::vector<std::string> sentences;
    if (Complies(fit, limits) && Complies(mirrored, limits)) {
        sentences.emplace_back("the points lie almost on one line: exchanged or mirrored axes "
                               "cannot be noticed");
    }
    for (std::size_t k = 0; k < fit.rows.size(); ++k) {
        if (fit.results[k].without) continue;
        sentences.push_back(fmt::format("nothing controls {}: the other source points almost "
                                        "coincide",
                                        fit.rows[k].name));
    }
    return sentences;
}

} // namespace

bool MayBeUsed(FitVerdict verdict, bool acceptUnchecked)
{
    return verdict == FitVerdict::Accepted || (acceptUnchecked && verdict == FitVerdict::Unchecked);
}

const char* WordOf(FitVerdict verdict)
{
    switch (verdict) {
    case FitVerdict::Accepted:
        return "accepted";
    case FitVerdict::Unchecked:
        return "unchecked";
    case FitVerdict::Refused:
        return "refused";
    }
    return "";
}

FitJudgment JudgeFit(const TransformFit& fit, const FitLimits& limits)
{
    const TransformFit mirrored = FitMirrored(fit.rows);
    FitJudgment judgment;
    judgment.reasons = ReasonsAgainst(fit, mirrored, limits);
    judgment.notChecked = NotCheckedBy(fit, mirrored, limits);
    judgment.verdict = !judgment.reasons.empty()     ? FitVerdict::Refused
                       : judgment.notChecked.empty() ? FitVerdict::Accepted
                                                     : FitVerdict::Unchecked;
    return judgment;
}

} // namespace cli
