// SPDX-License-Identifier: MIT
//
// Compiled for every processor.
#include "geometry/detail/LaneSearch.h"

template const tiltpole::geometry::SearchKernels& tiltpole::geometry::SearchKernels::Of<2>();
