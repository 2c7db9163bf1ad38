// SPDX-License-Identifier: MIT
//
// Compiled for AVX-512F; called only on a processor that has it.
#include "matrix/detail/LaneKernels.h"

template const tiltpole::matrix::KernelSet& tiltpole::matrix::KernelSet::Of<8>();
