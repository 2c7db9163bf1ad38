// SPDX-License-Identifier: MIT
//
// Sort_ByAzimuth gives the order of an exchange sort, also for equal azimuths, null entries and
// NaN.
#include "tests/calibration/FilterTwin.h"

#include <rapidcheck/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace {

struct Sorted
{
    std::vector<PoseSensorData> samples;
    std::vector<PoseSensorData> mirror;
    turns::Samples fast;
    literal::List plain;

    // One sample per azimuth; a negative one makes a null entry.
    explicit Sorted(const std::vector<double>& azimuths)
        : samples(azimuths.size()), mirror(azimuths.size())
    {
        for (std::size_t i = 0; i < azimuths.size(); ++i) {
            samples[i].dAzimuth = mirror[i].dAzimuth = azimuths[i];
            fast.Add(azimuths[i] < 0 ? nullptr : &samples[i]);
            plain.push_back(azimuths[i] < 0 ? nullptr : &mirror[i]);
        }
        CInclineSensor_Filter_XY().Sort_ByAzimuth(&fast);
        literal::Filter::Sort(plain);
    }

    // Original positions in sorted order, -1 for null.
    std::vector<int> Order() const
    {
        std::vector<int> order;
        for (INT_PTR i = 0; i < fast.GetSize(); ++i)
            order.push_back(fast[i] ? static_cast<int>(fast[i] - samples.data()) : -1);
        return order;
    }
    std::vector<int> PlainOrder() const
    {
        std::vector<int> order;
        for (const PoseSensorData* s : plain)
            order.push_back(s ? static_cast<int>(s - mirror.data()) : -1);
        return order;
    }
    bool HasSameFlags() const
    {
        return std::equal(samples.begin(), samples.end(), mirror.begin(),
                          [](const PoseSensorData& a, const PoseSensorData& b) {
                              return a.GetTurnFlag() == b.GetTurnFlag();
                          });
    }
};

TEST(AzimuthSort, OrdersByAscendingAzimuth)
{
    EXPECT_EQ(Sorted({30, 10, 20}).Order(), (std::vector{1, 2, 0}));
}

// By hand: 2a 2b 1 -> the 1 changes places with 2a, which then follows 2b.
TEST(AzimuthSort, RotatesEqualAzimuthsAsTheExchangesDo)
{
    EXPECT_EQ(Sorted({2, 2, 1}).Order(), (std::vector{2, 1, 0}));
    EXPECT_EQ(Sorted({2, 2, 2}).Order(), (std::vector{0, 1, 2}));
    EXPECT_EQ(Sorted({2, 2, 1, 1}).Order(), (std::vector{2, 3, 0, 1}));
}

TEST(AzimuthSort, LeavesNullEntriesWhereTheyAre)
{
    EXPECT_EQ(Sorted({-1, 30, -1, 10, -1}).Order(), (std::vector{-1, 3, -1, 1, -1}));
}

TEST(AzimuthSort, LeavesNaNAzimuthsWhereTheyAre)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Sorted({30, nan, 10}).Order(), (std::vector{2, 1, 0}));
}

TEST(AzimuthSort, RewritesTheFlagsOfAllButTheFirst)
{
    Sorted sorted({20, 10, 10, 10.0000005, 10.5});
    const std::vector<int> order = sorted.Order();
    std::vector<int> flags;
    for (const int i : order)
        flags.push_back(sorted.samples[static_cast<std::size_t>(i)].GetTurnFlag());
    EXPECT_EQ(flags, (std::vector{0, 0, 0, 1, 1}));
}

TEST(AzimuthSort, TakesEmptyAndSingleArrays)
{
    EXPECT_TRUE(Sorted({}).Order().empty());
    EXPECT_EQ(Sorted({5}).Order(), (std::vector{0}));
    CInclineSensor_Filter_XZ().Sort_ByAzimuth(nullptr);
}

// Few distinct values, so that many azimuths are equal.
RC_GTEST_PROP(AzimuthSort, EqualsTheExchangeSort, ())
{
    const auto codes = *rc::gen::container<std::vector<int>>(rc::gen::inRange(-2, 12));
    std::vector<double> azimuths;
    for (const int code : codes)
        azimuths.push_back(code == -2 ? std::numeric_limits<double>::quiet_NaN() : code);
    const Sorted sorted(azimuths);
    RC_ASSERT(sorted.Order() == sorted.PlainOrder());
    RC_ASSERT(sorted.HasSameFlags());
}

TEST(AzimuthSort, EqualsTheExchangeSortOnLongArrays)
{
    std::mt19937 random(11);
    for (const unsigned values : {3U, 40U, 400U, 100000U}) {
        std::vector<double> azimuths;
        for (int i = 0; i < 1500; ++i)
            azimuths.push_back(static_cast<double>(random() % values) / 7 + (i % 97 == 0 ? -1 : 0));
        const Sorted sorted(azimuths);
        EXPECT_EQ(sorted.Order(), sorted.PlainOrder()) << values << " different azimuths";
        EXPECT_TRUE(sorted.HasSameFlags());
    }
}

} // namespace
