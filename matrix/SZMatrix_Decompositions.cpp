// SPDX-License-Identifier: MIT
#include "matrix/SZMatrix.h"

#include "matrix/detail/Kernels.h"
#include "matrix/detail/PlaneRotation.h"

#include <algorithm>
#include <cfloat>
#include <chrono>
#include <cmath>
#include <thread>

namespace matrix = tiltpole::matrix;

namespace {

constexpr double kSymmetryTolerance = DBL_EPSILON;
constexpr double kSmallestDivisor = DBL_MIN;
constexpr double kNoCondition = 999999.0;

[[noreturn]] void NeverReturn()
{
    // The volatile read keeps a compiler from concluding that the loop ends.
    const volatile bool always = true;
    while (always)
        std::this_thread::sleep_for(std::chrono::seconds(1));
    __builtin_unreachable();
}

} // namespace

CSZMatrix CSZMatrix::matTran() const
{
    CSZMatrix transpose(m_nCols, m_nRows, Fill::Nothing);
    matrix::Transpose(m_Data.Data(), transpose.m_Data.Data(), transpose.m_nCols, transpose.m_nRows);
    return transpose;
}

CSZMatrix CSZMatrix::matInv() const
{
    CSZMatrix inverse(m_nRows, m_nCols, IsSquare() ? Fill::Nothing : Fill::Zero);
    if (!IsSquare()) return inverse;
    std::copy_n(m_Data.Data(), inverse.Count(), inverse.m_Data.Data());
    const auto outcome =
        matrix::Invert(inverse.m_Data.Data(), inverse.m_nRows, matrix::PivotFloor::SmallestNormal);
    if (outcome == matrix::Outcome::NoMemory) {
        inverse.Clear();
        inverse.m_bHealthy = false;
    }
    return inverse;
}

CSZMatrix CSZMatrix::UpperMatInv() const
{
    const int n = IsSquare() ? m_nRows : 0;
    CSZMatrix inverse(n, n, Fill::Zero);
    for (int j = 0; j < inverse.m_nRows; ++j) {
        if (std::fabs(GetData(j, j)) < kSmallestDivisor) return {0, 0, Fill::Nothing};
        inverse.SetData(j, j, 1.0 / GetData(j, j));
        for (int i = j - 1; i >= 0; --i) {
            double sum = 0.0;
            for (int k = i + 1; k <= j; ++k)
                sum += GetData(i, k) * inverse.GetData(k, j);
            inverse.SetData(i, j, -sum / GetData(i, i));
        }
    }
    return inverse;
}

CSZMatrix CSZMatrix::LowerMatInv() const
{
    return matTran().UpperMatInv().matTran();
}

bool CSZMatrix::cholesky(CSZMatrix& L) const
{
    if (!L.Alloc(m_nRows, m_nCols) || !isSymmetric()) return false;
    if (&L == this) return false; // all 0 by now
    return matrix::FactorCholesky(m_Data.Data(), L.m_Data.Data(), m_nRows,
                                  matrix::PivotFloor::SmallestNormal)
           == matrix::Outcome::Done;
}

namespace {

// A = F * D * F^T with F unit triangular. `at` maps the order of elimination to indices: rising for
// a lower F, falling for an upper one.
template <class Order>
void FactorUnitTriangular(const CSZMatrix& A, CSZMatrix& F, CSZMatrix& D, Order at)
{
    const int n = A.getRowSize();
    const auto remainder = [&](int i, int j) {
        double left = A.GetData(at(i), at(j));
        for (int k = 0; k < j; ++k)
            left -= F.GetData(at(i), at(k)) * F.GetData(at(j), at(k)) * D.GetData(at(k), at(k));
        return left;
    };
    for (int j = 0; j < n; ++j) {
        const double divisor = remainder(j, j);
        D.SetData(at(j), at(j), divisor);
        const bool divides = std::fabs(divisor) > kSmallestDivisor;
        for (int i = j + 1; i < n; ++i)
            F.SetData(at(i), at(j), divides ? remainder(i, j) / divisor : 0.0);
    }
}

bool PrepareFactors(int n, CSZMatrix& F, CSZMatrix& D)
{
    return F.Alloc(n, n) && F.setDiagonal(1.0) && D.Alloc(n, n);
}

} // namespace

bool CSZMatrix::ldl(CSZMatrix& L, CSZMatrix& D) const
{
    const CSZMatrix A(*this); // L or D may be this matrix
    if (!A.IsSquare() || !PrepareFactors(A.m_nRows, L, D)) return false;
    FactorUnitTriangular(A, L, D, [](int i) { return i; });
    return true;
}

bool CSZMatrix::udu(CSZMatrix& U, CSZMatrix& D) const
{
    const CSZMatrix A(*this); // U or D may be this matrix
    if (!A.IsSquare() || !PrepareFactors(A.m_nRows, U, D)) return false;
    FactorUnitTriangular(A, U, D, [last = A.m_nRows - 1](int i) { return last - i; });
    return true;
}

bool CSZMatrix::LDLdecompostion(CSZMatrix& L, CSZMatrix& D)
{
    const int n = m_nRows;
    if (!IsSquare() || !PrepareFactors(n, L, D)) return false;
    for (int j = 0; j < n; ++j) {
        const double pivot = GetData(j, j);
        if (!(pivot >= kSmallestDivisor)) return false;
        const double root = std::sqrt(pivot);
        for (int i = j; i < n; ++i)
            SetData(i, j, GetData(i, j) / root);
        for (int i = j + 1; i < n; ++i)
            for (int k = j + 1; k <= i; ++k)
                SetData(i, k, GetData(i, k) - GetData(i, j) * GetData(k, j));
        D.SetData(j, j, pivot);
        for (int i = j + 1; i < n; ++i)
            L.SetData(i, j, GetData(i, j) / GetData(j, j));
    }
    return true;
}

bool CSZMatrix::isSymmetric() const
{
    if (!IsSquare()) return false;
    const double* const a = m_Data.Data();
    for (int i = 1; i < m_nRows; ++i)
        for (int j = 0; j < i; ++j)
            if (!(std::fabs(a[At(j, i)] - a[At(i, j)]) <= kSymmetryTolerance)) return false;
    return true;
}

namespace {

// The identity where the pair is smaller than `tol` or its halves differ by more than that.
matrix::PlaneRotation PairRotation(const CSZMatrix& A, int p, int q, double tol)
{
    const double pq = A.GetData(p, q);
    if (std::fabs(pq - A.GetData(q, p)) > tol || std::fabs(pq) < tol) return {};
    return matrix::ZeroingRotation(A.GetData(p, p), A.GetData(q, q), pq);
}

CSZMatrix RotationMatrix(int n, int p, int q, matrix::PlaneRotation rotation)
{
    CSZMatrix J(n, n, MatIdentity);
    J.SetData(p, p, rotation.cosine);
    J.SetData(q, q, rotation.cosine);
    J.SetData(p, q, -rotation.sine);
    J.SetData(q, p, rotation.sine);
    return J;
}

// Rotations keep the sum of squares, so no product of numbers this small leaves the finite range.
bool StaysFinite(const double* elements, std::size_t count)
{
    constexpr double kLargest = 1e150;
    return std::all_of(elements, elements + count,
                       [](double x) { return std::fabs(x) < kLargest; });
}

bool HasElementAboveDiagonal(const CSZMatrix& D, double tol)
{
    for (int i = 0; i < D.getRowSize(); ++i)
        for (int j = i + 1; j < D.getColSize(); ++j)
            if (std::fabs(D.GetData(i, j)) > tol) return true;
    return false;
}

} // namespace

CSZMatrix CSZMatrix::JacobiDouble(int p, int q, double tol) const
{
    if (!IsSquare() || !checkRowIndex(p) || !checkRowIndex(q))
        return {m_nRows, m_nRows, MatIdentity};
    return RotationMatrix(m_nRows, p, q, PairRotation(*this, p, q, tol));
}

// Sets D = J^T * D * J and Vt = J^T * Vt by full products, which carry infinite elements and those
// that are no numbers into the others.
void CSZMatrix::RotateByProducts(CSZMatrix& D, CSZMatrix& Vt, const CSZMatrix& J)
{
    const CSZMatrix Jt = J.matTran();
    D = Jt * D * J;
    Vt = Jt * Vt;
}

// The same for finite elements: only the lines p and q change.
void CSZMatrix::RotateLines(CSZMatrix& D, CSZMatrix& Vt, int p, int q, matrix::PlaneRotation J)
{
    const int n = D.m_nRows;
    matrix::RotateRows(D.m_Data.Data(), n, p, q, J);
    matrix::RotateColumns(D.m_Data.Data(), n, p, q, J);
    matrix::RotateRows(Vt.m_Data.Data(), n, p, q, J);
}

bool CSZMatrix::Jacobi(CSZMatrix& V, CSZMatrix& D, double tol) const
{
    const int n = m_nRows;
    const bool symmetric = isSymmetric();
    V.Alloc(n, n);
    V.setDiagonal(1.0);
    D = *this;
    if (!symmetric) NeverReturn();
    if (V.m_nRows != n || D.m_nRows != n) return false;

    // V is kept transposed while rotations are collected. A full product turns -0 into 0, also
    // where it leaves an element as it is; adding 0 once does the same.
    bool finite = StaysFinite(D.m_Data.Data(), D.Count());
    bool first = true;
    do {
        for (int p = 0; p < n; ++p)
            for (int q = p + 1; q < n; ++q) {
                const matrix::PlaneRotation J = PairRotation(D, p, q, tol);
                finite = finite && std::isfinite(J.cosine);
                if (!finite) {
                    RotateByProducts(D, V, D.JacobiDouble(p, q, tol));
                    continue;
                }
                if (first) D += 0.0;
                first = false;
                if (J.sine != 0.0) RotateLines(D, V, p, q, J);
            }
    } while (HasElementAboveDiagonal(D, tol));
    V = V.matTran();
    return V.m_nRows == n && D.m_nRows == n;
}

bool CSZMatrix::QR_Schmidt(CSZMatrix& Q, CSZMatrix& R, double tol) const
{
    const CSZMatrix A(*this); // Q or R may be this matrix
    const int rows = A.m_nRows;
    const int cols = A.m_nCols;
    if (!A.HasElements() || cols > rows || !R.Alloc(cols, cols) || !(Q = A)) return false;
    const auto dot = [&Q, rows](int a, int b) {
        double sum = 0.0;
        for (int i = 0; i < rows; ++i)
            sum += Q.GetData(i, a) * Q.GetData(i, b);
        return sum;
    };
    for (int j = 0; j < cols; ++j) {
        const double length = std::sqrt(dot(j, j));
        if (length < tol) return false;
        R.SetData(j, j, length);
        for (int i = 0; i < rows; ++i)
            Q.SetData(i, j, Q.GetData(i, j) / length);
        for (int c = j + 1; c < cols; ++c) {
            const double along = dot(j, c);
            R.SetData(j, c, along);
            for (int i = 0; i < rows; ++i)
                Q.SetData(i, c, Q.GetData(i, c) - along * Q.GetData(i, j));
        }
    }
    return true;
}

double CSZMatrix::trace() const
{
    double sum = 0.0;
    if (m_nRows == m_nCols)
        for (int i = 0; i < m_nRows; ++i)
            sum += GetData(i, i);
    return sum;
}

double CSZMatrix::norm() const
{
    if (m_nRows != 1 && m_nCols != 1) return 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < Count(); ++i) {
        const double x = m_Data.Data()[i];
        sum += x * x;
    }
    return sum;
}

double CSZMatrix::vecModulus() const
{
    return std::sqrt(norm());
}

double CSZMatrix::infiniteNorm() const
{
    double largest = 0.0;
    for (int r = 0; r < m_nRows; ++r) {
        double sum = 0.0;
        for (int c = 0; c < m_nCols; ++c)
            sum += std::fabs(GetData(r, c));
        if (sum > largest) largest = sum;
    }
    return largest;
}

double CSZMatrix::condition() const
{
    if (!IsSquare()) return kNoCondition;
    const CSZMatrix inverse = matInv();
    return inverse.m_bHealthy ? infiniteNorm() * inverse.infiniteNorm() : kNoCondition;
}

bool CSZMatrix::IsVector3() const
{
    return (m_nRows == 3 && m_nCols == 1) || (m_nRows == 1 && m_nCols == 3);
}

CSZMatrix CSZMatrix::cross(const CSZMatrix& b) const
{
    CSZMatrix product(3, 1);
    if (!IsVector3() || !b.IsVector3()) return product;
    const double* u = m_Data.Data();
    const double* v = b.m_Data.Data();
    product.SetData(0, u[1] * v[2] - u[2] * v[1]);
    product.SetData(1, -(u[0] * v[2] - u[2] * v[0]));
    product.SetData(2, u[0] * v[1] - u[1] * v[0]);
    return product;
}

CSZMatrix CSZMatrix::skewSymm3() const
{
    if (!IsVector3()) return {3, 3};
    const double* v = m_Data.Data();
    const double skew[] = {0.0,   -v[2], v[1],  //
                           v[2],  0.0,   -v[0], //
                           -v[1], v[0],  0.0};
    return {skew, 9, 3, 3};
}

CSZMatrix CSZMatrix::skewSymm4() const
{
    if (!IsVector3()) return {4, 4};
    const double* w = m_Data.Data();
    const double skew[] = {0.0,  -w[0], -w[1], -w[2], //
                           w[0], 0.0,   w[2],  -w[1], //
                           w[1], -w[2], 0.0,   w[0],  //
                           w[2], w[1],  -w[0], 0.0};
    return {skew, 16, 4, 4};
}
