// SPDX-License-Identifier: MIT
//
// The honest tip estimate: exact sets, one bad position, a wrong antenna height, a second tip.
#include "quality/TipEstimate.h"

#include "geometry/TiltPosition_Geometry.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>

namespace {

using quality::AntennaErrors;
using quality::EstimateTip;
using quality::TipEstimate;
using quality::TipVerdict;

constexpr double kRadians = std::numbers::pi / 180.0;

struct Cone
{
    int count = 15;
    double tilt = 40.0; // largest [degrees]
    AntennaErrors errors = {};
    double noise = 1.0;  // factor of the errors
    double height = 2.0; // of the pole [m]
};

std::vector<xyhCoord> Antennas(const Cone& cone, std::mt19937& random)
{
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::normal_distribution<double> normal;
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < cone.count; ++k) {
        const double tilt = cone.tilt * kRadians * std::sqrt(share(random));
        const double azimuth = 2.0 * std::numbers::pi * share(random);
        const double out = cone.height * std::sin(tilt);
        antennas.push_back(
            {out * std::cos(azimuth) + cone.noise * cone.errors.plan * normal(random),
             out * std::sin(azimuth) + cone.noise * cone.errors.plan * normal(random),
             cone.height * std::cos(tilt) + cone.noise * cone.errors.height * normal(random)});
    }
    return antennas;
}

std::vector<xyhCoord> Antennas(const Cone& cone, unsigned seed)
{
    std::mt19937 random(seed);
    return Antennas(cone, random);
}

TEST(TipEstimate, FindsTheCenterOfAnExactSphere)
{
    auto antennas = Antennas({.noise = 0.0}, 1);
    for (xyhCoord& p : antennas)
        p = {p.x + 10, p.y + 20, p.h + 100};
    const TipEstimate estimate = EstimateTip(antennas, 2.0);
    EXPECT_NEAR(estimate.tip.x, 10, 1e-9);
    EXPECT_NEAR(estimate.tip.y, 20, 1e-9);
    EXPECT_NEAR(estimate.tip.h, 100, 1e-9);
    EXPECT_EQ(estimate.errorFactor, quality::kLeastErrorFactor);
    EXPECT_NEAR(estimate.radiusExcess, 0.0, 1e-9);
    EXPECT_EQ(estimate.verdict, TipVerdict::Store);
    EXPECT_EQ(estimate.used, 15U);
}

TEST(TipEstimate, IsTheSameAtSurveySize)
{
    const auto near = Antennas({}, 2);
    auto far = near;
    for (xyhCoord& p : far)
        p = {p.x + 4500000, p.y + 500000, p.h + 100};
    const TipEstimate a = EstimateTip(near, 2.0);
    const TipEstimate b = EstimateTip(far, 2.0);
    EXPECT_NEAR(b.tip.x - 4500000, a.tip.x, 1e-6);
    EXPECT_NEAR(b.tip.y - 500000, a.tip.y, 1e-6);
    EXPECT_NEAR(b.tip.h - 100, a.tip.h, 1e-6);
    EXPECT_NEAR(b.ellipseMajor, a.ellipseMajor, 1e-6);
    EXPECT_NEAR(b.heightHalfInterval, a.heightHalfInterval, 1e-6);
    EXPECT_EQ(b.verdict, a.verdict);
}

// Four positions at tilt 30°, towards north, east, south and west, residuals ±v alternately: they
// cancel in the tip, so T = 0. Every distance has the weight 1/σ², along x only north and south
// count: the cofactors are σ²/(2·sin²30°) and σ²/(4·cos²30°), the stated errors' own size counts as
// the residuals are smaller, and what all positions share is added. The bounds are those of F with
// (2, 11) and t with 11 degrees of freedom: one of the set, ten of the stated errors.
TEST(TipEstimate, StatesACovarianceThatCanBeWorkedOutByHand)
{
    const double v = 0.001;
    const double s = 0.5;
    const double c = std::sqrt(0.75);
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < 4; ++k) {
        const double r = 2.0 + (k % 2 ? v : -v);
        const double azimuth = 0.5 * std::numbers::pi * k;
        antennas.push_back({r * s * std::cos(azimuth), r * s * std::sin(azimuth), r * c});
    }
    const double sigma = 0.002;
    const TipEstimate estimate = EstimateTip(antennas, 2.0, {sigma, sigma, 0.003, 0.01, 0.004});
    EXPECT_NEAR(estimate.tip.x, 0.0, 1e-9);
    EXPECT_NEAR(estimate.tip.h, 0.0, 1e-6);
    EXPECT_NEAR(estimate.residualRms, v, 1e-6);
    EXPECT_NEAR(estimate.errorFactor, std::sqrt(4 * v * v) / sigma, 1e-3);

    // a longer antenna lets the tip sink by 1/cos 30°
    const double ownPlan = sigma * sigma / (2 * s * s);
    const double ownHeight = sigma * sigma / (4 * c * c);
    const double sharedHeight = 0.01 * 0.01 + 0.004 * 0.004 / (c * c);
    EXPECT_NEAR(estimate.covariance[0][0], ownPlan + 0.003 * 0.003, 2e-7);
    EXPECT_NEAR(estimate.covariance[1][1], ownPlan + 0.003 * 0.003, 2e-7);
    EXPECT_NEAR(estimate.covariance[2][2], ownHeight + sharedHeight, 2e-7);
    EXPECT_NEAR(estimate.covariance[0][1], 0.0, 1e-9);
    const double plan = 2 * 3.9823 * ownPlan + 5.9915 * 0.003 * 0.003;
    const double height = 2.2010 * 2.2010 * ownHeight + 3.8415 * sharedHeight;
    EXPECT_NEAR(estimate.ellipseMajor, std::sqrt(plan), 1e-4);
    EXPECT_NEAR(estimate.heightHalfInterval, std::sqrt(height), 1e-4);
    // rms of sin 30° along north-south over all four: sqrt(2·0.25/4)
    EXPECT_NEAR(estimate.directionSpread, std::asin(std::sqrt(0.125)) / kRadians, 1e-3);
}

// Twenty positions whose residuals are five times the stated errors: they alone set the scale.
TEST(TipEstimate, BelievesResidualsThatContradictTheStatedErrors)
{
    const Cone cone{.count = 20, .noise = 5.0};
    const TipEstimate estimate = EstimateTip(Antennas(cone, 9), 2.0, {0.008, 0.015, 0, 0, 0});
    const TipEstimate told = EstimateTip(Antennas(cone, 9), 2.0, {0.04, 0.075, 0, 0, 0});
    EXPECT_GT(estimate.errorFactor, 3.0);
    EXPECT_NEAR(estimate.ellipseMajor / told.ellipseMajor, 5.0 * told.errorFactor / 5.0, 0.25);
    EXPECT_EQ(estimate.verdict, TipVerdict::TooUncertain);
}

// Residuals of exact positions are 0, and say nothing about errors that the positions share.
TEST(TipEstimate, NeverStatesLessThanTheStatedErrors)
{
    const auto exact = Antennas({.noise = 0.0}, 1);
    const auto half = [&exact](const AntennaErrors& errors) {
        return EstimateTip(exact, 2.0, errors).heightHalfInterval;
    };
    EXPECT_GT(half({0.008, 0.015, 0, 0, 0}), 1.96 * 0.015 / std::sqrt(15.0));
    EXPECT_GT(half({0.001, 0.001, 0, 0.02, 0}), 1.959 * 0.02);
    EXPECT_GT(half({0.001, 0.001, 0, 0, 0.02}), 1.959 * 0.02);
}

TEST(TipEstimate, TurnsTheEllipseAcrossTheDirectionOfTheTilts)
{
    for (const double towards : {0.0, 30.0, 120.0, 179.0}) {
        std::mt19937 random(5);
        std::normal_distribution<double> normal(0.0, 0.005);
        std::vector<xyhCoord> antennas;
        for (int k = -10; k <= 10; ++k) {
            const double along = 0.12 * k;
            const double across = k % 2 ? 0.15 : -0.15;
            const double c = std::cos(towards * kRadians);
            const double s = std::sin(towards * kRadians);
            antennas.push_back({along * c - across * s + normal(random),
                                along * s + across * c + normal(random),
                                std::sqrt(4.0 - along * along - across * across) + normal(random)});
        }
        const TipEstimate estimate = EstimateTip(antennas, 2.0);
        const double across = towards < 90.0 ? towards + 90.0 : towards - 90.0;
        EXPECT_NEAR(std::fabs(std::remainder(estimate.ellipseAzimuth - across, 180.0)), 0.0, 5.0);
        EXPECT_GE(estimate.ellipseAzimuth, 0.0);
        EXPECT_LT(estimate.ellipseAzimuth, 180.0);
        EXPECT_GT(estimate.ellipseMajor, 3.0 * estimate.ellipseMinor);
    }
}

TEST(TipEstimate, NamesAPositionThatIsOff)
{
    auto antennas = Antennas({.count = 20}, 3);
    antennas[7].h += 0.15;
    const TipEstimate estimate = EstimateTip(antennas, 2.0);
    EXPECT_EQ(estimate.verdict, TipVerdict::Outlier);
    EXPECT_EQ(estimate.largestResidualIndex, 7U);
    EXPECT_GT(estimate.largestResidual, 0.08);
    EXPECT_EQ(estimate.suspectIndex, 7U);
    EXPECT_EQ(estimate.suspectResidual, estimate.largestResidual);
    EXPECT_GT(estimate.suspectRatio, 1.0);

    antennas.insert(antennas.begin(), {std::numeric_limits<double>::quiet_NaN(), 0, 0});
    EXPECT_EQ(EstimateTip(antennas, 2.0).suspectIndex, 8U) << "counted as given";
}

xyhCoord AtTilt(double tilt, double azimuth, double distance)
{
    const double t = tilt * kRadians, a = azimuth * kRadians;
    return {distance * std::sin(t) * std::cos(a), distance * std::sin(t) * std::sin(a),
            distance * std::cos(t)};
}

// Eight exact positions around at tilt 30°, one of them d farther away: each has the share 3/8 in
// the tip, so d·√(5/8)/σ is the studentized residual, and the others say nothing against σ. The
// largest of eight stays below the Student quantile 5.2405 (probability 1 − 0.001/8, two-sided, 4
// degrees of freedom of the others and 10 of the stated errors) in 999 sets of 1000.
TEST(TipEstimate, TakesForAnOutlierWhatOneSetInAThousandHas)
{
    constexpr double kSigma = 1e-4;
    const double bound = 5.2405 * kSigma / std::sqrt(5.0 / 8.0);
    for (const double share : {0.1, 0.99, 1.01}) {
        std::vector<xyhCoord> antennas;
        for (int k = 0; k < 8; ++k)
            antennas.push_back(AtTilt(30.0, 45.0 * k, k == 5 ? 2.0 + share * bound : 2.0));
        const TipEstimate estimate = EstimateTip(antennas, 2.0, {kSigma, kSigma, 0, 0, 0});
        EXPECT_EQ(estimate.suspectIndex, 5U);
        EXPECT_NEAR(estimate.suspectRatio, share, 1e-3 * share);
        EXPECT_EQ(estimate.verdict == TipVerdict::Outlier, share > 1.0) << share;
    }
}

// m positions straight above and m around at tilt 60°: the normal equations of height and radius are
// m·[1 + 1/4, −(1 + 1/2); −(1 + 1/2), 2], so the radius has the variance 5σ²/m.
std::vector<xyhCoord> AboveAndAround(int m, double radius, double apart)
{
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < m; ++k) {
        antennas.push_back(AtTilt(0.0, 0.0, radius + (k % 2 ? apart : -apart)));
        antennas.push_back(AtTilt(60.0, 360.0 * k / m, radius));
    }
    return antennas;
}

// m = 5 without residuals: Student's 4.0150 (99.9 %, 6 degrees of freedom and 10 of the stated
// errors) times σ.
TEST(TipEstimate, TakesForAWrongHeightWhatOneSetInAThousandHas)
{
    constexpr double kSigma = 0.001;
    constexpr double kLimit = 4.0150 * kSigma;
    for (const double share : {0.0, 0.98, 1.02}) {
        const TipEstimate estimate = EstimateTip(AboveAndAround(5, 2.0 + share * kLimit, 0.0), 2.0,
                                                 {kSigma, kSigma, 0, 0, 0});
        EXPECT_NEAR(estimate.radiusExcess, share * kLimit, 5e-3 * kLimit);
        EXPECT_NEAR(estimate.radiusExcessLimit, kLimit, 5e-3 * kLimit);
        EXPECT_EQ(estimate.verdict == TipVerdict::WrongRadius, share > 1.0) << share;
    }
}

// m = 6, those above 10σ too high and too low in turn: tip and radius do not follow. The misfit of
// 600 contradicts σ, so it counts alone: Student's 5.0413 (8 degrees of freedom) times
// σ·√(600/8·5/6).
TEST(TipEstimate, WidensTheLimitOfTheHeightWhereResidualsContradictTheStatedErrors)
{
    constexpr double kSigma = 0.001;
    const TipEstimate estimate =
        EstimateTip(AboveAndAround(6, 2.0, 10.0 * kSigma), 2.0, {kSigma, kSigma, 0, 0, 0});
    EXPECT_NEAR(estimate.radiusExcess, 0.0, 1e-6);
    EXPECT_NEAR(estimate.radiusExcessLimit, 5.0413 * kSigma * std::sqrt(62.5), 1e-5);
}

TEST(TipEstimate, NoticesAWrongAntennaHeightInAWideCone)
{
    const auto antennas = Antennas({.count = 40, .tilt = 45.0, .height = 2.2}, 4);
    const TipEstimate estimate = EstimateTip(antennas, 2.0);
    EXPECT_EQ(estimate.verdict, TipVerdict::WrongRadius);
    EXPECT_NEAR(estimate.radiusExcess, 0.2, 0.06);
    EXPECT_GT(estimate.radiusExcess, estimate.radiusExcessLimit);
}

// A sphere through positions within 6 degrees fits well and says little about the plan position.
TEST(TipEstimate, WarnsOfANarrowCone)
{
    const TipEstimate narrow = EstimateTip(Antennas({.tilt = 6.0}, 5), 2.0);
    EXPECT_TRUE(narrow.narrowCone);
    EXPECT_LT(narrow.directionSpread, 4.0);
    EXPECT_EQ(narrow.verdict, TipVerdict::TooUncertain);
    EXPECT_FALSE(EstimateTip(Antennas({.tilt = 40.0}, 5), 2.0).narrowCone);

    // all tilts towards one side: wide along it, nothing across
    std::vector<xyhCoord> oneSided;
    for (int k = 0; k < 15; ++k) {
        const double tilt = 3.0 * k * kRadians;
        oneSided.push_back({2 * std::sin(tilt), 0.01 * (k % 2), 2 * std::cos(tilt)});
    }
    EXPECT_TRUE(EstimateTip(oneSided, 2.0).narrowCone);
}

// A swing in the plane y = `aside`: each tip at a distance of 2 m has a mirror image there.
std::vector<xyhCoord> Swing(double aside, double wobble, double noise, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < 20; ++k) {
        const double x = -0.8 + 0.08 * k;
        const double y = aside + (k % 2 ? wobble : -wobble);
        antennas.push_back({x + noise * normal(random), y + noise * normal(random),
                            std::sqrt(4.0 - x * x - y * y) + noise * normal(random)});
    }
    return antennas;
}

TEST(TipEstimate, StoresNothingWhereASecondTipFitsAsWell)
{
    constexpr double kAside = 0.8;
    int ambiguous = 0;
    for (unsigned seed = 0; seed < 500; ++seed) {
        const TipEstimate estimate = EstimateTip(Swing(kAside, 0.0, 0.001, seed), 2.0);
        EXPECT_NE(estimate.verdict, TipVerdict::Store) << seed;
        if (estimate.verdict != TipVerdict::Ambiguous) continue;
        ++ambiguous;
        EXPECT_TRUE(estimate.ambiguous);
        const double nearer = std::min(estimate.tip.y, estimate.otherTip.y);
        const double farther = std::max(estimate.tip.y, estimate.otherTip.y);
        EXPECT_NEAR(nearer, 0.0, 0.1) << seed;
        EXPECT_NEAR(farther, 2.0 * kAside, 0.1) << seed;
    }
    EXPECT_GT(ambiguous, 450);
}

// Positions 2 m from the origin at y = aside ± wobble for each x, and each of them once `apart`
// farther and once nearer, moved within its plane of constant y. From the mirror image of the origin
// at y = 2·aside each distance is off by aside·wobble besides, one way or the other, which no shift
// of that tip undoes.
std::vector<xyhCoord> TwoSidedSwing(double aside, double wobble, double apart)
{
    std::vector<xyhCoord> antennas;
    for (int k = -5; k < 5; ++k)
        for (const double y : {aside + wobble, aside - wobble})
            for (const double off : {apart, -apart}) {
                const double x = 0.35 * (k + 0.5), out = std::sqrt(4.0 - y * y);
                const double moved = 1.0 + 2.0 * off / (out * out);
                antennas.push_back({moved * x, y, moved * std::sqrt(out * out - x * x)});
            }
    return antennas;
}

// The misfit of the second tip exceeds the first one's by n·(aside·wobble/σ)², to be compared with
// the 99.9 % quantile of chi-square with three degrees of freedom, 16.266, times the variance: 1,
// and where the residuals contradict σ, that of the residuals.
TEST(TipEstimate, CallsATipAmbiguousWhereChanceAllowsTheSecond)
{
    constexpr double kSigma = 0.001;
    constexpr double kAside = 0.8;
    for (const double apart : {0.0, 2.0 * kSigma}) {
        const double variance = apart > 0.0 ? 40.0 * 4.0 / 37.0 : 1.0;
        const double wobble = std::sqrt(16.266 * variance / 40.0) * kSigma / kAside;
        const auto isAmbiguous = [&](double share) {
            return EstimateTip(TwoSidedSwing(kAside, share * wobble, apart), 2.0,
                               {kSigma, kSigma, 0, 0, 0})
                .ambiguous;
        };
        EXPECT_TRUE(isAmbiguous(0.98)) << apart;
        EXPECT_FALSE(isAmbiguous(1.02)) << apart;
    }
}

TEST(TipEstimate, CountsNoSecondTipWithinTheTolerance)
{
    const auto isAmbiguous = [](double aside) {
        return EstimateTip(TwoSidedSwing(aside, 0.0, 0.0), 2.0).ambiguous;
    };
    EXPECT_FALSE(isAmbiguous(0.49 * quality::kTipTolerance));
    EXPECT_TRUE(isAmbiguous(0.51 * quality::kTipTolerance));
}

// Positions around at one tilt lie in a level plane: the second tip is the mirror image above it.
TEST(TipEstimate, CountsNoSecondTipAboveThePositions)
{
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < 8; ++k)
        antennas.push_back(AtTilt(30.0, 45.0 * k, 2.0));
    const TipEstimate estimate = EstimateTip(antennas, 2.0);
    EXPECT_FALSE(estimate.ambiguous);
    EXPECT_NEAR(estimate.tip.h, 0.0, 1e-9);
}

TEST(TipEstimate, KeepsToTheRightSideOfASwingThatLeavesItsPlane)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        const TipEstimate estimate = EstimateTip(Swing(0.4, 0.2, 0.005, seed), 2.0);
        EXPECT_FALSE(estimate.ambiguous) << seed;
        EXPECT_NEAR(estimate.tip.y, 0.0, 0.06) << seed;
    }
}

TEST(TipEstimate, HasNoSolutionInOnePlaneWithTheTip)
{
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < 8; ++k) {
        const double tilt = 0.1 * (k - 3.5);
        antennas.push_back({4500000 + 1.2 * std::sin(tilt), 500000 + 1.6 * std::sin(tilt),
                            100 + 2.0 * std::cos(tilt)});
    }
    EXPECT_EQ(EstimateTip(antennas, 2.0).verdict, TipVerdict::NoSolution);
}

// Residuals of repeated positions vanish, and so would a region that rests on them alone.
TEST(TipEstimate, StoresNothingFromPositionsThatRepeatEachOther)
{
    std::vector<xyhCoord> antennas;
    for (int k = 0; k < 12; ++k)
        antennas.push_back({0.001 * std::cos(0.5 * k), 0.001 * std::sin(0.5 * k), 2.0});
    EXPECT_EQ(EstimateTip(antennas, 2.0).verdict, TipVerdict::TooUncertain);
}

TEST(TipEstimate, HasNoSolutionWithoutEnough)
{
    const auto antennas = Antennas({.count = 15}, 6);
    const auto verdict = [](const std::vector<xyhCoord>& p, double height) {
        return EstimateTip(p, height).verdict;
    };
    EXPECT_EQ(verdict({}, 2.0), TipVerdict::NoSolution);
    EXPECT_EQ(verdict({antennas.begin(), antennas.begin() + 3}, 2.0), TipVerdict::NoSolution);
    EXPECT_EQ(verdict(antennas, 0.0), TipVerdict::NoSolution);
    EXPECT_EQ(verdict(antennas, std::numeric_limits<double>::quiet_NaN()), TipVerdict::NoSolution);
    EXPECT_EQ(verdict(std::vector<xyhCoord>(9, {1, 2, 3}), 2.0), TipVerdict::NoSolution);
    EXPECT_EQ(EstimateTip(antennas, 2.0, {0.0, 0.01}).verdict, TipVerdict::NoSolution);
    EXPECT_EQ(EstimateTip(antennas, 2.0, {0.01, 0.01, -1.0}).verdict, TipVerdict::NoSolution);
}

TEST(TipEstimate, HasNoSolutionForErrorsThatCannotBe)
{
    const auto antennas = Antennas({.count = 15}, 6);
    EXPECT_NE(EstimateTip(antennas, 2.0).verdict, TipVerdict::NoSolution);
    for (const auto error :
         {&AntennaErrors::plan, &AntennaErrors::height, &AntennaErrors::sharedPlan,
          &AntennaErrors::sharedHeight, &AntennaErrors::antennaHeight}) {
        for (const double wrong : {-0.01, std::numeric_limits<double>::quiet_NaN()}) {
            AntennaErrors errors;
            errors.*error = wrong;
            EXPECT_EQ(EstimateTip(antennas, 2.0, errors).verdict, TipVerdict::NoSolution) << wrong;
        }
    }
}

struct PlanErrors
{
    double estimated = 0.0; // mean squares [m²]
    double searched = 0.0;
};

PlanErrors Compare(const Cone& cone, int sets)
{
    std::mt19937 random(7);
    PlanErrors errors;
    for (int set = 0; set < sets; ++set) {
        const auto antennas = Antennas(cone, random);
        std::vector<CTiltMatrix> vectors;
        for (const xyhCoord& p : antennas) {
            vectors.emplace_back(3U);
            vectors.back().SetData(0, p.x);
            vectors.back().SetData(1, p.y);
            vectors.back().SetData(2, p.h);
        }
        CTiltPosition_Geometry geometry;
        geometry.SetAntennaHeight(cone.height);
        TiltPoint_State state;
        const CTiltMatrix searched = geometry.Adjustment(vectors.data(), cone.count, state);
        const TipEstimate estimate = EstimateTip(antennas, cone.height);
        errors.searched +=
            (searched.GetData(0) * searched.GetData(0) + searched.GetData(1) * searched.GetData(1))
            / sets;
        errors.estimated +=
            (estimate.tip.x * estimate.tip.x + estimate.tip.y * estimate.tip.y) / sets;
    }
    return errors;
}

TEST(TipEstimate, IsCloserToTheTipThanTheSearch)
{
    for (const double tilt : {40.0, 25.0}) {
        const PlanErrors errors = Compare({.tilt = tilt}, 2000);
        EXPECT_LT(std::sqrt(errors.estimated), 0.7 * std::sqrt(errors.searched)) << tilt;
    }
}

} // namespace
