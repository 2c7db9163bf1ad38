// SPDX-License-Identifier: MIT
//
// What the parts of a report read from turns that cannot be used: too short, over head, without
// numbers.
#include "quality/calibration/InputFaults.h"
#include "quality/calibration/JointModel.h"
#include "quality/calibration/SphereFit.h"
#include "quality/calibration/Swing.h"
#include "quality/calibration/Text.h"
#include "quality/calibration/TiltAxes.h"
#include "quality/calibration/TurnSense.h"

#include "tests/quality/TurnMaker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tiltpole::quality;
using quality::Finding;
using quality::JointFitOutcome;
using tiltpole::survey::Magnetometer;
using tiltpole::survey::TurnAxis;
using turnmaker::Plan;
using turnmaker::World;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Numbers, AreWrittenWithDecimalsToTheRightOfTheirPlaces)
{
    EXPECT_EQ(Fixed(1.5, 1), "1.5");
    EXPECT_EQ(Fixed(1.5, 1, 6), "   1.5");
    EXPECT_EQ(Fixed(-12.345, 2, 3), "-12.35");
    EXPECT_EQ(Fixed(-0.001, 2), "0.00");
    EXPECT_EQ(Fixed(kNaN, 2), "-");
    EXPECT_EQ(Fixed(INFINITY, 2, 4), "   -");
}

TEST(Numbers, AreWrittenByTheFewestDigits)
{
    EXPECT_EQ(Shortest(0.0), "0");
    EXPECT_EQ(Shortest(-5.0), "-5");
    EXPECT_EQ(Shortest(0.0001), "0.0001");
    EXPECT_EQ(Shortest(0.00001), "1e-05");
    EXPECT_EQ(Shortest(1e6), "1000000");
    EXPECT_EQ(Shortest(1e30), "1e+30");
}

TEST(TiltAxes, AreThoseOfTheTurns)
{
    const TiltAxes axes = TiltAxesOf(turnmaker::MakeTurns(World{}), 1);
    ASSERT_TRUE(axes.horizontal && axes.vertical);
    EXPECT_NEAR(*axes.horizontal, 0.0, 1e-6);
    EXPECT_NEAR(*axes.vertical, 0.0, 1e-6);
    EXPECT_FALSE(axes.exchanged);
}

TEST(TiltAxes, TellOfExchangedLogsWhereOneGoesRoundAndOneStays)
{
    CalibrationTurns turns = turnmaker::MakeTurns(World{});
    std::swap(turns.horizontal, turns.vertical);
    EXPECT_TRUE(TiltAxesOf(turns, 1).exchanged);
    turns.vertical = turns.horizontal; // both go round
    EXPECT_FALSE(TiltAxesOf(turns, 1).exchanged);
}

TEST(TiltAxes, AreUnknownOfTurnsWithoutThem)
{
    CalibrationTurns turns = turnmaker::MakeTurns(World{});
    turns.horizontal[3].dPitch = kNaN;
    turns.vertical.clear();
    const TiltAxes axes = TiltAxesOf(turns, 1);
    EXPECT_FALSE(axes.horizontal);
    EXPECT_FALSE(axes.vertical);
    EXPECT_FALSE(axes.exchanged);
}

// The vertical goes everywhere, about no axis.
TEST(TiltAxes, AreUnknownOfATurnThatTumbles)
{
    CalibrationTurns turns = turnmaker::MakeTurns(World{});
    const double count = static_cast<double>(turns.vertical.size());
    for (std::size_t i = 0; i < turns.vertical.size(); ++i) {
        const double z = 1.0 - 2.0 * (static_cast<double>(i) + 0.5) / count;
        const double around = 2.4 * static_cast<double>(i); // the golden angle
        const double r = std::sqrt(1.0 - z * z);
        turnmaker::SetTilt(turns.vertical[i], {r * std::cos(around), r * std::sin(around), z}, 1);
    }
    EXPECT_FALSE(TiltAxesOf(turns, 1).vertical);
}

// A sensor whose x axis lies along the pole and whose z axis lies along the turn.
TEST(InputFaults, NameBothTurnsOfASensorThatIsMountedOtherwise)
{
    Plan horizontal = turnmaker::HorizontalPlan();
    Plan vertical = turnmaker::VerticalPlan();
    horizontal.axis = vertical.axis = turnmaker::Vector3d::UnitX();
    const auto turns = turnmaker::MakeTurns(World{}, horizontal, vertical);
    const auto fault = InputFaultOf(turns, 1, {JointFitOutcome::TiltUnusable, 0.0, false});
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->finding, Finding::Mounting);
    ASSERT_EQ(fault->suspects.size(), 1u);
    EXPECT_EQ(fault->suspects[0], "horizontal turn: axis off by 90 degrees, vertical turn: axis "
                                  "off by 90 degrees (by pitch and roll)");
}

TEST(InputFaults, NameHeadingsThatTurnAgainstTheRate)
{
    const auto turns = turnmaker::MakeTurns(World{});
    const auto fault = InputFaultOf(turns, 1, {JointFitOutcome::Fitted, 0.0, true});
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->finding, Finding::AxesMisnamed);
    ASSERT_EQ(fault->suspects.size(), 1u);
    EXPECT_EQ(fault->suspects[0], "the headings turn against the angular rate");
}

TEST(InputFaults, NameMagnetometersThatDisagreeUnlessAPartOfATurnIsMissing)
{
    const auto turns = turnmaker::MakeTurns(World{});
    const auto fault = InputFaultOf(turns, 1, {JointFitOutcome::Fitted, 90.0, false});
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->finding, Finding::MagnetometersDisagree);
    for (const auto outcome :
         {JointFitOutcome::HorizontalIncomplete, JointFitOutcome::VerticalIncomplete})
        EXPECT_FALSE(InputFaultOf(turns, 1, {outcome, 90.0, false}));
}

std::vector<PoseSensorData> VerticalTurn(int samples)
{
    Plan plan = turnmaker::VerticalPlan();
    plan.samples = samples;
    plan.outward = 0.0; // with gyros
    return turnmaker::MakeTurn(World{}, plan);
}

TEST(TurnSense, IsToldByTheRateOfATurn)
{
    EXPECT_TRUE(RateIsUsable(VerticalTurn(200), 1));
    auto reversed = VerticalTurn(200);
    for (PoseSensorData& s : reversed)
        s.dGyro_y = -s.dGyro_y;
    EXPECT_FALSE(RateIsUsable(reversed, 1));
}

TEST(TurnSense, LeavesOutRatesThatAreNoNumbersAndStepsThatAreTooWide)
{
    auto spoilt = VerticalTurn(200);
    for (std::size_t i = 0; i < spoilt.size(); i += 10)
        spoilt[i].dGyro_y = kNaN;
    EXPECT_TRUE(RateIsUsable(spoilt, 1));
    EXPECT_FALSE(RateIsUsable(VerticalTurn(8), 1)) << "45 degrees apart";
}

std::vector<PoseSensorData> Swinging()
{
    Plan plan = turnmaker::HorizontalPlan();
    plan.outward = 0.1;
    return turnmaker::MakeTurn(World{}, plan);
}

TEST(Swing, IsWhatAccelerationsTurnWithThePole)
{
    const auto acceleration = AccelerationOf(Swinging(), TurnAxis::Horizontal);
    ASSERT_TRUE(acceleration && acceleration->outward);
    EXPECT_NEAR(*acceleration->outward, 0.1, 1e-6);
    EXPECT_NEAR(acceleration->length, std::sqrt(1.01), 1e-9);
}

TEST(Swing, IsUnknownWhereAccelerationsRatesOrReadingsAreNoNumbers)
{
    auto turn = Swinging();
    turn[7].dAcc_y = kNaN;
    EXPECT_FALSE(AccelerationOf(turn, TurnAxis::Horizontal));
    for (double PoseSensorData::*value : {&PoseSensorData::dGyro_z, &PoseSensorData::dMag_x}) {
        turn = Swinging();
        turn[7].*value = kNaN;
        const auto acceleration = AccelerationOf(turn, TurnAxis::Horizontal);
        ASSERT_TRUE(acceleration);
        EXPECT_FALSE(acceleration->outward);
        EXPECT_NEAR(acceleration->length, std::sqrt(1.01), 1e-9);
    }
}

TEST(SphereFit, IsNoneOfTurnsWithoutNumbers)
{
    const auto turns = turnmaker::MakeTurns(World{});
    const Turn horizontal = TurnOf(turns.horizontal, 1, Magnetometer::A);
    const Turn vertical = TurnOf(turns.vertical, 1, Magnetometer::A);
    ASSERT_TRUE(FitSphere(horizontal, vertical));
    Turn spoilt = vertical;
    spoilt[4].up.x() = kNaN;
    EXPECT_FALSE(FitSphere(horizontal, spoilt));
    spoilt = vertical;
    spoilt[4].reading.z() = 1e308;
    spoilt[5].reading.z() = -1e308;
    EXPECT_FALSE(FitSphere(horizontal, spoilt)) << "wider than any number";
}

} // namespace
