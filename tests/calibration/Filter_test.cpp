// SPDX-License-Identifier: MIT
//
// The rules of the sample filters one by one, on values computed by hand.
#include "tests/calibration/FilterTwin.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace {

using turns::At;
using turns::kSquare;

// The same point for the vertical filter.
PoseSensorData Upright(PoseSensorData sample)
{
    std::swap(sample.dMag_y, sample.dMag_z);
    return sample;
}

template <class Filter>
PoseSensorData For(const PoseSensorData& sample)
{
    return kTurnAxis<Filter> == turns::TurnAxis::Vertical ? Upright(sample) : sample;
}

template <class Filter>
class SampleFilter : public ::testing::Test
{
protected:
    // A sample in the plane of the filter, which takes ownership of it.
    PoseSensorData* Give(const PoseSensorData& sample)
    {
        auto* given = new PoseSensorData(For<Filter>(sample));
        filter.Add(given);
        return given;
    }

    // A sample that is not in the record and lives as long as the test.
    PoseSensorData* Keep(const PoseSensorData& sample)
    {
        kept.push_back(std::make_unique<PoseSensorData>(For<Filter>(sample)));
        array.Add(kept.back().get());
        return kept.back().get();
    }

    PoseSensorData* KeepAzimuth(double azimuth, int flag = 1)
    {
        PoseSensorData* sample = Keep({});
        sample->dAzimuth = azimuth;
        sample->SetTurnFlag(flag);
        return sample;
    }

    // Indices in `array` of the samples that a stage returned.
    std::vector<int> Places(turns::Samples* result)
    {
        const std::unique_ptr<turns::Samples> owner(result);
        std::vector<int> places;
        for (INT_PTR i = 0; i < result->GetSize(); ++i)
            for (INT_PTR k = 0; k < array.GetSize(); ++k)
                if (result->GetAt(i) == array[k]) places.push_back(static_cast<int>(k));
        return places;
    }

    std::vector<std::unique_ptr<PoseSensorData>> kept;
    turns::Samples array;
    Reach<Filter> filter;
};

using Filters = ::testing::Types<CInclineSensor_Filter_XY, CInclineSensor_Filter_XZ>;
TYPED_TEST_SUITE(SampleFilter, Filters);

TYPED_TEST(SampleFilter, IgnoresANullSample)
{
    this->filter.Add(nullptr);
    for (const auto& [x, v] : kSquare)
        this->Give(At(x, v));
    EXPECT_EQ(this->filter.GetCenterPar().nValid, 1) << "the ten samples count, the null does not";
}

TYPED_TEST(SampleFilter, CenterBecomesValidAtTheTenthSample)
{
    std::vector<PoseSensorData*> given;
    for (const auto& [x, v] : kSquare) {
        EXPECT_EQ(this->filter.GetCenterPar().nValid, 0);
        given.push_back(this->Give(At(x, v)));
        EXPECT_EQ(given[0]->dAzimuth == 0, given.size() < 10) << "untouched until then";
    }
    EXPECT_EQ(this->filter.GetCenterPar().nValid, 1);
    EXPECT_DOUBLE_EQ(this->filter.GetCenterPar().dX, 5);
    EXPECT_DOUBLE_EQ(given[0]->dAzimuth, 225) << "all azimuths are written with the first center";
    EXPECT_DOUBLE_EQ(given[4]->dAzimuth, 45);
}

TYPED_TEST(SampleFilter, OnlyEachTenthSampleMovesTheCenter)
{
    for (const auto& [x, v] : kSquare)
        this->Give(At(x, v));
    PoseSensorData* far = this->Give(At(105, 5));
    EXPECT_DOUBLE_EQ(this->filter.GetCenterPar().dX, 5);
    EXPECT_DOUBLE_EQ(far->dAzimuth, 360) << "on the x axis of the old center";
    for (int i = 0; i < 9; ++i)
        this->Give(At(5, 5));
    EXPECT_DOUBLE_EQ(this->filter.GetCenterPar().dX, 52.5) << "the twentieth";
}

TYPED_TEST(SampleFilter, AzimuthsOnTheAxesCountFromX)
{
    this->Keep(At(-10, -10));
    this->Keep(At(10, 10));
    ASSERT_EQ(this->filter.Calculate_CenterPar(&this->array), 1);
    constexpr struct
    {
        double x, v, azimuth;
        const char* why;
    } cases[] = {
        {0,      0,                    360, "the center itself: 0 is stored as 360"},
        {7,      0,                    360, "+x, 0 stored as 360"                  },
        {0,      7,                    90,  "+second"                              },
        {-7,     0,                    180, "-x"                                   },
        {0,      -7,                   270, "-second"                              },
        {0.9e-6, 7,                    90,  "beside the axis by less than 1e-6"    },
        {1,      std::numbers::sqrt3,  30,  "off the axes 0 lies towards +second"  },
        {1,      -std::numbers::sqrt3, 150, "and the angle grows towards +x"       },
        {-1,     -std::numbers::sqrt3, 210, ""                                     },
        {-1,     std::numbers::sqrt3,  330, ""                                     },
    };
    for (const auto& c : cases) {
        PoseSensorData* sample = this->Keep(At(c.x, c.v));
        ASSERT_EQ(this->filter.Calculate_Azimuth_One(sample), 1);
        EXPECT_NEAR(sample->dAzimuth, c.azimuth, 1e-12) << c.why;
    }
}

TYPED_TEST(SampleFilter, TurnFlagIsOneWhereTheAzimuthGrew)
{
    this->Keep(At(-10, -10));
    this->Keep(At(10, 10));
    ASSERT_EQ(this->filter.Calculate_CenterPar(&this->array), 1);
    constexpr struct
    {
        double x, v;
        int flag;
    } walk[] = {
        {1, 5, 7},
        {2, 5, 1},
        {2, 5, 0},
        {1, 5, 0},
        {5, 1, 1}
    };
    for (const auto& step : walk) {
        PoseSensorData* sample = this->Keep(At(step.x, step.v));
        sample->SetTurnFlag(7);
        this->filter.Calculate_Azimuth_One(sample);
        EXPECT_EQ(sample->GetTurnFlag(), step.flag)
            << step.x << ' ' << step.v << "; unchanged without a predecessor";
    }
}

TYPED_TEST(SampleFilter, RefusesAzimuthsWithoutACenter)
{
    PoseSensorData* sample = this->KeepAzimuth(12);
    EXPECT_EQ(this->filter.Calculate_Azimuth_One(sample), 0);
    EXPECT_EQ(this->filter.Calculate_Azimuth_One(nullptr), 0);
    EXPECT_EQ(this->filter.Calculate_Azimuth(&this->array), 0);
    EXPECT_EQ(sample->dAzimuth, 12);
}

TYPED_TEST(SampleFilter, CenterNeedsASample)
{
    this->array.Add(nullptr);
    EXPECT_EQ(this->filter.Calculate_CenterPar(&this->array), 0);
    EXPECT_EQ(this->filter.Calculate_CenterPar(nullptr), 0);
    EXPECT_EQ(this->filter.GetCenterPar().nValid, 0);
}

TYPED_TEST(SampleFilter, RadiusIsTheMeanDistanceInThePlane)
{
    this->Keep(At(-10, 0, 70));
    this->Keep(At(10, 0, -70));
    this->Keep(At(0, 4, 9));
    this->Keep(At(0, -4, 9));
    ASSERT_EQ(this->filter.Calculate_CenterPar(&this->array), 1);
    EXPECT_DOUBLE_EQ(this->filter.GetCenterPar().dRadius, 7);
}

TYPED_TEST(SampleFilter, SectorBoundariesCountForNeitherNeighbor)
{
    std::vector<PoseSensorData*> given;
    for (int i = 0; i < 72; ++i)
        given.push_back(this->Give({}));
    const auto spread = [&](double within) {
        for (int i = 0; i < 72; ++i)
            given[static_cast<std::size_t>(i)]->dAzimuth = 5 * i + within;
    };
    spread(2.5);
    EXPECT_EQ(this->filter.IsRecordOK(), 1);
    EXPECT_EQ(this->filter.GetRecordRate(), 100);
    given[7]->dAzimuth = 35;
    EXPECT_EQ(this->filter.IsRecordOK(), 0);
    EXPECT_EQ(this->filter.GetRecordRate(), 99) << "71 of 72 is 98.6 %";
    spread(5);
    EXPECT_EQ(this->filter.GetRecordRate(), 0);
}

TYPED_TEST(SampleFilter, HalfTheSectorsAreFiftyPercent)
{
    std::vector<PoseSensorData*> given;
    for (int i = 0; i < 36; ++i)
        given.push_back(this->Give({}));
    for (int i = 0; i < 36; ++i)
        given[static_cast<std::size_t>(i)]->dAzimuth = 10 * i + 1;
    EXPECT_EQ(this->filter.GetRecordRate(), 50);
    EXPECT_EQ(this->filter.IsRecordOK(), 0) << "fewer samples than sectors";
}

// Beyond a few hundred samples the filter keeps one sample per sector instead of counting.
TYPED_TEST(SampleFilter, LongRecordsAreCovered)
{
    std::vector<PoseSensorData*> given;
    for (int i = 0; i < 1000; ++i) {
        const double angle = i * 2 * std::numbers::pi / 1000;
        given.push_back(this->Give(At(1000 * std::cos(angle), 1000 * std::sin(angle))));
    }
    EXPECT_EQ(this->filter.IsRecordOK(), 1);
    for (PoseSensorData* sample : given)
        sample->dAzimuth = 17;
    EXPECT_EQ(this->filter.GetRecordRate(), 1) << "azimuths written from outside are noticed";
}

TYPED_TEST(SampleFilter, EmptyRecordIsNotCovered)
{
    EXPECT_EQ(this->filter.IsRecordOK(), 0);
    EXPECT_EQ(this->filter.GetRecordRate(), 0);
    EXPECT_EQ(this->filter.Filter(), nullptr);
}

TYPED_TEST(SampleFilter, GapOfMoreThanSixtyDegreesIsNotComplete)
{
    const auto complete = [&](std::initializer_list<double> degrees) {
        this->array.RemoveAll();
        for (const double degree : degrees) {
            const double angle = degree * std::numbers::pi / 180;
            this->Keep(At(100 * std::sin(angle), 100 * std::cos(angle)));
        }
        return this->filter.IsComplete(&this->array);
    };
    // 90, 180, 270 and 359.99 fix the center at 0; azimuths count from +second towards +x here.
    EXPECT_EQ(complete({1, 45, 89.9, 149, 180.1, 225, 269.9, 315, 359.9}), 1);
    EXPECT_EQ(complete({1, 45, 89.9, 152, 180.1, 225, 269.9, 315, 359.9}), 0);
    EXPECT_EQ(this->filter.IsComplete(nullptr), 0);
    turns::Samples none;
    EXPECT_EQ(this->filter.IsComplete(&none), 1);
}

// The azimuths are 30, 90, 135, 180 and 210: atan(1/√3) is 30 degrees to the last digits.
TYPED_TEST(SampleFilter, GapOfExactlySixtyDegreesIsComplete)
{
    const double root = 10 * std::numbers::sqrt3;
    const auto gapOfFirstTwo = [&](double x) {
        this->array.RemoveAll();
        const PoseSensorData* first = this->Keep(At(x, root));
        const PoseSensorData* second = this->Keep(At(0, 10));
        this->Keep(At(10, -10));
        this->Keep(At(-5, 0));
        this->Keep(At(-10, -root));
        const int complete = this->filter.IsComplete(&this->array);
        return std::pair(second->dAzimuth - first->dAzimuth, complete);
    };
    EXPECT_EQ(gapOfFirstTwo(10), (std::pair{60.0, 1}));
    const auto [gap, complete] = gapOfFirstTwo(10 - 1e-13);
    EXPECT_GT(gap, 60);
    EXPECT_EQ(complete, 0);
}

TYPED_TEST(SampleFilter, SelectCopiesAllWhenMoreAreWanted)
{
    this->Keep(At(1, 1));
    this->array.Add(nullptr);
    this->Keep(At(2, 2));
    const std::unique_ptr<turns::Samples> all(this->filter.Select(&this->array, 4));
    ASSERT_EQ(all->GetSize(), 3);
    EXPECT_EQ(all->GetAt(1), nullptr);
    EXPECT_EQ(all->GetAt(2), this->array[2]);
    const std::unique_ptr<turns::Samples> asMany(this->filter.Select(&this->array, 3));
    EXPECT_EQ(asMany->GetSize(), 2) << "as many as there are: null entries are left out";
}

TYPED_TEST(SampleFilter, SelectTakesEachStepAndTheFourExtremes)
{
    for (int i = 0; i < 12; ++i)
        this->Keep(At(i == 4 ? 50 : i == 5 ? -50 : i, i));
    EXPECT_EQ(this->Places(this->filter.Select(&this->array, 3)), (std::vector{0, 4, 5, 9, 11}))
        << "0 and 11 are least and greatest in the second axis; 9 is the fourth after 5";
}

TYPED_TEST(SampleFilter, SelectRefusesNullAndNothing)
{
    EXPECT_EQ(this->filter.Select(nullptr, 3), nullptr);
    EXPECT_EQ(this->filter.Select(&this->array, 0), nullptr);
    EXPECT_EQ(this->filter.Select(&this->array, -1), nullptr);
}

TYPED_TEST(SampleFilter, TimeStageThinsSamplesOfAStandingPole)
{
    const auto at = [&](double x, int second) {
        PoseSensorData sample = At(x, 0);
        sample.nHour = 9;
        sample.nMinute = 59;
        sample.nSecond = second;
        this->Keep(sample);
    };
    at(0, 50);
    at(29.9, 52);
    at(30, 52);
    at(31, 54);
    at(32, 55);
    at(33, 0); // the time went back: it does not wrap
    EXPECT_EQ(this->Places(this->filter.Filter_ByTime(&this->array)), (std::vector{0, 2, 4}));
}

TYPED_TEST(SampleFilter, TimeStageComparesTimesOfAnySize)
{
    constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
    for (const auto field :
         {&PoseSensorData::nHour, &PoseSensorData::nMinute, &PoseSensorData::nSecond}) {
        this->array.RemoveAll();
        for (const int time : {kLeast, kMost, kLeast})
            this->Keep({})->*field = time;
        EXPECT_EQ(this->Places(this->filter.Filter_ByTime(&this->array)), (std::vector{0, 1}))
            << "the first step lasts for ages, the second runs back";
    }
}

// 30 counts in every direction: the root of the sum decides whether the distance is below 30.
TYPED_TEST(SampleFilter, TimeStageComparesTheDistanceItself)
{
    int below = 0;
    for (int i = 0; i < 2000; ++i) {
        const double angle = i * std::numbers::pi / 1000;
        const double x = 30 * std::cos(angle), v = 30 * std::sin(angle);
        this->array.RemoveAll();
        this->Keep({});
        this->Keep(At(x, v));
        const bool still = std::sqrt(x * x + v * v) < 30;
        below += still ? 1 : 0;
        ASSERT_EQ(this->Places(this->filter.Filter_ByTime(&this->array)).size(), still ? 1U : 2U);
    }
    EXPECT_GT(below, 0);
    EXPECT_LT(below, 2000);
}

TYPED_TEST(SampleFilter, StagesGiveNullForNothing)
{
    this->array.Add(nullptr);
    EXPECT_EQ(this->filter.Filter_ByTime(nullptr), nullptr);
    EXPECT_EQ(this->filter.Filter_ByTime(&this->array), nullptr);
    EXPECT_EQ(this->filter.Filter_ByDistance(nullptr), nullptr);
    EXPECT_EQ(this->filter.Filter_ByDistance(&this->array), nullptr);
    EXPECT_EQ(this->filter.Filter_ByAzimuth(nullptr), nullptr);
    EXPECT_EQ(this->filter.Filter_ByAzimuth(&this->array), nullptr);
}

TYPED_TEST(SampleFilter, AzimuthStageDropsTheLastSample)
{
    for (int i = 0; i < 5; ++i)
        this->KeepAzimuth(i);
    EXPECT_EQ(this->Places(this->filter.Filter_ByAzimuth(&this->array)), (std::vector{0, 1, 2, 3}));
    this->array.RemoveAll();
    this->KeepAzimuth(1);
    EXPECT_EQ(this->filter.Filter_ByAzimuth(&this->array), nullptr);
}

// Two of ten may have turned back, three may not. Then the window moves on by one sample and
// counts it twice: of samples 1 to 9 and once more 1 again three in ten have turned back.
TYPED_TEST(SampleFilter, AzimuthStageRejectsWindowsThatTurnedBack)
{
    for (int i = 0; i < 10; ++i)
        this->KeepAzimuth(i, i == 3 || i == 4 ? 0 : 1);
    EXPECT_EQ(this->Places(this->filter.Filter_ByAzimuth(&this->array)).size(), 9U);
    this->array[0]->SetTurnFlag(0);
    EXPECT_EQ(this->Places(this->filter.Filter_ByAzimuth(&this->array)),
              (std::vector{1, 2, 3, 4, 5, 6, 7, 8}))
        << "without the first sample the window passes";
}

TYPED_TEST(SampleFilter, FilterLeavesTheSamplesWithTheFilter)
{
    for (const PoseSensorData& sample : turns::Make({.samples = 200}, kTurnAxis<TypeParam>))
        this->filter.Add(new PoseSensorData(sample));
    const std::unique_ptr<turns::Samples> result(this->filter.Filter());
    ASSERT_NE(result, nullptr);
    EXPECT_GT(result->GetSize(), 60);
    for (INT_PTR i = 1; i < result->GetSize(); ++i)
        EXPECT_GE(result->GetAt(i)->dAzimuth, result->GetAt(i - 1)->dAzimuth);
}

} // namespace
