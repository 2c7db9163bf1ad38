// SPDX-License-Identifier: MIT
/// @file
/// UTC as a job keeps it: 2026-11-22T13:07:58.200Z.
#pragma once

#include "field/job/JobRecords.h"
#include "framework/core/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace field {

/// Years 0 to 9999; the nearer end beyond them.
TILTPOLE_API std::string JobTimeText(JobTime time);

/// The same text, with 0 to 9 digits of the second's fraction, of which three count.
TILTPOLE_API std::optional<JobTime> JobTimeOf(std::string_view text);

} // namespace field
