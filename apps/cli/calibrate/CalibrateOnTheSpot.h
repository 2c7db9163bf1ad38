// SPDX-License-Identifier: MIT
//
// tiltpole calibrate --on-the-spot: from one log of a pole that is rocked and turned on its tip.
#pragma once

#include "apps/tables/ColumnNames.h"
#include <string>
#include <vector>

namespace cli {

struct SpotOptions
{
    std::string log;
    double poleLength = 0.0; // 0: not given [m]
    int sensorType = 1;
    tables::ColumnChoice columns;
    std::string out; // parameter file; empty: none
    bool json = false;
};

/// Calibrates, prints what was found, and writes parameter file, record and sidecar where it can be
/// used.
/// @return kDone, or kNegative where it cannot be used: nothing is written then
/// @throws InputError
int CalibrateOnTheSpot(const SpotOptions& options);

} // namespace cli
