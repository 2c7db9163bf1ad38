// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"
#include "tests/apps/RunProgram.h"
#include "tests/apps/ScratchFile.h"
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using apps::test::ScratchFolder;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Runs the program on turns in files.
class Calibrate : public ::testing::Test
{
protected:
    void Simulate(const std::vector<std::string>& faults = {})
    {
        std::vector<std::string> arguments = {
            "simulate",   "turns",         "--horizontal", Path("h.csv"),
            "--vertical", Path("v.csv"),   "--seed",       "4",
            "--noise-a",  "0.3",           "--noise-b",    "0.3",
            "--config",   Path("true.cfg")};
        arguments.insert(arguments.end(), faults.begin(), faults.end());
        const Outcome outcome = RunProgram(arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    }

    Outcome Run(const std::vector<std::string>& more = {})
    {
        std::vector<std::string> arguments = {"calibrate", "--horizontal", Path("h.csv"),
                                              "--vertical", Path("v.csv")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    const ScratchFolder m_folder;
};

void CheckNear(const Incline_MagneticCorrectParameter& found,
               const Incline_MagneticCorrectParameter& expected)
{
    EXPECT_NEAR(found.x0, expected.x0, 3.0);
    EXPECT_NEAR(found.y0, expected.y0, 3.0);
    EXPECT_NEAR(found.z0, expected.z0, 3.0);
    EXPECT_NEAR(found.a, expected.a, 0.02);
    EXPECT_NEAR(found.b, expected.b, 0.02);
    EXPECT_NEAR(found.c, expected.c, 0.02);
    EXPECT_NEAR(found.d, expected.d, 0.02);
    EXPECT_NEAR(found.e, expected.e, 0.02);
}

TEST_F(Calibrate, WritesTheParametersThatUndoTheSimulatedIron)
{
    Simulate({"--start-heading", "0,30"});
    CInclineSensor_Position expected;
    ASSERT_EQ(expected.ConfigRead(Path("true.cfg").c_str()), 1);
    for (const std::string method : {"adjust", "joint"}) {
        const Outcome outcome = Run({"--out", Path("pole.cfg"), "--method", method});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
        CInclineSensor_Position found;
        ASSERT_EQ(found.ConfigRead(Path("pole.cfg").c_str()), 1);
        CheckNear(found.GetMagneticCorrectPar_A(), expected.GetMagneticCorrectPar_A());
        CheckNear(found.GetMagneticCorrectPar_B(), expected.GetMagneticCorrectPar_B());
    }
}

TEST_F(Calibrate, PrintsTheReport)
{
    Simulate();
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
    EXPECT_THAT(outcome.out, StartsWith("Calibration: good"));
    EXPECT_THAT(outcome.out, HasSubstr("500 recorded"));
}

TEST_F(Calibrate, LeavesTheOldFileWhenTheCalibrationIsNotAccepted)
{
    Simulate({"--axis-error", "0,12", "--axis-direction", "45"});
    m_folder.Write("pole.cfg", "old");
    const Outcome outcome = Run({"--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, StartsWith("Calibration: poor"));
    EXPECT_THAT(outcome.err, HasSubstr("not written"));
    EXPECT_EQ(Content(Path("pole.cfg")), "old");
}

TEST_F(Calibrate, WritesAnyFiniteCalibrationWhenForcedAndStillReturns1)
{
    Simulate({"--axis-error", "0,12", "--axis-direction", "45"});
    m_folder.Write("pole.cfg", "old");
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--force"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(Content(Path("pole.cfg")), StartsWith("[MagneticA.a]"));
}

TEST_F(Calibrate, NeverWritesValuesThatAreNotFinite)
{
    Simulate({"--axis-error", "0,60", "--axis-direction", "90"});
    m_folder.Write("pole.cfg", "old");
    const std::size_t before = m_folder.Names().size();
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--force"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.out, StartsWith("Calibration: refused"));
    EXPECT_EQ(Content(Path("pole.cfg")), "old");
    EXPECT_EQ(m_folder.Names().size(), before) << "nothing is left beside the file";
}

TEST_F(Calibrate, ExplainsTheLibrarysMessagesInEnglish)
{
    Simulate({"--axis-error", "0,60", "--axis-direction", "90"});
    EXPECT_THAT(Run().err, HasSubstr("循环次数超限，磁力计校准参数精度不可靠! (the pass limit was "
                                     "reached"));
}

TEST_F(Calibrate, AddsTheGivenBiasAngles)
{
    Simulate();
    m_folder.Write("bias.cfg", Content(Path("true.cfg")));
    CInclineSensor_Position old;
    ASSERT_EQ(old.ConfigRead(Path("bias.cfg").c_str()), 1);
    old.SetMagneticBiasAngle_A(1.5);
    old.SetMagneticBiasAngle_B(-2.5);
    ASSERT_EQ(old.ConfigSave(Path("bias.cfg").c_str()), 1);

    ASSERT_EQ(
        Run({"--out", Path("pole.cfg"), "--bias-from", Path("bias.cfg"), "--bias", "7"}).exitCode,
        0);
    CInclineSensor_Position found;
    ASSERT_EQ(found.ConfigRead(Path("pole.cfg").c_str()), 1);
    EXPECT_DOUBLE_EQ(found.GetMagneticBiasAngle_A(), 7.0) << "an angle given wins over the file";
    EXPECT_DOUBLE_EQ(found.GetMagneticBiasAngle_B(), -2.5);
}

TEST_F(Calibrate, WritesTheReportAsJson)
{
    Simulate({"--axis-error", "0,12", "--axis-direction", "45"});
    EXPECT_EQ(Run({"--report", Path("report.json")}).exitCode, 1);
    const auto json = nlohmann::json::parse(Content(Path("report.json")));
    EXPECT_EQ(json["verdict"], "poor");
    EXPECT_EQ(json["accepted"], false);
    EXPECT_EQ(json["reason"], "vertical-axis");
    EXPECT_EQ(json["method"], "adjust");
    EXPECT_NEAR(json["vertical"]["axis_error_deg"].get<double>(), 12.0, 1.5);
    EXPECT_GT(json["magnetometer_A"]["heading_error"]["tip_tilt30_mm"].get<double>(), 30.0);
    EXPECT_TRUE(json["calibration"]["magnetometer_B"]["x0"].is_number());
}

TEST_F(Calibrate, DrawsBothTurns)
{
    Simulate({"--gap", "3:6"});
    for (const std::string name : {"turns.png", "turns.svg"}) {
        EXPECT_EQ(Run({"--plot", Path(name)}).exitCode, 0);
        EXPECT_GT(Content(Path(name)).size(), 10000u) << name;
    }
    EXPECT_THAT(Content(Path("turns.png")), StartsWith("\x89PNG"));
}

TEST_F(Calibrate, ThinsTheTurnsForTheSolver)
{
    Simulate();
    EXPECT_EQ(Run({"--select", "20", "--report", Path("report.json")}).exitCode, 0);
    const auto json = nlohmann::json::parse(Content(Path("report.json")));
    EXPECT_EQ(json["vertical"]["samples_recorded"], 500);
    EXPECT_LT(json["vertical"]["samples_used"].get<int>(), 35);
}

TEST_F(Calibrate, ReportsWhyTheJointFitIsRejected)
{
    Simulate({"--extent", "380,200"});
    const Outcome outcome = Run({"--method", "joint", "--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("the vertical turn covers less than 270 degrees"));
    EXPECT_EQ(Content(Path("pole.cfg")), "");
}

TEST_F(Calibrate, DescribesEachFailureOfADump)
{
    // A vertical turn of three samples stops the solver twice; both dumps go into one file.
    setenv("XDG_DATA_HOME", m_folder.Path("data").c_str(), 1);
    Simulate();
    std::string vertical = Content(Path("v.csv"));
    std::size_t end = 0;
    for (int line = 0; line < 4; ++line)
        end = vertical.find('\n', end) + 1;
    m_folder.Write("v.csv", vertical.substr(0, end));
    const Outcome failed = Run();
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_THAT(failed.err, HasSubstr("椭圆拟合失败,绕Y轴旋转数据有误! (the ellipse fit failed: "
                                      "the data of the turn about Y are wrong)"));
    EXPECT_THAT(failed.err, HasSubstr("A calculation of the magnetometer calibration fails"));
    EXPECT_THAT(failed.out, StartsWith("Calibration: refused"));
    Run();

    const std::string dump = Path("data/tiltpole/Debug_MagneticAdjust_ErrorData_A.csv");
    const Outcome outcome = RunProgram({"calibrate", "--dump", dump});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("2 failed calibrations in "));
    EXPECT_THAT(outcome.out, HasSubstr("Horizontal turn of 10:00:"));
    EXPECT_THAT(outcome.out, HasSubstr("the vertical turn is at fault"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("the horizontal turn is at fault")));
    unsetenv("XDG_DATA_HOME");
}

TEST_F(Calibrate, RejectsADumpWithAnInvalidRow)
{
    Simulate();
    const std::string dump = m_folder.Write("dump.csv", Content(Path("h.csv")) + "nonsense\n");
    const Outcome outcome = RunProgram({"calibrate", "--dump", dump});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("dump.csv:502: "));
}

TEST_F(Calibrate, NeedsBothTurnsOrADump)
{
    EXPECT_EQ(RunProgram({"calibrate", "--horizontal", "h.csv"}).exitCode, 2);
    EXPECT_EQ(RunProgram({"calibrate"}).exitCode, 2);
    const Outcome missing =
        RunProgram({"calibrate", "--horizontal", Path("none.csv"), "--vertical", Path("v.csv")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.err, HasSubstr("none.csv: "));
}

TEST_F(Calibrate, NamesTheLineThatCannotBeRead)
{
    Simulate();
    m_folder.Write("h.csv", "dPitch,dRoll\n0,0\n");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("dMag_x"));
}

} // namespace
