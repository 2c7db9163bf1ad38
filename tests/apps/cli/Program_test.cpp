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
    };
    // clang-format on
    for (const UseCase& use : cases) {
        const Outcome outcome = RunProgram(use.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.err, use.expected);
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
