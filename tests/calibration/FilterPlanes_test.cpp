// SPDX-License-Identifier: MIT
//
// Where the horizontal and the vertical filter differ.
#include "tests/calibration/FilterTwin.h"

#include <cmath>
#include <memory>
#include <numbers>

namespace {

using turns::At;
using turns::kSquare;

TEST(FilterXY, DistanceStageKeepsWithin200OfTheCircleAnd100OfItsHeight)
{
    constexpr struct
    {
        double radius, height;
        bool kept;
    } cases[] = {
        {1000, 0,    true },
        {1199, 99,   true },
        {801,  -99,  true },
        {1200, 0,    false},
        {800,  0,    false},
        {1000, 100,  false},
        {1000, -100, false}
    };
    PoseSensorData circle[] = {At(-1000, 0), At(1000, 0), At(0, 1000), At(0, -1000)};
    turns::Samples ring;
    for (PoseSensorData& sample : circle)
        ring.Add(&sample);
    Reach<CInclineSensor_Filter_XY> filter;
    filter.Calculate_CenterPar(&ring);
    for (const auto& c : cases) {
        PoseSensorData sample = At(c.radius, 0, c.height);
        turns::Samples one;
        one.Add(&sample);
        const std::unique_ptr<turns::Samples> kept(filter.Filter_ByDistance(&one));
        EXPECT_EQ(kept != nullptr, c.kept) << c.radius << ' ' << c.height;
    }
}

TEST(FilterXZ, DistanceStageKeepsWithin500OfTheCircleAnd200OfItsPlane)
{
    constexpr struct
    {
        double radius, side;
        bool kept;
    } cases[] = {
        {1000, 0,    true },
        {1499, 199,  true },
        {501,  -199, true },
        {1500, 0,    false},
        {500,  0,    false},
        {1000, 200,  false},
        {1000, -200, false}
    };
    PoseSensorData circle[] = {At(-1000, 0, 0), At(1000, 0, 0), At(0, 0, 1000), At(0, 0, -1000)};
    turns::Samples ring;
    for (PoseSensorData& sample : circle)
        ring.Add(&sample);
    Reach<CInclineSensor_Filter_XZ> filter;
    filter.Calculate_CenterPar(&ring);
    for (const auto& c : cases) {
        PoseSensorData sample = At(0, c.side, c.radius);
        turns::Samples one;
        one.Add(&sample);
        const std::unique_ptr<turns::Samples> kept(filter.Filter_ByDistance(&one));
        EXPECT_EQ(kept != nullptr, c.kept) << c.radius << ' ' << c.side;
    }
}

TEST(FilterXY, HeightOfTheCenterIsTheMeanOfAllSamples)
{
    PoseSensorData given[] = {At(-1, 0, 3), At(1, 0, 5), At(0, 1, 7), At(0, -1, 9), At(0, 0, 101)};
    turns::Samples array;
    for (PoseSensorData& sample : given)
        array.Add(&sample);
    Reach<CInclineSensor_Filter_XY> filter;
    filter.Calculate_CenterPar(&array);
    EXPECT_DOUBLE_EQ(filter.GetCenterPar().dZ, 25);
}

TEST(FilterXZ, SideOfTheCenterIsTheMeanOfTheFourExtremeSamples)
{
    PoseSensorData given[] = {At(-1, 3, 0), At(1, 5, 0), At(0, 7, 1), At(0, 9, -1), At(0, 101, 0)};
    turns::Samples array;
    for (PoseSensorData& sample : given)
        array.Add(&sample);
    Reach<CInclineSensor_Filter_XZ> filter;
    filter.Calculate_CenterPar(&array);
    EXPECT_DOUBLE_EQ(filter.GetCenterPar().dY, 6);

    PoseSensorData corners[] = {At(-1, 2, -1), At(1, 6, 1)};
    turns::Samples two;
    for (PoseSensorData& sample : corners)
        two.Add(&sample);
    filter.Calculate_CenterPar(&two);
    EXPECT_DOUBLE_EQ(filter.GetCenterPar().dY, 4) << "each is extreme twice and counts twice";
}

TEST(FilterXY, ClearMakesTheCenterInvalidAndKeepsItsFields)
{
    CInclineSensor_Filter_XY filter;
    for (const auto& [x, v] : kSquare)
        filter.Add(new PoseSensorData(At(x, v, 8)));
    const PoseSensorCenterParameter before = filter.GetCenterPar();
    filter.Clear();
    EXPECT_EQ(filter.GetCenterPar().nValid, 0);
    EXPECT_EQ(filter.GetCenterPar().dX, 5);
    EXPECT_EQ(filter.GetCenterPar().dZ, 8);
    EXPECT_EQ(filter.GetCenterPar().dRadius, before.dRadius);
    auto* sample = new PoseSensorData(At(9, 5));
    filter.Add(sample);
    EXPECT_EQ(sample->dAzimuth, 0) << "not computed";
}

TEST(FilterXZ, AfterClearNewSamplesGetAzimuthsAboutTheOldCenter)
{
    CInclineSensor_Filter_XZ filter;
    for (const auto& [x, v] : kSquare)
        filter.Add(new PoseSensorData(At(x, 8, v)));
    filter.Clear();
    EXPECT_EQ(filter.GetCenterPar().nValid, 1);
    auto* first = new PoseSensorData(At(10, 0, 10));
    filter.Add(first);
    EXPECT_DOUBLE_EQ(first->dAzimuth, 45);
    for (int i = 0; i < 9; ++i)
        filter.Add(new PoseSensorData(At(20, 0, 20)));
    EXPECT_DOUBLE_EQ(first->dAzimuth, 225) << "the tenth sample moves the center to (15, 15)";
}

// A drift of y in the middle of the turn, which none of the four extreme samples shows.
TEST(FilterXZ, SamplesThatDriftOutOfThePlaneAreLost)
{
    for (const double drift : {199.0, 200.0}) {
        CInclineSensor_Filter_XZ filter;
        for (int i = 0; i < 360; ++i) {
            const double angle = (i + 0.5) * std::numbers::pi / 180;
            const bool drifted = i > 20 && i < 70;
            filter.Add(new PoseSensorData(
                At(1000 * std::cos(angle), drifted ? drift : 0, 1000 * std::sin(angle))));
        }
        const std::unique_ptr<turns::Samples> kept(filter.Filter());
        ASSERT_NE(kept, nullptr);
        bool found = false;
        for (INT_PTR i = 0; i < kept->GetSize(); ++i)
            found = found || kept->GetAt(i)->dMag_y > 0;
        EXPECT_EQ(found, drift < 200);
    }
}

} // namespace
