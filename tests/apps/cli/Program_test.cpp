// SPDX-License-Identifier: MIT
#include "tests/apps/cli/RunProgram.h"
#include "tests/apps/cli/ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cli::test::Outcome;
using cli::test::RunProgram;
using testing::HasSubstr;
using testing::StartsWith;

struct UseCase
{
    std::vector<std::string> arguments;
    std::string expected;
};

TEST(Program, WrongUseIsOneSentenceAndExitCode2)
{
    const UseCase cases[] = {
        {{},                         "tiltpole: a command is required (tiltpole --help tells more)\n"     },
        {{"measur"},                 "tiltpole: there is no command measur (tiltpole --help tells more)\n"},
        {{"--fast"},                 "tiltpole: there is no option --fast (tiltpole --help tells more)\n" },
        {{"measure", "--pole", "2"},
         "tiltpole measure: LOG is required (tiltpole measure --help tells more)\n"                       },
        {{"transform"},
         "tiltpole transform: a command is required (tiltpole transform --help tells more)\n"             },
        {{"simulate", "wlak"},
         "tiltpole simulate: there is no command wlak (tiltpole simulate --help tells more)\n"            },
        {{"transform", "fit"},
         "tiltpole transform fit: PAIRS is required (tiltpole transform fit --help tells more)\n"         },
    };
    for (const UseCase& use : cases) {
        const Outcome outcome = RunProgram(use.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.err, use.expected);
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(Program, NoCommandReplacesWhatItReads)
{
    const cli::test::ScratchFolder folder;
    const std::string file = folder.Write("data.csv", "x,y\n1,2\n");
    const std::vector<std::string> commands[] = {
        {"measure",   file,       "--pole", "2",            "--out", file   },
        {     "measure",        "-", "--config",     file,       "--pole",     "2", "--out", file},
        { "transform", "apply",    file,     "--parameters", file,    "--out", file},
        {"transform", "fit",      file,     "--out",        file   },
        {  "calibrate",       "--horizontal",     file,     "--vertical",     file,    "--report",        file},
    };
    for (const auto& command : commands) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err, file + ": is read by this command; name another file to write\n");
        EXPECT_EQ(cli::test::ReadAll(file), "x,y\n1,2\n");
    }
}

TEST(Program, HelpGoesToStandardOutput)
{
    const Outcome help = RunProgram({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("measure"));
    EXPECT_EQ(help.err, "");
}

TEST(Program, SaysItsVersion)
{
    const Outcome version = RunProgram({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, StartsWith("tiltpole "));
}

} // namespace
