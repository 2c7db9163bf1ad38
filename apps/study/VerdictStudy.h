// SPDX-License-Identifier: MIT
//
// How well reports know what a calibration is worth, as text.
#pragma once

#include "apps/study/Trials.h"

#include <string>
#include <string_view>

namespace study {

/// Rank correlations: of the report's figures with the true error of the solver's result, and of
/// what is known of the joint fit with the joint fit's own error.
std::string Correlations(const Trials& trials);

/// True errors of what was called good, usable, poor; for both methods and both ways of computing
/// the true error.
std::string Acceptance(const Trials& trials);

/// What the verdict on the solver would be with other certainties, and without any.
std::string Certainties(const Trials& trials);

/// Heading of the lines of Closeness.
std::string ClosenessHead();

/// How the figure lies to the true error in one condition, and how much is wrongly called good.
std::string Closeness(std::string_view name, const Trials& trials);

} // namespace study
