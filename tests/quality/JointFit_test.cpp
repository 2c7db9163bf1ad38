// SPDX-License-Identifier: MIT
#include "quality/JointFit.h"

#include "positioning/InclineSensor_Position.h"
#include "quality/CalibrationReport.h"
#include "tests/quality/TurnMaker.h"
#include <cmath>
#include <gtest/gtest.h>

using quality::CalibrationTurns;
using quality::FitJointly;
using quality::JointFit;
using quality::JointFitOutcome;
using turnmaker::Plan;
using turnmaker::World;

namespace {

CInclineSensor_Position Holding(const quality::Calibration& c, int sensorType)
{
    CInclineSensor_Position position;
    position.SetSensorType(sensorType);
    position.SetMagneticCorrectPar_A(c.correctionA);
    position.SetMagneticCorrectPar_B(c.correctionB);
    position.SetMagneticTranslationPar(c.translation);
    position.SetMagneticBiasAngle_A(c.biasAngleA);
    position.SetMagneticBiasAngle_B(c.biasAngleB);
    return position;
}

// Largest error of either heading over a level turn, against the known angle turned [degrees].
double LargestLevelError(const World& world, const quality::Calibration& c)
{
    CInclineSensor_Position position = Holding(c, world.sensorType);
    double largest = 0.0;
    int turned = 0;
    for (PoseSensorData s : turnmaker::MakeTurn(world, {.samples = 36})) {
        position.CalculateYaw_A(s);
        position.CalculateYaw_B(s);
        // Turned anticlockwise from forward (type 1) or right (other types) to the north.
        const double heading = -(10.0 * turned++ + 5.0) - (world.sensorType == 1 ? 0.0 : 90.0);
        const double errorA = std::remainder(s.dYaw - heading, 360.0);
        const double errorB = std::remainder(s.dYaw_2 - heading - 180.0, 360.0);
        largest = std::max({largest, std::fabs(errorA), std::fabs(errorB)});
    }
    return largest;
}

TEST(JointFit, GivesAHostTrueHeadingsForEverySensorType)
{
    for (const int type : {0, 1}) {
        World world = turnmaker::TriangularWorld();
        world.sensorType = type;
        const JointFit fit = FitJointly(turnmaker::MakeTurns(world), type);
        ASSERT_EQ(fit.outcome, JointFitOutcome::Fitted);
        EXPECT_LT(LargestLevelError(world, fit.calibration), 0.1) << "type " << type;
    }
}

TEST(JointFit, TakesAFullDistortionToTheHeadingByTheBiasAngle)
{
    const World world = turnmaker::DistortedWorld();
    const JointFit fit = FitJointly(turnmaker::MakeTurns(world));
    ASSERT_EQ(fit.outcome, JointFitOutcome::Fitted);
    EXPECT_GT(std::fabs(fit.calibration.biasAngleA), 1.0);
    EXPECT_LT(LargestLevelError(world, fit.calibration), 1.0);
}

TEST(JointFit, TellsWhatEightValuesCannotExpress)
{
    const JointFit exact = FitJointly(turnmaker::MakeTurns(turnmaker::TriangularWorld()));
    EXPECT_LT(exact.lossA, 0.05);
    const JointFit full = FitJointly(turnmaker::MakeTurns(turnmaker::DistortedWorld()));
    EXPECT_GT(full.lossA, 0.3);
}

TEST(JointFit, GivesATranslationUnderWhichTheTurnShowsNoInterference)
{
    const World world = turnmaker::TriangularWorld();
    const CalibrationTurns turns = turnmaker::MakeTurns(world);
    const JointFit fit = FitJointly(turns);
    CInclineSensor_Position position = Holding(fit.calibration, 1);
    for (PoseSensorData s : turns.horizontal) {
        position.CalculateYaw_A(s);
        position.CalculateYaw_B(s);
        ASSERT_EQ(position.IsMagneticInterference(), 0);
        EXPECT_NEAR(s.dMag_x_2, -(s.dMag_x + fit.calibration.translation.dX), 2.0);
        EXPECT_NEAR(s.dMag_y_2, -(s.dMag_y + fit.calibration.translation.dY), 2.0);
        EXPECT_NEAR(s.dMag_z_2, s.dMag_z + fit.calibration.translation.dZ, 2.0);
    }
}

Plan Part(Plan plan, double to)
{
    plan.to = to;
    return plan;
}

Plan Few(Plan plan)
{
    plan.samples = 9;
    return plan;
}

TEST(JointFit, RefusesTurnsThatTellTooLittle)
{
    const Plan h = turnmaker::HorizontalPlan();
    const Plan v = turnmaker::VerticalPlan();
    const auto outcome = [](const Plan& horizontal, const Plan& vertical) {
        // Without distortion the azimuths of the readings are the angles turned.
        return FitJointly(turnmaker::MakeTurns(World{}, horizontal, vertical)).outcome;
    };
    EXPECT_EQ(outcome(Few(h), v), JointFitOutcome::TooFewSamples);
    EXPECT_EQ(outcome(h, Few(v)), JointFitOutcome::TooFewSamples);
    EXPECT_EQ(outcome(Part(h, 265), v), JointFitOutcome::HorizontalIncomplete);
    EXPECT_EQ(outcome(h, Part(v, 265)), JointFitOutcome::VerticalIncomplete);
    EXPECT_EQ(outcome(Part(h, 280), Part(v, 280)), JointFitOutcome::Fitted);
}

TEST(JointFit, RefusesTiltThatDoesNotFollowTheVerticalTurn)
{
    CalibrationTurns turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
    for (PoseSensorData& s : turns.vertical)
        s.dPitch = s.dRoll = 0.0;
    EXPECT_EQ(FitJointly(turns).outcome, JointFitOutcome::TiltUnusable);
}

TEST(JointFit, RefusesTiltOfAnInclinometerThatGoesBackOverHead)
{
    // Pitch and roll as slopes of two axes: past the vertical the pitch comes back.
    CalibrationTurns turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
    for (PoseSensorData& s : turns.vertical) {
        if (std::fabs(s.dRoll) > 90.0) s.dRoll = 0.0;
    }
    EXPECT_EQ(FitJointly(turns).outcome, JointFitOutcome::TiltUnusable);
}

TEST(JointFit, RefusesTheTiltOfAnotherSensorType)
{
    World world = turnmaker::DistortedWorld();
    world.sensorType = 1;
    EXPECT_EQ(FitJointly(turnmaker::MakeTurns(world), 0).outcome, JointFitOutcome::TiltUnusable);
}

TEST(JointFit, RefusesValuesThatAreNoNumbers)
{
    CalibrationTurns turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
    turns.vertical[5].dMag_z_2 = std::nan("");
    EXPECT_EQ(FitJointly(turns).outcome, JointFitOutcome::NotFinite);
    turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
    turns.horizontal[5].dMag_x = std::nan("");
    EXPECT_EQ(FitJointly(turns).outcome, JointFitOutcome::NotFinite);
    turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
    turns.vertical[5].dRoll = std::nan("");
    EXPECT_EQ(FitJointly(turns).outcome, JointFitOutcome::NotFinite);
}

TEST(JointFit, RefusesAHorizontalTurnUpsideDown)
{
    Plan horizontal = turnmaker::HorizontalPlan();
    horizontal.space = -horizontal.space;
    EXPECT_EQ(
        FitJointly(turnmaker::MakeTurns(World{}, horizontal, turnmaker::VerticalPlan())).outcome,
        JointFitOutcome::TiltUnusable);
}

// What a magnetometer reads at the end of its range, and what a broken line of a log holds.
void Spoil(CalibrationTurns& turns, double reading)
{
    for (std::size_t i = 10; i < 60; i += 10) {
        turns.horizontal[i].dMag_y = reading;
        turns.horizontal[i].dMag_z_2 = reading;
    }
    turns.vertical[25].dMag_x_2 = -reading;
}

TEST(JointFit, UsesNothingOfReadingsThatItLeavesOut)
{
    World world = turnmaker::TriangularWorld();
    world.noise = 0.5;
    const CalibrationTurns clean = turnmaker::MakeTurns(world);
    const quality::Calibration expected = FitJointly(clean).calibration;
    for (const double reading : {1900.0, 8192.0, 1e9, 1e300}) {
        CalibrationTurns turns = clean;
        Spoil(turns, reading);
        const JointFit fit = FitJointly(turns);
        ASSERT_EQ(fit.outcome, JointFitOutcome::Fitted) << reading;
        EXPECT_NEAR(fit.calibration.translation.dX, expected.translation.dX, 1.0) << reading;
        EXPECT_NEAR(fit.calibration.translation.dY, expected.translation.dY, 1.0) << reading;
        EXPECT_NEAR(fit.calibration.translation.dZ, expected.translation.dZ, 1.0) << reading;
        EXPECT_LT(LargestLevelError(turnmaker::TriangularWorld(), fit.calibration), 0.1) << reading;
        EXPECT_EQ(fit.used.horizontal.size(), turns.horizontal.size() - 5) << reading;
        EXPECT_EQ(fit.used.vertical.size(), turns.vertical.size() - 1) << reading;
    }
}

TEST(JointFit, GivesAHostHeadingsWithoutInterferenceAfterReadingsThatItLeftOut)
{
    const World world = turnmaker::TriangularWorld();
    CalibrationTurns turns = turnmaker::MakeTurns(world);
    Spoil(turns, 8192.0);
    CInclineSensor_Position position = Holding(FitJointly(turns).calibration, 1);
    for (PoseSensorData s : turnmaker::MakeTurn(world, {})) {
        position.CalculateYaw_A(s);
        position.CalculateYaw_B(s);
        ASSERT_EQ(position.IsMagneticInterference(), 0);
    }
}

CalibrationTurns Swung(double horizontal, double vertical, bool hasGyros = true)
{
    Plan h = turnmaker::HorizontalPlan();
    Plan v = turnmaker::VerticalPlan();
    h.outward = horizontal;
    v.outward = vertical;
    h.hasGyros = v.hasGyros = hasGyros;
    return turnmaker::MakeTurns(turnmaker::TriangularWorld(), h, v);
}

TEST(JointFit, RefusesTurnsThatWereSwung)
{
    struct Case
    {
        double horizontal, vertical; // g outward
        bool hasGyros;
        JointFitOutcome expected;
        const char* why;
    };
    constexpr Case cases[] = {
        {0.0,  0.0,  true,  JointFitOutcome::Fitted, "turned slowly"                        },
        {0.02, 0.02, true,  JointFitOutcome::Fitted, "the sensor a hand from the axis"      },
        {0.3,  0.3,  true,  JointFitOutcome::Swung,  "both turns swung"                     },
        {0.3,  0.0,  false, JointFitOutcome::Swung,  "1.044 g all the way round"            },
        {0.2,  0.0,  true,  JointFitOutcome::Swung,  "1.020 g, but not about the plumb line"},
        {0.0,  0.3,  false, JointFitOutcome::Swung,  "0.7 to 1.3 g"                         },
        {0.0,  0.15, true,  JointFitOutcome::Swung,  "0.85 to 1.15 g"                       },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FitJointly(Swung(c.horizontal, c.vertical, c.hasGyros)).outcome, c.expected)
            << c.why;
    }
}

// Too even to be refused, it tilts the apparent vertical: by 1.1 degrees at 0.02 g, 2.9 at 0.05 g.
TEST(JointFit, IsNotCalledGoodAfterTurnsThatWereSwungEvenly)
{
    const auto assess = [](double outward) {
        quality::CalibrationRun run;
        run.recorded = run.used = Swung(outward, outward);
        run.calibration = FitJointly(run.recorded).calibration;
        run.isJoint = true;
        return quality::AssessCalibration(run);
    };
    EXPECT_EQ(assess(0.0).tilt.swing, 0.0);
    for (const double outward : {0.02, 0.05}) {
        const quality::CalibrationReport report = assess(outward);
        const double tilt = std::atan(outward - 0.005) * 180.0 / 3.14159265358979;
        EXPECT_NEAR(report.tilt.swing, tilt, 0.2) << outward;
        EXPECT_GT(report.headingBound, tilt) << "at a dip above 45 degrees";
        EXPECT_GT(static_cast<int>(report.verdict), static_cast<int>(quality::Verdict::Good));
    }
    EXPECT_EQ(assess(0.05).verdict, quality::Verdict::Poor);
}

TEST(JointFit, LeavesOutSamplesOfAShortSwing)
{
    CalibrationTurns turns = Swung(0.0, 0.0);
    const CalibrationTurns swung = Swung(0.5, 0.5);
    for (std::size_t i = 80; i < 100; ++i) {
        turns.horizontal[i] = swung.horizontal[i];
        turns.vertical[i] = swung.vertical[i];
    }
    const JointFit fit = FitJointly(turns);
    ASSERT_EQ(fit.outcome, JointFitOutcome::Fitted);
    EXPECT_EQ(fit.used.horizontal.size(), 180U);
    EXPECT_LT(LargestLevelError(turnmaker::TriangularWorld(), fit.calibration), 0.1);
}

TEST(JointFit, RefusesEmptyTurns)
{
    EXPECT_EQ(FitJointly({}).outcome, JointFitOutcome::TooFewSamples);
}

TEST(JointFit, DescribesEveryOutcome)
{
    for (int i = 0; i <= static_cast<int>(JointFitOutcome::NoSolution); ++i) {
        EXPECT_FALSE(Describe(static_cast<JointFitOutcome>(i)).empty()) << i;
    }
    EXPECT_EQ(Describe(static_cast<JointFitOutcome>(99)), "");
}

} // namespace
