// SPDX-License-Identifier: MIT
//
// The operations behind Position: projection, both geometries, lines, distances, three spheres.
#include "tests/positioning/Reach.h"
#include "tests/reference/LiteralPosition.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr double kRoundOff = 1e-12;

struct ProjectionCase
{
    int type;
    double pitch, roll, heading, expected;
    const char* why;
};

TEST(Projection, FollowsTheLean)
{
    constexpr ProjectionCase cases[] = {
        {1, 0,   10,  100,  10,                     "roll to the right: 90 less"          },
        {1, 0,   -10, 100,  190,                    "roll to the left: 90 more"           },
        {1, 30,  45,  0,    -70.528779365509 + 360, "acos(tan 30°·tan 30°) = acos(1/3)"},
        {1, 30,  -45, 0,    70.528779365509,        "the other side"                      },
        {0, 10,  0,   100,  10,                     "second convention: u = 0, v > 0"     },
        {0, -10, 0,   100,  190,                    "v < 0"                               },
        {2, 10,  0,   100,  100,                    "the turned type adds acos(0) = 90"   },
        {2, -10, 0,   100,  280,                    "on either side"                      },
        {1, 0,   10,  30,   300,                    "wraps below zero by one step"        },
        {1, 0,   -10, 300,  30,                     "wraps above a turn by one step"      },
        {1, 0,   -10, 1000, 730,                    "one step only"                       },
        {1, 0,   0,   100,  190,                    "a plumb pole: tan u is 0"            },
    };
    for (const ProjectionCase& c : cases)
        EXPECT_NEAR(Reach(c.type).GetAngleofPoleProject(c.pitch, c.roll, c.heading, 0), c.expected,
                    1e-11)
            << c.why;
}

// Leg and hypotenuse of the right triangle coincide, so the argument of the arc cosine is 1, where
// its last digit becomes 1e-6 degrees.
TEST(Projection, IsForwardOrBackwardForPurePitch)
{
    EXPECT_NEAR(std::remainder(Reach(1).GetAngleofPoleProject(10, 0, 100, 0) - 100, 360), 0, 3e-6);
    EXPECT_NEAR(std::remainder(Reach(1).GetAngleofPoleProject(-10, 0, 100, 0) - 280, 360), 0, 3e-6);
}

TEST(Geometry, StepsDownFromTheHeadingTheSampleCarries)
{
    Reach sensor;
    PoseSensorData sample = Sample(0, 10, {});
    sample.dYaw = 90; // the projection points to 0
    sample.dYaw_2 = 180;
    xyhCoordinate tip;
    EXPECT_EQ(sensor.Position_Geometry_A({10, 20, 30}, sample, 2, tip), 1);
    EXPECT_NEAR(tip.x, 10 + 0.34729635533386, kRoundOff);
    EXPECT_NEAR(tip.y, 20, kRoundOff);
    EXPECT_NEAR(tip.h, 30 - 1.96961550602442, kRoundOff);

    // B: roll counts as -10, so the projection points to 180 + 90.
    EXPECT_EQ(sensor.Position_Geometry_B({10, 20, 30}, sample, 2, tip), 1);
    EXPECT_NEAR(tip.x, 10, kRoundOff);
    EXPECT_NEAR(tip.y, 20 - 0.34729635533386, kRoundOff);
    EXPECT_NEAR(tip.h, 30 - 1.96961550602442, kRoundOff);
}

TEST(Geometry, KeepsTheProjectionOfMagnetometerAOnly)
{
    PoseSensorData sample = Sample(0, 10, {});
    xyhCoordinate tip;
    double yaw = 0;
    double opposite = 0;
    Reach sensor;
    sensor.Position_Geometry_B({}, sample, 2, tip);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_EQ(yaw, 0.0);
    sensor.Position_Geometry_A({}, sample, 2, tip);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_NEAR(yaw, 90, kRoundOff);
}

TEST(Geometry, FollowsItsFormulasForMagnetometerB)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<double> lean(-60, 60);
    std::uniform_real_distribution<double> turn(0, 360);
    for (int i = 0; i < 3000; ++i) {
        const int type = kSensorTypes[i % 5];
        PoseSensorData sample = Sample(lean(random), lean(random), {});
        sample.dYaw_2 = turn(random);
        xyhCoordinate tip;
        Reach(type).Position_Geometry_B({1, 2, 3}, sample, 2, tip);
        double cosine[2];
        const double t =
            literal::Rad(literal::ElevationDegrees(type, -sample.dPitch, -sample.dRoll));
        const double az = literal::Rad(
            literal::Projection(type, -sample.dPitch, -sample.dRoll, sample.dYaw_2, cosine));
        EXPECT_NEAR(tip.x, 1 + 2 * std::cos(t) * std::cos(az), kRoundOff);
        EXPECT_NEAR(tip.y, 2 + 2 * std::cos(t) * std::sin(az), kRoundOff);
        EXPECT_NEAR(tip.h, 3 - 2 * std::sin(t), kRoundOff);
    }
}

TEST(Math, ReportsSuccessAndWritesNothing)
{
    xyhCoordinate tip{1, 2, 3};
    EXPECT_EQ(Reach{}.Position_Math({7, 8, 9}, Sample(10, 20, {1, 2, 3}), 2, tip), 1);
    EXPECT_EQ(tip.x, 1.0);
    EXPECT_EQ(tip.y, 2.0);
    EXPECT_EQ(tip.h, 3.0);
}

TEST(InclinePoint, StepsAgainstTheAzimuthAndDown)
{
    const xyhCoordinate p = Reach{}.GetInclinePoint({10, 20, 30}, 2, 60, 0);
    EXPECT_NEAR(p.x, 9, kRoundOff);
    EXPECT_NEAR(p.y, 20, kRoundOff);
    EXPECT_NEAR(p.h, 30 - std::sqrt(3.0), kRoundOff);
    const xyhCoordinate q = Reach{}.GetInclinePoint({10, 20, 30}, 2, 60, 90);
    EXPECT_NEAR(q.x, 10, kRoundOff);
    EXPECT_NEAR(q.y, 19, kRoundOff);
}

TEST(Distance, IsZeroUpToAMillimeter)
{
    const Reach sensor;
    EXPECT_EQ(sensor.GetDistance({0, 0, 0}, {0.0005, 0, 0}), 0.0);
    EXPECT_EQ(sensor.GetDistance({0, 0, 0}, {0, 0.001, 0}), 0.0);
    EXPECT_NEAR(sensor.GetDistance({0, 0, 0}, {0, 0, 0.002}), 0.002, 1e-18);
    EXPECT_EQ(sensor.GetDistance({1, 2, 3}, {3, 5, 9}), 7.0);
}

double DistanceOf(const xyhCoordinate& a, const xyhCoordinate& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.h - b.h);
}

// The mirror image of p in the plane through three points.
xyhCoordinate Mirrored(const xyhCoordinate& p, const xyhCoordinate (&plane)[3])
{
    const double u[] = {plane[1].x - plane[0].x, plane[1].y - plane[0].y, plane[1].h - plane[0].h};
    const double v[] = {plane[2].x - plane[0].x, plane[2].y - plane[0].y, plane[2].h - plane[0].h};
    double n[] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const double length = std::hypot(n[0], n[1], n[2]);
    const double off =
        ((p.x - plane[0].x) * n[0] + (p.y - plane[0].y) * n[1] + (p.h - plane[0].h) * n[2])
        / length;
    return {p.x - 2 * off * n[0] / length, p.y - 2 * off * n[1] / length,
            p.h - 2 * off * n[2] / length};
}

// Random centers and their distances to a point; the result is that point or its mirror image,
// whichever is lower.
void CheckSpheres(const xyhCoordinate& origin, double tolerance)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> near(-2, 2);
    int solved = 0;
    for (int i = 0; i < 1000; ++i) {
        const auto point = [&] {
            return xyhCoordinate{origin.x + near(random), origin.y + near(random),
                                 origin.h + near(random)};
        };
        const xyhCoordinate centers[3] = {point(), point(), point()};
        const xyhCoordinate p = point();
        const xyhCoordinate q = Mirrored(p, centers);
        if (std::fabs(p.h - q.h) < 0.1 || std::fabs(p.x - q.x) < 0.1) continue;
        xyhCoordinate found;
        const Reach sensor;
        ASSERT_EQ(sensor.GetSolvePoint(centers[0], centers[1], centers[2],
                                       DistanceOf(p, centers[0]), DistanceOf(p, centers[1]),
                                       DistanceOf(p, centers[2]), found),
                  1);
        EXPECT_NEAR(DistanceOf(found, p.h < q.h ? p : q), 0, tolerance) << "case " << i;
        ++solved;
    }
    EXPECT_GT(solved, 500);
}

TEST(SolvePoint, FindsTheLowerOfTwoPoints)
{
    CheckSpheres({0, 0, 0}, 1e-9);
}

TEST(SolvePoint, IsAsExactAtSurveySizeCoordinates)
{
    CheckSpheres({238540, 650135, 114}, 1e-6);
}

TEST(SolvePoint, FavoursTheSecondOfTwoEqualHeights)
{
    // Centers in the plane x = 0: the two points differ in x only, and the first has the larger x.
    xyhCoordinate p;
    EXPECT_EQ(Reach{}.GetSolvePoint({0, 0, 0}, {0, 2, 0}, {0, 0, 2}, std::sqrt(3.0), std::sqrt(3.0),
                                    std::sqrt(3.0), p),
              1);
    EXPECT_NEAR(p.x, -1, kRoundOff);
    EXPECT_NEAR(p.y, 1, kRoundOff);
    EXPECT_NEAR(p.h, 1, kRoundOff);
}

// Two centers of one height or one y make products of the solution vanish, not the solution.
TEST(SolvePoint, NeedsNoDifferenceBetweenTwoOfTheCenters)
{
    const xyhCoordinate cases[][3] = {
        {{0, 0, 0}, {1, 2, 1}, {3, 0.5, 0}},
        {{0, 0, 0}, {1, 2, 0}, {3, 0.5, 1}},
        {{0, 0, 0}, {1, 0, 1}, {3, 2, 0.5}},
        {{0, 0, 0}, {1, 2, 1}, {3, 0, 0.5}},
    };
    for (const auto& centers : cases) {
        const xyhCoordinate p{1, 1, -3};
        ASSERT_LT(p.h, Mirrored(p, centers).h) << "meant to be the lower one";
        xyhCoordinate found;
        ASSERT_EQ(Reach{}.GetSolvePoint(centers[0], centers[1], centers[2],
                                        DistanceOf(p, centers[0]), DistanceOf(p, centers[1]),
                                        DistanceOf(p, centers[2]), found),
                  1);
        EXPECT_NEAR(DistanceOf(found, p), 0, 1e-12);
    }
}

struct UnsolvedCase
{
    xyhCoordinate p1, p2, p3;
    double r1, r2, r3;
    const char* why;
};

TEST(SolvePoint, AnswersZeroAndWritesNothingWhereThereIsNone)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const double r2 = std::sqrt(2.0);
    const UnsolvedCase cases[] = {
        {{0, 0, 0},    {0, 2, 0},   {0, 0, 2},   1,    1,  1,  "spheres apart"             },
        {{0, 0, 0},    {0, 2, 0},   {0, 0, 2},   r2,   r2, r2, "touching in one point"     },
        {{0, 0, 0},    {1, 1, 1},   {2, 2, 2},   2,    2,  2,  "centers in a line"         },
        {{0, 0, 0.1},  {1, 0, 0.1}, {0, 1, 0.1}, 1,    1,  1,  "all of equal height"       },
        {{1, 2, 3},    {1, 2, 3},   {1, 2, 3},   1,    1,  1,  "one center"                },
        {{0, 0, 0},    {0, 2, 0},   {0, 0, 2},   kNaN, 1,  1,  "a radius that is no number"},
        {{kNaN, 0, 0}, {0, 2, 0},   {0, 0, 2},   2,    2,  2,  "a center that is none"     },
    };
    for (const UnsolvedCase& c : cases) {
        xyhCoordinate p{7, 8, 9};
        EXPECT_EQ(Reach{}.GetSolvePoint(c.p1, c.p2, c.p3, c.r1, c.r2, c.r3, p), 0) << c.why;
        EXPECT_EQ(p.x, 7.0) << c.why;
        EXPECT_EQ(p.y, 8.0) << c.why;
        EXPECT_EQ(p.h, 9.0) << c.why;
    }
}

} // namespace
