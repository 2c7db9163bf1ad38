// SPDX-License-Identifier: MIT
//
// A planted pole that moves, through the whole engine: the occupation's tip may be stored while the
// antenna moves.
#include "field/OccupationTrack.h"
#include "field/pose/PoseReader.h"
#include "tests/field/bridge/PlantedPole.h"

#include <gtest/gtest.h>

namespace {

using namespace live_pole;
using field::OccupationAdvice;
using field::State;

double OccupationError(const Report& report)
{
    const xyhCoordinate d = field::Difference(kTip, *report.occupationTip);
    return std::hypot(d.x, d.y);
}

TEST(LiveOccupation, FindsTheTipThatASingleEpochMisses)
{
    const auto reports = ReportsOf(TrackSetup(), RecordsOf(LeanInTrack(8.0, 6.0)));
    const Report& last = reports.back();
    ASSERT_TRUE(last.tip && last.occupation && last.occupationTip) << ReasonsOf(last);
    EXPECT_GT(PlanError(last), 0.050) << "heading off by 6 degrees";
    EXPECT_LT(OccupationError(last), 0.020);
    EXPECT_EQ(last.occupation->advice, OccupationAdvice::Store) << OccupationText(*last.occupation);
    EXPECT_EQ(last.verdict.state, State::Store) << ReasonsOf(last);
}

TEST(LiveOccupation, MayBeStoredWhileTheAntennaMoves)
{
    std::size_t stored = 0;
    for (const Report& report : ReportsOf(TrackSetup(), RecordsOf(RockedTrack()))) {
        if (!report.tip || report.verdict.state != State::Store) continue;
        if (report.tip->antennaSpeed < 0.05) continue;
        ++stored;
        ASSERT_TRUE(report.occupationTip);
        EXPECT_EQ(report.occupation->advice, OccupationAdvice::Store);
        EXPECT_FALSE(Has(report, field::Reason::Code::Moving));
        EXPECT_TRUE(report.byOccupation);
        EXPECT_NE(FieldOf(LineOf(report, "$PTLTS"), 3), "STORE") << report.nmea;
    }
    EXPECT_GT(stored, 0U);
}

TEST(LiveOccupation, BeginsAnewAtAnotherTip)
{
    Track track = LeanInTrack(12.0, 1.0);
    for (TrackRow& row : track) {
        if (row.seconds > 6.0) row.antenna.x += 2.0; // carried on at once, as the gaits of a walk
    }
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.speed = 30.0; };
    for (const Report& report : ReportsOf(TrackSetup(), RecordsOf(track, options))) {
        const double t = SecondsOf(report);
        if (t > 6.05 && t < 7.9) {
            EXPECT_FALSE(report.occupation) << t;
        }
    }
}

// An estimate lets go of the track of the one before it.
TEST(LiveOccupation, IsEstimatedAfterTheSentencesWereHandedOut)
{
    field::Bridge bridge(TrackSetup());
    std::weak_ptr<const field::OccupationTrack> before;
    bool wasThere = false; // when sentences were handed out last
    std::string sent;
    std::string reported;
    bridge.OnSentences([&](const std::string& sentences) {
        sent += sentences;
        wasThere = !before.expired();
    });
    int renewed = 0;
    for (const Record& record : RecordsOf(LeanInTrack(8.0, 1.0))) {
        const bool hadTrack = !before.expired();
        field::Play(bridge, record);
        auto reports = bridge.Take();
        if (hadTrack && before.expired()) {
            ++renewed;
            EXPECT_TRUE(wasThere);
        }
        for (const Report& report : reports) {
            reported += report.nmea;
            before = report.occupationTrack;
        }
    }
    EXPECT_GT(renewed, 3);
    EXPECT_GT(reported.size(), 5000U);
    EXPECT_EQ(sent, reported);
}

TEST(LiveOccupation, FreesWhatItKeptOfAnEndedOnePieceByPiece)
{
    Track track = LeanInTrack(8.0, 1.0);
    for (TrackRow& row : track)
        if (row.seconds > 6.0) row.antenna.x += 2.0;
    Options options;
    options.epoch = [](EpochFields& epoch) { epoch.speed = 30.0; };
    field::Bridge bridge(TrackSetup());
    std::vector<std::weak_ptr<const field::OccupationTrack::Piece>> kept;
    const auto freed = [&] {
        return std::ranges::count_if(kept, [](const auto& piece) { return piece.expired(); });
    };
    for (const Record& record : RecordsOf(track, options)) {
        const auto before = freed();
        field::Play(bridge, record);
        EXPECT_LE(freed() - before, 2);
        for (const Report& report : bridge.Take())
            if (report.occupationTrack)
                kept.assign(report.occupationTrack->pieces.begin(),
                            report.occupationTrack->pieces.end());
    }
    EXPECT_GT(kept.size(), 30U);
    EXPECT_EQ(freed(), static_cast<long>(kept.size()));
}

TEST(LiveOccupation, NeedsGyros)
{
    for (const Report& report : ReportsOf(TrackSetup(), RecordsOf(StandingTrack(5.0))))
        EXPECT_FALSE(report.occupation);
}

// The limits of the gate hold for the occupation's own sigmas, and for what a moving epoch cannot
// know its own do not.
TEST(LiveOccupation, IsHeldAgainstTheLimitsOfSigmas)
{
    field::Setup setup = TrackSetup();
    setup.limits.planSigma = 0.001;
    setup.limits.heightSigma = 0.001;
    int held = 0;
    for (const Report& report : ReportsOf(setup, RecordsOf(RockedTrack()))) {
        EXPECT_FALSE(report.byOccupation);
        if (!report.occupationTrack) continue;
        ++held;
        const auto covariance = report.occupation->covariance;
        const double plan = std::sqrt(std::max(covariance[0][0], covariance[1][1]));
        ASSERT_GE(report.verdict.reasons.size(), 2U);
        EXPECT_EQ(report.verdict.reasons[0].code, field::Reason::Code::PlanSigma);
        EXPECT_EQ(report.verdict.reasons[0].text,
                  "plan sd " + std::to_string(std::lround(1000.0 * plan)) + " mm (limit 1)");
        EXPECT_EQ(report.verdict.reasons[1].code, field::Reason::Code::HeightSigma);
        EXPECT_EQ(report.verdict.state, field::State::Block);
    }
    EXPECT_GT(held, 0);
}

TEST(LiveOccupation, NeedsNoTimeOfASingleEpoch)
{
    field::Setup setup = TrackSetup();
    setup.limits.timeSigma = 0.001;
    int moving = 0;
    int stored = 0;
    for (const Report& report : ReportsOf(setup, RecordsOf(RockedTrack()))) {
        moving += Has(report, field::Reason::Code::TimeSigma) ? 1 : 0;
        if (!report.occupationTrack) continue;
        stored += report.byOccupation ? 1 : 0;
        EXPECT_FALSE(Has(report, field::Reason::Code::TimeSigma));
    }
    EXPECT_GT(moving, 0);
    EXPECT_GT(stored, 0);
}

TEST(LiveOccupation, NotesThatASensorHasOneMagnetometer)
{
    field::Setup setup = TrackSetup();
    setup.poseFormat = field::PoseFormat::SerialFrames;
    field::Bridge bridge(setup);
    const auto reader = field::MakePoseReader(field::PoseFormat::Ptps);
    for (const Record& record : RecordsOf(StandingTrack(3.0))) {
        if (record.channel == field::Channel::Receiver) {
            bridge.FeedReceiver(record.bytes, record.at);
            continue;
        }
        reader->Feed(record.bytes, record.at);
        for (const field::PoseSample& sample : reader->Take())
            bridge.FeedPose(sample);
    }
    const auto reports = bridge.Take();
    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(Has(reports.back(), field::Reason::Code::OneMagnetometer));
    EXPECT_EQ(reports.back().verdict.state, field::State::Store) << ReasonsOf(reports.back());
}

} // namespace
