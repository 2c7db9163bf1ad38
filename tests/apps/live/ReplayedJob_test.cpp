// SPDX-License-Identifier: MIT
//
// Points of a recording: the lines that the surveyor typed are in it, and store the same points again.
#include "field/job/JobStore.h"
#include "tests/apps/RunProgram.h"
#include "tests/apps/live/Recorded.h"
#include "tests/field/bridge/PlantedPole.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace apps::test;
using testing::HasSubstr;

field::Record Typed(double seconds, const std::string& line)
{
    return {live_pole::InstantOf(live_pole::kFirst + seconds), field::Channel::Keys, line};
}

// A planted pole that is led in and rocked until 10 s, and what was typed meanwhile.
struct Rocked
{
    explicit Rocked(std::vector<field::Record> typed)
    {
        live_pole::Options options;
        options.epoch = live_pole::AntennaErrors(1);
        auto records = live_pole::RecordsOf(live_pole::RockedTrack(), options);
        records.insert(records.end(), typed.begin(), typed.end());
        std::ranges::stable_sort(records, {}, &field::Record::at);
        folder.Write("day.tprec", RecordingOf(records));
    }
    Outcome Replay(const std::vector<std::string>& more) const
    {
        return RunProgram(Joined(
            Joined({"live", "--replay", folder.Path("day.tprec")}, PoleOptions(config)), more));
    }
    ScratchFolder folder;
    std::string config = ParameterFile(folder);
};

std::vector<field::JobPoint> PointsIn(const std::string& path)
{
    auto job = field::JobStore::Open(path, field::JobAccess::Read);
    EXPECT_TRUE(job) << job.error;
    return job ? *job->Points() : std::vector<field::JobPoint>{};
}

void ExpectSame(const field::JobPoint& a, const field::JobPoint& b)
{
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.code, b.code);
    EXPECT_EQ(a.utc, b.utc);
    EXPECT_EQ(a.tip.latitude, b.tip.latitude);
    EXPECT_EQ(a.tip.longitude, b.tip.longitude);
    EXPECT_EQ(a.tip.ellipsoidalHeight, b.tip.ellipsoidalHeight);
    EXPECT_EQ(a.sigma.nn, b.sigma.nn);
    EXPECT_EQ(a.epochs, b.epochs);
    EXPECT_EQ(a.byOccupation, b.byOccupation);
    EXPECT_EQ(a.gate, b.gate);
    EXPECT_EQ(a.voidReason, b.voidReason);
}

// Asked for ten times a second from 4 s on; the last one is taken back.
std::vector<field::Record> Asked()
{
    std::vector<field::Record> typed = {Typed(0.5, "store P0")};
    for (int i = 40; i < 98; ++i)
        typed.push_back(Typed(0.1 * i, "store P" + std::to_string(i) + " KERB corner"));
    typed.push_back(Typed(9.9, "undo"));
    return typed;
}

TEST(ReplayedJob, StoresTheOccupationOfAPoleThatMoves)
{
    const Rocked rocked(Asked());
    const std::string job = rocked.folder.Path("site.gpkg");
    const Outcome outcome = rocked.Replay({"--job", job});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("refused: ")) << "0.5 s do not do";
    EXPECT_THAT(outcome.err, HasSubstr(" is void; its row stays in the job"));
    EXPECT_THAT(outcome.err, HasSubstr("points     60 requests of the recording\n"));
    const auto points = PointsIn(job);
    const auto found = std::ranges::find(points, true, &field::JobPoint::byOccupation);
    ASSERT_NE(found, points.end()) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("stored " + found->name + ": by the occupation, "));
    EXPECT_EQ(found->code, "KERB");
    EXPECT_TRUE(points.back().voidReason);
    const xyhCoordinate off = field::Difference(live_pole::kTip, found->tip);
    EXPECT_LT(std::hypot(off.x, off.y), 0.020);

    const std::string second = rocked.folder.Path("again.gpkg");
    EXPECT_EQ(rocked.Replay({"--job", second}).exitCode, 0);
    const auto again = PointsIn(second);
    ASSERT_EQ(again.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        ExpectSame(points[i], again[i]);

    const Outcome recomputed =
        RunProgram({"job", "recompute", job, found->name, "--delay", "0.117"});
    EXPECT_EQ(recomputed.exitCode, 0) << recomputed.err;
    const field::JobPoint after = PointsIn(job).back();
    EXPECT_EQ(after.name, found->name + "~2");
    EXPECT_TRUE(after.byOccupation);
    const xyhCoordinate moved = field::Difference(found->tip, after.tip);
    EXPECT_LT(std::hypot(moved.x, moved.y, moved.h), 1e-6);
    EXPECT_NEAR(after.sigma.nn, found->sigma.nn, 1e-6 * found->sigma.nn);

    const Outcome wrong = RunProgram({"job", "recompute", job, found->name, "--pole", "1.8"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_THAT(wrong.err, HasSubstr(": its occupation: "));
}

TEST(ReplayedJob, IsNoPartOfAReplayThatAsksForNone)
{
    const Rocked rocked(Asked());
    const Outcome outcome = rocked.Replay({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, testing::Not(HasSubstr("stored")));
    const Outcome refused = rocked.Replay({"--control", rocked.folder.Path("socket")});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.err, HasSubstr("leave --control out"));
}

TEST(ReplayedJob, HoldsWhatWasStoredLive)
{
    const ScratchFolder folder;
    const std::string config = ParameterFile(folder);
    std::string pose;
    std::string nmea;
    for (const auto& record : live_pole::RecordsOf(live_pole::StandingTrack(2.2)))
        (record.channel == field::Channel::Pose ? pose : nmea) += record.bytes;
    folder.Write("pose.txt", pose);
    folder.Write("gnss.txt", nmea);
    int asked = 0;
    const auto typing = [&]() -> std::string {
        if (asked++ > 0) return {};
        std::this_thread::sleep_for(std::chrono::milliseconds(1700));
        return "store P1 KERB\n";
    };
    const std::string job = folder.Path("live.gpkg");
    const std::string recording = folder.Path("day.tprec");
    const Outcome live = RunProgram(
        Joined({"live", "--gnss", "file:" + folder.Path("gnss.txt") + "@30", "--pose",
                "file:" + folder.Path("pose.txt") + "@50", "--job", job, "--record", recording},
               PoleOptions(config)),
        typing);
    EXPECT_THAT(live.err, HasSubstr("stored P1: ")) << live.err;
    const std::string second = folder.Path("again.gpkg");
    const Outcome replay =
        RunProgram(Joined({"live", "--replay", recording, "--job", second}, PoleOptions(config)));
    EXPECT_THAT(replay.err, HasSubstr("stored P1: "));
    const auto points = PointsIn(job);
    const auto again = PointsIn(second);
    ASSERT_EQ(points.size(), 1U);
    ASSERT_EQ(again.size(), 1U);
    ExpectSame(points[0], again[0]);
}

TEST(ReplayedJob, CountsWhatWasAskedOfItsPointsOnly)
{
    const Rocked rocked(
        {Typed(1.0, "acknowledge base"), Typed(2.0, "store P0"), Typed(3.0, "undo")});
    const Outcome outcome = rocked.Replay({"--job", rocked.folder.Path("site.gpkg")});
    EXPECT_THAT(outcome.err, HasSubstr("points     2 requests of the recording\n"));
}

} // namespace
