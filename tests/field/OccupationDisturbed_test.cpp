// SPDX-License-Identifier: MIT
//
// Samples that are marked as disturbed have no vote on the heading.
#include "field/DisturbanceMonitor.h"
#include "field/Occupation.h"

#include "tests/field/OccupationFigures.h"
#include "tests/field/SimulatedPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using field::DisturbanceMonitor;
using field::InertialSample;
using field::MonitorSample;
using field::Occupation;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationReason;
using field::OccupationSetup;
using field_tests::Hold;
using field_tests::kTip;
using field_tests::LeanIn;
using field_tests::PlanError;
using field_tests::SimulatedPole;

using Marks = std::function<bool(const InertialSample&)>;

bool Never(const InertialSample&)
{
    return false;
}

bool Always(const InertialSample&)
{
    return true;
}

// A pole with a true compass, and from some time on a magnet beside it that turns the horizontal field
// (20 to the north, 45 down) by 31 degrees and makes it 7 degrees flatter.
class PoleBesideAMagnet
{
public:
    PoleBesideAMagnet(const SimulatedPole::Lean& lean, double from)
        : m_pole(lean, 77.0, TrueCompass(), 1), m_from(from)
    {}

    // Fills an occupation with 8 s, samples marked by `marks`.
    void Feed(Occupation& occupation, const Marks& marks)
    {
        for (int i = 0; i <= 800; ++i) {
            InertialSample sample = m_pole.Sample(0.01 * i);
            if (sample.seconds >= m_from) AddMagnet(sample);
            sample.disturbed = marks(sample);
            occupation.Add(sample);
            if (i % 20 == 0) occupation.Add(m_pole.Epoch(0.01 * i));
        }
    }

private:
    static field_tests::PoleErrors TrueCompass()
    {
        field_tests::PoleErrors errors;
        errors.heading = 0.0;
        return errors;
    }

    void AddMagnet(InertialSample& sample) const
    {
        const Eigen::Vector3d magnet =
            m_pole.Attitude(sample.seconds).transpose() * Eigen::Vector3d(0.0, 12.0, 6.0);
        sample.magnetic.x += magnet.x();
        sample.magnetic.y += magnet.y();
        sample.magnetic.z += magnet.z();
    }

    SimulatedPole m_pole;
    double m_from; // [s]
};

OccupationEstimate EstimateOf(const SimulatedPole::Lean& lean, double from, const Marks& marks,
                              const OccupationSetup& setup = {})
{
    Occupation occupation(setup);
    PoleBesideAMagnet(lean, from).Feed(occupation, marks);
    return occupation.Estimate();
}

// Held still, the pole has no heading but that of the magnetometer.
TEST(OccupationDisturbed, TakesTheHeadingFromTheUndisturbedSamples)
{
    DisturbanceMonitor monitor({std::hypot(20.0, 45.0), 66.04});
    const auto byMonitor = [&monitor](const InertialSample& sample) {
        MonitorSample now;
        now.seconds = sample.seconds;
        now.tilt = sample.tilt;
        now.a = sample.magnetic;
        const auto verdict = monitor.Add(now);
        return verdict.suspect || verdict.disturbed;
    };
    const auto marked = EstimateOf(Hold(25.0), 3.0, byMonitor);
    EXPECT_NEAR(marked.disturbedPart, 5.0 / 8.0, 0.01);
    EXPECT_LT(PlanError(marked, kTip), 0.02);
    const auto unmarked = EstimateOf(Hold(25.0), 3.0, Never);
    EXPECT_EQ(unmarked.disturbedPart, 0.0);
    EXPECT_GT(PlanError(unmarked, kTip), 0.1);
}

TEST(OccupationDisturbed, WithoutUndisturbedSamplesIsAnOccupationWithoutMagnetometer)
{
    const auto marked = EstimateOf(LeanIn(25.0), 0.0, Always);
    OccupationSetup setup;
    setup.useMagnetometer = false;
    const auto expected = EstimateOf(LeanIn(25.0), 0.0, Never, setup);
    EXPECT_EQ(marked.disturbedPart, 1.0);
    EXPECT_EQ(marked.tip.x, expected.tip.x);
    EXPECT_EQ(marked.tip.y, expected.tip.y);
    EXPECT_EQ(marked.headingSigma, expected.headingSigma);
    EXPECT_TRUE(std::isnan(marked.magneticDifference));
}

// What a monitor has not marked before it speaks.
TEST(OccupationDisturbed, HardlyHearsAMomentThatWasNotMarked)
{
    const auto late = [](const InertialSample& sample) { return sample.seconds > 0.2; };
    const auto e = EstimateOf(Hold(25.0), 0.0, late);
    EXPECT_EQ(e.reason, OccupationReason::HeadingUncertain) << OccupationText(e);
    EXPECT_GT(e.headingSigma, 15.0);
    EXPECT_LT(EstimateOf(Hold(25.0), 0.0, Never).headingSigma, 5.0);
}

TEST(OccupationDisturbed, IsForgottenWhenCleared)
{
    Occupation occupation({});
    PoleBesideAMagnet(LeanIn(25.0), 0.0).Feed(occupation, Always);
    occupation.Clear();
    PoleBesideAMagnet(LeanIn(25.0), 9.0).Feed(occupation, Never);
    EXPECT_EQ(occupation.Estimate().disturbedPart, 0.0);
}

TEST(OccupationDisturbed, LeavesEpochsOutWithoutGyros)
{
    const auto estimateOf = [](const Marks& marks) {
        Occupation occupation({});
        PoleBesideAMagnet(LeanIn(25.0), 6.0).Feed(occupation, marks);
        return occupation.EstimateWithoutGyros();
    };
    const auto marked =
        estimateOf([](const InertialSample& sample) { return sample.seconds >= 6.0; });
    EXPECT_EQ(marked.epochs, 30);
    EXPECT_NEAR(marked.lean, 25.0, 0.1);
    EXPECT_LT(PlanError(marked, kTip), 0.02);
    EXPECT_GT(PlanError(estimateOf(Never), kTip), PlanError(marked, kTip));
    const auto none = estimateOf(Always);
    EXPECT_EQ(none.advice, OccupationAdvice::Move);
    EXPECT_EQ(none.reason, OccupationReason::TooShort);
    EXPECT_FALSE(none.hasTip);
}

} // namespace
