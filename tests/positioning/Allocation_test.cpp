// SPDX-License-Identifier: MIT
//
// Measuring allocates no memory.
#include "tests/positioning/Reach.h"
#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

namespace {

using reference::Allocations;

TEST(Allocation, IsNotNeededToMeasure)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    for (const int type : kSensorTypes) {
        Reach sensor(type);
        PoseSensorData leaning = Sample(5, 12, {150, 80, -400});
        PoseSensorData plumb = Sample(0, 0, {150, 80, -400});
        xyhCoordinate point;
        const long before = Allocations();
        sensor.Position(leaning, 2.0, point);
        sensor.Position(plumb, 2.0, point);
        sensor.Position_Geometry_A(point, leaning, 2.0, point);
        sensor.Position_Geometry_B(point, leaning, 2.0, point);
        EXPECT_EQ(Allocations(), before) << "type " << type;
    }
}

} // namespace
