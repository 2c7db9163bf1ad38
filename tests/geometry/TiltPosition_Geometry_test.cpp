// SPDX-License-Identifier: MIT
//
// Collecting observations, the two public steps of the solution, and its grading on sets whose
// outcome is known beforehand.
#include "geometry/TiltPosition_Geometry.h"

#include "tests/geometry/PoleSets.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using poles::Antennas;
using poles::Solution;
using poles::Solve;

constexpr double kSolved = 1e-9; // of coordinates of meters [m]
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TiltPoint_Sensor At(double x, double y, double h = 0.0, double incline = 0.0)
{
    TiltPoint_Sensor point;
    point.dX = x;
    point.dY = y;
    point.dH = h;
    point.dIncline = incline;
    return point;
}

void ExpectTip(const literal::Point& found, const literal::Point& expected, double tolerance)
{
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(found[c], expected[c], tolerance) << c;
}

TEST(TiltPoint, StartsZeroAndEmpty)
{
    const TiltPoint_Sensor point;
    EXPECT_EQ(point.nSet, 0);
    EXPECT_EQ(point.nConfirmed, 0);
    EXPECT_TRUE(point.strLabel.IsEmpty());
    EXPECT_EQ(point.dX + point.dY + point.dH + point.dIncline, 0.0);
    const TiltPoint_State state;
    EXPECT_EQ(state.nStatus, 0);
    EXPECT_EQ(state.dRadius + state.dPointError + state.dGeometryFigure, 0.0);
}

TEST(TiltPosition, StartsWithoutHeightAndWithACutoffOf45Degrees)
{
    const CTiltPosition_Geometry geometry;
    EXPECT_EQ(geometry.GetAntennaHeight(), 0.0);
    EXPECT_EQ(geometry.GetCutoffInclineAngle(), 45.0);
}

TEST(TiltPosition, KeepsItsSettings)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(1.8);
    geometry.SetCutoffInclineAngle(30.0);
    geometry.Clear();
    EXPECT_EQ(geometry.GetAntennaHeight(), 1.8);
    EXPECT_EQ(geometry.GetCutoffInclineAngle(), 30.0);
}

TEST(TiltPosition, RefusesAnInclineAboveTheCutoff)
{
    CTiltPosition_Geometry geometry;
    EXPECT_EQ(geometry.AddPoint(At(0, 0, 0, 45.0)), 1);
    EXPECT_EQ(geometry.AddPoint(At(10, 0, 0, 45.0001)), 0);
    geometry.SetCutoffInclineAngle(50.0);
    EXPECT_EQ(geometry.AddPoint(At(10, 0, 0, 45.0001)), 1);
}

struct SpacingCase
{
    double antennaHeight;
    double x, y, h;
    int accepted;
    const char* why;
};

TEST(TiltPosition, KeepsADistanceInPlan)
{
    constexpr SpacingCase cases[] = {
        {2.0, 0.29, 0.0,  0.0,  0, "nearer than 0.15 antenna heights"     },
        {2.0, 0.31, 0.0,  0.0,  1, "farther"                              },
        {2.0, 0.0,  0.0,  9.0,  0, "right above, whatever the height"     },
        {2.0, 0.0,  0.0,  -9.0, 0, "right below"                          },
        {2.0, 0.22, 0.22, 0.0,  1, "farther, along the diagonal"          },
        {0.5, 0.49, 0.0,  0.0,  0, "a spacing below 0.1 m counts as 0.5 m"},
        {0.5, 0.51, 0.0,  0.0,  1, "and beyond that"                      },
        {0.0, 0.49, 0.0,  0.0,  0, "no antenna height gives 0.5 m as well"},
        {0.7, 0.11, 0.0,  0.0,  1, "0.105 m is no longer below 0.1 m"     },
    };
    for (const SpacingCase& c : cases) {
        CTiltPosition_Geometry geometry;
        geometry.SetAntennaHeight(c.antennaHeight);
        geometry.AddPoint(At(0, 0));
        EXPECT_EQ(geometry.AddPoint(At(c.x, c.y, c.h)), c.accepted) << c.why;
    }
}

TEST(TiltPosition, KeepsADistanceToEveryHeldPoint)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    for (const double x : {0.0, 1.0, 2.0})
        EXPECT_EQ(geometry.AddPoint(At(x, 0)), 1);
    for (const double x : {0.1, 1.1, 2.1})
        EXPECT_EQ(geometry.AddPoint(At(x, 0)), 0);
}

TEST(TiltPosition, AnswersWhetherAPointConformsWithoutTakingIt)
{
    CTiltPosition_Geometry geometry;
    EXPECT_EQ(geometry.IsConform(At(0, 0), 0.3), 1);
    geometry.AddPoint(At(0, 0));
    EXPECT_EQ(geometry.IsConform(At(0.3, 0), 0.3), 1);
    EXPECT_EQ(geometry.IsConform(At(0.2, 0), 0.3), 0);
    EXPECT_EQ(geometry.IsConform(At(0.2, 0), 0.15), 1);
    EXPECT_EQ(geometry.AddPoint(At(0.6, 0)), 1);
}

TEST(TiltPosition, IsReadyWithFifteenPoints)
{
    CTiltPosition_Geometry geometry;
    for (int k = 0; k < 14; ++k)
        geometry.AddPoint(At(k, 0));
    EXPECT_EQ(geometry.IsOK(), 0);
    geometry.AddPoint(At(14, 0));
    EXPECT_EQ(geometry.IsOK(), 1);
    geometry.Clear();
    EXPECT_EQ(geometry.IsOK(), 0);
}

TEST(TiltPosition, CannotSolveThreePoints)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    for (int k = 0; k < 3; ++k)
        geometry.AddPoint(At(k, 0, 2.0));
    xyhCoord tip = {1, 2, 3};
    TiltPoint_State state;
    state.dPointError = 7.0;
    EXPECT_EQ(geometry.Calculate(tip, state), 1);
    EXPECT_EQ(state.nStatus, -99);
    EXPECT_EQ(state.dPointError, 0.0) << "the record is cleared first";
    EXPECT_EQ(tip.x, 0.0);
    EXPECT_EQ(tip.y, 0.0);
    EXPECT_EQ(tip.h, 0.0);
}

TEST(TiltPosition, FindsTheCenterOfAnExactSphere)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    for (const literal::Point& p : Antennas(
             {
                 .count = 200, .tilt = 44.0, .tip = {10, 20, 100}
    },
             1))
        geometry.AddPoint(At(p[0], p[1], p[2]));
    ASSERT_EQ(geometry.IsOK(), 1);
    xyhCoord tip;
    TiltPoint_State state;
    EXPECT_EQ(geometry.Calculate(tip, state), 1);
    ExpectTip({tip.x, tip.y, tip.h}, {10, 20, 100}, kSolved);
    EXPECT_LT(state.dPointError, 1e-9);
    EXPECT_NEAR(state.dRadius, 2.0, kSolved);
    EXPECT_NEAR(state.dRadiusExcess, 0.0, kSolved);
    EXPECT_EQ(state.nStatus, 1);
}

TEST(TiltPosition, SolvesTheNextPointAfterClear)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    xyhCoord tip;
    TiltPoint_State state;
    for (const double north : {0.0, 50.0}) {
        geometry.Clear();
        for (const literal::Point& p : Antennas(
                 {
                     .count = 40, .tip = {north, 0, 0}
        },
                 3))
            geometry.AddPoint(At(p[0], p[1], p[2]));
        geometry.Calculate(tip, state);
        ExpectTip({tip.x, tip.y, tip.h}, {north, 0, 0}, kSolved);
    }
}

TEST(TiltPosition, FindsNoSphereForAWrongAntennaHeight)
{
    const auto antennas = Antennas({.count = 15}, 5);
    for (const double height : {1.94, 2.06, 0.0, -2.0, kNaN}) {
        const Solution solution = Solve(antennas, height);
        EXPECT_EQ(solution.state.nStatus, -100) << height;
        EXPECT_EQ(solution.state.dRadius, 0.0);
        ExpectTip(solution.tip, {0, 0, 0}, 0.0);
    }
    EXPECT_EQ(Solve(antennas, 1.951).state.nStatus, 1);
    EXPECT_EQ(Solve(antennas, 2.049).state.nStatus, 1);
}

// The tip is raised by radius − antenna height, here 2.0 − 1.97.
TEST(TiltPosition, RaisesTheTipByTheRadiusExcess)
{
    const Solution solution = Solve(Antennas({.count = 15}, 5), 1.97);
    EXPECT_NEAR(solution.state.dRadiusExcess, 0.03, kSolved);
    ExpectTip(solution.tip, {0, 0, 0.03}, kSolved);
}

TEST(TiltPosition, FindsATipAboveTheAntennaImplausible)
{
    auto antennas = Antennas({.count = 15}, 6);
    for (literal::Point& p : antennas)
        p[2] = -p[2];
    const Solution solution = Solve(antennas, 2.0);
    EXPECT_EQ(solution.state.nStatus, -88);
    ExpectTip(solution.tip, {0, 0, 0}, kSolved);
}

// The first antenna position stands 6 m above the center of the others' sphere, more than two
// antenna heights: its point error alone would be graded -1.
TEST(TiltPosition, FindsATipFarBelowTheFirstAntennaImplausible)
{
    auto antennas = Antennas({.count = 15}, 6);
    antennas.front() = {0.0, 0.0, 6.0};
    const Solution solution = Solve(antennas, 2.0);
    EXPECT_GT(solution.state.dPointError, 0.05);
    EXPECT_EQ(solution.state.nStatus, -88);
}

TEST(TiltPosition, HasNoFinitePointErrorWithFourPoints)
{
    const auto antennas = Antennas({.count = 4, .tilt = 60.0, .planNoise = 0.003}, 8);
    const literal::Point center =
        literal::SphereCenter({antennas[0], antennas[1], antennas[2], antennas[3]});
    const double radius = literal::Distance(center, antennas[0]);
    const Solution solution = Solve(antennas, radius);
    EXPECT_FALSE(std::isfinite(solution.state.dPointError));
    EXPECT_NEAR(solution.state.dRadius, radius, kSolved);
    ExpectTip(solution.tip, center, kSolved);
    EXPECT_EQ(solution.state.nStatus,
              solution.state.dPointError > 0.05 || solution.state.dGeometryFigure > 2.0 ? -1 : 1);
}

TEST(ProbableCoor, IsTheCenterOfTheSphereThroughFourPoints)
{
    // (1, 2, 3) with radius 5: offsets (5, 0, 0), (0, 5, 0), (0, 0, 5), (0, −3, 4)
    CTiltPosition_Geometry geometry;
    const CTiltMatrix center =
        geometry.ProbableCoor(poles::Vector({6, 2, 3}), poles::Vector({1, 7, 3}),
                              poles::Vector({1, 2, 8}), poles::Vector({1, -1, 7}));
    ASSERT_EQ(center.GetRow(), 3U);
    ASSERT_EQ(center.GetCol(), 1U);
    ExpectTip(poles::ToPoint(center), {1, 2, 3}, 1e-14);
}

TEST(ProbableCoor, KeepsItsAccuracyAtSurveySize)
{
    CTiltPosition_Geometry geometry;
    const literal::Point tip = {4500000, 500000, 100};
    const auto p = poles::Moved(
        {
            {2, 0,  0},
            {0, 2,  0},
            {0, 0,  2},
            {0, -2, 0}
    },
        tip);
    const CTiltMatrix center = geometry.ProbableCoor(poles::Vector(p[0]), poles::Vector(p[1]),
                                                     poles::Vector(p[2]), poles::Vector(p[3]));
    ExpectTip(poles::ToPoint(center), tip, 1e-9);
}

TEST(ProbableCoor, IsNotFiniteForPointsOfEqualHeight)
{
    CTiltPosition_Geometry geometry;
    const CTiltMatrix center =
        geometry.ProbableCoor(poles::Vector({1, 0, 1}), poles::Vector({0, 1, 1}),
                              poles::Vector({-1, 0, 1}), poles::Vector({0, -1, 1}));
    EXPECT_FALSE(std::isfinite(center.GetData(2)));
}

TEST(ProbableCoor, IsNotFiniteForAVectorOfTwo)
{
    CTiltPosition_Geometry geometry;
    const CTiltMatrix center =
        geometry.ProbableCoor(poles::Vector({6, 2, 3}), CTiltMatrix(2), poles::Vector({1, 2, 8}),
                              poles::Vector({1, -1, 7}));
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_FALSE(std::isfinite(center.GetData(i))) << i;
}

// Six positions at ±2 along the axes, start (0, 0, 0.1) with radius 2. By symmetry N is diagonal,
// its first two elements 2, and the step is along h.
TEST(ReProcess, TakesOneStepWithTheSignOfTheMisclosure)
{
    std::vector<CTiltMatrix> obs = poles::Vectors({
        {2,  0,  0 },
        {-2, 0,  0 },
        {0,  2,  0 },
        {0,  -2, 0 },
        {0,  0,  2 },
        {0,  0,  -2}
    });
    CTiltPosition_Geometry geometry;
    CTiltMatrix tip = poles::Vector({0, 0, 0.1});
    double radius = 2.0;
    const TiltPoint_State state = geometry.ReProcess(obs.data(), 6, tip, radius);

    // along h: four rows 0.05, one −0.95, one 1.05; misclosures sqrt(4.01) − 2, −0.1 and 0.1
    const double side = std::sqrt(4.01) - 2.0;
    const double nhh = 4 * 0.05 * 0.05 + 0.95 * 0.95 + 1.05 * 1.05;
    const double uh = 4 * 0.05 * side + 0.95 * 0.1 + 1.05 * 0.1;
    ExpectTip(poles::ToPoint(tip), {0, 0, 0.1 + uh / nhh}, 1e-14); // away from the center
    EXPECT_NEAR(radius, 2.0 + uh / 6.0, 1e-14);
    EXPECT_EQ(state.dRadius, radius);
    EXPECT_NEAR(state.dHeightCofactor, 1.0 / nhh, 1e-14);
    EXPECT_NEAR(state.dGeometryFigure, std::sqrt(0.5 + 0.5 + 1.0 / nhh), 1e-14);

    const double step = uh / nhh;
    const double h = 0.1 + step;
    double squares = 0.0;
    for (const auto& [away, distance] : {
             std::pair{h,     std::sqrt(4 + h * h)},
             std::pair{h,     std::sqrt(4 + h * h)},
             std::pair{h,     std::sqrt(4 + h * h)},
             std::pair{h,     std::sqrt(4 + h * h)},
             std::pair{h - 2, 2 - h               },
             std::pair{h + 2, h + 2               }
    }) {
        const double v = step * away / radius + radius - distance;
        squares += v * v;
    }
    EXPECT_NEAR(state.dPointError, std::sqrt(squares / 2.0 * (2.0 + 2.0 + nhh)), 1e-13);
    EXPECT_EQ(state.dRadiusExcess, 0.0);
    EXPECT_EQ(state.nStatus, 0);
}

TEST(ReProcess, AgreesWithItsLiteralForm)
{
    CTiltPosition_Geometry geometry;
    for (unsigned seed = 0; seed < 20; ++seed) {
        const auto antennas = Antennas({.count = 9, .planNoise = 0.02, .heightNoise = 0.02}, seed);
        auto obs = poles::Vectors(antennas);
        literal::Point literalTip = {0.05, -0.04, 0.1};
        double literalRadius = 1.98;
        CTiltMatrix tip = poles::Vector(literalTip);
        double radius = literalRadius;
        const TiltPoint_State state = geometry.ReProcess(obs.data(), 9, tip, radius);
        const literal::State expected = literal::Refine(antennas, literalTip, literalRadius);
        ExpectTip(poles::ToPoint(tip), literalTip, 1e-11);
        EXPECT_NEAR(radius, literalRadius, 1e-12);
        EXPECT_NEAR(state.dPointError, expected.pointError, 1e-11);
        EXPECT_NEAR(state.dGeometryFigure, expected.geometryFigure, 1e-11);
        EXPECT_NEAR(state.dHeightCofactor, expected.heightCofactor, 1e-11);
    }
}

TEST(Progress, RisesToOneAndChangesNothing)
{
    auto obs = poles::Vectors(Antennas({.count = 15, .planNoise = 0.01, .heightNoise = 0.01}, 2));
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    TiltPoint_State without;
    const CTiltMatrix plain = geometry.Adjustment(obs.data(), 15, without);

    std::vector<double> told;
    geometry.SetProgressObserver([&](double fraction) {
        told.push_back(fraction);
        return true;
    });
    TiltPoint_State with;
    const CTiltMatrix watched = geometry.Adjustment(obs.data(), 15, with);
    ASSERT_GT(told.size(), 10U);
    for (std::size_t k = 1; k < told.size(); ++k)
        EXPECT_GT(told[k], told[k - 1]);
    EXPECT_GT(told.front(), 0.0);
    EXPECT_EQ(told.back(), 1.0);
    ExpectTip(poles::ToPoint(watched), poles::ToPoint(plain), 0.0);
    EXPECT_EQ(with.dPointError, without.dPointError);
}

TEST(Progress, CancelsTheSearchAndLeavesTheTip)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    for (const literal::Point& p : Antennas({.count = 60}, 2))
        geometry.AddPoint(At(p[0], p[1], p[2]));
    int calls = 0;
    geometry.SetProgressObserver([&](double) { return ++calls < 3; });
    xyhCoord tip = {1, 2, 3};
    TiltPoint_State state;
    state.nStatus = 7;
    EXPECT_EQ(geometry.Calculate(tip, state), 0);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(state.nStatus, 0);
    EXPECT_EQ(state.dRadius, 0.0);
    EXPECT_EQ(tip.h, 3.0);

    geometry.SetProgressObserver({});
    EXPECT_EQ(geometry.Calculate(tip, state), 1);
    EXPECT_EQ(state.nStatus, 1);
}

} // namespace
