// SPDX-License-Identifier: MIT
//
// The fits of the calibration: conics, lines, centers and least squares, on values computed by
// hand.
#include "tests/calibration/AdjustTools.h"
#include "tests/reference/LiteralAdjust.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>

#include <cmath>
#include <numbers>

namespace {

// An ellipse with given center, half axes and direction of the first one [degrees].
struct KnownEllipse
{
    double cu, cv, first, second, direction;
    const char* why;

    std::pair<CSZMatrix, CSZMatrix> Points(int n) const
    {
        std::vector<double> u, v;
        const double turn = direction * std::numbers::pi / 180;
        for (int i = 0; i < n; ++i) {
            const double t = 2 * std::numbers::pi * i / n + 0.1;
            const double p = first * std::cos(t), q = second * std::sin(t);
            u.push_back(cu + p * std::cos(turn) - q * std::sin(turn));
            v.push_back(cv + p * std::sin(turn) + q * std::cos(turn));
        }
        return {ColumnOf(u), ColumnOf(v)};
    }

    // The quadratic form whose eigenvalues are the inverse squares of the axes, scaled to trace 1.
    std::pair<double, double> Shape() const
    {
        const double turn = direction * std::numbers::pi / 180;
        const double c = std::cos(turn), s = std::sin(turn);
        const double A = 1 / (first * first), B = 1 / (second * second);
        return {(A * c * c + B * s * s) / (A + B), 2 * (A - B) * c * s / (A + B)};
    }
};

TEST(EllipseFit, FindsShapeAndCenterOfAKnownEllipse)
{
    constexpr KnownEllipse cases[] = {
        {0,    0,   1,   1,   0,   "unit circle"               },
        {120,  -80, 500, 500, 0,   "circle of counts"          },
        {-40,  300, 500, 350, 0,   "axes along the coordinates"},
        {200,  100, 480, 310, 30,  "turned by 30 degrees"      },
        {-700, 900, 520, 400, 120, "far from the origin"       },
    };
    for (const KnownEllipse& e : cases) {
        const auto [u, v] = e.Points(60);
        CSZMatrix p;
        ReachAdjust adjust;
        ASSERT_EQ(adjust.EllipseFit(u, v, p), 1) << e.why;
        ASSERT_EQ(p.getRowSize(), 5);
        EXPECT_NEAR(p.GetData(0, 0), e.Shape().first, 1e-9) << e.why;
        EXPECT_NEAR(p.GetData(1, 0), e.Shape().second, 1e-9) << e.why;
        double cu = 0, cv = 0;
        ASSERT_EQ(adjust.CircleCenter(p, &cu, &cv), 1);
        EXPECT_NEAR(cu, e.cu, 1e-6) << e.why;
        EXPECT_NEAR(cv, e.cv, 1e-6) << e.why;
    }
}

TEST(EllipseFit, FivePointsLieOnTheConic)
{
    const auto [u, v] = KnownEllipse{3, 4, 2, 1, 10, ""}.Points(5);
    CSZMatrix p;
    ASSERT_EQ(ReachAdjust().EllipseFit(u, v, p), 1);
    for (int i = 0; i < 5; ++i) {
        const double x = u.GetData(i, 0), y = v.GetData(i, 0), p0 = p.GetData(0, 0);
        EXPECT_NEAR(p0 * x * x + p.GetData(1, 0) * x * y + (1 - p0) * y * y + p.GetData(2, 0) * x
                        + p.GetData(3, 0) * y + p.GetData(4, 0),
                    0, 1e-9);
    }
}

// Every bit, also of readings that are not finite: the fit forms its sums without these matrices.
TEST(EllipseFit, IsTheLeastSquaresSolutionOfItsRows)
{
    for (const double last : {0.7, -0.0, 1e200, std::numeric_limits<double>::infinity()}) {
        const CSZMatrix u = ColumnOf({3.1, 0.2, -2.7, 0.4, 1.9, -1.3, last});
        const CSZMatrix v = ColumnOf({0.3, 2.2, 0.1, -1.8, 1.7, 1.1, -1.6});
        CSZMatrix A(7, 5);
        CSZMatrix b(7, 1);
        for (int i = 0; i < 7; ++i) {
            const double x = u.GetData(i, 0);
            const double y = v.GetData(i, 0);
            const double row[] = {x * x - y * y, x * y, x, y, 1.0};
            for (int c = 0; c < 5; ++c)
                A.SetData(i, c, row[c]);
            b.SetData(i, -y * y);
        }
        CSZMatrix expected;
        CSZMatrix conic;
        ASSERT_EQ(ReachAdjust().lsq(A, b, nullptr, expected, nullptr), 1);
        ReachAdjust().EllipseFit(u, v, conic);
        ASSERT_EQ(conic.getRowSize(), 5);
        for (int i = 0; i < 5; ++i) {
            const double x = conic.GetData(i, 0);
            const double wanted = expected.GetData(i, 0);
            EXPECT_TRUE(x == wanted || (std::isnan(x) && std::isnan(wanted))) << last << ' ' << i;
        }
    }
}

TEST(EllipseFit, RefusesWrongShapesAndFewerThanFivePoints)
{
    const auto [u, v] = KnownEllipse{0, 0, 2, 1, 0, ""}.Points(6);
    ReachAdjust adjust;
    CSZMatrix p(1, 1, MatOnes);
    EXPECT_EQ(adjust.EllipseFit(u.SliceRows(0, 4), v.SliceRows(0, 4), p), 0);
    EXPECT_EQ(adjust.EllipseFit(u, v.SliceRows(0, 5), p), 0);
    EXPECT_EQ(adjust.EllipseFit(CSZMatrix(6, 2), CSZMatrix(6, 2), p), 0);
    EXPECT_EQ(adjust.EllipseFit(CSZMatrix(6, 2), v, p), 0);
    EXPECT_EQ(p.getRowSize(), 1) << "nothing is written";
}

// The hyperbola v² − u² = 1 cannot be used: p0 = −(1 − p0) has no solution. The coefficients of
// 2u² − v² = −1 sum to 1 without scaling.
TEST(EllipseFit, RejectsAHyperbolaAndStillFillsIt)
{
    std::vector<double> u, v;
    for (int i = -4; i <= 4; ++i) {
        u.push_back(i);
        v.push_back((i % 2 ? 1 : -1) * std::sqrt(2.0 * i * i + 1));
    }
    CSZMatrix p;
    EXPECT_EQ(ReachAdjust().EllipseFit(ColumnOf(u), ColumnOf(v), p), 0);
    ASSERT_EQ(p.getRowSize(), 5);
    EXPECT_NEAR(p.GetData(0, 0), 2, 1e-9);
    EXPECT_NEAR(p.GetData(1, 0), 0, 1e-9);
    EXPECT_NEAR(p.GetData(4, 0), 1, 1e-9);
}

// v² = u: p0 and p1 are exactly 0, and so is 4·p0·(1 − p0) − p1².
TEST(EllipseFit, RejectsAParabola)
{
    CSZMatrix p;
    EXPECT_EQ(ReachAdjust().EllipseFit(ColumnOf({0, 1, 1, 9, 9}), ColumnOf({0, 1, -1, 3, -3}), p),
              0);
    ASSERT_EQ(p.GetData(0, 0), 0) << "the discriminant is meant to be exactly 0";
    ASSERT_EQ(p.GetData(1, 0), 0);
    EXPECT_NEAR(p.GetData(2, 0), -1, 1e-12);
}

TEST(EllipseFit, AgreesWithExtendedPrecisionOnNoisyTurns)
{
    for (const turns::Shape& shape : turns::Shapes()) {
        if (shape.radius < 100) continue;
        const CSZMatrix m = MatrixOf(turns::Make(shape, turns::TurnAxis::Horizontal));
        literal::Readings readings;
        for (int i = 0; i < m.getRowSize(); ++i)
            readings.push_back({m.GetData(i, 0), m.GetData(i, 1), m.GetData(i, 2)});
        const auto expected = literal::Ellipse(readings, 0, 1);
        CSZMatrix p;
        ReachAdjust().EllipseFit(m.SliceCols(0, 1), m.SliceCols(1, 1), p);
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_NEAR(p.GetData(static_cast<int>(i), 0), static_cast<double>(expected[i]),
                        1e-7 * std::fabs(static_cast<double>(expected[i])) + 1e-9)
                << "coefficient " << i << " seed " << shape.seed;
    }
}

TEST(LineFit, FindsAKnownLine)
{
    CSZMatrix l;
    ASSERT_EQ(ReachAdjust().LineFit(ColumnOf({0, 1, 2, 3}), ColumnOf({1, 3, 5, 7}), l), 1);
    ASSERT_EQ(l.getRowSize(), 3);
    ASSERT_EQ(l.getColSize(), 1);
    EXPECT_DOUBLE_EQ(l.GetData(0, 0), 2) << "slope";
    EXPECT_DOUBLE_EQ(l.GetData(1, 0), 1) << "intercept";
    EXPECT_NEAR(l.GetData(2, 0), 0, 1e-14) << "residual";
}

// v = 0, 1, 0, 1 on u = 0 ... 3: slope 0.2, intercept 0.2, squared errors .04 .36 .36 .04.
TEST(LineFit, ResidualIsTheRootMeanSquare)
{
    CSZMatrix l;
    ASSERT_EQ(ReachAdjust().LineFit(ColumnOf({0, 1, 2, 3}), ColumnOf({0, 1, 0, 1}), l), 1);
    EXPECT_NEAR(l.GetData(0, 0), 0.2, 1e-15);
    EXPECT_NEAR(l.GetData(1, 0), 0.2, 1e-15);
    EXPECT_NEAR(l.GetData(2, 0), std::sqrt(0.2), 1e-15);
}

TEST(LineFit, RefusesWhatHasNoSlope)
{
    const struct
    {
        CSZMatrix u, v;
        const char* why;
    } cases[] = {
        {ColumnOf({1}),        ColumnOf({2}),                      "one point"                                                        },
        {ColumnOf({1, 2, 3}),  ColumnOf({4, 4, 4}),                "a constant v, though its line is known"                           },
        {ColumnOf({4, 4, 4}),  ColumnOf({1, 2, 3}),                "a constant u"                                                     },
        {ColumnOf({1, 2, 3}),  ColumnOf({1, 2}),                   "different lengths"                                                },
        {CSZMatrix(3,          2,                                  MatIdentity),                                                        CSZMatrix(3, 2, MatIdentity), "two columns"},
        {ColumnOf({0, 1e-16}),                   ColumnOf({0, 1}),                                         "a spread of u below 1e-30"                                                                                              },
        {ColumnOf({0, 1}), ColumnOf({0, 1e-16}), "a spread of v below 1e-30"},
    };
    for (const auto& c : cases) {
        CSZMatrix l(1, 1, MatOnes);
        EXPECT_EQ(ReachAdjust().LineFit(c.u, c.v, l), 0) << c.why;
        EXPECT_EQ(l.getRowSize(), 1) << c.why << ": nothing is written";
    }
}

TEST(CircleCenter, NeedsAVectorOfFiveAndNoParabola)
{
    double u = 7, v = 8;
    ReachAdjust adjust;
    EXPECT_EQ(adjust.CircleCenter(CSZMatrix(), &u, &v), 0);
    EXPECT_EQ(adjust.CircleCenter(ColumnOf({0.5, 0, -1, -2}), &u, &v), 0);
    EXPECT_EQ(adjust.CircleCenter(ColumnOf({0.5, 0, -1, -2, 0}).matTran(), &u, &v), 0);
    CSZMatrix twice(5, 2);
    for (int i = 0; i < 5; ++i)
        for (int column = 0; column < 2; ++column)
            twice.SetData(i, column,
                          std::array{0.5, 0.0, -1.0, -2.0, 0.0}[static_cast<unsigned>(i)]);
    EXPECT_EQ(adjust.CircleCenter(twice, &u, &v), 0) << "two columns";
    EXPECT_EQ(adjust.CircleCenter(ColumnOf({0.5, 1, -1, -2, 0}), &u, &v), 0) << "a parabola";
    EXPECT_EQ(u, 7);
    EXPECT_EQ(v, 8);
}

// u²/2 + v²/2 − u − 2v = 0 is the circle about (1, 2).
TEST(CircleCenter, WritesOnlyThroughPointersThatAreNotNull)
{
    const CSZMatrix circle = ColumnOf({0.5, 0, -1, -2, 0});
    double u = 7, v = 8;
    ReachAdjust adjust;
    EXPECT_EQ(adjust.CircleCenter(circle, nullptr, nullptr), 1);
    EXPECT_EQ(adjust.CircleCenter(circle, &u, nullptr), 1);
    EXPECT_DOUBLE_EQ(u, 1);
    EXPECT_EQ(v, 8);
    EXPECT_EQ(adjust.CircleCenter(circle, nullptr, &v), 1);
    EXPECT_DOUBLE_EQ(v, 2);
}

TEST(Lsq, SolvesTheNormalEquations)
{
    // x + y = 3, x − y = 1, 2x + y = 5.2: AᵀA = [6 2; 2 3], Aᵀb = [14.4; 7.2], x = 14.4·3−7.2·2
    // / 14.
    const double A[] = {1, 1, 1, -1, 2, 1};
    const CSZMatrix a(A, 6, 3, 2);
    const CSZMatrix b = ColumnOf({3, 1, 5.2});
    CSZMatrix x, N;
    ASSERT_EQ(ReachAdjust().lsq(a, b, nullptr, x, &N), 1);
    EXPECT_NEAR(x.GetData(0, 0), 28.8 / 14, 1e-14);
    EXPECT_NEAR(x.GetData(1, 0), (6 * 7.2 - 2 * 14.4) / 14, 1e-14);
    EXPECT_NEAR(N.GetData(0, 0), 3.0 / 14, 1e-15);
    EXPECT_NEAR(N.GetData(0, 1), -2.0 / 14, 1e-15);
}

TEST(Lsq, LeavesTheWeightsOutOfTheRightSide)
{
    const CSZMatrix a(2, 1, 2, 1.0, 1.0);
    const CSZMatrix W(2, 2, 4, 2.0, 0.0, 0.0, 3.0);
    CSZMatrix x, N;
    ASSERT_EQ(ReachAdjust().lsq(a, ColumnOf({4, 6}), &W, x, &N), 1);
    EXPECT_DOUBLE_EQ(N.GetData(0, 0), 0.2);
    EXPECT_DOUBLE_EQ(x.GetData(0, 0), 2) << "(4 + 6) / 5, not (8 + 18) / 5";
}

TEST(Lsq, RefusesShapesThatDoNotFit)
{
    CSZMatrix x(1, 1, MatOnes);
    ReachAdjust adjust;
    EXPECT_EQ(adjust.lsq(CSZMatrix(2, 3), CSZMatrix(2, 1), nullptr, x, nullptr), 0) << "too wide";
    EXPECT_EQ(adjust.lsq(CSZMatrix(3, 2), CSZMatrix(2, 1), nullptr, x, nullptr), 0);
    EXPECT_EQ(adjust.lsq(CSZMatrix(3, 2), CSZMatrix(3, 2), nullptr, x, nullptr), 0);
    EXPECT_EQ(x.getRowSize(), 1);
}

TEST(OverDetermined, SolvesByNormalEquations)
{
    const double values[] = {1, 1, 1, -1, 2, 1};
    CSZMatrix A(values, 6, 3, 2);
    CSZMatrix b = ColumnOf({3, 1, 5});
    const CSZMatrix x = ReachAdjust().OverDeterminedEquationSolution(A, b);
    EXPECT_NEAR(x.GetData(0, 0), 2, 1e-14);
    EXPECT_NEAR(x.GetData(1, 0), 1, 1e-14);
}

TEST(OverDetermined, ShowsABoxWhenTheRowsDiffer)
{
    RecordedBoxes boxes;
    CSZMatrix A(3, 2, MatOnes), b(2, 1, MatOnes);
    const CSZMatrix x = ReachAdjust().OverDeterminedEquationSolution(A, b);
    EXPECT_EQ(boxes.shown, (std::vector<Box>{
                               {L"Two input matrix must have the same line!", L"Warning", 0x30}
    }));
    ASSERT_EQ(x.getRowSize(), 2);
    ASSERT_EQ(x.getColSize(), 1);
    EXPECT_EQ(x.GetData(0, 0), 0);
}

TEST(MagneticModify, UsesTheRawReadingsOnTheRightSide)
{
    CSZMatrix M(2, 3, 6, 1.0, 2.0, 3.0, -1.0, 0.0, 10.0);
    Incline_MagneticCorrectParameter P;
    P.x0 = 0.5;
    P.y0 = 1;
    P.z0 = 2;
    P.a = 3;
    P.b = 2;
    P.c = -1;
    P.d = 4;
    P.e = 0.5;
    ReachAdjust().MagneticModify(P, M);
    EXPECT_EQ(M.GetData(0, 0), 0.5);
    EXPECT_EQ(M.GetData(0, 1), 3 * 1 + 2 * 2 - 1);
    EXPECT_EQ(M.GetData(0, 2), -1 + 8 + 1.5 - 2);
    EXPECT_EQ(M.GetData(1, 0), -1.5);
    EXPECT_EQ(M.GetData(1, 1), -3 + 0 - 1);
    EXPECT_EQ(M.GetData(1, 2), 1 + 0 + 5 - 2);
}

TEST(MagneticModify, LeavesSizeAndHealthOfTheMatrix)
{
    CSZMatrix M(4, 3, MatOnes), empty;
    ReachAdjust().MagneticModify({}, M);
    ReachAdjust().MagneticModify({}, empty);
    EXPECT_EQ(M.getRowSize(), 4);
    EXPECT_TRUE(M.isMatrixHealthy());
    EXPECT_TRUE(empty.isMatrixHealthy());
}

} // namespace
