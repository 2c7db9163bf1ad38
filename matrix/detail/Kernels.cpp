// SPDX-License-Identifier: MIT
#include "matrix/detail/Kernels.h"

#include "vector/Dispatch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tiltpole::matrix {

namespace {

const KernelSet& ProcessorKernels()
{
    static const KernelSet& chosen = vector::KernelsFor<KernelSet, 8>(vector::LanesOfProcessor());
    return chosen;
}

template <int N>
void ExchangeRows(double* a, int i, int j)
{
    if (i == j) return;
    for (int c = 0; c < N; ++c)
        std::swap(a[i * N + c], a[j * N + c]);
}

template <int N>
void ExchangeColumns(double* a, int i, int j)
{
    if (i == j) return;
    for (int r = 0; r < N; ++r)
        std::swap(a[r * N + i], a[r * N + j]);
}

// A product whose size the compiler knows: unrolled, the sums of a row in registers.
template <int N>
void MultiplySquare(const double* a, const double* b, double* c)
{
    for (int i = 0; i < N; ++i) {
        double sum[N] = {};
        for (int k = 0; k < N; ++k)
            for (int j = 0; j < N; ++j)
                sum[j] += a[i * N + k] * b[k * N + j];
        for (int j = 0; j < N; ++j)
            c[i * N + j] = sum[j];
    }
}

// The elimination of Elimination.h where a vector would be mostly padding: unrolled, rows and
// columns exchanged in place.
template <int N>
Outcome InvertSmall(double* a, PivotFloor floor)
{
    int rowSwap[N];
    int colSwap[N];
    for (int k = 0; k < N; ++k) {
        int p = k;
        int q = k;
        double size = 0.0;
        for (int i = k; i < N; ++i)
            for (int j = k; j < N; ++j)
                if (std::fabs(a[i * N + j]) > size) {
                    size = std::fabs(a[i * N + j]);
                    p = i;
                    q = j;
                }
        if (RefusesPivot(floor, size)) return Outcome::Refused;
        rowSwap[k] = p;
        colSwap[k] = q;
        ExchangeRows<N>(a, k, p);
        ExchangeColumns<N>(a, k, q);
        const double reciprocal = a[k * N + k] = 1.0 / a[k * N + k];
        for (int j = 0; j < N; ++j)
            if (j != k) a[k * N + j] *= reciprocal;
        for (int i = 0; i < N; ++i) {
            if (i == k) continue;
            const double x = a[i * N + k];
            for (int j = 0; j < N; ++j)
                if (j != k) a[i * N + j] -= x * a[k * N + j];
            a[i * N + k] = -x * reciprocal;
        }
    }
    for (int k = N - 1; k >= 0; --k) {
        ExchangeRows<N>(a, k, colSwap[k]);
        ExchangeColumns<N>(a, k, rowSwap[k]);
    }
    return Outcome::Done;
}

// The factorisation of LaneKernels.h, unrolled.
template <int N>
Outcome FactorSmall(const double* a, double* l, PivotFloor floor)
{
    for (int i = 0; i < N; ++i) {
        double root = 0.0;
        for (int j = i; j < N; ++j) {
            double left = a[i * N + j];
            for (int k = i - 1; k >= 0; --k)
                left -= l[i * N + k] * l[j * N + k];
            if (j > i) {
                l[j * N + i] = left / root;
                continue;
            }
            if (RefusesRoot(floor, left)) return Outcome::Refused;
            root = l[i * N + i] = std::sqrt(left);
        }
    }
    return Outcome::Done;
}

// All elements of a column are loaded first: the compiler cannot know that a store leaves the rest
// alone.
template <int Rows>
void TransposeRows(const double* from, double* to, std::ptrdiff_t rows, std::ptrdiff_t cols)
{
    for (std::ptrdiff_t c = 0; c < cols; ++c, ++from, to += rows) {
        double x[Rows];
        for (int r = 0; r < Rows; ++r)
            x[r] = from[r * cols];
        std::copy_n(x, Rows, to);
    }
}

// Measured: the factorisation waits for roots and quotients, whose latency grows with the width of
// a vector, more than it gains from width.
const KernelSet& CholeskyKernels(int n)
{
    constexpr int kNarrowUpTo = 16;
    static const KernelSet& wide = vector::KernelsFor<KernelSet, 4>(vector::LanesOfProcessor());
    return n <= kNarrowUpTo ? KernelSet::Of<2>() : wide;
}

} // namespace

void Multiply(const double* a, const double* b, double* c, int rows, int inner, int cols)
{
    switch (rows == inner && inner == cols ? rows : 0) {
    case 2:
        return MultiplySquare<2>(a, b, c);
    case 3:
        return MultiplySquare<3>(a, b, c);
    case 4:
        return MultiplySquare<4>(a, b, c);
    case 5:
        return MultiplySquare<5>(a, b, c);
    default:
        return ProcessorKernels().multiply(a, b, c, rows, inner, cols);
    }
}

void Add(const double* a, const double* b, double* out, std::size_t count)
{
    ProcessorKernels().add(a, b, out, count);
}

void Subtract(const double* a, const double* b, double* out, std::size_t count)
{
    ProcessorKernels().subtract(a, b, out, count);
}

// Four rows at a time, so that elements are stored side by side.
void Transpose(const double* a, double* t, int rows, int cols)
{
    constexpr std::ptrdiff_t kTogether = 4;
    std::ptrdiff_t r = 0;
    for (; rows - r >= kTogether; r += kTogether)
        TransposeRows<kTogether>(a + std::ptrdiff_t{cols} * r, t + r, rows, cols);
    switch (rows - r) {
    case 3:
        return TransposeRows<3>(a + std::ptrdiff_t{cols} * r, t + r, rows, cols);
    case 2:
        return TransposeRows<2>(a + std::ptrdiff_t{cols} * r, t + r, rows, cols);
    case 1:
        return TransposeRows<1>(a + std::ptrdiff_t{cols} * r, t + r, rows, cols);
    default:
        return;
    }
}

Outcome Invert(double* a, int n, PivotFloor floor)
{
    switch (n) {
    case 1:
        return InvertSmall<1>(a, floor);
    case 2:
        return InvertSmall<2>(a, floor);
    case 3:
        return InvertSmall<3>(a, floor);
    default:
        return ProcessorKernels().invert(a, n, floor);
    }
}

Outcome FactorCholesky(const double* a, double* l, int n, PivotFloor floor)
{
    switch (n) {
    case 1:
        return FactorSmall<1>(a, l, floor);
    case 2:
        return FactorSmall<2>(a, l, floor);
    case 3:
        return FactorSmall<3>(a, l, floor);
    case 4:
        return FactorSmall<4>(a, l, floor);
    case 5:
        return FactorSmall<5>(a, l, floor);
    case 6:
        return FactorSmall<6>(a, l, floor);
    default:
        return CholeskyKernels(n).factorCholesky(a, l, n, floor);
    }
}

} // namespace tiltpole::matrix
