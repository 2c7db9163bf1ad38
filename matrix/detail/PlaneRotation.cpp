// SPDX-License-Identifier: MIT
#include "matrix/detail/PlaneRotation.h"

#include <cmath>
#include <cstddef>

namespace tiltpole::matrix {

namespace {

// Element x of line p and y of line q, rotated.
void Rotate(double& x, double& y, PlaneRotation j)
{
    const double before = x;
    x = before * j.cosine + y * j.sine;
    y = before * -j.sine + y * j.cosine;
}

} // namespace

PlaneRotation ZeroingRotation(double pp, double qq, double pq)
{
    const double theta = (pp - qq) / pq / 2.0;
    const double size = 1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta));
    const double t = theta < 0.0 ? -size : size;
    const double cosine = 1.0 / std::sqrt(1.0 + t * t);
    return {cosine, t * cosine};
}

void RotateRows(double* m, int n, int p, int q, PlaneRotation j)
{
    double* const rowP = m + static_cast<std::ptrdiff_t>(p) * n;
    double* const rowQ = m + static_cast<std::ptrdiff_t>(q) * n;
    for (int i = 0; i < n; ++i)
        Rotate(rowP[i], rowQ[i], j);
}

void RotateColumns(double* m, int n, int p, int q, PlaneRotation j)
{
    for (int i = 0; i < n; ++i, m += n)
        Rotate(m[p], m[q], j);
}

} // namespace tiltpole::matrix
