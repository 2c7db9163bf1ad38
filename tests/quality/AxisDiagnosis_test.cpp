// SPDX-License-Identifier: MIT
#include "quality/calibration/AxisDiagnosis.h"

#include "framework/core/MessageBox.h"
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"
#include "simulation/trials/Conditions.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quality;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tiltpole::survey::Magnetometer;
using tiltpole::survey::Reading;

namespace {

// An ordinary operator with an ordinary pole.
study::Setting Setting(std::uint64_t seed)
{
    simulation::Generator random(seed, simulation::Stream::Placement);
    return study::Ordinary(random);
}

CalibrationTurns Record(const study::Setting& s, std::uint64_t seed)
{
    return {SimulateTurn(s.sensor, s.field, s.horizontal, seed).samples,
            SimulateTurn(s.sensor, s.field, s.vertical, seed).samples};
}

template <class Change>
void ForEverySample(CalibrationTurns& turns, const Change& change)
{
    for (auto* turn : {&turns.horizontal, &turns.vertical}) {
        for (PoseSensorData& s : *turn)
            change(s);
    }
}

using Wiring = Reading (*)(const Reading&);

void Rewire(CalibrationTurns& turns, Magnetometer which, Wiring wiring)
{
    ForEverySample(turns,
                   [&](PoseSensorData& s) { SetReading(s, which, wiring(ReadingOf(s, which))); });
}

void ForgetTheRate(CalibrationTurns& turns)
{
    ForEverySample(turns, [](PoseSensorData& s) { s.dGyro_x = s.dGyro_y = s.dGyro_z = 0.0; });
}

struct Fault
{
    Wiring wiring;
    const char* name;
};

constexpr Fault kFaults[] = {
    {[](const Reading& r) {
         return Reading{-r.x, r.y, r.z};
     }, "x looks reversed"                                           },
    {[](const Reading& r) {
         return Reading{r.x, -r.y, r.z};
     }, "y looks reversed"                                           },
    {[](const Reading& r) {
         return Reading{r.x, r.y, -r.z};
     }, "z looks reversed"                                           },
    {[](const Reading& r) {
         return Reading{-r.x, -r.y, r.z};
     }, "x and y look reversed"                                      },
    {[](const Reading& r) {
         return Reading{-r.x, r.y, -r.z};
     }, "x and z look reversed"                                      },
    {[](const Reading& r) {
         return Reading{-r.x, -r.y, -r.z};
     }, "x, y and z look reversed"                                   },
    {[](const Reading& r) {
         return Reading{r.y, r.x, r.z};
     }, "x and y look exchanged"                                     },
    {[](const Reading& r) {
         return Reading{r.z, r.y, r.x};
     }, "x and z look exchanged"                                     },
    {[](const Reading& r) {
         return Reading{r.x, r.z, r.y};
     }, "y and z look exchanged"                                     },
    {[](const Reading& r) {
         return Reading{r.y, r.z, r.x};
     }, "x, y and z look exchanged in turn (z, x, y read as x, y, z)"},
};

// Failures are judged, not shown.
class AxisDiagnosis : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_before = framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; });
    }
    void TearDown() override { framework::SetMessageBoxHandler(m_before); }

    // The report on the solver's calibration, and on the joint fit's where it gives one.
    static std::vector<CalibrationReport> Reports(const CalibrationTurns& turns, int sensorType)
    {
        CalibrationRun run = RunSolver(turns, sensorType);
        std::vector<CalibrationReport> reports = {AssessCalibration(run)};
        const JointFit fit = FitJointly(turns, sensorType);
        if (fit.outcome == JointFitOutcome::Fitted) {
            run.calibration = fit.calibration;
            run.solverAnswer = 1;
            reports.push_back(AssessCalibration(run));
        }
        return reports;
    }

private:
    framework::MessageBoxHandler m_before;
};

TEST_F(AxisDiagnosis, NamesTheAxesOfEitherMagnetometerThatAreReversedOrExchanged)
{
    std::uint64_t seed = 700;
    for (const Fault& fault : kFaults) {
        for (const Magnetometer which : {Magnetometer::A, Magnetometer::B}) {
            const study::Setting s = Setting(++seed);
            CalibrationTurns turns = Record(s, seed);
            Rewire(turns, which, fault.wiring);
            const std::string name = which == Magnetometer::A ? "A: " : "B: ";
            for (const CalibrationReport& report : Reports(turns, s.sensor.type)) {
                EXPECT_EQ(report.verdict, Verdict::Refused) << fault.name;
                EXPECT_EQ(report.reason, Finding::AxesMisnamed) << fault.name;
                EXPECT_THAT(report.suspects,
                            ::testing::Contains("magnetometer " + name + fault.name));
                // All reversed is the field of the other hemisphere: A or B, nobody knows.
                const bool open = fault.name == std::string("x, y and z look reversed");
                EXPECT_EQ(report.suspects.size(), open ? 2u : 1u) << fault.name;
            }
        }
    }
}

TEST_F(AxisDiagnosis, NamesTheAxesThatAreWrongInBothMagnetometersAlike)
{
    std::uint64_t seed = 800;
    for (const Fault& fault : kFaults) {
        const std::string name = fault.name;
        if (name == "x and z look reversed" || name == "x, y and z look reversed") continue;
        const study::Setting s = Setting(++seed);
        CalibrationTurns turns = Record(s, seed);
        for (const Magnetometer which : {Magnetometer::A, Magnetometer::B})
            Rewire(turns, which, fault.wiring);
        for (const CalibrationReport& report : Reports(turns, s.sensor.type)) {
            EXPECT_EQ(report.verdict, Verdict::Refused) << name;
            EXPECT_THAT(report.suspects, ::testing::Contains("magnetometers A and B: " + name));
        }
    }
}

TEST_F(AxisDiagnosis, NamesTheAxesThatAreWrongInEachMagnetometerOtherwise)
{
    for (const std::uint64_t seed : {851u, 852u}) {
        const study::Setting s = Setting(seed);
        CalibrationTurns turns = Record(s, seed);
        const Fault& a = kFaults[6];
        const Fault& b = kFaults[8];
        Rewire(turns, Magnetometer::A, a.wiring);
        Rewire(turns, Magnetometer::B, b.wiring);
        for (const CalibrationReport& report : Reports(turns, s.sensor.type)) {
            EXPECT_EQ(report.verdict, Verdict::Refused);
            EXPECT_THAT(report.suspects,
                        ::testing::Contains(std::string("magnetometer A: ") + a.name
                                            + "; magnetometer B: " + b.name));
        }
    }
}

TEST_F(AxisDiagnosis, NamesNothingOfTurnsWithoutSamples)
{
    EXPECT_TRUE(tiltpole::quality::AxisFaultsOf({}, 1).empty());
}

TEST_F(AxisDiagnosis, RefusesThemWithoutAngularRatesToo)
{
    std::uint64_t seed = 900;
    for (const Fault& fault : kFaults) {
        const study::Setting s = Setting(++seed);
        const Magnetometer which = seed % 2 == 0 ? Magnetometer::A : Magnetometer::B;
        CalibrationTurns turns = Record(s, seed);
        Rewire(turns, which, fault.wiring);
        ForgetTheRate(turns);
        const std::string name = which == Magnetometer::A ? "A: " : "B: ";
        for (const CalibrationReport& report : Reports(turns, s.sensor.type)) {
            EXPECT_EQ(report.verdict, Verdict::Refused) << fault.name;
            EXPECT_THAT(report.suspects, ::testing::Contains("magnetometer " + name + fault.name));
        }
    }
}

TEST_F(AxisDiagnosis, NamesExchangedLogs)
{
    for (const std::uint64_t seed : {1u, 2u, 3u}) {
        const study::Setting s = Setting(seed);
        CalibrationTurns turns = Record(s, seed);
        std::swap(turns.horizontal, turns.vertical);
        const CalibrationReport report = AssessCalibration(RunSolver(turns, s.sensor.type));
        EXPECT_EQ(report.verdict, Verdict::Refused);
        EXPECT_EQ(report.reason, Finding::LogsExchanged);
        EXPECT_THAT(ToText(report), HasSubstr("the logs look exchanged"));
    }
}

TEST_F(AxisDiagnosis, NamesExchangedLogsWithoutPitchAndRollToo)
{
    const study::Setting s = Setting(4);
    CalibrationTurns turns = Record(s, 4);
    ForEverySample(turns, [](PoseSensorData& sample) { sample.dPitch = sample.dRoll = 0.0; });
    EXPECT_NE(AssessCalibration(RunSolver(turns)).reason, Finding::LogsExchanged);
    std::swap(turns.horizontal, turns.vertical);
    EXPECT_EQ(AssessCalibration(RunSolver(turns)).reason, Finding::LogsExchanged);
}

// Logs are exchanged for both magnetometers or for none.
TEST_F(AxisDiagnosis, DoesNotTakeLogsForExchangedByOneMagnetometerAlone)
{
    const study::Setting s = Setting(4);
    const CalibrationTurns turns = Record(s, 4);
    EXPECT_TRUE(tiltpole::quality::LogsLookExchanged({turns.vertical, turns.horizontal}));
    for (const Magnetometer which : {Magnetometer::A, Magnetometer::B}) {
        CalibrationTurns one = turns;
        const std::size_t common = std::min(turns.horizontal.size(), turns.vertical.size());
        one.horizontal.resize(common);
        one.vertical.resize(common);
        for (std::size_t i = 0; i < common; ++i) {
            SetReading(one.horizontal[i], which, ReadingOf(turns.vertical[i], which));
            SetReading(one.vertical[i], which, ReadingOf(turns.horizontal[i], which));
        }
        EXPECT_FALSE(tiltpole::quality::LogsLookExchanged(one));
    }
}

// The sensor sits a quarter turn about the pole from where its type says: the pole that goes over
// head turns it about its x axis.
TEST_F(AxisDiagnosis, TellsHowFarTheAxisOfASensorMountedWronglyIsOff)
{
    study::Setting s = Setting(5);
    s.vertical.axisError = 83.0;
    s.vertical.axisDirection = 90.0; // towards x
    const CalibrationReport report = AssessCalibration(RunSolver(Record(s, 5), s.sensor.type));
    EXPECT_EQ(report.verdict, Verdict::Refused);
    EXPECT_EQ(report.reason, Finding::Mounting);
    EXPECT_THAT(ToText(report), HasSubstr("vertical turn: axis off by 8"));
    EXPECT_THAT(ToText(report), ::testing::Not(HasSubstr("away from iron")));
}

TEST_F(AxisDiagnosis, FindsNoFaultInOrdinaryTurns)
{
    for (std::uint64_t seed = 100; seed < 104; ++seed) {
        const study::Setting s = Setting(seed);
        CalibrationTurns turns = Record(s, seed);
        EXPECT_THAT(tiltpole::quality::AxisFaultsOf(turns, s.sensor.type), ElementsAre());
        ForgetTheRate(turns);
        EXPECT_THAT(tiltpole::quality::AxisFaultsOf(turns, s.sensor.type), ElementsAre());
    }
}

} // namespace
