// SPDX-License-Identifier: MIT
//
// Headings of B against those of A over a turn.
#pragma once

#include "quality/CalibrationReport.h"

#include <optional>
#include <vector>

namespace tiltpole::quality {

/// @param a, b  headings of the same samples, B's axes opposed to those of A [degrees]
/// @return nothing without headings, or where one is not a finite number
std::optional<::quality::HeadingAgreement> AgreementOf(const std::vector<double>& a,
                                                       const std::vector<double>& b);

} // namespace tiltpole::quality
