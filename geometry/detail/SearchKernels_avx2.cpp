// SPDX-License-Identifier: MIT
//
// Built for 256-bit vectors where the compiler has them, used where the processor has them too.
#include "geometry/detail/SearchKernels.h"

#include <cmath>
#include <cstring>
#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace tiltpole::geometry {

#if defined(__AVX2__)
namespace {

#include "geometry/detail/Lanes.inc"

#include "geometry/detail/SearchKernels.inc"

} // namespace

const SearchKernels* WideSearchKernels()
{
    static constexpr SearchKernels kernels = {ScanRow, JudgeStarts, SumDistances, SumResiduals};
    return __builtin_cpu_supports("avx2") ? &kernels : nullptr;
}
#else
const SearchKernels* WideSearchKernels()
{
    return nullptr;
}
#endif

} // namespace tiltpole::geometry
