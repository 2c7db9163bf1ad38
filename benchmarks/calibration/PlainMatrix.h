// SPDX-License-Identifier: MIT
//
// A checked matrix in the plainest form: every access tested, every result built and copied out.
// What the literal ports of the benchmarks compute with.
#pragma once

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace plain {

class Matrix
{
public:
    Matrix(int rows, int columns)
        : m_Rows(rows), m_Columns(columns),
          m_Data(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns))
    {}

    int Rows() const { return m_Rows; }
    int Columns() const { return m_Columns; }
    double Get(int r, int c) const { return Holds(r, c) ? m_Data[At(r, c)] : 0.0; }
    void Set(int r, int c, double v)
    {
        if (Holds(r, c)) m_Data[At(r, c)] = v;
    }

    static Matrix Identity(int n)
    {
        Matrix I(n, n);
        for (int i = 0; i < n; ++i)
            I.Set(i, i, 1);
        return I;
    }

    Matrix Transpose() const
    {
        Matrix t(m_Columns, m_Rows);
        for (int r = 0; r < m_Rows; ++r)
            for (int c = 0; c < m_Columns; ++c)
                t.Set(c, r, Get(r, c));
        return t;
    }

    Matrix operator*(const Matrix& b) const
    {
        Matrix p(m_Rows, b.m_Columns);
        for (int r = 0; r < m_Rows; ++r)
            for (int c = 0; c < b.m_Columns; ++c) {
                double sum = 0;
                for (int k = 0; k < m_Columns; ++k)
                    sum += Get(r, k) * b.Get(k, c);
                p.Set(r, c, sum);
            }
        return p;
    }

    Matrix operator+(const Matrix& b) const { return Combined(b, 1); }
    Matrix operator-(const Matrix& b) const { return Combined(b, -1); }

    // Gauss-Jordan with full pivots.
    Matrix Inverse() const
    {
        Matrix m(*this);
        const int n = m_Rows;
        std::vector<std::pair<int, int>> swaps;
        for (int k = 0; k < n; ++k) {
            int pr = k, pc = k;
            for (int r = k; r < n; ++r)
                for (int c = k; c < n; ++c)
                    if (std::fabs(m.Get(r, c)) > std::fabs(m.Get(pr, pc))) pr = r, pc = c;
            swaps.emplace_back(pr, pc);
            m.SwapRows(k, pr);
            m.SwapColumns(k, pc);
            m.Eliminate(k);
        }
        for (int k = n - 1; k >= 0; --k) {
            m.SwapRows(k, swaps[static_cast<std::size_t>(k)].second);
            m.SwapColumns(k, swaps[static_cast<std::size_t>(k)].first);
        }
        return m;
    }

private:
    bool Holds(int r, int c) const { return r >= 0 && r < m_Rows && c >= 0 && c < m_Columns; }
    std::size_t At(int r, int c) const
    {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(m_Columns)
               + static_cast<std::size_t>(c);
    }

    Matrix Combined(const Matrix& b, double sign) const
    {
        Matrix s(m_Rows, m_Columns);
        for (int r = 0; r < m_Rows; ++r)
            for (int c = 0; c < m_Columns; ++c)
                s.Set(r, c, Get(r, c) + sign * b.Get(r, c));
        return s;
    }

    void SwapRows(int a, int b)
    {
        for (int c = 0; a != b && c < m_Columns; ++c)
            std::swap(m_Data[At(a, c)], m_Data[At(b, c)]);
    }
    void SwapColumns(int a, int b)
    {
        for (int r = 0; a != b && r < m_Rows; ++r)
            std::swap(m_Data[At(r, a)], m_Data[At(r, b)]);
    }

    void Eliminate(int k)
    {
        const double pivot = 1 / Get(k, k);
        Set(k, k, pivot);
        for (int c = 0; c < m_Columns; ++c)
            if (c != k) Set(k, c, Get(k, c) * pivot);
        for (int r = 0; r < m_Rows; ++r)
            for (int c = 0; r != k && c < m_Columns; ++c)
                if (c != k) Set(r, c, Get(r, c) - Get(r, k) * Get(k, c));
        for (int r = 0; r < m_Rows; ++r)
            if (r != k) Set(r, k, -Get(r, k) * pivot);
    }

    int m_Rows;
    int m_Columns;
    std::vector<double> m_Data;
};

} // namespace plain
