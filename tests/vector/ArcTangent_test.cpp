// SPDX-License-Identifier: MIT
#include "vector/ArcTangent.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using Pair = tiltpole::vector::Lanes<2>;

constexpr long double kDegreesPerRadian = 57.295779513082320876798154814105170L;

struct Direction
{
    double y, x;
};

long double Exact(Direction d)
{
    return std::atan2(static_cast<long double>(d.y), static_cast<long double>(d.x))
           * kDegreesPerRadian;
}

// Each direction in each lane, beside the other.
void ExpectWithin(Direction a, Direction b, double tolerance)
{
    const Pair angles = tiltpole::vector::ArcTangent(Pair::Of(a.y, b.y), Pair::Of(a.x, b.x));
    EXPECT_LE(std::fabs(static_cast<double>(Exact(a) - angles[0])), tolerance) << a.y << ' ' << a.x;
    EXPECT_LE(std::fabs(static_cast<double>(Exact(b) - angles[1])), tolerance) << b.y << ' ' << b.x;
}

TEST(ArcTangent, KnowsAxesDiagonalsAndTheirSides)
{
    struct
    {
        double y, x, expected;
    } const cases[] = {
        {0.0,     1.0,    0.0   },
        {0.0,     -1.0,   180.0 },
        {-0.0,    1.0,    -0.0  },
        {-0.0,    -1.0,   -180.0},
        {1.0,     0.0,    90.0  },
        {1.0,     -0.0,   90.0  },
        {-1.0,    0.0,    -90.0 },
        {-1.0,    -0.0,   -90.0 },
        {3.0,     3.0,    45.0  },
        {3.0,     -3.0,   135.0 },
        {-3.0,    -3.0,   -135.0},
        {-3.0,    3.0,    -45.0 },
        {1e9,     1e-140, 90.0  },
        {-1e-140, -1e9,   -180.0},
    };
    for (const auto& c : cases) {
        const Pair angle = tiltpole::vector::ArcTangent(Pair(c.y), Pair(c.x));
        for (const int lane : {0, 1}) {
            EXPECT_EQ(angle[lane], c.expected) << c.y << ' ' << c.x;
            EXPECT_EQ(std::signbit(angle[lane]), std::signbit(c.expected)) << c.y << ' ' << c.x;
        }
    }
}

constexpr double kDocumented = 2.6e-14; // [degrees]

TEST(ArcTangent, IsAsExactAsDocumentedInEveryDirection)
{
    std::mt19937_64 random(11);
    std::uniform_real_distribution<> uniform(-1.0, 1.0);
    std::uniform_real_distribution<> power(-149.0, 149.0);
    const auto direction = [&] {
        const double scale = std::pow(10.0, power(random));
        return Direction{uniform(random) * scale, uniform(random) * scale};
    };
    for (int i = 0; i < 100000 && !HasFailure(); ++i)
        ExpectWithin(direction(), direction(), kDocumented);
}

// Where the quotient is turned by 45 degrees, and where it is not yet.
TEST(ArcTangent, IsAsExactOnBothSidesOfTheMiddleOfAnOctant)
{
    const double middle = std::tan(22.5 / 57.29577951308232);
    for (int i = -2000; i <= 2000 && !HasFailure(); ++i) {
        const double near = middle * (1.0 + i * 1e-15);
        ExpectWithin({near, 1.0}, {-1.0, -near}, kDocumented);
    }
}

} // namespace
