// SPDX-License-Identifier: MIT
//
// The gallery as a program: its options, its example log, what it does without a screen.
#include "tests/ScratchFolder.h"
#include "tests/apps/RunProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using testing::HasSubstr;
using testing::StartsWith;

// A variable of the environment for a scope; null removes it.
class Variable
{
public:
    Variable(const char* name, const char* value) : m_name(name)
    {
        if (const char* before = std::getenv(name)) m_before = before;
        Set(value);
    }
    ~Variable() { Set(m_before ? m_before->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Set(const char* value) const
    {
        if (value)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

TEST(Gallery, PrintsItsVersionAndItsHelpPage)
{
    const Outcome version = RunProgram({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, testing::MatchesRegex("tiltpole-gallery [0-9.]+\n"));
    const Outcome help = RunProgram({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, testing::AllOf(HasSubstr("--render"), HasSubstr("space pauses")));
    EXPECT_EQ(version.err + help.err, "");
}

TEST(Gallery, RefusesArgumentsItHasNoUseForInOneSentence)
{
    const std::vector<std::vector<std::string>> wrong = {
        {"--bogus"},
        {"a.csv",   "b.csv"},
        {"--render"        }
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const Outcome outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << arguments[0];
        EXPECT_THAT(outcome.err, StartsWith("tiltpole-gallery: "));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

// No display is named, or the one that is named does not answer.
TEST(Gallery, SaysThatThereIsNoScreen)
{
    const Variable noPlatform("QT_QPA_PLATFORM", nullptr);
    const Variable noWayland("WAYLAND_DISPLAY", nullptr);
    for (const char* display : {static_cast<const char*>(nullptr), ":4711"}) {
        const Variable dead("DISPLAY", display);
        const Outcome outcome = RunProgram({});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_THAT(outcome.err, StartsWith("tiltpole-gallery: there is no screen"));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST(Gallery, RefusesALogWithoutSamples)
{
    const ScratchFolder folder;
    const Variable memory("QT_QPA_PLATFORM", "offscreen");
    const Variable state("XDG_STATE_HOME", folder.Native().c_str());
    const Outcome outcome =
        RunProgram({folder.Write("empty.csv", "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,"
                                              "dMag_y_2,dMag_z_2,x,y,h\n")});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("empty.csv: there are no samples"));
}

// The window, without anybody who looks at it: it plays the log that comes with the program.
TEST(Gallery, KeepsItsViewsBelowTheStateHome)
{
    const ScratchFolder state;
    const Variable memory("QT_QPA_PLATFORM", "offscreen");
    const Variable home("XDG_STATE_HOME", state.Native().c_str());
    const Variable runtime("XDG_RUNTIME_DIR", state.Native().c_str());
    const std::string view = state.Path("tiltpole/GraphMagnetic_XY.cfg");
    const Outcome outcome = apps::test::RunProgramAndSignal(
        {}, "", [&] { return std::filesystem::exists(view); }, SIGTERM);
    EXPECT_EQ(outcome.exitCode, -SIGTERM);
    EXPECT_THAT(state.Read("tiltpole/GraphMagnetic_XY.cfg"), StartsWith("GRAPHMAGNETIC_XY:"));
}

// A prefix that has been moved: the program in bin, its log in share.
TEST(Gallery, FindsItsExampleLogWhereverItsPrefixIs)
{
    const ScratchFolder prefix;
    std::filesystem::create_directories(prefix.Path("bin"));
    std::filesystem::create_directories(prefix.Path("share/tiltpole"));
    std::filesystem::copy_file(TILTPOLE_PROGRAM, prefix.Path("bin/tiltpole-gallery"));
    const auto run = [&] {
        const std::string line = "cd / && '" + prefix.Path("bin/tiltpole-gallery") + "' --render '"
                                 + prefix.Path("pictures") + "' >'" + prefix.Path("out") + "' 2>'"
                                 + prefix.Path("err") + "'";
        return std::system(line.c_str());
    };
    const Variable runtime("XDG_RUNTIME_DIR", prefix.Native().c_str());
    EXPECT_NE(run(), 0);
    EXPECT_EQ(prefix.Read("err"),
              "tiltpole-gallery: " + prefix.Path("share/tiltpole/pole-replay.csv")
                  + ": No such file or directory\n");
    std::ofstream(prefix.Path("share/tiltpole/pole-replay.csv"))
        << "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n"
           "1,2,300,400,500,-300,-400,500,1000,2000,100\n";
    EXPECT_EQ(run(), 0) << prefix.Read("err");
    EXPECT_THAT(prefix.Read("out"), HasSubstr("/gallery.png"));
}

} // namespace
