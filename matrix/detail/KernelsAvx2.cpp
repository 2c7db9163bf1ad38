// SPDX-License-Identifier: MIT
//
// Compiled for AVX2; called only on a processor that has it.
#include "matrix/detail/KernelBody.h"

namespace matrix = tiltpole::matrix;

const matrix::KernelSet matrix::kAvx2Kernels = matrix::kLaneKernels;
