// SPDX-License-Identifier: MIT
#include "quality/statistics/Quantiles.h"

#include <gtest/gtest.h>

namespace {

// Published values: R. A. Fisher's tables as in Abramowitz & Stegun, tables 26.9 and 26.10.
TEST(Quantiles, AgreeWithTables)
{
    using namespace tiltpole::quality;
    EXPECT_NEAR(StudentBound(0.95, 1), 12.706, 0.001);
    EXPECT_NEAR(StudentBound(0.95, 2), 4.303, 0.001);
    EXPECT_NEAR(StudentBound(0.95, 12), 2.179, 0.001);
    EXPECT_NEAR(StudentBound(0.99, 30), 2.750, 0.001);
    EXPECT_NEAR(StudentBound(0.95, 1000), 1.962, 0.001);
    EXPECT_NEAR(FisherBoundOfTwo(0.95, 1), 199.5, 0.1);
    EXPECT_NEAR(FisherBoundOfTwo(0.95, 12), 3.885, 0.001);
    EXPECT_NEAR(FisherBoundOfTwo(0.95, 120), 3.072, 0.001);
    EXPECT_NEAR(VarianceRatioBound(0.95, 1), 647.8, 0.1);
    EXPECT_NEAR(VarianceRatioBound(0.95, 10), 3.717, 0.001);
    EXPECT_NEAR(VarianceRatioBound(0.95, 20), 2.464, 0.001);
}

} // namespace
