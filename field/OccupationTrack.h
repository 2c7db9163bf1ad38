// SPDX-License-Identifier: MIT
/// @file
/// What the tip of a live occupation was computed from, enough to compute it again
/// (field/job/Recompute.h).
#pragma once

#include "field/Bridge.h"

#include <memory>
#include <string>
#include <vector>

namespace field {

/// The epochs and poses of an occupation up to its last estimate, in the order in which it got
/// them.
struct OccupationTrack
{
    /// An epoch and the poses since the epoch before.
    struct Piece
    {
        std::vector<PoseSample> poses; ///< their moments set
        bool disturbed = false;        ///< whether the field was not believed while they came
        Epoch epoch;
        std::string leftOut; ///< why the epoch has no part; empty: it was given
    };
    /// The first one has no poses: the occupation begins with its epoch, whose antenna is the
    /// origin.
    std::vector<std::shared_ptr<const Piece>> pieces;
    double declination = 0.0; ///< [degrees]; NaN: the file holds the north
};

} // namespace field
