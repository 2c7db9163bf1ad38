// SPDX-License-Identifier: MIT
#pragma once

#include "field/Bridge.h"
#include "field/job/JobRecord.h"

#include <optional>
#include <span>
#include <vector>

namespace tiltpole::field {

/// A stored point of an occupation once more; as ::field::Recomputed. `error` names what the
/// occupation says where it is not to be stored.
::field::JobRecord RecomputedOccupation(const ::field::JobPoint& stored,
                                        std::span<const ::field::JobEpoch> epochs,
                                        const ::field::Setup& setup, double delayChange);

/// 0 for what no clock of a program shows.
::field::Instant InstantOf(double seconds);

/// What the lines of a stored epoch say, at its moment; none: they are unreadable.
std::optional<::field::Epoch> StoredEpoch(const ::field::JobEpoch& stored);

/// The poses of a stored epoch, at their moments.
std::vector<::field::PoseSample> StoredPoses(const ::field::JobEpoch& stored);

} // namespace tiltpole::field
