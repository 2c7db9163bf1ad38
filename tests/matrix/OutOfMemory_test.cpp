// SPDX-License-Identifier: MIT
//
// Both matrix classes where memory runs out: whichever allocation fails, nothing is thrown, and an
// operation either gives its result or reports that it did not.
#include "matrix/ElementStore.h"
#include "tests/matrix/MatrixTools.h"
#include "tests/reference/FailingAllocations.h"

#include <cstdint>
#include <utility>

using namespace matrixtest;
using reference::AllocationRound;
using reference::CanFailAllocations;
using reference::ForEveryFailingAllocation;

namespace {

// What an operation leaves: up to two matrices, and whether it reports success.
template <class Matrix>
struct Outcome
{
    Matrix first;
    Matrix second;
    CString text;
    bool succeeded = true;
};

template <class Matrix>
struct Operation
{
    const char* what;
    void (*run)(const Matrix& a, Outcome<Matrix>& out);
};

template <class Matrix>
bool ReportsSuccess(const Outcome<Matrix>& out)
{
    return out.succeeded && (out.first.GetRow() > 0 || !out.text.IsEmpty());
}

template <class Matrix>
void CheckShortOfMemory(const Operation<Matrix>& operation, const Matrix& a)
{
    SCOPED_TRACE(operation.what);
    Outcome<Matrix> expected;
    operation.run(a, expected);
    ASSERT_TRUE(ReportsSuccess(expected));
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        Outcome<Matrix> out;
        round.Run([&] { operation.run(a, out); });
        EXPECT_TRUE(ReportsSuccess(out) || round.HasFailed());
        if (!ReportsSuccess(out)) return;
        EXPECT_THAT(out.first, Equals(expected.first));
        EXPECT_THAT(out.second, Equals(expected.second));
        EXPECT_EQ(out.text, expected.text);
    });
    EXPECT_GT(failures, 0);
}

// Symmetric, positive definite, too large for the inside of a matrix; 60 rows need more working
// memory than the kernels keep on the stack.
literal::Matrix Sample(int n)
{
    literal::Matrix m = literal::Identity(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            m.Set(i, j, m.Get(i, j) + 1.0 / (i + j + 1));
    return m;
}

constexpr Operation<CSZMatrix> kCheckedOperations[] = {
    {"copy",        [](const CSZMatrix& a, auto& out) { out.first = a; }                               },
    {"Alloc",       [](const CSZMatrix& a,
     auto& out) { out.succeeded = out.first.Alloc(a.getRowSize(), a.getColSize()); }                   },
    {"sum",         [](const CSZMatrix& a, auto& out) { out.first = a + a; }                           },
    {"scaled",      [](const CSZMatrix& a, auto& out) { out.first = a * 2.0; }                         },
    {"product",     [](const CSZMatrix& a, auto& out) { out.first = a * a; }                           },
    {"chain",       [](const CSZMatrix& a, auto& out) { out.first = a.matTran() * a * a; }             },
    {"Slice",       [](const CSZMatrix& a, auto& out) { out.first = a.Slice(0, 0, 6, 6); }             },
    {"Delete",      [](const CSZMatrix& a, auto& out) { out.first = a.Delete(1, 1, 2, 1); }            },
    {"matInv",      [](const CSZMatrix& a, auto& out) { out.first = a.matInv(); }                      },
    {"UpperMatInv", [](const CSZMatrix& a, auto& out) { out.first = a.UpperMatInv(); }                 },
    {"LowerMatInv", [](const CSZMatrix& a, auto& out) { out.first = a.LowerMatInv(); }                 },
    {"cholesky",    [](const CSZMatrix& a, auto& out) { out.succeeded = a.cholesky(out.first); }       },
    {"ldl",         [](const CSZMatrix& a, auto& out) { out.succeeded = a.ldl(out.first, out.second); }},
    {"udu",         [](const CSZMatrix& a, auto& out) { out.succeeded = a.udu(out.first, out.second); }},
    {"QR_Schmidt",  [](const CSZMatrix& a,
     auto& out) { out.succeeded = a.QR_Schmidt(out.first, out.second, 1e-12); }                        },
};

constexpr Operation<CTiltMatrix> kTiltOperations[] = {
    {"copy",     [](const CTiltMatrix& a, auto& out) { out.first = a; }                  },
    {"sum",      [](const CTiltMatrix& a, auto& out) { out.first = a + a; }              },
    {"scaled",   [](const CTiltMatrix& a, auto& out) { out.first = a * 2.0; }            },
    {"product",  [](const CTiltMatrix& a, auto& out) { out.first = a * a; }              },
    {"MatTran",  [](const CTiltMatrix& a, auto& out) { out.first = a.MatTran(); }        },
    {"Slice",    [](const CTiltMatrix& a, auto& out) { out.first = a.Slice(0, 0, 6, 6); }},
    {"~",        [](const CTiltMatrix& a, auto& out) { out.first = ~a; }                 },
    {"MatInv",   [](const CTiltMatrix& a, auto& out) { out.first = a.MatInv(); }         },
    {"Reverse",
     [](const CTiltMatrix& a,             auto& out) {
         out.first = a.Reverse();
         out.succeeded = a.IsValid() == 1;
     }                                                      },
    {"matChole",
     [](const CTiltMatrix& a,             auto& out) {
         int status = 0;
         out.first = a.matChole(&status);
         out.succeeded = status == 1;
     }                                                      },
};

class OutOfMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    }
};

class OutOfMemoryAtSize : public OutOfMemory, public testing::WithParamInterface<int>
{};

INSTANTIATE_TEST_SUITE_P(Sizes, OutOfMemoryAtSize, testing::Values(7, 12, 60));

TEST_P(OutOfMemoryAtSize, IsReportedByEveryCheckedOperation)
{
    const CSZMatrix a = Checked(Sample(GetParam()));
    for (const auto& operation : kCheckedOperations)
        CheckShortOfMemory(operation, a);
}

TEST_P(OutOfMemoryAtSize, IsReportedByEveryTiltOperation)
{
    const CTiltMatrix a = Tilt(Sample(GetParam()));
    for (const auto& operation : kTiltOperations)
        CheckShortOfMemory(operation, a);
}

TEST_P(OutOfMemoryAtSize, LeavesATiltMatrixInvalidAfterAnOperatorThatFailed)
{
    const CTiltMatrix a = Tilt(Sample(GetParam()));
    constexpr void (*kOperators[])(const CTiltMatrix&) = {
        [](const CTiltMatrix& m) { static_cast<void>(m + m); },
        [](const CTiltMatrix& m) { static_cast<void>(m - 1.0); },
        [](const CTiltMatrix& m) { static_cast<void>(m * m); },
        [](const CTiltMatrix& m) { static_cast<void>(~m); },
        [](const CTiltMatrix& m) { static_cast<void>(m.MatInv()); },
        [](const CTiltMatrix& m) { static_cast<void>(m.Reverse()); },
    };
    for (const auto& apply : kOperators) {
        const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
            round.Run([&] { apply(a); });
            EXPECT_EQ(a.IsValid(), round.HasFailed() ? 0 : 1);
        });
        EXPECT_GT(failures, 0);
    }
}

TEST_F(OutOfMemory, GivesAnEmptyText)
{
    CheckShortOfMemory<CSZMatrix>(
        {"toString", [](const CSZMatrix& a, auto& out) { out.text = a.toString(12, 4, 'f'); }},
        Checked(Sample(7)));
    CheckShortOfMemory<CTiltMatrix>(
        {"Output", [](const CTiltMatrix& a, auto& out) { out.text = a.Output(); }},
        Tilt(Sample(7)));
}

// Elements this large send the rotations through full products, which allocate.
TEST(ElementStore, HasNoRoomForMoreThanAnyMemory)
{
    tiltpole::matrix::ElementStore store;
    ASSERT_TRUE(store.Reserve(100));
    for (const std::size_t count : {PTRDIFF_MAX / sizeof(double), SIZE_MAX / 2}) {
        EXPECT_FALSE(store.Reserve(count)) << count;
        EXPECT_FALSE(store.Reset(count)) << count;
        EXPECT_EQ(*store.Data(), 0.0) << "the spare element of an empty store";
    }
}

TEST_F(OutOfMemory, EndsJacobiWithoutSuccess)
{
    CSZMatrix a = Checked(Sample(7));
    for (int i = 0; i < a.getRowSize(); ++i)
        a.SetData(i, i, 1e200);
    a.SetData(0, 1, 1e198);
    a.SetData(1, 0, 1e198);
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        CSZMatrix V;
        CSZMatrix D;
        const bool succeeded = round.Run([&] { return a.Jacobi(V, D, 1e190); });
        EXPECT_EQ(succeeded, !round.HasFailed());
        EXPECT_EQ(succeeded, V.GetRow() == a.GetRow() && D.GetRow() == a.GetRow());
    });
    EXPECT_GT(failures, 0);
}

} // namespace
