// SPDX-License-Identifier: MIT
//
// Whether a fit of tiltpole transform is worth using. Least squares fits anything: exchanged axes,
// a wrong pair and another unit come out as a scale and residuals, without an error.
#pragma once

#include "apps/cli/transform/TransformFit.h"
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct FitLimits
{
    /// Difference of the scale from 1 [ppm]. A plane projection used for surveys changes lengths by
    /// at most 400 ppm (UTM at its central meridian), a height of 3 km by 470 ppm.
    double scale = 1000.0;
    /// Largest residual of a pair [m]: what a tip may be uncertain by to be stored.
    double residual = 0.05;
};

/// A pair is named as wrong when chance puts one so far off in fewer fits than this ...
inline constexpr double kOutlierChance = 0.001;
/// ... and the others miss it by more than this [m], which no satellite receiver can tell from
/// zero.
inline constexpr double kLeastOutlier = 0.005;

enum class FitVerdict {
    Accepted,
    Unchecked, ///< nothing is known to be wrong, but an error could not have been noticed
    Refused
};

struct FitJudgment
{
    FitVerdict verdict = FitVerdict::Accepted;
    std::vector<std::string> reasons;    // against the fit, the most likely cause first
    std::vector<std::string> notChecked; // what the pairs cannot show
};

/// Whether parameters may be written: those of an accepted fit, and those of an unchecked one where
/// the operator accepts that.
bool MayBeUsed(FitVerdict verdict, bool acceptUnchecked);

/// "accepted", "unchecked", "refused".
const char* WordOf(FitVerdict verdict);

FitJudgment JudgeFit(const TransformFit& fit, const FitLimits& limits);

} // namespace cli
