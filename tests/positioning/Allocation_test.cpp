// SPDX-License-Identifier: MIT
//
// Measuring asks nothing of the free store.
#include "tests/positioning/AllocationCounter.h"
#include "tests/positioning/Reach.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string_view>

namespace {

// Valgrind puts its own operator new in the place of the counting one.
bool IsUnderValgrind()
{
    const char* preloaded = std::getenv("LD_PRELOAD");
    return preloaded && std::string_view(preloaded).find("vgpreload") != std::string_view::npos;
}

TEST(Allocation, IsCounted)
{
    if (IsUnderValgrind()) GTEST_SKIP();
    const long before = Allocations();
    delete new int(7);
    const CString text = L"a text too long for the object itself";
    EXPECT_GT(Allocations(), before);
    EXPECT_GT(text.GetLength(), 0);
}

TEST(Allocation, IsNotNeededToMeasure)
{
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
