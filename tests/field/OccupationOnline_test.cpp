// SPDX-License-Identifier: MIT
//
// The occupation as a field controller uses it: samples and epochs come one after the other, and
// estimates are asked for at any moment.
#include "field/Occupation.h"

#include "tests/field/OccupationFigures.h"
#include "tests/field/SimulatedPole.h"
#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using field::Occupation;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationReason;
using field_tests::kTip;
using field_tests::LeanIn;
using field_tests::PlanError;
using field_tests::PoleErrors;
using field_tests::PoleLog;
using field_tests::Rock;
using field_tests::SimulatedPole;
using reference::Allocations;

void ExpectSame(const OccupationEstimate& e, const OccupationEstimate& expected)
{
    EXPECT_EQ(e.advice, expected.advice);
    EXPECT_EQ(e.reason, expected.reason);
    EXPECT_EQ(e.epochs, expected.epochs);
    EXPECT_EQ(e.tip.x, expected.tip.x);
    EXPECT_EQ(e.tip.y, expected.tip.y);
    EXPECT_EQ(e.tip.h, expected.tip.h);
    for (double OccupationEstimate::*const member :
         {&OccupationEstimate::ellipseMajor, &OccupationEstimate::ellipseMinor,
          &OccupationEstimate::heightHalfInterval, &OccupationEstimate::heading,
          &OccupationEstimate::headingSigma, &OccupationEstimate::delay,
          &OccupationEstimate::magneticDifference, &OccupationEstimate::tipStep,
          &OccupationEstimate::lengthError, &OccupationEstimate::sensorHeight})
        EXPECT_EQ(e.*member, expected.*member);
}

// Of the samples up to number `last`: first all samples, then all epochs.
OccupationEstimate AtOnce(const PoleLog& log, std::size_t last)
{
    Occupation occupation({});
    for (std::size_t i = 0; i <= last; ++i)
        occupation.Add(log.samples[i]);
    for (std::size_t i = 0; i <= last / log.every; ++i)
        occupation.Add(log.epochs[i]);
    return occupation.Estimate();
}

TEST(OccupationOnline, SaysAtEveryMomentWhatAllSamplesAtOnceSay)
{
    PoleErrors errors;
    errors.delay = 0.02;
    const PoleLog log(SimulatedPole(LeanIn(25.0), 77.0, errors, 1), 30.0, 100.0, 20);
    Occupation online({});
    for (std::size_t i = 0; i < log.samples.size(); ++i) {
        log.Give(online, i);
        if (i % log.every != 0) continue;
        const OccupationEstimate e = online.Estimate();
        online.EstimateWithoutGyros();
        if (i > 0 && i % 500 == 0) {
            SCOPED_TRACE(e.seconds);
            ExpectSame(e, AtOnce(log, i));
        }
    }
}

TEST(OccupationOnline, AllocatesNothingAfterItsStart)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    PoleErrors errors;
    errors.delay = 0.02;
    const PoleLog log(SimulatedPole(Rock(15.0), 77.0, errors, 1), 30.0, 100.0, 20);
    Occupation occupation({});
    OccupationEstimate e;
    const long before = Allocations();
    for (std::size_t i = 0; i < log.samples.size(); ++i) {
        if (i > 400 && i < 411) continue; // a gap of the gyros
        log.Give(occupation, i);
        if (i % log.every != 0) continue;
        e = occupation.Estimate();
        occupation.EstimateWithoutGyros();
    }
    occupation.Clear();
    log.Give(occupation, 0);
    EXPECT_EQ(Allocations(), before);
    EXPECT_EQ(e.gaps, 1);
    EXPECT_GT(e.delaySigma, 0.0);
}

TEST(OccupationOnline, KeepsToItsMemoryForAnHour)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    SimulatedPole pole(LeanIn(25.0), 40.0, {}, 1);
    Occupation occupation({});
    const long before = Allocations();
    for (int i = 0; i <= 25 * 3600; ++i) {
        occupation.Add(pole.Sample(i / 25.0));
        if (i % 5 == 0) occupation.Add(pole.Epoch(i / 25.0));
        if (i % (25 * 60) == 0) occupation.Estimate();
    }
    const OccupationEstimate e = occupation.Estimate();
    EXPECT_EQ(Allocations(), before);
    EXPECT_NEAR(e.seconds, 3600.0, 1e-9);
    EXPECT_EQ(e.reason, OccupationReason::TooLong);
}

} // namespace
