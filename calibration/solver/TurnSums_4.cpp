// SPDX-License-Identifier: MIT
//
// Compiled for AVX2; called only on a processor that has it.
#include "calibration/solver/LaneTurnSums.h"

template const tiltpole::calibration::TurnSums& tiltpole::calibration::TurnSums::Of<4>();
