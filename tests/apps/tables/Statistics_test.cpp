// SPDX-License-Identifier: MIT
#include "apps/tables/Statistics.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using tables::Percentiles;

Percentiles Of(std::initializer_list<double> values)
{
    Percentiles all;
    for (const double value : values)
        all.Add(value);
    return all;
}

TEST(Percentiles, AreLinearBetweenRanks)
{
    Percentiles four = Of({40.0, 10.0, 30.0, 20.0});
    EXPECT_EQ(four.At(0.0), 10.0);
    EXPECT_EQ(four.At(0.5), 25.0);
    EXPECT_DOUBLE_EQ(four.At(0.9), 37.0); // rank 2.7
    EXPECT_EQ(four.At(1.0), 40.0);
}

TEST(Percentiles, OfNothingAreZero)
{
    Percentiles none;
    EXPECT_EQ(none.At(0.5), 0.0);
    EXPECT_EQ(none.Max(), 0.0);
}

TEST(Percentiles, OfOneValueAreThatValue)
{
    Percentiles one = Of({-7.5});
    EXPECT_EQ(one.At(0.01), -7.5);
    EXPECT_EQ(one.At(0.99), -7.5);
    EXPECT_EQ(one.Mean(), -7.5);
}

TEST(Percentiles, AcceptMoreValuesAfterAQuery)
{
    Percentiles all = Of({1.0, 3.0});
    EXPECT_EQ(all.At(0.5), 2.0);
    all.Add(0.0);
    EXPECT_EQ(all.At(0.5), 1.0);
    EXPECT_EQ(all.Min(), 0.0);
}

// Beyond the exact count a percentile stays within 0.1 % of the sorted value at its rank.
TEST(Percentiles, StayCloseWhenBinned)
{
    std::mt19937_64 generator(20260721);
    std::lognormal_distribution<double> magnitude(-3.0, 2.0);
    std::vector<double> values;
    Percentiles all;
    for (std::size_t i = 0; i < 2 * Percentiles::kExact; ++i) {
        const double value = i % 3 == 0 ? -magnitude(generator) : magnitude(generator);
        values.push_back(value);
        all.Add(value);
    }
    ASSERT_FALSE(all.IsExact());
    std::sort(values.begin(), values.end());
    for (const double fraction : {0.0, 0.01, 0.1, 0.5, 0.9, 0.99, 0.999, 1.0}) {
        const double rank = std::round(fraction * static_cast<double>(values.size() - 1));
        const double expected = values[static_cast<std::size_t>(rank)];
        EXPECT_NEAR(all.At(fraction), expected, 0.001 * std::fabs(expected)) << fraction;
    }
    EXPECT_EQ(all.Min(), values.front());
    EXPECT_EQ(all.Max(), values.back());
}

TEST(Percentiles, BinHugeAndTinyValues)
{
    Percentiles all;
    for (std::size_t i = 0; i <= Percentiles::kExact; ++i)
        all.Add(i % 2 == 0 ? 1e300 : 1e-300);
    all.Add(-1e300);
    EXPECT_EQ(all.At(0.25), 0.0);
    EXPECT_GT(all.At(0.75), 0.999e12);
    EXPECT_EQ(all.Min(), -1e300);
}

} // namespace
