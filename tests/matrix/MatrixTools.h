// SPDX-License-Identifier: MIT
//
// Bridges between the matrix classes and the literal oracle, comparison by bits, and matrices with
// every kind of element that may turn up.
#pragma once

#include "matrix/SZMatrix.h"
#include "matrix/TiltMatrix.h"
#include "tests/reference/LiteralMatrix.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <random>
#include <string_view>

namespace matrixtest {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kDenormal = 1e-320;

// The given elements row by row.
inline literal::Matrix Filled(int rows, int cols, std::initializer_list<double> elements)
{
    literal::Matrix m(rows, cols);
    m.elements = elements;
    return m;
}

// A matrix as text: "1 2; 3 1/3" has two rows. inf and nan are elements, too.
inline literal::Matrix Of(std::string_view text)
{
    literal::Matrix m;
    const auto number = [&text] {
        double x = 0.0;
        const auto end = std::from_chars(text.data(), text.data() + text.size(), x).ptr;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return x;
    };
    m.rows = 1;
    while (!text.empty()) {
        double x = number();
        if (text.starts_with('/')) {
            text.remove_prefix(1);
            x /= number();
        }
        m.elements.push_back(x);
        if (m.rows == 1) ++m.cols;
        if (text.starts_with(';')) {
            ++m.rows;
            text.remove_prefix(1);
        }
        while (text.starts_with(' '))
            text.remove_prefix(1);
    }
    return m;
}

inline CSZMatrix Checked(const literal::Matrix& m)
{
    return {m.elements.data(), static_cast<int>(m.elements.size()), m.rows, m.cols};
}

inline CTiltMatrix Tilt(const literal::Matrix& m)
{
    CTiltMatrix out(static_cast<unsigned>(m.rows), static_cast<unsigned>(m.cols));
    for (unsigned r = 0; r < out.GetRow(); ++r)
        for (unsigned c = 0; c < out.GetCol(); ++c)
            out.SetData(r, c, m.Get(static_cast<int>(r), static_cast<int>(c)));
    return out;
}

inline CSZMatrix Checked(std::string_view text)
{
    return Checked(Of(text));
}
inline CTiltMatrix Tilt(std::string_view text)
{
    return Tilt(Of(text));
}

inline literal::Matrix Read(const literal::Matrix& m)
{
    return m;
}

inline literal::Matrix Read(const CSZMatrix& m)
{
    literal::Matrix out(m.getRowSize(), m.getColSize());
    for (int r = 0; r < out.rows; ++r)
        for (int c = 0; c < out.cols; ++c)
            out.Set(r, c, m.GetData(r, c));
    return out;
}

inline literal::Matrix Read(const CTiltMatrix& m)
{
    literal::Matrix out(static_cast<int>(m.GetRow()), static_cast<int>(m.GetCol()));
    for (unsigned r = 0; r < m.GetRow(); ++r)
        for (unsigned c = 0; c < m.GetCol(); ++c)
            out.Set(static_cast<int>(r), static_cast<int>(c), m.GetData(r, c));
    return out;
}

// The same bits, so that 0 and -0 differ; any two that are no numbers are the same.
inline bool SameBits(double a, double b)
{
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// matrix == expected, in size and in every bit.
MATCHER_P(Equals, expected, "")
{
    const literal::Matrix a = Read(arg);
    const literal::Matrix b = Read(expected);
    if (a.rows != b.rows || a.cols != b.cols) {
        *result_listener << a.rows << " x " << a.cols << " instead of " << b.rows << " x "
                         << b.cols;
        return false;
    }
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < a.cols; ++c)
            if (!SameBits(a.Get(r, c), b.Get(r, c))) {
                *result_listener << "(" << r << ", " << c << ") is " << a.Get(r, c)
                                 << " instead of " << b.Get(r, c);
                return false;
            }
    return true;
}

// The same size, every element within `tolerance`.
MATCHER_P2(IsNear, expected, tolerance, "")
{
    const literal::Matrix a = Read(arg);
    const literal::Matrix b = Read(expected);
    if (a.rows != b.rows || a.cols != b.cols) {
        *result_listener << a.rows << " x " << a.cols << " instead of " << b.rows << " x "
                         << b.cols;
        return false;
    }
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < a.cols; ++c)
            if (!(std::fabs(a.Get(r, c) - b.Get(r, c)) <= tolerance)) {
                *result_listener << "(" << r << ", " << c << ") is " << a.Get(r, c)
                                 << " instead of " << b.Get(r, c);
                return false;
            }
    return true;
}

MATCHER(IsEmpty, "")
{
    const literal::Matrix m = Read(arg);
    *result_listener << m.rows << " x " << m.cols;
    return m.rows == 0 && m.cols == 0;
}

// What the elements of a made matrix are like.
enum class Kind { Usual, Integers, Rankless, Wide, Special, Count };

// Matrices of one kind after the other, the same in every run.
class Maker
{
public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    literal::Matrix Any(int rows, int cols, Kind kind)
    {
        literal::Matrix m(rows, cols);
        for (double& x : m.elements)
            x = Element(kind);
        if (kind == Kind::Rankless && rows > 1) // the last row repeats the first
            for (int c = 0; c < cols; ++c)
                m.Set(rows - 1, c, m.Get(0, c));
        return m;
    }

    literal::Matrix Symmetric(int n, Kind kind)
    {
        literal::Matrix m = Any(n, n, kind);
        for (int r = 0; r < n; ++r)
            for (int c = 0; c < r; ++c)
                m.Set(r, c, m.Get(c, r));
        return m;
    }

    int Between(int low, int high) { return std::uniform_int_distribution<>(low, high)(m_random); }

private:
    double Element(Kind kind)
    {
        switch (kind) {
        case Kind::Integers:
        case Kind::Rankless:
            return Between(-4, 4);
        case Kind::Wide:
            return std::ldexp(Uniform(), Between(-900, 900));
        case Kind::Special:
            return Between(0, 3) == 0 ? Odd() : Uniform();
        default:
            return Uniform();
        }
    }
    double Uniform() { return std::uniform_real_distribution<>(-10.0, 10.0)(m_random); }
    double Odd()
    {
        const double odd[] = {0.0,        -0.0, kDenormal, -kDenormal, kInfinity,
                              -kInfinity, kNaN, DBL_MIN,   DBL_MAX,    1.0};
        return odd[Between(0, 9)];
    }

    std::mt19937 m_random;
};

inline constexpr Kind kKinds[] = {Kind::Usual, Kind::Integers, Kind::Rankless, Kind::Wide,
                                  Kind::Special};

// What a failed expectation shows of a matrix.
inline void Show(const literal::Matrix& m, std::ostream* out)
{
    *out << m.rows << " x " << m.cols << " [";
    for (int r = 0; r < m.rows; ++r) {
        *out << (r == 0 ? "" : "; ");
        for (int c = 0; c < m.cols; ++c)
            *out << (c == 0 ? "" : " ") << m.Get(r, c);
    }
    *out << ']';
}

} // namespace matrixtest

namespace literal {
inline void PrintTo(const Matrix& m, std::ostream* out)
{
    matrixtest::Show(m, out);
}
} // namespace literal
inline void PrintTo(const CSZMatrix& m, std::ostream* out)
{
    matrixtest::Show(matrixtest::Read(m), out);
}
inline void PrintTo(const CTiltMatrix& m, std::ostream* out)
{
    matrixtest::Show(matrixtest::Read(m), out);
}
