// SPDX-License-Identifier: MIT
//
// Which of the vector widths of Lanes.h this processor has, and the kernels compiled for it.
//
// A set of kernels is a struct of function pointers with
//
//     template <int Width> static const Kernels& Of();
//
// defined for width 2, and where kMostLanes says so for 4 and 8.
#pragma once

#include <algorithm>

namespace tiltpole::vector {

/// The widest vectors of the processors that this build is for.
#if defined(__x86_64__)
inline constexpr int kMostLanes = 8;
#else
inline constexpr int kMostLanes = 2;
#endif

/// Doubles in the widest vectors of this processor: 2, 4 (AVX2) or 8 (AVX-512F). Looked up on the
/// first call.
int LanesOfProcessor();

/// The kernels of the largest width up to `lanes` and up to Most.
template <class Kernels, int Most>
const Kernels& KernelsFor(int lanes)
{
    constexpr int kWidth = std::min(Most, kMostLanes);
    if constexpr (kWidth > 2) {
        if (lanes < kWidth) return KernelsFor<Kernels, kWidth / 2>(lanes);
    }
    return Kernels::template Of<kWidth>();
}

} // namespace tiltpole::vector
