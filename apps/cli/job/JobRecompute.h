// SPDX-License-Identifier: MIT
//
// The points of a job once more, with another pole length, delay or calibration.
#pragma once

#include "apps/cli/job/JobPoints.h"
#include "field/Bridge.h"
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct RecomputeOptions
{
    std::string job;
    std::string points; // names, ranges or "all"
    std::optional<double> pole;
    std::string delay;  // SECONDS or SECONDS,SD; empty: as stored
    std::string config; // parameter file; empty: as stored
    bool dryRun = false;
};

/// A point that was computed again.
struct RecomputedPoint
{
    NamedPoint before;
    field::JobPoint after;
    std::vector<field::JobEpoch> epochs;
};

/// A setup as it was stored.
/// @throws InputError when its calibration cannot be read
field::Setup SetupOf(const field::JobSetup& stored);

/// @return the exit code
/// @throws InputError
int RunRecompute(const RecomputeOptions& options);

} // namespace cli
