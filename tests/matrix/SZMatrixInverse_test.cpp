// SPDX-License-Identifier: MIT
//
// CSZMatrix: the inverses.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <utility>

using namespace matrixtest;

namespace {

constexpr double kRoundOff = 1e-12; // elements of order 1, a dozen of them in a sum

// Well conditioned: a dominant diagonal.
literal::Matrix Dominant(Maker& make, int n)
{
    literal::Matrix m = make.Any(n, n, Kind::Usual);
    for (int i = 0; i < n; ++i)
        m.Set(i, i, m.Get(i, i) + 20.0 * n);
    return m;
}

TEST(SZMatrixInverse, PicksTheLargestElementFirst)
{
    EXPECT_THAT(Checked("0 2; 3 0").matInv(), IsNear(Of("0 1.0/3; 0.5 0"), 0.0));
}

TEST(SZMatrixInverse, AgreesWithTheLiteralElimination)
{
    Maker make(41);
    for (const Kind kind : kKinds)
        for (int n = 0; n <= 40; ++n) {
            const literal::Matrix a = make.Any(n, n, kind);
            const CSZMatrix inverse = Checked(a).matInv();
            ASSERT_THAT(inverse, Equals(literal::Inverted(a))) << n;
            ASSERT_EQ(inverse.isMatrixHealthy(), n > 0);
        }
}

TEST(SZMatrixInverse, OfANonSquareMatrixIsZero)
{
    EXPECT_THAT(CSZMatrix(2, 3, MatOnes).matInv(), Equals(literal::Matrix(2, 3)));
    EXPECT_THAT(CSZMatrix().matInv(), IsEmpty());
}

// 4 is brought to the front and eliminated; what is left is 0, and the swaps stay.
TEST(SZMatrixInverse, OfASingularMatrixIsThePartlyEliminatedCopy)
{
    EXPECT_THAT(Checked("1 2; 2 4").matInv(), Equals(Of("0.25 0.5; -0.5 0")));
    EXPECT_THAT(CSZMatrix(2, 2).matInv(), Equals(literal::Matrix(2, 2)));
    EXPECT_THAT(CSZMatrix(1, 1, 1, 1e-310).matInv(), Equals(Of("1e-310")));
    EXPECT_THAT(CSZMatrix(1, 1, 1, DBL_MIN).matInv(), Equals(Filled(1, 1, {1.0 / DBL_MIN})));
}

// A comparison with what is no number is false, so it is never chosen; alone it stops the search.
TEST(SZMatrixInverse, NeverChoosesWhatIsNoNumber)
{
    EXPECT_THAT(CSZMatrix(1, 1, 1, kNaN).matInv(), Equals(Of("nan")));
    EXPECT_THAT(Checked("nan 0; 0 2").matInv(), Equals(Of("0.5 0; -0 nan")));
}

TEST(SZMatrixInverse, OfTriangularMatricesMultipliesBack)
{
    Maker make(42);
    for (int n = 1; n <= 12; ++n) {
        literal::Matrix upper = Dominant(make, n);
        for (int r = 0; r < n; ++r)
            for (int c = 0; c < r; ++c)
                upper.Set(r, c, 0.0);
        const CSZMatrix U = Checked(upper);
        const CSZMatrix L = U.matTran();
        EXPECT_THAT(U * U.UpperMatInv(), IsNear(literal::Identity(n), kRoundOff));
        EXPECT_THAT(L.LowerMatInv() * L, IsNear(literal::Identity(n), kRoundOff));
    }
}

TEST(SZMatrixInverse, OfATriangularMatrixReadsItsTriangleOnly)
{
    const CSZMatrix full = Checked("2 4; 8 4");
    EXPECT_THAT(full.UpperMatInv(), Equals(Of("0.5 -0.5; 0 0.25")));
    EXPECT_THAT(full.LowerMatInv(), Equals(Of("0.5 0; -1 0.25")));
}

TEST(SZMatrixInverse, OfATriangularMatrixFailsOnASmallDiagonal)
{
    for (const double d : {0.0, 1e-310, -1e-310}) {
        const CSZMatrix m = Checked(Filled(2, 2, {1, 2, 2, d}));
        EXPECT_THAT(m.UpperMatInv(), IsEmpty());
        EXPECT_THAT(m.LowerMatInv(), IsEmpty());
        EXPECT_FALSE(m.UpperMatInv().isMatrixHealthy());
    }
    for (const CSZMatrix& m : {CSZMatrix(2, 3, MatOnes), CSZMatrix()}) {
        EXPECT_THAT(m.UpperMatInv(), IsEmpty());
        EXPECT_THAT(m.LowerMatInv(), IsEmpty());
    }
}

} // namespace
