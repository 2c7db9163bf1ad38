// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationRecord.h"

#include "tests/apps/cli/calibrate/CalibrateFixture.h"

#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using testing::HasSubstr;

// The joint fit of these turns finds bias angles of its own.
class CalibrationRecord : public apps::test::CalibrateFixture
{
protected:
    void SetUp() override { Simulate({"--axis-error", "0,8", "--axis-direction", "45"}); }

    Outcome Joint(const std::string& out, const std::vector<std::string>& more)
    {
        std::vector<std::string> arguments = {"--method", "joint", "--out", Path(out)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(arguments);
    }

    nlohmann::json Record(const std::string& name) const
    {
        return nlohmann::json::parse(m_folder.Read(name + ".json"));
    }

    // Sets the bias angle of A as a host does, which knows nothing of the record.
    void ChangeBias(const std::string& name, double bias)
    {
        CInclineSensor_Position position = Parameters(name);
        position.SetMagneticBiasAngle_A(bias);
        ASSERT_EQ(position.ConfigSave(Path(name).c_str()), 1);
    }
};

TEST_F(CalibrationRecord, GivesTheSameBitsHoweverOftenAnglesAreTakenOver)
{
    ASSERT_EQ(Joint("1.cfg", {"--bias", "3.1", "--bias-b", "-4.7"}).exitCode, 0);
    ASSERT_GT(std::fabs(Record("1.cfg")["bias_found_a_deg"].get<double>()), 0.01);
    for (const std::string run : {"2", "3", "4"}) {
        const std::string old = std::to_string(std::stoi(run) - 1) + ".cfg";
        const Outcome outcome = Joint(run + ".cfg", {"--bias-from", Path(old)});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(m_folder.Read(run + ".cfg"), m_folder.Read("1.cfg")) << run;
        EXPECT_EQ(m_folder.Read(run + ".cfg.json"), m_folder.Read("1.cfg.json")) << run;
    }
}

TEST_F(CalibrationRecord, TellsGivenAnglesFromFoundOnes)
{
    ASSERT_EQ(Joint("pole.cfg", {"--bias", "3.5"}).exitCode, 0);
    const nlohmann::json record = Record("pole.cfg");
    EXPECT_EQ(record["format"], "tiltpole calibration record");
    EXPECT_EQ(record["version"], 1);
    EXPECT_EQ(record["method"], "joint");
    EXPECT_EQ(record["verdict"], "usable");
    EXPECT_EQ(record["bias_given_a_deg"], 3.5);
    EXPECT_EQ(record["bias_given_b_deg"], 0.0);
    const double found = record["bias_found_a_deg"].get<double>();
    EXPECT_NEAR(Parameters("pole.cfg").GetMagneticBiasAngle_A(), 3.5 + found, 1e-9);
    EXPECT_EQ(record["calibration"]["magnetometer_b"]["x0"],
              Parameters("pole.cfg").GetMagneticCorrectPar_B().x0);
}

TEST_F(CalibrationRecord, LeavesWhatAFitFoundOutOfTheNextSolversAngles)
{
    ASSERT_EQ(Joint("joint.cfg", {"--bias", "3.5"}).exitCode, 0);
    Simulate();
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--bias-from", Path("joint.cfg")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(Parameters("pole.cfg").GetMagneticBiasAngle_A(), 3.5);
    EXPECT_EQ(Parameters("pole.cfg").GetMagneticBiasAngle_B(), 0.0);
}

TEST_F(CalibrationRecord, IsNeededForTheAnglesOfAJointFit)
{
    const Outcome outcome = Joint("pole.cfg", {"--bias-from", Path("true.cfg")});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("true.cfg: has no record of tiltpole calibrate beside it"));
    EXPECT_THAT(outcome.err, HasSubstr("--bias and --bias-b"));
    EXPECT_EQ(outcome.out, "") << "refused before the turns are calibrated";
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");
}

TEST_F(CalibrationRecord, IsNotNeededWhereBothAnglesAreGiven)
{
    const Outcome outcome =
        Joint("pole.cfg", {"--bias-from", Path("true.cfg"), "--bias", "1", "--bias-b", "2"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(Record("pole.cfg")["bias_given_b_deg"], 2.0);
}

TEST_F(CalibrationRecord, IsStaleOnceTheParameterFileHasChanged)
{
    ASSERT_EQ(Joint("old.cfg", {"--bias", "3.5"}).exitCode, 0);
    ChangeBias("old.cfg", 5.0);
    for (const std::string method : {"joint", "adjust"}) {
        const Outcome outcome = Run({"--method", method, "--bias-from", Path("old.cfg")});
        EXPECT_EQ(outcome.exitCode, 2) << method;
        EXPECT_THAT(outcome.err, HasSubstr("old.cfg: has changed since its record")) << method;
    }
}

TEST_F(CalibrationRecord, IsStaleWhereItsAnglesDoNotSumUpToThoseOfTheFile)
{
    Simulate();
    ASSERT_EQ(Run({"--out", Path("old.cfg"), "--bias", "3.5", "--bias-b", "2"}).exitCode, 0);
    const auto good = nlohmann::ordered_json::parse(m_folder.Read("old.cfg.json"));
    ASSERT_EQ(good["bias_found_a_deg"], 0.0);
    m_folder.Write("old.cfg.json", good.dump());
    EXPECT_EQ(Run({"--bias-from", Path("old.cfg")}).err, "") << "however it is written";
    for (const char* key : {"bias_given_a_deg", "bias_given_b_deg"}) {
        nlohmann::ordered_json changed = good;
        changed[key] = 4.25;
        m_folder.Write("old.cfg.json", changed.dump());
        const Outcome outcome = Run({"--bias-from", Path("old.cfg")});
        EXPECT_EQ(outcome.exitCode, 0) << key;
        EXPECT_THAT(outcome.err, HasSubstr("old.cfg: has changed since its record ")) << key;
        EXPECT_THAT(outcome.err,
                    HasSubstr("its bias angles, 3.5 and 2 degrees, are taken as given"))
            << key;
    }
    nlohmann::ordered_json found = good;
    found["bias_found_b_deg"] = 1.5;
    m_folder.Write("old.cfg.json", found.dump());
    const Outcome outcome = Run({"--bias-from", Path("old.cfg")});
    EXPECT_EQ(outcome.exitCode, 2) << "B's angle may be what a fit found";
    EXPECT_THAT(outcome.err, HasSubstr("may include what a fit found"));
}

TEST_F(CalibrationRecord, IsNotMissedForAnglesThatAreZero)
{
    Simulate();
    CInclineSensor_Position position = Parameters("true.cfg");
    ASSERT_EQ(position.GetMagneticBiasAngle_A(), 0.0);
    ASSERT_EQ(position.GetMagneticBiasAngle_B(), 0.0);
    EXPECT_EQ(Run({"--bias-from", Path("true.cfg")}).err, "");
    position.SetMagneticBiasAngle_B(2.0);
    ASSERT_EQ(position.ConfigSave(Path("true.cfg").c_str()), 1);
    EXPECT_THAT(Run({"--bias-from", Path("true.cfg")}).err,
                HasSubstr("its bias angles, 0 and 2 degrees, are taken as given"));
}

TEST_F(CalibrationRecord, OfAnglesFromAStreamThereIsNone)
{
    Simulate();
    const Outcome outcome =
        RunProgram({"calibrate", "--horizontal", Path("h.csv"), "--vertical", Path("v.csv"),
                    "--bias-from", "/dev/stdin", "--method", "joint"},
                   m_folder.Read("true.cfg"));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("/dev/stdin: has no record of tiltpole calibrate"));
}

TEST_F(CalibrationRecord, OfASolverLeavesAnglesThatAHostHasSet)
{
    Simulate();
    ASSERT_EQ(Run({"--out", Path("old.cfg")}).exitCode, 0);
    ChangeBias("old.cfg", 5.0);
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--bias-from", Path("old.cfg")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, HasSubstr("its bias angles, 5 and 0 degrees, are taken as given"));
    EXPECT_EQ(Parameters("pole.cfg").GetMagneticBiasAngle_A(), 5.0);
}

TEST_F(CalibrationRecord, MustBeOneThatThisProgramReads)
{
    ASSERT_EQ(Joint("old.cfg", {}).exitCode, 0);
    const nlohmann::json good = Record("old.cfg");
    nlohmann::json later = good;
    later["version"] = 2;
    nlohmann::json undated = good;
    undated.erase("version");
    nlohmann::json lacking = good;
    lacking.erase("bias_given_b_deg");
    nlohmann::json damaged = good;
    damaged["bias_found_b_deg"] = "none";
    const std::pair<std::string, const char*> cases[] = {
        {later.dump(),         "old.cfg.json: is not of version 1"             },
        {undated.dump(),       "old.cfg.json: is not of version 1"             },
        {lacking.dump(),       "old.cfg.json: bias_given_b_deg is not a number"},
        {damaged.dump(),       "old.cfg.json: bias_found_b_deg is not a number"},
        {"{}",                 "old.cfg.json: is not a record of tiltpole"     },
        {good.dump().substr(0, 100),                                             "old.cfg.json: is not a record of tiltpole"},
        {R"({"bias_given_a_deg": 1e999})",                    "old.cfg.json: is not a record of tiltpole"                                    },
    };
    for (const auto& [content, complaint] : cases) {
        m_folder.Write("old.cfg.json", content);
        const Outcome outcome = Joint("pole.cfg", {"--bias-from", Path("old.cfg")});
        EXPECT_EQ(outcome.exitCode, 2) << content;
        EXPECT_THAT(outcome.err, HasSubstr(complaint));
    }
}

TEST_F(CalibrationRecord, NeverReplacesAnotherFile)
{
    m_folder.Write("pole.cfg.json", R"({"owner": "somebody else"})");
    const Outcome outcome = Joint("pole.cfg", {});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("pole.cfg.json: is where the record of"));
    EXPECT_EQ(m_folder.Read("pole.cfg.json"), R"({"owner": "somebody else"})");
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");
}

TEST_F(CalibrationRecord, IsNotReplacedByTheCalibrationThatReadsIt)
{
    ASSERT_EQ(Joint("pole.cfg", {"--bias", "1"}).exitCode, 0);
    const std::string before = m_folder.Read("pole.cfg.json");
    const Outcome outcome = Joint("pole.cfg", {"--bias-from", Path("pole.cfg"), "--bias", "2"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("pole.cfg: is an input of this command"));
    EXPECT_EQ(m_folder.Read("pole.cfg.json"), before);
}

TEST_F(CalibrationRecord, ReplacesTheOneBefore)
{
    ASSERT_EQ(Joint("pole.cfg", {"--bias", "1"}).exitCode, 0);
    ASSERT_EQ(Joint("pole.cfg", {"--bias", "2"}).exitCode, 0);
    EXPECT_EQ(Record("pole.cfg")["bias_given_a_deg"], 2.0);
}

TEST_F(CalibrationRecord, LiesBesideTheFileThatALinkLeadsTo)
{
    std::filesystem::create_directory(Path("real"));
    std::filesystem::create_symlink("real/sensor.cfg", Path("pole.cfg"));
    EXPECT_EQ(cli::RecordOf(Path("pole.cfg")), Path("real/sensor.cfg.json"));
    m_folder.Write("real/sensor.cfg", "old");
    EXPECT_EQ(cli::RecordOf(Path("pole.cfg")), Path("real/sensor.cfg.json"));
}

TEST_F(CalibrationRecord, IsNotLookedForAroundACircleOfLinks)
{
    std::filesystem::create_symlink("b.cfg", Path("a.cfg"));
    std::filesystem::create_symlink("a.cfg", Path("b.cfg"));
    EXPECT_EQ(cli::RecordOf(Path("a.cfg")), Path("a.cfg.json"));
    const Outcome outcome = Joint("a.cfg", {});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("a.cfg: "));
    EXPECT_FALSE(std::filesystem::exists(Path("a.cfg.json")));
}

// That of a process that has ended and is not yet waited for.
TEST_F(CalibrationRecord, LiesBesideALinkThatCannotBeRead)
{
    const pid_t child = fork();
    if (child == 0) _exit(0);
    ASSERT_GT(child, 0);
    siginfo_t ended{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    const std::string link = "/proc/" + std::to_string(child) + "/exe";
    const bool isLink = std::filesystem::is_symlink(std::filesystem::symlink_status(link));
    const std::string record = cli::RecordOf(link);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(isLink);
    EXPECT_EQ(record, link + ".json");
}

TEST_F(CalibrationRecord, OfANamedPipeThereIsNone)
{
    const std::string pipe = Path("pipe.cfg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(cli::RecordOf(pipe), "");
    CInclineSensor_Position position = Parameters("true.cfg");
    position.SetMagneticBiasAngle_A(2.5);
    ASSERT_EQ(position.ConfigSave(Path("bias.cfg").c_str()), 1);
    std::thread writer([&] { std::ofstream(pipe) << m_folder.Read("bias.cfg"); });
    const Outcome outcome = Run({"--bias-from", pipe, "--bias-b", "1"});
    // Lets the writer go on where nothing has read.
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    writer.join();
    close(reader);
    EXPECT_THAT(outcome.err,
                HasSubstr("pipe.cfg: has no record of tiltpole calibrate beside it; its "
                          "bias angles, 2.5 and 0 degrees, are taken as given"));
}

TEST_F(CalibrationRecord, DevicesHaveNone)
{
    EXPECT_EQ(cli::RecordOf("/dev/null"), "");
    EXPECT_EQ(cli::RecordOf("-"), "");
    EXPECT_EQ(cli::RecordOf(""), "");
    EXPECT_EQ(cli::RecordOf("pole.cfg"), "pole.cfg.json");
}

} // namespace
