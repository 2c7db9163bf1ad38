// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltEvidence.h"

#include "simulation/trials/Conditions.h"
#include <cmath>
#include <gtest/gtest.h>

using quality::CalibrationTurns;

namespace {

CalibrationTurns ShortTurns()
{
    constexpr std::uint64_t kSeed = 12;
    simulation::Generator random(kSeed, simulation::Stream::Placement);
    study::Setting s = study::Ordinary(random);
    study::Handle(s, 0.3, random);
    s.faults.keepEvery = 8;
    return RecordTurns(s, kSeed);
}

TEST(TiltEvidence, RestsOnEverySampleOfAShortTurn)
{
    CalibrationTurns turns = ShortTurns();
    ASSERT_LT(turns.horizontal.size(), 250U);
    const auto model = tiltpole::quality::FitBoth(turns, 1);
    const auto before = tiltpole::quality::TiltEvidenceOf(turns, 1, model);
    for (std::size_t i = 1; i < turns.horizontal.size(); i += 2)
        turns.horizontal[i].dPitch += 0.5;
    const auto after = tiltpole::quality::TiltEvidenceOf(turns, 1, model);
    EXPECT_GT(std::fabs(after.offset.pitch - before.offset.pitch), 0.01);
}

} // namespace
