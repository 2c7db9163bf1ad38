// SPDX-License-Identifier: MIT
#include "quality/JointFit.h"

#include "positioning/InclineSensor_Position.h"
#include "tests/quality/TurnMaker.h"
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
}

} // namespace
