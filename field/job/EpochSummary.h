// SPDX-License-Identifier: MIT
//
// What the epochs of a point say together.
#pragma once

#include "field/Bridge.h"
#include "field/job/JobRecords.h"

#include <vector>

namespace tiltpole::field {

/// Sets time, heights, quality, station and age of corrections of a point.
/// @param point  its tip set
/// @param used   epochs of one quality and one station; at least one
/// @param now    of the host's clock: gives the date where the receiver sends none
void Summarize(::field::JobPoint& point, const std::vector<const ::field::Epoch*>& used,
               ::field::JobTime now);

/// Of Epoch::moment [s].
double SecondsOf(::field::Instant instant);

} // namespace tiltpole::field
