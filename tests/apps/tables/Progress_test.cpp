// SPDX-License-Identifier: MIT
#include "apps/tables/Progress.h"

#include <gtest/gtest.h>

namespace {

using tables::ProgressText;
using tables::Unit;

TEST(Progress, ShowsPercentageAmountRateAndTimeLeft)
{
    EXPECT_EQ(ProgressText(500'000'000, 2'000'000'000, 2.0, Unit::Bytes),
              " 25 %  500.0 MB, 250.0 MB/s, 6 s left");
}

TEST(Progress, ShowsNoAmountWithoutAUnit)
{
    EXPECT_EQ(ProgressText(1000, 400'000, 1.0, Unit::None), "  0 %  6 min 39 s left");
    EXPECT_EQ(ProgressText(0, 400'000, 1.0, Unit::None), "");
}

TEST(Progress, NeverShows100PercentTooEarly)
{
    EXPECT_EQ(ProgressText(1999, 2000, 1.0, Unit::None).substr(0, 5), " 99 %");
}

TEST(Progress, OfAnUnknownTotalShowsWhatIsDone)
{
    EXPECT_EQ(ProgressText(3'000'000, 0, 2.0, Unit::Bytes), "3.0 MB, 1.5 MB/s");
}

} // namespace
