// SPDX-License-Identifier: MIT
//
// Matrices of any size and elements: sums, products, parts, inverses and factors have the bits of the
// rules written out element by element.
#include "fuzz/matrix/Matrices.h"

namespace {

using fuzz::Input;
using fuzz::Require;
using fuzz::RequireSame;
using literal::Matrix;
using matrixtest::Checked;

void CheckSums(const Matrix& a, const Matrix& b, double s)
{
    const CSZMatrix A = Checked(a);
    const CSZMatrix B = Checked(b);
    RequireSame(A + B, literal::Combined(a, b, std::plus<>{}));
    RequireSame(A - B, literal::Combined(a, b, std::minus<>{}));
    RequireSame(A * s, literal::Combined(a, a, [s](double x, double) { return x * s; }));
    if (s != 0.0)
        RequireSame(A / s, literal::Combined(a, a, [s](double x, double) { return x / s; }));
    CSZMatrix sum = A;
    const bool fits = a.rows == b.rows && a.cols == b.cols;
    Require((sum += B) == fits);
    RequireSame(sum, fits ? literal::Combined(a, b, std::plus<>{}) : a);
}

void CheckParts(Input& input, const Matrix& a)
{
    const CSZMatrix A = Checked(a);
    const auto place = [&input] { return input.Below(14) - 2; };
    const int r0 = place();
    const int c0 = place();
    const int r1 = place();
    const int c1 = place();
    RequireSame(A.Slice(r0, c0, r1, c1), literal::Slice(a, r0, c0, r1, c1));
    RequireSame(A.DeleteRow(r0, r1), literal::DeleteRow(a, r0, r1));
    RequireSame(A.DeleteCol(c0, c1), literal::DeleteCol(a, c0, c1));
    RequireSame(A.matTran(), literal::Transpose(a));
    Require(fuzz::AreSame(A.GetData(r0, c0), a.Get(r0, c0)));
}

void CheckSolvers(const Matrix& square, const Matrix& symmetric)
{
    RequireSame(Checked(square).matInv(), literal::Inverted(square));
    const auto [factor, done] = literal::Cholesky(symmetric);
    CSZMatrix L;
    Require(Checked(symmetric).cholesky(L) == done);
    RequireSame(L, factor);
}

// Where the literal rotations end, those of the library end with the same eigenvalues.
void CheckEigenvalues(const Matrix& symmetric)
{
    double largest = 0.0;
    for (const double element : symmetric.elements) {
        if (!std::isfinite(element) || std::fabs(element) > 1e6) return;
        largest = std::max(largest, std::fabs(element));
    }
    const double tolerance = 1e-9 * (1.0 + largest);
    if (!literal::IsSymmetric(symmetric)) return;
    const auto expected = literal::Jacobi(symmetric, tolerance);
    if (!expected) return;
    CSZMatrix V;
    CSZMatrix D;
    Require(Checked(symmetric).Jacobi(V, D, tolerance));
    double trace = 0.0;
    double found = 0.0;
    for (int i = 0; i < symmetric.rows; ++i) {
        trace += symmetric.Get(i, i);
        found += D.GetData(i, i);
        Require(std::fabs(D.GetData(i, i) - expected->values.Get(i, i)) <= 1e-6 * (1.0 + largest));
    }
    Require(std::fabs(found - trace) <= 1e-9 * (1.0 + largest));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int rows = input.Below(13);
    const int columns = input.Below(13);
    const Matrix a = fuzz::MatrixOf(input, rows, columns);
    const bool same = input.Below(2) == 0;
    const Matrix b = same ? fuzz::MatrixOf(input, rows, columns)
                          : fuzz::MatrixOf(input, columns, input.Below(13));
    CheckSums(a, b, input.Number());
    RequireSame(Checked(a) * Checked(b), literal::Product(a, b));
    CheckParts(input, a);
    const int order = input.Below(9);
    const Matrix symmetric = fuzz::SymmetricOf(input, order);
    CheckSolvers(fuzz::MatrixOf(input, order, order), symmetric);
    if (order <= 4) CheckEigenvalues(symmetric);
    return 0;
}
