// SPDX-License-Identifier: MIT
//
// The fit of the tip against an independent solver: Ceres minimizes the misfit with the weights
// held, again and again with weights formed anew, until nothing moves.
#include "quality/tip/TipFit.h"

#include <ceres/ceres.h>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <numbers>
#include <random>

namespace {

using Eigen::Vector3d;
using tiltpole::quality::Antenna;
using tiltpole::quality::TipFit;

constexpr double kHeight = 2.0; // [m]
const Vector3d kDeviation(0.008, 0.008, 0.015);

struct PositionSet
{
    int count;
    double tilt;  // largest [degrees]
    double noise; // factor of the antenna errors
};

constexpr PositionSet kSets[] = {
    {4,  25.0, 1.0},
    {4,  40.0, 1.0},
    {6,  12.0, 1.0},
    {8,  40.0, 1.0},
    {15, 40.0, 1.0},
    {15, 8.0,  1.0},
    {60, 12.0, 1.0},
    {15, 40.0, 5.0},
};

std::vector<Antenna> Positions(const PositionSet& setup, std::mt19937& random)
{
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::normal_distribution<double> normal;
    std::vector<Antenna> antennas;
    for (int k = 0; k < setup.count; ++k) {
        const double tilt = setup.tilt * std::numbers::pi / 180.0 * std::sqrt(share(random));
        const double azimuth = 2.0 * std::numbers::pi * share(random);
        const double out = kHeight * std::sin(tilt);
        const Vector3d exact(out * std::cos(azimuth), out * std::sin(azimuth),
                             kHeight * std::cos(tilt));
        const Vector3d error(normal(random), normal(random), normal(random));
        antennas.push_back(
            {exact + setup.noise * kDeviation.cwiseProduct(error), static_cast<std::size_t>(k)});
    }
    return antennas;
}

struct Residual
{
    Vector3d antenna;
    double rootWeight;

    template <class T>
    bool operator()(const T* tip, T* residual) const
    {
        const Eigen::Matrix<T, 3, 1> away(tip[0] - antenna.x(), tip[1] - antenna.y(),
                                          tip[2] - antenna.z());
        residual[0] = rootWeight * (away.norm() - kHeight);
        return true;
    }
};

Vector3d TipOfCeres(const std::vector<Antenna>& antennas, Vector3d tip)
{
    constexpr int kMostRounds = 200;
    for (int round = 0; round < kMostRounds; ++round) {
        const Vector3d before = tip;
        ceres::Problem problem;
        for (const Antenna& antenna : antennas) {
            const Vector3d direction = (before - antenna.position).normalized();
            const double variance = direction.cwiseAbs2().dot(kDeviation.cwiseAbs2());
            problem.AddResidualBlock(new ceres::AutoDiffCostFunction<Residual, 1, 3>(
                                         new Residual{antenna.position, 1.0 / std::sqrt(variance)}),
                                     nullptr, tip.data());
        }
        ceres::Solver::Options options;
        options.max_num_iterations = 500;
        options.function_tolerance = 1e-18;
        options.gradient_tolerance = 1e-14;
        options.parameter_tolerance = 1e-14;
        options.logging_type = ceres::SILENT;
        ceres::Solver::Summary summary;
        ceres::Solve(options, &problem, &summary);
        if ((tip - before).norm() < 1e-10) break;
    }
    return tip;
}

// Two tips may fit, one on either side of the antennas: Ceres starts at ours and must stay.
TEST(TipFit, EndsWhereAnIndependentSolverEnds)
{
    for (const PositionSet& setup : kSets) {
        std::mt19937 random(11);
        for (int set = 0; set < 25; ++set) {
            const std::vector<Antenna> antennas = Positions(setup, random);
            TipFit fit(antennas, kHeight, kDeviation);
            ASSERT_TRUE(fit.Converge());
            const Vector3d nudged = fit.Tip() + Vector3d(2e-3, -1e-3, 1e-3);
            EXPECT_LT((TipOfCeres(antennas, nudged) - fit.Tip()).norm(), 2e-7)
                << setup.count << " positions to " << setup.tilt << " degrees, set " << set;
        }
    }
}

// The answer belongs to the positions, not to their order or to where the fit starts.
TEST(TipFit, EndsAtTheSamePlaceWhateverTheOrderOfThePositions)
{
    for (const PositionSet& setup : kSets) {
        std::mt19937 random(12);
        for (int set = 0; set < 200; ++set) {
            std::vector<Antenna> antennas = Positions(setup, random);
            TipFit fit(antennas, kHeight, kDeviation);
            ASSERT_TRUE(fit.Converge());
            TipFit again = fit.Mirrored().Mirrored();
            ASSERT_TRUE(again.Converge());
            std::shuffle(antennas.begin(), antennas.end(), random);
            TipFit shuffled(antennas, kHeight, kDeviation);
            ASSERT_TRUE(shuffled.Converge());
            EXPECT_LT((again.Tip() - fit.Tip()).norm(), 1e-8);
            EXPECT_LT((shuffled.Tip() - fit.Tip()).norm(), 1e-8)
                << setup.count << " positions to " << setup.tilt << " degrees, set " << set;
        }
    }
}

TEST(TipFit, DoesNotConvergeOnAPositionThatIsNotFinite)
{
    std::mt19937 random(15);
    std::vector<Antenna> antennas = Positions({8, 40.0, 1.0}, random);
    antennas[5].position.z() = std::numeric_limits<double>::quiet_NaN();
    TipFit fit(antennas, kHeight, kDeviation);
    EXPECT_FALSE(fit.Converge());
}

// Moving every antenna along its own line of sight by dL is a change of the antenna height by dL.
TEST(TipFit, FollowsTheAntennaHeightAsItsSlopeSays)
{
    std::mt19937 random(13);
    const std::vector<Antenna> antennas = Positions({15, 40.0, 1.0}, random);
    constexpr double kChange = 1e-4; // [m]
    TipFit fit(antennas, kHeight, kDeviation);
    TipFit longer(antennas, kHeight + kChange, kDeviation);
    ASSERT_TRUE(fit.Converge() && longer.Converge());
    const Vector3d slope = (longer.Tip() - fit.Tip()) / kChange;
    EXPECT_LT((slope - fit.HeightSlope()).norm(), 0.02);
    EXPECT_LT(slope.z(), -1.0);
}

// On the whole sphere's cap the misfit is close to a parabola; along the plane of few positions
// close together it is not, and the reach shows it.
TEST(TipFit, ReachesFurtherThanItsCurvatureSaysWhereTheMisfitIsFlat)
{
    const auto ratio = [](const PositionSet& setup) {
        std::mt19937 random(14);
        const std::vector<Antenna> antennas = Positions(setup, random);
        TipFit fit(antennas, kHeight, kDeviation);
        EXPECT_TRUE(fit.Converge());
        const Eigen::Matrix3d cofactor = fit.Normal().inverse();
        const double linear = std::sqrt(4.0 * cofactor(2, 2));
        return fit.Reach(Vector3d::UnitZ(), linear, 4.0, 1.0) / linear;
    };
    EXPECT_NEAR(ratio({60, 40.0, 1.0}), 1.0, 0.02);
    EXPECT_GT(ratio({4, 10.0, 1.0}), 1.5);
}

} // namespace
