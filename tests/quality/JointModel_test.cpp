// SPDX-License-Identifier: MIT
#include "quality/calibration/JointModel.h"

#include "tests/quality/TurnMaker.h"

#include <gtest/gtest.h>

#include <optional>

using namespace tiltpole::quality;
using turnmaker::World;

namespace {

CalibrationTurns LongTurns(int samples)
{
    World world = turnmaker::DistortedWorld();
    world.noise = 1.0;
    world.tiltNoise = 0.1;
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = vertical.samples = samples;
    return turnmaker::MakeTurns(world, horizontal, vertical);
}

// The fit of the first reading and every `step`-th after it.
std::optional<SphereFit> FitOfEvery(std::size_t step, const CalibrationTurns& turns)
{
    const auto thinned = [step](const std::vector<PoseSensorData>& samples) {
        std::vector<PoseSensorData> kept;
        for (std::size_t i = 0; i < samples.size(); i += step)
            kept.push_back(samples[i]);
        return TurnOf(kept, 1, Magnetometer::A);
    };
    return FitSphere(thinned(turns.horizontal), thinned(turns.vertical));
}

TEST(JointModel, UsesEveryReadingOfAnOrdinaryTurn)
{
    const CalibrationTurns turns = LongTurns(1999);
    const JointModel model = FitBoth(turns, 1);
    ASSERT_EQ(model.outcome, JointFitOutcome::Fitted);
    EXPECT_EQ(model.a.correction.matrix, FitOfEvery(1, turns).value().correction.matrix);
}

TEST(JointModel, UsesEverySecondReadingFromTwoThousandOnAndEveryThirdFromFourThousandOn)
{
    for (const int samples : {2000, 3999, 4000}) {
        const CalibrationTurns turns = LongTurns(samples);
        const JointModel model = FitBoth(turns, 1);
        ASSERT_EQ(model.outcome, JointFitOutcome::Fitted);
        const SphereFit expected = FitOfEvery(samples < 4000 ? 2 : 3, turns).value();
        EXPECT_EQ(model.a.correction.matrix, expected.correction.matrix) << samples;
    }
}

// The spread of the field's elevation, as a sine, up to which pitch and roll are used: 0.1.
TEST(JointModel, RefusesPitchAndRollThatContradictTheField)
{
    int fitted = 0;
    int refused = 0;
    for (double swing = 9.0; swing < 14.0; swing += 0.5) {
        CalibrationTurns turns = turnmaker::MakeTurns(turnmaker::DistortedWorld());
        for (std::size_t i = 0; i < turns.horizontal.size(); ++i) {
            turns.horizontal[i].dPitch += i % 2 == 0 ? swing : -swing;
            turns.horizontal[i].dRoll += i % 4 < 2 ? swing : -swing;
        }
        const std::optional<SphereFit> fit = FitOfEvery(1, turns);
        ASSERT_TRUE(fit);
        const double spread = fit->elevationSpread;
        const JointFitOutcome outcome = FitBoth(turns, 1).outcome;
        if (spread > 0.1) {
            EXPECT_EQ(outcome, JointFitOutcome::TiltUnusable) << spread;
            ++refused;
        } else {
            EXPECT_EQ(outcome, JointFitOutcome::Fitted) << spread;
            ++fitted;
        }
    }
    EXPECT_GT(fitted, 0);
    EXPECT_GT(refused, 0);
}

} // namespace
