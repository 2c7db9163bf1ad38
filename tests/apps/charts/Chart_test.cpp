// SPDX-License-Identifier: MIT
#include "apps/charts/Chart.h"

#include <gtest/gtest.h>

namespace {

TEST(Chart, AnEllipseTurnsAsAzimuthsDo)
{
    charts::Chart chart("", {"", ""});
    chart.AddEllipse("", {10.0, 20.0}, 2.0, 1.0, 90.0, {});
    const auto& points = chart.series[0].points;
    EXPECT_NEAR(points.front().x, 12.0, 1e-12) << "the long half axis points east";
    EXPECT_NEAR(points.front().y, 20.0, 1e-12);
    EXPECT_NEAR(points[45].y, 19.0, 1e-12) << "a quarter further is the short one, south";
}

} // namespace
