// SPDX-License-Identifier: MIT
//
// From reports to rows of a job: plain functions, which give their result or nothing.
#include "field/OccupationTrack.h"
#include "field/job/AveragedTip.h"
#include "field/job/JobTime.h"
#include "field/job/OccupationRecord.h"
#include "field/job/Recompute.h"
#include "tests/field/bridge/PlantedPole.h"
#include "tests/field/job/StoredPoint.h"
#include "tests/memory/Rows.h"

namespace sweep {

namespace {

using field::JobRecord;
using field::test::PoleSetup;

struct Recorded
{
    Recorded()
    {
        static const std::vector<field::Report> reports = field::test::ReportsOf(PoleSetup(), 6);
        given = reports;
        for (const field::Report& report : given)
            tips.push_back(*report.tip);
    }

    std::vector<field::Report> given;
    std::vector<field::Tip> tips;
    field::TipAverage average;
    JobRecord record;
    field::JobSetup setup;
    std::string text;
};

std::string Describe(const JobRecord& record)
{
    std::string text = record.error + '|' + record.point.name + '|' + record.point.gate + '|'
                       + Text(record.point.tip.latitude) + Text(record.point.sigma.nn)
                       + std::to_string(record.point.epochs) + ' '
                       + std::to_string(record.point.leftOut) + ' ';
    for (const field::JobEpoch& epoch : record.epochs)
        text += epoch.receiver + epoch.pose + epoch.why + (epoch.used ? "+" : "-");
    return text;
}

std::string DescribeRecorded(const Recorded& r)
{
    return r.text + '|' + std::to_string(r.average.used) + ' ' + Text(r.average.position.latitude)
           + Text(r.average.sigma.hh) + r.setup.program + r.setup.calibration
           + std::to_string(r.average.leftOut.size()) + Describe(r.record);
}

const field::JobTime kNow =
    std::chrono::sys_days{std::chrono::year{2026} / 11 / 22} + std::chrono::hours{13};

void AddRecordRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<void(Recorded&)> run) {
        rows.push_back(
            Operation<Recorded>(covers, Shortage::Throws, std::move(run), DescribeRecorded));
    };
    add("field::AveragedTip", [](Recorded& r) {
        std::vector<field::Tip> tips = r.tips;
        tips[2].position.latitude += 1e-6; // left out
        r.average = field::AveragedTip(tips);
    });
    add("field::JobRecordOf", [](Recorded& r) { r.record = field::JobRecordOf(r.given, kNow); });
    add("field::JobSetupOf", [](Recorded& r) {
        r.setup = field::JobSetupOf(PoleSetup(), "a program with its version 1.2", kNow);
    });
    add("field::JobTimeText", [](Recorded& r) { r.text = field::JobTimeText(kNow); });
    rows.push_back(WithoutMemory("field::JobTimeOf", [] {
        EXPECT_TRUE(field::JobTimeOf("2026-11-22T13:07:58.200Z"));
        EXPECT_FALSE(field::JobTimeOf("2026-11-22"));
    }));
}

struct Stored
{
    Stored()
    {
        static const JobRecord kept = field::test::StoredPoint(PoleSetup(), 6, 1.0);
        stored = kept;
    }

    JobRecord stored;
    JobRecord record;
};

// A report that may be stored by its occupation alone, and its point.
struct StoredOccupation
{
    StoredOccupation()
    {
        static const field::Report kept = [] {
            live_pole::Options options;
            options.epoch = live_pole::AntennaErrors(2);
            const auto reports =
                live_pole::ReportsOf(live_pole::TrackSetup(),
                                     live_pole::RecordsOf(live_pole::RockedTrack(1.0, 2), options));
            return live_pole::ByOccupation(reports).value_or(field::Report{});
        }();
        static const JobRecord point = field::OccupationRecordOf(kept, kNow);
        report = kept;
        stored = point;
    }

    field::Report report;
    JobRecord stored;
    JobRecord record;
};

void AddRecomputedRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Stored>(
        "field::Recomputed", Shortage::Throws,
        [](Stored& s) {
            field::Setup setup = PoleSetup();
            setup.poleLength = 1.8;
            s.record = field::Recomputed(s.stored.point, s.stored.epochs, setup, 0.03);
        },
        [](const Stored& s) { return Describe(s.record); }, {}, {40, 7}));
    const auto describe = [](const StoredOccupation& s) { return Describe(s.record); };
    rows.push_back(Operation<StoredOccupation>("field::OccupationRecordOf", Shortage::Throws,
                                               [](StoredOccupation& s) {
                                                   EXPECT_EQ(s.stored.error, "");
                                                   s.record =
                                                       field::OccupationRecordOf(s.report, kNow);
                                               },
                                               describe, {}, {20, 997}));
    rows.push_back(Operation<StoredOccupation>("field::Recomputed", Shortage::Throws,
                                               [](StoredOccupation& s) {
                                                   s.record = field::Recomputed(
                                                       s.stored.point, s.stored.epochs,
                                                       live_pole::TrackSetup(), 0.0);
                                               },
                                               describe, {}, {20, 997}));
}

} // namespace

std::vector<Row> JobRecordRows()
{
    std::vector<Row> rows;
    AddRecordRows(rows);
    AddRecomputedRows(rows);
    return rows;
}

} // namespace sweep
