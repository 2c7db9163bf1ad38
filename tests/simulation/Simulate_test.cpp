// SPDX-License-Identifier: MIT
//
// tiltpole simulate as a user calls it.
#include "tests/ScratchFolder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
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

    void Write(const std::string& name, const std::string& content) const
    {
        m_folder.Write(name, content);
    }

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
    EXPECT_EQ(truth["horizontal_turn"]["extent_deg"], -380);
    EXPECT_EQ(truth["vertical_turn"]["extent_deg"], 290);
    EXPECT_EQ(truth["vertical_turn"]["axis_error_deg"], 2);
    EXPECT_EQ(truth["horizontal_turn"]["stops"].size(), 2U);
    EXPECT_EQ(truth["sensor"]["magnetometer_a"]["hard_iron_counts"][2], -3);
    EXPECT_EQ(truth["bias_a_deg"], -4);
}

// The mean of the tips is that of the eight points where nothing is noisy.
TEST_F(Simulate, MeasureReadsAWalkAndItsParameterFile)
{
    ASSERT_EQ(Run("simulate walk --out w.csv --config w.cfg --clean --hard-iron-a 50,60,70 "
                  "--silent-antenna --by-formula --points 1")
                  .exitCode,
              0);
    const Outcome with = Run("measure w.csv --pole 2 --config w.cfg --truth 4500000,500000,100 "
                             "--out tips.csv --json");
    ASSERT_EQ(with.exitCode, 0) << with.text;
    const auto lines = Content("tips.csv");
    EXPECT_THAT(lines, HasSubstr("4500000.000000,500000.000000,100.000000"));
    EXPECT_THAT(lines, HasSubstr("point_true"));
}

TEST_F(Simulate, TruthNamesTheGeometryOfThePole)
{
    const auto geometry = [this](const std::string& options) {
        EXPECT_EQ(Run("simulate walk --out w --truth t --points 1 " + options).exitCode, 0);
        return nlohmann::json::parse(Content("t"))["pole_geometry"].get<std::string>();
    };
    EXPECT_EQ(geometry(""), "rigid");
    EXPECT_EQ(geometry("--rigid"), "rigid");
    EXPECT_EQ(geometry("--by-formula"), "by_formula");
}

TEST_F(Simulate, CleanLeavesOnlyWhatIsAskedFor)
{
    ASSERT_EQ(Run("simulate walk --out w --truth t --clean --noise-a 2").exitCode, 0);
    const auto sensor = nlohmann::json::parse(Content("t"))["sensor"];
    EXPECT_EQ(sensor["magnetometer_a"]["noise_counts"], 2);
    EXPECT_EQ(sensor["magnetometer_b"]["noise_counts"], 0);
    EXPECT_EQ(sensor["magnetometer_a"]["hard_iron_counts"][0], 0);
    EXPECT_EQ(sensor["magnetometer_b"]["soft_iron"][1][0], 0);
}

TEST_F(Simulate, WritesTheVerticalTurnAlone)
{
    ASSERT_EQ(Run("simulate turns --vertical v --magnet 1:2:50:90:30 --truth t").exitCode, 0);
    EXPECT_THAT(Content("v"), StartsWith("Index,Time,dPitch,"));
    EXPECT_FALSE(std::filesystem::exists(Path("h")));
    const auto magnet = nlohmann::json::parse(Content("t"))["vertical_turn"]["magnets"][0];
    EXPECT_EQ(magnet["azimuth_deg"], 90.0);
    EXPECT_EQ(magnet["elevation_deg"], 30.0);
}

TEST_F(Simulate, TruthSaysWhatCannotBeUndone)
{
    ASSERT_EQ(
        Run("simulate turns --horizontal h --truth t --soft-iron-a 1,0,0,0,0,0,0,0,1").exitCode, 0);
    const auto sensor = nlohmann::json::parse(Content("t"))["sensor"];
    EXPECT_TRUE(sensor["magnetometer_a"]["soft_iron_inverse"].is_null());
    EXPECT_TRUE(sensor["magnetometer_b"]["soft_iron_inverse"].is_array());
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
        {"turns --horizontal h --extent 1e300",                       "not between -36000 and 36000 degrees"   },
        {"turns --horizontal h --noise-a -1",                         "is -1, not between 0 and 100000 counts" },
        {"turns --horizontal h --drop 2",                             "is 2, not between 0 and 1"              },
        {"walk --out h --drop 1",                                     "must lie from 0 to below 1"             },
        {"turns --horizontal h --gap 5:5",                            "a gap must end after it begins"         },
        {"walk --out h --gap 5:2",                                    "a gap must end after it begins"         },
        {"turns --horizontal h --magnet 5:2:100",                     "FROM must be before TO"                 },
        {"turns --horizontal h --seed -3",                            "is not an integer from 0 to"            },
        {"turns --horizontal h --start-time 25:00:00",                "is not a time of day"                   },
        {"turns --horizontal h --start-time 1:60:00",                 "is not a time of day"                   },
        {"turns --horizontal h --start-time 1:00:60",                 "is not a time of day"                   },
        {"turns --horizontal h --start-time=-1:00:00",                "number 1 is -1, not between 0 and 60"   },
        {"turns --horizontal h --start-time 1:-1:00",                 "number 2 is -1, not between 0 and 60"   },
        {"turns --horizontal h --start-time 1:00:-1",                 "number 3 is -1, not between 0 and 60"   },
        {"turns --horizontal h --start-time 1:00:1:1",                "takes hh:mm:ss, not '1:00:1:1'"         },
        {"occupations --out h --dipole 5:2:80:1:0:0",                 "FROM must be before TO"                 },
        {"turns --horizontal h --soft-iron-a 1,2,3",                  "takes XX,XY,...,ZZ"                     },
        {"walk --out h --most-lean 50",                               "the lean must lie"                      },
        {"walk --out h --rigid --by-formula",                         "--rigid excludes --by-formula"          },
        {"walk --out h --config c --soft-iron-a 1,0.1,0,0,1,0,0,0,1", "not lower triangular"                   },
        {"walk --out h --config c --soft-iron-b 1,0.1,0,0,1,0,0,0,1", "not lower triangular"                   },
        {"points --json",                                             "--json needs a file for the log"        },
        {"occupations --out h --motion jump",                         "jump not in {lean-in,"                  },
        {"occupations --out h --lean-to 70",                          "the lean, its amplitude included, must" },
        {"occupations --out h --antenna-rate 60",                     "the antenna's rate must be above 0 Hz"  },
        {"occupations --out h --antenna-noise missing.txt",           "missing.txt: "                          },
        {"occupations --out h --float 2:1:1:1:1",                     "a jump must end after it begins"        },
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

TEST_F(Simulate, OccupationsRepeatASeedAndTellTheirTips)
{
    ASSERT_EQ(
        Run("simulate occupations --points 2 --out a --truth t1 --scene s1 --seed 7").exitCode, 0);
    ASSERT_EQ(
        Run("simulate occupations --points 2 --out b --truth t2 --scene s2 --seed 7").exitCode, 0);
    EXPECT_EQ(Content("a"), Content("b"));
    EXPECT_EQ(Content("t1"), Content("t2"));
    EXPECT_THAT(Content("t1"), StartsWith("point,N,E,h,N_end,E_end,h_end\n1,4500000.000000,"));
    const auto scene = nlohmann::json::parse(Content("s1"));
    EXPECT_EQ(scene["points"].size(), 2U);
    EXPECT_EQ(scene["motion"]["kind"], "lean-in");
    EXPECT_NEAR(scene["points"][0]["tip"]["n_m"].get<double>(), 4500000.0, 1e-9);
}

TEST_F(Simulate, RowsOfOccupationsAreBlankWithoutAnEpoch)
{
    const std::string text = Run("simulate occupations --points 1 --duration 3 --clean").text;
    const auto lines = std::ranges::count(text, '\n');
    EXPECT_EQ(lines, 152); // header, 150 rows, what was written
    std::size_t blank = 0;
    for (std::size_t at = 0; (at = text.find(",,,,", at)) != std::string::npos; at += 4)
        ++blank;
    EXPECT_EQ(blank, 135U);
}

TEST_F(Simulate, CleanOccupationsHaveNoErrorsButThoseThatAreGiven)
{
    ASSERT_EQ(Run("simulate occupations --points 1 --out a --scene s --clean --axis-sd 0.2 "
                  "--gyro-bias 1,2,3")
                  .exitCode,
              0);
    const auto scene = nlohmann::json::parse(Content("s"));
    EXPECT_NE(scene["points"][0]["axis_forward_deg"], 0.0);
    EXPECT_EQ(scene["points"][0]["hard_iron_a_counts"], nlohmann::json({0.0, 0.0, 0.0}));
    EXPECT_EQ(scene["sensor"]["gyro_bias_dps"], nlohmann::json({1.0, 2.0, 3.0}));
    EXPECT_EQ(scene["sensor"]["gyro_noise_dps"], 0.0);
}

TEST_F(Simulate, MotionsHaveTheirOwnDefaultsAndTakeOthers)
{
    ASSERT_EQ(Run("simulate occupations --points 1 --out a --scene s --motion free --turn -90 "
                  "--slip 3:0.03:0:-0.01 --slip 4:0:0.02:0:1.5")
                  .exitCode,
              0);
    const auto motion = nlohmann::json::parse(Content("s"))["motion"];
    EXPECT_EQ(motion["kind"], "free");
    EXPECT_EQ(motion["duration_s"], 20.0);
    EXPECT_EQ(motion["turn_deg"], -90.0);
    EXPECT_EQ(motion["slips"][0]["by"]["h_m"], -0.01);
    EXPECT_EQ(motion["slips"][0]["duration_s"], 0.2);
    EXPECT_EQ(motion["slips"][1]["duration_s"], 1.5);
}

TEST_F(Simulate, OccupationsTakeTheFaultsThatAreGiven)
{
    ASSERT_EQ(Run("simulate occupations --points 1 --duration 3 --out a --scene s --clean "
                  "--axis 0.3,-0.2 --epoch-gap 1:2 --float 2.2:2.6:0.1:0:0.05 "
                  "--dipole 0.5:1.5:80:1:0.5:0.2:90:30")
                  .exitCode,
              0);
    const auto scene = nlohmann::json::parse(Content("s"));
    EXPECT_NEAR(scene["axis_forward_deg"].get<double>(), 0.3, 1e-9);
    EXPECT_NEAR(scene["axis_right_deg"].get<double>(), -0.2, 1e-9);
    const auto& jump = scene["jumps"][0];
    EXPECT_EQ(jump["from_s"], 2.2);
    EXPECT_EQ(jump["to_s"], 2.6);
    EXPECT_EQ(jump["by"], nlohmann::json({
                              {"n_m", 0.1 },
                              {"e_m", 0.0 },
                              {"h_m", 0.05}
    }));
    EXPECT_EQ(scene["dipoles"][0]["azimuth_deg"], 90.0);
    EXPECT_EQ(scene["dipoles"][0]["elevation_deg"], 30.0);
    const std::string log = Content("a");
    std::size_t blank = 0;
    for (std::size_t at = 0; (at = log.find(",,,,", at)) != std::string::npos; at += 4)
        ++blank;
    EXPECT_EQ(blank, 140U) << "5 epochs fewer than without the gap";
}

TEST_F(Simulate, StartsAtTheTimeOfDayThatIsGiven)
{
    ASSERT_EQ(Run("simulate turns --horizontal h --samples 60 --start-time 23:59:58.5").exitCode,
              0);
    const std::string log = Content("h");
    EXPECT_THAT(log, HasSubstr("\n0,23:59:58,"));
    EXPECT_THAT(log, HasSubstr(",00:00:00,")) << "it crosses midnight";
}

TEST_F(Simulate, SceneSaysThatTheAntennaIsARecordedOne)
{
    std::string record;
    for (int i = 0; i < 40; ++i)
        record += "500.00" + std::to_string(i % 7) + " 1000.000 50.0\n";
    Write("record.txt", record);
    const std::string line = "simulate occupations --points 1 --duration 3 --out h --scene s ";
    ASSERT_EQ(Run(line + "--antenna-noise record.txt").exitCode, 0);
    EXPECT_EQ(nlohmann::json::parse(Content("s"))["antenna_noise"], "recorded");
    ASSERT_EQ(Run(line).exitCode, 0);
    EXPECT_TRUE(nlohmann::json::parse(Content("s"))["antenna_noise"].is_object());
}

TEST_F(Simulate, RecordOfAnAntennaThatCannotBeReadIsNamed)
{
    const std::string line = "simulate occupations --out h --antenna-noise record.txt";
    Write("record.txt", "500.000 1000.000 50.0\n\n500.000 north 50.0\n");
    const Outcome text = Run(line);
    EXPECT_EQ(text.exitCode, 2);
    EXPECT_THAT(text.text,
                StartsWith("record.txt:3: does not begin with easting, northing, height"));
    Write("record.txt", "\n500.000 1000.000 50.0\n \n");
    EXPECT_THAT(Run(line).text, StartsWith("record.txt: has fewer than two positions"));
    EXPECT_FALSE(std::filesystem::exists(Path("h")));
}

// 2 mm to the north and back every other second: at full seconds the error is -1 or 1 mm.
TEST_F(Simulate, RecordedAntennaIsReplayed)
{
    std::string record;
    for (int i = 0; i < 60; ++i)
        record += i % 2 == 0 ? "500.000 1000.000 50.0 12:00:00\n" : "500.000 1000.002 50.0\n";
    Write("record.txt", record);
    ASSERT_EQ(Run("simulate occupations --points 1 --out a --motion hold --tremor 0 --clean "
                  "--lean-from 0 --start 0,0,0 --antenna-noise record.txt")
                  .exitCode,
              0);
    std::istringstream rows(Content("a"));
    std::string line;
    double most = 0.0;
    while (std::getline(rows, line)) {
        std::istringstream fields(line);
        std::string field;
        for (int i = 0; i <= 16; ++i)
            std::getline(fields, field, ',');
        if (!field.empty() && field != "x") most = std::max(most, std::fabs(std::stod(field)));
    }
    EXPECT_GT(most, 0.0007);
    EXPECT_LE(most, 0.001);
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
