// SPDX-License-Identifier: MIT
//
// CSZMatrix: trace, norms, condition and the helpers for 3-vectors.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <utility>

using namespace matrixtest;

namespace {

// ---- figures -----------------------------------------------------------------------------------

TEST(SZMatrixFigures, TraceIsTheSumOfASquareDiagonal)
{
    EXPECT_EQ(Checked("1 2; 3 4").trace(), 5.0);
    EXPECT_EQ(CSZMatrix(2, 3, MatOnes).trace(), 0.0);
    EXPECT_EQ(CSZMatrix().trace(), 0.0);
}

TEST(SZMatrixFigures, NormIsTheSquaredLengthOfAVector)
{
    for (const CSZMatrix& v : {Checked("3; 4"), Checked("3 4")}) {
        EXPECT_EQ(v.norm(), 25.0);
        EXPECT_EQ(v.vecModulus(), 5.0);
    }
    EXPECT_EQ(CSZMatrix(2, 2, MatOnes).norm(), 0.0);
    EXPECT_EQ(CSZMatrix(2, 2, MatOnes).vecModulus(), 0.0);
    EXPECT_EQ(CSZMatrix(1, 1, 1, -3.0).norm(), 9.0);
    EXPECT_EQ(CSZMatrix().norm(), 0.0);
}

TEST(SZMatrixFigures, InfiniteNormIsTheLargestRowSum)
{
    EXPECT_EQ(Checked("1 -2; -3 -4; 5 0").infiniteNorm(), 7.0);
    EXPECT_EQ(Checked("nan 1; 1 1").infiniteNorm(), 2.0);
    EXPECT_EQ(CSZMatrix().infiniteNorm(), 0.0);
}

TEST(SZMatrixFigures, ConditionComparesTheNormsOfMatrixAndInverse)
{
    EXPECT_EQ(Checked("2 0; 0 0.5").condition(), 4.0);
    EXPECT_EQ(CSZMatrix(3, 3, MatIdentity).condition(), 1.0);
    EXPECT_EQ(CSZMatrix(2, 3, MatOnes).condition(), 999999.0);
    EXPECT_EQ(CSZMatrix().condition(), 999999.0);
}

// ---- 3-vectors ---------------------------------------------------------------------------------

TEST(SZMatrixVectors, CrossFollowsTheRightHand)
{
    const CSZMatrix x = Checked("1; 0; 0");
    const CSZMatrix yRow = Checked("0 1 0");
    EXPECT_THAT(x.cross(yRow), Equals(Of("0; -0; 1")));
    EXPECT_THAT(yRow.cross(x), Equals(Of("0; -0; -1")));
    EXPECT_THAT(Checked("1 2 3").cross(Checked("4 5 6")), Equals(Of("-3; 6; -3")));
}

TEST(SZMatrixVectors, CrossOfAnythingElseIsAZeroColumn)
{
    const CSZMatrix v(3, 1, MatOnes);
    for (const CSZMatrix& other :
         {CSZMatrix(2, 1), CSZMatrix(1, 2), CSZMatrix(3, 3, MatOnes), CSZMatrix()}) {
        EXPECT_THAT(v.cross(other), Equals(literal::Matrix(3, 1)));
        EXPECT_THAT(other.cross(v), Equals(literal::Matrix(3, 1)));
    }
}

TEST(SZMatrixVectors, SkewMatrixTimesAVectorIsTheCrossProduct)
{
    const CSZMatrix a = Checked("1.5; -2; 3");
    const CSZMatrix b = Checked("4; 5; -6");
    EXPECT_THAT(a.skewSymm3() * b, Equals(a.cross(b)));
    EXPECT_THAT(a.matTran().skewSymm3(), Equals(a.skewSymm3()));
    EXPECT_THAT(CSZMatrix(2, 2).skewSymm3(), Equals(literal::Matrix(3, 3)));
}

// The quaternion product q * (0, w), written out.
TEST(SZMatrixVectors, SkewMatrixOfARateTurnsAQuaternion)
{
    const double q[] = {2, 3, 5, 7};
    const double w[] = {11, 13, 17};
    const literal::Matrix turned =
        Filled(4, 1,
               {-q[1] * w[0] - q[2] * w[1] - q[3] * w[2], q[0] * w[0] + q[2] * w[2] - q[3] * w[1],
                q[0] * w[1] - q[1] * w[2] + q[3] * w[0], q[0] * w[2] + q[1] * w[1] - q[2] * w[0]});
    const CSZMatrix W = CSZMatrix(w, 3, 3, 1).skewSymm4();
    EXPECT_THAT(W * CSZMatrix(q, 4, 4, 1), Equals(turned));
    EXPECT_THAT(W + W.matTran(), Equals(literal::Matrix(4, 4)));
    EXPECT_THAT(CSZMatrix(w, 3, 1, 3).skewSymm4(), Equals(W));
    EXPECT_THAT(CSZMatrix(4, 1).skewSymm4(), Equals(literal::Matrix(4, 4)));
}

} // namespace
