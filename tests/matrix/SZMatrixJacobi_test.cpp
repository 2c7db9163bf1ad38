// SPDX-License-Identifier: MIT
//
// CSZMatrix::Jacobi: the eigen-solver, and the call that does not come back.
#include "matrix/SZMatrix.h"

#include "matrix/detail/PlaneRotation.h"
#include "tests/matrix/MatrixTools.h"

#include <csignal>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace matrixtest;

namespace {

TEST(SZMatrixJacobi, KeepsTheOrderOfADiagonalMatrix)
{
    CSZMatrix V;
    CSZMatrix D;
    EXPECT_TRUE(Checked("2 0; 0 1").Jacobi(V, D, 1e-12));
    EXPECT_THAT(V, Equals(literal::Identity(2)));
    EXPECT_THAT(D, Equals(Of("2 0; 0 1")));
}

TEST(SZMatrixJacobi, TurnsEqualDiagonalElementsBy45Degrees)
{
    CSZMatrix V;
    CSZMatrix D;
    EXPECT_TRUE(Checked("2 1; 1 2").Jacobi(V, D, 1e-12));
    const double h = std::sqrt(0.5);
    EXPECT_THAT(V, IsNear(Filled(2, 2, {h, -h, h, h}), 1e-15));
    EXPECT_THAT(D, IsNear(Of("3 0; 0 1"), 1e-15));
}

// The first sweep runs even where no element is above the tolerance.
TEST(SZMatrixJacobi, SweepsAtLeastOnce)
{
    CSZMatrix V;
    CSZMatrix D;
    EXPECT_TRUE(Checked("2 0.5; 0.5 1").Jacobi(V, D, 0.5));
    EXPECT_NEAR(D.GetData(0, 1), 0.0, 1e-15);
    EXPECT_TRUE(Checked("2 0.5; 0.5 1").Jacobi(V, D, 0.6));
    EXPECT_EQ(D.GetData(0, 1), 0.5);
}

TEST(SZMatrixJacobi, AgreesWithFullProductsBitForBit)
{
    Maker make(51);
    int compared = 0;
    for (const Kind kind : {Kind::Usual, Kind::Integers, Kind::Rankless, Kind::Special})
        for (int n = 1; n <= 14; ++n)
            for (const double tol : {1e-9, 0.0}) {
                const literal::Matrix a = make.Symmetric(n, kind);
                if (!literal::IsSymmetric(a)) continue;
                const auto expected = literal::Jacobi(a, tol);
                if (!expected) continue;
                CSZMatrix V;
                CSZMatrix D;
                ASSERT_TRUE(Checked(a).Jacobi(V, D, tol));
                ASSERT_THAT(D, Equals(expected->values)) << n;
                ASSERT_THAT(V, Equals(expected->vectors)) << n;
                ++compared;
            }
    EXPECT_GT(compared, 40);
}

TEST(SZMatrixJacobi, CarriesInfiniteElementsAsFullProductsDo)
{
    const literal::Matrix cases[] = {
        Of("inf 0; 0 1"),
        Of("inf 1; 1 2"),
        Of("nan 1 2; 1 3 4; 2 4 5"),
        Of("1 -0 0; -0 1 -0; 0 -0 -0"),
        Of("1e200 1; 1 -1e200"),
        Of("1e308 1e308; 1e308 -1e308"),
    };
    for (const literal::Matrix& a : cases)
        for (const double tol : {1e-9, 0.0, 2.0}) {
            const auto expected = literal::Jacobi(a, tol);
            if (!expected) continue;
            CSZMatrix V;
            CSZMatrix D;
            EXPECT_TRUE(Checked(a).Jacobi(V, D, tol));
            EXPECT_THAT(D, Equals(expected->values));
            EXPECT_THAT(V, Equals(expected->vectors));
        }
}

TEST(SZMatrixJacobi, DiagonalizesLargeMatrices)
{
    const literal::Matrix a = Maker(52).Symmetric(40, Kind::Usual);
    const CSZMatrix A = Checked(a);
    CSZMatrix V;
    CSZMatrix D;
    ASSERT_TRUE(A.Jacobi(V, D, 1e-10));
    EXPECT_THAT(A * V, IsNear(V * D, 1e-10));
    EXPECT_THAT(V.matTran() * V, IsNear(literal::Identity(40), 1e-12));
}

TEST(SZMatrixJacobi, ReplacesItsOwnMatrixByTheEigenvalues)
{
    CSZMatrix A = Checked("2 1; 1 2");
    CSZMatrix V;
    CSZMatrix D;
    ASSERT_TRUE(A.Jacobi(V, D, 1e-12));
    CSZMatrix again;
    ASSERT_TRUE(A.Jacobi(again, A, 1e-12));
    EXPECT_THAT(A, Equals(D));
    EXPECT_THAT(again, Equals(V));
}

TEST(PlaneRotation, ZeroesTheElementByAtMost45Degrees)
{
    Maker make(53);
    for (int trial = 0; trial < 100; ++trial) {
        const literal::Matrix a = make.Symmetric(2, Kind::Usual);
        const tiltpole::matrix::PlaneRotation j =
            tiltpole::matrix::ZeroingRotation(a.Get(0, 0), a.Get(1, 1), a.Get(0, 1));
        const literal::Matrix J = Filled(2, 2, {j.cosine, -j.sine, j.sine, j.cosine});
        const literal::Matrix turned =
            literal::Product(literal::Product(literal::Transpose(J), a), J);
        EXPECT_NEAR(turned.Get(0, 1), 0.0, 1e-14);
        EXPECT_GE(j.cosine, std::sqrt(0.5) - 1e-15);
    }
}

// ---- the call that does not return --------------------------------------------------------------

CSZMatrix* g_vectors = nullptr; // of the child process below
CSZMatrix* g_values = nullptr;
literal::Matrix* g_matrix = nullptr;

constexpr int kReturned = 1;
constexpr int kStillBusyAsTold = 2;
constexpr int kStillBusyOtherwise = 3;

extern "C" void OnTimeUp(int)
{
    const bool asTold = testing::Matches(Equals(literal::Identity(g_matrix->rows)))(*g_vectors)
                        && testing::Matches(Equals(*g_matrix))(*g_values);
    _exit(asTold ? kStillBusyAsTold : kStillBusyOtherwise);
}

// What a child process that calls Jacobi has to say after a third of a second.
int ResultOfCall(literal::Matrix matrix)
{
    const pid_t child = fork();
    if (child == 0) {
        CSZMatrix V;
        CSZMatrix D;
        g_vectors = &V;
        g_values = &D;
        g_matrix = &matrix;
        std::signal(SIGALRM, OnTimeUp);
        const itimerval third = {
            {0, 0     },
            {0, 333000}
        };
        setitimer(ITIMER_REAL, &third, nullptr);
        Checked(matrix).Jacobi(V, D, 1e-9);
        _exit(kReturned);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(SZMatrixJacobi, NeverReturnsForAMatrixThatIsNotSymmetric)
{
    const literal::Matrix cases[] = {
        Of("1 2; 3 4"),     Filled(2, 2, {1, 0.5, 0.5 + 1e-15, 1}),
        Of("1 2 3; 4 5 6"), Of("1 2; 3 4; 5 6"),
        Of("1 nan; nan 1"),
    };
    for (const literal::Matrix& m : cases)
        EXPECT_EQ(ResultOfCall(m), kStillBusyAsTold);
}

TEST(SZMatrixJacobi, ReturnsInTheChildForASymmetricMatrix)
{
    EXPECT_EQ(ResultOfCall(Of("1 2; 2 1")), kReturned);
}

} // namespace
