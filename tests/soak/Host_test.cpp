// SPDX-License-Identifier: MIT
//
// The host of the soak does what its figures claim: every sample gives a tip, points are stored, turns are
// solved, and after each round it holds what it held before.
#include "tests/soak/Host.h"

#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace soak {
namespace {

void Work(Host& host, const WorkingDay& day, long from, long to)
{
    for (long i = from; i < to; ++i)
        host.Take(day, i);
}

long CountOf(const Host& host, const char* name)
{
    const std::vector<const Call*> calls = host.Calls();
    const auto found = std::ranges::find_if(
        calls, [&](const Call* call) { return std::strcmp(call->name, name) == 0; });
    return found == calls.end() ? -1 : static_cast<long>((*found)->times.Count());
}

TEST(SoakHost, DoesTheWholeWorkOfARound)
{
    const WorkingDay day;
    Host host;
    Work(host, day, 0, WorkingDay::kRound);
    const Outcome& seen = host.Seen();
    EXPECT_EQ(seen.tips, WorkingDay::kRound);
    EXPECT_NEAR(static_cast<double>(seen.reports), 399.0, 2.0);
    EXPECT_GT(seen.live, 390);
    EXPECT_GT(seen.stored, 50);
    EXPECT_GT(seen.byOccupation, 10);
    EXPECT_GT(seen.estimates, 80);
    EXPECT_EQ(seen.calibrations, 2);
    EXPECT_EQ(seen.refused, 0);
    EXPECT_EQ(seen.disturbed, 0);
}

TEST(SoakHost, CountsEverySampleOnceByWhatItHad)
{
    const WorkingDay day;
    Host host;
    Work(host, day, 0, WorkingDay::kRound);
    EXPECT_EQ(CountOf(host, "position"), WorkingDay::kRound);
    EXPECT_EQ(CountOf(host, "sample") + CountOf(host, "sample with an estimate")
                  + CountOf(host, "sample with a calibration"),
              WorkingDay::kRound);
    EXPECT_EQ(CountOf(host, "sample with an estimate"), host.Seen().estimates);
    EXPECT_EQ(host.Quickest().Count(), CountOf(host, "sample"));
    EXPECT_EQ(CountOf(host, "live pole, epoch to sentences"), host.Seen().reports);
}

TEST(SoakHost, HoldsTheSameBlocksRoundAfterRound)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const WorkingDay day;
    Host host;
    Work(host, day, 0, 2 * WorkingDay::kRound);
    const long held = reference::HeldBlocks();
    Work(host, day, 2 * WorkingDay::kRound, 5 * WorkingDay::kRound);
    EXPECT_EQ(reference::HeldBlocks(), held);
}

TEST(WorkingDay, GoesOnBeyondMidnight)
{
    const WorkingDay day;
    const auto after = [&](double seconds) {
        return *day.EpochText(std::lround(seconds * WorkingDay::kRate) + WorkingDay::kLate);
    };
    const double midnight = 86400.0 - live_pole::kStart;
    EXPECT_NE(after(midnight - 0.2).find(",235959.80,"), std::string::npos);
    EXPECT_NE(after(midnight - 0.2).find(",221126,"), std::string::npos);
    EXPECT_NE(after(midnight).find(",000000.00,"), std::string::npos);
    EXPECT_NE(after(midnight).find(",231126,"), std::string::npos);
}

} // namespace
} // namespace soak
