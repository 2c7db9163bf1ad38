// SPDX-License-Identifier: MIT
//
// The multi-point solution where memory runs out.
#include "geometry/TiltPosition_Geometry.h"
#include "tests/reference/FailingAllocations.h"

#include <cmath>
#include <gtest/gtest.h>
#include <new>

namespace {

using reference::AllocationRound;
using reference::CanFailAllocations;
using reference::ForEveryFailingAllocation;

// An antenna on the sphere of 2 m about (10, 20, 100).
TiltPoint_Sensor Antenna(int k)
{
    const double azimuth = 1.4 * k;
    const double lean = 0.3 + 0.03 * k;
    TiltPoint_Sensor point;
    point.dX = 10.0 + 2.0 * std::sin(lean) * std::cos(azimuth);
    point.dY = 20.0 + 2.0 * std::sin(lean) * std::sin(azimuth);
    point.dH = 100.0 + 2.0 * std::cos(lean);
    return point;
}

// Runs an operation of the round; false where it threw for lack of memory.
template <class Operation>
bool Attempt(AllocationRound& round, Operation operation)
{
    try {
        round.Run([&] {
            operation();
            return 0;
        });
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

TEST(TiltPosition_Geometry, ThrowsShortOfMemoryAndKeepsItsObservations)
{
    if (!CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);
    for (int k = 0; k < 15; ++k)
        ASSERT_EQ(geometry.AddPoint(Antenna(k)), 1);
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        xyhCoord tip;
        TiltPoint_State state;
        const bool solved = Attempt(round, [&] { geometry.Calculate(tip, state); });
        EXPECT_EQ(solved, !round.HasFailed());
        EXPECT_EQ(geometry.IsOK(), 1);
        if (!solved) return;
        EXPECT_EQ(state.nStatus, kTiltPointAccepted);
        EXPECT_NEAR(tip.h, 100.0, 1e-9);
    });
    EXPECT_GT(failures, 0);
}

TEST(TiltPosition_Geometry, TakesAnObservationShortOfMemoryWhollyOrNotAtAll)
{
    if (!CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const long failures = ForEveryFailingAllocation([](AllocationRound& round) {
        CTiltPosition_Geometry geometry;
        geometry.SetAntennaHeight(2.0);
        TiltPoint_Sensor point = Antenna(0);
        point.strLabel = L"a label that is too long to lie inside its string";
        const bool added = Attempt(round, [&] { geometry.AddPoint(point); });
        EXPECT_EQ(added, !round.HasFailed());
        EXPECT_EQ(geometry.IsConform(point, 0.3), added ? 0 : 1);
    });
    EXPECT_GT(failures, 0);
}

} // namespace
