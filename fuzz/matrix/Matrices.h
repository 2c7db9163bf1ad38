// SPDX-License-Identifier: MIT
//
// Matrices of any elements from the bytes of a run, and the comparison with the literal ones by bits.
#pragma once

#include "fuzz/Input.h"
#include "tests/matrix/MatrixTools.h"

namespace fuzz {

/// Elements of few values where the first byte says so: such matrices are singular now and then.
inline literal::Matrix MatrixOf(Input& input, int rows, int columns)
{
    literal::Matrix matrix(rows, columns);
    const unsigned kind = input.Byte();
    for (double& element : matrix.elements)
        element = kind % 4 == 0   ? input.Below(5) - 2.0
                  : kind % 4 == 1 ? input.Between(-10.0, 10.0)
                                  : input.Number();
    return matrix;
}

inline literal::Matrix SymmetricOf(Input& input, int size)
{
    literal::Matrix matrix = MatrixOf(input, size, size);
    for (int r = 0; r < size; ++r)
        for (int c = 0; c < r; ++c)
            matrix.Set(r, c, matrix.Get(c, r));
    return matrix;
}

template <class Matrix>
void RequireSame(const Matrix& given, const literal::Matrix& expected)
{
    const literal::Matrix matrix = matrixtest::Read(given);
    Require(matrix.rows == expected.rows && matrix.cols == expected.cols);
    for (std::size_t i = 0; i < matrix.elements.size(); ++i)
        Require(AreSame(matrix.elements[i], expected.elements[i]));
}

} // namespace fuzz
