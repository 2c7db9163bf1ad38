// SPDX-License-Identifier: MIT
//
// The kernels, written once over Lanes.h; each source file that includes this compiles them for its
// own vector width.
//
// Everything here and everything called from here has internal linkage (no standard algorithm is
// used), so that the linker cannot take code made for one processor where another runs.
#pragma once

#include "matrix/detail/Elimination.h"
#include "matrix/detail/Kernels.h"
#include "matrix/detail/Lanes.h"
#include "matrix/detail/Scratch.h"

#include <cfloat>

namespace tiltpole::matrix {
namespace {

// ---- product -----------------------------------------------------------------------------------

struct Product
{
    const double* a;
    const double* b;
    double* c;
    Index rows, inner, cols;
};

// A tile of Rows rows and Across vectors of the product, from (row, col) on; the last vector holds
// `lastLanes` columns. The sums stay in registers while k rises.
template <int Rows, int Across>
void MultiplyTile(const Product& p, Index row, Index col, Index lastLanes)
{
    Lanes sum[Rows][Across];
    for (auto& rowSum : sum)
        for (Lanes& s : rowSum)
            s = Fill(0.0);
    const double* a = p.a + row * p.inner;
    const double* b = p.b + col;
    for (Index k = 0; k < p.inner; ++k, b += p.cols) {
        Lanes factor[Across];
        for (int v = 0; v < Across - 1; ++v)
            factor[v] = Load(b + v * kLanes);
        factor[Across - 1] = LoadPart(b + (Across - 1) * kLanes, lastLanes);
        for (int r = 0; r < Rows; ++r) {
            const Lanes x = Fill(a[r * p.inner + k]);
            for (int v = 0; v < Across; ++v)
                sum[r][v] = sum[r][v] + x * factor[v];
        }
    }
    for (int r = 0; r < Rows; ++r) {
        double* c = p.c + (row + r) * p.cols + col;
        for (int v = 0; v < Across - 1; ++v)
            Store(c + v * kLanes, sum[r][v]);
        StorePart(c + (Across - 1) * kLanes, sum[r][Across - 1], lastLanes);
    }
}

// All rows of the Across vectors of columns from `col` on.
template <int Across>
void MultiplyStrip(const Product& p, Index col, Index lastLanes)
{
    Index row = 0;
    for (; p.rows - row > 6; row += 4)
        MultiplyTile<4, Across>(p, row, col, lastLanes);
    switch (p.rows - row) {
    case 1:
        return MultiplyTile<1, Across>(p, row, col, lastLanes);
    case 2:
        return MultiplyTile<2, Across>(p, row, col, lastLanes);
    case 3:
        return MultiplyTile<3, Across>(p, row, col, lastLanes);
    case 4:
        return MultiplyTile<4, Across>(p, row, col, lastLanes);
    case 5:
        return MultiplyTile<5, Across>(p, row, col, lastLanes);
    case 6:
        return MultiplyTile<6, Across>(p, row, col, lastLanes);
    default:
        return;
    }
}

// A product of two N x N arrays, the size known to the compiler: every sum unrolled.
template <Index N>
void MultiplyFixed(const double* a, const double* b, double* c)
{
    constexpr Index kAcross = RoundUpToLanes(N) / kLanes;
    constexpr int kRows = kLanes < 4 ? 2 : static_cast<int>(N); // as many as registers hold
    static_assert(N % kRows == 0);
    const Product product{a, b, c, N, N, N};
    for (Index row = 0; row < N; row += kRows)
        MultiplyTile<kRows, kAcross>(product, row, 0, N - (kAcross - 1) * kLanes);
}

inline void MultiplyLanes(const double* a, const double* b, double* c, int rows, int inner,
                          int cols)
{
    if (rows == 6 && inner == 6 && cols == 6) return MultiplyFixed<6>(a, b, c);
    const Product product{a, b, c, rows, inner, cols};
    Index col = 0;
    for (; cols - col > kLanes; col += 2 * kLanes)
        MultiplyStrip<2>(product, col, LanesLeft(cols - col - kLanes));
    if (col < cols) MultiplyStrip<1>(product, col, LanesLeft(cols - col));
}

// ---- inverse -----------------------------------------------------------------------------------

template <Index Fixed>
Outcome Eliminate(double* a, Index n, PivotFloor floor)
{
    using Work = Elimination<Fixed>;
    constexpr Index kOnStack = Fixed == 0 ? 40 : Fixed;
    Scratch<double, Work::ElementsFor(kOnStack)> elements(Work::ElementsFor(n));
    Scratch<Index, Work::IndicesFor(kOnStack)> indices(Work::IndicesFor(n));
    if (elements.Data() == nullptr || indices.Data() == nullptr) return Outcome::NoMemory;
    Work elimination(elements.Data(), indices.Data(), n);
    elimination.Read(a);
    if (!elimination.Run(floor)) {
        elimination.WriteWorkingCopy(a);
        return Outcome::Refused;
    }
    elimination.WriteInverse(a);
    return Outcome::Done;
}

inline Outcome InvertLanes(double* a, int n, PivotFloor floor)
{
    return n == 6 ? Eliminate<6>(a, 6, floor) : Eliminate<0>(a, n, floor);
}

// ---- Cholesky ----------------------------------------------------------------------------------

inline bool RefusesRoot(PivotFloor floor, double x)
{
    if (floor == PivotFloor::SmallestNormal) return x < DBL_MIN;
    return !(x > 0.0) || (floor == PivotFloor::VisibleBesideOne && x + 1.0 == 1.0);
}

// Works on the transpose of l, whose rows are padded to whole vectors. k falls in every sum.
inline Outcome FactorCholeskyLanes(const double* a, double* l, int n, PivotFloor floor)
{
    const Index stride = RoundUpToLanes(n);
    Scratch<double, 2304> transpose(static_cast<std::size_t>(n * stride));
    double* const upper = transpose.Data();
    if (upper == nullptr) return Outcome::NoMemory;
    for (Index i = 0; i < n; ++i) {
        double* const row = upper + i * stride;
        double root = 0.0;
        for (Index j = i / kLanes * kLanes; j < n; j += kLanes) {
            Lanes left = LoadPart(a + i * n + j, LanesLeft(n - j));
            for (Index k = i - 1; k >= 0; --k)
                left = left - Fill(upper[k * stride + i]) * Load(upper + k * stride + j);
            if (j <= i) {
                Store(row + j, left);
                if (RefusesRoot(floor, row[i])) return Outcome::Refused;
                root = __builtin_sqrt(row[i]);
            }
            Store(row + j, left / Fill(root));
        }
        row[i] = root;
        for (Index j = i; j < n; ++j)
            l[j * n + i] = row[j];
    }
    return Outcome::Done;
}

inline constexpr KernelSet kLaneKernels{MultiplyLanes, InvertLanes, FactorCholeskyLanes};

} // namespace
} // namespace tiltpole::matrix
