// SPDX-License-Identifier: MIT
//
// Turns recorded by hand (examples/turns-*.csv), and what is left of the heading error on a log
// that no calibration has seen.
#include "apps/tables/SampleLog.h"
#include "survey/Angle.h"
#include "tests/apps/cli/calibrate/CalibrateFixture.h"

#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using apps::test::Outcome;
using testing::HasSubstr;
using testing::StartsWith;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Rad2Deg;

std::string Example(const std::string& name)
{
    return TILTPOLE_SOURCE_DIR "/examples/" + name;
}

// The last column of a table.
std::vector<double> LastColumn(const std::string& path)
{
    std::ifstream file(path);
    std::vector<double> values;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line))
        values.push_back(std::stod(line.substr(line.rfind(',') + 1)));
    return values;
}

// RMS after the mean of all of them has been removed [degrees].
struct HeadingErrors
{
    double upright = 0.0; // at leans below 15 degrees
    double leaning = 0.0; // from 15 degrees on
};

double MeanOf(const std::vector<double>& angles)
{
    double east = 0.0;
    double north = 0.0;
    for (const double angle : angles) {
        east += std::sin(Deg2Rad(angle));
        north += std::cos(Deg2Rad(angle));
    }
    return Rad2Deg(std::atan2(east, north));
}

double RmsAround(double mean, const std::vector<double>& angles)
{
    double squares = 0.0;
    for (const double angle : angles)
        squares += std::pow(std::remainder(angle - mean, 360.0), 2);
    return std::sqrt(squares / static_cast<double>(angles.size()));
}

HeadingErrors ErrorsOf(CInclineSensor_Position position)
{
    const std::vector<double> truth = LastColumn(Example("turns-check.csv"));
    tables::SampleLog log(Example("turns-check.csv"), {});
    std::vector<double> all;
    std::vector<double> upright;
    std::vector<double> leaning;
    for (const double heading : truth) {
        EXPECT_TRUE(log.Next());
        PoseSensorData sample = log.Pose();
        position.CalculateYaw_A(sample);
        const double lean =
            Rad2Deg(std::acos(std::cos(Deg2Rad(sample.dPitch)) * std::cos(Deg2Rad(sample.dRoll))));
        all.push_back(sample.dYaw - heading);
        (lean < 15.0 ? upright : leaning).push_back(all.back());
    }
    const double mean = MeanOf(all);
    return {RmsAround(mean, upright), RmsAround(mean, leaning)};
}

class RecordedTurns : public apps::test::CalibrateFixture
{
protected:
    static Outcome Run(const std::vector<std::string>& more)
    {
        std::vector<std::string> arguments = {"calibrate", "--horizontal",
                                              Example("turns-horizontal.csv"), "--vertical",
                                              Example("turns-vertical.csv")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return apps::test::RunProgram(arguments);
    }
};

TEST_F(RecordedTurns, AreFarOffAsTheyWereRead)
{
    const HeadingErrors errors = ErrorsOf({});
    EXPECT_NEAR(errors.upright, 23.5, 0.1);
    EXPECT_NEAR(errors.leaning, 23.1, 0.1);
}

TEST_F(RecordedTurns, AreTooUnsteadyForTheSolverWhichIsNotAccepted)
{
    const Outcome outcome = Run({"--out", Path("pole.cfg")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, StartsWith("Calibration: poor, heading error 10."));
    EXPECT_EQ(m_folder.Read("pole.cfg"), "");

    ASSERT_EQ(Run({"--out", Path("pole.cfg"), "--force"}).exitCode, 1);
    const HeadingErrors errors = ErrorsOf(Parameters("pole.cfg"));
    EXPECT_NEAR(errors.upright, 4.8, 0.1);
    EXPECT_NEAR(errors.leaning, 4.6, 0.1);
}

TEST_F(RecordedTurns, ShowTheJointFitBesideTheSolverThatIsNotAccepted)
{
    const Outcome outcome = Run({"--out", Path("pole.cfg"), "--report", Path("report.json")});
    EXPECT_THAT(outcome.out, HasSubstr("Joint fit of the same turns\n"
                                       "  verdict                       usable, heading uncertain "
                                       "by "));
    EXPECT_THAT(outcome.out, HasSubstr("Take it with --method joint"));
    EXPECT_THAT(outcome.err,
                HasSubstr("(--method joint writes the joint fit, which is accepted; "));
    const auto json = nlohmann::json::parse(m_folder.Read("report.json"));
    EXPECT_EQ(json["verdict"], "poor");
    EXPECT_EQ(json["alternative"]["method"], "joint");
    EXPECT_EQ(json["alternative"]["verdict"], "usable");
}

TEST_F(RecordedTurns, AreUsableByTheJointFitAndItsHeadingsAre)
{
    const Outcome outcome = Run({"--method", "joint", "--out", Path("pole.cfg")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.out;
    EXPECT_THAT(outcome.out, StartsWith("Calibration: usable, heading uncertain by "));
    // 2.3 degrees are the recording's own: the room, the filter of its attitude, noise.
    const HeadingErrors errors = ErrorsOf(Parameters("pole.cfg"));
    EXPECT_NEAR(errors.upright, 2.7, 0.3);
    EXPECT_NEAR(errors.leaning, 3.3, 0.3);
}

} // namespace
