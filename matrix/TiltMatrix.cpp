// SPDX-License-Identifier: MIT
#include "matrix/TiltMatrix.h"

#include "matrix/detail/Kernels.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>

namespace matrix = tiltpole::matrix;

namespace {

// Below and above these magnitudes the figure of the singularity test counts as none.
constexpr double kSmallestFigure = 1e-20;
constexpr double kLargestFigure = 1e20;

// The kernels count in int; a matrix never has more elements than fit one.
int AsInt(unsigned size)
{
    return static_cast<int>(size);
}

} // namespace

CTiltMatrix::CTiltMatrix(unsigned r, unsigned c) noexcept : CTiltMatrix(r, c, Fill::Zero) {}

CTiltMatrix::CTiltMatrix(const CTiltMatrix& other) noexcept
    : CTiltMatrix(other.m_nRows, other.m_nCols, Fill::Nothing)
{
    std::copy_n(other.m_Data.Data(), Count(), m_Data.Data());
}

// Gives the store the size r x c; false, with 0 x 0, when a size is 0 or there is no memory for it.
bool CTiltMatrix::SetSize(unsigned r, unsigned c, Fill fill) noexcept
{
    m_nRows = m_nCols = 0;
    const unsigned long long count = static_cast<unsigned long long>(r) * c;
    if (count == 0 || count > matrix::kMostElements) {
        m_Data.Release();
        return false;
    }
    const auto elements = static_cast<std::size_t>(count);
    if (!(fill == Fill::Zero ? m_Data.Reset(elements) : m_Data.Reserve(elements))) return false;
    m_nRows = r;
    m_nCols = c;
    return true;
}

void CTiltMatrix::TakeFrom(CTiltMatrix& other) noexcept
{
    m_Data.Take(other.m_Data, other.Count());
    m_nRows = other.m_nRows;
    m_nCols = other.m_nCols;
    other.m_nRows = other.m_nCols = 0;
    other.m_nValid = 0;
}

// Calls visit(row, column) row by row, counting with the cursors.
template <class Visit>
void CTiltMatrix::ForEachElement(Visit visit) const
{
    for (m_iRow = 0; m_iRow < m_nRows; ++m_iRow)
        for (m_iCol = 0; m_iCol < m_nCols; ++m_iCol)
            visit(m_iRow, m_iCol);
}

// Calls visit(element) along the diagonal.
template <class Visit>
void CTiltMatrix::ForEachDiagonal(Visit visit) const
{
    const unsigned square = std::min(m_nRows, m_nCols);
    for (m_iRow = 0; m_iRow < square; ++m_iRow)
        visit(m_Data.Data()[At(m_iRow, m_iRow)]);
}

int CTiltMatrix::SetData(unsigned r, unsigned c, CTiltMatrix block)
{
    if (r > m_nRows || block.m_nRows > m_nRows - r) return 0;
    if (c > m_nCols || block.m_nCols > m_nCols - c) return 0;
    block.ForEachElement([&](unsigned i, unsigned j) {
        m_Data.Data()[At(r + i, c + j)] = block.m_Data.Data()[block.At(i, j)];
    });
    return 1;
}

int CTiltMatrix::Alloc(unsigned r, unsigned c)
{
    if (r == 0 || c == 0) return 0;
    m_nValid = SetSize(r, c, Fill::Zero) ? 1 : 0;
    return 1;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
void CTiltMatrix::operator=(double value)
{
    ForEachElement([&](unsigned r, unsigned c) { m_Data.Data()[At(r, c)] = value; });
    m_nValid = 1;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
int CTiltMatrix::operator=(const CTiltMatrix& B) noexcept
{
    if (&B == this) return 1;
    const bool fits = HasSizeOf(B) || SetSize(B.m_nRows, B.m_nCols, Fill::Nothing);
    if (fits) std::copy_n(B.m_Data.Data(), Count(), m_Data.Data());
    m_nValid = HasElements() ? 1 : 0;
    return HasSizeOf(B) ? 1 : 0;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator)
int CTiltMatrix::operator=(CTiltMatrix&& B) noexcept
{
    if (&B == this) return 1;
    TakeFrom(B);
    m_nValid = HasElements() ? 1 : 0;
    return 1;
}

// What a failed operator returns; marks this object as not valid.
const CTiltMatrix& CTiltMatrix::Failed(const CTiltMatrix& result) const
{
    m_nValid = 0;
    return result;
}

// Writes combine(element of this, element of B) into `out`, of the same size and possibly one of
// them; change(element of this) likewise.
template <class Combine>
void CTiltMatrix::CombineInto(CTiltMatrix& out, const CTiltMatrix& B, Combine combine) const
{
    const double* const a = m_Data.Data();
    const double* const b = B.m_Data.Data();
    double* const x = out.m_Data.Data();
    out.ForEachElement(
        [&](unsigned r, unsigned c) { x[At(r, c)] = combine(a[At(r, c)], b[At(r, c)]); });
    m_nValid = 1;
}

template <class Change>
void CTiltMatrix::ChangeInto(CTiltMatrix& out, Change change) const
{
    CombineInto(out, *this, [&change](double x, double) { return change(x); });
}

template <class Combine>
CTiltMatrix CTiltMatrix::Combined(const CTiltMatrix& B, Combine combine) const
{
    if (!HasSizeOf(B)) return Failed(B);
    CTiltMatrix result(m_nRows, m_nCols, Fill::Nothing);
    if (!HasSizeOf(result)) return Failed({});
    CombineInto(result, B, combine);
    return result;
}

template <class Change>
CTiltMatrix CTiltMatrix::Changed(Change change) const
{
    CTiltMatrix result(m_nRows, m_nCols, Fill::Nothing);
    if (!HasSizeOf(result)) return Failed({});
    ChangeInto(result, change);
    return result;
}

CTiltMatrix CTiltMatrix::operator+(const CTiltMatrix& B) const
{
    return Combined(B, std::plus<>{});
}

CTiltMatrix CTiltMatrix::operator-(const CTiltMatrix& B) const
{
    return Combined(B, std::minus<>{});
}

CTiltMatrix CTiltMatrix::operator*(const CTiltMatrix& B) const
{
    if (m_nCols != B.m_nRows) return Failed(B);
    CTiltMatrix product(m_nRows, B.m_nCols, Fill::Nothing);
    if (HasElements() && !product.HasElements()) return Failed({});
    matrix::Multiply(m_Data.Data(), B.m_Data.Data(), product.m_Data.Data(), AsInt(product.m_nRows),
                     AsInt(m_nCols), AsInt(product.m_nCols));
    m_nValid = 1;
    return product;
}

CTiltMatrix CTiltMatrix::operator+(double s) const
{
    return Changed([s](double x) { return x + s; });
}

CTiltMatrix CTiltMatrix::operator-(double s) const
{
    return Changed([s](double x) { return x - s; });
}

CTiltMatrix CTiltMatrix::operator*(double s) const
{
    return Changed([s](double x) { return x * s; });
}

CTiltMatrix CTiltMatrix::operator/(double s) const
{
    return Changed([s](double x) { return x / s; });
}

int CTiltMatrix::operator+=(const CTiltMatrix& B)
{
    m_nValid = HasSizeOf(B) ? 1 : 0;
    if (m_nValid == 1) CombineInto(*this, B, std::plus<>{});
    return m_nValid;
}

int CTiltMatrix::operator-=(const CTiltMatrix& B)
{
    m_nValid = HasSizeOf(B) ? 1 : 0;
    if (m_nValid == 1) CombineInto(*this, B, std::minus<>{});
    return m_nValid;
}

int CTiltMatrix::operator+=(double s)
{
    ChangeInto(*this, [s](double x) { return x + s; });
    return 1;
}

int CTiltMatrix::operator-=(double s)
{
    ChangeInto(*this, [s](double x) { return x - s; });
    return 1;
}

CTiltMatrix CTiltMatrix::Inverse(matrix::PivotFloor floor) const
{
    if (!IsSquare()) return Failed(CTiltMatrix(m_nRows, m_nCols, Fill::Zero));
    CTiltMatrix inverse(*this);
    if (!HasSizeOf(inverse)) return Failed({});
    const auto outcome = matrix::Invert(inverse.m_Data.Data(), AsInt(m_nRows), floor);
    m_nValid = outcome == matrix::Outcome::Done ? 1 : 0;
    if (outcome == matrix::Outcome::NoMemory) return {};
    return inverse;
}

CTiltMatrix CTiltMatrix::operator~() const
{
    return Inverse(matrix::PivotFloor::VisibleBesideOne);
}

CTiltMatrix CTiltMatrix::MatInv() const
{
    return Inverse(matrix::PivotFloor::None);
}

CTiltMatrix CTiltMatrix::Factor(matrix::PivotFloor floor, int& status) const
{
    CTiltMatrix L(m_nRows, m_nCols, Fill::Zero);
    const bool done =
        IsSquare() && L.HasElements()
        && matrix::FactorCholesky(m_Data.Data(), L.m_Data.Data(), AsInt(m_nRows), floor)
               == matrix::Outcome::Done;
    status = done ? 1 : 0;
    return L;
}

CTiltMatrix CTiltMatrix::matChole(int* status) const
{
    int outcome = 0;
    CTiltMatrix L = Factor(matrix::PivotFloor::None, outcome);
    if (status != nullptr) *status = outcome;
    return L;
}

CTiltMatrix CTiltMatrix::Reverse() const
{
    CTiltMatrix L = Factor(matrix::PivotFloor::VisibleBesideOne, m_nValid);
    if (m_nValid == 0) return {m_nRows, m_nCols, Fill::Zero};

    // L becomes its own inverse, column by column from the diagonal down.
    const unsigned n = m_nRows;
    for (unsigned j = 0; j < n; ++j) {
        L.SetData(j, j, 1.0 / L.GetData(j, j));
        for (unsigned i = j + 1; i < n; ++i) {
            double sum = 0.0;
            for (unsigned k = j; k < i; ++k)
                sum += L.GetData(i, k) * L.GetData(k, j);
            L.SetData(i, j, -sum / L.GetData(i, i));
        }
    }
    const CTiltMatrix transpose = L.MatTran();
    CTiltMatrix inverse = L.HasSizeOf(transpose) ? transpose * L : CTiltMatrix();
    m_nValid = inverse.m_nValid;
    return inverse;
}

CTiltMatrix CTiltMatrix::MatTran() const
{
    CTiltMatrix transpose(m_nCols, m_nRows, Fill::Nothing);
    matrix::Transpose(m_Data.Data(), transpose.m_Data.Data(), AsInt(transpose.m_nCols),
                      AsInt(transpose.m_nRows));
    return transpose;
}

int CTiltMatrix::Symmetry()
{
    if (!IsSquare()) return 0;
    ForEachElement([&](unsigned r, unsigned c) {
        if (r < c) m_Data.Data()[At(c, r)] = m_Data.Data()[At(r, c)];
    });
    return 1;
}

double CTiltMatrix::Summation() const
{
    m_nValid = IsSquare() ? 1 : 0;
    return m_nValid == 1 ? Trace() : 0.0;
}

double CTiltMatrix::Trace() const
{
    double sum = 0.0;
    ForEachDiagonal([&sum](double x) { sum += x; });
    return sum;
}

CTiltMatrix CTiltMatrix::Slice(int r0, int c0, int r1, int c1) const
{
    const auto inside = [](int first, int last, unsigned size) {
        return 0 <= first && first <= last && static_cast<unsigned>(last) < size;
    };
    if (!inside(r0, r1, m_nRows) || !inside(c0, c1, m_nCols)) return {};
    CTiltMatrix part(static_cast<unsigned>(r1 - r0) + 1, static_cast<unsigned>(c1 - c0) + 1,
                     Fill::Nothing);
    part.ForEachElement([&, r = static_cast<unsigned>(r0), c = static_cast<unsigned>(c0)](
                            unsigned i, unsigned j) { part.SetData(i, j, GetData(r + i, c + j)); });
    return part;
}

int CTiltMatrix::Diagonal(double value)
{
    const unsigned square = std::min(m_nRows, m_nCols);
    ForEachElement([&](unsigned r, unsigned c) {
        if (r < square && c < square) SetData(r, c, r == c ? value : 0.0);
    });
    return HasElements() ? 1 : 0;
}

int CTiltMatrix::Diagonal(CTiltMatrix values)
{
    const unsigned square = std::min(m_nRows, m_nCols);
    if (!values.IsVector() || values.Count() != square) return 0;
    Diagonal(0.0);
    ForEachDiagonal([next = values.m_Data.Data()](double& x) mutable { x = *next++; });
    return 1;
}

int CTiltMatrix::Zeros()
{
    ForEachElement([&](unsigned r, unsigned c) { SetData(r, c, 0.0); });
    return HasElements() ? 1 : 0;
}

CString CTiltMatrix::Output() const
try {
    CString text;
    ForEachElement([&](unsigned r, unsigned c) {
        text.AppendFormat(c + 1 == m_nCols ? L"%15.6e \n" : L"%15.6e ", GetData(r, c));
    });
    return text;
} catch (const std::bad_alloc&) {
    return {};
}

double CTiltMatrix::Module() const
{
    if (!IsVector()) return 0.0;
    double sum = 0.0;
    ForEachElement([&](unsigned r, unsigned c) { sum += GetData(r, c) * GetData(r, c); });
    return std::sqrt(sum);
}

int CTiltMatrix::IsMaxtrixSingular() const
{
    if (!IsSquare()) return 1;
    const double figure = std::fabs(SingularityFigure());
    return figure < kSmallestFigure || figure > kLargestFigure ? 1 : 0;
}

// The sum over i of the products along the falling diagonals (j, i + j) less that along the rising
// ones (n - 1 - j, i + j): the determinant for n = 3. For n < 3, where the two sums would cancel
// whatever the matrix, the determinant itself.
double CTiltMatrix::SingularityFigure() const
{
    const unsigned n = m_nRows;
    if (n == 1) return GetData(0, 0);
    if (n == 2) return GetData(0, 0) * GetData(1, 1) - GetData(0, 1) * GetData(1, 0);
    double falling = 0.0;
    double rising = 0.0;
    for (unsigned i = 0; i < n; ++i) {
        double down = 1.0;
        double up = 1.0;
        for (unsigned j = 0; j < n; ++j) {
            down *= GetData(j, (i + j) % n);
            up *= GetData(n - 1 - j, (i + j) % n);
        }
        falling += down;
        rising += up;
    }
    return falling - rising;
}
