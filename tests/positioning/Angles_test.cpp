// SPDX-License-Identifier: MIT
#include "tests/positioning/Reach.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

namespace {

constexpr double kTiny = 1e-15;

// tests/survey/Angle_test.cpp covers the functions behind the protected operations.
TEST(Angles, AreThoseOfTheSurveyVocabulary)
{
    const Reach sensor;
    EXPECT_EQ(sensor.Deg2Rad(180), kPi);
    EXPECT_EQ(sensor.Rad2Deg(-kPi / 4), -45.0);
    EXPECT_EQ(sensor.ASIN(1.0000001), kPi / 2);
    EXPECT_EQ(sensor.ACOS(-2), kPi);
    double azimuth = -400;
    sensor.AdjustAzimuth(azimuth);
    EXPECT_EQ(azimuth, -40.0);
}

TEST(TiltAngle, IsPitchAndRollForTheFirstConvention)
{
    double first = 10;
    double second = -20;
    Reach(1).GetTiltAngle(first, second);
    EXPECT_NEAR(first, kPi / 18, kTiny);
    EXPECT_NEAR(second, -kPi / 9, kTiny);
}

TEST(TiltAngle, ExchangesTheTwoForEveryOtherConvention)
{
    for (const int type : {0, 2, 3, -1}) {
        double first = 10;
        double second = 0;
        Reach(type).GetTiltAngle(first, second);
        EXPECT_EQ(first, 0.0) << "type " << type;
        EXPECT_NEAR(second, kPi / 18, kTiny) << "type " << type;

        first = 60;
        second = 30;
        Reach(type).GetTiltAngle(first, second);
        EXPECT_NEAR(first, -0.25268025514208, 1e-14) << "-asin(1/4), type " << type;
        EXPECT_NEAR(second, kPi / 3, kTiny) << "type " << type;
    }
}

TEST(Elevation, IsNinetyForAPlumbPole)
{
    for (const int type : kSensorTypes)
        EXPECT_EQ(Reach(type).GetAngleofPoletoHorizontal(0, 0), 90.0) << "type " << type;
}

struct ElevationCase
{
    int type;
    double pitch, roll, expected;
    const char* why;
};

TEST(Elevation, FollowsTheLean)
{
    constexpr ElevationCase cases[] = {
        {1, 0,   10,  80, "one lean counts whole"                          },
        {0, 0,   10,  80, "in either convention"                           },
        {1, -25, 0,   65, "whatever its sign"                              },
        {2, -25, 0,   65, "in either convention"                           },
        {1, 30,  45,  30, "sin² g = 1/4 + 1/2: g = 60"                    },
        {1, 60,  60,  0,  "sin² g would be 3/2: limited, the pole lies"   },
        {0, 45,  45,  30, "cos g = 1/2"                                    },
        {0, 180, 10,  80, "an inverted pole is measured from the other end"},
        {0, 120, 180, 30, "both inverted: cos g = 1/2"                     },
        {1, 180, 10,  80, "sines cannot tell an inverted pole"             },
    };
    for (const ElevationCase& c : cases)
        EXPECT_NEAR(Reach(c.type).GetAngleofPoletoHorizontal(c.pitch, c.roll), c.expected, 1e-12)
            << c.why << ", type " << c.type;
}

RC_GTEST_PROP(Elevation, LiesBetweenTheHorizontalAndThePlumbLine, ())
{
    const double pitch = *rc::gen::inRange(-18000, 18000) / 100.0;
    const double roll = *rc::gen::inRange(-18000, 18000) / 100.0;
    for (const int type : {1, 0}) {
        const double elevation = Reach(type).GetAngleofPoletoHorizontal(pitch, roll);
        RC_ASSERT(elevation >= 0.0 && elevation <= 90.0);
    }
}

// All objects share the smoothing state, so every test begins with a reset.
struct Smoother
{
    CInclineSensor_Position sensor;
    double last[2] = {0, 0};

    double operator()(double value, int n, int reset = 0)
    {
        last[0] = value;
        last[1] = -value;
        sensor.filter(last, n, reset);
        return last[0];
    }
};

TEST(Smoothing, IsTheRunningMeanAtFirst)
{
    Smoother smooth;
    EXPECT_EQ(smooth(10, 4, 1), 10.0);
    EXPECT_EQ(smooth(20, 4), 15.0);
    EXPECT_EQ(smooth(60, 4), 30.0);
    EXPECT_EQ(smooth(2, 4), 23.0);
    EXPECT_EQ(smooth(8, 4), 20.0);
    EXPECT_EQ(smooth.last[1], -20.0) << "both channels are smoothed";
}

TEST(Smoothing, WeighsEachNewSampleAlikeLater)
{
    Smoother smooth;
    smooth(0, 1, 1);
    smooth(0, 1);
    EXPECT_EQ(smooth(8, 1), 4.0) << "one half";
    EXPECT_EQ(smooth(8, 1), 6.0);
    EXPECT_EQ(smooth(8, 1), 7.0);
}

TEST(Smoothing, IsSharedByAllObjects)
{
    Smoother first;
    Smoother second;
    first(10, 4, 1);
    EXPECT_EQ(second(20, 4), 15.0);
}

TEST(Smoothing, ForgetsOnReset)
{
    Smoother smooth;
    smooth(10, 4, 1);
    EXPECT_EQ(smooth(50, 4, 1), 50.0);
    EXPECT_EQ(smooth(30, 4), 40.0);
    for (const int other : {-1, 2, 256}) {
        EXPECT_EQ(smooth(10, 4, other), 10.0) << "on any number but 0";
        EXPECT_EQ(smooth(30, 4), 20.0) << "the counter, too";
    }
}

TEST(Smoothing, PassesValuesThroughForZeroSamples)
{
    Smoother smooth;
    smooth(10, 0, 1);
    EXPECT_EQ(smooth(30, 0), 30.0);
}

TEST(Smoothing, ReadsTwoValuesOnly)
{
    double values[] = {1, 2, 3};
    CInclineSensor_Position{}.filter(values, 4, 1);
    CInclineSensor_Position{}.filter(values, 4, 0);
    EXPECT_EQ(values[2], 3.0);
}

TEST(Smoothing, SurvivesAnyCount)
{
    Smoother smooth;
    smooth(10, std::numeric_limits<int>::max(), 1);
    EXPECT_EQ(smooth(20, std::numeric_limits<int>::max()), 15.0);
    EXPECT_TRUE(std::isinf(smooth(20, -1, 1))) << "weight 1/0";
    EXPECT_FALSE(std::isnan(smooth(20, std::numeric_limits<int>::min(), 1)));
}

TEST(Members, KeepWhatTheHostSets)
{
    CInclineSensor_Position sensor;
    EXPECT_EQ(sensor.GetSensorType(), 1);
    EXPECT_EQ(sensor.IsStationary(), 0);
    EXPECT_EQ(sensor.IsMagneticInterference(), 0);
    EXPECT_EQ(sensor.GetMagneticBiasAngle_A(), 0.0);
    EXPECT_EQ(sensor.GetMagneticBiasAngle_B(), 0.0);
    EXPECT_EQ(sensor.GetMagneticCorrectPar_B().b, 1.0);

    sensor.SetSensorType(2);
    sensor.SetMagneticBiasAngle_A(1.5);
    sensor.SetMagneticBiasAngle_B(-2.5);
    sensor.SetMagneticCorrectPar_A({1, 2, 3, 4, 5, 6, 7, 8});
    sensor.SetMagneticCorrectPar_B({8, 7, 6, 5, 4, 3, 2, 1});
    sensor.SetMagneticTranslationPar({9, 10, 11});
    const CInclineSensor_Position copy = sensor;
    EXPECT_EQ(copy.GetSensorType(), 2);
    EXPECT_EQ(copy.GetMagneticBiasAngle_A(), 1.5);
    EXPECT_EQ(copy.GetMagneticBiasAngle_B(), -2.5);
    EXPECT_EQ(copy.GetMagneticCorrectPar_A().e, 8.0);
    EXPECT_EQ(copy.GetMagneticCorrectPar_B().x0, 8.0);
    EXPECT_EQ(copy.GetMagneticTranslationPar().dZ, 11.0);
}

} // namespace
