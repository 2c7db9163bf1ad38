// SPDX-License-Identifier: MIT
//
// A 3 x 3 matrix, for attitudes and for what a magnetometer makes of the field.
//
//     const Point3 field = softIron * earth + hardIron;
#pragma once

#include "survey/Point.h"

#include <array>
#include <cstddef>

namespace simulation {

using tiltpole::survey::Point3;

/// By rows. The identity unless given.
struct Matrix
{
    std::array<Point3, 3> rows{
        Point3{1.0, 0.0, 0.0},
        Point3{0.0, 1.0, 0.0},
        Point3{0.0, 0.0, 1.0}
    };

    /// @param j  0, 1 or 2
    constexpr Point3 Column(int j) const
    {
        return j == 0   ? Point3{rows[0].x, rows[1].x, rows[2].x}
               : j == 1 ? Point3{rows[0].y, rows[1].y, rows[2].y}
                        : Point3{rows[0].z, rows[1].z, rows[2].z};
    }

    constexpr Matrix Transposed() const
    {
        return {
            {Column(0), Column(1), Column(2)}
        };
    }

    friend constexpr Point3 operator*(const Matrix& m, const Point3& v)
    {
        return {Dot(m.rows[0], v), Dot(m.rows[1], v), Dot(m.rows[2], v)};
    }

    friend constexpr Matrix operator*(const Matrix& a, const Matrix& b)
    {
        const Point3 c0 = b.Column(0);
        const Point3 c1 = b.Column(1);
        const Point3 c2 = b.Column(2);
        Matrix product;
        for (std::size_t i = 0; i < 3; ++i)
            product.rows[i] = {Dot(a.rows[i], c0), Dot(a.rows[i], c1), Dot(a.rows[i], c2)};
        return product;
    }
};

} // namespace simulation
