// SPDX-License-Identifier: MIT
//
// Compiled for AVX2; called only on a processor that has it.
#include "geometry/detail/LaneSearch.h"

template const tiltpole::geometry::SearchKernels& tiltpole::geometry::SearchKernels::Of<4>();
