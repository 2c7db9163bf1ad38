// SPDX-License-Identifier: MIT
#pragma once

#include "field/Occupation.h"
#include "field/OccupationTrack.h"
#include "field/job/JobRecord.h"

#include <span>

namespace tiltpole::field {

/// An occupation as it is stored: what it was computed from, and what came of it.
struct SolvedOccupation
{
    const ::field::OccupationTrack& track;
    const ::field::OccupationEstimate& estimate; ///< with a tip
    ::field::Geodetic tip;
};

/// The point of an occupation with its epochs. `gate` names the occupation, not the notes of the
/// gate.
::field::JobRecord RowsOf(const SolvedOccupation& occupation, ::field::JobTime now);

} // namespace tiltpole::field
