// SPDX-License-Identifier: MIT
#include "apps/cli/live/PointKeeper.h"

#include "apps/tables/Errors.h"
#include "field/OccupationTrack.h"
#include "tests/apps/ScratchFile.h"
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using apps::test::ScratchFolder;
using field::Reason;
using field::Report;
using field::State;
using testing::HasSubstr;
using testing::StartsWith;
using Code = Reason::Code;

// An epoch of a pole that is still, `north` degrees off.
Report Epoch(State state = State::Store, double north = 0.0)
{
    Report report;
    report.epoch.utc = "130758.00";
    report.epoch.date = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22);
    report.epoch.antenna = {47.5 + north, 19.0, 232.0};
    report.epoch.sigma = {6.4e-5, 0.0, 6.4e-5, 0.0, 0.0, 2e-4};
    report.epoch.fix = field::Fix::Fixed;
    report.epoch.lines = "$GNGGA\r\n";
    report.verdict.state = state;
    if (state != State::Store)
        report.verdict.reasons = {
            {Code::Moving, "antenna moves 0.31 m/s (limit 0.05)"}
        };
    field::Tip tip;
    tip.epoch = report.epoch;
    tip.position = {47.5 + north, 19.0, 230.0};
    tip.sigma = {1e-4, 0.0, 1e-4, 0.0, 0.0, 2e-4};
    tip.tilt = 5.0;
    report.tip = tip;
    return report;
}

struct Kept
{
    cli::PointKeeper Open() const
    {
        return {folder.Path("job.gpkg"), field::Setup{}, "tiltpole test"};
    }
    std::vector<field::JobPoint> Points() const
    {
        auto job = field::JobStore::Open(folder.Path("job.gpkg"), field::JobAccess::Read);
        EXPECT_TRUE(job) << job.error;
        auto points = job ? job->Points() : field::JobResult<std::vector<field::JobPoint>>{};
        return points ? *points : std::vector<field::JobPoint>{};
    }
    ScratchFolder folder;
};

std::string Do(cli::PointKeeper& keeper, const char* request)
{
    return keeper.Do(request, [] {});
}

// An epoch of a pole that moves about the tip 1e-5 degrees further north.
Report OccupiedEpoch()
{
    Report report = Epoch();
    report.epoch.moment = std::chrono::seconds(2);
    field::PoseSample early;
    early.moment = std::chrono::seconds(1);
    field::PoseSample late;
    late.moment = std::chrono::seconds(3);
    field::OccupationTrack track;
    track.pieces.push_back(std::make_shared<field::OccupationTrack::Piece>(
        field::OccupationTrack::Piece{{}, false, report.epoch, "the occupation begins with it"}));
    track.pieces.push_back(
        std::make_shared<field::OccupationTrack::Piece>(field::OccupationTrack::Piece{
            {early, late},
            false, report.epoch, ""
    }));
    field::OccupationEstimate estimate;
    estimate.advice = field::OccupationAdvice::Store;
    estimate.hasTip = true;
    estimate.covariance[0][0] = estimate.covariance[1][1] = 25e-6;
    estimate.covariance[2][2] = 144e-6;
    report.occupation = estimate;
    report.occupationTip = field::Geodetic{47.50001, 19.0, 230.0};
    report.occupationTrack = std::make_shared<field::OccupationTrack>(track);
    report.byOccupation = true;
    return report;
}

TEST(PointKeeper, StoresTheTipOfTheOccupationWhileThePoleMoves)
{
    const Kept kept;
    auto keeper = kept.Open();
    keeper.Add(Epoch());
    keeper.Add(OccupiedEpoch());
    EXPECT_EQ(Do(keeper, "store P1"),
              "stored P1: by the occupation, 1 epochs, 1 left out, sd 5 5 12 mm (N E h)");
    const auto points = kept.Points();
    ASSERT_EQ(points.size(), 1U);
    EXPECT_EQ(points[0].tip.latitude, 47.50001);
    EXPECT_TRUE(points[0].byOccupation);
    EXPECT_FALSE(points[0].forced);
}

TEST(PointKeeper, AveragesNoEpochOfAPoleThatOnlyItsOccupationAllowsToStore)
{
    const Kept kept;
    auto keeper = kept.Open();
    keeper.Add(Epoch());
    keeper.Add(OccupiedEpoch());
    keeper.Add(Epoch());
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("stored P1: 1 epochs"));
    EXPECT_FALSE(kept.Points().at(0).byOccupation);
}

TEST(PointKeeper, StoresTheLastEpochsUnderANameWithCodeAndNote)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    for (int i = 0; i < 12; ++i)
        keeper.Add(Epoch());
    EXPECT_THAT(Do(keeper, "store P1 KERB corner of the yard"), StartsWith("stored P1: 10 epochs"));
    const auto points = kept.Points();
    ASSERT_EQ(points.size(), 1U);
    EXPECT_EQ(points[0].name, "P1");
    EXPECT_EQ(points[0].code, "KERB");
    EXPECT_EQ(points[0].note, "corner of the yard");
    EXPECT_EQ(points[0].epochs, 10);
    EXPECT_NEAR(points[0].tip.latitude, 47.5, 1e-9);
    EXPECT_FALSE(points[0].forced);
}

TEST(PointKeeper, AveragesOnlyEpochsSinceThePoleIsStill)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    keeper.Add(Epoch(State::Store, 1e-4));
    keeper.Add(Epoch(State::Wait, 1e-5));
    for (int i = 0; i < 3; ++i)
        keeper.Add(Epoch());
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("stored P1: 3 epochs"));
    EXPECT_NEAR(kept.Points().at(0).tip.latitude, 47.5, 1e-9);
}

TEST(PointKeeper, RefusesWithTheReasonOfTheGateUnlessItIsForced)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    EXPECT_EQ(Do(keeper, "store P1"), "refused: there is no epoch yet");
    for (int i = 0; i < 3; ++i)
        keeper.Add(Epoch());
    keeper.Add(Epoch(State::Wait));
    EXPECT_EQ(Do(keeper, "store P1"), "refused: antenna moves 0.31 m/s (limit 0.05)");
    EXPECT_TRUE(kept.Points().empty());
    EXPECT_THAT(Do(keeper, "store! P1"), HasSubstr("FORCED"));
    const auto points = kept.Points();
    ASSERT_EQ(points.size(), 1U);
    EXPECT_TRUE(points[0].forced);
    EXPECT_EQ(points[0].epochs, 1);
}

TEST(PointKeeper, StoresNoPointWithoutATipEvenWhenForced)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    Report blocked = Epoch(State::Block);
    blocked.tip.reset();
    blocked.verdict.reasons = {
        {Code::NoPose, "no pose for 2.0 s"}
    };
    keeper.Add(blocked);
    EXPECT_EQ(Do(keeper, "store! P1"), "refused: no pose for 2.0 s");
    EXPECT_TRUE(kept.Points().empty());
}

TEST(PointKeeper, RefusesANameThatIsTaken)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    keeper.Add(Epoch());
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("stored P1"));
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("refused: "));
    EXPECT_EQ(kept.Points().size(), 1U);
}

TEST(PointKeeper, VoidsTheLastPointsOneAfterTheOther)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    keeper.Add(Epoch());
    Do(keeper, "store P1");
    Do(keeper, "store P2");
    EXPECT_EQ(Do(keeper, "undo"), "P2 is void; its row stays in the job");
    EXPECT_EQ(Do(keeper, "undo"), "P1 is void; its row stays in the job");
    EXPECT_EQ(Do(keeper, "undo"), "refused: no point was stored in this run");
    for (const field::JobPoint& point : kept.Points())
        EXPECT_TRUE(point.voidReason) << point.name;
}

TEST(PointKeeper, AcknowledgesAndRefusesWhatItDoesNotKnow)
{
    cli::PointKeeper keeper("", field::Setup{}, "tiltpole test");
    int acknowledged = 0;
    keeper.Do("ack", [&] { ++acknowledged; });
    EXPECT_EQ(acknowledged, 1);
    EXPECT_THAT(Do(keeper, "delete P1"), StartsWith("refused: 'delete' is not"));
    EXPECT_THAT(Do(keeper, "store"), StartsWith("refused: a point needs a name"));
    EXPECT_THAT(Do(keeper, "store P1"), HasSubstr("--job FILE"));
    EXPECT_EQ(Do(keeper, "undo"), "refused: no point was stored in this run");
}

TEST(PointKeeper, OpensNoOtherFileAsAJob)
{
    const Kept kept;
    kept.folder.Write("job.gpkg", "notes of the day\n");
    EXPECT_THROW(kept.Open(), tables::InputError);
    EXPECT_EQ(kept.folder.Read("job.gpkg"), "notes of the day\n");
}

TEST(PointKeeper, AveragesNoEpochWithoutATip)
{
    const Kept kept;
    auto keeper = kept.Open();
    Report without = Epoch();
    without.tip.reset();
    keeper.Add(Epoch());
    keeper.Add(without);
    keeper.Add(Epoch());
    keeper.Add(Epoch());
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("stored P1: 2 epochs"));
}

TEST(PointKeeper, RefusesAnOccupationWithoutAnEpochBetweenItsPoses)
{
    const Kept kept;
    auto keeper = kept.Open();
    Report report = OccupiedEpoch(); // an epoch of 2 s, poses from 1 s to 3 s
    field::OccupationTrack track = *report.occupationTrack;
    auto piece = *track.pieces.back();
    piece.poses.back().moment = std::chrono::milliseconds(1500);
    track.pieces.back() = std::make_shared<field::OccupationTrack::Piece>(piece);
    report.occupationTrack = std::make_shared<field::OccupationTrack>(track);
    keeper.Add(report);
    EXPECT_EQ(Do(keeper, "store P1"), "refused: no epoch of the occupation lies between its poses");
    EXPECT_TRUE(kept.Points().empty());
}

// A disk without room, while it lasts.
class FullDisk
{
public:
    FullDisk() : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit none{0, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

TEST(PointKeeper, StoresAndVoidsAllTheSameOnceTheDiskHasRoomAgain)
{
    const Kept kept;
    cli::PointKeeper keeper = kept.Open();
    keeper.Add(Epoch());
    const auto whileFull = [&](const char* request) {
        const FullDisk full;
        return Do(keeper, request);
    };
    EXPECT_THAT(whileFull("store P1"), StartsWith("refused: "));
    EXPECT_TRUE(kept.Points().empty());
    EXPECT_THAT(Do(keeper, "store P1"), StartsWith("stored P1: 1 epochs"));
    EXPECT_THAT(whileFull("undo"), StartsWith("refused: "));
    ASSERT_EQ(kept.Points().size(), 1U);
    EXPECT_FALSE(kept.Points()[0].voidReason);
    EXPECT_EQ(Do(keeper, "undo"), "P1 is void; its row stays in the job");
    EXPECT_TRUE(kept.Points()[0].voidReason);
}

} // namespace
