// SPDX-License-Identifier: MIT
//
// CSZMatrix: slices and deletions, over every combination of indices.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <climits>

using namespace matrixtest;

namespace {

// Matrices whose elements all differ: 0 x 0, single elements, rows and columns, 4 x 3, 3 x 4.
std::vector<literal::Matrix> Numbered()
{
    constexpr int sizes[][2] = {
        {0, 0},
        {1, 1},
        {1, 4},
        {4, 1},
        {4, 3},
        {3, 4}
    };
    std::vector<literal::Matrix> all;
    for (const auto& [rows, cols] : sizes) {
        literal::Matrix m(rows, cols);
        double next = 1.0;
        for (double& x : m.elements)
            x = next++;
        all.push_back(m);
    }
    return all;
}

constexpr int kLow = -2;
constexpr int kHigh = 6;

template <class Check>
void ForEveryPair(Check check)
{
    for (int a = kLow; a <= kHigh; ++a)
        for (int b = kLow; b <= kHigh; ++b)
            check(a, b);
}

void CheckPart(const CSZMatrix& part, const literal::Matrix& expected)
{
    ASSERT_THAT(part, Equals(expected));
    ASSERT_EQ(part.isMatrixHealthy(), expected.rows > 0);
}

TEST(SZMatrixParts, SlicesForEveryIndex)
{
    for (const literal::Matrix& m : Numbered())
        ForEveryPair([&](int r0, int c0) {
            ForEveryPair([&](int r1, int c1) {
                CheckPart(Checked(m).Slice(r0, c0, r1, c1), literal::Slice(m, r0, c0, r1, c1));
            });
        });
}

TEST(SZMatrixParts, SlicesRowsAndColumnsForEveryIndex)
{
    for (const literal::Matrix& m : Numbered())
        ForEveryPair([&](int first, int n) {
            CheckPart(Checked(m).SliceRows(first, n),
                      n < 1 ? literal::Matrix()
                            : literal::Slice(m, first, 0, first + n - 1, m.cols - 1));
            CheckPart(Checked(m).SliceCols(first, n),
                      n < 1 ? literal::Matrix()
                            : literal::Slice(m, 0, first, m.rows - 1, first + n - 1));
        });
}

TEST(SZMatrixParts, DeletesForEveryIndex)
{
    for (const literal::Matrix& m : Numbered())
        ForEveryPair([&](int first, int n) {
            CheckPart(Checked(m).DeleteRow(first, n), literal::DeleteRow(m, first, n));
            CheckPart(Checked(m).DeleteCol(first, n), literal::DeleteCol(m, first, n));
            ForEveryPair([&](int c0, int nc) {
                CheckPart(Checked(m).Delete(first, n, c0, nc),
                          literal::DeleteCol(literal::DeleteRow(m, first, n), c0, nc));
            });
        });
}

TEST(SZMatrixParts, SliceTakesBothEnds)
{
    const CSZMatrix m = Checked("1 2 3; 4 5 6; 7 8 9");
    EXPECT_THAT(m.Slice(1, 0, 2, 1), Equals(Of("4 5; 7 8")));
    EXPECT_THAT(m.Slice(1, 0, 0, 2), IsEmpty());
    EXPECT_THAT(m.Slice(0, 2, 2, 1), IsEmpty());
}

TEST(SZMatrixParts, DeletesOfAllRowsLeaveNothing)
{
    const CSZMatrix m(3, 2, MatOnes);
    EXPECT_THAT(m.DeleteRow(0, 3), IsEmpty());
    EXPECT_THAT(m.DeleteRow(2, 3), IsEmpty());
    EXPECT_THAT(m.DeleteCol(0, 2), IsEmpty());
}

TEST(SZMatrixParts, DeletionPastTheEndDropsWhatIsLeftOver)
{
    const CSZMatrix m = Checked("1; 2; 3; 4");
    EXPECT_THAT(m.DeleteRow(3, 2), Equals(Of("1; 2")));
    EXPECT_THAT(m.DeleteRow(1, 2), Equals(Of("1; 4")));
    EXPECT_THAT(m.matTran().DeleteCol(2, 3), Equals(Of("1")));
}

TEST(SZMatrixParts, ExtremeIndicesAreRefused)
{
    const CSZMatrix m(3, 3, MatOnes);
    for (const int i : {INT_MIN, INT_MAX}) {
        EXPECT_THAT(m.Slice(0, 0, i, 0), IsEmpty());
        EXPECT_THAT(m.SliceRows(1, i), IsEmpty());
        EXPECT_THAT(m.SliceCols(i, 1), IsEmpty());
        EXPECT_THAT(m.DeleteRow(1, i), IsEmpty());
        EXPECT_THAT(m.DeleteCol(i, i), IsEmpty());
        EXPECT_THAT(m.Delete(i, 1, 1, i), IsEmpty());
    }
}

} // namespace
