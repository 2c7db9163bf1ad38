// Compiled for AVX-512F; called only on a processor that has it.
#include "matrix/detail/KernelBody.h"

const detail::KernelSet detail::kAvx512Kernels = detail::kLaneKernels;
