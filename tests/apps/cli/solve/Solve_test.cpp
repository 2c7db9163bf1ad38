// SPDX-License-Identifier: MIT
//
// tiltpole solve, run as a program.
#include "apps/cli/solve/SolveReport.h"
#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace {

using apps::test::LineOutcome;
using apps::test::ReadAll;
using apps::test::RunLine;
using apps::test::ScratchFolder;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Positions on a sphere of radius 2 about N 4500000, E 500000, h 100, tilts in rings.
std::string Sphere(double widest = 40.0)
{
    std::string text = "name,N,E,h,incline\n";
    for (int k = 0; k < 16; ++k) {
        const double degrees = k % 2 ? widest : widest / 2;
        const double tilt = degrees * std::numbers::pi / 180.0;
        const double azimuth = k * 0.39;
        text += fmt::format("P{},{:.4f},{:.4f},{:.4f},{}\n", k + 1,
                            4500000 + 2 * std::sin(tilt) * std::cos(azimuth),
                            500000 + 2 * std::sin(tilt) * std::sin(azimuth),
                            100 + 2 * std::cos(tilt), degrees);
    }
    return text;
}

class Solve : public testing::Test
{
protected:
    LineOutcome Run(const std::string& content, const std::string& arguments = "--height 2.0")
    {
        m_path = m_folder.Write("points.csv", content);
        return RunLine("solve " + m_path + " " + arguments);
    }
    nlohmann::json Json(const std::string& content, const std::string& arguments = "--height 2.0")
    {
        return nlohmann::json::parse(Run(content, arguments + " --json").output);
    }

    ScratchFolder m_folder;
    std::string m_path;
};

TEST_F(Solve, FindsTheTipBothWays)
{
    const LineOutcome outcome = Run(Sphere());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("grade                 1: accepted"));
    EXPECT_THAT(outcome.output, HasSubstr("Store the least-squares tip"));

    const nlohmann::json json = Json(Sphere());
    for (const char* of : {"search", "estimate"}) {
        EXPECT_NEAR(json[of]["tip"]["n_m"], 4500000.0, 0.001) << of;
        EXPECT_NEAR(json[of]["tip"]["e_m"], 500000.0, 0.001) << of;
        EXPECT_NEAR(json[of]["tip"]["h_m"], 100.0, 0.001) << of;
    }
    EXPECT_EQ(json["format"], "tiltpole solve");
    EXPECT_EQ(json["store"], true);
    EXPECT_EQ(json["search"]["grade"], 1);
    EXPECT_EQ(json["estimate"]["verdict"], "store");
}

TEST_F(Solve, RefusesValuesThatCannotBe)
{
    const auto complaint = [this](const std::string& row) {
        const LineOutcome outcome = Run("N,E,h,incline\n" + row + "\n");
        EXPECT_EQ(outcome.exitCode, 2) << row;
        return outcome.output.substr(m_path.size());
    };
    EXPECT_EQ(complaint("1e308,0,0,0"),
              ":2: N is 1e+308, not between -100000000 and 100000000 m\n");
    EXPECT_EQ(complaint("0,-2e8,0,0"),
              ":2: E is -200000000, not between -100000000 and 100000000 m\n");
    EXPECT_EQ(complaint("0,0,500000,0"), ":2: h is 500000, not between -100000 and 100000 m\n");
    EXPECT_EQ(complaint("0,0,0,400"), ":2: incline is 400, not between -360 and 360 degrees\n");
    for (const char* arguments :
         {"--height 1e9", "--height -2", "--height 2 --cutoff -1", "--height 2 --cutoff 400",
          "--height 2 --plan-error 0", "--height 2 --shared-plan-error -1"}) {
        const LineOutcome outcome = Run(Sphere(), arguments);
        EXPECT_EQ(outcome.exitCode, 2) << arguments;
        EXPECT_THAT(outcome.output, HasSubstr(", not between ")) << arguments;
    }
}

TEST_F(Solve, ListsEachPositionAsAcceptedOrRejected)
{
    const std::string close = "near,4500000.0,500000.0,102.0,0\nclose,4500000.1,500000.1,102.0,5\n"
                              "steep,4500009.0,500000.0,102.0,45.5\n";
    const nlohmann::json points = Json(Sphere() + close)["points"];
    ASSERT_EQ(points.size(), 19U);
    EXPECT_TRUE(points[0]["accepted"]);
    EXPECT_TRUE(points[16]["accepted"]);
    EXPECT_EQ(points[17]["reason"], "too close to near: 0.141 m in plan");
    EXPECT_EQ(points[18]["reason"], "incline 45.5 degrees is above the cut-off of 45");
    EXPECT_THAT(Run(Sphere() + close).output, HasSubstr("19 read, 17 accepted, 2 rejected"));
    const std::string both = close + "both,4500000.1,500000.1,102.0,50\n";
    EXPECT_EQ(Json(Sphere() + both)["points"][19]["reason"],
              "incline 50 degrees is above the cut-off of 45");
}

TEST_F(Solve, TestsNoBlankIncline)
{
    std::string points = Sphere();
    points.replace(points.find(",20\n"), 4, ",\n");
    const LineOutcome outcome = Run(points, "--height 2.0 --cutoff 10");
    EXPECT_THAT(outcome.output, HasSubstr("16 read, 1 accepted, 15 rejected"));
    EXPECT_THAT(outcome.output, HasSubstr("  P1                    accepted\n"));
}

TEST_F(Solve, AppliesTheGivenCutoff)
{
    EXPECT_THAT(Run(Sphere(), "--height 2.0 --cutoff 30").output,
                HasSubstr("8 accepted, 8 rejected"));
}

TEST_F(Solve, ReadsTheColumnsByTheirOtherNamesAndWithoutIncline)
{
    std::string text = "h;y;x\n";
    for (const char* row : {"2;0;0", "1.6;1.2;0", "1.6;0;1.2", "1.6;-1.2;0", "1.6;0;-1.2"})
        text += std::string(row) + "\n";
    const LineOutcome outcome = Run(text);
    EXPECT_THAT(outcome.output, HasSubstr("5 positions without an incline were not tested for it"));
    EXPECT_THAT(outcome.output, HasSubstr("fewer than the 15 positions"));
    EXPECT_THAT(outcome.output, HasSubstr("N 0.0000  E 0.0000"));
    EXPECT_EQ(Json(text)["points"][1]["name"], "line 3");
}

// The same positions under other names, separated by TABs; a comment stands above.
TEST_F(Solve, ReadsTablesAsOthersWriteThem)
{
    std::string text = Sphere();
    const std::string plain = Run(text).output;
    std::replace(text.begin(), text.end(), ',', '\t');
    text.replace(0, text.find('\n'), "# exported\nPoint\tNorthing [m]\tEASTING (m)\tZ_m\tTilt");
    const LineOutcome outcome = Run(text);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output,
                HasSubstr("columns                 N from Northing [m], E from EASTING (m), h from "
                          "Z_m, incline from Tilt, name from Point\n"));
    const auto tip = [](const std::string& report) {
        return report.substr(report.find("Search over"));
    };
    EXPECT_EQ(tip(outcome.output), tip(plain));
}

TEST_F(Solve, ReadsWhatMeasureWrites)
{
    const std::string tips = m_folder.Path("tips.csv");
    ASSERT_EQ(
        RunLine("measure " TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv --pole 2 --out " + tips)
            .exitCode,
        0);
    const LineOutcome outcome = RunLine("solve --height 2 " + tips);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("N from antenna_N_m, E from antenna_E_m"));
    const auto json = nlohmann::json::parse(RunLine("solve --json --height 2 " + tips).output);
    EXPECT_EQ(json["points"].size(), 2071U);
}

TEST_F(Solve, RefusesATableThatCouldBeReadTwoWays)
{
    std::string text = Sphere();
    text.replace(0, text.find('\n'), "N,Northing,E,h,incline");
    const LineOutcome outcome = Run(text);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output,
              m_path
                  + ":1: N could be the column N or the column Northing: choose with --columns\n");
}

TEST_F(Solve, TakesChosenColumnsInOneArgument)
{
    std::string text = Sphere();
    text.replace(0, text.find('\n'), "name,Hochwert,Rechtswert,Hoehe,incline");
    m_path = m_folder.Write("points.csv", text);
    const LineOutcome outcome =
        RunLine("solve --columns Hochwert,Rechtswert,Hoehe " + m_path + " --height 2");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    for (const char* wrong : {"N,E", "N=a,x=b", "N=a,N=b", "N=", "N=a,", ""})
        EXPECT_EQ(
            RunLine("solve --height 2 --columns=" + std::string(wrong) + " " + m_path).exitCode, 2)
            << wrong;
}

TEST_F(Solve, ReportsAWrongAntennaHeight)
{
    const LineOutcome outcome = Run(Sphere(), "--height 1.8");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("Store neither"));
    EXPECT_THAT(outcome.output, HasSubstr("Check the antenna height"));
}

TEST_F(Solve, NeedsFourPositions)
{
    const LineOutcome outcome = Run("N,E,h\n0,0,2\n1,0,1.7\n0,1,1.7\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("-99: fewer than four positions"));
    EXPECT_EQ(Run("N,E,h\n").exitCode, 1);
}

// Neither the search nor the estimated radius has redundancy.
TEST_F(Solve, ClaimsNothingThatFourPositionsDoNotDetermine)
{
    const std::string points = "N,E,h\n0,0,2\n0.9,0,1.786\n0,0.9,1.786\n-0.9,0,1.787\n";
    const std::string text = Run(points).output;
    EXPECT_THAT(text, Not(HasSubstr("nan")));
    EXPECT_THAT(text, HasSubstr("point error           unknown"));
    EXPECT_THAT(text,
                HasSubstr("radius, if estimated  these positions do not check the antenna height"));
    EXPECT_THAT(text, Not(HasSubstr("the limit for chance")));
    const nlohmann::json json = Json(points);
    EXPECT_TRUE(json["search"]["point_error_m"].is_null());
    EXPECT_TRUE(json["estimate"]["suspect"]["ratio"].is_null());
    EXPECT_TRUE(json["estimate"]["radius_excess_m"].is_null());
    EXPECT_TRUE(json["estimate"]["radius_excess_limit_m"].is_null());
}

// Four positions about the tip 4500000, 500000, 100 whose residuals are small by luck: the fit is
// 131 mm off.
TEST_F(Solve, StoresNothingBecauseResidualsAreSmallByLuck)
{
    const std::string points = "N,E,h\n"
                               "4499999.414594,500000.413253,101.871471\n"
                               "4500000.768827,500000.284234,101.835204\n"
                               "4499999.934221,500000.285321,101.992230\n"
                               "4499999.776435,500000.655205,101.863801\n";
    const LineOutcome outcome = Run(points);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    const nlohmann::json estimate = Json(points)["estimate"];
    EXPECT_LT(estimate["residual_rms_m"], 0.001);
    EXPECT_EQ(estimate["verdict"], "too_uncertain");
}

TEST_F(Solve, StatesTheErrorsThatItsRegionsRestOn)
{
    const std::string text = Run(Sphere()).output;
    EXPECT_THAT(text, HasSubstr("plan 8 mm, height 15 mm each; 3 and 10.5 mm shared by all; "
                                "antenna height 2 mm"));
    EXPECT_THAT(text, HasSubstr("semi-axes"));
    EXPECT_THAT(text, HasSubstr("antenna height checked only to"));
    const auto height = [this](const std::string& options) {
        return Json(Sphere(), "--height 2.0 " + options)["estimate"]["height95_m"].get<double>();
    };
    const double alone =
        height("--shared-plan-error 0 --shared-height-error 0 --antenna-height-error 0");
    const double all = height("--shared-height-error 0.02 --antenna-height-error 0");
    EXPECT_NEAR(all, std::hypot(alone, 1.96 * 0.02), 1e-4);
    EXPECT_GT(height("--antenna-height-error 0.1"), 1.9 * 0.1);
    EXPECT_EQ(Run(Sphere(), "--height 2.0 --shared-plan-error -1").exitCode, 2);
}

// A swing in a plane 0.8 m from the tip: a second tip lies 1.6 m away.
TEST_F(Solve, RejectsBothOfTwoTipsThatFit)
{
    std::string swing = "name,N,E,h\n";
    for (int k = 0; k < 20; ++k) {
        const double north = -0.8 + 0.08 * k;
        swing += fmt::format("P{},{:.3f},{:.3f},{:.3f}\n", k + 1, 4500000 + north, 500000.8,
                             100 + std::sqrt(4.0 - north * north - 0.64));
    }
    const LineOutcome outcome = Run(swing);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("second tip, fits equally"));
    EXPECT_THAT(outcome.output, HasSubstr("Store neither: the positions lie almost in one plane"));
    const nlohmann::json estimate = Json(swing)["estimate"];
    EXPECT_EQ(estimate["verdict"], "ambiguous");
    const double apart =
        estimate["tip"]["e_m"].get<double>() - estimate["other_tip"]["e_m"].get<double>();
    EXPECT_NEAR(std::fabs(apart), 1.6, 0.05);
}

TEST_F(Solve, WarnsOfANarrowCone)
{
    const LineOutcome outcome = Run(Sphere(10.0));
    EXPECT_THAT(outcome.output, HasSubstr("Warning: the positions lie in a narrow cone."));
    EXPECT_TRUE(Json(Sphere(10.0))["estimate"]["narrow_cone"]);
    EXPECT_FALSE(Json(Sphere(40.0))["estimate"]["narrow_cone"]);
    const LineOutcome stored =
        Run(Sphere(10.0), "--height 2.0 --plan-error 0.0005 --height-error 0.0005");
    EXPECT_EQ(stored.exitCode, 0);
    EXPECT_THAT(stored.output, HasSubstr(": a narrow cone\n"));
    EXPECT_THAT(stored.output, Not(HasSubstr("Warning")));
}

TEST_F(Solve, DrawsAPicture)
{
    const std::string picture = m_folder.Path("tip.svg");
    const auto grayIn = [&](const std::string& points) {
        EXPECT_EQ(Run(points, "--height 2.0 --plot " + picture).exitCode, 0);
        const std::string svg = ReadAll(picture);
        EXPECT_THAT(svg, HasSubstr("<svg"));
        int count = 0;
        for (std::size_t at = 0; (at = svg.find("rgb(55%,56%,58%)", at)) != svg.npos; ++at)
            ++count;
        return count;
    };
    const int without = grayIn(Sphere());
    EXPECT_EQ(grayIn(Sphere() + "steep,4500009,500000,102,45.5\n"), without + 2)
        << "a rejected position, and its entry in the legend";
}

// On a cone all sets of four positions lie in one plane.
TEST_F(Solve, RecommendsTheLeastSquaresTipWhereTheSearchFindsNoSphere)
{
    std::string cone = "name,N,E,h\n";
    for (int k = 0; k < 12; ++k) {
        const double azimuth = k * std::numbers::pi / 6.0;
        cone += fmt::format("P{},{:.4f},{:.4f},{:.4f}\n", k + 1, 100 + std::cos(azimuth),
                            200 + std::sin(azimuth), 100 + std::sqrt(3.0));
    }
    const std::string picture = m_folder.Path("cone.svg");
    const LineOutcome outcome = Run(cone, "--height 2.0 --plot " + picture);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("  grade                 -100: no four positions"));
    EXPECT_THAT(outcome.output, HasSubstr("\nStore the least-squares tip: "));
    EXPECT_THAT(outcome.output, Not(HasSubstr("The searched tip")));
    EXPECT_THAT(outcome.output, HasSubstr("  tip                   N 100.0000  E 200.0000  h "
                                          "100.0000 m\n"));
    EXPECT_THAT(ReadAll(picture), HasSubstr("<svg"));
}

TEST_F(Solve, NamesTheOutlierAmongManyPositions)
{
    std::string points = Sphere();
    const std::size_t at = points.find("P9,"); // 0.3 m to the side
    const std::size_t north = at + 3;
    points.replace(north, 7, "4500000");
    points.replace(points.find(',', north) + 1, 6, "500000");
    const nlohmann::json json = Json(points);
    EXPECT_EQ(json["store"], false);
    EXPECT_EQ(json["estimate"]["verdict"], "outlier");
    EXPECT_EQ(json["estimate"]["suspect"]["point"], "P9");
    EXPECT_THAT(Run(points).output,
                testing::ContainsRegex("Store neither: P9 lies [+-][0-9.]+ mm off the sphere, more "
                                       "than chance allows. Remove it or observe it again."));
}

TEST_F(Solve, NamesTheVerdictOfAWrongAntennaHeight)
{
    EXPECT_EQ(Json(Sphere(), "--height 1.8")["estimate"]["verdict"], "wrong_radius");
}

TEST_F(Solve, DrawsThePositionsWhereThereIsNoTip)
{
    const std::string picture = m_folder.Path("none.svg");
    for (const char* const points : {"N,E,h\n1,2,3\n1.5,2,3\n1,2.5,3\n", "N,E,h\n"}) {
        std::filesystem::remove(picture);
        EXPECT_EQ(Run(points, "--height 2.0 --plot " + picture).exitCode, 1);
        EXPECT_THAT(ReadAll(picture), HasSubstr("<svg")) << points;
    }
}

TEST(SolveReport, HasWordsForEachGrade)
{
    struct Case
    {
        int grade;
        const char* meaning;
        const char* advice;
    };
    constexpr const char* kMore = "observe more positions, leaning further and in all directions";
    constexpr Case kCases[] = {
        {kTiltPointAccepted,    "accepted",                                                        "nothing"                                              },
        {kTiltPointError40,     "point error above 40 mm with a geometry figure above 1.0",        kMore                                                  },
        {kTiltPointError35,     "point error above 35 mm with a geometry figure above 1.2",        kMore                                                  },
        {kTiltPointError30,     "point error above 30 mm with a geometry figure above 1.5",        kMore                                                  },
        {kTiltPointRadius,
         "point error above 20 mm, geometry figure above 1.2, radius off by more than 40 mm",      "check the antenna height, then observe more positions"},
        {kTiltPointImplausible, "the tip is above the first antenna position or too far below it",
         "check heights and antenna height, and that the tip stayed on its point"                                                                         },
        {kTiltPointTooFew,      "fewer than four positions",                                       "observe more positions"                               },
        {12345,                 "unknown",                                                         "nothing"                                              },
    };
    for (const auto& [grade, meaning, advice] : kCases) {
        EXPECT_STREQ(cli::WordsOf(grade).meaning, meaning);
        EXPECT_STREQ(cli::WordsOf(grade).advice, advice);
    }
}

struct BadInput
{
    const char* content;
    const char* arguments;
    const char* says; // after the path, where it starts with a colon
};

TEST_F(Solve, NamesWhatItCannotRead)
{
    constexpr BadInput cases[] = {
        {"N,E,h\n1,2,x\n",   "--height 2",    ":2: h is 'x', not a finite number"},
        {"N,E,h\n1,2,nan\n", "--height 2",    ":2: h is 'nan'"                   },
        {"N,E,h\n1,2\n",     "--height 2",    ":2: "                             },
        {"N,h\n1,2\n",       "--height 2",    ":1: "                             },
        {"N,E,h\n1,2,3\n",   "",              "tiltpole solve: --height"         },
        {"N,E,h\n1,2,3\n",   "--height 0",    "tiltpole solve: --height"         },
        {"N,E,h\n1,2,3\n",   "--height 2 -x", "tiltpole solve: "                 },
    };
    for (const BadInput& bad : cases) {
        const LineOutcome outcome = Run(bad.content, bad.arguments);
        EXPECT_EQ(outcome.exitCode, 2) << bad.content;
        const bool inFile = *bad.says == ':';
        EXPECT_THAT(outcome.output, StartsWith((inFile ? m_path : "") + bad.says));
        EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1);
    }
    EXPECT_EQ(RunLine("solve " + m_folder.Path("none.csv") + " --height 2").exitCode, 2);
}

TEST_F(Solve, HasAHelpPage)
{
    const LineOutcome outcome = RunLine("solve --help");
    EXPECT_EQ(outcome.exitCode, 0);
    for (const char* text : {"N, E, h", "--cutoff", "--plot", "Examples:", "Exit codes:"})
        EXPECT_THAT(outcome.output, HasSubstr(text));
}

} // namespace
