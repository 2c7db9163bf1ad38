// SPDX-License-Identifier: MIT
//
// The small matrix of the multi-point solution, with elements of any kind, against the rules written out
// element by element; its validity is that of the outcome.
#include "fuzz/matrix/Matrices.h"

namespace {

using fuzz::Input;
using fuzz::Require;
using fuzz::RequireSame;
using literal::Matrix;
using matrixtest::Tilt;

void CheckOperators(const Matrix& a, const Matrix& b)
{
    const CTiltMatrix B = Tilt(b);
    const bool equal = a.rows == b.rows && a.cols == b.cols;
    {
        const CTiltMatrix A = Tilt(a);
        const CTiltMatrix sum = A + B;
        if (equal)
            RequireSame(sum, literal::Combined(a, b, std::plus<>{}));
        else
            Require(A.IsValid() == 0);
    }
    const CTiltMatrix A = Tilt(a);
    const CTiltMatrix product = A * B;
    if (a.cols == b.rows)
        RequireSame(product, literal::Product(a, b));
    else
        Require(A.IsValid() == 0);
    RequireSame(Tilt(a).MatTran(), literal::Transpose(a));
    CTiltMatrix inPlace = Tilt(a);
    Require((inPlace += B) == (equal ? 1 : 0));
    RequireSame(inPlace, equal ? literal::Combined(a, b, std::plus<>{}) : a);
}

void CheckInverses(const Matrix& a)
{
    const literal::Inverse tested = literal::GaussJordan(a, literal::PivotTest::BesideOne);
    const CTiltMatrix A = Tilt(a);
    RequireSame(~A, tested.matrix);
    Require(A.IsValid() == (tested.completed ? 1 : 0));
    RequireSame(Tilt(a).MatInv(), literal::GaussJordan(a, literal::PivotTest::None).matrix);
}

// Of a matrix that has one, factor times its transpose is the matrix again.
void CheckFactor(const Matrix& symmetric)
{
    int status = -1;
    const CTiltMatrix factor = Tilt(symmetric).matChole(&status);
    if (status != 1) return;
    const Matrix l = matrixtest::Read(factor);
    const Matrix product = literal::Product(l, literal::Transpose(l));
    for (int r = 0; r < l.rows; ++r) {
        Require(l.Get(r, r) > 0.0 || std::isnan(l.Get(r, r)));
        for (int c = 0; c < l.cols; ++c) {
            Require(c <= r || l.Get(r, c) == 0.0);
            const double bound =
                1e-12 * std::sqrt(symmetric.Get(r, r)) * std::sqrt(symmetric.Get(c, c));
            if (bound > 1e-280 && bound < 1e140)
                Require(!(std::fabs(product.Get(r, c) - symmetric.Get(r, c)) > bound));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int rows = 1 + input.Below(8);
    const int columns = 1 + input.Below(8);
    const Matrix a = fuzz::MatrixOf(input, rows, columns);
    const bool same = input.Below(2) == 0;
    CheckOperators(a, same ? fuzz::MatrixOf(input, rows, columns)
                           : fuzz::MatrixOf(input, columns, input.Below(9)));
    const int order = 1 + input.Below(8);
    CheckInverses(fuzz::MatrixOf(input, order, order));
    CheckFactor(fuzz::SymmetricOf(input, order));
    return 0;
}
