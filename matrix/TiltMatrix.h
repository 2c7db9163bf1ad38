// SPDX-License-Identifier: MIT
/// @class CTiltMatrix
/// The small dense matrix of the multi-point solution.
///
///     elements   row-major, unsigned sizes and indices from 0; reads are not checked
///     validity   IsValid() is 1 while the storage is allocated or the last operator on the object
///                succeeded. A binary operator that fails sets it to 0 on its left operand and
///                returns a copy of the right one, not a zero matrix; short of memory it returns 0 x 0
///     cursors    the operations count with members of the object, reading ones too, so one object
///                is never used by two operations at once; it may be both operands of an operator
///     rounding   as CSZMatrix: sums in the documented order, no fused operations
///
///     CTiltMatrix A(2, 2);
///     A.SetData(0, 0, 2.0);
///     A.SetData(1, 1, 4.0);
///     const CTiltMatrix inverse = ~A;
///     if (A.IsValid() == 0) return; // singular
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "matrix/ElementStore.h"

#include <cstddef>

namespace tiltpole::matrix {
enum class PivotFloor : int;
}

class TILTPOLE_API CTiltMatrix
{
public:
    /// 0 x 0, not valid.
    CTiltMatrix() noexcept = default;

    /// n x 1, or r x c, zero-filled. A size of 0, or memory that cannot be had, gives 0 x 0, not
    /// valid.
    CTiltMatrix(unsigned n) noexcept : CTiltMatrix(n, 1) {}
    CTiltMatrix(unsigned r, unsigned c) noexcept;

    /// The elements of `other`; valid when it has any.
    CTiltMatrix(const CTiltMatrix& other) noexcept;

    /// What a copy would hold; `other` is left 0 x 0, not valid.
    CTiltMatrix(CTiltMatrix&& other) noexcept : m_nValid(other.HasElements() ? 1 : 0)
    {
        TakeFrom(other);
    }

    ~CTiltMatrix() = default;

    unsigned GetRow() const { return m_nRows; }
    unsigned GetCol() const { return m_nCols; }
    int IsValid() const { return m_nValid; }

    /// Element (r, c), or (r, 0). The caller keeps the indices inside the matrix.
    double GetData(unsigned r, unsigned c) const { return m_Data.Data()[At(r, c)]; }
    double GetData(unsigned r) const { return m_Data.Data()[At(r, 0)]; }

    /// Stores a value at (r, c), or (r, 0). @return 1, or 0 outside the matrix
    int SetData(unsigned r, unsigned c, double value)
    {
        if (r >= m_nRows || c >= m_nCols) return 0;
        m_Data.Data()[At(r, c)] = value;
        return 1;
    }
    int SetData(unsigned r, double value) { return SetData(r, 0, value); }

    /// Copies `block` with its first element at (r, c). @return 1, or 0 where it does not fit.
    /// A copy for which memory was short is 0 x 0: it fits, and nothing is written.
    int SetData(unsigned r, unsigned c, CTiltMatrix block);

    /// Gives the matrix the size n x 1, or r x c, zero-filled.
    /// @return 0 for a size of 0, with nothing changed; else 1, also when the memory cannot be had:
    ///         0 x 0 and not valid then
    int Alloc(unsigned n) { return Alloc(n, 1); }
    int Alloc(unsigned r, unsigned c);

    // Assignments return whether they succeeded.
    // NOLINTBEGIN(misc-unconventional-assign-operator)

    /// Sets every element to `value`.
    void operator=(double value);

    /// Copies size and elements. @return 1, or 0 (0 x 0, not valid) when memory cannot be had
    int operator=(const CTiltMatrix& B) noexcept;
    /// As the copy; B is left 0 x 0, not valid.
    int operator=(CTiltMatrix&& B) noexcept;

    // NOLINTEND(misc-unconventional-assign-operator)

    /// Sum and difference of equal sizes; product where the columns of this are the rows of B, each
    /// element summed from 0.0 over rising k. Otherwise see "validity" above.
    CTiltMatrix operator+(const CTiltMatrix& B) const;
    CTiltMatrix operator-(const CTiltMatrix& B) const;
    CTiltMatrix operator*(const CTiltMatrix& B) const;

    /// On every element.
    CTiltMatrix operator+(double s) const;
    CTiltMatrix operator-(double s) const;
    CTiltMatrix operator*(double s) const;
    CTiltMatrix operator/(double s) const;

    /// In place. @return 1, or 0, with no element changed and not valid, when the sizes differ
    int operator+=(const CTiltMatrix& B);
    int operator-=(const CTiltMatrix& B);
    /// In place on every element. @return 1
    int operator+=(double s);
    int operator-=(double s);

    /// The inverse by Gauss-Jordan elimination with full pivoting (docs/formulas.md, "Full
    /// pivoting"). Singular where the largest element left, plus 1.0, is 1.0: this object is not
    /// valid then and the partly eliminated working copy is returned. Not square: not valid, and a
    /// zero matrix of the same size.
    CTiltMatrix operator~() const;

    /// The inverse by the same elimination without any test: a zero pivot is divided by, so a
    /// singular matrix (IsMaxtrixSingular) gives elements that are not finite. Not square: a zero
    /// matrix of the same size.
    CTiltMatrix MatInv() const;

    /// The inverse of a symmetric positive definite matrix through its Cholesky factor,
    /// A^-1 = L^-T * L^-1 (Golub & Van Loan, Matrix Computations, 4.2). Only the upper triangle of
    /// this matrix is read. Where a pivot is not above 0, or is 1.0 when 1.0 is added, or the
    /// matrix is not square: not valid, and a zero matrix of the same size.
    CTiltMatrix Reverse() const;

    /// The lower Cholesky factor L, A = L * L^T; only the upper triangle of this matrix is read.
    ///
    /// @param status  if not null: 1, or 0 where a pivot is not above 0 (the columns of L before it
    ///                stand) or the matrix is not square (L is a zero matrix of its size)
    CTiltMatrix matChole(int* status) const;

    CTiltMatrix MatTran() const;

    /// Copies each element of the upper triangle to its mirror place.
    /// @return 1, or 0 for a matrix that is not square
    int Symmetry();

    /// Sum of the diagonal of a square matrix, which sets valid; otherwise 0.0 and not valid.
    double Summation() const;

    /// Sum of the first min(rows, columns) diagonal elements.
    double Trace() const;

    /// Rows r0 ... r1 and columns c0 ... c1, ends included; 0 x 0 when an index is outside the
    /// matrix or an end lies before its start.
    CTiltMatrix Slice(int r0, int c0, int r1, int c1) const;

    /// Sets the diagonal of the leading min(rows, columns) square and its other elements to 0;
    /// elements outside the square stay. The vector, a row or a column, has an element for each
    /// place.
    /// @return 1, or 0 for an empty matrix or a vector of another length
    int Diagonal(double value);
    int Diagonal(CTiltMatrix values);

    /// Sets every element to 0. @return 1, or 0 for an empty matrix
    int Zeros();

    /// One line per row, ended by a line feed; each element as "%15.6e" writes it, followed by one
    /// blank. Short of memory the text is empty.
    CString Output() const;

    /// The length of a row or column vector; 0.0 for any other matrix.
    double Module() const;

    /// Whether the determinant (up to 3 x 3), or beyond that the sum of the products along the
    /// falling diagonals less that along the rising ones, is below 1e-20 or above 1e20 in
    /// magnitude.
    /// @return 1 (also for a matrix that is not square), or 0
    int IsMaxtrixSingular() const;

private:
    enum class Fill { Nothing, Zero };

    CTiltMatrix(unsigned r, unsigned c, Fill fill) noexcept
    {
        m_nValid = SetSize(r, c, fill) ? 1 : 0;
    }

    bool HasElements() const { return m_nRows != 0; }
    bool IsSquare() const { return m_nRows == m_nCols; }
    bool IsVector() const { return m_nRows == 1 || m_nCols == 1; }
    bool HasSizeOf(const CTiltMatrix& B) const
    {
        return m_nRows == B.m_nRows && m_nCols == B.m_nCols;
    }
    std::size_t Count() const { return std::size_t{m_nRows} * m_nCols; }
    std::size_t At(unsigned r, unsigned c) const { return std::size_t{r} * m_nCols + c; }
    bool SetSize(unsigned r, unsigned c, Fill fill) noexcept;
    void TakeFrom(CTiltMatrix& other) noexcept;
    const CTiltMatrix& Failed(const CTiltMatrix& result) const;
    CTiltMatrix Inverse(tiltpole::matrix::PivotFloor floor) const;
    CTiltMatrix Factor(tiltpole::matrix::PivotFloor floor, int& status) const;
    double SingularityFigure() const;

    template <class Visit>
    void ForEachElement(Visit visit) const;
    template <class Visit>
    void ForEachDiagonal(Visit visit) const;
    template <class Combine>
    void CombineInto(CTiltMatrix& out, const CTiltMatrix& B, Combine combine) const;
    template <class Change>
    void ChangeInto(CTiltMatrix& out, Change change) const;
    template <class Combine>
    CTiltMatrix Combined(const CTiltMatrix& B, Combine combine) const;
    template <class Change>
    CTiltMatrix Changed(Change change) const;

    tiltpole::matrix::ElementStore m_Data;
    unsigned m_nRows = 0;
    unsigned m_nCols = 0;
    mutable unsigned m_iRow = 0; // the cursors
    mutable unsigned m_iCol = 0;
    mutable int m_nValid = 0;
};
