// SPDX-License-Identifier: MIT
#include "simulation/Walk.h"

#include "survey/Angle.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Rad2Deg;

constexpr double kSurveyRoundOff = 3e-9; // meters, of northings of 4 500 000 m

double Distance(const Point3& p, const Point3& q)
{
    return std::hypot(p.x - q.x, p.y - q.y, p.z - q.z);
}

Walk WalkOf(const WalkPlan& plan, const PoseSensor& sensor = {})
{
    return SimulateWalk(sensor, {}, plan, 4);
}

TEST(Walk, StandsStillOnEveryPointForItsTime)
{
    const Walk walk = WalkOf({.points = 3, .rate = 10.0, .dwell = 6.0, .travel = 4.0});
    ASSERT_EQ(walk.samples.size(), 260U);
    ASSERT_EQ(walk.tips.size(), 3U);
    int counts[4] = {};
    for (const WalkTruth& truth : walk.truth) {
        ++counts[truth.point];
        if (truth.point > 0) {
            const Point3& tip = walk.tips[static_cast<std::size_t>(truth.point - 1)];
            EXPECT_EQ(Distance(truth.tip, tip), 0.0);
        }
    }
    EXPECT_EQ(counts[0], 80);
    for (const int point : {1, 2, 3})
        EXPECT_EQ(counts[point], 60);
}

TEST(Walk, NeighboringPointsLieOneSpacingApart)
{
    const Walk walk = WalkOf({.points = 6, .spacing = 12.0});
    EXPECT_EQ(Distance(walk.tips[0], WalkPlan{}.start), 0.0);
    for (std::size_t i = 1; i < walk.tips.size(); ++i) {
        const Point3 step = walk.tips[i] - walk.tips[i - 1];
        EXPECT_NEAR(std::hypot(step.x, step.y), 12.0, kSurveyRoundOff);
    }
}

TEST(Walk, TheTipIsCarriedWithoutJumps)
{
    const Walk walk = WalkOf({});
    for (std::size_t i = 1; i < walk.truth.size(); ++i)
        EXPECT_LT(Distance(walk.truth[i].tip, walk.truth[i - 1].tip), 0.5); // 5 m in 4 s
}

TEST(Walk, LeanStaysInItsRangeOnThePoints)
{
    const Walk walk = WalkOf({.points = 40, .leastLean = 10.0, .mostLean = 20.0, .tremor = 0.0});
    double least = 90.0;
    double most = 0.0;
    for (const WalkTruth& truth : walk.truth) {
        if (truth.point == 0) continue;
        const double lean = Rad2Deg(std::acos(-RigidStep(truth.pose.angles).z));
        least = std::min(least, lean);
        most = std::max(most, lean);
    }
    EXPECT_GE(least, 10.0 - 1e-9);
    EXPECT_LE(most, 20.0 + 1e-9);
    EXPECT_GT(most - least, 5.0);
}

TEST(Walk, PoleIsAsLongAsPlanned)
{
    for (const PoleGeometry geometry : {PoleGeometry::Rigid, PoleGeometry::ByFormula}) {
        const Walk walk = WalkOf({.poleLength = 1.8, .geometry = geometry});
        for (const WalkTruth& truth : walk.truth)
            EXPECT_NEAR(Distance(truth.antenna, truth.tip), 1.8, kSurveyRoundOff);
    }
}

// The body's down axis after roll about the forward axis, then pitch, then heading, multiplied out.
TEST(Walk, TheAntennaStandsOnTheBodysAxisUnlessPlacedByFormula)
{
    const auto farthest = [](const WalkPlan& plan) {
        double most = 0.0;
        for (const WalkTruth& truth : WalkOf(plan).truth) {
            const auto [heading, pitch, roll] = truth.pose.angles;
            const double h = Deg2Rad(heading), p = Deg2Rad(pitch), r = Deg2Rad(roll);
            const double forward = std::sin(p) * std::cos(r);
            const double rightward = -std::sin(r);
            const Point3 expected{
                truth.tip.x - 2.0 * (forward * std::cos(h) - rightward * std::sin(h)),
                truth.tip.y - 2.0 * (forward * std::sin(h) + rightward * std::cos(h)),
                truth.tip.z + 2.0 * std::cos(p) * std::cos(r)};
            most = std::max(most, Distance(truth.antenna, expected));
        }
        return most;
    };
    EXPECT_LT(farthest({}), kSurveyRoundOff);
    EXPECT_GT(farthest({.geometry = PoleGeometry::ByFormula}), 0.005);
}

TEST(Walk, AntennaNoiseIsTheDifferenceToTheTruth)
{
    const AntennaNoise silent{0.0, 0.0, 0.0, 0.0, 30.0};
    for (const Walk walk = WalkOf({.noise = silent}); const Point3& antenna : walk.antenna)
        EXPECT_EQ(
            Distance(antenna,
                     walk.truth[static_cast<std::size_t>(&antenna - walk.antenna.data())].antenna),
            0.0);

    const Walk noisy = WalkOf({
        .points = 100, .noise = {0.002, 0.004, 0.0, 0.0, 30.0}
    });
    double squares = 0.0;
    for (std::size_t i = 0; i < noisy.antenna.size(); ++i) {
        const double error = noisy.antenna[i].z - noisy.truth[i].antenna.z;
        squares += error * error;
    }
    const double count = static_cast<double>(noisy.antenna.size());
    EXPECT_NEAR(std::sqrt(squares / count) / 0.004, 1.0, 4.0 / std::sqrt(2.0 * count));
}

// At rest the accelerometers read gravity; under way the sensor's motion is added.
TEST(Walk, AccelerationsShowTheWayBetweenThePoints)
{
    const Walk walk = WalkOf({.tremor = 0.0});
    double most = 0.0;
    int last = 1;
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        const PoseSensorData& s = walk.samples[i];
        const double surplus = std::fabs(std::hypot(s.dAcc_x, s.dAcc_y, s.dAcc_z) - 1.0);
        const bool resting = walk.truth[i].point > 0 && last > 0
                             && (i + 1 == walk.truth.size() || walk.truth[i + 1].point > 0);
        if (resting) {
            EXPECT_LT(surplus, 1e-9);
        }
        most = std::max(most, surplus);
        last = walk.truth[i].point;
    }
    EXPECT_GT(most, 0.01);
}

TEST(Walk, ImpossiblePlansAreNamedAndGiveNothing)
{
    const WalkPlan plans[] = {
        {.points = 0      },
        {.leastLean = -1.0},
        {.rate = 0.0      },
        {.dwell = 0.0     },
        {.travel = 0.0    },
        {.poleLength = 0.0},
        {.leastLean = 20.0, .mostLean = 10.0},
        {.mostLean = 45.0                },
        {.rate = 1e9},
        {.travel = 1e6                },
        {.losses = {.share = -0.1}},
    };
    for (const WalkPlan& plan : plans) {
        EXPECT_FALSE(ProblemOf(plan).empty());
        EXPECT_TRUE(WalkOf(plan).samples.empty()) << ProblemOf(plan);
    }
    EXPECT_EQ(ProblemOf(WalkPlan{}), "");
}

TEST(Walk, LeavesOutTheSamplesThatAreLost)
{
    const WalkPlan whole{.points = 3, .rate = 10.0, .dwell = 6.0, .travel = 4.0};
    WalkPlan lossy = whole;
    lossy.losses.gaps = {
        {3.0, 5.0}
    };
    const Walk all = WalkOf(whole);
    const Walk left = WalkOf(lossy);
    EXPECT_EQ(left.samples.size() + 20, all.samples.size());
    ASSERT_EQ(left.antenna.size(), left.samples.size());
    for (std::size_t i = 0; i < left.antenna.size(); ++i)
        EXPECT_EQ(Distance(left.antenna[i], all.antenna[i < 30 ? i : i + 20]), 0.0) << i;
}

} // namespace
