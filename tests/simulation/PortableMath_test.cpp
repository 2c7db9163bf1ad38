// SPDX-License-Identifier: MIT
#include "simulation/PortableMath.h"

#include "simulation/Random.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

using simulation::ArcTangent;
using simulation::Generator;
using simulation::Logarithm;
using simulation::SineCosine;
using simulation::SineCosineOf;
using simulation::Stream;

constexpr long double kPi = 3.14159265358979323846264338327950288L;
constexpr int kCases = 200'000;

// References are taken in extended precision, so that their own error does not count.
void CheckSineCosine(double degrees)
{
    const long double radians = static_cast<long double>(degrees) * kPi / 180.0L;
    const SineCosine found = SineCosineOf(degrees);
    ASSERT_NEAR(found.sine, static_cast<double>(std::sin(radians)), 2.5e-16) << degrees;
    ASSERT_NEAR(found.cosine, static_cast<double>(std::cos(radians)), 2.5e-16) << degrees;
}

TEST(PortableMath, SineAndCosineAgreeWithExtendedPrecision)
{
    Generator random(1, Stream::Motion);
    for (int i = 0; i < kCases; ++i)
        CheckSineCosine(random.Uniform(-720.0, 720.0));
    for (int degrees = -720; degrees <= 720; ++degrees)
        CheckSineCosine(degrees);
}

TEST(PortableMath, QuarterTurnsAreExact)
{
    struct Case
    {
        double degrees, sine, cosine;
    };
    constexpr Case cases[] = {
        {0,        0,  1 },
        {90,       1,  0 },
        {180,      0,  -1},
        {270,      -1, 0 },
        {360,      0,  1 },
        {-90,      -1, 0 },
        {36000090, 1,  0 },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(SineCosineOf(c.degrees).sine, c.sine) << c.degrees;
        EXPECT_EQ(SineCosineOf(c.degrees).cosine, c.cosine) << c.degrees;
    }
}

TEST(PortableMath, ArcTangentAgreesWithExtendedPrecision)
{
    Generator random(2, Stream::Motion);
    for (int i = 0; i < kCases; ++i) {
        const double y = random.Uniform(-1.0, 1.0);
        const double x = random.Uniform(-1.0, 1.0) * (i % 3 == 0 ? 1e-3 : 1.0);
        const long double expected = std::atan2(static_cast<long double>(y), x) * 180.0L / kPi;
        ASSERT_NEAR(ArcTangent(y, x), static_cast<double>(expected),
                    5e-16 * static_cast<double>(std::fabs(expected)))
            << y << ' ' << x;
    }
}

TEST(PortableMath, ArcTangentOfAxesAndDiagonalsIsExact)
{
    struct Case
    {
        double y, x, degrees;
    };
    constexpr Case cases[] = {
        {0,  0,  0   },
        {0,  1,  0   },
        {1,  1,  45  },
        {1,  0,  90  },
        {1,  -1, 135 },
        {0,  -1, 180 },
        {-1, -1, -135},
        {-1, 0,  -90 },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ArcTangent(c.y, c.x), c.degrees) << c.y << ' ' << c.x;
}

TEST(PortableMath, LogarithmAgreesWithExtendedPrecision)
{
    Generator random(3, Stream::Motion);
    for (int i = 0; i < kCases; ++i) {
        const double value =
            std::ldexp(random.Uniform(1.0, 2.0), static_cast<int>(random.Next() % 121) - 60);
        const long double expected = std::log(static_cast<long double>(value));
        ASSERT_NEAR(Logarithm(value), static_cast<double>(expected),
                    4e-16 * static_cast<double>(std::fabs(expected)))
            << value;
    }
    EXPECT_EQ(Logarithm(1.0), 0.0);
}

} // namespace
