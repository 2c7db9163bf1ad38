// SPDX-License-Identifier: MIT
//
// A tip that an occupation gave while the pole moved, stored and computed again.
#include "field/job/OccupationRecord.h"

#include "field/OccupationTrack.h"
#include "field/job/Recompute.h"
#include "tests/field/bridge/PlantedPole.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

using namespace live_pole;
using field::JobEpoch;
using field::JobRecord;
using field::OccupationTrack;

const field::JobTime kNow =
    std::chrono::sys_days{std::chrono::year{2026} / 11 / 22} + std::chrono::hours{13};

std::vector<Report> RockedReports(unsigned seed = 2, double headingError = 1.0)
{
    Options options;
    options.epoch = AntennaErrors(seed);
    return ReportsOf(TrackSetup(), RecordsOf(RockedTrack(headingError, seed), options));
}

JobRecord StoredRocked()
{
    static const std::optional<Report> report = ByOccupation(RockedReports());
    EXPECT_TRUE(report) << "no occupation that may be stored";
    return report ? field::OccupationRecordOf(*report, kNow) : JobRecord{};
}

double Apart(const field::Geodetic& a, const field::Geodetic& b)
{
    const xyhCoordinate step = field::Difference(a, b);
    return std::hypot(step.x, step.y, step.h);
}

int Used(const JobRecord& record)
{
    return static_cast<int>(std::ranges::count(record.epochs, true, &JobEpoch::used));
}

TEST(OccupationRecord, HoldsTheTipAndSigmaOfTheOccupation)
{
    const std::optional<Report> report = ByOccupation(RockedReports());
    ASSERT_TRUE(report);
    const JobRecord record = field::OccupationRecordOf(*report, kNow);
    ASSERT_EQ(record.error, "");
    const field::JobPoint& point = record.point;
    EXPECT_EQ(Apart(point.tip, *report->occupationTip), 0.0);
    EXPECT_GT(Apart(point.tip, report->tip->position), 0.001) << "the epoch's own tip is another";
    EXPECT_EQ(point.sigma.nn, report->occupation->covariance[0][0]);
    EXPECT_EQ(point.sigma.ne, report->occupation->covariance[0][1]);
    EXPECT_EQ(point.sigma.ee, report->occupation->covariance[1][1]);
    EXPECT_EQ(point.sigma.hh, report->occupation->covariance[2][2]);
    EXPECT_TRUE(point.byOccupation);
    EXPECT_FALSE(point.forced);
    EXPECT_EQ(point.gate.find("store: by an occupation of "), 0U) << point.gate;
    EXPECT_EQ(point.quality, field::Fix::Fixed);
    EXPECT_EQ(point.station, "0207");
}

TEST(OccupationRecord, CountsTheEpochsThatTheEstimateWasFormedOf)
{
    const std::optional<Report> report = ByOccupation(RockedReports());
    ASSERT_TRUE(report);
    const JobRecord record = field::OccupationRecordOf(*report, kNow);
    EXPECT_EQ(record.point.epochs, report->occupation->epochs);
    EXPECT_EQ(record.point.epochs, Used(record));
    EXPECT_EQ(record.point.leftOut, 2);
    EXPECT_FALSE(record.epochs[0].used);
    EXPECT_EQ(record.epochs[0].why, "the occupation begins with it");
    EXPECT_EQ(record.epochs[1].why, "there is no pose before or after it"); // 0.12 s late
    EXPECT_TRUE(record.epochs[0].pose.empty());
    EXPECT_EQ(std::ranges::count(record.epochs[5].pose, '\n'), 10) << "100 Hz over 0.1 s";
}

TEST(OccupationRecord, SaysWhichEpochsAreThinnedOut)
{
    Options options;
    options.epochRate = 20.0; // 200 epochs, more than are kept
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(RockedTrack(), options));
    const Report* last = nullptr;
    for (const Report& report : reports)
        if (report.occupationTrack) last = &report;
    ASSERT_TRUE(last);
    const JobRecord record = field::OccupationRecordOf(*last, kNow);
    ASSERT_GT(record.epochs.size(), 130U);
    EXPECT_EQ(record.point.epochs, last->occupation->epochs);
    EXPECT_EQ(record.point.epochs, Used(record));
    EXPECT_EQ(record.epochs[2].why, "one of 2 is kept of so many");
    const JobRecord again = field::Recomputed(record.point, record.epochs, TrackSetup(), 0.0);
    ASSERT_EQ(again.error, "");
    EXPECT_LT(Apart(again.point.tip, record.point.tip), 1e-6);
    EXPECT_EQ(again.point.epochs, record.point.epochs);
}

TEST(OccupationRecord, SaysWhichEpochsWereNotFixed)
{
    Options options;
    options.epoch = [](EpochFields& epoch) {
        if (std::fabs(epoch.seconds - 2.5) < 0.01) epoch.quality = 5;
    };
    const auto report = ByOccupation(ReportsOf(TrackSetup(), RecordsOf(RockedTrack(), options)));
    ASSERT_TRUE(report);
    const JobRecord record = field::OccupationRecordOf(*report, kNow);
    EXPECT_EQ(record.point.leftOut, 3);
    EXPECT_EQ(std::ranges::count(record.epochs, "quality 5", &JobEpoch::why), 1);
    EXPECT_EQ(record.point.epochs, report->occupation->epochs);
}

TEST(OccupationRecord, RefusesAReportWhoseOccupationIsNotSure)
{
    for (const Report& report : RockedReports()) {
        if (!report.occupation || report.occupationTrack) continue;
        const JobRecord record = field::OccupationRecordOf(report, kNow);
        EXPECT_EQ(record.error, OccupationText(*report.occupation));
        return;
    }
    FAIL() << "sure from the first estimate on";
}

TEST(OccupationRecord, RefusesAReportThatLacksAPartOfTheOccupation)
{
    const std::optional<Report> whole = ByOccupation(RockedReports());
    ASSERT_TRUE(whole);
    Report report = *whole;
    report.occupationTip.reset();
    EXPECT_EQ(field::OccupationRecordOf(report, kNow).error, OccupationText(*whole->occupation));
    report.occupation.reset();
    EXPECT_EQ(field::OccupationRecordOf(report, kNow).error,
              "there is no occupation, which needs gyros");
    report = *whole;
    report.occupation.reset();
    EXPECT_EQ(field::OccupationRecordOf(report, kNow).error,
              "there is no occupation, which needs gyros");
    report.occupationTrack.reset();
    EXPECT_EQ(field::OccupationRecordOf(report, kNow).error,
              "there is no occupation, which needs gyros");
}

// The same track, its poses changed.
Report WithPoses(const Report& given, const std::function<void(OccupationTrack::Piece&)>& change)
{
    auto track = std::make_shared<OccupationTrack>(*given.occupationTrack);
    for (auto& piece : track->pieces) {
        OccupationTrack::Piece changed = *piece;
        change(changed);
        piece = std::make_shared<OccupationTrack::Piece>(std::move(changed));
    }
    Report report = given;
    report.occupationTrack = track;
    return report;
}

TEST(OccupationRecord, NeedsPosesAroundItsEpochs)
{
    const std::optional<Report> whole = ByOccupation(RockedReports());
    ASSERT_TRUE(whole);
    const JobRecord none = field::OccupationRecordOf(
        WithPoses(*whole, [](OccupationTrack::Piece& piece) { piece.poses.clear(); }), kNow);
    EXPECT_EQ(none.error, "no epoch of the occupation lies between its poses");

    const auto& pieces = whole->occupationTrack->pieces;
    const std::size_t count = pieces.size();
    const Instant end = pieces[count - 6]->epoch.moment;
    const Instant last = pieces[count - 6]->poses.back().moment;
    const JobRecord shorter =
        field::OccupationRecordOf(WithPoses(*whole,
                                            [end](OccupationTrack::Piece& piece) {
                                                if (piece.epoch.moment > end) piece.poses.clear();
                                            }),
                                  kNow);
    ASSERT_EQ(shorter.error, "");
    for (std::size_t i = count - 6; i < count; ++i) {
        const bool late = pieces[i]->epoch.moment > last;
        EXPECT_EQ(shorter.epochs[i].used, !late) << i;
        EXPECT_EQ(shorter.epochs[i].why, late ? "there is no pose before or after it" : "") << i;
    }
    EXPECT_FALSE(shorter.epochs.back().used);
}

TEST(OccupationRecord, TellsOfEpochsThatTheEstimateDoubts)
{
    std::optional<Report> report = ByOccupation(RockedReports());
    ASSERT_TRUE(report);
    report->verdict.reasons.clear();
    report->occupation->seconds = 7.6;
    report->occupation->doubtful = 3;
    EXPECT_EQ(field::OccupationRecordOf(*report, kNow).point.gate,
              "store: by an occupation of 8 s, 3 epochs with less than half a vote");
    report->occupation->doubtful = 0;
    EXPECT_EQ(field::OccupationRecordOf(*report, kNow).point.gate,
              "store: by an occupation of 8 s");
}

// 1e-6 m: the poses are stored with seven decimals, their moments in microseconds.
TEST(OccupationRecord, IsRecomputedAsItWasStored)
{
    const JobRecord stored = StoredRocked();
    const JobRecord again = field::Recomputed(stored.point, stored.epochs, TrackSetup(), 0.0);
    ASSERT_EQ(again.error, "");
    EXPECT_LT(Apart(again.point.tip, stored.point.tip), 1e-6);
    EXPECT_NEAR(again.point.sigma.nn, stored.point.sigma.nn, 1e-6 * stored.point.sigma.nn);
    EXPECT_NEAR(again.point.sigma.ee, stored.point.sigma.ee, 1e-6 * stored.point.sigma.ee);
    EXPECT_NEAR(again.point.sigma.hh, stored.point.sigma.hh, 1e-6 * stored.point.sigma.hh);
    EXPECT_EQ(again.point.epochs, stored.point.epochs);
    EXPECT_EQ(again.point.utc, stored.point.utc);
    EXPECT_EQ(again.point.gate, stored.point.gate);
    EXPECT_TRUE(again.point.byOccupation);
}

// 5 mm more of the pole lie below the tip along its mean lean of about 20 degrees.
TEST(OccupationRecord, IsRecomputedWithAnotherPole)
{
    const JobRecord stored = StoredRocked();
    field::Setup setup = TrackSetup();
    setup.poleLength += 0.005;
    const JobRecord again = field::Recomputed(stored.point, stored.epochs, setup, 0.0);
    ASSERT_EQ(again.error, "");
    const xyhCoordinate step = field::Difference(stored.point.tip, again.point.tip);
    EXPECT_NEAR(step.h, -0.005, 0.001);
    EXPECT_LT(std::hypot(step.x, step.y), 0.004);
}

TEST(OccupationRecord, IsNotRecomputedWithAPoleThatTheTrackContradicts)
{
    const JobRecord stored = StoredRocked();
    field::Setup setup = TrackSetup();
    setup.poleLength = 1.8;
    const JobRecord again = field::Recomputed(stored.point, stored.epochs, setup, 0.0);
    EXPECT_EQ(again.error.find("its occupation: "), 0U) << again.error;
}

TEST(OccupationRecord, IsNotRecomputedFromLinesThatAreUnreadable)
{
    const JobRecord stored = StoredRocked();
    EXPECT_EQ(field::Recomputed(stored.point, {}, TrackSetup(), 0.0).error, "there is no epoch");
    JobRecord damaged = stored;
    damaged.epochs[5].receiver[20] = 'x';
    EXPECT_EQ(field::Recomputed(damaged.point, damaged.epochs, TrackSetup(), 0.0).error,
              "the receiver's lines of an epoch are unreadable");
}

TEST(OccupationRecord, IsRecomputedWithAnotherCalibration)
{
    const JobRecord stored = StoredRocked();
    field::Setup setup = TrackSetup();
    setup.calibration.sensor.SetMagneticBiasAngle_A(3.0);
    const JobRecord again = field::Recomputed(stored.point, stored.epochs, setup, 0.0);
    ASSERT_EQ(again.error, "");
    EXPECT_GT(Apart(again.point.tip, stored.point.tip), 1e-5);
    EXPECT_LT(Apart(again.point.tip, stored.point.tip), 0.02) << "a magnetometer is only a witness";
}

TEST(OccupationRecord, IsRecomputedWithAnotherDelay)
{
    const JobRecord stored = StoredRocked();
    const JobRecord again = field::Recomputed(stored.point, stored.epochs, TrackSetup(), 0.010);
    ASSERT_EQ(again.error, "");
    EXPECT_GT(Apart(again.point.tip, stored.point.tip), 1e-5);
    EXPECT_NEAR(again.epochs[3].seconds, stored.epochs[3].seconds - 0.010, 1e-9);
    const JobRecord back = field::Recomputed(again.point, again.epochs, TrackSetup(), -0.010);
    EXPECT_LT(Apart(back.point.tip, stored.point.tip), 1e-6);
}

// Half a squared axis of the 95 % ellipse is 5.991 / 2 of the variance.
TEST(OccupationRecord, LiesInItsEllipseAsOftenAsStated)
{
    int stored = 0;
    int inside = 0;
    for (unsigned seed = 1001; seed <= 1024; ++seed) {
        const double heading = 4.0 * std::sin(seed);
        const auto report = ByOccupation(RockedReports(seed, heading));
        if (!report) continue;
        ++stored;
        const JobRecord record = field::OccupationRecordOf(*report, kNow);
        const xyhCoordinate d = field::Difference(kTip, record.point.tip);
        const field::Covariance3& c = record.point.sigma;
        const double square = (c.ee * d.x * d.x - 2.0 * c.ne * d.x * d.y + c.nn * d.y * d.y)
                              / (c.nn * c.ee - c.ne * c.ne);
        inside += square <= 5.991 ? 1 : 0;
    }
    EXPECT_GE(stored, 12);
    EXPECT_GE(inside, stored - 2) << stored; // fewer in 4.3 % of such draws
}

} // namespace
