// SPDX-License-Identifier: MIT
#include "simulation/Turn.h"

#include "survey/Angle.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using namespace simulation;

constexpr double kRadian = tiltpole::survey::kPi / 180.0;
const EarthField kField{500.0, std::atan2(4.0, 3.0) / kRadian, 0.0}; // 300 north, 400 down

Recording TurnOf(const TurnPlan& plan, std::uint64_t seed = 1)
{
    return SimulateTurn({}, kField, plan, seed);
}

// The heading turned through from the first sample on, followed over north.
std::vector<double> TurnedBy(const Recording& turn)
{
    std::vector<double> turned{0.0};
    for (std::size_t i = 1; i < turn.truth.size(); ++i) {
        const double step = turn.truth[i].angles.heading - turn.truth[i - 1].angles.heading;
        turned.push_back(turned.back() + std::remainder(step, 360.0));
    }
    return turned;
}

TEST(Turn, HorizontalTurnRunsEvenlyOverItsExtent)
{
    const Recording turn = TurnOf({.samples = 401, .rate = 20.0, .extent = 400.0});
    ASSERT_EQ(turn.samples.size(), 401U);
    const std::vector<double> turned = TurnedBy(turn);
    for (std::size_t i = 0; i < turned.size(); ++i) {
        EXPECT_NEAR(turned[i], static_cast<double>(i), 1e-9);
        EXPECT_NEAR(turn.truth[i].seconds, static_cast<double>(i) / 20.0, 1e-12);
    }
}

// The field circles about z at 300 counts, 400 counts up the pole stay.
TEST(Turn, HorizontalTurnDrawsACircleAcrossZ)
{
    for (const PoseSensorData& s : TurnOf({.startHeading = 77.0}).samples) {
        EXPECT_NEAR(std::hypot(s.dMag_x, s.dMag_y), 300.0, 1e-9);
        EXPECT_NEAR(s.dMag_z, -400.0, 1e-9);
    }
}

// About a level axis that points east the whole field circles across y.
TEST(Turn, VerticalTurnDrawsACircleAcrossY)
{
    for (const PoseSensorData& s : TurnOf({.axis = TurnAxis::Vertical}).samples) {
        EXPECT_NEAR(std::hypot(s.dMag_x, s.dMag_z), 500.0, 1e-9);
        EXPECT_NEAR(s.dMag_y, 0.0, 1e-9);
    }
}

TEST(Turn, VerticalTurnOfOtherTypesIsAboutTheirYToo)
{
    const Recording turn =
        SimulateTurn({.type = 2}, kField, {.axis = TurnAxis::Vertical, .startHeading = 90.0}, 1);
    for (const PoseSensorData& s : turn.samples) {
        EXPECT_NEAR(std::hypot(s.dMag_x, s.dMag_z), 500.0, 1e-9);
        EXPECT_NEAR(s.dMag_y, 0.0, 1e-9);
    }
}

TEST(Turn, GyrosReadTheRateOfTheTurn)
{
    const TurnPlan plan{.samples = 401, .rate = 20.0, .extent = 400.0}; // 20 degrees/s
    for (const PoseSensorData& s : TurnOf(plan).samples) {
        EXPECT_NEAR(s.dGyro_z, -20.0, 1e-9); // clockwise from above, z points up
        EXPECT_NEAR(std::hypot(s.dGyro_x, s.dGyro_y), 0.0, 1e-9);
    }
    TurnPlan vertical = plan;
    vertical.axis = TurnAxis::Vertical;
    for (const PoseSensorData& s : TurnOf(vertical).samples)
        EXPECT_NEAR(s.dGyro_y, -20.0, 1e-9);
}

TEST(Turn, PitchAndRollFollowTheReadGravity)
{
    const Recording turn = TurnOf({.axis = TurnAxis::Vertical, .levelError = 3.0, .wobble = 1.0});
    for (const PoseSensorData& s : turn.samples) {
        EXPECT_NEAR(s.dPitch, std::asin(s.dAcc_x) / kRadian, 1e-5);
        EXPECT_NEAR(s.dRoll, std::atan2(s.dAcc_y, s.dAcc_z) / kRadian, 1e-5);
    }
}

TEST(Turn, NegativeExtentTurnsTheOtherWay)
{
    EXPECT_NEAR(TurnedBy(TurnOf({.extent = -300.0})).back(), -300.0, 1e-9);
}

TEST(Turn, StopHoldsThePoleForItsTime)
{
    const Recording turn =
        TurnOf({.samples = 401, .rate = 20.0, .extent = 360.0, .stops = {{90.0, 2.0}}});
    const std::vector<double> turned = TurnedBy(turn);
    const auto still =
        std::ranges::count_if(turned, [](double d) { return std::fabs(d - 90.0) < 1e-9; });
    EXPECT_NEAR(static_cast<double>(still), 2.0 * 20.0, 1.0);
    EXPECT_NEAR(turned.back(), 360.0, 1e-9);
    EXPECT_TRUE(std::ranges::is_sorted(turned));
}

TEST(Turn, TurningBackGoesBackOnceAndOnAgain)
{
    const Recording turn =
        TurnOf({.samples = 2001, .rate = 20.0, .extent = 360.0, .turningsBack = {{180.0, 30.0}}});
    const std::vector<double> turned = TurnedBy(turn);
    double back = 0.0;
    for (std::size_t i = 1; i < turned.size(); ++i)
        back += std::max(0.0, turned[i - 1] - turned[i]);
    EXPECT_NEAR(back, 30.0, 2.0 * 420.0 / 2000.0); // a sample's way at either end
    EXPECT_NEAR(turned.back(), 360.0, 1e-9);
}

TEST(Turn, UnevenTurnStaysMonotoneAndArrives)
{
    const std::vector<double> turned =
        TurnedBy(TurnOf({.samples = 1001, .extent = 360.0, .unevenness = 0.9}));
    double least = 1e9;
    double most = 0.0;
    for (std::size_t i = 1; i < turned.size(); ++i) {
        least = std::min(least, turned[i] - turned[i - 1]);
        most = std::max(most, turned[i] - turned[i - 1]);
    }
    EXPECT_NEAR(turned.back(), 360.0, 1e-9);
    EXPECT_NEAR(most / 0.36, 1.9, 0.01); // the mean step is 0.36 degrees
    EXPECT_NEAR(least / 0.36, 0.1, 0.01);
}

// Leaning in space the pole still turns about its own axis: z stays, pitch and roll swing.
TEST(Turn, LevelErrorLeansTheAxisInSpaceOnly)
{
    const Recording turn = TurnOf({.levelError = 4.0, .levelDirection = 30.0});
    double most = 0.0;
    for (const PoseSensorData& s : turn.samples) {
        EXPECT_NEAR(s.dMag_z, turn.samples.front().dMag_z, 1e-9);
        EXPECT_NEAR(std::acos(s.dAcc_z) / kRadian, 4.0, 1e-9);
        most = std::max(most, s.dPitch);
    }
    EXPECT_NEAR(most, 4.0, 0.01);
}

// Turned about another axis than its own z, the pole stands off it by the error and z swings:
// by twice 300 sin 4 around 400 cos 4.
TEST(Turn, AxisErrorTurnsAboutAnotherAxisOfThePole)
{
    const Recording turn = TurnOf({.samples = 721, .extent = 360.0, .axisError = 4.0});
    const auto [least, most] = std::ranges::minmax(turn.samples, {}, &PoseSensorData::dMag_z);
    EXPECT_NEAR(most.dMag_z - least.dMag_z, 2.0 * 300.0 * std::sin(4.0 * kRadian), 0.01);
    EXPECT_NEAR(most.dMag_z + least.dMag_z, -2.0 * 400.0 * std::cos(4.0 * kRadian), 0.01);
    for (const PoseSensorData& s : turn.samples)
        EXPECT_NEAR(std::acos(s.dAcc_z) / kRadian, 4.0, 1e-9);
}

// Two independent wobbles of 1 degree lean the pole by sqrt(2) degrees in the mean square.
TEST(Turn, WobbleHasItsStandardDeviation)
{
    double squares = 0.0;
    int count = 0;
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        for (const PoseSensorData& s : TurnOf({.wobble = 1.0}, seed).samples) {
            const double lean = std::acos(std::min(1.0, s.dAcc_z)) / kRadian;
            squares += lean * lean;
            ++count;
        }
    }
    EXPECT_NEAR(std::sqrt(squares / count), std::sqrt(2.0), 0.1);
}

TEST(Turn, LostSamplesLeaveTheOthersAsTheyWere)
{
    PoseSensor sensor;
    sensor.a.noise = 2.0;
    const Recording whole = SimulateTurn(sensor, kField, {}, 3);
    const Recording thinned = SimulateTurn(sensor, kField,
                                           {
                                               .losses = {.share = 0.2, .gaps = {{5.0, 7.0}}}
    },
                                           3);

    const double kept = static_cast<double>(thinned.samples.size()) / 460.0; // 40 lie in the gap
    EXPECT_NEAR(kept, 0.8, 4.0 * std::sqrt(0.8 * 0.2 / 460.0));
    std::size_t at = 0;
    for (std::size_t i = 0; i < thinned.samples.size(); ++i) {
        const double seconds = thinned.truth[i].seconds;
        EXPECT_FALSE(5.0 <= seconds && seconds < 7.0);
        while (whole.truth[at].seconds < seconds)
            ++at;
        EXPECT_EQ(thinned.samples[i].dMag_x, whole.samples[at].dMag_x);
    }
}

TEST(Turn, CrossesMidnight)
{
    const Recording turn = TurnOf({.samples = 401, .rate = 20.0, .startOfDay = 86390.0});
    EXPECT_EQ(turn.samples.front().nHour, 23);
    EXPECT_EQ(turn.samples[199].nSecond, 59);
    EXPECT_EQ(turn.samples[200].nHour, 0);
    EXPECT_EQ(turn.samples.back().nSecond, 10);
}

TEST(Turn, BothTurnsOfASeedHaveNoiseOfTheirOwn)
{
    PoseSensor sensor;
    sensor.a.noise = 2.0;
    const auto noise = [&sensor](TurnAxis axis) {
        const PoseSensorData noisy = SimulateTurn(sensor, kField, {.axis = axis}, 3).samples[0];
        return noisy.dMag_x - 300.0;
    };
    EXPECT_NE(noise(TurnAxis::Horizontal), noise(TurnAxis::Vertical));
    EXPECT_NE(noise(TurnAxis::Horizontal), 0.0);
}

TEST(Turn, ImpossiblePlansAreNamedAndGiveNothing)
{
    const TurnPlan plans[] = {
        {.samples = 1},
        {.samples = 10000001},
        {.unevenness = -0.1},
        {.rate = 0.0},
        {.rate = 1e-6},
        {.extent = 0.0},
        {.extent = 2e6},
        {.extent = std::nan("")},
        {.losses = {.share = 1.5}},
        {.unevenness = 1.0},
        {.stops = {{400.0, 1.0}}},
        {.stops = {{10.0, -1.0}}},
        {.stops = {{10.0, 30.0}}},
        {.turningsBack = {{-1.0, 5.0}}},
        {.turningsBack = {{10.0, -5.0}}},
    };
    for (const TurnPlan& plan : plans) {
        EXPECT_FALSE(ProblemOf(plan).empty());
        EXPECT_TRUE(TurnOf(plan).samples.empty()) << ProblemOf(plan);
    }
    EXPECT_EQ(ProblemOf(TurnPlan{}), "");
}

TEST(Turn, MayStopAtItsEnd)
{
    const Recording turn =
        TurnOf({.samples = 401, .rate = 20.0, .extent = 90.0, .stops = {{90.0, 2.0}}});
    const std::vector<double> turned = TurnedBy(turn);
    ASSERT_EQ(turned.size(), 401U);
    for (std::size_t i = 0; i < turned.size(); ++i)
        EXPECT_NEAR(turned[i], std::min(90.0, 90.0 * static_cast<double>(i) / 360.0), 1e-9) << i;
}

} // namespace
