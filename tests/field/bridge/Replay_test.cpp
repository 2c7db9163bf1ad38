// SPDX-License-Identifier: MIT
//
// The recorded pole through the whole engine.
#include "field/North.h"
#include "tests/field/bridge/LivePole.h"

#include <gtest/gtest.h>

namespace {

using namespace live_pole;

struct PlanErrors
{
    std::vector<double> plan;
    std::size_t epochs = 0;
};

PlanErrors ErrorsWithDelay(double delay)
{
    field::Setup setup = ReplaySetup();
    setup.delay = delay - kLink;
    PlanErrors errors;
    for (const Report& report : ReportsOf(setup, RecordsOf(ReplayTrack()))) {
        if (report.epoch.utc.empty()) continue; // the recording pauses
        ++errors.epochs;
        if (report.tip) errors.plan.push_back(PlanError(report));
    }
    return errors;
}

TEST(Replay, FindsTheTipOfTheRecordedPole)
{
    const PlanErrors errors = ErrorsWithDelay(0.12);
    EXPECT_EQ(errors.epochs, 432U);
    EXPECT_GT(errors.plan.size(), 420U);
    EXPECT_LE(Percentile(errors.plan, 0.5), 0.010);
    EXPECT_LE(Percentile(errors.plan, 0.9), 0.038);
    RecordProperty("p50_mm", std::to_string(1000.0 * Percentile(errors.plan, 0.5)));
    RecordProperty("p90_mm", std::to_string(1000.0 * Percentile(errors.plan, 0.9)));
}

TEST(Replay, LosesAccuracyWithAWrongDelay)
{
    EXPECT_GT(Percentile(ErrorsWithDelay(0.0).plan, 0.5), 0.050);
}

TEST(Replay, WritesATipForEveryEpochAndNeverTheAntenna)
{
    const auto reports = ReportsOf(ReplaySetup(), RecordsOf(ReplayTrack()));
    for (const Report& report : reports) {
        if (report.epoch.utc.empty()) continue;
        EXPECT_FALSE(CarriesAntenna(report)) << report.nmea;
        EXPECT_EQ(FieldOf(LineOf(report, "GGA"), 1), report.epoch.utc);
        EXPECT_FALSE(LineOf(report, "GST").empty());
        if (!report.tip) continue;
        EXPECT_EQ(FieldOf(LineOf(report, "GGA"), 6), "4") << report.nmea;
        const field::Geodetic& tip = report.tip->position;
        EXPECT_EQ(FieldOf(LineOf(report, "GGA"), 2) + ",N",
                  AngleText(tip.latitude, 2, 7, 'N', 'S'));
    }
}

// The surveyor waves the pole: nothing may be stored.
TEST(Replay, StoresNothingOfAPoleThatIsWaved)
{
    std::size_t stored = 0;
    std::size_t blocked = 0;
    for (const Report& report : ReportsOf(ReplaySetup(), RecordsOf(ReplayTrack()))) {
        if (report.verdict.state == field::State::Store) ++stored;
        if (report.verdict.state == field::State::Block) ++blocked;
        const bool moves = report.tip && report.tip->antennaSpeed > 0.05;
        EXPECT_FALSE(moves && report.verdict.state == field::State::Store);
    }
    EXPECT_LT(stored, 40U);
    EXPECT_LT(blocked, 200U) << stored;
}

// GGA alone is an epoch once 60 ms have passed, whether something arrives or a key is pressed.
TEST(Replay, EndsTheEpochsBeforeAKey)
{
    EpochFields epoch;
    epoch.utc = kStart;
    epoch.antenna = kTip;
    epoch.gst = epoch.rmc = false;
    field::Bridge bridge(TrackSetup());
    field::Play(bridge, {InstantOf(1.0), field::Channel::Receiver, EpochText(epoch)});
    field::Play(bridge, {InstantOf(1.059), field::Channel::Keys, "undo"});
    EXPECT_EQ(bridge.Count().epochs, 0U);
    field::Play(bridge, {InstantOf(1.060), field::Channel::Keys, "undo"});
    EXPECT_EQ(bridge.Count().epochs, 1U);
}

TEST(Replay, StoresAPoleThatStands)
{
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(StandingTrack(5.0)));
    ASSERT_GT(reports.size(), 40U);
    for (const Report& report : reports) {
        if (SecondsOf(report) < 1.0) continue;
        ASSERT_TRUE(report.tip) << ReasonsOf(report);
        EXPECT_EQ(report.verdict.state, field::State::Store) << ReasonsOf(report);
        EXPECT_LT(PlanError(report), 0.004);
        EXPECT_LT(report.tip->antennaSpeed, 0.02);
    }
}

// The model has D = 5.8 degrees there (tests of the model: North_test); the sensor reads magnetic north.
TEST(Replay, TurnsAMagneticHeadingToTrueNorthByTheModel)
{
    const double declination = field::MagneticFieldAt(kTip, 2026.89).declination;
    EXPECT_GT(declination, 4.0);
    field::Setup setup = TrackSetup();
    setup.north = field::NorthSource::Model;
    setup.calibration.field = field::FieldShape{500.0, 64.0};
    Track track = StandingTrack(3.0);
    const Track magnetic = StandingTrack(3.0, 6.0, -4.0, 40.0 - declination);
    for (std::size_t i = 0; i < track.size(); ++i)
        track[i].readings = magnetic[i].readings;

    const auto reports = ReportsOf(setup, RecordsOf(track));
    ASSERT_TRUE(reports.back().tip) << ReasonsOf(reports.back());
    EXPECT_LT(PlanError(reports.back()), 0.004);
    EXPECT_NEAR(reports.back().tip->declination, declination, 0.01);
    EXPECT_EQ(reports.back().verdict.state, field::State::Store) << ReasonsOf(reports.back());
}

} // namespace
