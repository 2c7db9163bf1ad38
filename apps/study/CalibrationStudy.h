// SPDX-License-Identifier: MIT
//
// How well calibrations come out under every condition, and how well their report knows it.
#pragma once

#include "apps/study/Trials.h"

#include <string>

namespace study {

/// Simulates `runs` calibrations under each condition and tells, as text:
///   - per condition: true heading error of solver and joint fit, shares of the verdicts, and how
///     the verdict's figure lies to the true error
///   - over all: rank correlation of each figure with the true error, how often the verdicts
///     accept wrongly, and what other limits would do
std::string CalibrationStudy(const Plan& plan);

} // namespace study
