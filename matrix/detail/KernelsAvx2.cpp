// Compiled for AVX2; called only on a processor that has it.
#include "matrix/detail/KernelBody.h"

const detail::KernelSet detail::kAvx2Kernels = detail::kLaneKernels;
