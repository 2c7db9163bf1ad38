// SPDX-License-Identifier: MIT
//
// CTiltMatrix: the small matrix of the multi-point solution; ~ is the inverse.
#include "matrix/TiltMatrix.h"

#include <cstdio>

int main()
{
    CTiltMatrix A(2, 2);
    A.SetData(0, 0, 2.0);
    A.SetData(0, 1, 0.0);
    A.SetData(1, 0, 0.0);
    A.SetData(1, 1, 4.0);

    const CTiltMatrix inverse = ~A;
    std::printf("inverse: %.2f %.2f\n", inverse.GetData(0, 0), inverse.GetData(1, 1));

    A.SetData(1, 1, 0.0);
    const CTiltMatrix none = ~A; // the validity is that of the operand
    std::printf("singular: valid %d\n", A.IsValid());
}
