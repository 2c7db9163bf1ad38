// SPDX-License-Identifier: MIT
//
// tiltpole simulate as a user calls it.
#include "tests/ScratchFolder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Outcome
{
    int exitCode;
    std::string text; // of both outputs
};

class Simulate : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }
    std::string Content(const std::string& name) const { return m_folder.Read(name); }

    Outcome Run(const std::string& arguments) const
    {
        const std::string line = "cd '" + m_folder.Native().string()
                                 + "' && '" TILTPOLE_PROGRAM "' " + arguments + " 2>&1";
        FILE* pipe = popen(line.c_str(), "r");
        std::string text;
        std::array<char, 4096> block;
        for (std::size_t got; (got = fread(block.data(), 1, block.size(), pipe)) > 0;)
            text.append(block.data(), got);
        const int status = pclose(pipe);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
    }

private:
    ScratchFolder m_folder;
};

TEST_F(Simulate, SameSeedWritesTheSameFiles)
{
    ASSERT_EQ(Run("simulate turns --horizontal h1 --vertical v1 --truth t1 --seed 7").exitCode, 0);
    ASSERT_EQ(Run("simulate turns --horizontal h2 --vertical v2 --truth t2 --seed 7").exitCode, 0);
    ASSERT_EQ(Run("simulate turns --horizontal h3 --seed 8").exitCode, 0);
    EXPECT_EQ(Content("h1"), Content("h2"));
    EXPECT_EQ(Content("v1"), Content("v2"));
    EXPECT_EQ(Content("t1"), Content("t2"));
    EXPECT_NE(Content("h1"), Content("h3"));
    EXPECT_THAT(Content("h1"), StartsWith("Index,Time,dPitch,"));
}

TEST_F(Simulate, TruthTellsWhatTheOptionsSaid)
{
    ASSERT_EQ(Run("simulate turns --horizontal h --vertical v --truth t --extent -380,290 "
                  "--axis-error 2 --stop 90:2 --stop 120:1 --hard-iron-a 1,2,-3 --declination 4")
                  .exitCode,
              0);
    const auto truth = nlohmann::json::parse(Content("t"));
    EXPECT_EQ(truth["horizontal_turn"]["extent"], -380);
    EXPECT_EQ(truth["vertical_turn"]["extent"], 290);
    EXPECT_EQ(truth["vertical_turn"]["axis_error"], 2);
    EXPECT_EQ(truth["horizontal_turn"]["stops"].size(), 2U);
    EXPECT_EQ(truth["sensor"]["magnetometer_a"]["hard_iron"][2], -3);
    EXPECT_EQ(truth["bias_angle_a"], -4);
}

// The mean of the tips is that of the eight points where nothing is noisy.
TEST_F(Simulate, MeasureReadsAWalkAndItsParameterFile)
{
    ASSERT_EQ(Run("simulate walk --out w.csv --config w.cfg --clean --hard-iron-a 50,60,70 "
                  "--silent-antenna --points 1")
                  .exitCode,
              0);
    const Outcome with = Run("measure w.csv --pole 2 --config w.cfg --truth 4500000,500000,100 "
                             "--out tips.csv --json");
    ASSERT_EQ(with.exitCode, 0) << with.text;
    const auto lines = Content("tips.csv");
    EXPECT_THAT(lines, HasSubstr("4500000.000000,500000.000000,100.000000"));
    EXPECT_THAT(lines, HasSubstr("point_true"));
}

TEST_F(Simulate, CleanLeavesOnlyWhatIsAskedFor)
{
    ASSERT_EQ(Run("simulate walk --out w --truth t --clean --noise-a 2").exitCode, 0);
    const auto sensor = nlohmann::json::parse(Content("t"))["sensor"];
    EXPECT_EQ(sensor["magnetometer_a"]["noise"], 2);
    EXPECT_EQ(sensor["magnetometer_b"]["noise"], 0);
    EXPECT_EQ(sensor["magnetometer_a"]["hard_iron"][0], 0);
    EXPECT_EQ(sensor["magnetometer_b"]["soft_iron"][1][0], 0);
}

TEST_F(Simulate, PointsStandApartEnoughToBeTaken)
{
    const Outcome outcome = Run("simulate points --points 15 --seed 3");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.text, HasSubstr("name,x,y,h,incline,"));
    EXPECT_THAT(outcome.text, HasSubstr("\nP15,"));
}

TEST_F(Simulate, BadOptionsAreOneSentenceAndWriteNothing)
{
    struct Case
    {
        const char* options;
        const char* reason;
    };
    constexpr Case cases[] = {
        {"turns",                                                     "give a log to write"                    },
        {"turns --horizontal h --stop 400:1",                         "a stop lies outside the turn"           },
        {"turns --horizontal h --stop 40",                            "--stop: takes DEGREES:SECONDS, not '40'"},
        {"turns --horizontal h --extent abc",                         "'abc' is not a finite number"           },
        {"turns --horizontal h --extent nan",                         "'nan' is not a finite number"           },
        {"turns --horizontal h --extent 1e300",                       "'1e300' is too large"                   },
        {"turns --horizontal h --noise-a -1",                         "'-1' is negative"                       },
        {"turns --horizontal h --drop 2",                             "must lie from 0 to below 1"             },
        {"walk --out h --drop 1",                                     "must lie from 0 to below 1"             },
        {"turns --horizontal h --gap 5:5",                            "a gap must end after it begins"         },
        {"walk --out h --gap 5:2",                                    "a gap must end after it begins"         },
        {"turns --horizontal h --magnet 5:2:100",                     "FROM must be before TO"                 },
        {"turns --horizontal h --seed -3",                            "is not an integer from 0 up"            },
        {"turns --horizontal h --start-time 25:00:00",                "is not a time of day"                   },
        {"turns --horizontal h --soft-iron-a 1,2,3",                  "takes XX,XY,...,ZZ"                     },
        {"walk --out h --most-lean 50",                               "the lean must lie"                      },
        {"walk --out h --config c --soft-iron-a 1,0.1,0,0,1,0,0,0,1", "not lower triangular"                   },
        {"points --out h --most-lean 10",                             "there is only room for"                 },
    };
    for (const Case& c : cases) {
        const Outcome outcome = Run(std::string("simulate ") + c.options);
        EXPECT_EQ(outcome.exitCode, 2) << c.options;
        EXPECT_THAT(outcome.text, HasSubstr(c.reason));
        EXPECT_EQ(std::ranges::count(outcome.text, '\n'), 1) << outcome.text;
        EXPECT_FALSE(std::filesystem::exists(Path("h"))) << c.options;
    }
}

TEST_F(Simulate, LogThatCannotBeWrittenIsNamed)
{
    const Outcome outcome = Run("simulate walk --out nowhere/w.csv");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.text, StartsWith("nowhere/w.csv: cannot be written"));
}

TEST_F(Simulate, HelpPagesTellTheKindsAndTheirOptions)
{
    EXPECT_THAT(Run("simulate --help").text, HasSubstr("points"));
    for (const char* option : {"--horizontal", "--turn-back", "--magnet", "--seed", "--config"})
        EXPECT_THAT(Run("simulate turns --help").text, HasSubstr(option));
}

} // namespace
