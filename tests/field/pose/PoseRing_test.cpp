// SPDX-License-Identifier: MIT
#include "field/pose/PoseRing.h"

#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace std::chrono_literals;
using field::Instant;
using field::PoseLookup;
using field::PoseRing;
using field::PoseSample;
using Looked = PoseLookup::State;

namespace {

PoseSample Sample(Instant moment, double pitch)
{
    PoseSample sample;
    sample.moment = moment;
    sample.arrival = moment + 3ms;
    sample.deviceSeconds = std::chrono::duration<double>(moment).count();
    sample.data.dPitch = pitch;
    sample.data.dRoll = 2.0 * pitch;
    sample.data.dMag_x = 150.0 + pitch;
    sample.data.dMag_z_2 = 380.0 - pitch;
    sample.data.dGyro_y = 3.0 * pitch;
    sample.data.dAcc_z = 1.0 - pitch;
    return sample;
}

// Samples at this distance from 0 on, a pitch of 1 degree more each.
PoseRing Moving(Instant step, int count)
{
    PoseRing ring;
    for (int i = 0; i < count; ++i)
        ring.Add(Sample(i * step, i));
    return ring;
}

PoseRing Still(Instant step, int count)
{
    PoseRing ring;
    for (int i = 0; i < count; ++i)
        ring.Add(Sample(i * step, 10.0 + 0.1 * (i % 2)));
    return ring;
}

} // namespace

TEST(PoseRing, FindsTheFirstSampleNotBeforeAMoment)
{
    for (int count = 0; count < 40; ++count) {
        const PoseRing ring = Moving(20ms, count);
        for (int i = 0; i <= count; ++i) {
            EXPECT_EQ(ring.FirstNotBefore(i * 20ms), static_cast<std::size_t>(i));
            EXPECT_EQ(ring.FirstNotBefore(i * 20ms - 1ns), static_cast<std::size_t>(i));
        }
        EXPECT_EQ(ring.FirstNotBefore(-1h), 0U);
        EXPECT_EQ(ring.FirstNotBefore(1h), static_cast<std::size_t>(count));
    }
}

TEST(PoseRing, DrawsStraightLinesBetweenNeighbors)
{
    const PoseRing ring = Moving(20ms, 10);
    const PoseLookup found = ring.At(45ms);
    ASSERT_EQ(found.state, Looked::Found);
    EXPECT_DOUBLE_EQ(found.pose.data.dPitch, 2.25);
    EXPECT_DOUBLE_EQ(found.pose.data.dRoll, 4.5);
    EXPECT_DOUBLE_EQ(found.pose.data.dMag_x, 152.25);
    EXPECT_DOUBLE_EQ(found.pose.data.dMag_z_2, 377.75);
    EXPECT_DOUBLE_EQ(found.pose.data.dGyro_y, 6.75);
    EXPECT_DOUBLE_EQ(found.pose.data.dAcc_z, -1.25);
    EXPECT_DOUBLE_EQ(found.pose.deviceSeconds.value(), 0.045);
    EXPECT_EQ(found.pose.moment, 45ms);
    EXPECT_EQ(found.pose.arrival, 63ms);
    EXPECT_EQ(found.between, 20ms);
    EXPECT_FALSE(found.beyond);
}

TEST(PoseRing, GivesASampleAtItsOwnMoment)
{
    const PoseRing ring = Moving(300ms, 3);
    const PoseLookup found = ring.At(300ms, 0ms);
    ASSERT_EQ(found.state, Looked::Found);
    EXPECT_EQ(found.pose.data.dPitch, 1.0);
}

TEST(PoseRing, TurnsAHeadingTheShorterWay)
{
    struct Case
    {
        double a, b, expected;
    };
    constexpr Case cases[] = {
        {350.0, 20.0,  5.0  },
        {20.0,  350.0, 5.0  },
        {10.0,  30.0,  20.0 },
        {358.0, 0.0,   359.0},
        {-10.0, 350.0, 350.0},
        {90.0,  250.0, 170.0},
    };
    for (const Case& c : cases) {
        PoseRing ring;
        PoseSample a = Sample(0ms, 0.0);
        PoseSample b = Sample(20ms, 0.0);
        a.heading = c.a;
        b.heading = c.b;
        ring.Add(a);
        ring.Add(b);
        EXPECT_DOUBLE_EQ(ring.At(10ms).pose.heading.value(), c.expected) << c.a << ' ' << c.b;
    }
}

TEST(PoseRing, KnowsClockAndHeadingBetweenSamplesThatBothDo)
{
    for (const bool firstDoes : {true, false}) {
        PoseSample a = Sample(0ms, 0.0);
        PoseSample b = Sample(20ms, 0.0);
        PoseSample& other = firstDoes ? b : a;
        a.heading = b.heading = 10.0;
        other.heading.reset();
        other.deviceSeconds.reset();
        PoseRing ring;
        ring.Add(a);
        ring.Add(b);
        const PoseLookup found = ring.At(10ms);
        ASSERT_EQ(found.state, Looked::Found);
        EXPECT_FALSE(found.pose.heading) << firstDoes;
        EXPECT_FALSE(found.pose.deviceSeconds) << firstDoes;
    }
}

TEST(PoseRing, HasAGapBetweenNeighborsMoreThan50MillisecondsApart)
{
    EXPECT_EQ(Moving(50ms, 5).At(120ms).state, Looked::Found);
    EXPECT_EQ(Moving(51ms, 5).At(120ms).state, Looked::Gap);
}

TEST(PoseRing, Bridges200MillisecondsWhileThePoleIsStill)
{
    EXPECT_EQ(Still(200ms, 8).At(700ms).state, Looked::Found);
    EXPECT_EQ(Still(201ms, 8).At(700ms).state, Looked::Gap);
    EXPECT_EQ(Moving(200ms, 8).At(700ms).state, Looked::Gap);
}

TEST(PoseRing, WaitsForANewerNeighborThenFollowsTheLastLine)
{
    const PoseRing ring = Moving(20ms, 6); // to 100 ms
    EXPECT_EQ(ring.At(110ms, 0ms).state, Looked::Wait);
    EXPECT_EQ(ring.At(110ms, 39ms).state, Looked::Wait);
    const PoseLookup beyond = ring.At(110ms, 40ms);
    ASSERT_EQ(beyond.state, Looked::Found);
    EXPECT_TRUE(beyond.beyond);
    EXPECT_DOUBLE_EQ(beyond.pose.data.dPitch, 5.5);
    EXPECT_EQ(ring.At(120ms, 40ms).state, Looked::Found);
    EXPECT_EQ(ring.At(121ms, 40ms).state, Looked::Gap);
}

TEST(PoseRing, KnowsNothingBeforeItsOldestSample)
{
    const PoseRing ring = Moving(20ms, 6);
    EXPECT_EQ(ring.At(-1ms, 0ms).state, Looked::Gap);
    EXPECT_EQ(PoseRing().At(0ms, 0ms).state, Looked::Wait);
    EXPECT_EQ(PoseRing().At(0ms, 40ms).state, Looked::Gap);
}

TEST(PoseRing, DrawsNoLineThroughOneSample)
{
    const PoseRing ring = Moving(20ms, 1);
    EXPECT_EQ(ring.At(1ms, 40ms).state, Looked::Gap);
}

TEST(PoseRing, RefusesSamplesThatAreNotLater)
{
    PoseRing ring = Moving(20ms, 6);
    EXPECT_FALSE(ring.Add(Sample(100ms, 9.0)));
    EXPECT_FALSE(ring.Add(Sample(90ms, 9.0)));
    EXPECT_EQ(ring.Size(), 6U);
    EXPECT_EQ(ring.At(100ms).pose.data.dPitch, 5.0);
}

TEST(PoseRing, KeepsItsSpan)
{
    PoseRing ring(1s);
    for (int i = 0; i <= 1000; ++i)
        ring.Add(Sample(i * 10ms, i));
    EXPECT_EQ(ring.Size(), 101U);
    EXPECT_EQ(ring.Sample(0).moment, 9s);
    EXPECT_EQ(ring.Sample(100).moment, 10s);
    EXPECT_EQ(ring.At(8990ms).state, Looked::Gap);
    EXPECT_DOUBLE_EQ(ring.At(9005ms).pose.data.dPitch, 900.5);
}

TEST(PoseRing, KeepsLessOfAFasterSensor)
{
    PoseRing ring(1s);
    for (int i = 0; i < 3000; ++i)
        ring.Add(Sample(i * 1ms, i));
    EXPECT_EQ(ring.Size(), 252U);
    EXPECT_DOUBLE_EQ(ring.At(2900500us).pose.data.dPitch, 2900.5);
    ring.Clear();
    EXPECT_EQ(ring.Size(), 0U);
}

TEST(PoseRing, AllocatesOnlyWhenItIsMade)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another allocator is in place";
    PoseRing ring(1s);
    const long before = reference::Allocations();
    for (int i = 0; i < 1000; ++i) {
        ring.Add(Sample(i * 10ms, i));
        ring.At(i * 10ms - 5ms);
        ring.IsStill(i * 10ms);
    }
    EXPECT_EQ(reference::Allocations(), before);
}

TEST(PoseRing, IsStillWhileAnglesAndReadingsStay)
{
    const PoseRing still = Still(20ms, 50); // to 980 ms
    EXPECT_TRUE(still.IsStill(490ms));
    EXPECT_TRUE(still.IsStill(980ms));
    EXPECT_FALSE(still.IsStill(1481ms));
    EXPECT_FALSE(Moving(20ms, 50).IsStill(490ms));

    PoseRing turned;
    PoseRing formed;
    for (int i = 0; i < 50; ++i) {
        PoseSample sample = Sample(i * 20ms, 10.0);
        sample.data.dMag_x = 150.0 * std::cos(i / 50.0);
        sample.data.dMag_y = 150.0 * std::sin(i / 50.0);
        turned.Add(sample);
        sample = Sample(i * 20ms, 10.0);
        sample.heading = i;
        formed.Add(sample);
    }
    EXPECT_FALSE(turned.IsStill(490ms));
    EXPECT_FALSE(formed.IsStill(490ms));
}

TEST(PoseRing, IsNotStillWhileItRollsAlone)
{
    PoseRing rolling;
    for (int i = 0; i < 50; ++i) {
        PoseSample sample = Sample(i * 20ms, 10.0);
        sample.data.dRoll = 0.1 * i;
        rolling.Add(sample);
    }
    EXPECT_FALSE(rolling.IsStill(490ms));
}

TEST(PoseRing, IsNotStillWhereAHeadingBeginsOrEnds)
{
    for (const bool begins : {true, false}) {
        PoseRing ring;
        for (int i = 0; i < 50; ++i) {
            PoseSample sample = Sample(i * 20ms, 10.0);
            if ((i >= 25) == begins) sample.heading = 12.0;
            ring.Add(sample);
        }
        EXPECT_FALSE(ring.IsStill(490ms)) << begins;
    }
}

// A pole of 2 m that swings as 0.2 rad · sin(3 t): velocity 2 m · 0.6 rad/s · cos(3 t) · cos(lean).
TEST(PoseRing, TellsTheVelocityOfALeanVector)
{
    PoseRing ring;
    const auto lean = [](double t) { return 0.2 * std::sin(3.0 * t); };
    for (int i = 0; i <= 100; ++i)
        ring.Add(Sample(i * 20ms, lean(i * 0.02)));
    const auto vectorOf = [](const PoseSample& sample) {
        return xyhCoordinate{2.0 * std::sin(sample.data.dPitch), 0.0,
                             2.0 * std::cos(sample.data.dPitch)};
    };
    const auto check = [&](Instant moment, double t) {
        const std::optional<xyhCoordinate> velocity = ring.Velocity(moment, vectorOf);
        ASSERT_TRUE(velocity);
        const double rate = 0.6 * std::cos(3.0 * t);
        EXPECT_NEAR(velocity->x, 2.0 * rate * std::cos(lean(t)), 0.01);
        EXPECT_NEAR(velocity->h, -2.0 * rate * std::sin(lean(t)), 0.01);
    };
    check(1s, 1.0);
    check(1310ms, 1.31);
    check(2s, 1.975); // at the end: the difference over the last 50 ms
    EXPECT_FALSE(ring.Velocity(10ms, vectorOf));
    EXPECT_FALSE(PoseRing().Velocity(0ms, vectorOf));
    ring.Add(Sample(2300ms, lean(2.3)));
    EXPECT_FALSE(ring.Velocity(2020ms, vectorOf)) << "a gap begins";
}
