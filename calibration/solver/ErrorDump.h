// SPDX-License-Identifier: MIT
//
// The samples of a failed calibration, saved for the support staff.
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

namespace tiltpole::calibration {

/// Appends the column header and one numbered row per sample to a file of the application data
/// folder, which is created where it is missing. A file that cannot be opened is skipped; short
/// memory ends the dump.
void AppendErrorDump(const wchar_t* fileName,
                     const CArray<PoseSensorData, const PoseSensorData&>& samples);

} // namespace tiltpole::calibration
