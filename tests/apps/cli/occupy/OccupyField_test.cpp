// SPDX-License-Identifier: MIT
//
// tiltpole occupy --field: samples in a disturbed field have no vote on the heading, and are reported.
#include "tests/apps/cli/occupy/OccupyRuns.h"

#include <cmath>
#include <gmock/gmock.h>

namespace {

using nlohmann::json;
using testing::HasSubstr;

// The simulated field is one of 534 counts that dips by 66 degrees.
const std::string kField = "--field 534,66";

class OccupyField : public occupy::test::OccupyRuns
{
protected:
    json Point(const std::string& simulation, const std::string& arguments)
    {
        return Simulated("--points 1 --seed 5 " + simulation, arguments)["points"][0];
    }
};

double Apart(const json& a, const json& b)
{
    return std::hypot(a["tip_m"]["N"].get<double>() - b["tip_m"]["N"].get<double>(),
                      a["tip_m"]["E"].get<double>() - b["tip_m"]["E"].get<double>());
}

TEST_F(OccupyField, AMagnetAllTheTimeIsReportedAndMovesNoTip)
{
    for (const std::string motion : {"--motion lean-in", "--motion rock --amplitude 15"}) {
        const std::string magnet = motion + " --magnet 0:100:150:60";
        const json watched = Point(magnet, kField);
        EXPECT_EQ(watched["advice"], "store") << motion << watched["reason"];
        EXPECT_NEAR(watched["disturbed"]["part"].get<double>(), 1.0, 1e-9) << motion;
        ASSERT_EQ(watched["disturbed"]["spans"].size(), 1U) << motion;
        EXPECT_THAT(watched["disturbed"]["spans"][0]["reason"].get<std::string>(),
                    testing::MatchesRegex(".* too (strong|weak|steep|flat)"))
            << motion;
        EXPECT_TRUE(watched["magnetometer_minus_track_deg"].is_null()) << motion;
        const json without = Point(magnet, "--no-magnetometer");
        EXPECT_EQ(watched["tip_m"], without["tip_m"]) << motion;
        EXPECT_EQ(watched["ellipse_95_m"], without["ellipse_95_m"]) << motion;
    }
}

// A pole that is held has no heading but that of the magnetometer.
TEST_F(OccupyField, AMagnetForAWhileDoesNotTurnAPoleThatIsHeld)
{
    const std::string magnet = "--motion hold --magnet 2:100:150:60";
    const json undisturbed = Point("--motion hold", kField);
    EXPECT_EQ(undisturbed["disturbed"]["part"], 0.0);
    EXPECT_TRUE(undisturbed["disturbed"]["spans"].empty());
    const json watched = Point(magnet, kField);
    EXPECT_LT(Apart(watched, undisturbed), 0.01);
    // It grows for half a second.
    EXPECT_NEAR(watched["disturbed"]["part"].get<double>(), 3.0 / 5.0, 0.1);
    EXPECT_NEAR(watched["disturbed"]["spans"][0]["from_s"].get<double>(), 2.25, 0.25);
    EXPECT_NEAR(watched["disturbed"]["spans"][0]["to_s"].get<double>(), 5.0, 0.05);
    EXPECT_GT(Apart(Point(magnet, ""), undisturbed), 0.03);
    const json late = Point("--motion hold --magnet 0.3:100:150:60", kField);
    EXPECT_EQ(late["advice"], "move");
    EXPECT_THAT(late["reason"].get<std::string>(), HasSubstr("the heading is known to"));
}

// Pitch and roll of a rocked pole are off by several degrees, and so would be the dip.
TEST_F(OccupyField, ARockedPoleIsNotDisturbed)
{
    for (const char* motion : {"rock --amplitude 15", "free"}) {
        const json points = Simulated(std::string("--points 6 --seed 77 --anew --motion ") + motion,
                                      kField)["points"];
        ASSERT_EQ(points.size(), 6U);
        for (const json& point : points)
            EXPECT_EQ(point["disturbed"]["part"], 0.0) << motion << " " << point["disturbed"];
    }
}

TEST_F(OccupyField, RecordedPointsAreHardlyDisturbedInTheirRoom)
{
    const auto result =
        json::parse(RunOn(occupy::test::kRecorded,
                          "--bias 0.75 --field 488,67.5 --json --truth " + occupy::test::kTruth)
                        .out);
    EXPECT_EQ(result["field"]["expected_strength"], 488.0);
    EXPECT_EQ(result["field"]["expected_dip_deg"], 67.5);
    double part = 0.0;
    for (const json& point : result["points"])
        part += point["disturbed"]["part"].get<double>() / 24.0;
    EXPECT_LT(part, 0.2);
    EXPECT_LT(result["errors"]["all"]["horizontal_m"]["p90"].get<double>(), 0.018);
}

TEST_F(OccupyField, IsToldInTheText)
{
    const auto log = m_folder.Path("magnet.csv");
    ASSERT_EQ(apps::test::RunLine(
                  "simulate occupations --points 1 --seed 5 --magnet 2:100:150:60 --out " + log)
                  .exitCode,
              0);
    const auto outcome = RunOn(log, kField);
    EXPECT_THAT(
        outcome.out,
        HasSubstr("field                   watched: 534 counts, dip 66.0 degrees expected\n"));
    EXPECT_THAT(outcome.out,
                testing::ContainsRegex("\ndisturbed field +point 1: [56][0-9] % of the time "
                                       "without a vote; 2[.][0-9] to 5.0 s after its start, "));
    const auto unwatched = RunOn(log);
    EXPECT_THAT(unwatched.out, testing::Not(HasSubstr("disturbed field")));
    const json result = json::parse(RunOn(log, "--json").out);
    EXPECT_TRUE(result["field"].is_null());
    EXPECT_TRUE(result["points"][0]["disturbed"].is_null());
}

TEST_F(OccupyField, IsToldOfEachPoint)
{
    const auto log = m_folder.Path("magnet.csv");
    ASSERT_EQ(apps::test::RunLine("simulate occupations --points 2 --anew --seed 5 --motion hold "
                                  "--magnet 2:100:150:60 --out "
                                  + log)
                  .exitCode,
              0);
    EXPECT_THAT(RunOn(log, kField).out,
                testing::ContainsRegex("\ndisturbed field +point 1: [^\n]*\n {24}point 2: "));
}

// Zero on all axes is no reading; zero on some of them is one.
TEST_F(OccupyField, AMagnetometerWithoutReadingsSaysNothing)
{
    const auto log = m_folder.Path("still.csv");
    ASSERT_EQ(
        apps::test::RunLine("simulate occupations --points 1 --seed 5 --motion hold --out " + log)
            .exitCode,
        0);
    const auto still = occupy::test::TableOf(apps::test::ReadAll(log));
    struct Case
    {
        const char *x, *y, *z;
        const char* a; // reason of the disturbance where A reads that, empty: none
        const char* b; // where B does
    };
    constexpr Case cases[] = {
        {"0", "0",   "0",   "",         ""                       },
        {"0", "300", "0",   "too flat", "magnetometers differ by"},
        {"0", "0",   "300", "too flat", "magnetometers differ by"},
    };
    for (const Case& reading : cases)
        for (const std::string suffix : {"", "_2"}) {
            auto table = still;
            table.Set("dMag_x" + suffix, reading.x);
            table.Set("dMag_y" + suffix, reading.y);
            table.Set("dMag_z" + suffix, reading.z);
            const std::string reason = suffix.empty() ? reading.a : reading.b;
            const json spans = Points(table, kField)[0]["disturbed"]["spans"];
            ASSERT_EQ(spans.size(), reason.empty() ? 0U : 1U) << suffix << spans;
            if (!reason.empty()) {
                EXPECT_THAT(spans[0]["reason"].get<std::string>(), HasSubstr(reason)) << suffix;
            }
        }
}

TEST_F(OccupyField, LeavesEpochsOutWithoutGyros)
{
    const json point =
        Point("--motion hold --duration 8 --magnet 4:100:150:60", "--gyro-free " + kField);
    EXPECT_EQ(point["epochs"]["read"], 40);
    EXPECT_NEAR(point["epochs"]["used"].get<int>(), 20, 1);
    EXPECT_THAT(RunOn(m_folder.Path("simulated.csv"), "--gyro-free " + kField).out,
                HasSubstr(" in a disturbed field"));
}

TEST_F(OccupyField, RefusesAFieldThatCannotBe)
{
    const auto table = occupy::test::Recorded({"1"});
    EXPECT_EQ(Run(table, "--field 534").exitCode, 2);
    EXPECT_EQ(Run(table, "--field 0,66").exitCode, 2);
    EXPECT_EQ(Run(table, "--field 534,166").exitCode, 2);
    EXPECT_EQ(Run(table, "--field 534,66 --no-magnetometer").exitCode, 2);
}

} // namespace
