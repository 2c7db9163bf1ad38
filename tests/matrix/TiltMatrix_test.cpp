// SPDX-License-Identifier: MIT
//
// CTiltMatrix: storage, operators, parts and text.
#include "matrix/TiltMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <climits>
#include <utility>

using namespace matrixtest;

namespace {

TEST(TiltMatrix, StartsEmptyAndNotValid)
{
    const CTiltMatrix m;
    EXPECT_THAT(m, IsEmpty());
    EXPECT_EQ(m.IsValid(), 0);
}

TEST(TiltMatrix, OfOneSizeIsAZeroedColumn)
{
    const CTiltMatrix m(3);
    EXPECT_THAT(m, Equals(literal::Matrix(3, 1)));
    EXPECT_EQ(m.IsValid(), 1);
}

TEST(TiltMatrix, OfASizeOfZeroHasNoData)
{
    const CTiltMatrix empty[] = {CTiltMatrix(0, 3), CTiltMatrix(3, 0), CTiltMatrix(0u),
                                 CTiltMatrix(UINT_MAX, UINT_MAX), CTiltMatrix(65536, 65536)};
    for (const CTiltMatrix& m : empty) {
        EXPECT_THAT(m, IsEmpty());
        EXPECT_EQ(m.IsValid(), 0);
    }
}

TEST(TiltMatrix, CopiesAndMovesItsElements)
{
    for (const unsigned n : {2u, 6u, 7u, 30u}) {
        CTiltMatrix source(n, n);
        source.Diagonal(1.0);
        const CTiltMatrix copy(source);
        EXPECT_THAT(copy, Equals(source));
        EXPECT_EQ(copy.IsValid(), 1);
        const CTiltMatrix moved(std::move(source));
        EXPECT_THAT(moved, Equals(copy));
        EXPECT_EQ(moved.IsValid(), 1);
        EXPECT_THAT(source, IsEmpty());
        EXPECT_EQ(source.IsValid(), 0);
    }
}

TEST(TiltMatrix, ReadsAndWritesElements)
{
    CTiltMatrix m(2, 3);
    EXPECT_EQ(m.SetData(1, 2, 6.0), 1);
    EXPECT_EQ(m.SetData(1, 4.0), 1);
    EXPECT_EQ(m.SetData(2, 0, 1.0), 0);
    EXPECT_EQ(m.SetData(0, 3, 1.0), 0);
    EXPECT_EQ(m.SetData(2, 1.0), 0);
    EXPECT_EQ(m.SetData(UINT_MAX, UINT_MAX, 1.0), 0);
    EXPECT_EQ(m.GetData(1, 2), 6.0);
    EXPECT_EQ(m.GetData(1), 4.0);
    EXPECT_THAT(m, Equals(Of("0 0 0; 4 0 6")));
}

TEST(TiltMatrix, TakesABlockWhereItFits)
{
    CTiltMatrix m(3, 3);
    EXPECT_EQ(m.SetData(1, 1, Tilt("1 2; 3 4")), 1);
    EXPECT_THAT(m, Equals(Of("0 0 0; 0 1 2; 0 3 4")));
    EXPECT_EQ(m.SetData(2, 1, CTiltMatrix(2, 2)), 0);
    EXPECT_EQ(m.SetData(1, 2, CTiltMatrix(2, 2)), 0);
    EXPECT_EQ(m.SetData(UINT_MAX, 0, CTiltMatrix(2, 2)), 0);
    EXPECT_EQ(m.SetData(0, UINT_MAX - 1, CTiltMatrix(2, 2)), 0);
    EXPECT_EQ(m.SetData(0, 0, m), 1);
    EXPECT_THAT(m, Equals(Of("0 0 0; 0 1 2; 0 3 4")));
}

TEST(TiltMatrix, AllocatesZeroed)
{
    CTiltMatrix m = Tilt("1 2; 3 4");
    EXPECT_EQ(m.Alloc(2, 2), 1);
    EXPECT_THAT(m, Equals(literal::Matrix(2, 2)));
    EXPECT_EQ(m.Alloc(50), 1);
    EXPECT_THAT(m, Equals(literal::Matrix(50, 1)));
    EXPECT_EQ(m.IsValid(), 1);
}

TEST(TiltMatrix, AllocOfASizeOfZeroChangesNothing)
{
    CTiltMatrix m = Tilt("1 2");
    EXPECT_EQ(m.Alloc(0), 0);
    EXPECT_EQ(m.Alloc(0, 2), 0);
    EXPECT_EQ(m.Alloc(2, 0), 0);
    EXPECT_THAT(m, Equals(Of("1 2")));
    EXPECT_EQ(m.IsValid(), 1);
}

TEST(TiltMatrix, AllocAnswersOneWhenMemoryIsOut)
{
    CTiltMatrix m = Tilt("1 2");
    EXPECT_EQ(m.Alloc(UINT_MAX, UINT_MAX), 1);
    EXPECT_EQ(m.IsValid(), 0);
    EXPECT_THAT(m, IsEmpty());
}

TEST(TiltMatrix, AssignsOneValueToEveryElement)
{
    CTiltMatrix m(2, 2);
    m = 3.0;
    EXPECT_THAT(m, Equals(Of("3 3; 3 3")));
}

TEST(TiltMatrix, AssignsSizeAndElements)
{
    CTiltMatrix m(2, 2);
    EXPECT_EQ(m = Tilt("1 2 3"), 1);
    EXPECT_THAT(m, Equals(Of("1 2 3")));
    const CTiltMatrix other = Tilt("4 5 6");
    EXPECT_EQ(m = other, 1);
    EXPECT_THAT(m, Equals(other));
    const CTiltMatrix empty;
    EXPECT_EQ(m = empty, 1);
    EXPECT_THAT(m, IsEmpty());
    EXPECT_EQ(m.IsValid(), 0);
}

TEST(TiltMatrix, AssignsItself)
{
    CTiltMatrix m = Tilt("1 2; 3 4");
    CTiltMatrix& same = m;
    EXPECT_EQ(m = same, 1);
    EXPECT_EQ(m = std::move(same), 1);
    EXPECT_THAT(m, Equals(Of("1 2; 3 4")));
}

TEST(TiltMatrix, OperatorsComputeAndSetValid)
{
    CTiltMatrix a = Tilt("1 2; 3 4");
    const CTiltMatrix b = Tilt("5 6; 7 8");
    const CTiltMatrix column(3);
    const auto spoil = [&] { EXPECT_EQ((a + column, a.IsValid()), 0); };

    spoil();
    EXPECT_THAT(a + b, Equals(Of("6 8; 10 12")));
    EXPECT_EQ(a.IsValid(), 1);
    spoil();
    EXPECT_THAT(a - b, Equals(Of("-4 -4; -4 -4")));
    EXPECT_EQ(a.IsValid(), 1);
    spoil();
    EXPECT_THAT(a * b, Equals(Of("19 22; 43 50")));
    EXPECT_EQ(a.IsValid(), 1);
    spoil();
    EXPECT_THAT(a + 1.0, Equals(Of("2 3; 4 5")));
    EXPECT_EQ(a.IsValid(), 1);
    EXPECT_THAT(a - 1.0, Equals(Of("0 1; 2 3")));
    EXPECT_THAT(a * 2.0, Equals(Of("2 4; 6 8")));
    EXPECT_THAT(a / 2.0, Equals(Of("0.5 1; 1.5 2")));
    EXPECT_THAT(a / 0.0, Equals(Of("inf inf; inf inf")));
}

TEST(TiltMatrix, AddsNoMatrixOfOtherColumns)
{
    const CTiltMatrix wide = Tilt("1 2 3; 4 5 6");
    CTiltMatrix left(2, 2);
    EXPECT_THAT(left + wide, Equals(wide));
    EXPECT_EQ(left.IsValid(), 0);
}

TEST(TiltMatrix, OfNoElementsIsTheProductOfTwoThatHaveNone)
{
    CTiltMatrix left(0u);
    EXPECT_THAT(left * CTiltMatrix(0u), IsEmpty());
    EXPECT_EQ(left.IsValid(), 1);
}

TEST(TiltMatrix, FailedOperatorsReturnTheRightOperand)
{
    const CTiltMatrix right = Tilt("1; 2; 3");
    for (int operation = 0; operation < 3; ++operation) {
        CTiltMatrix left(2, 2);
        const CTiltMatrix result = operation == 0   ? left + right
                                   : operation == 1 ? left - right
                                                    : left * right;
        EXPECT_THAT(result, Equals(right));
        EXPECT_EQ(result.IsValid(), 1);
        EXPECT_EQ(left.IsValid(), 0);
        EXPECT_EQ(right.IsValid(), 1);
        EXPECT_THAT(left, Equals(literal::Matrix(2, 2)));
    }
}

TEST(TiltMatrix, WorksInPlace)
{
    CTiltMatrix a = Tilt("1 2");
    EXPECT_EQ(a += Tilt("10 20"), 1);
    EXPECT_THAT(a, Equals(Of("11 22")));
    EXPECT_EQ(a -= Tilt("1 2"), 1);
    EXPECT_EQ(a += 5.0, 1);
    EXPECT_EQ(a -= 1.0, 1);
    EXPECT_THAT(a, Equals(Of("14 24")));
}

TEST(TiltMatrix, InPlaceOfAnotherSizeChangesNothing)
{
    CTiltMatrix a = Tilt("1 2");
    EXPECT_EQ(a += CTiltMatrix(2), 0);
    EXPECT_EQ(a.IsValid(), 0);
    EXPECT_EQ(a += 0.0, 1);
    EXPECT_EQ(a.IsValid(), 1);
    EXPECT_EQ(a -= CTiltMatrix(2), 0);
    EXPECT_EQ(a.IsValid(), 0);
    EXPECT_THAT(a, Equals(Of("1 2")));
}

TEST(TiltMatrix, StandsOnBothSides)
{
    CTiltMatrix a = Tilt("1 2; 3 4");
    const CTiltMatrix& same = a;
    EXPECT_THAT(a + a, Equals(Of("2 4; 6 8")));
    EXPECT_THAT(a - a, Equals(literal::Matrix(2, 2)));
    EXPECT_THAT(a * a, Equals(Of("7 10; 15 22")));
    a += same;
    EXPECT_THAT(a, Equals(Of("2 4; 6 8")));
    a = a * a;
    EXPECT_THAT(a, Equals(Of("28 40; 60 88")));
    a -= same;
    EXPECT_THAT(a, Equals(literal::Matrix(2, 2)));
}

TEST(TiltMatrix, AgreesWithTheLiteralRules)
{
    Maker make(31);
    for (const Kind kind : kKinds)
        for (int trial = 0; trial < 150; ++trial) {
            const literal::Matrix a = make.Any(make.Between(1, 20), make.Between(1, 20), kind);
            const literal::Matrix b = make.Any(a.rows, a.cols, kind);
            const literal::Matrix f = make.Any(a.cols, make.Between(1, 20), kind);
            ASSERT_THAT(Tilt(a) + Tilt(b), Equals(literal::Combined(a, b, std::plus<>{})));
            ASSERT_THAT(Tilt(a) - Tilt(b), Equals(literal::Combined(a, b, std::minus<>{})));
            ASSERT_THAT(Tilt(a) * Tilt(f), Equals(literal::Product(a, f)));
            ASSERT_THAT(Tilt(a).MatTran(), Equals(literal::Transpose(a)));
        }
}

TEST(TiltMatrix, MirrorsItsUpperTriangle)
{
    CTiltMatrix m = Tilt("1 2; 3 4");
    EXPECT_EQ(m.Symmetry(), 1);
    EXPECT_THAT(m, Equals(Of("1 2; 2 4")));
    CTiltMatrix wide = Tilt("1 2");
    EXPECT_EQ(wide.Symmetry(), 0);
    EXPECT_THAT(wide, Equals(Of("1 2")));
}

TEST(TiltMatrix, SumsItsDiagonal)
{
    CTiltMatrix square = Tilt("1 2; 3 4");
    EXPECT_EQ((square + CTiltMatrix(3), square.IsValid()), 0);
    EXPECT_EQ(square.Summation(), 5.0);
    EXPECT_EQ(square.IsValid(), 1);
    EXPECT_EQ(square.Trace(), 5.0);

    const CTiltMatrix wide = Tilt("1 2 3; 4 5 6");
    EXPECT_EQ(wide.Trace(), 6.0);
    EXPECT_EQ(wide.IsValid(), 1);
    EXPECT_EQ(wide.Summation(), 0.0);
    EXPECT_EQ(wide.IsValid(), 0);
}

TEST(TiltMatrix, SlicesBothEndsIncluded)
{
    const CTiltMatrix m = Tilt("1 2 3; 4 5 6; 7 8 9");
    EXPECT_THAT(m.Slice(1, 0, 2, 1), Equals(Of("4 5; 7 8")));
    constexpr int refused[][4] = {
        {1,  0,  0,       2      },
        {0,  2,  2,       1      },
        {-1, 0,  0,       0      },
        {0,  0,  3,       0      },
        {0,  0,  0,       3      },
        {0,  -1, 0,       0      },
        {0,  0,  INT_MAX, INT_MAX}
    };
    for (const auto& [r0, c0, r1, c1] : refused)
        EXPECT_THAT(m.Slice(r0, c0, r1, c1), IsEmpty());
}

TEST(TiltMatrix, SetsItsDiagonal)
{
    CTiltMatrix m(2, 3);
    m = 1.0;
    EXPECT_EQ(m.Diagonal(5.0), 1);
    EXPECT_THAT(m, Equals(Of("5 0 1; 0 5 1")));
    EXPECT_EQ(m.Diagonal(Tilt("7 8")), 1);
    EXPECT_THAT(m, Equals(Of("7 0 1; 0 8 1")));
    EXPECT_EQ(m.Diagonal(Tilt("3; 4")), 1);
    EXPECT_THAT(m, Equals(Of("3 0 1; 0 4 1")));
    EXPECT_EQ(CTiltMatrix().Diagonal(1.0), 0);
    CTiltMatrix tall(3, 2);
    tall = 1.0;
    EXPECT_EQ(tall.Diagonal(5.0), 1);
    EXPECT_THAT(tall, Equals(Of("5 0; 0 5; 1 1")));
}

TEST(TiltMatrix, RefusesADiagonalOfAnotherLength)
{
    CTiltMatrix m(2, 3);
    for (const CTiltMatrix& values : {CTiltMatrix(3), CTiltMatrix(1), CTiltMatrix(2, 2)})
        EXPECT_EQ(m.Diagonal(values), 0);
    EXPECT_EQ(CTiltMatrix().Diagonal(CTiltMatrix()), 0);
    EXPECT_THAT(m, Equals(literal::Matrix(2, 3)));
}

TEST(TiltMatrix, ZerosEveryElement)
{
    CTiltMatrix m = Tilt("1 2");
    EXPECT_EQ(m.Zeros(), 1);
    EXPECT_THAT(m, Equals(Of("0 0")));
    EXPECT_EQ(CTiltMatrix().Zeros(), 0);
}

TEST(TiltMatrix, WritesItsElementsAsText)
{
    EXPECT_EQ(Tilt("1 -2.5; 0 1e100").Output(), CString(L"   1.000000e+00   -2.500000e+00 \n"
                                                        L"   0.000000e+00   1.000000e+100 \n"));
    EXPECT_TRUE(CTiltMatrix().Output().IsEmpty());
}

TEST(TiltMatrix, ModuleIsTheLengthOfAVector)
{
    EXPECT_EQ(Tilt("3; 4").Module(), 5.0);
    EXPECT_EQ(Tilt("3 4").Module(), 5.0);
    EXPECT_EQ(Tilt("3 4; 0 0").Module(), 0.0);
    EXPECT_EQ(CTiltMatrix().Module(), 0.0);
}

} // namespace
