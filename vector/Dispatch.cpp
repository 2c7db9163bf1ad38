// SPDX-License-Identifier: MIT
#include "vector/Dispatch.h"

namespace tiltpole::vector {

namespace {

int WidestOfProcessor()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512f") != 0) return 8;
    if (__builtin_cpu_supports("avx2") != 0) return 4;
#endif
    return 2;
}

} // namespace

int LanesOfProcessor()
{
    static const int lanes = WidestOfProcessor();
    return lanes;
}

} // namespace tiltpole::vector
