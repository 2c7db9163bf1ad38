// SPDX-License-Identifier: MIT
//
// CSZMatrix: Cholesky and its relatives, and Gram-Schmidt.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <utility>

using namespace matrixtest;

namespace {

constexpr double kRoundOff = 1e-12; // elements of order 1, a dozen of them in a sum

literal::Matrix PositiveDefinite(Maker& make, int n)
{
    const literal::Matrix a = make.Any(n, n, Kind::Usual);
    literal::Matrix m = literal::Product(a, literal::Transpose(a));
    for (int i = 0; i < n; ++i)
        m.Set(i, i, m.Get(i, i) + 1.0);
    return m;
}

// ---- Cholesky and relatives --------------------------------------------------------------------

TEST(SZMatrixCholesky, AgreesWithTheLiteralRules)
{
    Maker make(43);
    for (int n = 1; n <= 40; ++n) {
        const literal::Matrix a = PositiveDefinite(make, n);
        CSZMatrix L;
        ASSERT_EQ(Checked(a).cholesky(L), literal::Cholesky(a).second);
        ASSERT_THAT(L, Equals(literal::Cholesky(a).first));
    }
}

TEST(SZMatrixCholesky, LeavesTheColumnsBeforeTheFailingPivot)
{
    CSZMatrix L(5, 5, MatOnes);
    EXPECT_FALSE(Checked("4 2 0; 2 1 0; 0 0 1").cholesky(L));
    EXPECT_THAT(L, Equals(Of("2 0 0; 1 0 0; 0 0 0")));
}

TEST(SZMatrixCholesky, RefusesWhatIsNotSymmetric)
{
    const CSZMatrix refused[] = {Checked(Filled(2, 2, {4, 1, 1 + 1e-15, 4})),
                                 CSZMatrix(2, 3, MatOnes), Checked("4 nan; nan 4")};
    for (const CSZMatrix& m : refused) {
        CSZMatrix L(1, 1, MatOnes);
        EXPECT_FALSE(m.cholesky(L));
        EXPECT_THAT(L, Equals(literal::Matrix(m.getRowSize(), m.getColSize())));
    }
    CSZMatrix L(1, 1, MatOnes);
    EXPECT_FALSE(CSZMatrix().cholesky(L));
    EXPECT_THAT(L, Equals(Of("1")));
}

TEST(SZMatrixCholesky, ToleratesAnAsymmetryOfOneRounding)
{
    CSZMatrix L;
    EXPECT_TRUE(Checked(Filled(2, 2, {4, 1, 1 + DBL_EPSILON, 4})).cholesky(L));
}

TEST(SZMatrixCholesky, IntoItselfFailsOnTheZeroedMatrix)
{
    CSZMatrix m = Checked("4 0; 0 9");
    EXPECT_FALSE(m.cholesky(m));
    EXPECT_THAT(m, Equals(literal::Matrix(2, 2)));
}

bool IsUnitLower(const CSZMatrix& L)
{
    for (int r = 0; r < L.getRowSize(); ++r)
        for (int c = r; c < L.getColSize(); ++c)
            if (L.GetData(r, c) != (r == c ? 1.0 : 0.0)) return false;
    return true;
}

bool IsDiagonal(const CSZMatrix& D)
{
    for (int r = 0; r < D.getRowSize(); ++r)
        for (int c = 0; c < D.getColSize(); ++c)
            if (r != c && D.GetData(r, c) != 0.0) return false;
    return true;
}

TEST(SZMatrixLdl, MultipliesBack)
{
    Maker make(44);
    for (int n = 1; n <= 12; ++n) {
        const literal::Matrix a = PositiveDefinite(make, n);
        const CSZMatrix A = Checked(a);
        const double tolerance = kRoundOff * A.infiniteNorm();
        CSZMatrix F;
        CSZMatrix D;
        ASSERT_TRUE(A.ldl(F, D));
        EXPECT_TRUE(IsUnitLower(F) && IsDiagonal(D));
        EXPECT_THAT(F * D * F.matTran(), IsNear(a, tolerance));

        ASSERT_TRUE(A.udu(F, D));
        EXPECT_TRUE(IsUnitLower(F.matTran()) && IsDiagonal(D));
        EXPECT_THAT(F * D * F.matTran(), IsNear(a, tolerance));

        CSZMatrix overwritten = A;
        ASSERT_TRUE(overwritten.LDLdecompostion(F, D));
        EXPECT_TRUE(IsUnitLower(F) && IsDiagonal(D));
        EXPECT_THAT(F * D * F.matTran(), IsNear(a, tolerance));
    }
}

TEST(SZMatrixLdl, FactorsIndefiniteMatrices)
{
    const CSZMatrix A = Checked("2 4; 4 -1");
    CSZMatrix F;
    CSZMatrix D;
    EXPECT_TRUE(A.ldl(F, D));
    EXPECT_THAT(F, Equals(Of("1 0; 2 1")));
    EXPECT_THAT(D, Equals(Of("2 0; 0 -9")));
    EXPECT_TRUE(A.udu(F, D));
    EXPECT_THAT(F, Equals(Of("1 -4; 0 1")));
    EXPECT_THAT(D, Equals(Of("18 0; 0 -1")));
}

TEST(SZMatrixLdl, PutsZeroWhereItCannotDivide)
{
    CSZMatrix F;
    CSZMatrix D;
    for (const double small : {0.0, 1e-310, DBL_MIN}) {
        EXPECT_TRUE(Checked(Filled(2, 2, {small, 5, 5, 7})).ldl(F, D));
        EXPECT_THAT(F, Equals(literal::Identity(2)));
        EXPECT_THAT(D, Equals(Filled(2, 2, {small, 0, 0, 7})));
        EXPECT_TRUE(Checked(Filled(2, 2, {7, 5, 5, small})).udu(F, D));
        EXPECT_THAT(F, Equals(literal::Identity(2)));
        EXPECT_THAT(D, Equals(Filled(2, 2, {7, 0, 0, small})));
    }
}

TEST(SZMatrixLdl, ReadsOneTriangle)
{
    CSZMatrix F;
    CSZMatrix D;
    const CSZMatrix lowerHolds = Checked("4 99; 2 2");
    EXPECT_TRUE(lowerHolds.ldl(F, D));
    EXPECT_THAT(F * D * F.matTran(), Equals(Of("4 2; 2 2")));
    EXPECT_TRUE(lowerHolds.matTran().udu(F, D));
    EXPECT_THAT(F * D * F.matTran(), Equals(Of("4 2; 2 2")));
}

TEST(SZMatrixLdl, RefusesWhatIsNotSquareAndChangesNothing)
{
    for (CSZMatrix m : {CSZMatrix(2, 3, MatOnes), CSZMatrix()}) {
        const literal::Matrix before = Read(m);
        CSZMatrix F(1, 1, MatOnes);
        CSZMatrix D(1, 1, MatOnes);
        EXPECT_FALSE(m.ldl(F, D) || m.udu(F, D) || m.LDLdecompostion(F, D));
        EXPECT_THAT(F, Equals(Of("1")));
        EXPECT_THAT(D, Equals(Of("1")));
        EXPECT_THAT(m, Equals(before));
    }
}

TEST(SZMatrixLdl, OverwritesTheMatrixAndStopsAtASmallPivot)
{
    CSZMatrix m = Checked("4 2 0; 2 1 0; 0 0 1");
    CSZMatrix L;
    CSZMatrix D;
    EXPECT_FALSE(m.LDLdecompostion(L, D));
    EXPECT_THAT(L, Equals(Of("1 0 0; 0.5 1 0; 0 0 1")));
    EXPECT_THAT(D, Equals(Of("4 0 0; 0 0 0; 0 0 0")));
    EXPECT_THAT(m, Equals(Of("2 2 0; 1 0 0; 0 0 1")));
}

TEST(SZMatrixLdl, FactorsIntoItself)
{
    const literal::Matrix a = Of("4 2; 2 2");
    CSZMatrix m = Checked(a);
    CSZMatrix other;
    EXPECT_TRUE(m.ldl(m, other));
    EXPECT_THAT(m * other * m.matTran(), Equals(a));
    m = Checked(a);
    EXPECT_TRUE(m.udu(other, m));
    EXPECT_THAT(other * m * other.matTran(), Equals(a));
}

// ---- Gram-Schmidt ------------------------------------------------------------------------------

TEST(SZMatrixQr, MultipliesBackWithOrthonormalColumns)
{
    Maker make(45);
    for (int rows = 1; rows <= 12; ++rows)
        for (int cols = 1; cols <= rows; ++cols) {
            literal::Matrix a = make.Any(rows, cols, Kind::Usual);
            for (int i = 0; i < cols; ++i)
                a.Set(i, i, a.Get(i, i) + 200.0);
            CSZMatrix Q;
            CSZMatrix R;
            ASSERT_TRUE(Checked(a).QR_Schmidt(Q, R, 1e-9));
            EXPECT_THAT(Q.matTran() * Q, IsNear(literal::Identity(cols), kRoundOff));
            EXPECT_THAT(Q * R, IsNear(a, 300 * kRoundOff));
            for (int r = 0; r < cols; ++r)
                for (int c = 0; c < r; ++c)
                    EXPECT_EQ(R.GetData(r, c), 0.0);
        }
}

TEST(SZMatrixQr, KnowsTheFactorsOfASmallMatrix)
{
    CSZMatrix Q;
    CSZMatrix R;
    EXPECT_TRUE(Checked("3 5; 4 0").QR_Schmidt(Q, R, 1e-9));
    EXPECT_THAT(Q, IsNear(Of("0.6 0.8; 0.8 -0.6"), kRoundOff));
    EXPECT_THAT(R, IsNear(Of("5 3; 0 4"), kRoundOff));
}

TEST(SZMatrixQr, FailsOnAColumnShorterThanTheTolerance)
{
    CSZMatrix Q;
    CSZMatrix R;
    EXPECT_FALSE(Checked("1 2; 1 2").QR_Schmidt(Q, R, 1e-9));
    EXPECT_NEAR(R.GetData(0, 0), std::sqrt(2.0), kRoundOff);
    EXPECT_FALSE(Checked("0.5").QR_Schmidt(Q, R, 0.6));
    EXPECT_TRUE(Checked("0.5").QR_Schmidt(Q, R, 0.5));
}

TEST(SZMatrixQr, RefusesMoreColumnsThanRows)
{
    for (const CSZMatrix& m : {CSZMatrix(2, 3, MatIdentity), CSZMatrix()}) {
        CSZMatrix Q(1, 1, MatOnes);
        CSZMatrix R(1, 1, MatOnes);
        EXPECT_FALSE(m.QR_Schmidt(Q, R, 1e-9));
        EXPECT_THAT(Q, Equals(Of("1")));
        EXPECT_THAT(R, Equals(Of("1")));
    }
}

TEST(SZMatrixQr, FactorsIntoItself)
{
    const literal::Matrix a = Of("3 5; 4 0");
    CSZMatrix m = Checked(a);
    CSZMatrix other;
    EXPECT_TRUE(m.QR_Schmidt(m, other, 1e-9));
    EXPECT_THAT(m * other, IsNear(a, 10 * kRoundOff));
    m = Checked(a);
    EXPECT_TRUE(m.QR_Schmidt(other, m, 1e-9));
    EXPECT_THAT(other * m, IsNear(a, 10 * kRoundOff));
}

} // namespace
