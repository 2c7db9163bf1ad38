// SPDX-License-Identifier: MIT
//
// The numerical kernels behind both matrix classes, on plain row-major arrays.
//
// Every element is computed by the same sequence of rounded operations on every processor: vectors
// run across elements, never along a sum, and no product is fused with a sum. The widest vectors
// that the processor has are chosen once, at run time.
#pragma once

#include <cfloat>
#include <cstddef>

namespace tiltpole::matrix {

/// Which pivots an elimination or factorisation refuses.
enum class PivotFloor : int {
    SmallestNormal,   ///< magnitude (Cholesky: value) below the smallest normal double
    VisibleBesideOne, ///< pivot + 1.0 == 1.0; Cholesky: also what is not above 0
    None,             ///< no pivot at all; Cholesky: what is not above 0
};

enum class Outcome { Done, Refused, NoMemory };

/// c = a * b: rows x inner times inner x cols, each element summed from 0.0 over rising k. c is
/// neither a nor b.
void Multiply(const double* a, const double* b, double* c, int rows, int inner, int cols);

/// out[i] = a[i] + b[i] of `count` elements, or a[i] - b[i]; out may be a or b. For arrays of more than a
/// few elements: the loop is not inlined.
void Add(const double* a, const double* b, double* out, std::size_t count);
void Subtract(const double* a, const double* b, double* out, std::size_t count);

/// The transpose of the rows x cols array a. t is not a.
void Transpose(const double* a, double* t, int rows, int cols);

/// Replaces the n x n array a by its inverse: Gauss-Jordan elimination with full pivoting
/// (docs/formulas.md, "Full pivoting"). Refused: stops before the refused pivot, a stays partly
/// eliminated with rows and columns still swapped. NoMemory: a is unchanged.
Outcome Invert(double* a, int n, PivotFloor floor);

/// Writes the lower Cholesky factor of the n x n array a into l, which the caller has filled with
/// 0; reads row i of a from the diagonal on. Refused: the columns of l before the refused pivot
/// stand. l is not a.
Outcome FactorCholesky(const double* a, double* l, int n, PivotFloor floor);

/// The same kernels for one vector width.
struct KernelSet
{
    void (*multiply)(const double* a, const double* b, double* c, int rows, int inner, int cols);
    void (*add)(const double* a, const double* b, double* out, std::size_t count);
    void (*subtract)(const double* a, const double* b, double* out, std::size_t count);
    Outcome (*invert)(double* a, int n, PivotFloor floor);
    Outcome (*factorCholesky)(const double* a, double* l, int n, PivotFloor floor);

    /// Over vectors of Width doubles: 2, and 4 and 8 where vector/Dispatch.h has them.
    template <int Width>
    static const KernelSet& Of();
};

/// Whether `floor` refuses a pivot of this magnitude.
[[gnu::always_inline]] inline bool RefusesPivot(PivotFloor floor, double size)
{
    switch (floor) {
    case PivotFloor::SmallestNormal:
        return size < DBL_MIN;
    case PivotFloor::VisibleBesideOne:
        return size + 1.0 == 1.0;
    default:
        return false;
    }
}

/// Whether `floor` refuses x as the square of a diagonal element of a Cholesky factor.
[[gnu::always_inline]] inline bool RefusesRoot(PivotFloor floor, double x)
{
    if (floor == PivotFloor::SmallestNormal) return x < DBL_MIN;
    return !(x > 0.0) || (floor == PivotFloor::VisibleBesideOne && x + 1.0 == 1.0);
}

} // namespace tiltpole::matrix
