// SPDX-License-Identifier: MIT
//
// Ascending azimuth, in the order that an exchange sort leaves.
#pragma once

#include "calibration/filter/Candidate.h"

namespace tiltpole::calibration {

/// Orders `samples` by ascending azimuth and rewrites the turning direction of every sample but
/// the first against the entry just before it (unchanged where that entry is null).
///
/// The order is that of the exchange sort "for i, for j > i: swap when entry j is less than entry
/// i": equal azimuths come out rotated as that sort rotates them, null entries and azimuths that
/// are NaN keep their places. Derivation: docs/formulas.md, "Exchange sort".
/// @throws std::bad_alloc, with nothing changed
void SortByAzimuth(SampleArray& samples);
void SortByAzimuth(Candidates candidates);

} // namespace tiltpole::calibration
