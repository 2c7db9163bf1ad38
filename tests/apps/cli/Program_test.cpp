// SPDX-License-Identifier: MIT
#include "tests/apps/RunProgram.h"
#include "tests/apps/ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using testing::HasSubstr;
using testing::StartsWith;

struct UseCase
{
    std::vector<std::string> arguments;
    std::string expected;
};

TEST(Program, ReportsWrongUseInOneSentenceWithExitCode2)
{
    // clang-format off
    const UseCase cases[] = {
        {{},                         "tiltpole: a command is required (see tiltpole --help)\n"},
        {{"measur"},                 "tiltpole: there is no command measur (see tiltpole --help)\n"},
        {{"--fast"},                 "tiltpole: there is no option --fast (see tiltpole --help)\n"},
        {{"measure", "--pole", "2"}, "tiltpole measure: LOG is required (see tiltpole measure --help)\n"},
        {{"transform"},              "tiltpole transform: a command is required (see tiltpole transform --help)\n"},
        {{"simulate", "wlak"},       "tiltpole simulate: there is no command wlak (see tiltpole simulate --help)\n"},
        {{"transform", "fit"},       "tiltpole transform fit: PAIRS is required (see tiltpole transform fit --help)\n"},
        {{"measure", "a", "--pole"}, "tiltpole measure: --pole needs a value (see tiltpole measure --help)\n"},
        {{"measure", "a", "--pole", "2", "--pole", "3"},
         "tiltpole measure: --pole is given more than once (see tiltpole measure --help)\n"},
        {{"measure", "a", "--pole", "2", "--out", "-", "--json"},
         "<stdout>: is asked for by two outputs; give one of them a file\n"},
        {{"simulate", "walk", "--pole", "1e9"},
         "tiltpole simulate walk: --pole: is 1000000000, not between 0.01 and 100 m (see tiltpole simulate walk --help)\n"},
        {{"simulate", "points", "--tip", "1e9,0,0"},
         "tiltpole simulate points: --tip: N is 1000000000, not between -100000000 and 100000000 m (see tiltpole simulate points --help)\n"},
    };
    // clang-format on
    for (const UseCase& use : cases) {
        const Outcome outcome = RunProgram(use.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.err, use.expected);
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(Program, SimulatesOnlyWhatCanBe)
{
    // clang-format off
    const UseCase cases[] = {
        {{"walk", "--rate", "0"},             "--rate: is 0, not between 0.001 and 10000 Hz"},
        {{"walk", "--dwell", "-1"},           "--dwell: is -1, not between 0 and 1000000 s"},
        {{"walk", "--strength", "1e6"},       "--strength: is 1000000, not between 0 and 100000 counts"},
        {{"walk", "--dip", "91"},             "--dip: is 91, not between -90 and 90 degrees"},
        {{"walk", "--acc-noise", "1e9"},      "--acc-noise: is 1000000000, not between 0 and 100 g"},
        {{"walk", "--white-plan", "101"},     "--white-plan: is 101, not between 0 and 100 m"},
        {{"walk", "--hard-iron-b", "1,2,-2e5"}, "--hard-iron-b: number 3 is -200000, not between -100000 and 100000 counts"},
        {{"walk", "--soft-iron-a", "1,0,0,0,11,0,0,0,1"}, "--soft-iron-a: number 5 is 11, not between -10 and 10"},
        {{"walk", "--magnet", "0:5:7:400"},   "--magnet: number 4 is 400, not between -360 and 360 degrees"},
        {{"walk", "--magnet-at-b", "1e3"},    "--magnet-at-b: is 1000, not between -100 and 100"},
        {{"walk", "--gap", "0:1e7"},          "--gap: number 2 is 10000000, not between 0 and 1000000 s"},
        {{"walk", "--drop", "2"},             "--drop: is 2, not between 0 and 1"},
        {{"walk", "--start-time", "10:70:0"}, "--start-time: number 2 is 70, not between 0 and 60"},
        {{"walk", "--points", "1e9"},         "--points: '1e9' is not an integer from 1 to 1000000"},
        {{"walk", "--seed", "18446744073709551616"}, "--seed: '18446744073709551616' is not an integer from 0 to 18446744073709551615"},
        {{"turns", "--extent", "380,1e5"},    "--extent: number 2 is 100000, not between -36000 and 36000 degrees"},
        {{"turns", "--axis-error", "100"},    "--axis-error: number 1 is 100, not between -90 and 90 degrees"},
        {{"turns", "--stop", "-5:1"},         "--stop: number 1 is -5, not between 0 and 36000 degrees"},
        {{"turns", "--samples", "1"},         "--samples: '1' is not an integer from 2 to 10000000"},
        {{"points", "--width", "400"},        "--width: is 400, not between 0 and 360 degrees"},
        {{"points", "--spacing", "1e5"},      "--spacing: is 100000, not between 0 and 10000 m"},
        {{"points", "--outliers", "-1"},      "--outliers: '-1' is not an integer from 0 to 1000000"},
    };
    // clang-format on
    for (const UseCase& use : cases) {
        std::vector<std::string> arguments = {"simulate"};
        arguments.insert(arguments.end(), use.arguments.begin(), use.arguments.end());
        const Outcome outcome = RunProgram(arguments);
        const std::string name = "tiltpole simulate " + use.arguments[0];
        EXPECT_EQ(outcome.exitCode, 2) << use.expected;
        EXPECT_EQ(outcome.err, name + ": " + use.expected + " (see " + name + " --help)\n");
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(Program, NoCommandOverwritesItsInput)
{
    const apps::test::ScratchFolder folder;
    const std::string file = folder.Write("data.csv", "x,y\n1,2\n");
    // clang-format off
    const std::vector<std::string> commands[] = {
        {"measure", file, "--pole", "2", "--out", file},
        {"measure", "-", "--config", file, "--pole", "2", "--out", file},
        {"transform", "apply", file, "--parameters", file, "--out", file},
        {"transform", "fit", file, "--out", file},
        {"calibrate", "--horizontal", file, "--vertical", file, "--report", file},
    };
    // clang-format on
    for (const auto& command : commands) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err,
                  file + ": is an input of this command; choose another output file\n");
        EXPECT_EQ(apps::test::ReadAll(file), "x,y\n1,2\n");
    }
}

// A device or pipe without an end must not fill the memory.
TEST(Program, RejectsInputWithoutEnd)
{
    const std::vector<std::string> devices[] = {
        {"measure", "-", "--pole",       "2",  "--config",     "/dev/zero"},
        {"transform",         "apply",  "-", "--parameters", "/dev/zero"},
    };
    for (const auto& command : devices) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err, "/dev/zero: is larger than 64 MiB\n");
        EXPECT_LT(outcome.peakMemory, 512 * 1024) << "KiB; a sanitizer holds what was freed";
    }

    std::string block = "N,E,h\n";
    const Outcome solve = RunProgram({"solve", "-", "--height", "2"}, [&block] {
        std::string next = std::move(block);
        block.clear();
        while (block.size() < 1 << 16)
            block += "4500000.123,500000.456,100.789\n";
        return next;
    });
    EXPECT_EQ(solve.exitCode, 2);
    EXPECT_EQ(solve.err, "<stdin>: is larger than 64 MiB\n");
}

TEST(Program, HelpGoesToStandardOutput)
{
    const Outcome help = RunProgram({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("measure"));
    EXPECT_EQ(help.err, "");
}

TEST(Program, PrintsItsVersion)
{
    const Outcome version = RunProgram({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, StartsWith("tiltpole "));
}

} // namespace
