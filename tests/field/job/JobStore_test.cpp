// SPDX-License-Identifier: MIT
#include "field/job/JobStore.h"

#include "tests/field/job/JobRows.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace field::test {
namespace {

using testing::HasSubstr;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(JobStore, GivesPointsThatOutliveTheResultTheyCameIn)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    for (const char* name : {"P1", "P2"})
        ASSERT_TRUE(job.AddPoint(SomePoint(name, 1), SomeEpochs()));
    std::string names;
    for (const JobPoint& point : *job.Points())
        names += point.name + ' ';
    EXPECT_EQ(names, "P1 P2 ");
    static_assert(std::is_same_v<decltype(*job.Points()), std::vector<JobPoint>>);
}

TEST(JobStore, GivesBackAPointAsItWasStored)
{
    const ScratchFolder folder;
    const JobPoint stored = SomePoint("P104", 1);
    ASSERT_EQ(NewJob(folder.Path("job.gpkg")).AddPoint(stored, SomeEpochs()).error, "");

    const auto job = JobStore::Open(folder.Path("job.gpkg"), JobAccess::Read);
    ASSERT_TRUE(job) << job.error;
    const auto points = job->Points();
    ASSERT_TRUE(points) << points.error;
    ASSERT_EQ(points->size(), 1u);
    const JobPoint& point = points->front();
    EXPECT_EQ(point.tip.latitude, stored.tip.latitude);
    EXPECT_EQ(point.tip.longitude, stored.tip.longitude);
    EXPECT_EQ(point.tip.ellipsoidalHeight, stored.tip.ellipsoidalHeight);
    EXPECT_EQ(point.name, "P104");
    EXPECT_EQ(point.code, "KERB");
    EXPECT_EQ(point.note, "north side, Möbelhaus");
    EXPECT_EQ(point.utc, stored.utc);
    EXPECT_EQ(point.receivedHeight, 191.3764);
    EXPECT_EQ(point.geoid, 39.429);
    EXPECT_DOUBLE_EQ(point.sigma.nn, stored.sigma.nn);
    EXPECT_DOUBLE_EQ(point.sigma.ee, stored.sigma.ee);
    EXPECT_DOUBLE_EQ(point.sigma.hh, stored.sigma.hh);
    EXPECT_EQ(point.sigma.ne, stored.sigma.ne);
    EXPECT_EQ(std::pair(point.epochs, point.leftOut), std::pair(9, 1));
    EXPECT_EQ(point.tilt, 12.34);
    EXPECT_EQ(point.azimuthTrue, 250.1);
    EXPECT_EQ(point.declination, 5.81);
    EXPECT_EQ(point.quality, Fix::Fixed);
    EXPECT_EQ(point.station, "0207");
    EXPECT_EQ(point.correctionAge, 1.0);
    EXPECT_EQ(point.antenna.latitude, stored.antenna.latitude);
    EXPECT_EQ(point.antenna.longitude, stored.antenna.longitude);
    EXPECT_EQ(point.antenna.ellipsoidalHeight, stored.antenna.ellipsoidalHeight);
    EXPECT_EQ(point.gate, "store");
    EXPECT_FALSE(point.forced);
    EXPECT_FALSE(point.byOccupation);
    EXPECT_FALSE(point.replaces);
    EXPECT_FALSE(point.voidReason);
}

TEST(JobStore, GivesBackAnOccupationWithItsDoubts)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    JobPoint point = SomePoint("P1", 1);
    point.byOccupation = true;
    std::vector<JobEpoch> epochs = SomeEpochs();
    epochs[1].disturbed = true;
    ASSERT_TRUE(job.AddPoint(point, epochs));
    EXPECT_TRUE(job.Points()->at(0).byOccupation);
    EXPECT_FALSE(job.Epochs(1)->at(0).disturbed);
    EXPECT_TRUE(job.Epochs(1)->at(1).disturbed);
    EXPECT_EQ(PlainLook(folder.Path("job.gpkg")).Ask("SELECT method FROM point"), "occupation");
}

TEST(JobStore, GivesBackTheEpochsInOrder)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    ASSERT_TRUE(job.AddPoint(SomePoint("other", 1), {}));
    const auto id = job.AddPoint(SomePoint("P1", 1), SomeEpochs());
    ASSERT_TRUE(id) << id.error;

    const auto epochs = job.Epochs(*id);
    ASSERT_TRUE(epochs) << epochs.error;
    ASSERT_EQ(epochs->size(), 2u);
    EXPECT_EQ((*epochs)[0].n, 1);
    EXPECT_TRUE((*epochs)[0].used);
    EXPECT_EQ((*epochs)[0].seconds, 12.345);
    EXPECT_EQ((*epochs)[0].receiver, SomeEpochs()[0].receiver);
    EXPECT_EQ((*epochs)[0].pose, SomeEpochs()[0].pose);
    EXPECT_EQ((*epochs)[1].n, 2);
    EXPECT_FALSE((*epochs)[1].used);
    EXPECT_EQ((*epochs)[1].why, "31 mm off the median in plan");
}

TEST(JobStore, KeepsACalibrationByteForByteAndASetupOnlyOnce)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    JobSetup again = SomeSetup();
    again.made += std::chrono::hours{3};
    EXPECT_EQ(*job.AddSetup(again), 1);
    again.poleLength = 1.8;
    EXPECT_EQ(*job.AddSetup(again), 2);
    EXPECT_EQ(*job.AddSetup(SomeSetup()), 3); // changed back: points now belong to this one

    const auto setups = job.Setups();
    ASSERT_TRUE(setups) << setups.error;
    ASSERT_EQ(setups->size(), 3u);
    EXPECT_EQ((*setups)[0].calibration, SomeSetup().calibration);
    EXPECT_EQ((*setups)[0].made, kNoon);
    EXPECT_DOUBLE_EQ((*setups)[0].delay, 0.124);
    EXPECT_DOUBLE_EQ((*setups)[0].delaySigma, 0.007);
    EXPECT_EQ((*setups)[0].lengthSigma, 0.001);
    EXPECT_EQ((*setups)[1].poleLength, 1.8);
    EXPECT_EQ((*setups)[1].model, "WMM2025");
}

TEST(JobStore, KeepsASetupThatDiffersInOneValueAsAnother)
{
    constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
    const std::function<void(JobSetup&)> changes[] = {
        [](JobSetup& s) { s.poleLength += 1e-4; },      [](JobSetup& s) { s.phaseCenter += 1e-4; },
        [](JobSetup& s) { s.phaseCenter = kUnknown; },  [](JobSetup& s) { s.sensorType = 2; },
        [](JobSetup& s) { s.calibration += ' '; },      [](JobSetup& s) { s.headingSigma += 0.1; },
        [](JobSetup& s) { s.headingSigma = kUnknown; }, [](JobSetup& s) { s.tiltSigma += 0.1; },
        [](JobSetup& s) { s.lengthSigma += 1e-4; },     [](JobSetup& s) { s.delay += 1e-3; },
        [](JobSetup& s) { s.delaySigma += 1e-3; },      [](JobSetup& s) { s.axisOffset += 0.1; },
        [](JobSetup& s) { s.north = "file"; },          [](JobSetup& s) { s.model = "WMM2020"; },
        [](JobSetup& s) { s.program += '1'; },
    };
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    std::int64_t last = 1;
    for (const auto& change : changes) {
        JobSetup setup = SomeSetup();
        change(setup);
        const auto id = job.AddSetup(setup);
        ASSERT_TRUE(id) << id.error;
        EXPECT_EQ(*id, last + 1);
        EXPECT_EQ(*job.AddSetup(setup), last + 1) << "the same once more";
        EXPECT_EQ(*job.AddSetup(SomeSetup()), last + 2);
        last += 2;
    }
}

TEST(JobStore, WritesNullWhereNothingIsKnown)
{
    const ScratchFolder folder;
    JobPoint point = SomePoint("P1", 1);
    point.code.clear();
    point.receivedHeight = kNaN;
    point.geoid = kInfinity;
    point.sigma.nn = -1.0; // no variance: no standard deviation either
    point.correctionAge = kNotKnown;
    point.antenna = {kNaN, kNaN, kNaN};
    ASSERT_TRUE(NewJob(folder.Path("job.gpkg")).AddPoint(point, {}));

    const PlainLook look(folder.Path("job.gpkg"));
    EXPECT_EQ(look.Ask("SELECT code, h_msl_m, geoid_m, sd_n_m, age_s, ant_lat, ant_h_ell_m, "
                       "replaces, void_reason FROM point"),
              "NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL");
    EXPECT_EQ(look.Ask("SELECT typeof(sd_e_m), typeof(calibration) FROM point, setup"),
              "real|blob");
}

struct RefusedPoint
{
    const char* why;
    void (*change)(JobPoint&);
};

class JobStoreRefusal : public testing::TestWithParam<RefusedPoint>
{};

TEST_P(JobStoreRefusal, SaysWhyAndStoresNothing)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    ASSERT_TRUE(job.AddPoint(SomePoint("P1", 1), SomeEpochs()));
    JobPoint second = SomePoint("P2", 1);
    second.replaces = 1;
    ASSERT_TRUE(job.AddPoint(second, SomeEpochs()));

    JobPoint point = SomePoint("P3", 1);
    GetParam().change(point);
    const auto refused = job.AddPoint(point, SomeEpochs());
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused.error, folder.Path("job.gpkg") + ": " + GetParam().why);
    EXPECT_EQ(job.Points()->size(), 2u);
    EXPECT_EQ(PlainLook(folder.Path("job.gpkg")).Ask("SELECT count(*) FROM epoch"), "4");
}

INSTANTIATE_TEST_SUITE_P(
    Points, JobStoreRefusal,
    testing::Values(
        RefusedPoint{"there is a point P1 already", [](JobPoint& point) { point.name = "P1"; }},
        RefusedPoint{"a point needs a name", [](JobPoint& point) { point.name.clear(); }},
        RefusedPoint{"the name of a point has no control characters",
                     [](JobPoint& point) { point.name = "P\n3"; }},
        RefusedPoint{"the name of a point has no control characters",
                     [](JobPoint& point) { point.name = "P3\x7F"; }},
        RefusedPoint{"a text is longer than 16 MiB",
                     [](JobPoint& point) { point.note.assign((16 << 20) + 1, 'x'); }},
        RefusedPoint{"the name of a point neither begins nor ends with a blank",
                     [](JobPoint& point) { point.name = "P3 "; }},
        RefusedPoint{"the name of a point has at most 64 bytes",
                     [](JobPoint& point) { point.name.assign(65, 'x'); }},
        RefusedPoint{"the name of the point is not UTF-8",
                     [](JobPoint& point) { point.name = "K\xFCrb"; }},
        RefusedPoint{"the note of the point is not UTF-8",
                     [](JobPoint& point) { point.note = "\xED\xA0\x80"; }},
        RefusedPoint{"point P3 has no place on the globe",
                     [](JobPoint& point) { point.tip.latitude = 90.5; }},
        RefusedPoint{"point P3 has no place on the globe",
                     [](JobPoint& point) { point.tip.longitude = -180.5; }},
        RefusedPoint{"point P3 has no place on the globe",
                     [](JobPoint& point) { point.tip.ellipsoidalHeight = kNaN; }},
        RefusedPoint{"there is no setup 7", [](JobPoint& point) { point.setup = 7; }},
        RefusedPoint{"there is no point with the id 9",
                     [](JobPoint& point) { point.replaces = 9; }},
        RefusedPoint{"the point that P3 replaces has been replaced already",
                     [](JobPoint& point) { point.replaces = 1; }}));

TEST(JobStore, StoresSeveralPointsOrNone)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    std::vector<std::pair<JobPoint, std::vector<JobEpoch>>> points{
        {SomePoint("P1", 1), SomeEpochs()},
        {SomePoint("P1", 1), SomeEpochs()}
    };
    EXPECT_THAT(job.AddPoints(points).error, HasSubstr("there is a point P1 already"));
    EXPECT_EQ(job.Points()->size(), 0u);

    points[1].first.name = "P2";
    EXPECT_EQ(*job.AddPoints(points), (std::vector<std::int64_t>{1, 2}));
}

TEST(JobStore, VoidsAPointOnceAndKeepsItsRow)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    ASSERT_TRUE(job.AddPoint(SomePoint("P1", 1), {}));
    EXPECT_EQ(job.VoidPoint(1, "wrong mark").error, "");
    EXPECT_THAT(job.VoidPoint(1, "another reason").error, HasSubstr("the point is void already"));
    EXPECT_THAT(job.VoidPoint(2, "x").error, HasSubstr("there is no point with the id 2"));
    EXPECT_THAT(job.VoidPoint(1, "").error, HasSubstr("a void point needs a reason"));
    ASSERT_EQ(job.Points()->size(), 1u);
    EXPECT_EQ(job.Points()->front().voidReason, "wrong mark");
}

TEST(JobStore, LetsNoProgramDeleteWhatWasMeasured)
{
    const ScratchFolder folder;
    ASSERT_TRUE(NewJob(folder.Path("job.gpkg")).AddPoint(SomePoint("P1", 1), SomeEpochs()));
    const PlainLook look(folder.Path("job.gpkg"));
    EXPECT_EQ(look.Ask("DELETE FROM point"), "a point is not deleted: give it a void_reason");
    EXPECT_EQ(look.Ask("DELETE FROM epoch"), "an epoch is not deleted");
    EXPECT_EQ(look.Ask("DELETE FROM setup"), "a setup is not deleted");
    EXPECT_EQ(look.Ask("SELECT count(*) FROM point"), "1");
}

TEST(JobStore, KeepsPairsStakesAndEvents)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    ASSERT_TRUE(job.AddPoint(SomePoint("P1", 1), {}));
    ASSERT_TRUE(job.AddPoint(SomePoint("P2", 1), {}));
    ASSERT_TRUE(job.AddLeanPair({0, 1, 2, 0.014, 0.8, kNoon}));
    ASSERT_TRUE(job.AddStake({
        0, "D17", {47.5, 19.0, 230.0},
          2, 0.01, kNaN, -0.02, kNoon
    }));
    ASSERT_TRUE(job.AddStake({
        0, "D18", {47.5, 19.0, 230.0},
          std::nullopt, 0, 0, 0, kNoon
    }));
    ASSERT_TRUE(job.AddEvent({0, kNoon, "base", "station 0207 became 0208"}));

    const JobLeanPair pair = job.LeanPairs()->front();
    EXPECT_EQ(std::pair(pair.first, pair.second), std::pair(std::int64_t{1}, std::int64_t{2}));
    EXPECT_EQ(std::pair(pair.apart, pair.headingError), std::pair(0.014, 0.8));
    const std::vector<JobStake> stakes = *job.Stakes();
    ASSERT_EQ(stakes.size(), 2u);
    EXPECT_EQ(stakes[0].name, "D17");
    EXPECT_EQ(stakes[0].design.longitude, 19.0);
    EXPECT_EQ(stakes[0].point, 2);
    EXPECT_EQ(stakes[0].up, -0.02);
    EXPECT_TRUE(std::isnan(stakes[0].east));
    EXPECT_FALSE(stakes[1].point);
    const JobEvent event = job.Events()->front();
    EXPECT_EQ(event.kind, "base");
    EXPECT_EQ(event.text, "station 0207 became 0208");
    EXPECT_EQ(event.utc, kNoon);
    EXPECT_FALSE(job.AddLeanPair({0, 1, 3, 0.0, 0.0, kNoon})) << "there is no point 3";
}

TEST(JobStore, CountsOnFromTheLargestNumberOfAStem)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    EXPECT_EQ(job.FreeName("P"), "P1");
    for (const char* name : {"P9", "P104", "P7x", "Q500", "P-800", "P"})
        ASSERT_TRUE(job.AddPoint(SomePoint(name, 1), {}));
    EXPECT_EQ(job.FreeName("P"), "P105");
    EXPECT_EQ(job.FreeName("R"), "R1");
    for (const char* name : {"P1000000000000000000", "P99999999999999999999"}) // 19 and 20 digits
        ASSERT_TRUE(job.AddPoint(SomePoint(name, 1), {}));
    EXPECT_EQ(job.FreeName("P"), "P105");
    ASSERT_TRUE(job.AddPoint(SomePoint("P899999999999999999", 1), {}));
    EXPECT_EQ(job.FreeName("P"), "P900000000000000000");
    EXPECT_EQ(job.FreeName(""), "1");
}

TEST(JobStore, ReplacesBytesThatAreNoText)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    std::vector<JobEpoch> epochs = SomeEpochs();
    epochs[0].receiver = "$GN\xFFX\r\n";
    ASSERT_TRUE(job.AddPoint(SomePoint("P1", 1), epochs));
    EXPECT_EQ(job.Epochs(1)->front().receiver, "$GN\xEF\xBF\xBDX\r\n");
}

TEST(JobStore, ReadsEmptyTextsOfOtherProgramsAsEmpty)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    ASSERT_TRUE(job.AddPoint(SomePoint("P1", 1), SomeEpochs()));
    PlainLook(folder.Path("job.gpkg"))
        .Ask("UPDATE point SET code = '', note = x''; UPDATE epoch SET receiver = 12.5");
    ASSERT_EQ(job.Points()->size(), 1u);
    EXPECT_EQ(job.Points()->front().code, "");
    EXPECT_EQ(job.Points()->front().note, "");
    EXPECT_EQ(job.Points()->front().gate, "store");
    EXPECT_EQ(job.Epochs(1)->front().receiver, "12.5");
}

TEST(JobStore, ReadsOnlyWhereItIsToldSo)
{
    const ScratchFolder folder;
    NewJob(folder.Path("job.gpkg"));
    auto job = JobStore::Open(folder.Path("job.gpkg"), JobAccess::Read);
    ASSERT_TRUE(job) << job.error;
    EXPECT_FALSE(job->AddPoint(SomePoint("P1", 1), {}));
    EXPECT_EQ(job->Points()->size(), 0u);
}

} // namespace
} // namespace field::test
