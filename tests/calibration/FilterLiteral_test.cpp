// SPDX-License-Identifier: MIT
//
// The sample filters compared with a literal implementation of their rules, bit for bit.
#include "tests/calibration/FilterTwin.h"

#include <rapidcheck/gtest.h>

#include <limits>
#include <random>
#include <tuple>

namespace {

template <class Filter>
class FilterLiteral : public ::testing::Test
{
protected:
    static constexpr turns::TurnAxis kAxis = kTurnAxis<Filter>;
};

using Filters = ::testing::Types<CInclineSensor_Filter_XY, CInclineSensor_Filter_XZ>;
TYPED_TEST_SUITE(FilterLiteral, Filters);

TYPED_TEST(FilterLiteral, EveryAddWritesTheSameAzimuthsAndFlags)
{
    for (const turns::Shape& shape : turns::Shapes()) {
        Twin<TypeParam> twin;
        for (const PoseSensorData& sample : turns::Make(shape, this->kAxis)) {
            twin.Add(sample);
            if (twin.Count() % 7 == 0 || twin.Count() % 10 == 0 || twin.Count() < 30) {
                ASSERT_TRUE(twin.HasSameState()) << "seed " << shape.seed;
                ASSERT_TRUE(twin.HasSameCoverage()) << "seed " << shape.seed;
            }
        }
        ASSERT_TRUE(twin.HasSameState());
    }
}

TYPED_TEST(FilterLiteral, RecordedReadingsGiveTheSameResults)
{
    Twin<TypeParam> twin;
    const auto samples = turns::Recorded();
    ASSERT_EQ(samples.size(), 2071U);
    for (const PoseSensorData& sample : samples)
        twin.Add(sample);
    EXPECT_TRUE(twin.HasSameState());
    EXPECT_TRUE(twin.HasSameCoverage());
    EXPECT_TRUE(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
    EXPECT_TRUE(twin.HasSameState());
}

TYPED_TEST(FilterLiteral, FilterKeepsTheSameSamplesInTheSameOrder)
{
    for (const turns::Shape& shape : turns::Shapes()) {
        Twin<TypeParam> twin;
        for (const PoseSensorData& sample : turns::Make(shape, this->kAxis))
            twin.Add(sample);
        ASSERT_TRUE(twin.IsSame(twin.fast.Filter(), twin.literal.Screen())) << shape.seed;
        ASSERT_TRUE(twin.HasSameState()) << shape.seed;
        ASSERT_TRUE(twin.IsSame(twin.fast.Filter(), twin.literal.Screen())) << "again";
        ASSERT_TRUE(twin.HasSameState()) << "again";
    }
}

TYPED_TEST(FilterLiteral, EachStageGivesTheSameArray)
{
    for (const turns::Shape& shape : turns::Shapes()) {
        Twin<TypeParam> twin;
        for (const PoseSensorData& sample : turns::Make(shape, this->kAxis))
            twin.Add(sample);
        std::vector<int> every;
        for (int i = 0; i < shape.samples; ++i) {
            if (i % 50 == 20) every.push_back(-1);
            every.push_back(i);
        }
        every.push_back(-1);
        turns::Samples given;
        literal::List mirror;
        twin.Pick(every, given, mirror);
        EXPECT_TRUE(twin.IsSame(twin.fast.Filter_ByTime(&given), twin.literal.ByTime(mirror)));
        EXPECT_TRUE(
            twin.IsSame(twin.fast.Filter_ByDistance(&given), twin.literal.ByDistance(mirror)));
        EXPECT_TRUE(
            twin.IsSame(twin.fast.Filter_ByAzimuth(&given), twin.literal.ByAzimuth(mirror)));
        for (const int n : {1, 2, 7, 50, shape.samples / 2, shape.samples, 5000})
            EXPECT_TRUE(twin.IsSame(twin.fast.Select(&given, n), twin.literal.Select(mirror, n)))
                << n << " of " << shape.samples;
    }
}

// Whatever is called in between, the next center and azimuths follow the plain rules.
TYPED_TEST(FilterLiteral, AnyOrderOfCallsLeavesTheSameState)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        const auto dice = [&](int sides) {
            return static_cast<int>(random() % static_cast<unsigned>(sides));
        };
        const auto shapes = turns::Shapes();
        turns::Shape shape =
            shapes[static_cast<std::size_t>(dice(static_cast<int>(shapes.size())))];
        shape.samples = 420;
        const auto samples = turns::Make(shape, this->kAxis);
        Twin<TypeParam> twin;
        for (const PoseSensorData& sample : samples) {
            twin.Add(sample);
            std::vector<int> some;
            for (int i = dice(5); i < static_cast<int>(twin.Count()); i += 1 + dice(4))
                some.push_back(dice(20) == 0 ? -1 : i);
            turns::Samples given;
            literal::List mirror;
            twin.Pick(some, given, mirror);
            switch (dice(60)) {
            case 0:
                ASSERT_TRUE(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
                break;
            case 1:
                twin.fast.Sort_ByAzimuth(&given);
                literal::Filter::Sort(mirror);
                break;
            case 2:
                ASSERT_EQ(twin.fast.IsComplete(&given), twin.literal.IsComplete(mirror) ? 1 : 0);
                break;
            case 3:
                ASSERT_EQ(twin.fast.Calculate_CenterPar(&given),
                          twin.literal.Center(mirror) ? 1 : 0);
                break;
            case 4:
                ASSERT_EQ(twin.fast.Calculate_Azimuth(&given),
                          twin.literal.Azimuths(mirror) ? 1 : 0);
                break;
            case 5:
                if (mirror.empty()) break;
                ASSERT_EQ(twin.fast.Calculate_Azimuth_One(given[0]),
                          twin.literal.AzimuthOne(mirror[0]) ? 1 : 0);
                break;
            case 6:
                if (dice(4) == 0) twin.Clear();
                break;
            default:
                break;
            }
            ASSERT_TRUE(twin.HasSameState()) << "seed " << seed;
            ASSERT_TRUE(twin.HasSameCoverage()) << "seed " << seed;
        }
    }
}

// Two passes over half a turn: the samples of the second pass move to other sectors; those of the
// first pass, which a long record keeps per sector, stay.
TYPED_TEST(FilterLiteral, LongRecordsSeeAzimuthsThatAnOperationMoved)
{
    Twin<TypeParam> twin;
    for (const int pass : {1, 2})
        for (PoseSensorData sample :
             turns::Make({.samples = 400, .revolutions = 0.5}, this->kAxis)) {
            sample.dMag_x += pass; // no two readings are the same
            twin.Add(sample);
        }
    std::vector<int> second;
    for (int i = 400; i < 600; ++i)
        second.push_back(i);
    turns::Samples given;
    literal::List mirror;
    twin.Pick(second, given, mirror);
    const int before = twin.fast.GetRecordRate();
    twin.fast.IsComplete(&given);
    twin.literal.IsComplete(mirror);
    EXPECT_GT(twin.fast.GetRecordRate(), before) << "the samples turn about a center of their own";
    EXPECT_TRUE(twin.HasSameCoverage());
    twin.Add(turns::Make({}, this->kAxis)[0]);
    EXPECT_TRUE(twin.HasSameState());
    EXPECT_TRUE(twin.HasSameCoverage());
}

TYPED_TEST(FilterLiteral, ReadingsThatAreNotFiniteFollowTheSameRules)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double odd : {nan, infinity, -infinity}) {
        for (const int place : {0, 4, 11, 37}) {
            Twin<TypeParam> twin;
            auto samples = turns::Make({.samples = 120}, this->kAxis);
            auto& sample = samples[static_cast<std::size_t>(place)];
            (place % 2 ? sample.dMag_x : sample.dMag_z) = odd;
            for (const PoseSensorData& s : samples) {
                twin.Add(s);
                ASSERT_TRUE(twin.HasSameState()) << odd << " at " << place;
            }
            EXPECT_TRUE(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
            EXPECT_TRUE(twin.HasSameState());
        }
    }
}

// Readings on a coarse grid: many samples repeat, share an azimuth, turn back or lie on an axis.
// Code 9 is NaN.
template <class Filter>
void CheckGrid(const std::vector<std::tuple<int, int, int, int>>& codes)
{
    const auto reading = [](int code, double step) {
        return code == 9 ? std::numeric_limits<double>::quiet_NaN() : code * step;
    };
    Twin<Filter> twin;
    int second = 0;
    for (const auto& [x, v, w, pause] : codes) {
        PoseSensorData sample = turns::At(reading(x, 20), reading(v, 20), reading(w, 30));
        if (kTurnAxis<Filter> == turns::TurnAxis::Vertical) std::swap(sample.dMag_y, sample.dMag_z);
        second += pause;
        sample.nMinute = second / 60;
        sample.nSecond = second % 60;
        twin.Add(sample);
    }
    for (const int call : {1, 2}) {
        RC_LOG() << "call " << call << '\n';
        RC_ASSERT(twin.IsSame(twin.fast.Filter(), twin.literal.Screen()));
        RC_ASSERT(twin.HasSameState());
    }
}

auto GridReadings()
{
    const auto inPlane = rc::gen::weightedOneOf<int>({
        {200, rc::gen::inRange(-8, 9)},
        {1,   rc::gen::just(9)                     }
    });
    return rc::gen::container<std::vector<std::tuple<int, int, int, int>>>(
        rc::gen::tuple(inPlane, inPlane, rc::gen::inRange(-2, 3), rc::gen::inRange(0, 5)));
}

RC_GTEST_PROP(FilterOnAGrid, EqualsThePlainRulesInThePlaneXY, ())
{
    CheckGrid<CInclineSensor_Filter_XY>(*rc::gen::scale(4, GridReadings()));
}

RC_GTEST_PROP(FilterOnAGrid, EqualsThePlainRulesInThePlaneXZ, ())
{
    CheckGrid<CInclineSensor_Filter_XZ>(*rc::gen::scale(4, GridReadings()));
}

} // namespace
