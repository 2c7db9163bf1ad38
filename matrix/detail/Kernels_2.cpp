// SPDX-License-Identifier: MIT
//
// Compiled for every processor.
#include "matrix/detail/LaneKernels.h"

template const tiltpole::matrix::KernelSet& tiltpole::matrix::KernelSet::Of<2>();
