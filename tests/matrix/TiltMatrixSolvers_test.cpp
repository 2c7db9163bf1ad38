// SPDX-License-Identifier: MIT
//
// CTiltMatrix: inverses, the Cholesky factor and the test for singularity.
#include "matrix/TiltMatrix.h"

#include "tests/matrix/MatrixTools.h"

using namespace matrixtest;

namespace {

TEST(TiltMatrixInverse, AgreesWithTheLiteralElimination)
{
    Maker make(61);
    for (const Kind kind : kKinds)
        for (int n = 1; n <= 20; ++n) {
            const literal::Matrix a = make.Any(n, n, kind);
            const CTiltMatrix A = Tilt(a);
            const literal::Inverse tested = literal::GaussJordan(a, literal::PivotTest::BesideOne);
            ASSERT_THAT(~A, Equals(tested.matrix)) << n;
            ASSERT_EQ(A.IsValid(), tested.completed ? 1 : 0);
            ASSERT_THAT(A.MatInv(),
                        Equals(literal::GaussJordan(a, literal::PivotTest::None).matrix));
            ASSERT_EQ(A.IsValid(), 1);
        }
}

TEST(TiltMatrixInverse, OfASingularMatrixIsNotValid)
{
    const CTiltMatrix singular = Tilt("1 2; 2 4");
    EXPECT_THAT(~singular, Equals(Of("0.25 0.5; -0.5 0")));
    EXPECT_EQ(singular.IsValid(), 0);
}

TEST(TiltMatrixInverse, CountsAPivotThatVanishesBesideOneAsSingular)
{
    const CTiltMatrix vanishes = Tilt("1e-16");
    EXPECT_THAT(~vanishes, Equals(Of("1e-16")));
    EXPECT_EQ(vanishes.IsValid(), 0);
    EXPECT_THAT(vanishes.MatInv(), Equals(Of("1/1e-16")));

    const CTiltMatrix stands = Tilt("3e-16");
    EXPECT_THAT(~stands, Equals(Of("1/3e-16")));
    EXPECT_EQ(stands.IsValid(), 1);
}

TEST(TiltMatrixInverse, DividesByAZeroPivotWithoutATest)
{
    EXPECT_THAT(Tilt("0").MatInv(), Equals(Of("inf")));
    EXPECT_THAT(Tilt("0 0; 0 0").MatInv(), Equals(Of("nan nan; nan nan")));
}

TEST(TiltMatrixInverse, OfANonSquareMatrixIsZeroAndNotValid)
{
    const CTiltMatrix wide = Tilt("1 2 3; 4 5 6");
    EXPECT_THAT(~wide, Equals(literal::Matrix(2, 3)));
    EXPECT_EQ(wide.IsValid(), 0);
    EXPECT_THAT(wide.MatInv(), Equals(literal::Matrix(2, 3)));
    EXPECT_THAT(wide.Reverse(), Equals(literal::Matrix(2, 3)));
    EXPECT_THAT(~CTiltMatrix(), IsEmpty());
}

TEST(TiltMatrixInverse, ReplacesItsOwnMatrix)
{
    CTiltMatrix m = Tilt("2 0; 0 4");
    m = ~m;
    EXPECT_THAT(m, IsNear(Of("0.5 0; 0 0.25"), 0.0));
    m = m.MatInv();
    EXPECT_THAT(m, IsNear(Of("2 0; 0 4"), 0.0));
    m = m.MatTran();
    EXPECT_THAT(m, IsNear(Of("2 0; 0 4"), 0.0));
}

TEST(TiltMatrixReverse, InvertsPositiveDefiniteMatrices)
{
    Maker make(62);
    for (int n = 1; n <= 12; ++n) {
        const literal::Matrix factor = make.Any(n, n, Kind::Usual);
        literal::Matrix a = literal::Product(factor, literal::Transpose(factor));
        for (int i = 0; i < n; ++i)
            a.Set(i, i, a.Get(i, i) + 100.0);
        const CTiltMatrix A = Tilt(a);
        EXPECT_THAT(A.Reverse() * A, IsNear(literal::Identity(n), 1e-12));
        EXPECT_EQ(A.IsValid(), 1);
    }
}

TEST(TiltMatrixReverse, ReadsTheUpperTriangle)
{
    EXPECT_THAT(Tilt("2 1; 99 2").Reverse(), IsNear(Of("2.0/3 -1.0/3; -1.0/3 2.0/3"), 1e-15));
}

TEST(TiltMatrixReverse, FailsWithoutAPositivePivotThatIsSeenBesideOne)
{
    for (const double pivot : {0.0, -1.0, 1e-17, kNaN}) {
        const CTiltMatrix m = Tilt(Filled(2, 2, {4, 0, 0, pivot}));
        EXPECT_THAT(m.Reverse(), Equals(literal::Matrix(2, 2))) << pivot;
        EXPECT_EQ(m.IsValid(), 0);
    }
}

TEST(TiltMatrixCholesky, FactorsAndReportsSuccess)
{
    int status = -1;
    EXPECT_THAT(Tilt("4 2; 2 10").matChole(&status), Equals(Of("2 0; 1 3")));
    EXPECT_EQ(status, 1);
    EXPECT_THAT(Tilt("4 2; 2 10").matChole(nullptr), Equals(Of("2 0; 1 3")));
}

TEST(TiltMatrixCholesky, ReportsAPivotThatIsNotPositive)
{
    for (const double pivot : {1.0, 0.5, kNaN}) {
        int status = -1;
        EXPECT_THAT(Tilt(Filled(2, 2, {4, 2, 2, pivot})).matChole(&status), Equals(Of("2 0; 1 0")));
        EXPECT_EQ(status, 0);
    }
    int status = -1;
    EXPECT_THAT(Tilt("1e-320").matChole(&status), Equals(Filled(1, 1, {std::sqrt(1e-320)})));
    EXPECT_EQ(status, 1);
}

TEST(TiltMatrixCholesky, ReportsAMatrixThatIsNotSquare)
{
    int status = -1;
    EXPECT_THAT(Tilt("1 2").matChole(&status), Equals(literal::Matrix(1, 2)));
    EXPECT_EQ(status, 0);
    status = -1;
    EXPECT_THAT(CTiltMatrix().matChole(&status), IsEmpty());
    EXPECT_EQ(status, 0);
}

struct SingularCase
{
    literal::Matrix matrix;
    int expected;
    const char* why;
};

literal::Matrix Scaled(int n, double s)
{
    literal::Matrix m = literal::Identity(n);
    for (double& x : m.elements)
        x *= s;
    return m;
}

TEST(TiltMatrixSingularity, IsJudgedByTheDeterminantUpTo3)
{
    const SingularCase cases[] = {
        {Of("1 2 3; 4 5 6"),        1,        "not square"                        },
        {Scaled(3,                  1e-7),    1,                                    "determinant 1e-21"},
        {Scaled(3,                         1e-6),                          0,                                 "determinant 1e-18"},
        {Scaled(3,      1e7),              1,           "determinant 1e21"},
        {Scaled(3,                        1.0), 0,                           "identity"},
        {Of("1 2 3; 4 5 6; 7 8 9"),1,     "rows in progression"    },
        {Of("0 0 1; 0 1 0; 1 0 0"), 0,           "determinant -1"                     },
        {Of("5"), 0,        "one element"                 },
        {Of("0"),                   1,                          "one zero"                                         },
        {Of("1 2; 3 4"),                   0,        "determinant -2"        },
        {Of("1 2; 2 4"),            1, "proportional rows"             },
        {Of("nan"),            0,        "comparisons with what is no number fail"                        },
        {literal::Matrix(),                 1,             "no element"},
    };
    for (const SingularCase& c : cases)
        EXPECT_EQ(Tilt(c.matrix).IsMaxtrixSingular(), c.expected) << c.why;
}

// For 4 x 4 the rule takes four falling and four rising diagonals of the 24 products: a regular
// matrix may give 0, a singular one something else.
TEST(TiltMatrixSingularity, IsJudgedByTheDiagonalsBeyond3)
{
    const literal::Matrix swapped = Of("0 1 0 0; 1 0 0 0; 0 0 1 0; 0 0 0 1");
    EXPECT_EQ(Tilt(swapped).IsMaxtrixSingular(), 1);
    EXPECT_EQ(Tilt(literal::Identity(4)).IsMaxtrixSingular(), 0);
    const literal::Matrix dependent = Of("1 0 0 1; 0 1 0 0; 0 0 1 0; 1 0 0 1");
    EXPECT_EQ(Tilt(dependent).IsMaxtrixSingular(), 0);
}

} // namespace
