// SPDX-License-Identifier: MIT
#include "apps/charts/Scale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using charts::Range;
using testing::ElementsAre;

TEST(Ticks, AreRoundNumbers)
{
    EXPECT_THAT(charts::TickTexts(charts::Ticks({0.0, 1.0}, 6)),
                ElementsAre("0.0", "0.2", "0.4", "0.6", "0.8", "1.0"));
    EXPECT_THAT(charts::TickTexts(charts::Ticks({-12.0, 13.0}, 6)),
                ElementsAre("\u221210", "\u22125", "0", "5", "10"));
    EXPECT_THAT(charts::TickTexts(charts::Ticks({-0.031, 0.02}, 4)),
                ElementsAre("\u22120.02", "0.00", "0.02"));
}

TEST(Ticks, AreAtLeastThree)
{
    EXPECT_THAT(charts::Ticks({1.0, 14.9}, 3), ElementsAre(4.0, 8.0, 12.0));
    EXPECT_THAT(charts::TickTexts(charts::Ticks({0.11, 0.29}, 2)),
                ElementsAre("0.15", "0.20", "0.25"));
}

TEST(Ticks, AreNeverMoreThanAHundred)
{
    EXPECT_EQ(charts::Ticks({0.0, 1.0}, 1000).size(), 100U);
}

TEST(TickTexts, NeedNoStepAndNoSignOfZero)
{
    EXPECT_TRUE(charts::TickTexts({}).empty());
    EXPECT_THAT(charts::TickTexts({-5.0}), ElementsAre("\u22125"));
    EXPECT_THAT(charts::TickTexts({-0.2, -1e-17, 0.2}), ElementsAre("\u22120.2", "0.0", "0.2"));
}

RC_GTEST_PROP(Ticks, LieInTheRangeAndAreFew, (int low, unsigned width))
{
    const Range range{low / 1000.0, low / 1000.0 + (width + 1U) / 7000.0};
    const auto ticks = charts::Ticks(range, 6);
    RC_ASSERT(ticks.size() >= 3U);
    RC_ASSERT(ticks.size() <= 6U);
    for (const double tick : ticks) {
        RC_ASSERT(tick >= range.low - 1e-6 * range.Width());
        RC_ASSERT(tick <= range.high + 1e-6 * range.Width());
    }
}

} // namespace
