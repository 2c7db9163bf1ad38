// SPDX-License-Identifier: MIT
//
// The matrix rules written out one element at a time over a vector, as an oracle: checked access
// everywhere, no kernel, no storage trick, nothing taken from the library.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace literal {

struct Matrix
{
    int rows = 0;
    int cols = 0;
    std::vector<double> elements;

    Matrix() = default;
    Matrix(int r, int c)
    {
        if (r < 1 || c < 1) return;
        rows = r;
        cols = c;
        elements.assign(static_cast<std::size_t>(r) * static_cast<std::size_t>(c), 0.0);
    }

    bool Holds(int r, int c) const { return 0 <= r && r < rows && 0 <= c && c < cols; }
    std::size_t At(int r, int c) const
    {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(cols)
               + static_cast<std::size_t>(c);
    }
    double Get(int r, int c) const { return Holds(r, c) ? elements.at(At(r, c)) : 0.0; }
    bool Set(int r, int c, double v)
    {
        if (!Holds(r, c)) return false;
        elements.at(At(r, c)) = v;
        return true;
    }
};

inline Matrix Identity(int n)
{
    Matrix m(n, n);
    for (int i = 0; i < n; ++i)
        m.Set(i, i, 1.0);
    return m;
}

template <class Combine>
Matrix Combined(const Matrix& a, const Matrix& b, Combine combine)
{
    Matrix out(a.rows, a.cols);
    if (a.rows != b.rows || a.cols != b.cols) return out;
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < a.cols; ++c)
            out.Set(r, c, combine(a.Get(r, c), b.Get(r, c)));
    return out;
}

inline Matrix Product(const Matrix& a, const Matrix& b)
{
    Matrix out(a.rows, b.cols);
    if (a.cols != b.rows) return out;
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < b.cols; ++c) {
            double sum = 0.0;
            for (int k = 0; k < a.cols; ++k)
                sum = sum + a.Get(r, k) * b.Get(k, c);
            out.Set(r, c, sum);
        }
    return out;
}

inline Matrix Transpose(const Matrix& a)
{
    Matrix out(a.cols, a.rows);
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < a.cols; ++c)
            out.Set(c, r, a.Get(r, c));
    return out;
}

inline Matrix Block(const Matrix& a, int r0, int nr, int c0, int nc)
{
    Matrix out(nr, nc);
    for (int r = 0; r < out.rows; ++r)
        for (int c = 0; c < out.cols; ++c)
            out.Set(r, c, a.Get(r0 + r, c0 + c));
    return out;
}

inline Matrix Slice(const Matrix& a, int r0, int c0, int r1, int c1)
{
    if (!a.Holds(r0, c0) || !a.Holds(r1, c1)) return {};
    return Block(a, r0, r1 - r0 + 1, c0, c1 - c0 + 1);
}

// Every row outside r0 ... r0 + n - 1 is handed on in order; rows that find no place are dropped.
inline Matrix DeleteRow(const Matrix& a, int r0, int n)
{
    if (r0 < 0 || r0 >= a.rows || n < 0 || n > a.rows) return {};
    Matrix out(a.rows - n, a.cols);
    int next = 0;
    for (int r = 0; r < a.rows; ++r) {
        if (r >= r0 && r <= r0 + n - 1) continue;
        for (int c = 0; c < a.cols; ++c)
            out.Set(next, c, a.Get(r, c));
        ++next;
    }
    return out;
}

inline Matrix DeleteCol(const Matrix& a, int c0, int n)
{
    return Transpose(DeleteRow(Transpose(a), c0, n));
}

enum class PivotTest { SmallestNormal, BesideOne, None };

struct Inverse
{
    Matrix matrix;
    bool completed = false;
};

inline void SwapRows(Matrix& m, int i, int j)
{
    for (int c = 0; c < m.cols; ++c) {
        const double held = m.Get(i, c);
        m.Set(i, c, m.Get(j, c));
        m.Set(j, c, held);
    }
}

inline void SwapCols(Matrix& m, int i, int j)
{
    for (int r = 0; r < m.rows; ++r) {
        const double held = m.Get(r, i);
        m.Set(r, i, m.Get(r, j));
        m.Set(r, j, held);
    }
}

inline Inverse GaussJordan(Matrix m, PivotTest test)
{
    const int n = m.rows;
    std::vector<int> rowOf(static_cast<std::size_t>(n));
    std::vector<int> colOf(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) {
        int& pivotRow = rowOf.at(static_cast<std::size_t>(k)) = k;
        int& pivotCol = colOf.at(static_cast<std::size_t>(k)) = k;
        double largest = 0.0;
        for (int i = k; i < n; ++i)
            for (int j = k; j < n; ++j)
                if (std::fabs(m.Get(i, j)) > largest) {
                    largest = std::fabs(m.Get(i, j));
                    pivotRow = i;
                    pivotCol = j;
                }
        if (test == PivotTest::SmallestNormal && largest < DBL_MIN) return {m, false};
        if (test == PivotTest::BesideOne && largest + 1.0 == 1.0) return {m, false};
        SwapRows(m, k, pivotRow);
        SwapCols(m, k, pivotCol);
        m.Set(k, k, 1.0 / m.Get(k, k));
        for (int j = 0; j < n; ++j)
            if (j != k) m.Set(k, j, m.Get(k, j) * m.Get(k, k));
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if (i != k && j != k) m.Set(i, j, m.Get(i, j) - m.Get(i, k) * m.Get(k, j));
        for (int i = 0; i < n; ++i)
            if (i != k) m.Set(i, k, -m.Get(i, k) * m.Get(k, k));
    }
    for (int k = n - 1; k >= 0; --k) {
        SwapRows(m, k, colOf.at(static_cast<std::size_t>(k)));
        SwapCols(m, k, rowOf.at(static_cast<std::size_t>(k)));
    }
    return {m, true};
}

inline Matrix Inverted(const Matrix& a)
{
    return a.rows == a.cols ? GaussJordan(a, PivotTest::SmallestNormal).matrix
                            : Matrix(a.rows, a.cols);
}

inline bool IsSymmetric(const Matrix& a)
{
    if (a.rows < 1 || a.rows != a.cols) return false;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < i; ++j)
            if (!(std::fabs(a.Get(j, i) - a.Get(i, j)) <= DBL_EPSILON)) return false;
    return true;
}

// The factor and whether it was completed.
inline std::pair<Matrix, bool> Cholesky(const Matrix& a)
{
    const int n = a.rows;
    Matrix l(a.rows, a.cols);
    if (!IsSymmetric(a)) return {l, false};
    for (int i = 0; i < n; ++i)
        for (int j = i; j < n; ++j) {
            double left = a.Get(i, j);
            for (int k = i - 1; k >= 0; --k)
                left = left - l.Get(i, k) * l.Get(j, k);
            if (i == j) {
                if (left < DBL_MIN) return {l, false};
                l.Set(i, i, std::sqrt(left));
            } else {
                l.Set(j, i, left / l.Get(i, i));
            }
        }
    return {l, true};
}

inline Matrix Rotation(const Matrix& a, int p, int q, double tol)
{
    Matrix j = Identity(a.rows);
    const double pq = a.Get(p, q);
    if (std::fabs(pq - a.Get(q, p)) > tol || std::fabs(pq) < tol) return j;
    const double theta = (a.Get(p, p) - a.Get(q, q)) / pq / 2.0;
    double t = 1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta));
    if (theta < 0.0) t = -t;
    const double c = 1.0 / std::sqrt(1.0 + t * t);
    const double s = t * c;
    j.Set(p, p, c);
    j.Set(q, q, c);
    j.Set(p, q, -s);
    j.Set(q, p, s);
    return j;
}

struct Eigen
{
    Matrix vectors, values;
};

// Full matrix products for every rotation. Nothing where `sweeps` did not suffice.
inline std::optional<Eigen> Jacobi(const Matrix& a, double tol, int sweeps = 60)
{
    Matrix v = Identity(a.rows);
    Matrix d = a;
    for (; sweeps > 0; --sweeps) {
        for (int p = 0; p < a.rows; ++p)
            for (int q = p + 1; q < a.rows; ++q) {
                const Matrix j = Rotation(d, p, q, tol);
                d = Product(Product(Transpose(j), d), j);
                v = Product(v, j);
            }
        bool again = false;
        for (int i = 0; i < d.rows; ++i)
            for (int j = i + 1; j < d.cols; ++j)
                again = again || std::fabs(d.Get(i, j)) > tol;
        if (!again) return Eigen{v, d};
    }
    return std::nullopt;
}

} // namespace literal
