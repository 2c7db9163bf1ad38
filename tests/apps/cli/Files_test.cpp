// SPDX-License-Identifier: MIT
//
// What the programs do with files and standard streams that are not as usual.
#include "tests/apps/RunProgram.h"
#include "tests/apps/ScratchFile.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using apps::test::Outcome;
using apps::test::ReadAll;
using apps::test::RunProgram;
using apps::test::RunProgramWithClosed;
using testing::HasSubstr;
using Words = std::vector<std::string>;

class Files : public testing::Test
{
protected:
    apps::test::ScratchFolder m_folder;

    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    Words Walk(const std::string& out) const
    {
        return {"simulate", "walk", "--points", "2", "--out", out};
    }

    // A log that can be measured.
    std::string Log() const
    {
        EXPECT_EQ(RunProgram(Walk(Path("walk.csv"))).exitCode, 0);
        return Path("walk.csv");
    }

    Words Calibration(const Words& more) const
    {
        if (!fs::exists(Path("h.csv"))) {
            const Outcome turns =
                RunProgram({"simulate", "turns", "--horizontal", Path("h.csv"), "--vertical",
                            Path("v.csv"), "--config", Path("true.cfg")});
            EXPECT_EQ(turns.exitCode, 0) << turns.err;
        }
        Words words = {"calibrate", "--horizontal", Path("h.csv"), "--vertical", Path("v.csv")};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    // Every command with a file to write, and that file is `out`.
    std::vector<Words> CommandsThatWrite(const std::string& out) const
    {
        const std::string log = Log();
        const std::string points = m_folder.Write("points.csv", "name,x,y\na,1,2\n");
        const std::string pairs = m_folder.Write(
            "pairs.csv", "x_source,y_source,x_target,y_target\n0,0,1,1\n9,0,10,1\n0,9,1,10\n");
        const std::string parameters =
            m_folder.Write("fit.json", R"({"scale":1,"rotation":0,"dx":1,"dy":2})");
        // clang-format off
        return {
            Walk(out),
            {"simulate", "walk", "--points", "2", "--out", Path("w"), "--truth", out},
            {"simulate", "walk", "--points", "2", "--out", Path("w"), "--config", out},
            {"simulate", "points", "--out", out},
            {"simulate", "turns", "--horizontal", out},
            {"measure", log, "--pole", "2", "--out", out},
            {"transform", "fit", pairs, "--out", out},
            {"transform", "apply", points, "--parameters", parameters, "--out", out},
            Calibration({"--out", out}),
            Calibration({"--report", out}),
        };
        // clang-format on
    }

    mode_t ModeOf(const std::string& path) const
    {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }
};

TEST_F(Files, AreWholeWhereStandardStreamsAreClosed)
{
    const Outcome usual = RunProgram(Walk(Path("usual.csv")));
    const std::string content = ReadAll(Path("usual.csv"));
    ASSERT_NE(content, "");
    // clang-format off
    const std::vector<std::vector<int>> closed = {{0}, {1}, {2}, {0, 1}, {1, 2}, {0, 1, 2}};
    // clang-format on
    for (const auto& streams : closed) {
        const std::string path = Path("closed.csv");
        const Outcome outcome = RunProgramWithClosed(streams, Walk(path));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(ReadAll(path), content) << streams.size() << " from " << streams[0];
        EXPECT_EQ(outcome.err.empty(), streams.back() == 2);
        fs::remove(path);
    }
}

// What is only said must not decide how a run ends.
TEST_F(Files, AFullStandardErrorChangesNoExitCode)
{
    const std::string log = Log();
    const std::string bad = m_folder.Write("bad.csv", ReadAll(log) + "not a row\n");
    const std::string none = m_folder.Write("none.csv", "N,E,h,pitch,roll\n");
    const std::string mirrored = m_folder.Write(
        "pairs.csv", "x_source,y_source,x_target,y_target\n0,0,0,0\n9,1,1,9\n0,5,5,0\n");
    const std::string one = m_folder.Write("one.csv", "x_source,y_source,x_target,y_target\n");
    const std::string points = m_folder.Write("points.csv", "x,y\n1,2\n");
    const std::string turned =
        m_folder.Write("fit.json", R"({"scale":1,"rotation":0,"dx":1,"dy":2,"x0":5,"y0":5})");
    struct Case
    {
        Words command;
        int exitCode;
    };
    // clang-format off
    const Case cases[] = {
        {{"measure", log, "--pole", "2"}, 0},
        {{"measure", bad, "--pole", "2", "--skip-bad"}, 0},
        {{"measure", none, "--pole", "2"}, 2},
        {Walk(Path("w.csv")), 0},
        {{"simulate", "points", "--out", Path("p.csv")}, 0},
        {{"simulate", "turns", "--samples", "9", "--horizontal", Path("t.csv")}, 0},
        {{"transform", "fit", mirrored, "--out", Path("f.json")}, 1},
        {{"transform", "fit", one}, 1},
        {{"transform", "apply", points, "--parameters", turned, "--inverse"}, 0},
        {{"calibrate", "--horizontal", Path("t.csv"), "--vertical", Path("t.csv"), "--out", Path("c.cfg")}, 1},
        {{"measure"}, 2},
    };
    // clang-format on
    for (const Case& c : cases) {
        const Outcome usual = RunProgram(c.command);
        EXPECT_EQ(usual.exitCode, c.exitCode) << c.command[0] << ' ' << c.command[1] << usual.err;
        const Outcome full = apps::test::RunProgramWithErrorsInto("/dev/full", c.command);
        EXPECT_EQ(full.exitCode, c.exitCode) << c.command[0] << ' ' << c.command[1];
        EXPECT_EQ(full.out, usual.out) << c.command[0] << ' ' << c.command[1];
    }
}

TEST_F(Files, RowsForAClosedStandardOutputAreAFailure)
{
    const std::string log = Log();
    // clang-format off
    const std::vector<Words> commands = {
        {"measure", log, "--pole", "2"}, Walk("-"), {"--help"}, {"--version"}, {"measure", "--help"},
    };
    // clang-format on
    for (const Words& command : commands) {
        const Outcome outcome = RunProgramWithClosed({1}, command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err, "<stdout>: cannot be written: it is closed\n");
    }
}

TEST_F(Files, RowsFromAClosedStandardInputAreAFailure)
{
    const Outcome outcome = RunProgramWithClosed({0}, {"measure", "-", "--pole", "2"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("<stdin>"));
}

TEST_F(Files, AFullDeviceIsNamedByEveryCommand)
{
    for (const Words& command : CommandsThatWrite("/dev/full")) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0] << ' ' << command[1];
        EXPECT_EQ(outcome.err, "/dev/full: cannot be written: No space left on device\n");
    }
    // clang-format off
    const std::vector<Words> onStandardOutput = {
        {"--help"}, {"--version"}, {"solve", "--help"}, Walk("-"),
        {"measure", Path("walk.csv"), "--pole", "2"},
    };
    // clang-format on
    for (const Words& command : onStandardOutput) {
        const Outcome outcome = apps::test::RunProgramInto("/dev/full", command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err, "<stdout>: cannot be written: No space left on device\n");
    }
}

TEST_F(Files, KeepTheirPermissionsWhateverWritesThem)
{
    const std::string out = m_folder.Write("out", "old");
    ASSERT_EQ(chmod(out.c_str(), 0600), 0);
    for (const Words& command : CommandsThatWrite(out)) {
        const std::size_t before = m_folder.Names().size();
        EXPECT_EQ(RunProgram(command).exitCode, 0) << command[0] << ' ' << command[1];
        EXPECT_EQ(ModeOf(out), 0600u);
        EXPECT_NE(ReadAll(out), "old");
        EXPECT_LE(m_folder.Names().size(), before + 1) << "the other output of simulate";
        m_folder.Write("out", "old");
    }
}

TEST_F(Files, ThatAreReadOnlyStayAsTheyAre)
{
    const std::string out = m_folder.Write("out", "old");
    ASSERT_EQ(chmod(out.c_str(), 0444), 0);
    for (const Words& command : CommandsThatWrite(out)) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0] << ' ' << command[1];
        EXPECT_THAT(outcome.err, HasSubstr(out + ": is a read-only file"));
        EXPECT_EQ(ReadAll(out), "old");
    }
}

// One of two outputs may not be written.
TEST_F(Files, OfOneCommandAreAllReplacedOrNone)
{
    const std::string log = Log();
    ASSERT_EQ(
        RunProgram({"simulate", "occupations", "--points", "1", "--out", Path("o.csv")}).exitCode,
        0);
    ASSERT_EQ(RunProgram(Calibration({"--out", Path("pole.cfg")})).exitCode, 0);
    const std::string record = ReadAll(Path("pole.cfg.json"));
    const std::string out = m_folder.Write("out", "old");
    const std::string locked = m_folder.Write("locked.svg", "old");
    for (const std::string& path : {locked, Path("pole.cfg.json")})
        ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    m_folder.Write("pole.cfg", "old");
    // clang-format off
    const Words commands[] = {
        {"simulate", "walk", "--points", "2", "--out", out, "--truth", locked},
        {"simulate", "walk", "--points", "2", "--out", locked, "--config", out},
        {"simulate", "walk", "--points", "2", "--out", out, "--config", locked},
        {"simulate", "points", "--out", out, "--truth", locked},
        {"simulate", "points", "--out", locked, "--truth", out},
        {"simulate", "occupations", "--points", "1", "--out", out, "--scene", locked},
        {"simulate", "occupations", "--points", "1", "--out", locked, "--truth", out},
        {"simulate", "turns", "--horizontal", out, "--vertical", locked},
        {"measure", log, "--pole", "2", "--out", out, "--plot", locked},
        {"occupy", Path("o.csv"), "--pole", "2", "--out", out, "--plot", locked},
        Calibration({"--report", out, "--plot", locked}),
        Calibration({"--report", out, "--out", Path("pole.cfg"), "--bias", "3"}),
    };
    // clang-format on
    for (const Words& command : commands) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0] << ' ' << command[1];
        EXPECT_THAT(outcome.err, HasSubstr(": is a read-only file"));
        EXPECT_EQ(ReadAll(out), "old") << command[0] << ' ' << command[1];
    }
    EXPECT_EQ(ReadAll(Path("pole.cfg")), "old");
    EXPECT_EQ(ReadAll(Path("pole.cfg.json")), record);
}

TEST_F(Files, BesideAStandardOutputThatIsClosedAreWritten)
{
    const Outcome outcome = apps::test::RunProgramIntoClosedPipe(
        {"simulate", "walk", "--points", "9", "--config", Path("a.cfg"), "--truth", Path("t")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(ReadAll(Path("a.cfg")), HasSubstr("MagneticA"));
    EXPECT_THAT(ReadAll(Path("t")), HasSubstr("walk"));
}

TEST_F(Files, OfOtherNamesAreNeverTouched)
{
    const Words others = {"pole.cfg.new", "pole.cfg.part", "pole.cfg.tmp", "pole.cfg~"};
    for (const std::string& name : others)
        m_folder.Write(name, "another's");
    EXPECT_EQ(RunProgram(Calibration({"--out", Path("pole.cfg")})).exitCode, 0);
    for (const std::string& name : others)
        EXPECT_EQ(ReadAll(Path(name)), "another's") << name;
}

TEST_F(Files, BehindALinkAreMadeThere)
{
    fs::create_directory(Path("data"));
    fs::create_symlink("data/pole.cfg", Path("pole.cfg"));
    EXPECT_EQ(RunProgram(Calibration({"--out", Path("pole.cfg")})).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(Path("pole.cfg")));
    EXPECT_TRUE(fs::is_regular_file(Path("data/pole.cfg")));
}

TEST_F(Files, ThatArePipesAreWrittenThrough)
{
    const std::string pipe = Path("pipe");
    const Words command = Calibration({"--out", pipe});
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = ReadAll(pipe); });
    EXPECT_EQ(RunProgram(command).exitCode, 0);
    const int end = open(pipe.c_str(), O_WRONLY | O_NONBLOCK); // for a reader that still waits
    close(end);
    reader.join();
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_THAT(received, HasSubstr("[MagneticA.a]"));
}

TEST_F(Files, MayBeNamedByAnyBytes)
{
    const std::string log = Log();
    const std::string out = Path("t\xffips \xc3\n.csv");
    EXPECT_EQ(RunProgram({"measure", log, "--pole", "2", "--out", out}).exitCode, 0);
    EXPECT_TRUE(fs::exists(out));
    const std::string config = Path("p\xff.cfg");
    EXPECT_EQ(RunProgram(Calibration({"--out", config})).exitCode, 0);
    EXPECT_THAT(ReadAll(config), HasSubstr("[MagneticA.a]"));
    const Outcome measured = RunProgram({"measure", log, "--pole", "2", "--config", config});
    EXPECT_EQ(measured.exitCode, 0) << measured.err;
}

TEST_F(Files, AreWholeAfterTwoProgramsAtOnce)
{
    const Words command = Calibration({"--out", Path("pole.cfg")});
    const std::size_t before = m_folder.Names().size();
    std::array<int, 4> exitCodes{};
    std::vector<std::thread> programs;
    for (int& exitCode : exitCodes)
        programs.emplace_back([&] { exitCode = RunProgram(command).exitCode; });
    for (std::thread& program : programs)
        program.join();
    EXPECT_THAT(exitCodes, testing::Each(0));
    EXPECT_EQ(m_folder.Names().size(), before + 2) << "the parameter file and its record";
    EXPECT_THAT(ReadAll(Path("pole.cfg")), testing::EndsWith("\r\n"));
}

TEST_F(Files, HalfWrittenAreRemovedByASignal)
{
    const std::string log = ReadAll(Log());
    m_folder.Write("tips.csv", "old");
    const std::size_t before = m_folder.Names().size();
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const auto isWriting = [&] { return m_folder.Names().size() > before; };
        const Outcome outcome = apps::test::RunProgramAndSignal(
            {"measure", "-", "--pole", "2", "--out", Path("tips.csv")}, log, isWriting, signal);
        EXPECT_EQ(outcome.exitCode, -signal);
        EXPECT_EQ(m_folder.Names().size(), before);
        EXPECT_EQ(ReadAll(Path("tips.csv")), "old");
    }
}

TEST_F(Files, LeftOverByAKillAreRemovedByTheNextRun)
{
    const std::string log = Log();
    const std::size_t before = m_folder.Names().size();
    const auto isWriting = [&] { return m_folder.Names().size() > before; };
    const Words command = {"measure", "-", "--pole", "2", "--out", Path("tips.csv")};
    EXPECT_EQ(apps::test::RunProgramAndSignal(command, ReadAll(log), isWriting, SIGKILL).exitCode,
              -SIGKILL);
    EXPECT_EQ(m_folder.Names().size(), before + 1);
    EXPECT_EQ(RunProgram({"measure", log, "--pole", "2", "--out", Path("tips.csv")}).exitCode, 0);
    EXPECT_EQ(m_folder.Names().size(), before + 1);
    EXPECT_TRUE(fs::exists(Path("tips.csv")));
}

TEST_F(Files, AreNotWrittenBesideTheStandardOutputThatIsTheSameFile)
{
    const std::string path = m_folder.Write("turns.csv", "");
    const Outcome outcome = apps::test::RunProgramInto(
        path, {"simulate", "turns", "--horizontal", path, "--vertical", "-"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, "<stdout>: is the same file as the output " + path
                               + "; choose another name for one of them\n");
    EXPECT_EQ(ReadAll(path), "");
}

TEST_F(Files, ThatAreReadAreNotWrittenUnderAnyName)
{
    const std::string log = Log();
    const std::string content = ReadAll(log);
    const std::string reason = ": is an input of this command; choose another output file\n";

    const Outcome redirected =
        apps::test::RunProgramFrom(log, {"measure", "-", "--pole", "2", "--out", log});
    EXPECT_EQ(redirected.exitCode, 2);
    EXPECT_EQ(redirected.err, log + reason);

    const Outcome appended = apps::test::RunProgramInto(log, {"measure", log, "--pole", "2"});
    EXPECT_EQ(appended.exitCode, 2);
    EXPECT_EQ(appended.err, "<stdout>" + reason);
    EXPECT_EQ(ReadAll(log), content);

    const Words calibration =
        Calibration({"--bias-from", Path("true.cfg"), "--out", Path("true.cfg")});
    const std::string parameters = ReadAll(Path("true.cfg"));
    const Outcome outcome = RunProgram(calibration);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, "") << "refused before anything is done";
    EXPECT_EQ(outcome.err, Path("true.cfg") + reason);
    EXPECT_EQ(ReadAll(Path("true.cfg")), parameters);
}

TEST_F(Files, OfTwoOutputsAreTwo)
{
    const std::string log = Log();
    const std::string both = Path("both.svg");
    // clang-format off
    const std::vector<Words> commands = {
        {"measure", log, "--pole", "2", "--out", both, "--plot", both},
        {"simulate", "walk", "--out", both, "--truth", both},
        {"simulate", "walk", "--out", both, "--config", both},
        {"simulate", "points", "--out", both, "--truth", both},
        {"simulate", "turns", "--horizontal", both, "--vertical", both},
        Calibration({"--out", both, "--report", both}),
        Calibration({"--report", both, "--plot", both}),
    };
    // clang-format on
    for (const Words& command : commands) {
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.exitCode, 2) << command[0];
        EXPECT_EQ(outcome.err, both + ": is the same file as the output " + both
                                   + "; choose another name for one of them\n");
        EXPECT_FALSE(fs::exists(both));
    }
}

TEST_F(Files, AreNotTakenForTheValueOfAnOption)
{
    const std::string points = m_folder.Write("points.csv", "E,N\n1,2\n");
    const std::string parameters =
        m_folder.Write("fit.json", R"({"scale":1,"rotation":0,"dx":1,"dy":2})");
    const Outcome outcome =
        RunProgram({"transform", "apply", "--parameters", parameters, "--columns", "E,N", points});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "E,N\n2.0000,4.0000\n");
}

} // namespace
