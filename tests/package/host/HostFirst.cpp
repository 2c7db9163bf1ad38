// SPDX-License-Identifier: MIT
// The host's names come before every header of the library.
#include "HostDetail.h"

#include "EveryHeader.h"

namespace detail {

void Multiply(const double*, const double*, double* c, int rows, int, int cols)
{
    for (int i = 0; i < rows * cols; ++i)
        c[i] = -1.0;
}

void Transpose(const double*, double* t, int rows, int cols)
{
    for (int i = 0; i < rows * cols; ++i)
        t[i] = -1.0;
}

Outcome Invert(double* a, int n, PivotFloor)
{
    for (int i = 0; i < n * n; ++i)
        a[i] = -1.0;
    return Outcome::Done;
}

Outcome FactorCholesky(const double*, double* l, int n, PivotFloor)
{
    for (int i = 0; i < n * n; ++i)
        l[i] = -1.0;
    return Outcome::Done;
}

} // namespace detail
