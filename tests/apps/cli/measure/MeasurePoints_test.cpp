// SPDX-License-Identifier: MIT
//
// tiltpole measure on logs of several points, on rows without an antenna position, and with the
// exact attitude.
#include "tests/apps/RunLine.h"
#include "tests/apps/SampleRows.h"
#include "tests/apps/ScratchFile.h"

#include <algorithm>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using apps::test::kLogHeader;
using apps::test::LogRow;
using apps::test::Outcome;
using apps::test::ReadAll;
using apps::test::RunLine;
using apps::test::RunProgram;
using apps::test::ScratchFolder;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

const std::string kOccupations = TILTPOLE_SOURCE_DIR "/examples/occupations.csv";

Outcome Measure(const std::string& log, std::vector<std::string> more = {})
{
    std::vector<std::string> arguments = {"measure", "-", "--pole", "2"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunProgram(arguments, log);
}

json Summary(const std::string& log)
{
    return json::parse(Measure(log, {"--json"}).out);
}

// A plumb pole, so its tip has the N of the antenna.
std::string RowAt(double north, const std::string& point)
{
    return fmt::format("0,0,400,0,0,-400,0,0,{:.4f},500000.5,100,{}\n", north, point);
}

const std::string kHeader =
    "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h,point\n";

TEST(MeasurePoints, EachPointHasItsMean)
{
    const std::string log = kHeader + RowAt(10.0, "a") + RowAt(10.2, "a") + RowAt(14.0, "")
                            + RowAt(20.0, "b") + RowAt(11.0, "a");
    const json summary = Summary(log);
    const json& points = summary["points"];
    ASSERT_EQ(points.size(), 3U) << "a point that comes again is another one";
    EXPECT_EQ(points[0]["point"], "a");
    EXPECT_EQ(points[0]["samples"], 2);
    EXPECT_NEAR(points[0]["mean_m"]["N"].get<double>(), 10.1, 1e-9);
    EXPECT_NEAR(points[0]["within_m"]["N"].get<double>(), 0.2, 1e-9);
    EXPECT_NEAR(points[1]["mean_m"]["N"].get<double>(), 20.0, 1e-9);
    EXPECT_NEAR(points[2]["mean_m"]["N"].get<double>(), 11.0, 1e-9);
    EXPECT_FALSE(summary["one_point"].get<bool>());
    EXPECT_TRUE(summary["tip"]["n_m"]["mean"].is_null());
    EXPECT_EQ(summary["tip"]["n_m"]["max"], 20.0);
    const std::string text = Measure(log).err;
    EXPECT_THAT(text, HasSubstr("tip, mean of point  samples              N"));
    EXPECT_THAT(text, HasSubstr("10.1000   500000.5000    98.0000  0.200 x 0.000 x 0.000 m\n"));
    EXPECT_THAT(text, Not(HasSubstr("tip, mean       ")));
}

TEST(MeasurePoints, NoMeanIsTakenOfPlacesThatLieApart)
{
    const auto unnamed = [](double second) {
        std::string log = kHeader + RowAt(10.0, "") + RowAt(second, "");
        log.replace(log.find(",point"), 6, ",other");
        return log;
    };
    const json together = Summary(unnamed(10.5));
    EXPECT_TRUE(together["one_point"].get<bool>());
    EXPECT_NEAR(together["tip"]["n_m"]["mean"].get<double>(), 10.25, 1e-9);
    EXPECT_TRUE(together["points"].empty());
    const json apart = Summary(unnamed(10.51));
    EXPECT_FALSE(apart["one_point"].get<bool>());
    EXPECT_TRUE(apart["tip"]["n_m"]["mean"].is_null());
    EXPECT_THAT(Measure(unnamed(10.51), {"--truth", "10,500000.5,98"}).err,
                testing::AllOf(HasSubstr("none: the tips lie 0.510 x 0.000 x 0.000 m apart, not at "
                                         "one point"),
                               Not(HasSubstr("mean minus true tip"))));
}

TEST(MeasurePoints, APointWhoseTipsLieApartHasNoMean)
{
    const std::string log = kHeader + RowAt(10.0, "a") + RowAt(75.0, "a") + RowAt(20.0, "b");
    EXPECT_THAT(Measure(log).err,
                testing::ContainsRegex("\n  a +2  no mean: the tips lie 65.000 x 0.000 x 0.000 m "
                                       "apart, not at one point\n"));
    const json points = Summary(log)["points"];
    EXPECT_TRUE(points[0]["mean_m"].is_null());
    EXPECT_EQ(points[0]["within_m"]["N"], 65.0);
    EXPECT_EQ(points[1]["mean_m"]["N"], 20.0);
}

// Tips that scatter by as much have a mean; those that step do not.
TEST(MeasurePoints, AStepToAnotherPlaceLeavesNoMean)
{
    for (const int rows : {10, 3000}) {
        std::string stepping = kHeader;
        std::string scattering = kHeader;
        for (int i = 0; i < rows; ++i) {
            const double noise = 0.01 * (i % 3);
            stepping += RowAt((2 * i < rows ? 10.0 : 10.3) + noise, "a");
            scattering += RowAt((i % 2 == 0 ? 10.0 : 10.3) + noise, "a");
        }
        EXPECT_TRUE(Summary(stepping)["points"][0]["mean_m"].is_null()) << rows;
        EXPECT_NEAR(Summary(scattering)["points"][0]["mean_m"]["N"].get<double>(), 10.16, 0.005)
            << rows;
        EXPECT_THAT(Measure(stepping).err,
                    testing::ContainsRegex("no mean: the tips step from one place to another, "
                                           "0[.](29|30)[0-9] m away\n"))
            << rows;
        stepping.replace(stepping.find(",point"), 6, ",other");
        EXPECT_FALSE(Summary(stepping)["one_point"].get<bool>()) << rows;
    }
}

// 0.25 m between both halves, and 0.1 m about each of them.
TEST(MeasurePoints, AStepThatItsScatterMayHaveMadeLeavesTheMean)
{
    std::string log = kHeader;
    for (int i = 0; i < 40; ++i)
        log += RowAt((i < 20 ? 10.0 : 10.25) + (i % 2 == 0 ? 0.1 : -0.1), "a");
    EXPECT_NEAR(Summary(log)["points"][0]["mean_m"]["N"].get<double>(), 10.125, 1e-6);
}

TEST(MeasurePoints, FiftyAreListedAndTheRestCounted)
{
    std::string log = kHeader;
    for (int i = 1; i <= 52; ++i)
        log += RowAt(10.0 * i, "P" + std::to_string(i));
    const std::string text = Measure(log).err;
    EXPECT_THAT(text, HasSubstr("\n  P50 "));
    EXPECT_THAT(text, Not(HasSubstr("\n  P51 ")));
    EXPECT_THAT(text, HasSubstr("\n  and 2 more\n"));
    EXPECT_EQ(Summary(log)["points"].size(), 52U);
}

TEST(MeasurePoints, WarnsOfALogWithoutHeights)
{
    const auto log = [](const std::string& height, double lean) {
        std::string text = kHeader;
        for (int i = 0; i < 8; ++i)
            text += fmt::format("{:.1f},0,400,0,0,-400,0,0,10,500000.5,{},a\n", lean * i, height);
        return text;
    };
    const std::string warning = "warning                 the antenna's height is 0.000 m "
                                "throughout: the log lacks heights, and those of the tips are "
                                "wrong\n";
    EXPECT_THAT(Measure(log("0", 0.0)).err, HasSubstr(warning));
    EXPECT_EQ(Summary(log("0", 0.0))["warnings"].size(), 1U);
    EXPECT_THAT(Measure(log("97.5", 1.0)).err, HasSubstr("height is 97.500 m throughout"));
    EXPECT_TRUE(Summary(log("97.5", 0.0))["warnings"].empty()) << "a pole that is held";
}

TEST(MeasurePoints, DoesNotWarnOfHeightsThatChangeOrOfAShortLog)
{
    const auto log = [](int rows, double height, double rise) {
        std::string text = kHeader;
        for (int i = 0; i < rows; ++i)
            text +=
                fmt::format("{}.0,0,400,0,0,-400,0,0,10,500000.5,{:.2f},a\n", i, height + rise * i);
        return text;
    };
    EXPECT_EQ(Summary(log(8, 97.5, 0.0))["warnings"].size(), 1U);
    EXPECT_TRUE(Summary(log(8, 97.5, 0.01))["warnings"].empty());
    EXPECT_TRUE(Summary(log(7, 97.5, 0.0))["warnings"].empty());
}

TEST(MeasurePoints, RowsWithoutAnAntennaAreCountedAndHaveNoTip)
{
    std::string blank = LogRow("0", "10");
    blank.replace(blank.find("4500000.25"), std::string("4500000.25,500000.5,100").size(), ",,");
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "10") + blank + blank);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 2);
    EXPECT_THAT(outcome.err, HasSubstr("1 measured, 0 rows skipped\n                        2 rows "
                                       "have no antenna position, so no tip\n"));
    EXPECT_EQ(Summary(kLogHeader + LogRow("0", "10") + blank)["rows_without_antenna"], 1);

    const Outcome none = Measure(kLogHeader + blank);
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.err,
                HasSubstr("no sample could be measured: no row has an antenna position\n"));
    std::string part = blank;
    part.replace(part.find(",,\n"), 3, "1,,\n");
    EXPECT_EQ(Measure(kLogHeader + part).exitCode, 2);
}

TEST(MeasurePoints, TheLogOfOccupationsHasAMeanForEach)
{
    const auto outcome = RunProgram({"measure", kOccupations, "--pole", "2", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary["points"].size(), 24U);
    EXPECT_EQ(summary["samples"].get<int>() + summary["rows_without_antenna"].get<int>(), 11391);
    EXPECT_GT(summary["rows_without_antenna"], 10000);
}

// A clean pole, held at 35 degrees: what is left of the error is that of the formulas.
TEST(ExactAttitudeOption, FindsTheTipsOfCleanPoles)
{
    const ScratchFolder folder;
    const std::string log = folder.Path("hold.csv");
    for (const auto& [report, word] : {
             std::pair{"inclination", "slopes"},
             {"leveling",    "turns" }
    }) {
        ASSERT_EQ(RunLine(fmt::format("simulate occupations --clean --silent-antenna --points 1 "
                                      "--motion hold --lean-from 35 --seed 2 --tremor 0 --start "
                                      "4500000,500000,100 --roll {} --out {}",
                                      report, log))
                      .exitCode,
                  0);
        const auto error = [&](const std::string& options) {
            const auto outcome = RunLine("measure " + log
                                         + " --pole 2 --truth 4500000,500000,100 "
                                           "--json "
                                         + options);
            EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
            return json::parse(outcome.output)["error_horizontal_m"]["max"].get<double>();
        };
        EXPECT_LT(error(fmt::format("--attitude exact --pitch-roll {}", word)), 0.001) << word;
        const char* const other = std::string(word) == "slopes" ? "turns" : "slopes";
        EXPECT_GT(error(fmt::format("--attitude exact --pitch-roll {}", other)), 0.01) << word;
        EXPECT_GT(error(""), 0.02) << word;
        EXPECT_EQ(error("--attitude standard"), error("")) << word;
    }
}

TEST(ExactAttitudeOption, TellsHeadingsInOneTurn)
{
    const std::string log = kLogHeader + LogRow("0", "10");
    const auto heading = [&](const char* bias) {
        const Outcome outcome = Measure(log, {"--attitude", "exact", "--bias", bias});
        const std::size_t row = outcome.out.find('\n') + 1;
        std::istringstream names(outcome.out.substr(0, row));
        std::istringstream cells(outcome.out.substr(row));
        std::string name;
        std::string cell;
        while (std::getline(names, name, ',') && std::getline(cells, cell, ','))
            if (name == "heading_A_deg") return std::stod(cell);
        return -1.0;
    };
    const double plain = heading("0");
    for (const char* const bias : {"90", "180", "270", "-90", "-180", "-270"}) {
        const double turned = heading(bias);
        EXPECT_GE(turned, 0.0) << bias;
        EXPECT_LT(turned, 360.0) << bias;
        EXPECT_NEAR(std::remainder(turned - plain + std::stod(bias), 360.0), 0.0, 1e-5) << bias;
    }
}

TEST(ExactAttitudeOption, IsToldAndRefusesSlopesThatCannotBe)
{
    const std::string log = kLogHeader + LogRow("0", "10");
    EXPECT_THAT(Measure(log, {"--attitude", "exact"}).err,
                HasSubstr("attitude                exact, pitch and roll as slopes\n"));
    EXPECT_THAT(Measure(log).err, Not(HasSubstr("attitude")));
    const json exact =
        json::parse(Measure(log, {"--attitude", "exact", "--pitch-roll", "turns", "--json"}).out);
    EXPECT_EQ(exact["attitude"], "exact");
    EXPECT_EQ(exact["pitch_roll"], "turns");
    EXPECT_EQ(Summary(log)["attitude"], "standard");
    const Outcome steep = Measure(kLogHeader + LogRow("60", "60"), {"--attitude", "exact"});
    EXPECT_EQ(steep.exitCode, 2);
    EXPECT_THAT(steep.err, HasSubstr(":2: the values are too large, or pitch and roll too steep, "
                                     "for a tip\n"));
    EXPECT_EQ(Measure(log, {"--attitude", "best"}).exitCode, 2);
}

} // namespace
