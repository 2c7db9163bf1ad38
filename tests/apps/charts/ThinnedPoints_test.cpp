// SPDX-License-Identifier: MIT
#include "apps/charts/ThinnedPoints.h"

#include <gtest/gtest.h>

namespace {

TEST(ThinnedPoints, StayEvenAndBounded)
{
    charts::ThinnedPoints points;
    for (int i = 0; i < 1'000'000; ++i)
        points.Add({static_cast<double>(i), 0.0});
    const auto& kept = points.Points();
    ASSERT_LE(kept.size(), charts::ThinnedPoints::kMost);
    ASSERT_GT(kept.size(), charts::ThinnedPoints::kMost / 4);
    const double step = kept[1].x - kept[0].x;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i].x, static_cast<double>(i) * step);
    }
}

TEST(ThinnedPoints, AreAllPointsWhereThereAreFew)
{
    charts::ThinnedPoints points;
    for (int i = 0; i < 100; ++i)
        points.Add({static_cast<double>(i), 0.0});
    EXPECT_EQ(points.Points().size(), 100U);
}

} // namespace
