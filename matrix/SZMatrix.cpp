// SPDX-License-Identifier: MIT
#include "matrix/SZMatrix.h"

#include "matrix/detail/Kernels.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <new>

namespace matrix = tiltpole::matrix;

CSZMatrix::CSZMatrix(int rows, int cols) noexcept : CSZMatrix(rows, cols, Fill::Zero) {}

CSZMatrix::CSZMatrix(int rows, int cols, MatType type) noexcept : CSZMatrix(rows, cols, Fill::Zero)
{
    if (type == MatOnes) *this = 1.0;
    if (type == MatIdentity) setDiagonal(1.0);
}

CSZMatrix::CSZMatrix(const double* values, int count, int rows, int cols) noexcept
    : CSZMatrix(rows, cols, Fill::Zero)
{
    if (values == nullptr || count < 1) return;
    std::copy_n(values, std::min(Count(), static_cast<std::size_t>(count)), m_Data.Data());
}

CSZMatrix::CSZMatrix(int rows, int cols, int count, ...) noexcept
    : CSZMatrix(rows, cols, Fill::Zero)
{
    const std::size_t given = count < 1 ? 0 : std::min(Count(), static_cast<std::size_t>(count));
    std::va_list values;
    va_start(values, count);
    for (std::size_t i = 0; i < given; ++i)
        m_Data.Data()[i] = va_arg(values, double);
    va_end(values);
}

CSZMatrix::CSZMatrix(const CSZMatrix& other) noexcept
    : CSZMatrix(other.m_nRows, other.m_nCols, Fill::Nothing)
{
    std::copy_n(other.m_Data.Data(), Count(), m_Data.Data());
}

// Gives the store the size rows x cols; elements stay where they are when that is its size already.
// False, with 0 x 0, when a size is below 1 or memory runs out. The health flag is the caller's.
bool CSZMatrix::SetSize(int rows, int cols, Fill fill) noexcept
{
    if (HasElements() && rows == m_nRows && cols == m_nCols) {
        if (fill == Fill::Zero) Zeros();
        return true;
    }
    m_nRows = m_nCols = 0;
    if (rows < 1 || cols < 1) return false;
    const long long count = static_cast<long long>(rows) * cols;
    if (count > matrix::kMostElements) {
        m_Data.Release();
        return false;
    }
    const auto elements = static_cast<std::size_t>(count);
    if (!(fill == Fill::Zero ? m_Data.Reset(elements) : m_Data.Reserve(elements))) return false;
    m_nRows = rows;
    m_nCols = cols;
    return true;
}

// Leaves 0 x 0; the health flag is the caller's.
void CSZMatrix::Clear() noexcept
{
    m_Data.Release();
    m_nRows = m_nCols = 0;
}

bool CSZMatrix::SetData(int r, int c, const CSZMatrix& block)
{
    const long long lastRow = static_cast<long long>(r) + block.m_nRows - 1;
    const long long lastCol = static_cast<long long>(c) + block.m_nCols - 1;
    if (!checkRowIndex(r) || lastRow < 0 || lastRow >= m_nRows) return false;
    if (!checkColIndex(c) || lastCol < 0 || lastCol >= m_nCols) return false;
    if (&block == this) return true; // only (0, 0) passes the checks

    const double* source = block.m_Data.Data();
    for (int i = 0; i < block.m_nRows; ++i, source += block.m_nCols)
        std::copy_n(source, block.m_nCols, m_Data.Data() + At(r + i, c));
    return true;
}

bool CSZMatrix::Alloc(int rows, int cols)
{
    if (rows < 1 || cols < 1) return false;
    m_bHealthy = SetSize(rows, cols, Fill::Zero);
    return m_bHealthy;
}

int CSZMatrix::Zeros()
{
    std::fill_n(m_Data.Data(), Count(), 0.0);
    return HasElements() ? 1 : 0;
}

int CSZMatrix::Diagonal(double d)
{
    const int square = std::min(m_nRows, m_nCols);
    for (int r = 0; r < square; ++r) {
        std::fill_n(m_Data.Data() + At(r, 0), square, 0.0);
        m_Data.Data()[At(r, r)] = d;
    }
    return HasElements() ? 1 : 0;
}

bool CSZMatrix::setDiagonal(double d)
{
    return Zeros() == 1 && Diagonal(d) == 1;
}

namespace {

// Up to so many elements a loop beside the rest takes less than a call of a kernel.
constexpr std::size_t kFew = 16;

// out[i] = combine(a[i], b[i]), by `kernel` where there are many; out may be one of the operands.
template <class Combine, class Kernel>
void ForEach(const double* a, const double* b, double* out, std::size_t count, Combine combine,
             Kernel kernel)
{
    if (count > kFew) return kernel(a, b, out, count);
    for (std::size_t i = 0; i < count; ++i)
        out[i] = combine(a[i], b[i]);
}

template <class Change>
void ForEach(const double* a, double* out, std::size_t count, Change change)
{
    for (std::size_t i = 0; i < count; ++i)
        out[i] = change(a[i]);
}

} // namespace

// One object for every outcome, so that it is built where the caller wants it: a return of another
// one would move the elements.

CSZMatrix CSZMatrix::operator+(const CSZMatrix& B) const
{
    const bool fits = HasSizeOf(B);
    CSZMatrix sum(m_nRows, m_nCols, fits ? Fill::Nothing : Fill::Zero);
    if (fits)
        ForEach(m_Data.Data(), B.m_Data.Data(), sum.m_Data.Data(), sum.Count(), std::plus<>{},
                matrix::Add);
    return sum;
}

CSZMatrix CSZMatrix::operator-(const CSZMatrix& B) const
{
    const bool fits = HasSizeOf(B);
    CSZMatrix difference(m_nRows, m_nCols, fits ? Fill::Nothing : Fill::Zero);
    if (fits)
        ForEach(m_Data.Data(), B.m_Data.Data(), difference.m_Data.Data(), difference.Count(),
                std::minus<>{}, matrix::Subtract);
    return difference;
}

CSZMatrix CSZMatrix::operator*(const CSZMatrix& B) const
{
    const bool fits = m_nCols == B.m_nRows;
    CSZMatrix product(m_nRows, B.m_nCols, fits ? Fill::Nothing : Fill::Zero);
    if (fits)
        matrix::Multiply(m_Data.Data(), B.m_Data.Data(), product.m_Data.Data(), product.m_nRows,
                         m_nCols, product.m_nCols);
    return product;
}

CSZMatrix CSZMatrix::operator+(double s) const
{
    CSZMatrix sum(m_nRows, m_nCols, Fill::Nothing);
    ForEach(m_Data.Data(), sum.m_Data.Data(), sum.Count(), [s](double x) { return x + s; });
    return sum;
}

CSZMatrix CSZMatrix::operator-(double s) const
{
    CSZMatrix difference(m_nRows, m_nCols, Fill::Nothing);
    ForEach(m_Data.Data(), difference.m_Data.Data(), difference.Count(),
            [s](double x) { return x - s; });
    return difference;
}

CSZMatrix CSZMatrix::operator*(double s) const
{
    CSZMatrix product(m_nRows, m_nCols, Fill::Nothing);
    ForEach(m_Data.Data(), product.m_Data.Data(), product.Count(), [s](double x) { return x * s; });
    return product;
}

CSZMatrix CSZMatrix::operator/(double s) const
{
    CSZMatrix quotient(m_nRows, m_nCols, s == 0.0 ? Fill::Zero : Fill::Nothing);
    if (s != 0.0)
        ForEach(m_Data.Data(), quotient.m_Data.Data(), quotient.Count(),
                [s](double x) { return x / s; });
    return quotient;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
void CSZMatrix::operator=(double s)
{
    std::fill_n(m_Data.Data(), Count(), s);
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
bool CSZMatrix::operator=(const CSZMatrix& B) noexcept
{
    if (&B == this) return true;
    if (!B.HasElements()) {
        Clear();
        return true;
    }
    if (!SetSize(B.m_nRows, B.m_nCols, Fill::Nothing)) {
        m_bHealthy = false;
        return false;
    }
    std::copy_n(B.m_Data.Data(), Count(), m_Data.Data());
    return true;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
bool CSZMatrix::operator=(CSZMatrix&& B) noexcept
{
    if (&B == this) return true;
    if (!HasSizeOf(B)) {
        TakeFrom(B);
        return true;
    }
    std::copy_n(B.m_Data.Data(), Count(), m_Data.Data());
    B.Clear();
    B.m_bHealthy = false;
    return true;
}

bool CSZMatrix::operator+=(const CSZMatrix& B)
{
    if (!HasSizeOf(B)) return false;
    ForEach(m_Data.Data(), B.m_Data.Data(), m_Data.Data(), Count(), std::plus<>{}, matrix::Add);
    return true;
}

bool CSZMatrix::operator-=(const CSZMatrix& B)
{
    if (!HasSizeOf(B)) return false;
    ForEach(m_Data.Data(), B.m_Data.Data(), m_Data.Data(), Count(), std::minus<>{},
            matrix::Subtract);
    return true;
}

bool CSZMatrix::operator+=(double s)
{
    ForEach(m_Data.Data(), m_Data.Data(), Count(), [s](double x) { return x + s; });
    return true;
}

bool CSZMatrix::operator-=(double s)
{
    ForEach(m_Data.Data(), m_Data.Data(), Count(), [s](double x) { return x - s; });
    return true;
}

bool CSZMatrix::operator*=(double s)
{
    ForEach(m_Data.Data(), m_Data.Data(), Count(), [s](double x) { return x * s; });
    return true;
}

bool CSZMatrix::operator/=(double s)
{
    if (std::fabs(s) < DBL_MIN) return false;
    ForEach(m_Data.Data(), m_Data.Data(), Count(), [s](double x) { return x / s; });
    return true;
}

// nr rows from r0 and nc columns from c0, all inside the matrix; 0 x 0 where nr or nc is below 1.
CSZMatrix CSZMatrix::Block(int r0, int nr, int c0, int nc) const
{
    CSZMatrix block(nr, nc, Fill::Nothing);
    for (int r = 0; r < block.m_nRows; ++r)
        std::copy_n(m_Data.Data() + At(r0 + r, c0), nc, block.m_Data.Data() + block.At(r, 0));
    return block;
}

CSZMatrix CSZMatrix::Slice(int r0, int c0, int r1, int c1) const
{
    const bool inside =
        checkRowIndex(r0) && checkRowIndex(r1) && checkColIndex(c0) && checkColIndex(c1);
    return inside ? Block(r0, r1 - r0 + 1, c0, c1 - c0 + 1) : Block(0, 0, 0, 0);
}

CSZMatrix CSZMatrix::SliceRows(int r0, int n) const
{
    const bool inside = checkRowIndex(r0) && n >= 1 && n <= m_nRows - r0;
    return Block(r0, inside ? n : 0, 0, m_nCols);
}

CSZMatrix CSZMatrix::SliceCols(int c0, int n) const
{
    const bool inside = checkColIndex(c0) && n >= 1 && n <= m_nCols - c0;
    return Block(0, m_nRows, c0, inside ? n : 0);
}

// Kept row i is row i before the gap and row i + n after it. The result is full before a row past
// the end would be read, also where the gap reaches beyond the last row.
CSZMatrix CSZMatrix::DeleteRow(int r0, int n) const
{
    const bool possible = checkRowIndex(r0) && n >= 0 && n <= m_nRows;
    CSZMatrix kept(possible ? m_nRows - n : 0, m_nCols, Fill::Nothing);
    for (int r = 0; r < kept.m_nRows; ++r)
        std::copy_n(m_Data.Data() + At(r < r0 ? r : r + n, 0), m_nCols,
                    kept.m_Data.Data() + kept.At(r, 0));
    return kept;
}

CSZMatrix CSZMatrix::DeleteCol(int c0, int n) const
{
    const bool possible = checkColIndex(c0) && n >= 0 && n <= m_nCols;
    CSZMatrix kept(m_nRows, possible ? m_nCols - n : 0, Fill::Nothing);
    const int before = std::min(c0, kept.m_nCols);
    for (int r = 0; r < kept.m_nRows; ++r) {
        const double* row = m_Data.Data() + At(r, 0);
        double* keptRow = kept.m_Data.Data() + kept.At(r, 0);
        std::copy_n(row, before, keptRow);
        std::copy_n(row + before + n, kept.m_nCols - before, keptRow + before);
    }
    return kept;
}

CSZMatrix CSZMatrix::Delete(int r0, int nr, int c0, int nc) const
{
    return DeleteRow(r0, nr).DeleteCol(c0, nc);
}

CString CSZMatrix::toString(int width, int precision, char format) const
try {
    const wchar_t* element = format == 'E' || format == 'e' ? L"%*.*E " : L"%*.*f ";
    CString text;
    CString part;
    for (int r = 0; r < m_nRows; ++r) {
        for (int c = 0; c < m_nCols; ++c) {
            part.Format(element, width, precision, GetData(r, c));
            text += part;
        }
        text += L"\n";
    }
    return text;
} catch (const std::bad_alloc&) {
    return {};
}
