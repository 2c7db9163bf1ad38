// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltEffect.h"

#include "quality/calibration/EightValues.h"
#include "simulation/trials/Conditions.h"
#include <gtest/gtest.h>

using quality::CalibrationTurns;
using tiltpole::survey::Magnetometer;

namespace {

CalibrationTurns Recorded()
{
    constexpr std::uint64_t kSeed = 12;
    simulation::Generator random(kSeed, simulation::Stream::Placement);
    study::Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    return RecordTurns(s, kSeed);
}

// Pitch and roll drift by so much during the turn, by nothing in the middle of it.
void Drift(std::vector<PoseSensorData>& turn, double pitch, double roll)
{
    const double last = static_cast<double>(turn.size()) - 1.0;
    for (std::size_t i = 0; i < turn.size(); ++i) {
        const double time = static_cast<double>(i) / last - 0.5;
        turn[i].dPitch += pitch * time;
        turn[i].dRoll += roll * time;
    }
}

// With the drift taken off, the turns are those without it.
TEST(TiltEffect, IsTheDifferenceFromTheFitOfTurnsThatDidNotDrift)
{
    const CalibrationTurns clean = Recorded();
    CalibrationTurns drifted = clean;
    Drift(drifted.horizontal, 2.0, -1.0);
    Drift(drifted.vertical, 2.0, -1.0);
    const auto cleanFit = tiltpole::quality::FitBoth(clean, 1);
    const auto fit = tiltpole::quality::FitBoth(drifted, 1);
    quality::GyroTilt seen{};
    seen.drift.pitch = 2.0;
    seen.drift.roll = -1.0;
    const auto effect = tiltpole::quality::TiltEffectOf(drifted, 1, fit, seen);
    ASSERT_TRUE(effect);
    const auto expected = [](const auto& one, const auto& other, Magnetometer which) {
        return tiltpole::quality::Compare(one.correction, 0.0, other.correction,
                                          other.elevationHorizontal,
                                          tiltpole::quality::HeadingGrid(1, which))
            .rms;
    };
    EXPECT_NEAR((*effect)[0].trueTilt, expected(fit.a, cleanFit.a, Magnetometer::A), 1e-6);
    EXPECT_NEAR((*effect)[1].trueTilt, expected(fit.b, cleanFit.b, Magnetometer::B), 1e-6);
    EXPECT_GT((*effect)[0].trueTilt, 0.01);
}

// An inclinometer that is off by so much follows no turn over head.
TEST(TiltEffect, IsUnknownWhereNoFitIsFoundWithPitchAndRollSetRight)
{
    const CalibrationTurns turns = Recorded();
    const auto fit = tiltpole::quality::FitBoth(turns, 1);
    EXPECT_TRUE(tiltpole::quality::TiltEffectOf(turns, 1, fit, {}));
    quality::GyroTilt drifts{};
    drifts.drift.roll = 300.0;
    EXPECT_FALSE(tiltpole::quality::TiltEffectOf(turns, 1, fit, drifts));
    quality::GyroTilt stays{};
    stays.offset.pitch = 90.0;
    EXPECT_FALSE(tiltpole::quality::TiltEffectOf(turns, 1, fit, stays));
}

} // namespace
