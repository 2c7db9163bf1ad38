// SPDX-License-Identifier: MIT
//
// Built for any processor of the target.
#include "geometry/detail/SearchKernels.h"

#include <cmath>
#include <cstring>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tiltpole::geometry {
namespace {

#include "geometry/detail/Lanes.inc"

#include "geometry/detail/SearchKernels.inc"

} // namespace

const SearchKernels& PlainSearchKernels()
{
    static constexpr SearchKernels kernels = {ScanRow, JudgeStarts, SumDistances, SumResiduals};
    return kernels;
}

const SearchKernels& BestSearchKernels()
{
    const SearchKernels* const wide = WideSearchKernels();
    return wide ? *wide : PlainSearchKernels();
}

} // namespace tiltpole::geometry
