// SPDX-License-Identifier: MIT
//
// Samples on their way through the stages of a filter.
#pragma once

#include "calibration/filter/SampleArray.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace tiltpole::calibration {

/// A sample and what the stages need of it. The samples of a record are scattered in memory: each
/// is fetched once, and the stages work on these copies.
struct Candidate
{
    PoseSensorData* sample; // null for a null entry, whose place counts
    double azimuth;         // of the sample [degrees]; NaN for a null entry
    double distance;        // from the center [counts]; infinite far from the plane of the turn
    std::uint32_t place;    // before the sort
    std::int32_t turnFlag;  // of the sample; 1 for a null entry
};

using Candidates = std::span<Candidate>;

/// The entries of an array, with azimuth and turning direction.
inline std::vector<Candidate> CandidatesOf(const SampleArray& samples)
{
    std::vector<Candidate> candidates;
    candidates.reserve(static_cast<std::size_t>(CountOf(samples)));
    for (PoseSensorData* sample : EntriesOf(samples)) {
        const auto place = static_cast<std::uint32_t>(candidates.size());
        if (sample != nullptr)
            candidates.push_back({sample, sample->dAzimuth, 0.0, place, sample->GetTurnFlag()});
        else
            candidates.push_back(
                {nullptr, std::numeric_limits<double>::quiet_NaN(), 0.0, place, 1});
    }
    return candidates;
}

} // namespace tiltpole::calibration
