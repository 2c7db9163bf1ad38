// SPDX-License-Identifier: MIT
//
// Whether a calibration on the spot can be used, why not, and what it is worth to an occupation.
#pragma once

#include "field/SpotCalibration.h"
#include "field/spot/Motion.h"

#include <cstddef>
#include <vector>

namespace tiltpole::field {

inline constexpr std::size_t kMostSpotReadings = 30000;
inline constexpr std::size_t kMostSpotEpochs = 3000;

/// What was counted while samples and epochs came in.
struct SpotCounts
{
    int late = 0; // not later than the one before
    int notFinite = 0;
    bool tooMany = false;
};

/// Sets the reason and returns true where the samples themselves are at fault or too few.
bool RefusesInput(::field::SpotResult& result, const std::vector<SpotReading>& readings,
                  const SpotCounts& counts);

/// Sets the reason of a result whose values are set.
void Judge(::field::SpotResult& result, const MotionFit& motion, double poleLength);

/// `setup` with the values of a usable result as priors.
::field::OccupationSetup PriorsBy(const ::field::OccupationSetup& setup,
                                  const ::field::SpotResult& result);

} // namespace tiltpole::field
