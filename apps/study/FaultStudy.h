// SPDX-License-Identifier: MIT
//
// What reports say of calibrations with faults in the field, and how often they are wrong.
#pragma once

#include "apps/study/Trials.h"

#include <string>

namespace study {

/// Simulates `runs` calibrations under each condition. As text, for the solver and the joint fit:
/// how many are called good and usable, how many of these are truly above 1 and 3 degrees, as used
/// and against the true tilt, and the rank correlation of what is stated with what is true.
std::string FaultStudy(const Plan& plan);

} // namespace study
