// SPDX-License-Identifier: MIT
//
// The kernels of the search: plain and wide builds alike, and no start dropped that could win.
#include "geometry/detail/PointCloud.h"
#include "geometry/detail/SearchKernels.h"
#include "geometry/detail/SphereStep.h"
#include "geometry/detail/TipSearch.h"
#include "vector/Dispatch.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>
#include <vector>

namespace {

using namespace tiltpole::geometry;

std::vector<Point3> Cap(std::size_t count, double tilt, double noise, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::normal_distribution<double> normal;
    std::vector<Point3> points(count);
    for (Point3& p : points) {
        const double up = 1.0 - share(random) * (1.0 - std::cos(tilt));
        const double azimuth = 2.0 * std::numbers::pi * share(random);
        const double out = 2.0 * std::sqrt(1.0 - up * up);
        p = {out * std::cos(azimuth) + noise * normal(random),
             out * std::sin(azimuth) + noise * normal(random), 2.0 * up + noise * normal(random)};
    }
    return points;
}

// A batch of starts at `centers` (about the origin) with the given radius.
struct Starts
{
    explicit Starts(std::size_t count)
        : x(count + kGroup), y(count + kGroup), h(count + kGroup), ones(count + kGroup, 1.0),
          radius(count + kGroup), hopeless(count + kGroup)
    {}
    Batch View(double limit, const Point3& origin)
    {
        return {
            x.data(),      y.data(),        h.data(),          ones.data(),
            radius.data(), hopeless.data(), x.size() - kGroup, {origin.x, origin.y, origin.z},
            limit
        };
    }
    std::vector<double> x, y, h, ones, radius;
    std::vector<std::int64_t> hopeless;
};

Starts RandomStarts(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> exponent(-3.0, 0.5);
    Starts starts(count);
    for (std::size_t k = 0; k < count; ++k) {
        const double away = std::pow(10.0, exponent(random));
        starts.x[k] = away * normal(random);
        starts.y[k] = away * normal(random);
        starts.h[k] = -2.0 + away * normal(random);
    }
    return starts;
}

// Starts relative to the first position, wherever they are and whatever the radius: a start that
// is called hopeless never has a smaller point error than the limit stands for.
TEST(SearchKernels, DropNoStartThatCouldWin)
{
    std::size_t dropped = 0;
    std::size_t judged = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const double tilt = 0.1 + 0.03 * seed;
        const std::size_t count = 5 + seed;
        const PointCloud cloud(Cap(count, tilt, seed % 2 ? 0.01 : 0.0005, seed));
        std::vector<Point3> positions;
        for (std::size_t k = 0; k < count; ++k)
            positions.push_back(cloud.At(k));
        for (const double limit : {0.001, 0.01, 0.05, 0.2}) {
            Starts starts = RandomStarts(500, seed);
            const double redundancy = static_cast<double>(count) - 4.0;
            SearchKernels::Of<2>().judgeStarts(
                cloud.Moments(), starts.View(limit * limit * redundancy, positions.front()));
            for (std::size_t k = 0; k < 500; ++k) {
                ++judged;
                if (starts.hopeless[k] == 0) continue;
                ++dropped;
                const SphereStep step =
                    StepSphere(positions.data(), count, {starts.x[k], starts.y[k], starts.h[k]},
                               starts.radius[k]);
                EXPECT_GE(step.pointError, limit) << "seed " << seed << ", start " << k;
            }
        }
    }
    EXPECT_GT(dropped, judged / 8) << "the bound is worth its while";
}

TEST(SearchKernels, AreTheSameToTheLastBitOnWideRegisters)
{
    if (tiltpole::vector::LanesOfProcessor() < 4) GTEST_SKIP() << "no wide registers here";
    const SearchKernels& wide = BestSearchKernels();
    const SearchKernels& plain = SearchKernels::Of<2>();
    const PointCloud cloud(Cap(23, 0.7, 0.01, 3));

    Starts a = RandomStarts(101, 9);
    Starts b = a;
    plain.judgeStarts(cloud.Moments(), a.View(0.004, {0.1, 0.2, 0.3}));
    wide.judgeStarts(cloud.Moments(), b.View(0.004, {0.1, 0.2, 0.3}));
    for (std::size_t k = 0; k < 101; ++k) {
        EXPECT_EQ(a.x[k], b.x[k]);
        EXPECT_EQ(a.radius[k], b.radius[k]);
        EXPECT_EQ(a.hopeless[k], b.hopeless[k]);

        const double tip[] = {a.x[k], a.y[k], a.h[k]};
        const double step[] = {0.01, -0.02, 0.03};
        const DistanceSums one = plain.sumDistances(cloud.View(), 23, tip);
        const DistanceSums two = wide.sumDistances(cloud.View(), 23, tip);
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(one.weighted[c], two.weighted[c]);
        EXPECT_EQ(plain.sumResiduals(cloud.View(), 23, tip, step, 2.0, 1e9),
                  wide.sumResiduals(cloud.View(), 23, tip, step, 2.0, 1e9));
    }
}

TEST(SearchKernels, ChooseTheSameFourPositionsOnWideRegisters)
{
    if (tiltpole::vector::LanesOfProcessor() < 4) GTEST_SKIP() << "no wide registers here";
    const SearchKernels& wide = BestSearchKernels();
    for (unsigned seed = 1; seed <= 30; ++seed) {
        const auto points = Cap(4 + seed, 0.2 + 0.02 * seed, seed % 4 ? 0.01 : 0.0, seed);
        const auto one = SearchTip(points, 2.0, 1e-9, {}, SearchKernels::Of<2>());
        const auto two = SearchTip(points, 2.0, 1e-9, {}, wide);
        EXPECT_EQ(one.best, two.best) << seed;
    }
}

TEST(SearchKernels, StopAddingResidualsOnceAboveTheLimit)
{
    const PointCloud cloud(Cap(64, 0.7, 0.0, 3));
    const double tip[] = {0.0, 0.0, 0.0};
    const double step[] = {0.0, 0.0, 0.0};
    const auto sum = [&](double limit) {
        return SearchKernels::Of<2>().sumResiduals(cloud.View(), 64, tip, step, 9.0, limit);
    };
    EXPECT_GT(sum(1.0), 1.0);
    EXPECT_LT(sum(1.0), sum(1e9));
}

// w × e + q·c over c·e against a direct solution: the sphere through the origin, (2, 0, 0),
// (0, 2, 0) and a row of fourth positions, whose center is (1, 1, z).
TEST(SearchKernels, GiveTheCentersOfARow)
{
    const std::vector<Point3> fourth = {
        {0, 0, 2 },
        {0, 0, 4 },
        {1, 1, 3 },
        {5, 5, 0 },
        {2, 0, -1}
    };
    CoordinateArrays edges(fourth.size());
    std::vector<double> half(fourth.size() + kGroup);
    for (std::size_t k = 0; k < fourth.size(); ++k) {
        edges.Set(k, fourth[k]);
        half[k] = 0.5 * Dot(fourth[k], fourth[k]);
    }
    const Point3 a = {2, 0, 0};
    const Point3 b = {0, 2, 0};
    const Point3 w = 2.0 * b - 2.0 * a;
    const Point3 c = Cross(a, b);
    const Row row = {
        edges.View(), half.data(), {w.x, w.y, w.z},
          {c.x, c.y, c.z},
          2.0, 5.0, 1e-20
    };
    std::vector<double> x(9), y(9), h(9), volume(9);
    std::vector<std::int64_t> usable(9);
    SearchKernels::Of<2>().scanRow(row, 0, fourth.size(),
                                   {x.data(), y.data(), h.data(), volume.data(), usable.data()});
    // |e|² = 2·e·(1, 1, z) gives z; the squared radius is 2 + z²
    const double z[] = {1.0, 2.0, (11.0 - 4.0) / 6.0, NAN, -0.5};
    const std::int64_t expected[] = {-1, 0, -1, 0, -1};
    for (std::size_t k = 0; k < fourth.size(); ++k) {
        EXPECT_EQ(usable[k], expected[k]) << k;
        if (k == 3) continue; // in the plane of the other three
        EXPECT_NEAR(x[k] / volume[k], 1.0, 1e-14);
        EXPECT_NEAR(y[k] / volume[k], 1.0, 1e-14);
        EXPECT_NEAR(h[k] / volume[k], z[k], 1e-14);
    }
    EXPECT_EQ(volume[3], 0.0);
}

} // namespace
