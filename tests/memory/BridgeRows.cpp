// SPDX-License-Identifier: MIT
//
// The engine of the live pole. A call that ran out of memory has made no report, and the host goes on
// with what arrives next: what it then stores is what it would have stored, or the tip itself.
#include "field/Recording.h"
#include "field/job/OccupationRecord.h"
#include "field/job/Recompute.h"
#include "tests/field/bridge/PlantedPole.h"
#include "tests/memory/Rows.h"

#include <map>
#include <set>

namespace sweep {

namespace {

using namespace live_pole;
using namespace std::chrono_literals;

const std::vector<Record>& StandingRecords()
{
    static const std::vector<Record> records = RecordsOf(StandingTrack(4.0));
    return records;
}

std::string Describe(const Report& report)
{
    std::string text = report.nmea + ReasonsOf(report);
    if (report.tip) text += Text(report.tip->position.latitude) + Text(report.tip->sigma.nn);
    return text + std::to_string(static_cast<int>(report.verdict.state)) + ';';
}

// A bridge before the record of an epoch, which completes the report of the one before.
struct Live
{
    Live()
    {
        const std::vector<Record>& all = StandingRecords();
        next = all.size() / 2;
        while (all[next].channel != field::Channel::Receiver)
            ++next;
        for (std::size_t i = 0; i < next; ++i)
            field::Play(bridge, all[i]);
        bridge.Take();
    }
    const Record& Next() const { return StandingRecords()[next]; }

    mutable field::Bridge bridge{TrackSetup()};
    std::size_t next = 0;
    mutable std::string log; // of the reports so far
    int n = 0;
};

std::string DescribeLive(const Live& l)
{
    for (const Report& report : l.bridge.Take())
        l.log += Describe(report);
    return l.log + std::to_string(l.n);
}

const AfterFailure<Live> kMadeNoReport = {[](const Live& l) { return l.log.empty(); },
                                          [](Live& l) { l = Live(); }};

void AddFeedRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<void(Live&)> run,
                         reference::Pace pace = {}) {
        rows.push_back(Operation<Live>(covers, Shortage::Throws, std::move(run), DescribeLive,
                                       kMadeNoReport, pace));
    };
    add("field::Bridge::FeedReceiver field::Bridge::Tick", [](Live& l) {
        l.bridge.FeedReceiver(l.Next().bytes, l.Next().at);
        l.bridge.Tick(l.Next().at + 150ms);
    });
    add("field::Bridge::Tick", [](Live& l) {
        // Nothing arrives any more: one report says so.
        for (int i = 1; i < 4; ++i)
            l.bridge.Tick(l.Next().at + i * 200ms);
    });
    add("field::Bridge::FeedPose", [](Live& l) {
        PoseFields pose;
        pose.milliseconds = "8000";
        pose.readings = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        l.bridge.FeedPose(PoseText(pose), l.Next().at);
        l.n = static_cast<int>(l.bridge.Count().poses);
    });
    add("field::Bridge::FeedPose", [](Live& l) {
        field::PoseSample sample;
        sample.data.dMag_x = 500.0;
        sample.arrival = l.Next().at + 1s;
        l.bridge.FeedPose(sample);
        l.n = static_cast<int>(l.bridge.Count().poses);
    });
    add("field::Play",
        [](Live& l) {
            field::Play(l.bridge, l.Next());
            field::Play(l.bridge, {l.Next().at + 150ms, field::Channel::Keys, "restart pose"});
        },
        {20, 7});
}

struct Pending : Live
{
    Pending()
    {
        bridge.FeedReceiver(Next().bytes, Next().at);
        bridge.Tick(Next().at + 150ms);
    }
    std::vector<Report> taken;
};

void AddPlainRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Live>(
        "field::Bridge::Bridge field::Bridge::operator=", Shortage::Throws,
        [](Live& l) {
            field::Bridge made(TrackSetup());
            l.bridge = std::move(made);
            ++l.n;
        },
        DescribeLive));
    rows.push_back(Operation<Pending>(
        "field::Bridge::Take", Shortage::Throws,
        [](Pending& p) {
            auto taken = p.bridge.Take();
            if (!taken.empty()) p.taken = std::move(taken);
        },
        [](const Pending& p) { return "reports: " + std::to_string(p.taken.size()); }));
    rows.push_back(Operation<Live>(
        "field::Bridge::OnSentences field::Bridge::SetClients field::Bridge::Acknowledge "
        "field::Bridge::RestartReceiver field::Bridge::RestartPose field::Bridge::Count",
        Shortage::Never,
        [](Live& l) {
            l.bridge.OnSentences([](const std::string&) {});
            l.bridge.SetClients(3);
            l.bridge.Acknowledge(field::Reason::Code::BaseChanged);
            l.bridge.RestartReceiver();
            l.bridge.RestartPose();
            l.n += static_cast<int>(l.bridge.Count().epochs);
        },
        DescribeLive));
}

// Plays all records; within the call for record `at` an allocation fails.
std::vector<Report> PlayedWithAFailure(const std::vector<Record>& records, std::size_t at,
                                       reference::AllocationRound& round)
{
    field::Bridge bridge(TrackSetup());
    std::vector<Report> reports;
    std::set<std::string> sent;
    bridge.OnSentences([&](const std::string& sentences) {
        EXPECT_TRUE(sent.insert(sentences).second) << "sent twice: " << sentences;
    });
    for (std::size_t i = 0; i < records.size(); ++i) {
        try {
            if (i == at)
                round.Run([&] { field::Play(bridge, records[i]); });
            else
                field::Play(bridge, records[i]);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(i, at);
        }
        for (Report& report : bridge.Take())
            reports.push_back(std::move(report));
    }
    return reports;
}

class ShortBridge : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!reference::CanFailAllocations())
            GTEST_SKIP() << "another tool's allocator is in place";
    }

    struct Runs
    {
        int failed = 0; // with an allocation that failed
        int stored = 0; // of them those that stored something afterwards
    };

    // Of failures at many moments; `check` looks at each report that may be stored.
    static Runs FailAtManyMoments(const std::vector<Record>& records, int moments,
                                  const std::function<void(const Report&)>& check)
    {
        int failed = 0;
        int stored = 0;
        const std::size_t first = records.size() / 3;
        for (int moment = 0; moment < moments; ++moment) {
            std::size_t at = first
                             + static_cast<std::size_t>(moment) * records.size() / 3
                                   / static_cast<std::size_t>(moments);
            while (records[at].channel != field::Channel::Receiver)
                ++at;
            const bool one = moment % 2 == 0;
            reference::AllocationRound round(
                1 + moment * 7 % 60, one ? reference::Failing::One : reference::Failing::AllFrom);
            bool isStored = false;
            for (const Report& report : PlayedWithAFailure(records, at, round)) {
                if (report.verdict.state != field::State::Store) continue;
                check(report);
                isStored = isStored || report.epoch.arrival > records[at].at;
            }
            failed += round.HasFailed() ? 1 : 0;
            stored += round.HasFailed() && isStored ? 1 : 0;
        }
        EXPECT_GT(failed, moments / 3);
        return {failed, stored};
    }
};

TEST_F(ShortBridge, StoresTheTipsOfABridgeWithEnoughMemory)
{
    const std::vector<Record> records = RecordsOf(StandingTrack(9.0));
    std::map<std::string, field::Geodetic> usual;
    for (const Report& report : ReportsOf(TrackSetup(), records))
        if (report.tip) usual[report.epoch.utc] = report.tip->position;
    const Runs runs = FailAtManyMoments(records, 60, [&](const Report& report) {
        ASSERT_TRUE(report.tip && usual.contains(report.epoch.utc));
        const xyhCoordinate off = field::Difference(usual[report.epoch.utc], report.tip->position);
        EXPECT_LT(std::hypot(off.x, off.y, off.h), 0.001) << report.epoch.utc;
    });
    EXPECT_EQ(runs.stored, runs.failed) << "it stores again once memory suffices";
}

TEST_F(ShortBridge, StoresTheTipOfAnOccupationThatBeganAnew)
{
    Options options;
    options.epoch = AntennaErrors(2);
    const std::vector<Record> records = RecordsOf(RockedTrack(), options);
    std::set<std::string> checked; // tips
    const Runs runs = FailAtManyMoments(records, 12, [&](const Report& report) {
        const field::Geodetic& tip =
            report.byOccupation ? *report.occupationTip : report.tip->position;
        const xyhCoordinate off = field::Difference(kTip, tip);
        EXPECT_LT(std::hypot(off.x, off.y), 0.05) << report.epoch.utc;
        if (!report.byOccupation || checked.size() > 30) return;
        if (!checked.insert(Text(tip.latitude)).second) return;
        // Its track is what the estimate was formed of.
        const field::JobTime now = std::chrono::sys_days{std::chrono::year{2026} / 11 / 22};
        const field::JobRecord point = field::OccupationRecordOf(report, now);
        const field::JobRecord again =
            field::Recomputed(point.point, point.epochs, TrackSetup(), 0.0);
        ASSERT_EQ(again.error, "");
        const xyhCoordinate moved = field::Difference(tip, again.point.tip);
        EXPECT_LT(std::hypot(moved.x, moved.y, moved.h), 2e-6) << report.epoch.utc;
    });
    EXPECT_GT(runs.stored, 3) << "some have the time to store again";
}

} // namespace

std::vector<Row> BridgeRows()
{
    std::vector<Row> rows;
    AddFeedRows(rows);
    AddPlainRows(rows);
    return rows;
}

} // namespace sweep
