// SPDX-License-Identifier: MIT
//
// Test matrices of the literature with their exact inverses and eigenvalues.
//
//   Hilbert, Pascal   N. J. Higham, Accuracy and Stability of Numerical Algorithms, chapter 28; the
//                     inverses hold integers only
//   Wilson            T. S. Wilson; J. R. Westlake, A Handbook of Numerical Matrix Inversion, 1968
//   Rosser            J. B. Rosser et al., J. Res. Natl. Bur. Stand. 47 (1951), 291-297
#include "matrix/SZMatrix.h"

#include "tests/matrix/MatrixTools.h"

#include <algorithm>

using namespace matrixtest;

namespace {

literal::Matrix Hilbert6()
{
    literal::Matrix m(6, 6);
    for (int r = 0; r < 6; ++r)
        for (int c = 0; c < 6; ++c)
            m.Set(r, c, 1.0 / (r + c + 1));
    return m;
}

const literal::Matrix& Hilbert6Inverse()
{
    static const literal::Matrix inverse = Of(
        "36 -630 3360 -7560 7560 -2772; -630 14700 -88200 211680 -220500 83160; 3360 -88200 564480 "
        "-1411200 1512000 -582120; -7560 211680 -1411200 3628800 -3969000 1552320; 7560 -220500 "
        "1512000 -3969000 4410000 -1746360; -2772 83160 -582120 1552320 -1746360 698544");
    return inverse;
}

const literal::Matrix& Pascal6()
{
    static const literal::Matrix pascal = Of("1 1 1 1 1 1; 1 2 3 4 5 6; 1 3 6 10 15 21; 1 4 10 20 "
                                             "35 56; 1 5 15 35 70 126; 1 6 21 56 126 252");
    return pascal;
}

const literal::Matrix& Wilson()
{
    static const literal::Matrix wilson = Of("5 7 6 5; 7 10 8 7; 6 8 10 9; 5 7 9 10");
    return wilson;
}

// Rounding of an inverse: the machine epsilon times the condition number, with room for a
// factor 10.
double RoundOff(const literal::Matrix& m, const literal::Matrix& inverse)
{
    const double size = Checked(inverse).infiniteNorm();
    return 10 * DBL_EPSILON * Checked(m).infiniteNorm() * size * size;
}

void CheckInverse(const literal::Matrix& m, const literal::Matrix& inverse)
{
    EXPECT_THAT(Checked(m).matInv(), IsNear(inverse, RoundOff(m, inverse)));
    EXPECT_THAT(Tilt(m).MatInv(), IsNear(inverse, RoundOff(m, inverse)));
    EXPECT_THAT(~Tilt(m), IsNear(inverse, RoundOff(m, inverse)));
    EXPECT_THAT(Tilt(m).Reverse(), IsNear(inverse, RoundOff(m, inverse)));
}

TEST(PublishedMatrices, HilbertHasItsIntegerInverse)
{
    CheckInverse(Hilbert6(), Hilbert6Inverse());
    EXPECT_NEAR(Checked(Hilbert6()).condition(), 2.45 * 11865420, 10); // row sums 49/20 and below
}

TEST(PublishedMatrices, PascalHasItsIntegerInverse)
{
    CheckInverse(Pascal6(), Of("6 -15 20 -15 6 -1; -15 55 -85 69 -29 5; 20 -85 146 -127 56 -10; "
                               "-15 69 -127 117 -54 10; 6 -29 56 -54 26 -5; -1 5 -10 10 -5 1"));
}

TEST(PublishedMatrices, PascalFactorsIntoBinomialCoefficients)
{
    CSZMatrix L;
    ASSERT_TRUE(Checked(Pascal6()).cholesky(L));
    EXPECT_THAT(
        L, Equals(Of(
               "1 0 0 0 0 0; 1 1 0 0 0 0; 1 2 1 0 0 0; 1 3 3 1 0 0; 1 4 6 4 1 0; 1 5 10 10 5 1")));
}

TEST(PublishedMatrices, WilsonHasItsIntegerInverse)
{
    CheckInverse(Wilson(), Of("68 -41 -17 10; -41 25 10 -6; -17 10 5 -3; 10 -6 -3 2"));
}

// Two equal eigenvalues, two nearly equal ones, one 0, one pair of opposite signs.
TEST(PublishedMatrices, RosserHasItsEigenvalues)
{
    const CSZMatrix rosser = Checked(
        "611 196 -192 407 -8 -52 -49 29; 196 899 113 -192 -71 -43 -8 -44; -192 113 899 196 61 49 8 "
        "52; 407 -192 196 611 8 44 59 -23; -8 -71 61 8 411 -599 208 208; -52 -43 49 44 -599 411 "
        "208 208; -49 -8 8 59 208 208 99 -911; 29 -44 52 -23 208 208 -911 99");
    const double large = 10 * std::sqrt(10405.0);
    const double spread = 100 * std::sqrt(26.0);
    const double eigenvalues[] = {-large, 0, 510 - spread, 1000, 1000, 510 + spread, 1020, large};

    CSZMatrix V;
    CSZMatrix D;
    ASSERT_TRUE(rosser.Jacobi(V, D, 1e-9));
    std::vector<double> found;
    for (int i = 0; i < 8; ++i)
        found.push_back(D.GetData(i, i));
    std::sort(found.begin(), found.end());
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(found[i], eigenvalues[i], 1e-11);
    EXPECT_THAT(rosser * V, IsNear(V * D, 1e-9));
}

} // namespace
