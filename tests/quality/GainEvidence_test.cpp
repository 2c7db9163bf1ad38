// SPDX-License-Identifier: MIT
#include "quality/calibration/GainEvidence.h"

#include "simulation/trials/Conditions.h"
#include <gtest/gtest.h>

using study::RecordingFaults;
using study::Setting;

namespace {

using tiltpole::quality::GainEvidence;

// As the turns of a careful operator tell of it.
GainEvidence Told(const RecordingFaults& faults, std::uint64_t seed = 12)
{
    simulation::Generator random(seed, simulation::Stream::Placement);
    Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    s.faults = faults;
    const auto turns = RecordTurns(s, seed);
    const auto model = tiltpole::quality::FitBoth(turns, s.sensor.type);
    EXPECT_EQ(model.outcome, quality::JointFitOutcome::Fitted);
    return tiltpole::quality::GainEvidenceOf(turns, s.sensor.type, model);
}

TEST(GainEvidence, IsSmallWithoutAFault)
{
    EXPECT_LT(Told({}).apart, 0.4);
    EXPECT_LT(Told({}).alike, 0.1);
}

TEST(GainEvidence, IsSmallWhereTheFieldChanges)
{
    const GainEvidence told = Told({.fieldFactor = 1.06, .dipChange = 3.0}, 41);
    EXPECT_LT(told.apart, 0.4);
    EXPECT_EQ(told.alike, 0.0);
}

TEST(GainEvidence, SeesTheGainOfOneAxisThatChanges)
{
    RecordingFaults x;
    x.gainStep[0].x = 1.05;
    EXPECT_GT(Told(x).apart, 1.0);
    RecordingFaults z;
    z.gainStep[1].z = 0.95;
    EXPECT_GT(Told(z).apart, 1.0);
}

TEST(GainEvidence, SeesTheGainOfOneAxisThatChangesForBothAlike)
{
    RecordingFaults both;
    both.gainStep[0].x = both.gainStep[1].x = 1.05;
    EXPECT_GT(Told(both, 41).alike, 0.7);
    RecordingFaults harmless;
    harmless.gainStep[0].z = harmless.gainStep[1].z = 1.05;
    EXPECT_EQ(Told(harmless, 41).alike, 0.0);
}

} // namespace
