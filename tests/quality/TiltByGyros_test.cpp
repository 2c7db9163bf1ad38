// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltByGyros.h"

#include "simulation/trials/Conditions.h"
#include <gtest/gtest.h>

using quality::GyroTilt;
using quality::TiltError;
using study::RecordingFaults;
using study::Setting;
using tiltpole::quality::TiltByGyros;

namespace {

struct OffAxis
{
    int sensorType = 1;
    double axisError = 0.0; // of the vertical turn, in place of a careful hand's [degrees]
};

// A careful operator's turns; the sensor's offsets are those after both turns.
std::optional<GyroTilt> Seen(const RecordingFaults& faults, double pitchOffset = 0.0,
                             double rollOffset = 0.0, const OffAxis& as = {})
{
    constexpr std::uint64_t kSeed = 12;
    simulation::Generator random(kSeed, simulation::Stream::Placement);
    Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    if (as.axisError > 0.0) {
        s.vertical.axisError = as.axisError;
        s.vertical.axisDirection = 0.0;
    }
    s.faults = faults;
    s.sensor.type = as.sensorType;
    s.sensor.pitchOffset = pitchOffset;
    s.sensor.rollOffset = rollOffset;
    const auto turns = RecordTurns(s, kSeed);
    const auto model = tiltpole::quality::FitBoth(turns, s.sensor.type);
    EXPECT_EQ(model.outcome, quality::JointFitOutcome::Fitted);
    return TiltByGyros(turns, s.sensor.type, model);
}

// Within what it states, and it states little.
void ExpectNear(const TiltError& seen, double pitch, double roll, double most)
{
    EXPECT_NEAR(seen.pitch, pitch, 3.0 * seen.pitchDeviation);
    EXPECT_NEAR(seen.roll, roll, 3.0 * seen.rollDeviation);
    EXPECT_LT(seen.pitchDeviation, most);
    EXPECT_LT(seen.rollDeviation, most);
}

TEST(TiltByGyros, SeesAnOffsetThatTurnsTheInclinometersAsAWhole)
{
    const auto seen = Seen({}, 0.0, 1.5);
    ASSERT_TRUE(seen);
    ExpectNear(seen->offset, 0.0, 1.5, 0.3);
    ExpectNear(seen->step, 0.0, 0.0, 0.5);
    ExpectNear(seen->drift, 0.0, 0.0, 0.3);
}

TEST(TiltByGyros, SeesAStepBetweenTheTurns)
{
    const auto seen = Seen({.pitchStep = 1.0, .rollStep = -2.0});
    ASSERT_TRUE(seen);
    ExpectNear(seen->step, 1.0, -2.0, 0.5);
    EXPECT_LT(seen->step.roll, -1.0);
    // The horizontal turn's are less by the step: their mean is half of it below what they end at.
    ExpectNear(seen->offset, -0.5, 1.0, 0.3);
}

TEST(TiltByGyros, SeesADriftDuringTheTurns)
{
    const auto seen = Seen({.pitchDrift = 4.0});
    ASSERT_TRUE(seen);
    // From the first sample to the last of both turns: about half of it in either.
    EXPECT_NEAR(seen->drift.pitch, 2.0, 0.6);
    EXPECT_NEAR(seen->drift.roll, 0.0, 0.4);
}

TEST(TiltByGyros, IsNotMisledByReadingsThatAreSpoilt)
{
    const auto seen = Seen({.outliers = 0.03}, 1.0, 0.0);
    ASSERT_TRUE(seen);
    ExpectNear(seen->offset, 1.0, 0.0, 0.3);
}

TEST(TiltByGyros, FindsTheTimeBetweenSamplesByItself)
{
    const auto seen = Seen({.keepEvery = 3}, 1.0, 0.0);
    ASSERT_TRUE(seen);
    ExpectNear(seen->offset, 1.0, 0.0, 0.3);
}

// The vertical turn of type 2 is about the axis that both angles belong to. Far off that axis it would
// show a step, but what is said of it was measured for type 1 alone.
TEST(TiltByGyros, SaysNothingOfSensorTypeTwoWhoseVerticalTurnHidesSteps)
{
    for (const double axisError : {0.0, 20.0, 30.0}) {
        const OffAxis type2 = {.sensorType = 2, .axisError = axisError};
        EXPECT_FALSE(Seen({}, 0.0, 0.0, type2)) << axisError;
        EXPECT_FALSE(Seen({.pitchStep = 2.0}, 0.0, 0.0, type2)) << axisError;
        EXPECT_FALSE(Seen({.rollStep = 2.0}, 0.0, 0.0, type2)) << axisError;
    }
}

// Of a careful operator's turns, spoilt.
template <class Spoil>
bool SeesAfter(const Spoil& spoil)
{
    constexpr std::uint64_t kSeed = 12;
    simulation::Generator random(kSeed, simulation::Stream::Placement);
    Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    auto turns = RecordTurns(s, kSeed);
    const auto model = tiltpole::quality::FitBoth(turns, 1);
    spoil(turns);
    return TiltByGyros(turns, 1, model).has_value();
}

TEST(TiltByGyros, SaysNothingOfTurnsThatTellNoTimeBetweenSamples)
{
    using Turns = quality::CalibrationTurns;
    EXPECT_TRUE(SeesAfter([](Turns&) {}));
    EXPECT_FALSE(SeesAfter([](Turns& turns) { turns.vertical.resize(5); })) << "too short";
    EXPECT_FALSE(SeesAfter([](Turns& turns) {
        for (std::size_t i = 0; i < turns.horizontal.size(); ++i)
            turns.horizontal[i].dGyro_z = i % 2 == 0 ? 20.0 : -20.0;
    })) << "shaken, not turned";
    for (const double reading : {100.0, std::nan("")}) {
        EXPECT_FALSE(SeesAfter([reading](Turns& turns) {
            for (PoseSensorData& sample : turns.vertical)
                sample.dMag_x = sample.dMag_y = sample.dMag_z = reading;
        })) << "a magnetometer that does not follow: "
            << reading;
    }
}

TEST(TiltByGyros, SaysNothingWithoutGyros)
{
    EXPECT_FALSE(Seen({.noGyros = true}));
}

} // namespace
