// SPDX-License-Identifier: MIT
//
// Gauss-Jordan elimination with full pivoting on rows padded with zeros to whole vectors; part of
// LaneKernels.h.
//
// Rows and columns stay where they are stored; two permutations say which stored row and column
// stand at a place of the matrix after the exchanges so far. While the rows below a pivot are
// updated, the largest magnitudes among the columns still open are kept per row, so that the next
// pivot is found without another pass.
#pragma once

#include "matrix/detail/Kernels.h"
#include "vector/Lanes.h"

#include <cstddef>

namespace tiltpole::matrix {
using vector::Index;

// Order and padding of rows that are read in vectors of Width elements.
template <int Width>
struct Padding
{
    static constexpr Index RoundUp(Index n) { return (n + Width - 1) / Width * Width; }
    static constexpr Index LanesLeft(Index left) { return left < Width ? left : Width; }
};

// Fixed: the order where the compiler shall know it and unroll, 0 where it is known at run time.
template <int Width, Index Fixed>
class Elimination
{
    using Lanes = vector::Lanes<Width>;

public:
    static constexpr std::size_t ElementsFor(Index n)
    {
        return static_cast<std::size_t>((n + 1) * Padding<Width>::RoundUp(n) + n * Width);
    }
    static constexpr std::size_t IndicesFor(Index n) { return static_cast<std::size_t>(6 * n); }

    // `elements` and `indices` are as large as ElementsFor and IndicesFor say.
    Elimination(double* elements, Index* indices, Index n)
        : m_order(n), m_rows(elements), m_open(elements + n * Stride()),
          m_rowLargest(m_open + Stride()), m_rowAt(indices), m_colAt(indices + n),
          m_rowSwap(indices + 2 * n), m_colSwap(indices + 3 * n)
    {}

    // Takes over a and looks for the first pivot.
    void Read(const double* a)
    {
        for (Index i = 0; i < Order(); ++i)
            m_rowAt[i] = m_colAt[i] = i;
        for (Index j = 0; j < Stride(); j += Width)
            Lanes(1.0).Store(m_open + j);
        Lanes largest = 0.0;
        for (Index i = 0; i < Order(); ++i) {
            Lanes rowLargest = 0.0;
            for (Index j = 0; j < Order(); j += Width) {
                const Lanes part =
                    Lanes::LoadPart(a + i * Order() + j, Padding<Width>::LanesLeft(Order() - j));
                part.Store(Row(i) + j);
                rowLargest = Larger(Magnitude(part), rowLargest);
            }
            rowLargest.Store(m_rowLargest + i * Width);
            largest = Larger(rowLargest, largest);
        }
        FindPivot(0, largest);
    }

    // False where a pivot is refused; the elimination stops before it.
    bool Run(PivotFloor floor)
    {
        for (Index k = 0; k < Order(); ++k) {
            if (RefusesPivot(floor, m_pivotSize)) return false;
            Exchange(m_rowAt[k], m_rowAt[m_rowSwap[k] = m_pivotRow]);
            Exchange(m_colAt[k], m_colAt[m_colSwap[k] = m_pivotCol]);
            const Pivot pivot = ScalePivotRow(m_rowAt[k], m_colAt[k]);
            for (Index i = 0; i < k; ++i)
                EliminateFrom<false>(m_rowAt[i], pivot);
            Lanes largest = 0.0;
            for (Index i = k + 1; i < Order(); ++i)
                largest = Larger(EliminateFrom<true>(m_rowAt[i], pivot), largest);
            FindPivot(k + 1, largest);
        }
        return true;
    }

    // The matrix as it stands, rows and columns exchanged.
    void WriteWorkingCopy(double* a) const { Write(a, m_rowAt, m_colAt); }

    // Undoes the exchanges, the last first: rows as columns were exchanged, columns as rows were.
    void WriteInverse(double* a)
    {
        Index* const rowFrom = m_colSwap + Order();
        Index* const colFrom = rowFrom + Order();
        for (Index i = 0; i < Order(); ++i) {
            rowFrom[i] = m_rowAt[i];
            colFrom[i] = m_colAt[i];
        }
        for (Index k = Order() - 1; k >= 0; --k) {
            Exchange(rowFrom[k], rowFrom[m_colSwap[k]]);
            Exchange(colFrom[k], colFrom[m_rowSwap[k]]);
        }
        Write(a, rowFrom, colFrom);
    }

private:
    struct Pivot
    {
        typename Lanes::Lane lane; // of its column, in the vector from firstOfCol on
        const double* row;
        Index col; // as stored
        Index firstOfCol;
        double reciprocal;
    };

    static void Exchange(Index& a, Index& b)
    {
        const Index first = a;
        a = b;
        b = first;
    }

    Index Order() const { return Fixed > 0 ? Fixed : m_order; }
    Index Stride() const { return Padding<Width>::RoundUp(Order()); } // elements from row to row
    double* Row(Index stored) const { return m_rows + stored * Stride(); }

    void Write(double* a, const Index* rowFrom, const Index* colFrom) const
    {
        for (Index i = 0; i < Order(); ++i) {
            const double* const row = Row(rowFrom[i]);
            for (Index j = 0; j < Order(); ++j)
                *a++ = row[colFrom[j]];
        }
    }

    // The first element, row by row from (k, k) on, of the largest magnitude; (k, k) itself, with
    // magnitude 0, where no magnitude is above 0.
    void FindPivot(Index k, Lanes largest)
    {
        m_pivotRow = m_pivotCol = k;
        m_pivotSize = LargestOf(largest);
        if (m_pivotSize == 0.0) return;
        while (!HoldsEqual(Lanes::Load(m_rowLargest + m_rowAt[m_pivotRow] * Width), m_pivotSize))
            ++m_pivotRow;
        const double* const row = Row(m_rowAt[m_pivotRow]);
        while (__builtin_fabs(row[m_colAt[m_pivotCol]]) != m_pivotSize)
            ++m_pivotCol;
    }

    Pivot ScalePivotRow(Index stored, Index col)
    {
        double* const row = Row(stored);
        const Index firstOfCol = col / Width * Width;
        const Pivot pivot{Lanes::At(col - firstOfCol), row, col, firstOfCol, 1.0 / row[col]};
        const Lanes factor = pivot.reciprocal;
        for (Index j = 0; j < Stride(); j += Width) {
            const Lanes scaled = Lanes::Load(row + j) * factor;
            (j == firstOfCol ? Put(scaled, pivot.lane, factor) : scaled).Store(row + j);
        }
        m_open[col] = 0.0;
        return pivot;
    }

    // Subtracts the pivot row from a row; with Search, finds the largest element it leaves.
    template <bool Search>
    Lanes EliminateFrom(Index stored, const Pivot& pivot)
    {
        double* const row = Row(stored);
        const double inPivotColumn = row[pivot.col];
        const Lanes factor = inPivotColumn;
        const Lanes instead = -inPivotColumn * pivot.reciprocal;
        Lanes largest = 0.0;
        for (Index j = 0; j < Stride(); j += Width) {
            Lanes left = Lanes::Load(row + j) - factor * Lanes::Load(pivot.row + j);
            if (j == pivot.firstOfCol) left = Put(left, pivot.lane, instead);
            left.Store(row + j);
            if constexpr (Search)
                largest = Larger(Magnitude(left) * Lanes::Load(m_open + j), largest);
        }
        if constexpr (Search) largest.Store(m_rowLargest + stored * Width);
        return largest;
    }

    Index m_order;
    double* m_rows;       // n rows, as stored
    double* m_open;       // per stored column 1, or 0 once it has been a pivot's
    double* m_rowLargest; // Width magnitudes per stored row
    Index* m_rowAt;       // the stored row at a place
    Index* m_colAt;
    Index* m_rowSwap; // the place each step exchanged with its own
    Index* m_colSwap; // then room for two more permutations
    double m_pivotSize = 0.0;
    Index m_pivotRow = 0; // the place of the next pivot
    Index m_pivotCol = 0;
};

} // namespace tiltpole::matrix
