// SPDX-License-Identifier: MIT
#include "field/job/JobRecord.h"

#include "field/job/JobTime.h"
#include "tests/field/job/SomeReports.h"

#include <gtest/gtest.h>

namespace field::test {
namespace {

JobTime At(const char* text)
{
    return *JobTimeOf(text);
}

TEST(JobRecord, SumsUpTheEpochsOfAPoint)
{
    Tip first = SomeTip();
    Tip second = SomeTip(0.002);
    first.epoch.date = second.epoch.date = std::chrono::sys_days{std::chrono::year{2026} / 11 / 22};
    first.epoch.utc = "235959.80";
    second.epoch.utc = "000000.20";
    second.epoch.date = *first.epoch.date + std::chrono::days{1};
    second.epoch.correctionAge = 2.5;
    first.epoch.lines = "$GNGGA...\r\n";
    first.epoch.moment = std::chrono::milliseconds{12345};
    const JobRecord record = JobRecordOf(std::vector<Report>{SomeReport(first), SomeReport(second)},
                                         At("2030-01-01T00:00:00Z"));
    EXPECT_EQ(record.error, "");
    EXPECT_EQ(record.point.utc, At("2026-11-23T00:00:00.000Z"));
    EXPECT_EQ(record.point.epochs, 2);
    EXPECT_EQ(record.point.leftOut, 0);
    EXPECT_EQ(record.point.quality, Fix::Fixed);
    EXPECT_EQ(record.point.station, "0207");
    EXPECT_EQ(record.point.correctionAge, 2.5);
    EXPECT_EQ(record.point.gate, "store");
    EXPECT_FALSE(record.point.forced);
    EXPECT_NEAR(record.point.geoid, 39.4, 1e-12);
    EXPECT_NEAR(record.point.receivedHeight, 60.6, 1e-9);
    EXPECT_NEAR(record.point.declination, 5.8, 1e-12);
    ASSERT_EQ(record.epochs.size(), 2u);
    EXPECT_EQ(record.epochs[0].receiver, "$GNGGA...\r\n");
    EXPECT_EQ(record.epochs[0].seconds, 12.345);
    EXPECT_EQ(record.epochs[0].n, 1);
}

TEST(JobRecord, TakesTheDayNextToTheHostsClockWhereTheReceiverSendsNone)
{
    Tip tip = SomeTip();
    const auto dayFor = [&](const char* utc, const char* now) {
        tip.epoch.utc = utc;
        return JobTimeText(JobRecordOf(std::vector<Report>{SomeReport(tip)}, At(now)).point.utc);
    };
    EXPECT_EQ(dayFor("120000.50", "2026-11-22T12:00:03Z"), "2026-11-22T12:00:00.500Z");
    EXPECT_EQ(dayFor("235959.00", "2026-11-22T00:00:03Z"), "2026-11-21T23:59:59.000Z");
    EXPECT_EQ(dayFor("000001.00", "2026-11-22T23:59:58Z"), "2026-11-23T00:00:01.000Z");
    EXPECT_EQ(dayFor("no time", "2026-11-22T12:00:03Z"), "2026-11-22T12:00:03.000Z");
}

TEST(JobRecord, KeepsEpochsThatAreLeftOutWithTheReason)
{
    std::vector<Report> reports(5, SomeReport(SomeTip()));
    reports[1].tip.reset();
    reports[1].verdict = {State::Block, {{Reason::Code::NoPose, "no pose for 2.1 s"}}};
    reports[3].tip = SomeTip(0.5);
    const JobRecord record = JobRecordOf(reports, JobTime{});
    EXPECT_EQ(record.point.epochs, 3);
    EXPECT_EQ(record.point.leftOut, 2);
    ASSERT_EQ(record.epochs.size(), 5u);
    EXPECT_FALSE(record.epochs[1].used);
    EXPECT_EQ(record.epochs[1].why, "no tip: no pose for 2.1 s");
    EXPECT_EQ(record.epochs[1].pose, "");
    EXPECT_FALSE(record.epochs[3].used);
    EXPECT_EQ(record.epochs[3].why, "500 mm off the median in plan");
    EXPECT_FALSE(record.point.forced) << "only of epochs in the mean";
}

TEST(JobRecord, SaysThatAndAgainstWhatAPointWasForced)
{
    std::vector<Report> reports(3, SomeReport(SomeTip()));
    reports[0].verdict.reasons = {
        {Reason::Code::LeanNoted, "lean 17 degrees"}
    };
    EXPECT_EQ(JobRecordOf(reports, JobTime{}).point.gate, "store: lean 17 degrees");
    reports[1].verdict = {State::Wait, {{Reason::Code::Moving, "antenna moves 0.31 m/s"}}};
    reports[2].verdict = reports[1].verdict;
    const JobPoint point = JobRecordOf(reports, JobTime{}).point;
    EXPECT_TRUE(point.forced);
    EXPECT_EQ(point.gate, "forced: lean 17 degrees; antenna moves 0.31 m/s");
}

TEST(JobRecord, IsNoneWithoutATip)
{
    EXPECT_EQ(JobRecordOf({}, JobTime{}).error, "there is no epoch");
    Report report;
    EXPECT_EQ(JobRecordOf(std::vector<Report>{report}, JobTime{}).error, "no epoch has a tip");
}

TEST(JobRecord, WritesThePoseAsALineThatItsReaderTakes)
{
    Tip tip = SomeTip();
    tip.epoch.moment = std::chrono::microseconds{12345678};
    tip.pose.data.dPitch = -3.25;
    tip.pose.data.dRoll = 8.123456789;
    tip.pose.data.dMag_x = 150.5;
    tip.pose.data.dAcc_z = -1.0;
    const JobRecord record = JobRecordOf(std::vector<Report>{SomeReport(tip)}, JobTime{});
    EXPECT_EQ(record.epochs[0].pose.substr(0, 58),
              "$PTPS,1,12345.678,-3.2500000,8.1234568,,150.5000000,0.0000");
    EXPECT_EQ(record.epochs[0].pose.substr(record.epochs[0].pose.size() - 2), "\r\n");
}

TEST(JobRecord, TakesTheSetupOver)
{
    field::Setup setup;
    setup.poleLength = 1.8;
    setup.phaseCenter = 0.1;
    setup.delay = 0.12;
    setup.sensorType = 2;
    setup.calibration.bytes = "[MagneticA.a]0\r\n";
    setup.calibration.sensor.SetMagneticBiasAngle_A(0.75);
    const JobSetup row = JobSetupOf(setup, "tiltpole 0.1.0", JobTime{});
    EXPECT_EQ(row.poleLength, 1.8);
    EXPECT_EQ(row.phaseCenter, 0.1);
    EXPECT_EQ(row.delay, 0.12);
    EXPECT_EQ(row.sensorType, 2);
    EXPECT_EQ(row.calibration, "[MagneticA.a]0\r\n");
    EXPECT_EQ(row.axisOffset, 0.75);
    EXPECT_EQ(row.north, "model");
    EXPECT_EQ(row.model, "WMM2025");
    setup.north = NorthSource::File;
    EXPECT_EQ(JobSetupOf(setup, "", JobTime{}).north, "file");
    EXPECT_EQ(JobSetupOf(setup, "", JobTime{}).model, "");
}

} // namespace
} // namespace field::test
