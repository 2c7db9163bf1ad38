// SPDX-License-Identifier: MIT
//
// What a failed calibration leaves for the support staff.
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

namespace tiltpole::calibration {

/// Appends the column header and one numbered row per sample to a file of the application data
/// folder, which is made where it is missing. A file that cannot be opened is skipped.
void AppendErrorDump(const wchar_t* fileName,
                     const CArray<PoseSensorData, const PoseSensorData&>& samples);

} // namespace tiltpole::calibration
