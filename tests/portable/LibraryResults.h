// SPDX-License-Identifier: MIT
//
// What library_results prints, a source for each part.
#pragma once

namespace portable {

/// Calibration reports, joint fits, estimates of a tip, checks of parameter files.
void PrintQuality();

/// Attitudes, occupations, calibrations on the spot, disturbances of the field.
void PrintField();

/// The live pole: bytes in, epochs, poses, clocks, reports, sentences and records out.
void PrintLive();

} // namespace portable
