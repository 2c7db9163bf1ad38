// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereCovariance.h"

#include "quality/calibration/JointModel.h"
#include "tests/quality/TurnMaker.h"

#include <Eigen/LU>
#include <gtest/gtest.h>

using namespace tiltpole::quality;

namespace {

// A turn whose readings all have the same share.
Weighting Shared(double share, std::size_t readings = 5)
{
    Weighting weighting;
    weighting.turns[0].assign(readings, share);
    weighting.turns[1].assign(readings, share);
    return weighting;
}

// d(share·r)/dr = share·(2·√share − 1) for share = 1 / (1 + r²)².
TEST(Curvature, IsTheSlopeOfAWeightedResidual)
{
    EXPECT_DOUBLE_EQ(CurvatureOf(Shared(1.0)), 1.0);
    EXPECT_DOUBLE_EQ(CurvatureOf(Shared(0.64)), 0.6);
    Weighting mixed = Shared(1.0, 1);
    mixed.turns[1] = {0.64};
    EXPECT_DOUBLE_EQ(CurvatureOf(mixed), (1.0 + 0.64 * 0.6) / 1.64);
}

TEST(Curvature, StaysAtAQuarterAtLeast)
{
    EXPECT_DOUBLE_EQ(CurvatureOf(Shared(0.25)), 0.25) << "the slope is 0";
    EXPECT_DOUBLE_EQ(CurvatureOf(Shared(0.04)), 0.25) << "the slope is negative";
    EXPECT_NEAR(CurvatureOf(Shared(0.4)), 0.2649, 1e-4) << "just above the limit";
}

struct Case
{
    Scaled data;
    Unknowns p;
    Residuals residuals;
    Weighting weighting;
};

Case NoisyCase(int horizontalSamples, int verticalSamples)
{
    turnmaker::World world = turnmaker::DistortedWorld();
    world.noise = 3.0;
    world.tiltNoise = 0.3;
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = horizontalSamples;
    vertical.samples = verticalSamples;
    const auto turns = turnmaker::MakeTurns(world, horizontal, vertical);
    Case c;
    c.data = *ScaledTurns(TurnOf(turns.horizontal, 1, Magnetometer::A),
                          TurnOf(turns.vertical, 1, Magnetometer::A));
    c.p << 0.97, -0.02, 0.02, -0.02, 1.06, -0.03, 0.02, -0.03, 0.98, 0.01, -0.01, 0.02, -0.9, -0.89,
        1.02;
    c.residuals = ResidualsOf(c.data, c.p);
    c.weighting = WeightingOf(c.residuals);
    return c;
}

// Half of the gradient that one reading adds to the cost.
Unknowns GradientOf(const Case& c, std::size_t turn, std::size_t i)
{
    const ResidualSlopes slopes = SlopesOf(c.data.turns[turn][i], turn, c.p);
    const Residual& r = c.residuals.turns[turn][i];
    return c.weighting.scale * c.weighting.turns[turn][i]
           * (r.sphere * slopes.sphere + r.elevation * slopes.elevation);
}

// The same for the readings from `from` to before `to`, times itself.
Normal SquareOf(const Case& c, std::size_t turn, std::size_t from, std::size_t to)
{
    Unknowns sum = Unknowns::Zero();
    for (std::size_t i = from; i < to; ++i)
        sum += GradientOf(c, turn, i);
    return sum * sum.transpose();
}

void ExpectEqual(const Normal& found, const Normal& expected)
{
    EXPECT_LT((found - expected).norm(), 1e-10 * expected.norm());
}

// 240 and 480 readings: 24 blocks of 10 and 24 of 20, and 15 unknowns.
TEST(ScatterOfBlocks, TakesTwentyFourBlocksOfEachTurn)
{
    const Case c = NoisyCase(240, 480);
    Normal sum = Normal::Zero();
    for (std::size_t block = 0; block < 24; ++block) {
        sum += SquareOf(c, 0, 10 * block, 10 * block + 10);
        sum += SquareOf(c, 1, 20 * block, 20 * block + 20);
    }
    ExpectEqual(ScatterOfBlocks(c.data, c.p, c.residuals, c.weighting), sum * (48.0 / 33.0));
}

TEST(ScatterOfBlocks, TakesEveryReadingAsABlockOfAShortTurn)
{
    const Case c = NoisyCase(12, 23);
    Normal sum = Normal::Zero();
    for (std::size_t i = 0; i < 23; ++i) {
        if (i < 12) sum += SquareOf(c, 0, i, i + 1);
        sum += SquareOf(c, 1, i, i + 1);
    }
    ExpectEqual(ScatterOfBlocks(c.data, c.p, c.residuals, c.weighting), sum * (35.0 / 20.0));
}

// Each reading is in exactly one block where the blocks cannot be of one size: 50 readings make
// blocks that begin at ⌊50·k/24⌋.
TEST(ScatterOfBlocks, LeavesNoReadingOut)
{
    const Case c = NoisyCase(50, 50);
    Normal sum = Normal::Zero();
    for (const std::size_t turn : {0U, 1U}) {
        for (std::size_t k = 0; k < 24; ++k)
            sum += SquareOf(c, turn, 50 * k / 24, 50 * (k + 1) / 24);
    }
    ExpectEqual(ScatterOfBlocks(c.data, c.p, c.residuals, c.weighting), sum * (48.0 / 33.0));
}

// C = N⁻¹·S·N⁻¹. Three weights that should agree in pairs and the lengths of both turns have a prior
// of 1/0.05² = 400, and a quarter of it counts as scatter.
TEST(Covariance, IsTheScatterBetweenTheInverseSecondDerivatives)
{
    const Case c = NoisyCase(240, 240);
    Normal prior = Normal::Zero();
    for (const auto& [i, j] : {
             std::pair{3, 1},
             std::pair{6, 2},
             std::pair{7, 5}
    }) {
        prior(i, i) += 400.0;
        prior(j, j) += 400.0;
        prior(i, j) -= 400.0;
        prior(j, i) -= 400.0;
    }
    prior(14, 14) = 400.0;
    Normal second = Normal::Zero();
    for (const std::size_t turn : {0U, 1U}) {
        for (std::size_t i = 0; i < 240; ++i) {
            const ResidualSlopes slopes = SlopesOf(c.data.turns[turn][i], turn, c.p);
            second += c.weighting.scale * c.weighting.turns[turn][i]
                      * (slopes.sphere * slopes.sphere.transpose()
                         + slopes.elevation * slopes.elevation.transpose());
        }
    }
    second = CurvatureOf(c.weighting) * second + prior;
    const Normal scatter = ScatterOfBlocks(c.data, c.p, c.residuals, c.weighting) + 0.25 * prior;
    const Normal expected = second.inverse() * scatter * second.inverse();
    const Normal found = CovarianceOf(c.data, c.p);
    EXPECT_LT((found - expected).norm(), 1e-6 * expected.norm());
}

} // namespace
