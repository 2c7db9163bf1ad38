// SPDX-License-Identifier: MIT
//
// Identities of matrix algebra on generated matrices.
#include "matrix/SZMatrix.h"
#include "matrix/TiltMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <rapidcheck.h>

#include <cstdlib>

using namespace matrixtest;

namespace {

constexpr double kRoundOff = 1e-9; // relative to elements of up to 20 000 in up to 8 x 8

// Integers, so that sums and products are exact whatever their order.
literal::Matrix AnyIntegers(int rows, int cols)
{
    literal::Matrix m(rows, cols);
    for (double& x : m.elements)
        x = *rc::gen::inRange(-50, 51);
    return m;
}

int AnySize(int largest = 8)
{
    return *rc::gen::inRange(1, largest + 1);
}

// Row sums off the diagonal stay below the diagonal: the inverse has elements below 1.
literal::Matrix AnyDominant(int n)
{
    literal::Matrix m = AnyIntegers(n, n);
    for (int i = 0; i < n; ++i)
        m.Set(i, i, 50.0 * n + 1);
    return m;
}

literal::Matrix AnyPositiveDefinite(int n)
{
    const literal::Matrix a = AnyIntegers(n, n);
    literal::Matrix m = literal::Product(a, literal::Transpose(a));
    for (int i = 0; i < n; ++i)
        m.Set(i, i, m.Get(i, i) + 1.0);
    return m;
}

// One fixed seed, unless RC_PARAMS sets another.
template <class Body>
void Property(const char* claim, Body body)
{
    setenv("RC_PARAMS", "seed=20261121", 0);
    EXPECT_TRUE(rc::check(claim, body));
}

TEST(SZMatrixProperties, InverseTimesMatrixIsTheIdentity)
{
    Property("A^-1 A = A A^-1 = I", [] {
        const int n = AnySize(12);
        const literal::Matrix a = AnyDominant(n);
        const auto identity = IsNear(literal::Identity(n), 1e-12);
        RC_ASSERT(testing::Matches(identity)(Checked(a).matInv() * Checked(a)));
        RC_ASSERT(testing::Matches(identity)(Checked(a) * Checked(a).matInv()));
        RC_ASSERT(testing::Matches(identity)(Tilt(a).MatInv() * Tilt(a)));
        RC_ASSERT(testing::Matches(identity)(Tilt(a) * ~Tilt(a)));
    });
}

TEST(SZMatrixProperties, FactorisationsMultiplyBack)
{
    Property("A = L L^T = L D L^T = U D U^T", [] {
        const int n = AnySize();
        const literal::Matrix a = AnyPositiveDefinite(n);
        const CSZMatrix A = Checked(a);
        const auto back = IsNear(a, kRoundOff);
        CSZMatrix F;
        CSZMatrix D;
        RC_ASSERT(A.cholesky(F));
        RC_ASSERT(testing::Matches(back)(F * F.matTran()));
        RC_ASSERT(A.ldl(F, D));
        RC_ASSERT(testing::Matches(back)(F * D * F.matTran()));
        RC_ASSERT(A.udu(F, D));
        RC_ASSERT(testing::Matches(back)(F * D * F.matTran()));
        CSZMatrix overwritten = A;
        RC_ASSERT(overwritten.LDLdecompostion(F, D));
        RC_ASSERT(testing::Matches(back)(F * D * F.matTran()));
        int status = 0;
        const CTiltMatrix L = Tilt(a).matChole(&status);
        RC_ASSERT(status == 1);
        RC_ASSERT(testing::Matches(back)(L * L.MatTran()));
    });
}

TEST(SZMatrixProperties, EigenvectorsDiagonalise)
{
    Property("A V = V D, V^T V = I", [] {
        const int n = AnySize();
        literal::Matrix a = AnyIntegers(n, n);
        a = literal::Combined(a, literal::Transpose(a), std::plus<>{});
        const CSZMatrix A = Checked(a);
        CSZMatrix V;
        CSZMatrix D;
        RC_ASSERT(A.Jacobi(V, D, 1e-9));
        RC_ASSERT(testing::Matches(IsNear(V * D, 1e-8))(A * V));
        RC_ASSERT(testing::Matches(IsNear(literal::Identity(n), 1e-12))(V.matTran() * V));
        RC_ASSERT(std::fabs(D.trace() - A.trace()) < kRoundOff);
    });
}

TEST(SZMatrixProperties, GramSchmidtColumnsAreOrthonormal)
{
    Property("Q R = A, Q^T Q = I", [] {
        const int cols = AnySize();
        const int rows = cols + *rc::gen::inRange(0, 5);
        literal::Matrix a = AnyIntegers(rows, cols);
        for (int i = 0; i < cols; ++i)
            a.Set(i, i, 50.0 * rows + 1);
        CSZMatrix Q;
        CSZMatrix R;
        RC_ASSERT(Checked(a).QR_Schmidt(Q, R, 1e-9));
        RC_ASSERT(testing::Matches(IsNear(a, kRoundOff))(Q * R));
        RC_ASSERT(testing::Matches(IsNear(literal::Identity(cols), 1e-12))(Q.matTran() * Q));
    });
}

TEST(SZMatrixProperties, TransposeOfAProductIsTheReversedProduct)
{
    Property("(A B)^T = B^T A^T", [] {
        const int inner = AnySize(20);
        const CSZMatrix A = Checked(AnyIntegers(AnySize(20), inner));
        const CSZMatrix B = Checked(AnyIntegers(inner, AnySize(20)));
        RC_ASSERT(testing::Matches(Equals(B.matTran() * A.matTran()))((A * B).matTran()));
    });
}

TEST(SZMatrixProperties, ProductDistributesOverSums)
{
    Property("A (B + C) = A B + A C", [] {
        const int inner = AnySize(20);
        const int cols = AnySize(20);
        const CSZMatrix A = Checked(AnyIntegers(AnySize(20), inner));
        const CSZMatrix B = Checked(AnyIntegers(inner, cols));
        const CSZMatrix C = Checked(AnyIntegers(inner, cols));
        RC_ASSERT(testing::Matches(Equals(A * B + A * C))(A * (B + C)));
    });
}

TEST(SZMatrixProperties, SlicesReassemble)
{
    Property("the four quarters give the matrix back", [] {
        const int rows = AnySize() + 1;
        const int cols = AnySize() + 1;
        const literal::Matrix a = AnyIntegers(rows, cols);
        const CSZMatrix A = Checked(a);
        const int r = *rc::gen::inRange(1, rows);
        const int c = *rc::gen::inRange(1, cols);
        CSZMatrix B(rows, cols);
        RC_ASSERT(B.SetData(0, 0, A.Slice(0, 0, r - 1, c - 1)));
        RC_ASSERT(B.SetData(0, c, A.SliceRows(0, r).SliceCols(c, cols - c)));
        RC_ASSERT(B.SetData(r, 0, A.DeleteRow(0, r).DeleteCol(c, cols - c)));
        RC_ASSERT(B.SetData(r, c, A.Delete(0, r, 0, c)));
        RC_ASSERT(testing::Matches(Equals(a))(B));
    });
}

TEST(SZMatrixProperties, DeterminantRuleJudgesSingularity)
{
    Property("singular where the determinant is 0, up to 3 x 3", [] {
        const int n = AnySize(3);
        literal::Matrix a = AnyIntegers(n, n);
        if (*rc::gen::arbitrary<bool>())
            for (int c = 0; c < n; ++c)
                a.Set(n - 1, c, n == 1 ? 0.0 : 2 * a.Get(0, c));
        const auto at = [&a](int r, int c) { return a.Get(r % 3, c % 3); };
        double determinant = n == 1   ? at(0, 0)
                             : n == 2 ? at(0, 0) * at(1, 1) - at(0, 1) * at(1, 0)
                                      : 0.0;
        for (int c = 0; n == 3 && c < 3; ++c) // along the first row
            determinant += at(0, c) * (at(1, c + 1) * at(2, c + 2) - at(1, c + 2) * at(2, c + 1));
        RC_ASSERT(Tilt(a).IsMaxtrixSingular() == (determinant == 0.0 ? 1 : 0));
    });
}

} // namespace
