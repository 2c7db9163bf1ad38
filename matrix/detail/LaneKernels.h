// SPDX-License-Identifier: MIT
//
// The kernels over vectors of Width doubles. Each width has a source file that instantiates it.
#pragma once

#include "matrix/detail/Elimination.h"
#include "matrix/detail/Kernels.h"
#include "matrix/detail/Scratch.h"
#include "vector/Lanes.h"

#include <utility>

namespace tiltpole::matrix {

// ---- product -----------------------------------------------------------------------------------

struct Product
{
    const double* a;
    const double* b;
    double* c;
    Index rows, inner, cols;
};

template <class F, int... I>
[[gnu::always_inline]] inline void UnrolledOver(std::integer_sequence<int, I...>,
                                                [[maybe_unused]] F f)
{
    (f.template operator()<I>(), ...);
}

// f<0>() ... f<Count - 1>(): an array whose every index is such a constant lives in registers from
// the start. The compiler unrolls a loop too late for that and stores each sum at every step.
template <int Count, class F>
[[gnu::always_inline]] inline void Unrolled(F f)
{
    UnrolledOver(std::make_integer_sequence<int, Count>(), f);
}

// A tile of Rows rows and Across vectors of the product, from (row, col) on; the last vector holds
// `lastLanes` columns. The sums stay in registers while k rises.
template <int Width, int Rows, int Across>
void MultiplyTile(const Product& p, Index row, Index col, Index lastLanes)
{
    using Lanes = vector::Lanes<Width>;
    constexpr int kLast = Across - 1;
    Lanes sum[Rows][Across];
    Unrolled<Rows>([&]<int r>() { Unrolled<Across>([&]<int v>() { sum[r][v] = 0.0; }); });
    const double* a = p.a + row * p.inner;
    const double* b = p.b + col;
    for (Index k = 0; k < p.inner; ++k, ++a, b += p.cols) {
        Lanes factor[Across];
        Unrolled<kLast>([&]<int v>() { factor[v] = Lanes::Load(b + v * Index{Width}); });
        factor[kLast] = Lanes::LoadPart(b + kLast * Index{Width}, lastLanes);
        Unrolled<Rows>([&]<int r>() {
            const Lanes x = a[r * p.inner];
            Unrolled<Across>([&]<int v>() { sum[r][v] = sum[r][v] + x * factor[v]; });
        });
    }
    double* c = p.c + row * p.cols + col;
    Unrolled<Rows>([&]<int r>() {
        Unrolled<kLast>([&]<int v>() { sum[r][v].Store(c + v * Index{Width}); });
        sum[r][kLast].StorePart(c + kLast * Index{Width}, lastLanes);
        c += p.cols;
    });
}

// All rows of the Across vectors of columns from `col` on.
template <int Width, int Across>
void MultiplyStrip(const Product& p, Index col, Index lastLanes)
{
    Index row = 0;
    for (; p.rows - row > 6; row += 4)
        MultiplyTile<Width, 4, Across>(p, row, col, lastLanes);
    switch (p.rows - row) {
    case 1:
        return MultiplyTile<Width, 1, Across>(p, row, col, lastLanes);
    case 2:
        return MultiplyTile<Width, 2, Across>(p, row, col, lastLanes);
    case 3:
        return MultiplyTile<Width, 3, Across>(p, row, col, lastLanes);
    case 4:
        return MultiplyTile<Width, 4, Across>(p, row, col, lastLanes);
    case 5:
        return MultiplyTile<Width, 5, Across>(p, row, col, lastLanes);
    case 6:
        return MultiplyTile<Width, 6, Across>(p, row, col, lastLanes);
    default:
        return;
    }
}

// A product of two N x N arrays, the size known to the compiler: every sum unrolled.
template <int Width, Index N>
[[gnu::flatten]] void MultiplyFixed(const double* a, const double* b, double* c)
{
    constexpr Index kAcross = Padding<Width>::RoundUp(N) / Width;
    constexpr int kRows = Width < 4 ? 2 : static_cast<int>(N); // as many as registers hold
    static_assert(N % kRows == 0);
    const Product product{a, b, c, N, N, N};
    for (Index row = 0; row < N; row += kRows)
        MultiplyTile<Width, kRows, kAcross>(product, row, 0, N - (kAcross - 1) * Width);
}

template <int Width>
void MultiplyLanes(const double* a, const double* b, double* c, int rows, int inner, int cols)
{
    if (rows == 6 && inner == 6 && cols == 6) return MultiplyFixed<Width, 6>(a, b, c);
    const Product product{a, b, c, rows, inner, cols};
    Index col = 0;
    for (; cols - col > Width; col += Index{2} * Width)
        MultiplyStrip<Width, 2>(product, col, Padding<Width>::LanesLeft(cols - col - Width));
    if (col < cols) MultiplyStrip<Width, 1>(product, col, Padding<Width>::LanesLeft(cols - col));
}

// ---- sums --------------------------------------------------------------------------------------

// out[i] = combine(a[i], b[i]); out may be one of the operands.
template <int Width, class Combine>
[[gnu::always_inline]] inline void CombineLanes(const double* a, const double* b, double* out,
                                                std::size_t count, Combine combine)
{
    using Lanes = vector::Lanes<Width>;
    const auto end = static_cast<Index>(count);
    Index i = 0;
    for (; end - i >= Width; i += Width)
        combine(Lanes::Load(a + i), Lanes::Load(b + i)).Store(out + i);
    if (i < end)
        combine(Lanes::LoadPart(a + i, end - i), Lanes::LoadPart(b + i, end - i))
            .StorePart(out + i, end - i);
}

template <int Width>
void AddLanes(const double* a, const double* b, double* out, std::size_t count)
{
    CombineLanes<Width>(a, b, out, count, [](auto x, auto y) { return x + y; });
}

template <int Width>
void SubtractLanes(const double* a, const double* b, double* out, std::size_t count)
{
    CombineLanes<Width>(a, b, out, count, [](auto x, auto y) { return x - y; });
}

// ---- inverse -----------------------------------------------------------------------------------

template <int Width, Index Fixed>
Outcome Eliminate(double* a, Index n, PivotFloor floor)
{
    using Work = Elimination<Width, Fixed>;
    constexpr Index kOnStack = Fixed == 0 ? 40 : Fixed;
    Scratch<double, Work::ElementsFor(kOnStack), Width> elements(Work::ElementsFor(n));
    Scratch<Index, Work::IndicesFor(kOnStack), Width> indices(Work::IndicesFor(n));
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

template <int Width>
Outcome InvertLanes(double* a, int n, PivotFloor floor)
{
    return n == 6 ? Eliminate<Width, 6>(a, 6, floor) : Eliminate<Width, 0>(a, n, floor);
}

// ---- Cholesky ----------------------------------------------------------------------------------

// Works on the transpose of l, whose rows are padded to whole vectors. k falls in every sum.
template <int Width>
Outcome FactorCholeskyLanes(const double* a, double* l, int n, PivotFloor floor)
{
    using Lanes = vector::Lanes<Width>;
    const Index stride = Padding<Width>::RoundUp(n);
    Scratch<double, 2304, Width> transpose(static_cast<std::size_t>(n * stride));
    double* const upper = transpose.Data();
    if (upper == nullptr) return Outcome::NoMemory;
    for (Index i = 0; i < n; ++i) {
        double* const row = upper + i * stride;
        double root = 0.0;
        for (Index j = i / Width * Width; j < n; j += Width) {
            Lanes left = Lanes::LoadPart(a + i * n + j, Padding<Width>::LanesLeft(n - j));
            for (Index k = i - 1; k >= 0; --k)
                left -= upper[k * stride + i] * Lanes::Load(upper + k * stride + j);
            if (j <= i) {
                left.Store(row + j);
                if (RefusesRoot(floor, row[i])) return Outcome::Refused;
                root = __builtin_sqrt(row[i]);
            }
            (left / root).Store(row + j);
        }
        row[i] = root;
        for (Index j = i; j < n; ++j)
            l[j * n + i] = row[j];
    }
    return Outcome::Done;
}

template <int Width>
const KernelSet& KernelSet::Of()
{
    static constexpr KernelSet kernels{MultiplyLanes<Width>, AddLanes<Width>, SubtractLanes<Width>,
                                       InvertLanes<Width>, FactorCholeskyLanes<Width>};
    return kernels;
}

} // namespace tiltpole::matrix
