// SPDX-License-Identifier: MIT
//
// tiltpole job recompute, on points as a live pole stores them.
#include "apps/cli/job/JobRecompute.h"
#include "field/Geodesy.h"
#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"
#include "tests/field/job/JobRows.h"
#include "tests/field/job/StoredPoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace apps::test {
namespace {

using field::test::PoleSetup;
using testing::HasSubstr;

// Points P1 to P4 of so many epochs each, ten a second; P4 is void.
std::string StoredJob(const ScratchFolder& folder, int epochs = 5)
{
    const std::string path = folder.Path("site.gpkg");
    field::JobStore job = field::test::OpenForWriting(path);
    EXPECT_TRUE(job.AddSetup(field::JobSetupOf(PoleSetup(), "tiltpole 0.1.0", field::test::kNoon)));
    field::JobRecord record = field::test::StoredPoint(PoleSetup(), epochs);
    record.point.setup = 1;
    for (const char* name : {"P1", "P2", "P3", "P4"}) {
        record.point.name = name;
        EXPECT_TRUE(job.AddPoint(record.point, record.epochs));
    }
    EXPECT_TRUE(job.VoidPoint(4, "wrong mark"));
    return path;
}

std::vector<field::JobPoint> PointsIn(const std::string& path)
{
    return *field::JobStore::Open(path, field::JobAccess::Read)->Points();
}

TEST(JobRecompute, WritesNewRowsThatReplaceTheOld)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    const LineOutcome outcome = RunLine("job recompute " + job + " P2-P9 --pole 1.8");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("points                  2 recomputed"));

    const std::vector<field::JobPoint> points = PointsIn(job);
    ASSERT_EQ(points.size(), 6u);
    EXPECT_EQ(points[4].name, "P2~2");
    EXPECT_EQ(points[4].replaces, 2);
    EXPECT_EQ(points[5].name, "P3~2");
    EXPECT_EQ(points[4].setup, 2);
    EXPECT_EQ(points[5].setup, 2);
    const double up = points[4].tip.ellipsoidalHeight - points[1].tip.ellipsoidalHeight;
    EXPECT_NEAR(up, 0.2 * std::cos(points[1].tilt * 3.14159265358979323846 / 180.0), 1e-6);
    EXPECT_THAT(RunLine("job list " + job).output, HasSubstr("recompute: 2 points with pole "
                                                             "1.8000 m"));
    EXPECT_EQ(field::test::PlainLook(job).Ask("SELECT pole_m, program FROM setup WHERE id = 2"),
              "1.8|tiltpole 0.1.0, recomputed");
    EXPECT_EQ(field::test::PlainLook(job).Ask("SELECT count(*) FROM epoch WHERE point_id = 5"),
              "5");
}

TEST(JobRecompute, TakesTheNewestRowOfAPointAndKeepsItsName)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    ASSERT_EQ(RunLine("job recompute " + job + " P1 --pole 1.8").exitCode, 0);
    ASSERT_EQ(RunLine("job recompute " + job + " P1 --pole 2.0").exitCode, 0);
    const std::vector<field::JobPoint> points = PointsIn(job);
    ASSERT_EQ(points.size(), 6u);
    EXPECT_EQ(points[5].name, "P1~3");
    EXPECT_EQ(points[5].replaces, points[4].id);
    const xyhCoordinate back = field::Difference(points[0].tip, points[5].tip);
    EXPECT_LT(std::hypot(back.x, back.y, back.h), 1e-6);
    const LineOutcome csv = RunLine("job export " + job + " --format csv --height ellipsoidal");
    EXPECT_THAT(csv.output, HasSubstr("setup\nP1,")) << "P1 stays the first";
    EXPECT_THAT(csv.output, testing::Not(HasSubstr("P1~")));
}

TEST(JobRecompute, OnTrialStoresNothing)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    const std::string before = ReadAll(job);
    const LineOutcome outcome = RunLine("job recompute " + job + " all --pole 1.8 --dry-run");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("3 recomputed, not stored"));
    EXPECT_EQ(ReadAll(job), before);
}

TEST(JobRecompute, UsesAnotherCalibration)
{
    const ScratchFolder folder;
    const std::string job = folder.Path("site.gpkg");
    // Without headings of the sensor's own, the magnetometer counts.
    {
        const field::Setup setup = PoleSetup();
        field::JobStore store = field::test::OpenForWriting(job);
        ASSERT_TRUE(store.AddSetup(field::JobSetupOf(setup, "", field::test::kNoon)));
        std::vector<field::Report> reports = field::test::ReportsOf(setup, 3);
        const tiltpole::field::TipSolver solver(setup);
        for (field::Report& report : reports) {
            field::PoseSample pose = field::test::PoseAt(report.epoch.moment, 0.0);
            pose.heading.reset();
            pose.data.dMag_x = 150.0;
            pose.data.dMag_y = 90.0;
            pose.data.dMag_z = -300.0;
            report.tip = solver.Solve(report.epoch, pose, field::test::Year()).tip;
            ASSERT_TRUE(report.tip);
        }
        field::JobRecord record = field::JobRecordOf(reports, field::JobTime{});
        record.point.name = "M1";
        record.point.setup = 1;
        ASSERT_TRUE(store.AddPoint(record.point, record.epochs));
    }
    std::string calibration = field::test::PlainCalibration();
    const std::string key = "[MagneticBiasAngle_A]0.0";
    calibration.replace(calibration.find(key), key.size(), "[MagneticBiasAngle_A]10.0");
    const std::string config = folder.Write("new.cfg", calibration);
    const LineOutcome outcome = RunLine("job recompute " + job + " M1 --config " + config);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    const std::vector<field::JobPoint> points = PointsIn(job);
    ASSERT_EQ(points.size(), 2u);
    // Ten degrees less heading turn the lean back by ten.
    EXPECT_NEAR(std::remainder(points[1].azimuthTrue - points[0].azimuthTrue + 10.0, 360.0), 0.0,
                1e-6);
    EXPECT_EQ(field::test::PlainLook(job).Ask("SELECT axis_offset_deg FROM setup WHERE id = 2"),
              "10.0");
}

TEST(JobRecompute, RefusesAPointThatItsEpochsDoNotGive)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    {
        field::JobRecord record = field::test::StoredPoint(PoleSetup(), 5);
        record.point.setup = 1;
        record.point.name = "moved";
        record.point.tip.ellipsoidalHeight += 0.045;
        ASSERT_TRUE(field::test::OpenForWriting(job).AddPoint(record.point, record.epochs));
    }
    const LineOutcome outcome = RunLine("job recompute " + job + " moved --pole 1.8");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("point moved: with its own setup its epochs give a tip "
                                          "45 mm from the stored one; it is not recomputed"));
    EXPECT_EQ(PointsIn(job).size(), 5u);
}

TEST(JobRecompute, StoresADelayAndItsDeviation)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder, 8); // poses stand between epochs of a still pole
    const LineOutcome outcome = RunLine("job recompute " + job + " P1 --pole 1.8 --delay 0.1,0.02");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("pole 1.8000 m, delay 0.1,0.02 s\n"));
    ASSERT_EQ(RunLine("job recompute " + job + " P2 --delay 0.11").exitCode, 0);
    EXPECT_EQ(field::test::PlainLook(job).Ask("SELECT delay_ms, delay_sd_ms FROM setup"),
              "120.0|7.0\n100.0|20.0\n110.0|7.0");
}

TEST(JobRecompute, SaysWhyAPointStaysAsItIs)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    {
        field::JobStore store = field::test::OpenForWriting(job);
        field::JobPoint point = field::test::SomePoint("bare", 1);
        ASSERT_TRUE(store.AddPoint(point, {}));
        point.name = "torn";
        ASSERT_TRUE(store.AddPoint(point, field::test::SomeEpochs()));
    }
    ASSERT_EQ(field::test::PlainLook(job).Ask("UPDATE point SET setup_id = 9 WHERE name = 'P1'"),
              "");
    const LineOutcome outcome = RunLine("job recompute " + job + " P1,bare,torn --pole 1.8");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, job + ": point P1: its setup is not in the job\n" + job
                                  + ": point bare: it has no epochs\n" + job
                                  + ": point torn: no epoch has a tip\n");
    // Ten seconds later the pole was no longer recorded.
    EXPECT_EQ(RunLine("job recompute " + job + " P2 --delay -9.9").output,
              job + ": point P2: no epoch has a tip\n");
    EXPECT_EQ(PointsIn(job).size(), 6u);
}

TEST(JobRecompute, TakesTheUsualValuesForWhatASetupLacks)
{
    const field::Setup usual;
    const field::Setup setup = cli::SetupOf(field::JobSetup{});
    EXPECT_EQ(setup.poleLength, usual.poleLength);
    EXPECT_EQ(setup.phaseCenter, usual.phaseCenter);
    EXPECT_EQ(setup.headingSigma, usual.headingSigma);
    EXPECT_EQ(setup.tiltSigma, usual.tiltSigma);
    EXPECT_EQ(setup.lengthSigma, usual.lengthSigma);
    EXPECT_EQ(setup.delay, usual.delay);
    EXPECT_EQ(setup.delaySigma, usual.delaySigma);
    EXPECT_EQ(setup.north, field::NorthSource::Model);
    EXPECT_FALSE(setup.calibration.complete);
    field::JobSetup byFile;
    byFile.north = "file";
    EXPECT_EQ(cli::SetupOf(byFile).north, field::NorthSource::File);
}

TEST(JobRecompute, RefusesACalibrationThatCannotBeRead)
{
    field::JobSetup setup = field::test::SomeSetup();
    setup.id = 3;
    try {
        cli::SetupOf(setup);
        FAIL() << "taken";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(),
                    testing::StartsWith("the calibration of setup 3 cannot be read: "));
    }
}

TEST(JobRecompute, NamesWhatItCannotDo)
{
    const ScratchFolder folder;
    const std::string job = StoredJob(folder);
    const auto error = [&](const std::string& rest) {
        const LineOutcome outcome = RunLine("job recompute " + job + " " + rest);
        EXPECT_EQ(outcome.exitCode, 2) << rest;
        return outcome.output;
    };
    EXPECT_THAT(error("P1"), HasSubstr("nothing is changed: give --pole, --delay or --config"));
    EXPECT_THAT(error("Q1 --pole 1.8"), HasSubstr("no point that counts is named Q1"));
    EXPECT_THAT(error("P4 --pole 1.8"), HasSubstr("no point that counts is named P4"));
    EXPECT_THAT(error("P9-P2 --pole 1.8"), HasSubstr("the range P9-P2 ends before it begins"));
    EXPECT_THAT(error("P1 --pole 0"), HasSubstr("--pole"));
    EXPECT_THAT(error("P1 --delay soon"), HasSubstr("'soon' is not a delay"));
    for (const char* sigma : {"2", "0", "-0.1"})
        EXPECT_THAT(error(std::string("P1 --delay 0.1,") + sigma),
                    HasSubstr("the sd of the delay is not between 0 and 1 s"));
    EXPECT_THAT(error("P1 --config none.cfg"), HasSubstr("none.cfg"));
    EXPECT_EQ(PointsIn(job).size(), 4u);
}

} // namespace
} // namespace apps::test
