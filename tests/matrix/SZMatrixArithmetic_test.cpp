// SPDX-License-Identifier: MIT
//
// CSZMatrix: the operators, their failures, and an object met twice in one expression.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <climits>
#include <functional>
#include <utility>

using namespace matrixtest;

namespace {

// What an operation returns is healthy when it has elements.
template <class Expected>
void CheckResult(const CSZMatrix& result, const Expected& expected)
{
    ASSERT_THAT(result, Equals(expected));
    ASSERT_EQ(result.isMatrixHealthy(), result.getRowSize() > 0);
}

TEST(SZMatrixArithmetic, AgreesWithTheLiteralRulesOnEverySize)
{
    Maker make(21);
    for (const Kind kind : kKinds)
        for (int trial = 0; trial < 300; ++trial) {
            const literal::Matrix a = make.Any(make.Between(0, 40), make.Between(0, 40), kind);
            const literal::Matrix same = make.Any(a.rows, a.cols, kind);
            const literal::Matrix factor = make.Any(a.cols, make.Between(0, 40), kind);
            const CSZMatrix A = Checked(a);
            CheckResult(A + Checked(same), literal::Combined(a, same, std::plus<>{}));
            CheckResult(A - Checked(same), literal::Combined(a, same, std::minus<>{}));
            CheckResult(A * Checked(factor), literal::Product(a, factor));
            CheckResult(A.matTran(), literal::Transpose(a));
        }
}

TEST(SZMatrixArithmetic, ScalarsActOnEveryElement)
{
    Maker make(22);
    constexpr double scalars[] = {0.0, -0.0, 2.0, -3.7, kDenormal, kInfinity, kNaN, 1e-300, 1e308};
    for (const Kind kind : kKinds)
        for (const double s : scalars) {
            const literal::Matrix a = make.Any(make.Between(1, 9), make.Between(1, 9), kind);
            const auto each = [&a](auto change) {
                return literal::Combined(a, a, [&](double x, double) { return change(x); });
            };
            const CSZMatrix A = Checked(a);
            CheckResult(A + s, each([s](double x) { return x + s; }));
            CheckResult(A - s, each([s](double x) { return x - s; }));
            CheckResult(A * s, each([s](double x) { return x * s; }));
            CheckResult(A / s, each([s](double x) { return s == 0.0 ? 0.0 : x / s; }));
        }
}

TEST(SZMatrixArithmetic, SumOfOtherSizesIsZeroOfTheLeftSize)
{
    const CSZMatrix left(2, 3, MatOnes);
    CheckResult(left + CSZMatrix(3, 2, MatOnes), literal::Matrix(2, 3));
    CheckResult(left - CSZMatrix(2, 2, MatOnes), literal::Matrix(2, 3));
    CheckResult(left + CSZMatrix(), literal::Matrix(2, 3));
    CheckResult(CSZMatrix() + left, literal::Matrix());
}

TEST(SZMatrixArithmetic, ProductThatDoesNotFitIsZeroOfTheOuterSizes)
{
    const CSZMatrix a(2, 3, MatOnes);
    CheckResult(a * a, literal::Matrix(2, 3));
    CheckResult(a * CSZMatrix(2, 50, MatOnes), literal::Matrix(2, 50));
    CheckResult(a * CSZMatrix(), literal::Matrix());
    CheckResult(CSZMatrix() * CSZMatrix(), literal::Matrix());
}

TEST(SZMatrixArithmetic, DivisionTestsForExactZero)
{
    const CSZMatrix m(2, 2, MatOnes);
    CheckResult(m / 0.0, literal::Matrix(2, 2));
    CheckResult(m / -0.0, literal::Matrix(2, 2));
    CheckResult(m / 1e-320, Of("inf inf; inf inf"));
}

TEST(SZMatrixArithmetic, DivisionInPlaceTestsForTheSmallestNormal)
{
    for (const double s : {0.0, -0.0, 1e-320, -1e-320, 2.2250738585072009e-308}) {
        CSZMatrix m(2, 2, MatOnes);
        EXPECT_FALSE(m /= s) << s;
        EXPECT_THAT(m, Equals(Of("1 1; 1 1")));
    }
    CSZMatrix m(1, 1, MatOnes);
    EXPECT_TRUE(m /= 1e-300);
    EXPECT_THAT(m, Equals(Of("1.0/1e-300")));
    EXPECT_TRUE(m /= -DBL_MIN);
    EXPECT_TRUE(m /= kNaN);
    EXPECT_THAT(m, Equals(Of("nan")));
}

TEST(SZMatrixArithmetic, WorksInPlace)
{
    CSZMatrix m = Checked("1 2; 3 4");
    EXPECT_TRUE(m += Checked("10 20; 30 40"));
    EXPECT_TRUE(m -= Checked("1 1; 1 1"));
    EXPECT_THAT(m, Equals(Of("10 21; 32 43")));
    EXPECT_TRUE(m += 1.0);
    EXPECT_TRUE(m -= 3.0);
    EXPECT_TRUE(m *= 2.0);
    EXPECT_TRUE(m /= 4.0);
    EXPECT_THAT(m, Equals(Of("4 9.5; 15 20.5")));
    CSZMatrix empty;
    EXPECT_TRUE(empty += 1.0);
    EXPECT_TRUE(empty *= 1.0);
    EXPECT_TRUE(empty += CSZMatrix());
}

TEST(SZMatrixArithmetic, InPlaceOfAnotherSizeChangesNothing)
{
    CSZMatrix m(2, 2, MatOnes);
    EXPECT_FALSE(m += CSZMatrix(2, 3, MatOnes));
    EXPECT_FALSE(m -= CSZMatrix(3, 2, MatOnes));
    EXPECT_FALSE(m += CSZMatrix());
    EXPECT_THAT(m, Equals(Of("1 1; 1 1")));
    EXPECT_TRUE(m.isMatrixHealthy());
}

TEST(SZMatrixArithmetic, AssignsOneValueToEveryElement)
{
    CSZMatrix m(2, 2);
    m = 7.0;
    EXPECT_THAT(m, Equals(Of("7 7; 7 7")));
    CSZMatrix empty;
    empty = 7.0;
    EXPECT_THAT(empty, IsEmpty());
}

TEST(SZMatrixArithmetic, AssignmentKeepsTheHealthOfItsTarget)
{
    for (const int n : {2, 6, 7, 40}) {
        const CSZMatrix source(n, n, MatIdentity);
        CSZMatrix healthy;
        CSZMatrix unhealthy(0, 1);
        EXPECT_TRUE(healthy = source);
        EXPECT_TRUE(unhealthy = source);
        EXPECT_THAT(healthy, Equals(source));
        EXPECT_THAT(unhealthy, Equals(source));
        EXPECT_TRUE(healthy.isMatrixHealthy());
        EXPECT_FALSE(unhealthy.isMatrixHealthy());
        EXPECT_TRUE(unhealthy = CSZMatrix(n, 1));
        EXPECT_FALSE(unhealthy.isMatrixHealthy());
    }
}

TEST(SZMatrixArithmetic, AssignmentFromAnEmptyMatrixEmpties)
{
    const CSZMatrix empty;
    for (const int n : {2, 40}) {
        CSZMatrix copied(n, n);
        CSZMatrix moved(n, n);
        EXPECT_TRUE(copied = empty);
        EXPECT_TRUE(moved = CSZMatrix());
        EXPECT_THAT(copied, IsEmpty());
        EXPECT_THAT(moved, IsEmpty());
    }
}

TEST(SZMatrixArithmetic, AssignsBetweenSizesOnBothSidesOfTheInsideStore)
{
    const int sizes[] = {1, 6, 7, 12, 6, 40, 2, 41};
    CSZMatrix copied;
    CSZMatrix moved;
    for (const int n : sizes) {
        CSZMatrix source(n, n, MatIdentity);
        copied = source;
        EXPECT_THAT(copied, Equals(literal::Identity(n)));
        moved = std::move(source);
        EXPECT_THAT(moved, Equals(literal::Identity(n)));
        EXPECT_THAT(source, IsEmpty());
    }
}

TEST(SZMatrixArithmetic, AssignsItself)
{
    for (const int n : {3, 12}) {
        CSZMatrix m(n, n, MatIdentity);
        CSZMatrix& same = m;
        EXPECT_TRUE(m = same);
        EXPECT_TRUE(m = std::move(same));
        EXPECT_THAT(m, Equals(literal::Identity(n)));
        EXPECT_TRUE(m.isMatrixHealthy());
    }
}

TEST(SZMatrixArithmetic, StandsOnBothSides)
{
    Maker make(23);
    for (const int n : {1, 2, 3, 6, 7, 12, 40}) {
        const literal::Matrix a = make.Any(n, n, Kind::Usual);
        const literal::Matrix twice = literal::Combined(a, a, std::plus<>{});
        const literal::Matrix square = literal::Product(a, a);
        CSZMatrix m = Checked(a);
        const CSZMatrix& same = m;
        EXPECT_THAT(m + m, Equals(twice));
        EXPECT_THAT(m * m, Equals(square));
        EXPECT_TRUE(m = m * m);
        EXPECT_THAT(m, Equals(square));
        m = Checked(a);
        EXPECT_TRUE(m += same);
        EXPECT_THAT(m, Equals(twice));
        EXPECT_TRUE(m -= same);
        EXPECT_THAT(m, Equals(literal::Matrix(n, n)));
        m = Checked(a);
        m = m.matTran();
        EXPECT_THAT(m, Equals(literal::Transpose(a)));
        m = m.matInv();
        EXPECT_THAT(m, Equals(literal::Inverted(literal::Transpose(a))));
    }
}

TEST(SZMatrixArithmetic, FormsNormalEquationsOfLongDesigns)
{
    Maker make(24);
    for (const int n : {4, 5, 8, 100, 1000}) {
        const literal::Matrix a = make.Any(n, 5, Kind::Usual);
        const CSZMatrix A = Checked(a);
        EXPECT_THAT(A.matTran() * A, Equals(literal::Product(literal::Transpose(a), a)));
    }
}

// Reading operations serve constant matrices and temporaries alike.
TEST(SZMatrixArithmetic, ReadsConstantMatrices)
{
    const CSZMatrix a = Checked("4 1; 1 3");
    CSZMatrix L;
    CSZMatrix D;
    EXPECT_THAT((a + a - a) * 1.0 / 1.0, Equals(a));
    EXPECT_THAT(a.matTran(), Equals(a));
    EXPECT_TRUE(a.cholesky(L) && a.ldl(L, D) && a.udu(L, D) && a.Jacobi(L, D, 1e-9));
    EXPECT_EQ(a.UpperMatInv().getRowSize() + a.LowerMatInv().getRowSize(), 4);
    EXPECT_EQ(CSZMatrix(3, 1).cross(CSZMatrix(3, 1)).getRowSize(), 3);
}

} // namespace
