// SPDX-License-Identifier: MIT
#include "field/job/Recompute.h"

#include "field/Geodesy.h"
#include "field/job/RecomputeOccupation.h"
#include "tests/field/job/StoredPoint.h"

#include <cmath>
#include <gtest/gtest.h>

namespace field::test {
namespace {

constexpr double kPi = 3.14159265358979323846;

double Apart(const Geodetic& a, const Geodetic& b)
{
    const xyhCoordinate step = Difference(a, b);
    return std::hypot(step.x, step.y, step.h);
}

TEST(Recompute, WithTheSameSetupGivesTheStoredPointAgain)
{
    const JobRecord stored = StoredPoint(PoleSetup(), 5);
    ASSERT_EQ(stored.error, "");
    const JobRecord again = Recomputed(stored.point, stored.epochs, PoleSetup(), 0.0);
    ASSERT_EQ(again.error, "");
    EXPECT_LT(Apart(again.point.tip, stored.point.tip), 1e-7);
    EXPECT_NEAR(again.point.sigma.nn, stored.point.sigma.nn, 1e-10);
    EXPECT_NEAR(again.point.sigma.hh, stored.point.sigma.hh, 1e-10);
    EXPECT_EQ(again.point.epochs, 5);
    EXPECT_EQ(again.point.utc, stored.point.utc);
    EXPECT_EQ(again.point.name, "P12");
    EXPECT_EQ(again.point.code, "KERB");
    EXPECT_EQ(again.point.gate, "store");
    EXPECT_EQ(again.point.replaces, 7);
}

// A pole that is shorter by 0.2 m ends 0.2 m further up its own axis.
TEST(Recompute, WithAnotherPoleMovesTheTipAlongThePole)
{
    const JobRecord stored = StoredPoint(PoleSetup(), 5);
    field::Setup setup = PoleSetup();
    setup.poleLength = 1.8;
    const JobRecord again = Recomputed(stored.point, stored.epochs, setup, 0.0);
    ASSERT_EQ(again.error, "");
    const double lean = stored.point.tilt * kPi / 180.0;
    const double azimuth = stored.point.azimuthTrue * kPi / 180.0;
    const xyhCoordinate step = Difference(stored.point.tip, again.point.tip);
    EXPECT_NEAR(step.h, 0.2 * std::cos(lean), 1e-6);
    EXPECT_NEAR(step.x, 0.2 * std::sin(lean) * std::cos(azimuth), 1e-6);
    EXPECT_NEAR(step.y, 0.2 * std::sin(lean) * std::sin(azimuth), 1e-6);
    EXPECT_GT(std::hypot(step.x, step.y), 0.02) << "or the pole does not lean";
}

// The poses lie 100 ms apart and the pole falls by 0.2 degrees a second: half a period later the mean
// pose has turned by 0.01 degrees, 0.37 mm of 2.1 m. The last epoch has no pose after it.
TEST(Recompute, WithAnotherDelayTakesThePoseOfAnotherMoment)
{
    const double rate = 0.2;
    const JobRecord stored = StoredPoint(PoleSetup(), 8, rate);
    const JobRecord again = Recomputed(stored.point, stored.epochs, PoleSetup(), -0.050);
    ASSERT_EQ(again.error, "");
    EXPECT_EQ(again.point.epochs, 7);
    EXPECT_EQ(again.point.leftOut, 1);
    EXPECT_FALSE(again.epochs[7].used);
    EXPECT_EQ(again.epochs[7].why, "no tip: there is no pose at its moment");

    // Seven epochs, at poses half a period after their own.
    std::vector<Report> expected = ReportsOf(PoleSetup(), 7, 0.0);
    const tiltpole::field::TipSolver solver(PoleSetup());
    for (Report& report : expected) {
        const Instant moment = report.epoch.moment + std::chrono::milliseconds{50};
        report.tip = solver.Solve(report.epoch, PoseAt(moment, rate), Year()).tip;
    }
    EXPECT_LT(Apart(again.point.tip, JobRecordOf(expected, JobTime{}).point.tip), 2e-6);
    const JobRecord own = StoredPoint(PoleSetup(), 7, rate);
    EXPECT_NEAR(Apart(again.point.tip, own.point.tip), 0.00037, 0.00002);
}

TEST(Recompute, OfARecomputedPointCountsDelaysFromItsOwnSetup)
{
    const JobRecord stored = StoredPoint(PoleSetup(), 8, 0.2);
    JobRecord later = Recomputed(stored.point, stored.epochs, PoleSetup(), -0.050);
    later.point.id = 8;
    const JobRecord back = Recomputed(later.point, later.epochs, PoleSetup(), 0.050);
    ASSERT_EQ(back.error, "");
    EXPECT_EQ(back.point.epochs, 7) << "all are at their own poses again";
    const JobRecord seven = StoredPoint(PoleSetup(), 7, 0.2);
    EXPECT_LT(Apart(back.point.tip, seven.point.tip), 2e-6);
    EXPECT_EQ(back.point.replaces, 8);
}

TEST(Recompute, LeavesEpochsOutThatWereLeftOut)
{
    JobRecord stored = StoredPoint(PoleSetup(), 5);
    stored.epochs[2].used = false;
    stored.epochs[2].why = "by hand";
    const JobRecord again = Recomputed(stored.point, stored.epochs, PoleSetup(), 0.0);
    EXPECT_EQ(again.point.epochs, 4);
    EXPECT_EQ(again.point.leftOut, 1);
    EXPECT_FALSE(again.epochs[2].used);
    EXPECT_EQ(again.epochs[2].why, "by hand");
}

TEST(Recompute, SaysWhereLinesAreUnreadable)
{
    JobRecord stored = StoredPoint(PoleSetup(), 2);
    stored.epochs[0].receiver[20] = 'x';
    stored.epochs[1].pose.clear();
    const JobRecord again = Recomputed(stored.point, stored.epochs, PoleSetup(), 0.0);
    EXPECT_EQ(again.error, "no epoch has a tip");
    EXPECT_EQ(again.epochs[0].why, "no tip: the receiver's lines are unreadable");
    EXPECT_EQ(again.epochs[1].why, "no tip: there is no pose at its moment");
    EXPECT_EQ(Recomputed(stored.point, {}, PoleSetup(), 0.0).error, "there is no epoch");
}

TEST(Recompute, SaysWhereNoPoleStandsLikeAPose)
{
    const JobRecord good = StoredPoint(PoleSetup(), 6);
    JobRecord stored = good;
    stored.epochs[0].pose =
        tiltpole::field::Framed("PTPS,1,100.000,95.0,5.0,40.0,0,0,0,0,0,0,0,0,0,0,0,0");
    const JobRecord again = Recomputed(stored.point, stored.epochs, PoleSetup(), 0.0);
    ASSERT_EQ(again.error, "");
    EXPECT_FALSE(again.epochs[0].used);
    EXPECT_EQ(again.epochs[0].why, "no tip: pitch and roll are those of no standing pole");
    EXPECT_LT(Apart(again.point.tip, good.point.tip), 1e-7);
}

TEST(Recompute, TakesAMomentBeyondAllTimeForNone)
{
    using tiltpole::field::InstantOf;
    EXPECT_EQ(InstantOf(1.5), std::chrono::milliseconds{1500});
    for (const double seconds : {1e9, -1e300, std::nan("")})
        EXPECT_EQ(InstantOf(seconds), Instant{}) << seconds;
}

} // namespace
} // namespace field::test
