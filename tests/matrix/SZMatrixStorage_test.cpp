// SPDX-License-Identifier: MIT
//
// CSZMatrix: construction, health, access, storage and text.
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <climits>
#include <cstddef>
#include <malloc.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

using namespace matrixtest;

namespace {

TEST(SZMatrix, StartsEmptyAndHealthy)
{
    const CSZMatrix m;
    EXPECT_THAT(m, IsEmpty());
    EXPECT_TRUE(m.isMatrixHealthy());
}

TEST(SZMatrix, RefusesSizesBelowOneAndSizesThatOverflow)
{
    constexpr int sizes[][2] = {
        {0,       5      },
        {5,       0      },
        {0,       0      },
        {-1,      3      },
        {3,       -1     },
        {INT_MIN, INT_MIN},
        {-3,      -3     },
        {INT_MAX, INT_MAX},
        {65536,   65536  },
        {46341,   46341  },
        {1,       INT_MIN},
        {INT_MAX, 2      },
    };
    for (const auto& [rows, cols] : sizes) {
        const double one = 1.0;
        const CSZMatrix refused[] = {CSZMatrix(rows, cols), CSZMatrix(rows, cols, MatOnes),
                                     CSZMatrix(&one, 1, rows, cols), CSZMatrix(rows, cols, 1, 1.0)};
        for (const CSZMatrix& m : refused) {
            EXPECT_THAT(m, IsEmpty()) << rows << " x " << cols;
            EXPECT_FALSE(m.isMatrixHealthy());
        }
    }
}

TEST(SZMatrix, StartsZeroFilled)
{
    for (const int n : {1, 3, 6, 7, 40}) {
        const CSZMatrix m(n, n + 1);
        EXPECT_THAT(m, Equals(literal::Matrix(n, n + 1)));
        EXPECT_TRUE(m.isMatrixHealthy());
        EXPECT_EQ(m.GetRow(), static_cast<unsigned>(n));
        EXPECT_EQ(m.GetCol(), static_cast<unsigned>(n + 1));
    }
}

TEST(SZMatrix, FillsAsItsTypeSays)
{
    EXPECT_THAT(CSZMatrix(2, 3, MatZeros), Equals(Of("0 0 0; 0 0 0")));
    EXPECT_THAT(CSZMatrix(2, 3, MatOnes), Equals(Of("1 1 1; 1 1 1")));
    EXPECT_THAT(CSZMatrix(2, 3, MatIdentity), Equals(Of("1 0 0; 0 1 0")));
    EXPECT_THAT(CSZMatrix(3, 2, MatIdentity), Equals(Of("1 0; 0 1; 0 0")));
    EXPECT_THAT(CSZMatrix(2, 2, static_cast<MatType>(3)), Equals(Of("0 0; 0 0")));
}

TEST(SZMatrix, CopiesAsManyValuesAsThereAre)
{
    const double values[] = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_THAT(CSZMatrix(values, 4, 2, 3), Equals(Of("1 2 3; 4 0 0")));
    EXPECT_THAT(CSZMatrix(values, 7, 2, 3), Equals(Of("1 2 3; 4 5 6")));
    EXPECT_THAT(CSZMatrix(values, -1, 1, 2), Equals(Of("0 0")));
    EXPECT_THAT(CSZMatrix(nullptr, 4, 1, 2), Equals(Of("0 0")));
}

TEST(SZMatrix, TakesItsValuesAsArguments)
{
    EXPECT_THAT(CSZMatrix(2, 2, 4, 1.0, 2.0, 3.0, 4.0), Equals(Of("1 2; 3 4")));
    EXPECT_THAT(CSZMatrix(2, 2, 3, 1.0, 2.0, 3.0), Equals(Of("1 2; 3 0")));
    EXPECT_THAT(CSZMatrix(1, 2, 4, 1.0, 2.0, 3.0, 4.0), Equals(Of("1 2")));
    EXPECT_THAT(CSZMatrix(1, 2, 0), Equals(Of("0 0")));
    EXPECT_THAT(CSZMatrix(1, 2, -5), Equals(Of("0 0")));
}

TEST(SZMatrix, IsHealthyAfterACopyWhenItHasElements)
{
    CSZMatrix unhealthy(0, 1);
    unhealthy = CSZMatrix(2, 2, MatOnes);
    ASSERT_FALSE(unhealthy.isMatrixHealthy()); // assignment keeps the flag
    EXPECT_TRUE(CSZMatrix(unhealthy).isMatrixHealthy());
    EXPECT_THAT(CSZMatrix(unhealthy), Equals(Of("1 1; 1 1")));
    EXPECT_TRUE((unhealthy + 1.0).isMatrixHealthy());

    const CSZMatrix healthyAndEmpty;
    EXPECT_FALSE(CSZMatrix(healthyAndEmpty).isMatrixHealthy());
}

TEST(SZMatrix, MovesAsItCopiesAndLeavesNothingBehind)
{
    for (const int n : {2, 6, 7, 20}) {
        CSZMatrix source(0, 1);
        source = CSZMatrix(n, n, MatIdentity);
        ASSERT_FALSE(source.isMatrixHealthy());
        const CSZMatrix moved(std::move(source));
        EXPECT_THAT(moved, Equals(literal::Identity(n)));
        EXPECT_TRUE(moved.isMatrixHealthy());
        EXPECT_THAT(source, IsEmpty());
        EXPECT_FALSE(source.isMatrixHealthy());
        EXPECT_TRUE(source.Alloc(1, 1));
    }
}

TEST(SZMatrix, MoveOfTheHealthyEmptyMatrixIsNotHealthy)
{
    CSZMatrix source;
    const CSZMatrix moved(std::move(source));
    EXPECT_FALSE(moved.isMatrixHealthy());
}

TEST(SZMatrix, IsDeletedThroughAPointer)
{
    struct Counted : CSZMatrix
    {
        explicit Counted(int& deaths) : m_deaths(deaths) {}
        ~Counted() override { ++m_deaths; }
        int& m_deaths;
    };
    int deaths = 0;
    const std::unique_ptr<CSZMatrix> none;
    {
        const std::unique_ptr<CSZMatrix> held = std::make_unique<Counted>(deaths);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(SZMatrix, ReadsZeroOutside)
{
    const CSZMatrix m(2, 3, MatOnes);
    constexpr int outside[][2] = {
        {-1,      0      },
        {0,       -1     },
        {2,       0      },
        {0,       3      },
        {INT_MAX, 0      },
        {0,       INT_MIN}
    };
    for (const auto& [r, c] : outside)
        EXPECT_EQ(m.GetData(r, c), 0.0) << r << ", " << c;
    EXPECT_EQ(m.GetData(1, 2), 1.0);
    EXPECT_EQ(CSZMatrix().GetData(0, 0), 0.0);
}

TEST(SZMatrix, RefusesToWriteOutside)
{
    CSZMatrix m(2, 3);
    constexpr int outside[][2] = {
        {-1,      0      },
        {0,       -1     },
        {2,       0      },
        {0,       3      },
        {INT_MIN, INT_MAX}
    };
    for (const auto& [r, c] : outside)
        EXPECT_FALSE(m.SetData(r, c, 7.0)) << r << ", " << c;
    EXPECT_FALSE(m.SetData(2, 7.0));
    EXPECT_FALSE(m.SetData(-1, 7.0));
    EXPECT_THAT(m, Equals(literal::Matrix(2, 3)));
}

TEST(SZMatrix, OneIndexIsARow)
{
    CSZMatrix m(3, 3);
    EXPECT_TRUE(m.SetData(1, 7.0));
    EXPECT_THAT(m, Equals(Of("0 0 0; 7 0 0; 0 0 0")));
}

TEST(SZMatrix, TakesABlockWhereItFits)
{
    CSZMatrix m(3, 3);
    EXPECT_TRUE(m.SetData(1, 1, Checked("1 2; 3 4")));
    EXPECT_THAT(m, Equals(Of("0 0 0; 0 1 2; 0 3 4")));
    constexpr int outside[][2] = {
        {2,       1 },
        {1,       2 },
        {-1,      0 },
        {0,       -1},
        {3,       0 },
        {0,       3 },
        {INT_MAX, 0 }
    };
    for (const auto& [r, c] : outside)
        EXPECT_FALSE(m.SetData(r, c, CSZMatrix(2, 2, MatOnes))) << r << ", " << c;
    EXPECT_THAT(m, Equals(Of("0 0 0; 0 1 2; 0 3 4")));
}

TEST(SZMatrix, TakesItselfAsABlock)
{
    CSZMatrix m = Checked("1 2; 3 4");
    EXPECT_TRUE(m.SetData(0, 0, m));
    EXPECT_FALSE(m.SetData(1, 0, m));
    EXPECT_THAT(m, Equals(Of("1 2; 3 4")));
}

// The last row of an empty block is the one before it: only behind the first row and column is
// that inside.
TEST(SZMatrix, TakesAnEmptyBlockBehindTheFirstElement)
{
    CSZMatrix m(2, 2, MatOnes);
    EXPECT_FALSE(m.SetData(0, 0, CSZMatrix()));
    EXPECT_TRUE(m.SetData(1, 1, CSZMatrix()));
    EXPECT_THAT(m, Equals(Of("1 1; 1 1")));
}

TEST(SZMatrix, CallReachesByLinearPosition)
{
    const CSZMatrix m = Checked("1 2 3; 4 5 6");
    EXPECT_EQ(m(0, 3), 4.0);
    EXPECT_EQ(m(1, -1), 3.0);
    EXPECT_EQ(m(-1, 5), 3.0);
    EXPECT_EQ(m(1, 2), 6.0);
    m(0, 4) = 50.0;
    EXPECT_EQ(m.GetData(1, 1), 50.0);
}

TEST(SZMatrix, CallOutsideReachesTheFirstElement)
{
    const CSZMatrix m = Checked("1 2 3; 4 5 6");
    constexpr int outside[][2] = {
        {-1,      0      },
        {2,       1      },
        {0,       7      },
        {INT_MAX, INT_MAX},
        {INT_MIN, INT_MIN},
        {INT_MAX, INT_MIN}
    };
    for (const auto& [r, c] : outside)
        EXPECT_EQ(&m(r, c), &m(0, 0)) << r << ", " << c;
}

TEST(SZMatrix, CallAdmitsOnePastTheEndInOwnMemory)
{
    for (const int n : {1, 2, 6, 7, 40}) {
        CSZMatrix m(n, n, MatOnes);
        m(n, 0) = 8.0;
        EXPECT_EQ(&m(n, 0), &m(0, 0) + n * n);
        EXPECT_THAT(m, Equals(Read(CSZMatrix(n, n, MatOnes))));
        const CSZMatrix product = m * m;
        EXPECT_EQ(product(n, 0), 0.0);
    }
}

TEST(SZMatrix, CallOnAnEmptyMatrixReachesAHarmlessZero)
{
    const CSZMatrix failed(0, 5);
    const CSZMatrix empty;
    for (const CSZMatrix* m : {&failed, &empty})
        for (const int index : {INT_MIN, -1, 0, 1, INT_MAX}) {
            EXPECT_EQ((*m)(index, index), 0.0);
            (*m)(index, 0) = 5.0;
            EXPECT_EQ((*m)(0, index), 0.0);
            EXPECT_THAT(*m, IsEmpty());
        }
}

TEST(SZMatrix, AllocGivesAZeroedMatrixOfTheSize)
{
    CSZMatrix m(2, 2, MatOnes);
    EXPECT_TRUE(m.Alloc(2, 2));
    EXPECT_THAT(m, Equals(literal::Matrix(2, 2)));
    for (const int n : {7, 3, 40, 41, 6}) {
        m = 4.0;
        EXPECT_TRUE(m.Alloc(n, 3));
        EXPECT_THAT(m, Equals(literal::Matrix(n, 3)));
    }
}

TEST(SZMatrix, AllocRefusesSizesBelowOneAndChangesNothing)
{
    CSZMatrix m(2, 2, MatOnes);
    constexpr int sizes[][2] = {
        {0,       2 },
        {2,       0 },
        {-1,      -1},
        {INT_MIN, 2 }
    };
    for (const auto& [rows, cols] : sizes)
        EXPECT_FALSE(m.Alloc(rows, cols));
    EXPECT_THAT(m, Equals(Of("1 1; 1 1")));
    EXPECT_TRUE(m.isMatrixHealthy());
}

TEST(SZMatrix, AllocMakesHealthyAndItsFailureDoesNot)
{
    CSZMatrix m(0, 1);
    EXPECT_TRUE(m.Alloc(1, 1));
    EXPECT_TRUE(m.isMatrixHealthy());
    EXPECT_FALSE(m.Alloc(INT_MAX, INT_MAX));
    EXPECT_FALSE(m.isMatrixHealthy());
    EXPECT_THAT(m, IsEmpty());
}

TEST(SZMatrix, ZerosEveryElement)
{
    CSZMatrix m(2, 3, MatOnes);
    EXPECT_EQ(m.Zeros(), 1);
    EXPECT_THAT(m, Equals(literal::Matrix(2, 3)));
    EXPECT_EQ(CSZMatrix().Zeros(), 0);
}

TEST(SZMatrix, DiagonalLeavesWhatLiesOutsideTheSquare)
{
    CSZMatrix wide(2, 3, MatOnes);
    EXPECT_EQ(wide.Diagonal(5), 1);
    EXPECT_THAT(wide, Equals(Of("5 0 1; 0 5 1")));
    CSZMatrix tall(3, 2, MatOnes);
    EXPECT_EQ(tall.Diagonal(5), 1);
    EXPECT_THAT(tall, Equals(Of("5 0; 0 5; 1 1")));
    EXPECT_EQ(CSZMatrix().Diagonal(5), 0);
}

TEST(SZMatrix, SetDiagonalClearsTheRest)
{
    CSZMatrix m(2, 3, MatOnes);
    EXPECT_TRUE(m.setDiagonal(5));
    EXPECT_THAT(m, Equals(Of("5 0 0; 0 5 0")));
    EXPECT_FALSE(CSZMatrix().setDiagonal(5));
}

struct TextCase
{
    double value;
    int width, precision;
    char format;
    const wchar_t* expected;
};

TEST(SZMatrix, WritesItsElementsAsText)
{
    const TextCase cases[] = {
        {1234.5, 12, 4,  'e', L"  1.2345E+03 \n"},
        {1234.5, 12, 4,  'E', L"  1.2345E+03 \n"},
        {-1e-5,  12, 3,  'E', L"  -1.000E-05 \n"},
        {1e100,  12, 2,  'E', L"   1.00E+100 \n"},
        {1234.5, 10, 2,  'f', L"   1234.50 \n"  },
        {1234.5, 0,  1,  'g', L"1234.5 \n"      },
        {0.0,    3,  0,  'x', L"  0 \n"         },
        {1.5,    -6, 1,  'f', L"1.5    \n"      },
        {1.5,    1,  -1, 'f', L"1.500000 \n"    },
    };
    for (const TextCase& c : cases)
        EXPECT_EQ(CSZMatrix(1, 1, 1, c.value).toString(c.width, c.precision, c.format),
                  CString(c.expected))
            << c.value;
}

TEST(SZMatrix, WritesOneLinePerRow)
{
    EXPECT_EQ(Checked("1 2; 3 4").toString(3, 0, 'f'), CString(L"  1   2 \n  3   4 \n"));
    EXPECT_TRUE(CSZMatrix().toString(3, 0, 'f').IsEmpty());
}

// The changes of a matrix that leave its size as it is.
struct SameSize
{
    const char* what;
    void (*change)(CSZMatrix& m, const CSZMatrix& other);
};

constexpr SameSize kSameSize[] = {
    {"Alloc",           [](CSZMatrix& m, const CSZMatrix&) { m.Alloc(m.getRowSize(), m.getColSize()); }},
    {"copy assignment", [](CSZMatrix& m, const CSZMatrix& other) { m = other; }                        },
    {"move assignment", [](CSZMatrix& m, const CSZMatrix& other) { m = CSZMatrix(other); }             },
    {"sum",             [](CSZMatrix& m, const CSZMatrix& other) { m = other + 1.0; }                  },
    {"product",         [](CSZMatrix& m, const CSZMatrix& other) { m = other * other; }                },
    {"inverse",         [](CSZMatrix& m, const CSZMatrix& other) { m = other.matInv(); }               },
    {"factor",          [](CSZMatrix& m, const CSZMatrix& other) { other.cholesky(m); }                },
};

TEST(SZMatrix, KeepsItsElementsInPlaceWhileItsSizeStays)
{
    for (const int n : {1, 6, 7, 40})
        for (const SameSize& same : kSameSize) {
            const CSZMatrix other(n, n, MatIdentity);
            CSZMatrix m(n, n, MatOnes);
            double& first = m(0, 0);
            double& last = m(n - 1, n - 1);
            same.change(m, other);
            ASSERT_EQ(&m(0, 0), &first) << same.what << ", " << n << " x " << n;
            ASSERT_EQ(&m(n - 1, n - 1), &last) << same.what << ", " << n << " x " << n;
            last = 5.0;
            EXPECT_EQ(m.GetData(n - 1, n - 1), 5.0) << same.what << ", " << n << " x " << n;
        }
}

TEST(SZMatrix, GivesItsMemoryBack)
{
    const auto held = [] {
        const struct mallinfo2 info = ::mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t before = held();
    {
        CSZMatrix m(50, 50);
        m.Alloc(60, 60);
        CSZMatrix copy = m;
        copy = CSZMatrix(20, 20);
    }
    EXPECT_EQ(held(), before);
}

TEST(SZMatrix, MoveAssignmentOfTheSameSizeLeavesNothingBehind)
{
    for (const int n : {2, 7}) {
        CSZMatrix source(n, n, MatIdentity);
        CSZMatrix m(n, n, MatOnes);
        EXPECT_TRUE(m = std::move(source));
        EXPECT_THAT(m, Equals(literal::Identity(n)));
        // NOLINTNEXTLINE(bugprone-use-after-move): an emptied matrix is a promise of the class
        EXPECT_THAT(source, IsEmpty());
        EXPECT_FALSE(source.isMatrixHealthy());
    }
}

TEST(SZMatrix, TakesEveryIntegerAsItsType)
{
    static_assert(std::is_same_v<std::underlying_type_t<MatType>, int>);
    for (const int value : {-1, 3, 77, INT_MAX, INT_MIN})
        EXPECT_THAT(CSZMatrix(2, 2, static_cast<MatType>(value)), Equals(literal::Matrix(2, 2)));
}

} // namespace
