// SPDX-License-Identifier: MIT
//
// What is said of an epoch: one line for the surveyor, one JSON object for programs.
#pragma once

#include "field/Bridge.h"
#include "field/Occupation.h"
#include <optional>
#include <string>

namespace live {

/// "13:07:58.0" from the hhmmss.ss of an epoch; as long a text of blanks where there is none.
std::string ClockText(const std::string& utc);

/// "13:07:58.0 STORE  lean 12.3 to 250  sd 12 9 15 mm (N E h)  fixed 20 sat age 1.0", or why not.
std::string StateLine(const field::Report& report);

/// The tip that the verdict is about: of the occupation where it alone may be stored, else of the
/// epoch.
/// @pre report.tip
field::Tip JudgedTip(const field::Report& report);

/// One line of JSON; docs/live.md lists its members.
std::string ReportJson(const field::Report& report);

/// The lines that a run ends with: what was read, what was left out.
std::string CountersText(const field::Counters& counters);

} // namespace live
