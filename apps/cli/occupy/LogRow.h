// SPDX-License-Identifier: MIT
#pragma once

#include "field/Occupation.h"
#include <optional>

namespace cli {

/// What a row of the log of occupied points gives.
struct LogRow
{
    field::InertialSample sample;
    PoseSensorData pose;
    std::optional<field::AntennaEpoch> epoch;
    bool repeatsEpoch = false; // it has the position of the row before, which counts once
};

} // namespace cli
