// SPDX-License-Identifier: MIT
//
// The sums over a turn give the same bits at every width. (Those of the matrices and of the search
// are tested with their folders.)
#include "calibration/solver/TurnSums.h"
#include "vector/Dispatch.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace tiltpole::calibration;

struct Columns
{
    explicit Columns(std::size_t count, unsigned seed) : x(count), y(count), z(count)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> reading(-3000.0, 3000.0);
        for (std::size_t i = 0; i < count; ++i) {
            x[i] = reading(random);
            y[i] = reading(random);
            z[i] = reading(random);
        }
    }
    Passage View() const
    {
        return {
            {x.data(), 12.5 },
            {y.data(), -7.25},
            {z.data(), 3.0  },
            x.size(),
            static_cast<int>(x.size())
        };
    }
    std::vector<double> x, y, z;
};

bool SameBits(const TurnMoments& a, const TurnMoments& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(TurnSums, GiveTheSameBitsAtEveryWidth)
{
    if (tiltpole::vector::LanesOfProcessor() < 4) GTEST_SKIP() << "no wide registers here";
    const TurnSums& narrow = TurnSums::Of<2>();
    const TurnSums& wide = tiltpole::vector::KernelsFor<TurnSums, 4>(4);
    ASSERT_NE(&narrow, &wide);
    Incline_MagneticCorrectParameter P;
    P.c = 0.01;
    P.d = -0.02;
    P.e = 1.03;
    for (std::size_t count = 4; count <= 400; count += 4) {
        const Columns columns(count, static_cast<unsigned>(count));
        EXPECT_TRUE(SameBits(narrow.ofThree(columns.View()), wide.ofThree(columns.View())))
            << count;
        EXPECT_TRUE(
            SameBits(narrow.ofCorrectedZ(columns.View(), P), wide.ofCorrectedZ(columns.View(), P)))
            << count;
    }
}

// Each place of the groups of four has its own sum; these are added in pairs.
TEST(TurnSums, AddEachPlaceOfAGroupByItself)
{
    const Columns columns(40, 5);
    const Passage passage = columns.View();
    double place[4] = {};
    for (std::size_t i = 0; i < 40; ++i) {
        const double u = columns.x[i] - passage.x.origin;
        const double v = columns.y[i] - passage.y.origin;
        place[i % 4] += (u * u) * (u * v);
    }
    const double expected = (place[0] + place[1]) + (place[2] + place[3]);
    for (int lanes = 2; lanes <= tiltpole::vector::LanesOfProcessor(); lanes *= 2) {
        const TurnSums& sums = tiltpole::vector::KernelsFor<TurnSums, 4>(lanes);
        EXPECT_EQ(sums.ofThree(passage).uuuv, expected) << lanes << " lanes";
    }
}

// Stands for kernels: knows only its width.
struct Named
{
    int width;

    template <int Width>
    static const Named& Of()
    {
        static constexpr Named named{Width};
        return named;
    }
};

TEST(Dispatch, TakesTheLargestWidthThatFits)
{
    using tiltpole::vector::KernelsFor;
    using tiltpole::vector::kMostLanes;
    EXPECT_EQ((KernelsFor<Named, 8>(2).width), 2);
    EXPECT_EQ((KernelsFor<Named, 8>(4).width), std::min(4, kMostLanes));
    EXPECT_EQ((KernelsFor<Named, 8>(8).width), kMostLanes);
    EXPECT_EQ((KernelsFor<Named, 4>(8).width), std::min(4, kMostLanes));
}

#if defined(__x86_64__)
// As the kernel of the operating system lists the features of the first processor.
bool HasFeature(const std::string& feature)
{
    std::ifstream processors("/proc/cpuinfo");
    std::string line;
    while (std::getline(processors, line))
        if (line.starts_with("flags")) return (line + ' ').find(' ' + feature + ' ') != line.npos;
    return false;
}

TEST(Dispatch, TakesTheWidestVectorsOfTheProcessor)
{
    const int expected = HasFeature("avx512f") ? 8 : HasFeature("avx2") ? 4 : 2;
    EXPECT_EQ(tiltpole::vector::LanesOfProcessor(), expected);
}
#endif

} // namespace
