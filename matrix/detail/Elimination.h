// Gauss-Jordan elimination with full pivoting on rows padded with zeros to whole vectors; part of
// KernelBody.h.
//
// While the rows below a pivot are updated, the largest magnitudes among the columns still open are
// kept per row, so that the next pivot is found without another pass over the matrix.
#pragma once

#include "matrix/detail/Kernels.h"
#include "matrix/detail/Lanes.h"

#include <cfloat>
#include <cstddef>

namespace detail {
namespace {

inline Index RoundUpToLanes(Index n)
{
    return (n + kLanes - 1) / kLanes * kLanes;
}

inline void Exchange(double& a, double& b)
{
    const double first = a;
    a = b;
    b = first;
}

inline void Exchange(Index& a, Index& b)
{
    const Index first = a;
    a = b;
    b = first;
}

class Elimination
{
public:
    static std::size_t ElementsFor(Index n)
    {
        return static_cast<std::size_t>((n + 1) * RoundUpToLanes(n) + n * kLanes);
    }
    static std::size_t SwapsFor(Index n) { return static_cast<std::size_t>(4 * n); }

    // `elements` and `swaps` are as large as ElementsFor and SwapsFor say.
    Elimination(double* elements, Index* swaps, Index n)
        : m_n(n), m_stride(RoundUpToLanes(n)), m_rows(elements), m_open(elements + n * m_stride),
          m_rowLargest(m_open + m_stride), m_swaps(swaps)
    {}

    // Takes over a and looks for the first pivot.
    void Read(const double* a)
    {
        for (Index j = 0; j < m_stride; ++j)
            m_open[j] = j < m_n ? 1.0 : 0.0;
        Lanes largest = Fill(0.0);
        for (Index i = 0; i < m_n; ++i) {
            double* const row = Row(i);
            for (Index j = 0; j < m_n; ++j)
                row[j] = a[i * m_n + j];
            for (Index j = m_n; j < m_stride; ++j)
                row[j] = 0.0;
            Lanes rowLargest = Fill(0.0);
            for (Index j = 0; j < m_stride; j += kLanes)
                rowLargest = Larger(Magnitude(Load(row + j)), rowLargest);
            Store(m_rowLargest + i * kLanes, rowLargest);
            largest = Larger(rowLargest, largest);
        }
        FindPivot(0, largest);
    }

    // False where a pivot is refused; the elimination stops before it.
    bool Run(PivotFloor floor)
    {
        for (Index k = 0; k < m_n; ++k) {
            if (Refuses(floor)) return false;
            SwapIntoPlace(k);
            ScalePivotRow(k);
            for (Index i = 0; i < k; ++i)
                EliminateFrom<false>(i, k);
            Lanes largest = Fill(0.0);
            for (Index i = k + 1; i < m_n; ++i)
                largest = Larger(EliminateFrom<true>(i, k), largest);
            FindPivot(k + 1, largest);
        }
        return true;
    }

    void WriteWorkingCopy(double* a) const
    {
        for (Index i = 0; i < m_n; ++i)
            for (Index j = 0; j < m_n; ++j)
                a[i * m_n + j] = Row(i)[j];
    }

    // Undoes the swaps, the last first: rows as columns were swapped, columns as rows were.
    void WriteInverse(double* a) const
    {
        Index* const rowFrom = m_swaps + 2 * m_n;
        Index* const colFrom = rowFrom + m_n;
        for (Index i = 0; i < m_n; ++i)
            rowFrom[i] = colFrom[i] = i;
        for (Index k = m_n - 1; k >= 0; --k) {
            Exchange(rowFrom[k], rowFrom[m_swaps[2 * k + 1]]);
            Exchange(colFrom[k], colFrom[m_swaps[2 * k]]);
        }
        for (Index i = 0; i < m_n; ++i) {
            const double* const row = Row(rowFrom[i]);
            for (Index j = 0; j < m_n; ++j)
                a[i * m_n + j] = row[colFrom[j]];
        }
    }

private:
    double* Row(Index i) const { return m_rows + i * m_stride; }

    bool Refuses(PivotFloor floor) const
    {
        switch (floor) {
        case PivotFloor::SmallestNormal:
            return m_pivotSize < DBL_MIN;
        case PivotFloor::VisibleBesideOne:
            return m_pivotSize + 1.0 == 1.0;
        default:
            return false;
        }
    }

    // The first element, row by row from (k, k) on, of the largest magnitude; (k, k) itself, with
    // magnitude 0, where no magnitude is above 0.
    void FindPivot(Index k, Lanes largest)
    {
        m_pivotSize = 0.0;
        m_pivotRow = m_pivotCol = k;
        double lanes[kLanes];
        Store(lanes, largest);
        for (const double x : lanes)
            m_pivotSize = x > m_pivotSize ? x : m_pivotSize;
        if (m_pivotSize == 0.0) return;
        while (FirstEqual(Load(m_rowLargest + m_pivotRow * kLanes), m_pivotSize) < 0)
            ++m_pivotRow;
        const double* const row = Row(m_pivotRow);
        while (__builtin_fabs(row[m_pivotCol]) != m_pivotSize)
            ++m_pivotCol;
    }

    void SwapIntoPlace(Index k)
    {
        m_swaps[2 * k] = m_pivotRow;
        m_swaps[2 * k + 1] = m_pivotCol;
        if (m_pivotRow != k)
            for (Index j = 0; j < m_stride; j += kLanes) {
                const Lanes pivotRow = Load(Row(m_pivotRow) + j);
                Store(Row(m_pivotRow) + j, Load(Row(k) + j));
                Store(Row(k) + j, pivotRow);
            }
        if (m_pivotCol != k)
            for (Index i = 0; i < m_n; ++i)
                Exchange(Row(i)[k], Row(i)[m_pivotCol]);
    }

    void ScalePivotRow(Index k)
    {
        double* const row = Row(k);
        m_reciprocal = 1.0 / row[k];
        const Lanes factor = Fill(m_reciprocal);
        for (Index j = 0; j < m_stride; j += kLanes)
            Store(row + j, Load(row + j) * factor);
        row[k] = m_reciprocal;
        m_open[k] = 0.0;
    }

    // Subtracts the pivot row from row i; with Search, answers and keeps what is largest in it.
    template <bool Search>
    Lanes EliminateFrom(Index i, Index k)
    {
        double* const row = Row(i);
        const double* const pivotRow = Row(k);
        const double inPivotColumn = row[k];
        const Lanes factor = Fill(inPivotColumn);
        Lanes largest = Fill(0.0);
        for (Index j = 0; j < m_stride; j += kLanes) {
            const Lanes left = Load(row + j) - factor * Load(pivotRow + j);
            Store(row + j, left);
            if constexpr (Search) largest = Larger(Magnitude(left) * Load(m_open + j), largest);
        }
        row[k] = -inPivotColumn * m_reciprocal;
        if constexpr (Search) Store(m_rowLargest + i * kLanes, largest);
        return largest;
    }

    Index m_n;
    Index m_stride;       // elements from row to row
    double* m_rows;       // n rows
    double* m_open;       // per column 1, or 0 once it has been a pivot's (and behind the last)
    double* m_rowLargest; // kLanes magnitudes per row
    Index* m_swaps;       // row and column per step; then room for two permutations
    double m_pivotSize = 0.0;
    double m_reciprocal = 0.0;
    Index m_pivotRow = 0;
    Index m_pivotCol = 0;
};

} // namespace
} // namespace detail
