// SPDX-License-Identifier: MIT
/// @class CSZMatrix
/// The checked dense matrix of doubles: storage, arithmetic, parts, text, decompositions.
///
///     elements   row-major: (r, c) is at r * columns + c; indices count from 0
///     failures   nothing throws and nothing is reported: a call returns false or 0, or returns a
///                matrix that is zero-filled or 0 x 0, as each operation says
///     health     whether the object itself was allocated. It is not copied: a returned object is
///                healthy exactly when it has elements, so a failed operation is recognized by the
///                size of its result (0 x 0) or by its content
///     rounding   sums run in the order documented for the operation, every product is rounded
///                before it is added, and every processor gives the same bits
///
///     CSZMatrix A(2, 2, 4, 2.0, 1.0, 1.0, 3.0);
///     CSZMatrix x = A.matInv() * b;
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "matrix/ElementStore.h"

#include <cstddef>

namespace tiltpole::matrix {
struct PlaneRotation;
}

/// Content of a new matrix.
enum MatType : int {
    MatZeros = 0,    ///< all elements 0
    MatOnes = 1,     ///< all elements 1
    MatIdentity = 2, ///< 1 at (i, i) for i < min(rows, columns), 0 elsewhere
};

class TILTPOLE_API CSZMatrix
{
public:
    /// 0 x 0, and healthy.
    CSZMatrix() noexcept = default;

    /// Zero-filled. A size below 1, or memory that cannot be had, gives 0 x 0, not healthy; this
    /// holds for every constructor that takes a size.
    CSZMatrix(int rows, int cols) noexcept;

    /// Filled as `type` says; a value outside MatType fills with 0.
    CSZMatrix(int rows, int cols, MatType type) noexcept;

    /// Filled row by row from the first `count` of `values`; elements beyond them are 0, values
    /// beyond the last element are ignored.
    CSZMatrix(const double* values, int count, int rows, int cols) noexcept;

    /// Filled row by row from `count` doubles that follow. Each must be a double (`1.0`, not `1`).
    CSZMatrix(int rows, int cols, int count, ...) noexcept;

    /// The elements of `other`; healthy when it has any.
    CSZMatrix(const CSZMatrix& other) noexcept;

    /// What a copy would hold; `other` is left 0 x 0, not healthy.
    CSZMatrix(CSZMatrix&& other) noexcept : m_bHealthy(other.HasElements()) { TakeFrom(other); }

    virtual ~CSZMatrix() = default;

    /// Whether the matrix holds a valid allocation (see "health" above).
    bool isMatrixHealthy() const { return m_bHealthy; }
    int getRowSize() const { return m_nRows; }
    int getColSize() const { return m_nCols; }
    unsigned int GetRow() const { return static_cast<unsigned int>(m_nRows); }
    unsigned int GetCol() const { return static_cast<unsigned int>(m_nCols); }

    /// Element (r, c), or 0.0 outside the matrix.
    double GetData(int r, int c) const
    {
        return checkRowIndex(r) && checkColIndex(c) ? m_Data.Data()[At(r, c)] : 0.0;
    }

    /// Stores v at (r, c); false, with nothing written, outside the matrix.
    bool SetData(int r, int c, double v)
    {
        if (!checkRowIndex(r) || !checkColIndex(c)) return false;
        m_Data.Data()[At(r, c)] = v;
        return true;
    }

    /// Stores v at (r, 0): the index is a row, whatever the number of columns.
    bool SetData(int r, double v) { return SetData(r, 0, v); }

    /// Copies `block` with its first element at (r, c). False, with nothing written, when r, c, the
    /// last row (r + block rows - 1) or the last column of the block lies outside the matrix.
    bool SetData(int r, int c, const CSZMatrix& block);

    /// The element at linear position r * columns + c, so (0, columns) is (1, 0). Positions outside
    /// refer to the first element; the one just past the end is admitted and refers to a spare
    /// element that the matrix owns. On an empty matrix every position refers to a spare 0.
    double& operator()(int r, int c) const
    {
        const long long position = static_cast<long long>(r) * m_nCols + c;
        double* const data = m_Data.Data();
        if (!HasElements()) data[0] = 0.0;
        const bool admitted = position >= 0 && position <= static_cast<long long>(Count());
        return data[admitted ? position : 0];
    }

    /// Gives the matrix the size rows x cols, zero-filled and healthy. A size below 1 returns false
    /// and changes nothing; short of memory it returns false and leaves 0 x 0, not healthy. When
    /// the matrix has that size already its elements stay in place and references to them stay
    /// valid; the same is true of every assignment.
    bool Alloc(int rows, int cols);

    /// Sets every element to 0. @return 0 for an empty matrix, else 1
    int Zeros();

    /// Writes d * I over the leading min(rows, columns) square; elements outside it stay.
    /// @return 0 for an empty matrix, else 1
    int Diagonal(double d);

    /// Sets every element to 0, then the first min(rows, columns) diagonal elements to d.
    /// @return false for an empty matrix
    bool setDiagonal(double d);

    /// Sum and difference; a zero matrix of this size when the sizes differ.
    CSZMatrix operator+(const CSZMatrix& B) const;
    CSZMatrix operator-(const CSZMatrix& B) const;

    /// Matrix product. Each element is summed from 0.0 over rising k. When the columns of this are
    /// not the rows of B: a zero matrix, rows of this x columns of B.
    CSZMatrix operator*(const CSZMatrix& B) const;

    /// Every element plus, minus, times s.
    CSZMatrix operator+(double s) const;
    CSZMatrix operator-(double s) const;
    CSZMatrix operator*(double s) const;

    /// Every element divided by s; a zero matrix of this size when s is exactly 0.
    CSZMatrix operator/(double s) const;

    // Assignments return whether they succeeded.
    // NOLINTBEGIN(misc-unconventional-assign-operator)

    /// Sets every element to s.
    void operator=(double s);

    /// Copies size and elements of B; the health of this matrix stays what it was. False when
    /// memory cannot be had: 0 x 0 and not healthy then.
    bool operator=(const CSZMatrix& B) noexcept;

    /// As the copy; B is left 0 x 0, not healthy.
    bool operator=(CSZMatrix&& B) noexcept;

    // NOLINTEND(misc-unconventional-assign-operator)

    /// In place; false, with nothing changed, when the sizes differ.
    bool operator+=(const CSZMatrix& B);
    bool operator-=(const CSZMatrix& B);

    /// In place on every element; true.
    bool operator+=(double s);
    bool operator-=(double s);
    bool operator*=(double s);

    /// Divides every element by s. False, with nothing changed, when |s| is below the smallest
    /// normal double.
    bool operator/=(double s);

    /// Rows r0 ... r1 and columns c0 ... c1, ends included. 0 x 0 when an index is outside the
    /// matrix or an end lies before its start.
    CSZMatrix Slice(int r0, int c0, int r1, int c1) const;

    /// n rows from r0 (n columns from c0) on; 0 x 0 unless all of them lie in the matrix and n
    /// >= 1.
    CSZMatrix SliceRows(int r0, int n) const;
    CSZMatrix SliceCols(int c0, int n) const;

    /// The matrix without the n rows from r0 on. It has rows - n rows even where the n rows run
    /// past the last one: the last rows of what was kept are dropped then. 0 x 0 when r0 is outside
    /// the matrix, n is negative, or n >= rows.
    CSZMatrix DeleteRow(int r0, int n) const;

    /// DeleteRow for columns.
    CSZMatrix DeleteCol(int c0, int n) const;

    /// DeleteRow(r0, nr), then DeleteCol(c0, nc) of what is left.
    CSZMatrix Delete(int r0, int nr, int c0, int nc) const;

    /// One line per row, ended by a line feed; each element in `width` characters with `precision`
    /// decimals, followed by one blank. `format` 'E' or 'e' writes 1.2345E+03, any other 1234.5000.
    /// The same in every locale. A negative width aligns left, a negative precision means 6.
    /// Short of memory the text is empty.
    CString toString(int width, int precision, char format) const;

    /// The transpose.
    CSZMatrix matTran() const;

    /// The inverse, by Gauss-Jordan elimination with full pivoting (docs/formulas.md, "Full
    /// pivoting"). Not square or empty: a zero matrix of its own size. Where the largest element
    /// left is below the smallest normal double the elimination stops and the partly eliminated
    /// working copy is returned, rows and columns still swapped.
    CSZMatrix matInv() const;

    /// The inverse of an upper (lower) triangular matrix by back substitution; the other triangle
    /// is not read. 0 x 0 when not square, or when a diagonal element is smaller in magnitude than
    /// the smallest normal double.
    CSZMatrix UpperMatInv() const;
    CSZMatrix LowerMatInv() const;

    /// A = L * L^T with L lower triangular (Golub & Van Loan, Matrix Computations, 4.2). L is first
    /// given the size of this matrix. False, with the columns before the failing one filled, when
    /// the matrix is not symmetric (within 2.2e-16) or a diagonal value under the root is below the
    /// smallest normal double.
    bool cholesky(CSZMatrix& L) const;

    /// A = L * D * L^T, L unit lower triangular, D diagonal (Golub & Van Loan, 4.1). Only the lower
    /// triangle of this matrix is read. Where a divisor is not larger than the smallest normal
    /// double the factors below it are 0 and the factorization goes on. False, with L and D
    /// unchanged, when not square or empty.
    bool ldl(CSZMatrix& L, CSZMatrix& D) const;

    /// A = U * D * U^T, U unit upper triangular, D diagonal (Bierman, Factorization Methods, 3.6).
    /// Only the upper triangle of this matrix is read; otherwise as ldl.
    bool udu(CSZMatrix& U, CSZMatrix& D) const;

    /// A = L * D * L^T through square roots of the pivots, worked out in this matrix, which is
    /// overwritten. Only its lower triangle is read. False when not square or empty (nothing
    /// changed) or when a pivot is below the smallest normal double: L and D then have the columns
    /// before it, this matrix the remainder.
    bool LDLdecompostion(CSZMatrix& L, CSZMatrix& D);

    /// Eigenvalues and vectors of a symmetric matrix by cyclic Jacobi rotations (Golub & Van Loan,
    /// 8.5): A * V = V * D, eigenvectors the columns of V, eigenvalues the diagonal of D in the
    /// order in which the rotations leave them. V and D are two objects. Sweeps go on without limit
    /// while an element of D above the diagonal is larger in magnitude than `tol`, which must
    /// therefore lie above the rounding of the largest element.
    ///
    /// A matrix that is not symmetric (within 2.2e-16; also one that is not square or empty) makes
    /// the call never return; V is the identity and D a copy by then.
    /// @return true; false short of memory
    bool Jacobi(CSZMatrix& V, CSZMatrix& D, double tol) const;

    /// A = Q * R by modified Gram-Schmidt orthogonalization of the columns (Golub & Van Loan, 5.2):
    /// Q of this size with orthonormal columns, R square upper triangular. False, with Q and R
    /// unchanged, for more columns than rows or an empty matrix; false, with the columns before it
    /// finished, when what is left of a column is shorter than `tol`.
    bool QR_Schmidt(CSZMatrix& Q, CSZMatrix& R, double tol) const;

    /// Sum of the diagonal; 0.0 for a matrix that is not square.
    double trace() const;

    /// The squared length of a row or column vector; 0.0 for any other matrix.
    double norm() const;

    /// The length of a row or column vector, the root of norm().
    double vecModulus() const;

    /// The largest sum of magnitudes in a row.
    double infiniteNorm() const;

    /// infiniteNorm() times that of the inverse; 999999.0 for a matrix that is not square or empty.
    double condition() const;

    /// The cross product of two 3-vectors, rows or columns, as a column; of any other shapes a zero
    /// 3 x 1 column.
    CSZMatrix cross(const CSZMatrix& b) const;

    /// S with S * b = a x b for this 3-vector a; a zero 3 x 3 matrix for any other shape.
    CSZMatrix skewSymm3() const;

    /// W with q' = W * q / 2 for a quaternion q = (scalar, x, y, z) that turns at this body rate
    /// (3 x 1 or 1 x 3, Titterton & Weston, Strapdown Inertial Navigation, 3.6.4); a zero 4 x 4
    /// matrix for any other shape. It is skew-symmetric: W = -W^T.
    CSZMatrix skewSymm4() const;

private:
    enum class Fill { Nothing, Zero };

    /// rows x cols; with Fill::Nothing the caller writes every element next.
    CSZMatrix(int rows, int cols, Fill fill) noexcept
    {
        constexpr int kMost = tiltpole::matrix::ElementStore::kInside;
        const bool fitsInside =
            rows > 0 && cols > 0 && rows <= kMost && cols <= kMost && rows * cols <= kMost;
        if (fitsInside && fill == Fill::Nothing) { // nearly every result of an expression
            m_nRows = rows;
            m_nCols = cols;
            m_Data.Reserve(Count());
        } else {
            m_bHealthy = SetSize(rows, cols, fill);
        }
    }

    bool checkRowIndex(int r) const { return 0 <= r && r < m_nRows; }
    bool checkColIndex(int c) const { return 0 <= c && c < m_nCols; }
    bool isSymmetric() const;

    /// The rotation of the plane (p, q) that zeroes element (p, q); the identity where that element
    /// is below `tol`, where (p, q) and (q, p) differ by more than `tol`, or for indices outside.
    CSZMatrix JacobiDouble(int p, int q, double tol) const;

    bool IsSquare() const { return HasElements() && m_nRows == m_nCols; }
    bool IsVector3() const;
    bool HasSizeOf(const CSZMatrix& B) const
    {
        return m_nRows == B.m_nRows && m_nCols == B.m_nCols;
    }
    bool HasElements() const { return m_nRows > 0; }
    std::size_t Count() const
    {
        return static_cast<std::size_t>(m_nRows) * static_cast<std::size_t>(m_nCols);
    }
    std::size_t At(int r, int c) const
    {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(m_nCols)
               + static_cast<std::size_t>(c);
    }
    bool SetSize(int rows, int cols, Fill fill) noexcept;
    void Clear() noexcept;
    CSZMatrix Block(int r0, int nr, int c0, int nc) const;
    static void RotateByProducts(CSZMatrix& D, CSZMatrix& Vt, const CSZMatrix& J);
    static void RotateLines(CSZMatrix& D, CSZMatrix& Vt, int p, int q,
                            tiltpole::matrix::PlaneRotation J);
    void TakeFrom(CSZMatrix& other) noexcept
    {
        m_Data.Take(other.m_Data, other.Count());
        m_nRows = other.m_nRows;
        m_nCols = other.m_nCols;
        other.m_nRows = other.m_nCols = 0;
        other.m_bHealthy = false;
    }

    bool m_bHealthy = true;
    tiltpole::matrix::ElementStore m_Data;
    int m_nRows = 0;
    int m_nCols = 0;
};
