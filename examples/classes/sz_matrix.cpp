// SPDX-License-Identifier: MIT
//
// CSZMatrix: a system of equations, and how a failure shows.
#include "matrix/SZMatrix.h"

#include <cstdio>

int main()
{
    const CSZMatrix A(2, 2, 4, 2.0, 1.0, 1.0, 3.0); // rows, columns, number of values, values
    const CSZMatrix b(2, 1, 2, 5.0, 10.0);
    const CSZMatrix x = A.matInv() * b;
    std::printf("x = %.3f, y = %.3f\n", x.GetData(0, 0), x.GetData(1, 0));

    CSZMatrix L;
    if (A.cholesky(L)) std::printf("%ls", L.toString(8, 3, 'f').GetString());

    const CSZMatrix none = CSZMatrix(2, 2, MatZeros).UpperMatInv(); // singular
    std::printf("healthy: %s, size %d x %d\n", none.isMatrixHealthy() ? "yes" : "no",
                none.getRowSize(), none.getColSize());
}
