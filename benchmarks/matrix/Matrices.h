// SPDX-License-Identifier: MIT
//
// The matrices that are timed, the same in every run.
#pragma once

#include "tests/reference/LiteralMatrix.h"

#include <random>

inline literal::Matrix Random(int rows, int cols)
{
    std::mt19937 random(static_cast<unsigned>(rows * 1000 + cols));
    std::uniform_real_distribution<> uniform(-1.0, 1.0);
    literal::Matrix m(rows, cols);
    for (double& x : m.elements)
        x = uniform(random);
    return m;
}

inline literal::Matrix PositiveDefinite(int n)
{
    const literal::Matrix a = Random(n, n);
    literal::Matrix m = literal::Product(a, literal::Transpose(a));
    for (int i = 0; i < n; ++i)
        m.Set(i, i, m.Get(i, i) + 0.1);
    return m;
}
