// SPDX-License-Identifier: MIT
//
// Compiled for AVX-512F; called only on a processor that has it.
#include "matrix/detail/KernelBody.h"

namespace matrix = tiltpole::matrix;

const matrix::KernelSet matrix::kAvx512Kernels = matrix::kLaneKernels;
