// SPDX-License-Identifier: MIT
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"

namespace cli {

/// Takes over what the calibration on the spot in `setup.spot` found: corrections and heading bias
/// of the magnetometers, and the priors of the occupation. A delay that `setup` has stays instead
/// of the found one.
void UseSpotCalibration(OccupySetup& setup);

} // namespace cli
