// SPDX-License-Identifier: MIT
//
// A recording through the engine again: no clock, and the same bytes each time.
#pragma once

#include "apps/cli/live/LiveOptions.h"
#include "field/Delay.h"
#include "field/Recording.h"
#include <functional>

namespace cli {

/// Reads a recording, record by record.
/// @param onRecord  gets the UTC of its start [s since 1970] and a record
/// @return the instant of the last record
/// @throws InputError with the line that is bad
field::Instant ReadRecording(const std::string& path,
                             const std::function<void(double, const field::Record&)>& onRecord);

int Replay(const LiveOptions& options);

} // namespace cli
