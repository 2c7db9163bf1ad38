// SPDX-License-Identifier: MIT
#include "tests/apps/cli/calibrate/CalibrateFixture.h"
#include "tests/apps/cli/occupy/OccupyRuns.h"
#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Takes pitch and roll out of a log of simulated turns.
std::string WithoutTilt(const std::string& log)
{
    std::string result;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t pitch = line.find(',', line.find(',') + 1) + 1; // the third column
        const std::size_t end = line.find(',', line.find(',', pitch) + 1);
        if (!result.empty()) line.replace(pitch, end - pitch, "0,0");
        result += line + '\n';
    }
    return result;
}

// A log of simulated turns in which a column, counted from 0, has the same value throughout.
std::string WithStuck(std::size_t column, const std::string& log)
{
    std::string result;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        std::size_t begin = 0;
        for (std::size_t i = 0; i < column; ++i)
            begin = line.find(',', begin) + 1;
        if (!result.empty()) line.replace(begin, line.find(',', begin) - begin, "5");
        result += line + '\n';
    }
    return result;
}

using Calibrate = apps::test::CalibrateFixture;

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
    EXPECT_THAT(outcome.out, StartsWith("Calibration: usable"));
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
    EXPECT_EQ(m_folder.Read("pole.cfg"), "old");
}

TEST_F(Calibrate, WritesAnyFiniteCalibrationWhenForcedAndStillReturns1)
{
    Simulate({"--axis-error", "0,12", "--axis-direction", "45"});
    m_folder.Write("pole.cfg", "old");
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--force"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(m_folder.Read("pole.cfg"), StartsWith("[MagneticA.a]"));
}

TEST_F(Calibrate, NeverWritesValuesThatAreNotFinite)
{
    Simulate({"--axis-error", "0,60", "--axis-direction", "90"});
    m_folder.Write("pole.cfg", "old");
    const std::size_t before = m_folder.Names().size();
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--force"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.out, StartsWith("Calibration: refused"));
    EXPECT_EQ(m_folder.Read("pole.cfg"), "old");
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
    m_folder.Write("bias.cfg", m_folder.Read("true.cfg"));
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
    const auto json = nlohmann::json::parse(m_folder.Read("report.json"));
    EXPECT_EQ(json["verdict"], "poor");
    EXPECT_EQ(json["accepted"], false);
    EXPECT_EQ(json["reason"], "vertical-axis");
    EXPECT_EQ(json["method"], "adjust");
    EXPECT_NEAR(json["vertical"]["axis_error_deg"].get<double>(), 12.0, 1.5);
    EXPECT_GT(json["magnetometer_a"]["heading_error"]["tip_tilt30_mm"].get<double>(), 30.0);
    EXPECT_TRUE(json["calibration"]["magnetometer_b"]["x0"].is_number());
}

TEST_F(Calibrate, WritesWhatTheTurnsTellAsJson)
{
    Simulate({"--roll-offset", "2"});
    Run({"--report", Path("report.json")});
    const auto json = nlohmann::json::parse(m_folder.Read("report.json"));
    EXPECT_NEAR(json["tilt"]["offset"]["roll_deg"].get<double>(), 2.0, 1.0);
    EXPECT_GT(json["magnetometer_a"]["heading_error"]["hidden"]["tilt_deg"].get<double>(), 0.5);
    for (const char* turn : {"horizontal", "vertical"}) {
        EXPECT_NEAR(json[turn]["acceleration"]["length_g"].get<double>(), 1.0, 0.01) << turn;
        EXPECT_TRUE(json[turn]["acceleration"]["outward_g"].is_number()) << turn;
    }
    EXPECT_NEAR(json["magnetometer_b"]["field_change"]["length_share"].get<double>(), 0.0, 0.01);
}

TEST_F(Calibrate, WritesNoAccelerationOfLogsWithoutOne)
{
    Simulate();
    for (const char* log : {"h.csv", "v.csv"}) {
        auto table = occupy::test::TableOf(m_folder.Read(log));
        for (const char* name : {"dAcc_x", "dAcc_y", "dAcc_z"})
            table.Remove(name);
        m_folder.Write(log, table.Text());
    }
    Run({"--report", Path("report.json")});
    const auto json = nlohmann::json::parse(m_folder.Read("report.json"));
    for (const char* turn : {"horizontal", "vertical"})
        EXPECT_TRUE(json.at(turn).at("acceleration").is_null()) << turn;
}

TEST_F(Calibrate, DrawsBothTurns)
{
    Simulate({"--gap", "3:6"});
    for (const std::string name : {"turns.png", "turns.svg"}) {
        EXPECT_EQ(Run({"--plot", Path(name)}).exitCode, 0);
        EXPECT_GT(m_folder.Read(name).size(), 10000u) << name;
    }
    EXPECT_THAT(m_folder.Read("turns.png"), StartsWith("\x89PNG"));
}

// The longest row of equal pixels that are not white, as a share of the picture's width: the frame
// of the widest chart.
double WidestFrame(const std::string& path)
{
    cairo_surface_t* const picture = cairo_image_surface_create_from_png(path.c_str());
    const int width = cairo_image_surface_get_width(picture);
    const unsigned char* const bytes = cairo_image_surface_get_data(picture);
    int longest = 0;
    for (int y = 0; y < cairo_image_surface_get_height(picture); ++y) {
        std::uint32_t before = 0xFFFFFFFF;
        for (int x = 0, run = 0; x < width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, bytes + y * cairo_image_surface_get_stride(picture) + 4 * x,
                        sizeof pixel);
            run = pixel == before ? run + 1 : 1;
            before = pixel;
            if ((pixel & 0xFFFFFF) != 0xFFFFFF) longest = std::max(longest, run);
        }
    }
    cairo_surface_destroy(picture);
    return static_cast<double>(longest) / width;
}

// A calibration that is worth nothing corrects nothing: only the raw turns are drawn, all across.
TEST_F(Calibrate, DrawsNoCorrectedTurnsForARefusedCalibration)
{
    Simulate();
    EXPECT_EQ(Run({"--plot", Path("good.png")}).exitCode, 0);
    EXPECT_NEAR(WidestFrame(Path("good.png")), 0.41, 0.05);

    Simulate({"--axis-error", "0,60", "--axis-direction", "90"});
    const Outcome refused = Run({"--plot", Path("refused.png")});
    EXPECT_THAT(refused.out, StartsWith("Calibration: refused"));
    EXPECT_NEAR(WidestFrame(Path("refused.png")), 0.89, 0.05);
}

TEST_F(Calibrate, ThinsTheTurnsForTheSolver)
{
    Simulate();
    EXPECT_EQ(Run({"--select", "20", "--report", Path("report.json")}).exitCode, 0);
    const auto json = nlohmann::json::parse(m_folder.Read("report.json"));
    EXPECT_EQ(json["vertical"]["samples_recorded"], 500);
    EXPECT_LT(json["vertical"]["samples_used"].get<int>(), 35);
}

TEST_F(Calibrate, NamesAnAxisThatReadsTheSameThroughout)
{
    constexpr std::size_t kX = 11; // dMag_x; B follows A
    struct Stuck
    {
        std::size_t column;
        const char* name;
    };
    for (const Stuck stuck : {
             Stuck{kX + 2, "magnetometer A: axis z\n"},
             Stuck{kX + 3, "magnetometer B: axis x\n"}
    }) {
        Simulate();
        for (const char* log : {"h.csv", "v.csv"})
            m_folder.Write(log, WithStuck(stuck.column, m_folder.Read(log)));
        for (const char* method : {"adjust", "joint"}) {
            const Outcome outcome = Run({"--method", method});
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_THAT(outcome.out, HasSubstr("A magnetometer does not follow the pole: an axis "
                                               "of it reads the same throughout.\n"));
            EXPECT_THAT(outcome.out, HasSubstr(stuck.name));
        }
    }
}

TEST_F(Calibrate, ReportsWhyTheJointFitIsRejected)
{
    Simulate({"--extent", "380,200"});
    const Outcome outcome = Run({"--method", "joint", "--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("the vertical turn covers less than 270 degrees"));
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");
}

TEST_F(Calibrate, DescribesEachFailureOfADump)
{
    // A vertical turn of three samples stops the solver twice; both dumps go into one file.
    setenv("XDG_DATA_HOME", m_folder.Path("data").c_str(), 1);
    Simulate();
    std::string vertical = m_folder.Read("v.csv");
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
    EXPECT_THAT(failed.err,
                HasSubstr("The horizontal samples were appended to "
                          + Path("data/tiltpole/Debug_MagneticAdjust_ErrorData_A.csv") + ".\n"));
    EXPECT_THAT(failed.err, Not(HasSubstr("ErrorData_B")));
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

TEST_F(Calibrate, SaysWhichFitFailsOnADump)
{
    Simulate();
    const auto turn = occupy::test::TableOf(m_folder.Read("h.csv"));
    const auto says = [&](const occupy::test::Table& table) {
        const std::string dump = m_folder.Write("dump.csv", table.Text());
        const Outcome outcome = RunProgram({"calibrate", "--dump", dump});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_THAT(outcome.out,
                    HasSubstr("magnetometer B: all fits of the horizontal turn succeed"));
        const auto begin = outcome.out.find("magnetometer A");
        return outcome.out.substr(begin, outcome.out.find('\n', begin) - begin);
    };
    for (const char* axis : {"dMag_y", "dMag_z"}) {
        auto stuck = turn;
        stuck.Set(axis, "5");
        EXPECT_EQ(says(stuck),
                  "magnetometer A: the line fits fail: the horizontal turn is at fault")
            << axis;
    }
    auto hyperbola = turn;
    for (std::size_t i = 0; i < hyperbola.rows.size(); ++i) {
        const double t = 0.01 * static_cast<double>(i) - 2.5;
        hyperbola.Cell(i, "dMag_x") = fmt::format("{}", 100.0 * std::cosh(t));
        hyperbola.Cell(i, "dMag_y") = fmt::format("{}", 100.0 * std::sinh(t));
    }
    EXPECT_EQ(says(hyperbola),
              "magnetometer A: the ellipse fit fails: the horizontal turn is at fault");
}

TEST_F(Calibrate, NamesAllMissingSectorsOfADump)
{
    Simulate({"--gap", "3:6", "--gap", "12:15"});
    const Outcome outcome = RunProgram({"calibrate", "--dump", Path("h.csv")});
    EXPECT_THAT(outcome.out, testing::ContainsRegex("missing: [0-9]+-[0-9]+(, [0-9]+-[0-9]+)+\n"));
}

TEST_F(Calibrate, ADumpWithoutSamplesIsANegativeResult)
{
    Simulate();
    const std::string log = m_folder.Read("h.csv");
    const std::string dump = m_folder.Write("dump.csv", log.substr(0, log.find('\n') + 1));
    const Outcome outcome = RunProgram({"calibrate", "--dump", dump});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, "0 failed calibrations in " + dump + "\n");
}

TEST_F(Calibrate, DoesNotAdviseAJointFitThatIsNotAccepted)
{
    ASSERT_EQ(RunProgram({"simulate", "turns", "--horizontal", Path("h.csv"), "--vertical",
                          Path("v.csv"), "--seed", "4", "--noise-a", "25", "--noise-b", "25"})
                  .exitCode,
              0);
    const Outcome outcome = Run({"--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    const std::string joint = outcome.out.substr(outcome.out.find("Joint fit of the same turns"));
    EXPECT_THAT(joint, HasSubstr("  verdict                       poor"));
    EXPECT_THAT(joint, HasSubstr("  what to do                    Record both turns again"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("--method joint")));
}

TEST_F(Calibrate, SaysWhereNoDumpCouldBeWritten)
{
    setenv("XDG_DATA_HOME", m_folder.Write("data", "a file, not a folder").c_str(), 1);
    Simulate({"--axis-error", "0,60", "--axis-direction", "90", "--extent", "380,10"});
    const Outcome outcome = Run();
    unsetenv("XDG_DATA_HOME");
    EXPECT_THAT(outcome.err, HasSubstr("A calculation of the magnetometer calibration fails"));
    EXPECT_THAT(outcome.err, HasSubstr("The horizontal samples could not be appended to a dump in "
                                       + Path("data/tiltpole") + ".\n"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("were appended")));
}

TEST_F(Calibrate, LeavesTheSolverAloneWhereTheJointFitIsWanted)
{
    Simulate({"--axis-error", "0,60", "--axis-direction", "90"});
    EXPECT_THAT(Run().err, HasSubstr("the pass limit was reached"));
    EXPECT_THAT(Run({"--method", "joint"}).err, StartsWith("The joint fit was rejected: "));
}

TEST_F(Calibrate, TellsOfTheJointFitHowUncertainItIs)
{
    Simulate();
    const Outcome outcome = Run({"--method", "joint"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, StartsWith("Calibration: usable, heading uncertain by "));
    EXPECT_THAT(outcome.out, Not(HasSubstr("heading error")));
}

TEST_F(Calibrate, WritesWhatNothingChecksOnlyWhenThatIsAccepted)
{
    Simulate({"--start-heading", "0,30"});
    for (const std::string name : {"h.csv", "v.csv"})
        m_folder.Write(name, WithoutTilt(m_folder.Read(name)));
    const Outcome outcome = Run({"--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out,
                StartsWith("Calibration: unchecked: pitch and roll do not follow the turns\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  verdict                       none: pitch and roll"));
    EXPECT_THAT(outcome.err, HasSubstr("(--accept-unchecked writes it)"));
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");
    EXPECT_EQ(Run().exitCode, 1);

    EXPECT_EQ(Run({"--out", Path("pole.cfg"), "--accept-unchecked"}).exitCode, 0);
    EXPECT_THAT(m_folder.Read("pole.cfg"), StartsWith("[MagneticA.a]"));
    EXPECT_THAT(m_folder.Read("pole.cfg.json"), HasSubstr("\"verdict\": \"unchecked\""));
}

TEST_F(Calibrate, AcceptsNoPoorCalibrationForUnchecked)
{
    Simulate({"--axis-error", "0,12", "--axis-direction", "45"});
    EXPECT_EQ(Run({"--out", Path("pole.cfg"), "--accept-unchecked"}).exitCode, 1);
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");
}

TEST_F(Calibrate, RefusesWhatADumpHasNoUseFor)
{
    Simulate();
    const std::vector<std::string> cases[] = {
        {"--horizontal",       Path("h.csv")},
        {"--vertical",                    Path("v.csv")},
        {"--out",Path("pole.cfg")},
        {"--report",              Path("report.json")},
        {"--plot",                    Path("plot.png")},
        {"--method","joint"},
        {"--select",             "20"},
        {"--columns",                    "dPitch=p"},
        {"--bias",                          "1"},
        {"--bias-b",           "1"},
        {"--bias-from",                    Path("true.cfg")},
        {"--accept-unchecked"},
        {"--force"            },
    };
    for (const std::vector<std::string>& more : cases) {
        std::vector<std::string> arguments = {"calibrate", "--dump", Path("h.csv")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << more.front();
        EXPECT_THAT(outcome.err, HasSubstr("--dump only describes a dump, without a calibration: "
                                           "leave out "
                                           + more.front()));
    }
    EXPECT_EQ(RunProgram({"calibrate", "--dump", Path("h.csv"), "--sensor-type", "2"}).exitCode, 0);
}

TEST_F(Calibrate, RejectsADumpWithAnInvalidRow)
{
    Simulate();
    const std::string dump = m_folder.Write("dump.csv", m_folder.Read("h.csv") + "nonsense\n");
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
