// SPDX-License-Identifier: MIT
#include "quality/calibration/GainEvidence.h"

#include "simulation/trials/Conditions.h"
#include <gtest/gtest.h>

using study::RecordingFaults;
using study::Setting;

namespace {

// Heading error by gains that change, as the turns of a careful operator tell of it.
double Told(const RecordingFaults& faults, std::uint64_t seed = 12)
{
    simulation::Generator random(seed, simulation::Stream::Placement);
    Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    s.faults = faults;
    const auto turns = RecordTurns(s, seed);
    const auto model = tiltpole::quality::FitBoth(turns, s.sensor.type);
    EXPECT_EQ(model.outcome, quality::JointFitOutcome::Fitted);
    return tiltpole::quality::HeadingErrorOfGains(turns, s.sensor.type, model);
}

TEST(GainEvidence, IsSmallWithoutAFault)
{
    EXPECT_LT(Told({}), 0.4);
}

TEST(GainEvidence, IsSmallWhereTheFieldChanges)
{
    EXPECT_LT(Told({.fieldFactor = 1.06, .dipChange = 3.0}, 41), 0.4);
}

TEST(GainEvidence, SeesTheGainOfOneAxisThatChanges)
{
    RecordingFaults x;
    x.gainStep[0].x = 1.05;
    EXPECT_GT(Told(x), 1.0);
    RecordingFaults z;
    z.gainStep[1].z = 0.95;
    EXPECT_GT(Told(z), 1.0);
}

} // namespace
