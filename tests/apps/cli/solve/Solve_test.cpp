// SPDX-License-Identifier: MIT
//
// tiltpole solve, run as a program.
#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"

#include <cmath>
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
        EXPECT_NEAR(json[of]["tip"]["N"], 4500000.0, 0.001) << of;
        EXPECT_NEAR(json[of]["tip"]["E"], 500000.0, 0.001) << of;
        EXPECT_NEAR(json[of]["tip"]["h"], 100.0, 0.001) << of;
    }
    EXPECT_EQ(json["order"], "N,E,h");
    EXPECT_EQ(json["search"]["status"], 1);
    EXPECT_EQ(json["estimate"]["verdict"], "store");
}

TEST_F(Solve, ListsEachPositionAsAcceptedOrRejected)
{
    const std::string close = "near,4500000.0,500000.0,102.0,0\nclose,4500000.1,500000.1,102.0,5\n"
                              "steep,4500009.0,500000.0,102.0,45.5\n";
    const nlohmann::json points = Json(Sphere() + close)["points"];
    ASSERT_EQ(points.size(), 19U);
    EXPECT_TRUE(points[0]["taken"]);
    EXPECT_TRUE(points[16]["taken"]);
    EXPECT_EQ(points[17]["reason"], "too close to near: 0.141 m in plan");
    EXPECT_EQ(points[18]["reason"], "incline 45.5 degrees is above the cut-off of 45");
    EXPECT_THAT(Run(Sphere() + close).output, HasSubstr("19 read, 17 accepted, 2 rejected"));
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
    EXPECT_TRUE(json["search"]["point_error"].is_null());
    EXPECT_TRUE(json["estimate"]["suspect"]["ratio"].is_null());
    EXPECT_TRUE(json["estimate"]["radius_excess"].is_null());
    EXPECT_TRUE(json["estimate"]["radius_excess_limit"].is_null());
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
    EXPECT_LT(estimate["residual_rms"], 0.001);
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
        return Json(Sphere(), "--height 2.0 " + options)["estimate"]["height95"].get<double>();
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
        estimate["tip"]["E"].get<double>() - estimate["other_tip"]["E"].get<double>();
    EXPECT_NEAR(std::fabs(apart), 1.6, 0.05);
}

TEST_F(Solve, WarnsOfANarrowCone)
{
    const LineOutcome outcome = Run(Sphere(10.0));
    EXPECT_THAT(outcome.output, HasSubstr("Warning: the positions lie in a narrow cone."));
    EXPECT_TRUE(Json(Sphere(10.0))["estimate"]["narrow_cone"]);
    EXPECT_FALSE(Json(Sphere(40.0))["estimate"]["narrow_cone"]);
}

TEST_F(Solve, DrawsAPicture)
{
    const std::string picture = m_folder.Path("tip.svg");
    EXPECT_EQ(Run(Sphere(), "--height 2.0 --plot " + picture).exitCode, 0);
    EXPECT_THAT(ReadAll(picture), HasSubstr("<svg"));
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
