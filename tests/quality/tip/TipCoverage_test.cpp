// SPDX-License-Identifier: MIT
//
// What the verdict Store promises, tested where it is given: how often ellipse and interval of the
// stored tips hold the true tip, and how far off the worst is. The seeds are new; cones and
// recording are of the kind that the pooling and the floor of the estimate were chosen on.
#include "simulation/trials/TipTrials.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>

namespace {

using simulation::AntennaCone;
using simulation::AntennaErrorList;
using simulation::TipCoverage;

constexpr AntennaCone kCones[] = {
    {4,  25.0, 360.0},
    {4,  40.0, 360.0},
    {6,  40.0, 360.0},
    {8,  40.0, 360.0},
    {12, 25.0, 360.0},
    {12, 40.0, 360.0},
    {16, 12.0, 360.0},
    {16, 25.0, 360.0},
    {15, 40.0, 90.0 },
    {30, 40.0, 360.0},
    {60, 12.0, 360.0},
    {60, 25.0, 180.0},
    {60, 40.0, 360.0},
};

using Noise = std::function<AntennaErrorList(std::size_t, std::mt19937&)>;

TipCoverage CoverageOf(const AntennaCone& cone, const Noise& noise, int sets)
{
    std::mt19937 random(20261122U + static_cast<unsigned>(cone.count));
    TipCoverage coverage;
    for (int set = 0; set < sets; ++set) {
        const AntennaErrorList errors = noise(cone.count, random);
        coverage.Count(quality::EstimateTip(AntennasOf(cone, errors, random), 2.0));
    }
    return coverage;
}

// 93 %, less three standard deviations of a share counted over `n` stored sets.
double LeastShare(int n)
{
    return 0.93 - 3.0 * std::sqrt(0.93 * 0.07 / n);
}

struct NoiseCase
{
    const char* name;
    Noise draw;
    bool asStated; // then no region is to be wider than it must be
};

std::vector<NoiseCase> NoiseCases()
{
    static const simulation::RecordedErrors recording(TILTPOLE_SOURCE_DIR
                                                      "/tests/data/gnss_static_rtk.txt");
    const auto recorded = [](std::size_t seconds) {
        return [seconds](std::size_t count, std::mt19937& random) {
            return recording.Draw(count, seconds, random);
        };
    };
    return {
        {"errors as stated", simulation::ErrorsAsStated, true },
        {"slow errors",      simulation::SlowErrors,     false},
        {"recorded, 1 s",    recorded(1),                false},
        {"recorded, 4 s",    recorded(4),                false},
        {"recorded, 15 s",   recorded(15),               false},
    };
}

TEST(TipCoverage, GivenStoreTheRegionsHoldTheTrueTip)
{
    constexpr int kSets = 600;
    constexpr int kFewToCount = 100;
    for (const NoiseCase& noise : NoiseCases()) {
        for (const AntennaCone& cone : kCones) {
            const TipCoverage c = CoverageOf(cone, noise.draw, kSets);
            const auto what = testing::Message()
                              << noise.name << ", " << cone.count << " positions to " << cone.tilt
                              << " degrees, width " << cone.width << ", stored " << c.stored;
            EXPECT_LT(c.worst, 0.1) << what;
            if (c.stored < kFewToCount) continue;
            const double plan = static_cast<double>(c.plan) / c.stored;
            const double height = static_cast<double>(c.height) / c.stored;
            EXPECT_GT(plan, LeastShare(c.stored)) << what;
            EXPECT_GT(height, LeastShare(c.stored)) << what;
            if (!noise.asStated || cone.count < 12) continue;
            EXPECT_LT(plan, 0.985 + 0.01) << what;
            EXPECT_LT(height, 0.985 + 0.01) << what;
        }
    }
}

// Silence would be honest, too.
TEST(TipCoverage, StoresMostOfWideSetsOfTwelveAndMore)
{
    for (const NoiseCase& noise : NoiseCases()) {
        EXPECT_GT(CoverageOf({12, 40.0, 360.0}, noise.draw, 300).stored, 210) << noise.name;
        EXPECT_GT(CoverageOf({30, 40.0, 360.0}, noise.draw, 300).stored, 290) << noise.name;
    }
}

} // namespace
