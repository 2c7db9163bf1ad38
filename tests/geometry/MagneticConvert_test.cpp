// SPDX-License-Identifier: MIT
#include "geometry/MagneticConvert.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <rapidcheck/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double kRoundOff = 1e-9;                                 // of coordinates up to 5e6 [m]
constexpr double kArcSecond = std::numbers::pi / (180.0 * 3600.0); // [radians]

struct Plane
{
    double x, y;
};

FourParameterPoint Pair(Plane source, Plane target)
{
    FourParameterPoint pair;
    pair.xSource = source.x;
    pair.ySource = source.y;
    pair.xTarget = target.x;
    pair.yTarget = target.y;
    return pair;
}

Plane Forward(const CMagneticConvert& convert, Plane p)
{
    convert.XYtoXY(p.x, p.y);
    return p;
}

Plane Backward(const CMagneticConvert& convert, Plane p)
{
    convert.XYtoXY1(p.x, p.y);
    return p;
}

void ExpectNear(Plane found, Plane expected, double tolerance)
{
    EXPECT_NEAR(found.x, expected.x, tolerance);
    EXPECT_NEAR(found.y, expected.y, tolerance);
}

void ExpectParameters(const Magnetic_FourParameter& found, const Magnetic_FourParameter& expected,
                      double tolerance)
{
    EXPECT_NEAR(found.dScale, expected.dScale, tolerance);
    EXPECT_NEAR(found.dRotate, expected.dRotate, tolerance);
    EXPECT_NEAR(found.dDx, expected.dDx, tolerance);
    EXPECT_NEAR(found.dDy, expected.dDy, tolerance);
    EXPECT_EQ(found.dX0, expected.dX0);
    EXPECT_EQ(found.dY0, expected.dY0);
}

constexpr Magnetic_FourParameter kIdentity = {1.0, 0.0, 0.0, 0.0, 0.0, 0.0};

TEST(MagneticConvert, StartsAsTheIdentity)
{
    const CMagneticConvert convert;
    ExpectParameters(convert.GetFourParameter(), kIdentity, 0.0);
    ExpectNear(Forward(convert, {3, -4}), {3, -4}, 0.0);
    ExpectNear(Backward(convert, {3, -4}), {3, -4}, 0.0);
}

TEST(MagneticConvert, NeedsAPairToFitAndKeepsItsParametersWithoutOne)
{
    CMagneticConvert convert;
    convert.SetFourParameter(1, 2, 0.5, 3, 4, 5);
    EXPECT_EQ(convert.CalFourParameter(), 0);
    ExpectParameters(convert.GetFourParameter(), {3, 0.5, 1, 2, 4, 5}, 0.0);
}

TEST(MagneticConvert, SetsItsParametersInTheOrderOfTheCall)
{
    CMagneticConvert convert;
    convert.SetFourParameter(10, 20, 0.1, 1.5, 30, 40);
    const Magnetic_FourParameter set = convert.GetFourParameter();
    EXPECT_EQ(set.dDx, 10);
    EXPECT_EQ(set.dDy, 20);
    EXPECT_EQ(set.dRotate, 0.1);
    EXPECT_EQ(set.dScale, 1.5);
    EXPECT_EQ(set.dX0, 30);
    EXPECT_EQ(set.dY0, 40);
}

TEST(MagneticConvert, FitsAShift)
{
    CMagneticConvert convert;
    for (const Plane p : {
             Plane{0,  0},
             Plane{10, 0},
             Plane{3,  8}
    })
        convert.m_Points.Add(Pair(p, {p.x + 1, p.y + 2}));
    EXPECT_EQ(convert.CalFourParameter(), 1);
    ExpectParameters(convert.GetFourParameter(), {1, 0, 1, 2, 0, 0}, 1e-14);
}

// A quarter turn from +x to +y with scale 2: (1, 0) goes to (0, 2), (0, 1) to (-2, 0).
TEST(MagneticConvert, FitsAQuarterTurnFromXTowardsY)
{
    CMagneticConvert convert;
    convert.m_Points.Add(Pair({0, 0}, {5, 7}));
    convert.m_Points.Add(Pair({1, 0}, {5, 9}));
    convert.m_Points.Add(Pair({0, 1}, {3, 7}));
    EXPECT_EQ(convert.CalFourParameter(), 1);
    ExpectParameters(convert.GetFourParameter(), {2, std::numbers::pi / 2, 5, 7, 0, 0}, 1e-14);
}

// Normal equations by hand: u = ±1, v = 0, U = ±1.5 along x; the y targets 0, 1 turn by
// atan(0.5/1.5).
TEST(MagneticConvert, FitsTwoPairsThatDifferInScaleAndRotation)
{
    CMagneticConvert convert;
    convert.m_Points.Add(Pair({-1, 0}, {-1.5, 0}));
    convert.m_Points.Add(Pair({1, 0}, {1.5, 1}));
    EXPECT_EQ(convert.CalFourParameter(), 1);
    const Magnetic_FourParameter fitted = {std::sqrt(2.5), std::atan2(0.5, 1.5), 0, 0.5, 0, 0};
    ExpectParameters(convert.GetFourParameter(), fitted, 1e-14);
}

TEST(MagneticConvert, LeavesCoordinatesLessTheirMeansInTheWorkFields)
{
    CMagneticConvert convert;
    convert.m_Points.Add(Pair({0, 2}, {10, 20}));
    convert.m_Points.Add(Pair({4, 6}, {30, 80}));
    convert.CalFourParameter();
    const FourParameterPoint& last = convert.m_Points[1];
    EXPECT_EQ(last.uSource, 2);
    EXPECT_EQ(last.vSource, 2);
    EXPECT_EQ(last.uTarget, 10);
    EXPECT_EQ(last.vTarget, 30);
}

TEST(MagneticConvert, TakesSourcePointsThatCoincideForTheIdentity)
{
    for (const int count : {1, 3, 7, 10}) {
        CMagneticConvert convert;
        convert.SetFourParameter(1, 2, 0.5, 3, 4, 5);
        for (int k = 0; k < count; ++k)
            convert.m_Points.Add(Pair({4500000.1, 500000.7}, {1.0 * k, 2.0 * k * k}));
        EXPECT_EQ(convert.CalFourParameter(), 1);
        ExpectParameters(convert.GetFourParameter(), {1, 0, 0, 0, 4, 5}, 0.0);
    }
}

TEST(MagneticConvert, KeepsItsRotationCenterWhenItFits)
{
    CMagneticConvert convert;
    convert.SetFourParameter(0, 0, 0, 1, 12, 34);
    convert.m_Points.Add(Pair({0, 0}, {1, 2}));
    convert.m_Points.Add(Pair({1, 1}, {2, 3}));
    convert.CalFourParameter();
    ExpectParameters(convert.GetFourParameter(), {1, 0, 1, 2, 12, 34}, 1e-14);
}

// k = 2, θ = 90°, center (10, 20), shift (1, 2), by hand for (3, 4):
// ex = 10 + 20 − 10 = 20, ey = 20 − 10 − 20 = −10, X = −4 + 20, Y = 3 − 10.
TEST(MagneticConvert, ScalesTheTermsOfTheCenterToo)
{
    CMagneticConvert convert;
    convert.SetFourParameter(1, 2, std::numbers::pi / 2, 2, 10, 20);
    ExpectNear(Forward(convert, {3, 4}), {33, -12}, 1e-13);
}

// k = 2 without rotation: the terms are −10 or −20 along one axis and nothing along the other.
TEST(MagneticConvert, HeedsACenterOnOneAxis)
{
    CMagneticConvert convert;
    convert.SetFourParameter(1, 2, 0, 2, 10, 0);
    ExpectNear(Forward(convert, {3, 4}), {2 * (3 - 10) + 1, 2 * 4 + 2}, 0.0);
    convert.SetFourParameter(1, 2, 0, 2, 0, 20);
    ExpectNear(Forward(convert, {3, 4}), {2 * 3 + 1, 2 * (4 - 20) + 2}, 0.0);
}

TEST(MagneticConvert, IgnoresTheCenterOnTheWayBack)
{
    CMagneticConvert convert;
    convert.SetFourParameter(1, 2, std::numbers::pi / 2, 2, 10, 20);
    // without a center (3, 4) goes to (-8 + 1, 6 + 2)
    ExpectNear(Backward(convert, {-7, 8}), {3, 4}, 1e-13);
}

TEST(MagneticConvert, DividesByAScaleOfZeroUnguarded)
{
    CMagneticConvert convert;
    convert.SetFourParameter(1, 2, 0, 0, 0, 0);
    const Plane back = Backward(convert, {5, 6});
    EXPECT_FALSE(std::isfinite(back.x));
    EXPECT_FALSE(std::isfinite(back.y));
    ExpectNear(Forward(convert, {5, 6}), {1, 2}, 0.0);
}

RC_GTEST_PROP(MagneticConvert, ComesBackWithoutACenter, ())
{
    const auto within = [](int size) { return *rc::gen::inRange(-size, size) * 1e-3; };
    CMagneticConvert convert;
    convert.SetFourParameter(within(1000000), within(1000000), within(10000),
                             0.001 * *rc::gen::inRange(100, 3000), 0, 0);
    const Plane given = {within(5000000), within(5000000)};
    const Plane back = Backward(convert, Forward(convert, given));
    RC_ASSERT(std::fabs(back.x - given.x) < kRoundOff);
    RC_ASSERT(std::fabs(back.y - given.y) < kRoundOff);
}

// The gradient of the sum of squared residuals vanishes at the fit: residuals are orthogonal to
// every parameter's column.
RC_GTEST_PROP(MagneticConvert, LeavesResidualsOrthogonalToTheParameters, ())
{
    const auto within = [](int size) { return *rc::gen::inRange(-size, size) * 1e-2; };
    CMagneticConvert convert;
    const int count = *rc::gen::inRange(2, 12);
    for (int k = 0; k < count; ++k)
        convert.m_Points.Add(Pair({within(10000), within(10000)}, {within(10000), within(10000)}));
    RC_PRE(convert.CalFourParameter() == 1);
    double spread = 0.0;
    double sums[4] = {};
    for (INT_PTR k = 0; k < convert.m_Points.GetSize(); ++k) {
        const FourParameterPoint& p = convert.m_Points[k];
        const Plane to = Forward(convert, {p.xSource, p.ySource});
        const double rx = p.xTarget - to.x;
        const double ry = p.yTarget - to.y;
        sums[0] += rx;
        sums[1] += ry;
        sums[2] += rx * p.xSource + ry * p.ySource;
        sums[3] += ry * p.xSource - rx * p.ySource;
        spread += p.uSource * p.uSource + p.vSource * p.vSource;
    }
    RC_PRE(spread > 1.0);
    for (const double sum : sums)
        RC_ASSERT(std::fabs(sum) < 1e-6);
}

struct PublishedPair
{
    std::string direction;
    FourParameterPoint pair;
};

std::vector<PublishedPair> PublishedPairs()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/examples/icgc_similarity.csv");
    std::vector<PublishedPair> pairs;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        PublishedPair row;
        std::getline(fields, row.direction, ',');
        char comma = 0;
        FourParameterPoint& p = row.pair;
        fields >> p.xSource >> comma >> p.ySource >> comma >> p.xTarget >> comma >> p.yTarget;
        pairs.push_back(row);
    }
    return pairs;
}

constexpr double kHalfMillimeter = 0.0005 + 1e-9; // the control points are given to 1 mm

// Control points and parameters published by the Institut Cartogràfic i Geològic de Catalunya
// (J. Grau Bellet, March 2010; EPSG:5166).
TEST(MagneticConvert, AgreesWithPublishedControlPoints)
{
    CMagneticConvert forward;
    forward.SetFourParameter(-129.549, -208.185, -1.56504 * kArcSecond, 1.0000015504, 0, 0);
    CMagneticConvert backward;
    backward.SetFourParameter(129.547, 208.186, 1.56504 * kArcSecond, 1 - 1.5504e-6, 0, 0);
    const auto pairs = PublishedPairs();
    ASSERT_EQ(pairs.size(), 8U);
    for (const auto& [direction, pair] : pairs) {
        const CMagneticConvert& convert = direction == "forward" ? forward : backward;
        ExpectNear(Forward(convert, {pair.xSource, pair.ySource}), {pair.xTarget, pair.yTarget},
                   kHalfMillimeter);
    }
}

TEST(MagneticConvert, FitsThePublishedParametersFromTheirControlPoints)
{
    CMagneticConvert convert;
    for (const auto& [direction, pair] : PublishedPairs())
        if (direction == "forward") convert.m_Points.Add(pair);
    ASSERT_EQ(convert.CalFourParameter(), 1);
    const Magnetic_FourParameter fitted = convert.GetFourParameter();
    // half a millimeter of rounding over 250 km of spread
    EXPECT_NEAR(fitted.dScale, 1.0000015504, 3e-9);
    EXPECT_NEAR(fitted.dRotate, -1.56504 * kArcSecond, 3e-9);
    EXPECT_NEAR(fitted.dDx, -129.549, 0.02);
    EXPECT_NEAR(fitted.dDy, -208.185, 0.02);
}

TEST(MagneticConvert, KeepsSurveySizeCoordinatesToTheirRounding)
{
    CMagneticConvert near;
    CMagneticConvert far;
    const Plane shift = {4500000, 500000};
    for (const Plane p : {
             Plane{0,      0   },
             Plane{120.5,  3.25},
             Plane{-40.25, 88.5},
             Plane{64,     70  }
    }) {
        const Plane to = {1.5 * p.x - 0.5 * p.y, 0.5 * p.x + 1.5 * p.y};
        near.m_Points.Add(Pair(p, to));
        far.m_Points.Add(Pair({p.x + shift.x, p.y + shift.y}, {to.x + shift.x, to.y + shift.y}));
    }
    near.CalFourParameter();
    far.CalFourParameter();
    EXPECT_NEAR(far.GetFourParameter().dScale, near.GetFourParameter().dScale, 1e-12);
    EXPECT_NEAR(far.GetFourParameter().dRotate, near.GetFourParameter().dRotate, 1e-12);
    ExpectNear(Forward(far, {shift.x + 10, shift.y + 20}), {shift.x + 5, shift.y + 35}, 1e-8);
}

} // namespace
