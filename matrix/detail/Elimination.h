// SPDX-License-Identifier: MIT
//
// Gauss-Jordan elimination with full pivoting on rows padded with zeros to whole vectors; part of
// KernelBody.h.
//
// Rows and columns stay where they are stored; two permutations say which stored row and column
// stand at a place of the matrix after the exchanges so far. While the rows below a pivot are
// updated, the largest magnitudes among the columns still open are kept per row, so that the next
// pivot is found without another pass.
#pragma once

#include "matrix/detail/Kernels.h"
#include "matrix/detail/Lanes.h"

#include <cfloat>
#include <cstddef>

namespace tiltpole::matrix {
namespace {

constexpr Index RoundUpToLanes(Index n)
{
    return (n + kLanes - 1) / kLanes * kLanes;
}

inline Index LanesLeft(Index left)
{
    return left < kLanes ? left : kLanes;
}

inline void Exchange(Index& a, Index& b)
{
    const Index first = a;
    a = b;
    b = first;
}

inline bool Refuses(PivotFloor floor, double size)
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

// Fixed: the order where the compiler shall know it and unroll, 0 where only n tells.
template <Index Fixed>
class Elimination
{
public:
    static constexpr std::size_t ElementsFor(Index n)
    {
        return static_cast<std::size_t>((n + 1) * RoundUpToLanes(n) + n * kLanes);
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
        for (Index j = 0; j < Stride(); j += kLanes)
            Store(m_open + j, Fill(1.0));
        Lanes largest = Fill(0.0);
        for (Index i = 0; i < Order(); ++i) {
            Lanes rowLargest = Fill(0.0);
            for (Index j = 0; j < Order(); j += kLanes) {
                const Lanes part = LoadPart(a + i * Order() + j, LanesLeft(Order() - j));
                Store(Row(i) + j, part);
                rowLargest = Larger(Magnitude(part), rowLargest);
            }
            Store(m_rowLargest + i * kLanes, rowLargest);
            largest = Larger(rowLargest, largest);
        }
        FindPivot(0, largest);
    }

    // False where a pivot is refused; the elimination stops before it.
    bool Run(PivotFloor floor)
    {
        for (Index k = 0; k < Order(); ++k) {
            if (Refuses(floor, m_pivotSize)) return false;
            Exchange(m_rowAt[k], m_rowAt[m_rowSwap[k] = m_pivotRow]);
            Exchange(m_colAt[k], m_colAt[m_colSwap[k] = m_pivotCol]);
            const Pivot pivot = ScalePivotRow(m_rowAt[k], m_colAt[k]);
            for (Index i = 0; i < k; ++i)
                EliminateFrom<false>(m_rowAt[i], pivot);
            Lanes largest = Fill(0.0);
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
        OneLane lane; // of its column, in the vector from firstOfCol on
        const double* row;
        Index col; // as stored
        Index firstOfCol;
        double reciprocal;
    };

    Index Order() const { return Fixed > 0 ? Fixed : m_order; }
    Index Stride() const { return RoundUpToLanes(Order()); } // elements from row to row
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
        while (!HoldsEqual(Load(m_rowLargest + m_rowAt[m_pivotRow] * kLanes), m_pivotSize))
            ++m_pivotRow;
        const double* const row = Row(m_rowAt[m_pivotRow]);
        while (__builtin_fabs(row[m_colAt[m_pivotCol]]) != m_pivotSize)
            ++m_pivotCol;
    }

    Pivot ScalePivotRow(Index stored, Index col)
    {
        double* const row = Row(stored);
        const Index firstOfCol = col / kLanes * kLanes;
        const Pivot pivot{LaneAt(col - firstOfCol), row, col, firstOfCol, 1.0 / row[col]};
        const Lanes factor = Fill(pivot.reciprocal);
        for (Index j = 0; j < Stride(); j += kLanes) {
            const Lanes scaled = Load(row + j) * factor;
            Store(row + j, j == firstOfCol ? Put(scaled, pivot.lane, factor) : scaled);
        }
        m_open[col] = 0.0;
        return pivot;
    }

    // Subtracts the pivot row from a row; with Search, answers and keeps what is largest in it.
    template <bool Search>
    Lanes EliminateFrom(Index stored, const Pivot& pivot)
    {
        double* const row = Row(stored);
        const double inPivotColumn = row[pivot.col];
        const Lanes factor = Fill(inPivotColumn);
        const Lanes instead = Fill(-inPivotColumn * pivot.reciprocal);
        Lanes largest = Fill(0.0);
        for (Index j = 0; j < Stride(); j += kLanes) {
            Lanes left = Load(row + j) - factor * Load(pivot.row + j);
            if (j == pivot.firstOfCol) left = Put(left, pivot.lane, instead);
            Store(row + j, left);
            if constexpr (Search) largest = Larger(Magnitude(left) * Load(m_open + j), largest);
        }
        if constexpr (Search) Store(m_rowLargest + stored * kLanes, largest);
        return largest;
    }

    Index m_order;
    double* m_rows;       // n rows, as stored
    double* m_open;       // per stored column 1, or 0 once it has been a pivot's
    double* m_rowLargest; // kLanes magnitudes per stored row
    Index* m_rowAt;       // the stored row at a place
    Index* m_colAt;
    Index* m_rowSwap; // the place each step exchanged with its own
    Index* m_colSwap; // then room for two more permutations
    double m_pivotSize = 0.0;
    Index m_pivotRow = 0; // the place of the next pivot
    Index m_pivotCol = 0;
};

} // namespace
} // namespace tiltpole::matrix
