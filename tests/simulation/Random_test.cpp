// SPDX-License-Identifier: MIT
#include "simulation/Random.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace {

using simulation::Generator;
using simulation::SplitMix;
using simulation::Stream;

// Reference output of splitmix64 for the state 1234567.
TEST(Random, SplitMixGivesThePublishedNumbers)
{
    std::uint64_t state = 1234567;
    for (const std::uint64_t expected :
         {6457827717110365317U, 3203168211198807973U, 9817491932198370423U, 4593380528125082431U,
          16408922859458223821U})
        EXPECT_EQ(SplitMix(state), expected);
}

// Reference output of xoshiro256** 1.0 for the state (1, 2, 3, 4).
TEST(Random, GeneratorGivesThePublishedNumbers)
{
    Generator random({1, 2, 3, 4});
    constexpr std::uint64_t kExpected[] = {11520,
                                           0,
                                           1509978240,
                                           1215971899390074240,
                                           1216172134540287360,
                                           607988272756665600,
                                           16172922978634559625U,
                                           8476171486693032832,
                                           10595114339597558777U,
                                           2904607092377533576};
    for (const std::uint64_t expected : kExpected)
        EXPECT_EQ(random.Next(), expected);
}

TEST(Random, UniformNumbersAreTheUpperBitsOfTheGenerator)
{
    Generator random({1, 2, 3, 4});
    for (const double expected : {11520.0, 0.0, 1509978240.0})
        EXPECT_EQ(random.Uniform(), std::ldexp(std::floor(expected / 2048.0), -53));
}

// Seed 42, magnetometer A, computed with 40 digits by another program.
TEST(Random, NormalNumbersAreThoseOfThePolarMethod)
{
    Generator random(42, Stream::MagnetometerA);
    for (const double expected : {1.2861572838775068, -0.21378929235498488, 0.70439753567766576,
                                  1.1294074572056867, 0.22703816020781648, 1.6672649834577113})
        EXPECT_NEAR(random.Normal(), expected, 1e-15);
}

TEST(Random, SeedStreamAndIndexEachGiveAnotherSequence)
{
    std::vector<std::uint64_t> firsts;
    for (std::uint64_t seed = 0; seed < 10; ++seed)
        for (const Stream stream : {Stream::Motion, Stream::MagnetometerA, Stream::Antenna})
            for (std::uint64_t index = 0; index < 10; ++index)
                firsts.push_back(Generator(seed, stream, index).Next());
    std::ranges::sort(firsts);
    EXPECT_EQ(std::ranges::adjacent_find(firsts), firsts.end());
}

double NormalBelow(double x)
{
    return 0.5 * std::erfc(-x / std::sqrt(2.0));
}

// The greatest distance between the shares below a value and the normal distribution; above
// 1.95 / sqrt(n) in one sample of a thousand (Kolmogorov).
TEST(Random, NormalNumbersFollowTheNormalDistribution)
{
    constexpr int kCount = 100'000;
    Generator random(7, Stream::MagnetometerA);
    std::vector<double> values(kCount);
    for (double& value : values)
        value = random.Normal();
    std::ranges::sort(values);

    double distance = 0.0;
    for (int i = 0; i < kCount; ++i) {
        const double below = NormalBelow(values[static_cast<std::size_t>(i)]);
        distance = std::max({distance, std::fabs(below - i / double{kCount}),
                             std::fabs(below - (i + 1) / double{kCount})});
    }
    EXPECT_LT(distance, 1.95 / std::sqrt(kCount));
}

TEST(Random, NeighboringNormalNumbersAreUncorrelated)
{
    constexpr int kCount = 100'000;
    Generator random(8, Stream::MagnetometerA);
    double last = random.Normal();
    double sum = 0.0;
    for (int i = 0; i < kCount; ++i) {
        const double next = random.Normal();
        sum += last * next;
        last = next;
    }
    EXPECT_LT(std::fabs(sum / kCount), 4.0 / std::sqrt(kCount));
}

} // namespace
