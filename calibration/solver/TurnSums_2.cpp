// SPDX-License-Identifier: MIT
//
// Compiled for every processor.
#include "calibration/solver/LaneTurnSums.h"

template const tiltpole::calibration::TurnSums& tiltpole::calibration::TurnSums::Of<2>();
