// SPDX-License-Identifier: MIT
//
// Antenna positions around one tip as read from a file, and the results of the two solutions.
#pragma once

#include "geometry/TiltPosition_Geometry.h"
#include "quality/TipEstimate.h"
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct AntennaRow
{
    std::string name;
    std::uint64_t line = 0;        // of the file
    xyhCoord antenna;              // [m]
    std::optional<double> incline; // [degrees]
    std::string refusal;           // why it was rejected; empty when it was accepted
};

struct SolveSetup
{
    std::string file;
    std::string columns;        // those whose names are not the keys: "N from Northing"
    double antennaHeight = 0.0; // [m]
    double cutoff = 45.0;       // [degrees]
    quality::AntennaErrors errors;
};

struct SolvedTip
{
    SolveSetup setup;
    std::vector<AntennaRow> rows;
    std::vector<std::size_t> taken; // positions in `rows`
    xyhCoord searched;
    TiltPoint_State state;
    quality::TipEstimate estimate;

    /// The row of a position that the estimate refers to.
    const AntennaRow& RowOf(std::size_t takenIndex) const { return rows[taken[takenIndex]]; }
    bool HasSearched() const
    {
        return state.nStatus != kTiltPointNoSphere && state.nStatus != kTiltPointTooFew;
    }
    bool HasEstimate() const { return estimate.verdict != quality::TipVerdict::NoSolution; }
};

/// Adds the rows to the solution as a host does, records which were rejected and why, and solves.
/// @param progress  called with the completed fraction of the search
SolvedTip SolveTip(const SolveSetup& setup, std::vector<AntennaRow> rows,
                   const std::function<void(double)>& progress);

} // namespace cli
