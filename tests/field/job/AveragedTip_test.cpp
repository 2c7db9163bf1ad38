// SPDX-License-Identifier: MIT
#include "field/job/AveragedTip.h"

#include "field/Geodesy.h"
#include "tests/field/job/SomeReports.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace field::test {
namespace {

double MillimetersApart(const Geodetic& a, const Geodetic& b)
{
    const xyhCoordinate step = Difference(a, b);
    return 1000.0 * std::hypot(step.x, step.y, step.h);
}

TEST(AveragedTip, OfOneEpochIsThatEpoch)
{
    const Tip tip = SomeTip();
    const TipAverage mean = AveragedTip(std::vector<Tip>{tip});
    EXPECT_EQ(mean.used, 1u);
    EXPECT_LT(MillimetersApart(mean.position, tip.position), 1e-6);
    EXPECT_LT(MillimetersApart(mean.antenna, tip.epoch.antenna), 1e-6);
    EXPECT_NEAR(mean.sigma.nn, tip.sigma.nn, 1e-18);
    EXPECT_NEAR(mean.sigma.ne, tip.sigma.ne, 1e-18);
    EXPECT_NEAR(mean.sigma.hh, tip.sigma.hh, 1e-18);
    EXPECT_NEAR(mean.tilt, 12.0, 1e-12);
    EXPECT_NEAR(mean.azimuthTrue, 250.0, 1e-12);
    EXPECT_TRUE(mean.leftOut.empty());
}

TEST(AveragedTip, LiesInTheMiddle)
{
    const TipAverage mean =
        AveragedTip(std::vector<Tip>{SomeTip(0.004, -0.002, 0.006), SomeTip(-0.002, 0.0, 0.0)});
    EXPECT_EQ(mean.used, 2u);
    EXPECT_LT(MillimetersApart(mean.position, SomeTip(0.001, -0.001, 0.003).position), 0.001);
}

// 0.62, 0.39 and 0.34 of 8, 6 and 15 mm are white; what the antenna did not bring stays whole.
TEST(AveragedTip, ShrinksOnlyTheWhiteShareOfTheAntenna)
{
    const TipAverage mean = AveragedTip(std::vector<Tip>(10, SomeTip()));
    EXPECT_NEAR(mean.sigma.nn, 100e-6 + (64.0 * (1 - 0.3844) + 64.0 * 0.03844) * 1e-6, 1e-15);
    EXPECT_NEAR(mean.sigma.ee, 400e-6 + (36.0 * (1 - 0.1521) + 36.0 * 0.01521) * 1e-6, 1e-15);
    EXPECT_NEAR(mean.sigma.hh, 9e-6 + (225.0 * (1 - 0.1156) + 225.0 * 0.01156) * 1e-6, 1e-15);
    const TipAverage hour = AveragedTip(std::vector<Tip>(36000, SomeTip()));
    EXPECT_GT(hour.sigma.nn, 100e-6 + 64e-6 * 0.6156);
}

TEST(AveragedTip, KeepsTheCorrelationOfTheAntenna)
{
    Tip tip = SomeTip();
    tip.epoch.sigma = {1e-4, 1e-4, 1e-4, 1e-4, 1e-4, 1e-4}; // one error moves all three
    tip.sigma = tip.epoch.sigma;
    const Covariance3 c = AveragedTip(std::vector<Tip>(1000, tip)).sigma;
    EXPECT_NEAR(c.ne * c.ne, c.nn * c.ee, 1e-16);
    EXPECT_NEAR(c.nh * c.nh, c.nn * c.hh, 1e-16);
    EXPECT_NEAR(c.eh * c.eh, c.ee * c.hh, 1e-16);
}

TEST(AveragedTip, LeavesOutWhatIsFarFromTheMedian)
{
    std::vector<Tip> tips(9, SomeTip());
    tips[4] = SomeTip(0.03, 0.04, 0.0);
    tips[7] = SomeTip(0.0, 0.0, -0.08);
    const TipAverage mean = AveragedTip(tips);
    EXPECT_EQ(mean.used, 7u);
    ASSERT_EQ(mean.leftOut.size(), 2u);
    EXPECT_EQ(mean.leftOut[0].index, 4u);
    EXPECT_EQ(mean.leftOut[0].why, "50 mm off the median in plan");
    EXPECT_EQ(mean.leftOut[1].index, 7u);
    EXPECT_EQ(mean.leftOut[1].why, "80 mm off the median in height");
    EXPECT_LT(MillimetersApart(mean.position, SomeTip().position), 1e-6);
}

TEST(AveragedTip, IsOfTheBestQualityOnly)
{
    constexpr Fix kFromWorst[] = {Fix::Invalid,      Fix::Estimated, Fix::Single,
                                  Fix::Differential, Fix::Float,     Fix::Fixed};
    for (std::size_t best = 1; best < std::size(kFromWorst); ++best) {
        std::vector<Tip> tips(2, SomeTip());
        tips[0].epoch.fix = kFromWorst[best - 1];
        tips[1].epoch.fix = kFromWorst[best];
        const TipAverage mean = AveragedTip(tips);
        EXPECT_EQ(mean.used, 1u);
        ASSERT_EQ(mean.leftOut.size(), 1u);
        EXPECT_EQ(mean.leftOut[0].index, 0u);
        EXPECT_EQ(mean.leftOut[0].why,
                  "quality " + std::to_string(static_cast<int>(kFromWorst[best - 1]))
                      + ", others have " + std::to_string(static_cast<int>(kFromWorst[best])));
    }
}

TEST(AveragedTip, KeepsNoiseWithinThreeWhiteDeviations)
{
    // 3 · 0.62 · 8 mm = 14.9 mm north, 3 · 0.39 · 6 mm = 7.0 mm east.
    std::vector<Tip> tips(8, SomeTip());
    tips[0] = SomeTip(0.0145, 0.0, 0.0);
    tips[1] = SomeTip(0.0, 0.0068, 0.0);
    EXPECT_EQ(AveragedTip(tips).used, 8u);
    tips[0] = SomeTip(0.0153, 0.0, 0.0);
    tips[1] = SomeTip(0.0, 0.0073, 0.0);
    EXPECT_EQ(AveragedTip(tips).used, 6u);
}

TEST(AveragedTip, OfTwoEpochsThatDisagreeJudgesNeither)
{
    EXPECT_EQ(AveragedTip(std::vector<Tip>{SomeTip(), SomeTip(0.5)}).used, 2u);
}

TEST(AveragedTip, LeavesOutAnotherQualityStationAndWhatIsNoNumber)
{
    std::vector<Tip> tips(6, SomeTip());
    tips[1].epoch.fix = Fix::Float;
    tips[2].epoch.station = "0208";
    tips[3].position.latitude = std::numeric_limits<double>::quiet_NaN();
    tips[4].sigma.ne = std::numeric_limits<double>::infinity();
    const TipAverage mean = AveragedTip(tips);
    EXPECT_EQ(mean.used, 2u);
    ASSERT_EQ(mean.leftOut.size(), 4u);
    EXPECT_EQ(mean.leftOut[0].why, "quality 5, others have 4");
    EXPECT_EQ(mean.leftOut[1].why, "reference station 0208, most have 0207");
    EXPECT_EQ(mean.leftOut[2].why, "a value is not a number");
    EXPECT_EQ(mean.leftOut[3].why, "a value is not a number");
}

TEST(AveragedTip, LeavesOutAnEpochWithAnyValueThatIsNoNumber)
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    void (*const changes[])(Tip&) = {
        [](Tip& tip) { tip.position.ellipsoidalHeight = kNone; },
        [](Tip& tip) { tip.sigma.hh = kNone; },
        [](Tip& tip) { tip.epoch.antenna.longitude = kNone; },
        [](Tip& tip) { tip.epoch.sigma.ee = kNone; },
        [](Tip& tip) { tip.position.latitude = 89.95; }, // no north to take a mean along
        [](Tip& tip) { tip.epoch.antenna.latitude = -89.95; },
    };
    for (const auto change : changes) {
        std::vector<Tip> tips(2, SomeTip());
        change(tips[1]);
        const TipAverage mean = AveragedTip(tips);
        EXPECT_EQ(mean.used, 1u);
        ASSERT_EQ(mean.leftOut.size(), 1u);
        EXPECT_EQ(mean.leftOut[0].index, 1u);
        EXPECT_EQ(mean.leftOut[0].why, "a value is not a number");
    }
}

TEST(AveragedTip, TakesAFixOfNoKnownKindForNone)
{
    std::vector<Tip> tips(2, SomeTip());
    tips[0].epoch.fix = static_cast<Fix>(3);
    tips[1].epoch.fix = Fix::Estimated;
    const TipAverage mean = AveragedTip(tips);
    ASSERT_EQ(mean.leftOut.size(), 1u);
    EXPECT_EQ(mean.leftOut[0].why, "quality 3, others have 6");
}

TEST(AveragedTip, IsNoneWithoutAnEpoch)
{
    EXPECT_EQ(AveragedTip({}).used, 0u);
    Tip tip = SomeTip();
    tip.position.longitude = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(AveragedTip(std::vector<Tip>{tip}).used, 0u);
}

TEST(AveragedTip, CrossesTheDateLineAndNorth)
{
    Tip west = SomeTip();
    Tip east = SomeTip();
    west.position.longitude = west.epoch.antenna.longitude = 179.99999999;
    east.position.longitude = east.epoch.antenna.longitude = -179.99999999;
    west.azimuthTrue = 350.0;
    east.azimuthTrue = 20.0;
    const TipAverage mean = AveragedTip(std::vector<Tip>{west, east});
    EXPECT_NEAR(std::abs(mean.position.longitude), 180.0, 1e-11);
    EXPECT_NEAR(mean.azimuthTrue, 5.0, 1e-9);
}

} // namespace
} // namespace field::test
