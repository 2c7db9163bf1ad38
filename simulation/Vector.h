// SPDX-License-Identifier: MIT
//
// Three numbers and nine: just what attitudes and fields need.
#pragma once

#include <array>
#include <cmath>

namespace simulation {

struct Vector
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend constexpr Vector operator+(const Vector& a, const Vector& b)
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr Vector operator-(const Vector& a, const Vector& b)
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr Vector operator*(double s, const Vector& v)
    {
        return {s * v.x, s * v.y, s * v.z};
    }
};

constexpr double Dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double Length(const Vector& v)
{
    return std::sqrt(Dot(v, v));
}

/// A 3 x 3 matrix by rows.
struct Matrix
{
    std::array<Vector, 3> rows{
        Vector{1.0, 0.0, 0.0},
        Vector{0.0, 1.0, 0.0},
        Vector{0.0, 0.0, 1.0}
    };

    constexpr Vector Column(int j) const
    {
        return j == 0   ? Vector{rows[0].x, rows[1].x, rows[2].x}
               : j == 1 ? Vector{rows[0].y, rows[1].y, rows[2].y}
                        : Vector{rows[0].z, rows[1].z, rows[2].z};
    }

    constexpr Matrix Transposed() const
    {
        return {
            {Column(0), Column(1), Column(2)}
        };
    }

    friend constexpr Vector operator*(const Matrix& m, const Vector& v)
    {
        return {Dot(m.rows[0], v), Dot(m.rows[1], v), Dot(m.rows[2], v)};
    }

    friend constexpr Matrix operator*(const Matrix& a, const Matrix& b)
    {
        const Vector c0 = b.Column(0);
        const Vector c1 = b.Column(1);
        const Vector c2 = b.Column(2);
        Matrix product;
        for (std::size_t i = 0; i < 3; ++i)
            product.rows[i] = {Dot(a.rows[i], c0), Dot(a.rows[i], c1), Dot(a.rows[i], c2)};
        return product;
    }
};

} // namespace simulation
