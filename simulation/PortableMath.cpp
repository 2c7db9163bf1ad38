// SPDX-License-Identifier: MIT
#include "simulation/PortableMath.h"

#include "survey/Angle.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace simulation {

namespace {

using tiltpole::survey::kDegreesPerRadian;

constexpr double kRadiansPerDegree = tiltpole::survey::kPi / 180.0;

// A simulated log depends on the last bit of both.
static_assert(kRadiansPerDegree == 0.0174532925199432957692);
static_assert(kDegreesPerRadian == 57.2957795130823208768);

// sin x = x - x^3/3! + x^5/5! - ..., |x| <= pi/4: the first term left out is below 1e-19.
double SineSeries(double x)
{
    const double q = x * x;
    double sum = 1.0 / 355687428096000.0; // 1/17!
    sum = sum * q - 1.0 / 1307674368000.0;
    sum = sum * q + 1.0 / 6227020800.0;
    sum = sum * q - 1.0 / 39916800.0;
    sum = sum * q + 1.0 / 362880.0;
    sum = sum * q - 1.0 / 5040.0;
    sum = sum * q + 1.0 / 120.0;
    sum = sum * q - 1.0 / 6.0;
    return x + x * (sum * q);
}

// cos x = 1 - x^2/2! + x^4/4! - ..., |x| <= pi/4: the first term left out is below 4e-18.
double CosineSeries(double x)
{
    const double q = x * x;
    double sum = 1.0 / 20922789888000.0; // 1/16!
    sum = sum * q - 1.0 / 87178291200.0;
    sum = sum * q + 1.0 / 479001600.0;
    sum = sum * q - 1.0 / 3628800.0;
    sum = sum * q + 1.0 / 40320.0;
    sum = sum * q - 1.0 / 720.0;
    sum = sum * q + 1.0 / 24.0;
    sum = sum * q - 1.0 / 2.0;
    return 1.0 + sum * q;
}

// atan t = t - t^3/3 + t^5/5 - ..., |t| <= 1/16 [degrees]: the first term left out is below 1e-20.
double ArcTangentSeries(double t)
{
    const double q = t * t;
    double sum = -1.0 / 15.0;
    sum = sum * q + 1.0 / 13.0;
    sum = sum * q - 1.0 / 11.0;
    sum = sum * q + 1.0 / 9.0;
    sum = sum * q - 1.0 / 7.0;
    sum = sum * q + 1.0 / 5.0;
    sum = sum * q - 1.0 / 3.0;
    return (t + t * (sum * q)) * kDegreesPerRadian;
}

// atan(i / 8) [degrees]
constexpr std::array<double, 9> kArcTangentOfEighths{
    0.0,
    7.12501634890179756195,
    14.0362434679264785829,
    20.5560452195834643083,
    26.5650511770779893516,
    32.0053832080834955608,
    36.8698976458440212969,
    41.1859251657096458051,
    45.0,
};

// The angle whose tangent is low / high, 0 <= low <= high, high > 0 [degrees].
double ArcTangentBelowOne(double low, double high)
{
    const double eighths = std::floor(low / high * 8.0 + 0.5);
    const double c = eighths / 8.0;
    const double t = (low - c * high) / (high + c * low);
    return kArcTangentOfEighths[static_cast<std::size_t>(eighths)] + ArcTangentSeries(t);
}

} // namespace

SineCosine SineCosineOf(double degrees)
{
    const double quarters = std::floor(degrees / 90.0 + 0.5);
    const double x = (degrees - quarters * 90.0) * kRadiansPerDegree; // the difference is exact
    const double s = SineSeries(x);
    const double c = CosineSeries(x);
    switch (static_cast<std::int64_t>(quarters) & 3) {
    case 0:
        return {s, c};
    case 1:
        return {c, -s};
    case 2:
        return {-s, -c};
    default:
        return {-c, s};
    }
}

double ArcTangent(double y, double x)
{
    const double rise = std::fabs(y);
    const double run = std::fabs(x);
    if (rise == 0.0 && run == 0.0) return 0.0;

    double angle =
        rise <= run ? ArcTangentBelowOne(rise, run) : 90.0 - ArcTangentBelowOne(run, rise);
    if (x < 0.0) angle = 180.0 - angle;
    return y < 0.0 ? -angle : angle;
}

// value = m 2^e with m in [1/sqrt 2, sqrt 2); with s = (m - 1)/(m + 1),
// ln m = 2 (s + s^3/3 + s^5/5 + ...), |s| < 0.1716: the first term left out is below 1e-19.
double Logarithm(double value)
{
    constexpr double kLn2High = 0.6931471803691238; // 33 bits: times any exponent it is exact
    constexpr double kLn2Low = 1.9082149292705878161e-10;
    constexpr std::uint64_t kExponent = 0x7FF;
    constexpr std::uint64_t kOne = 0x3FF0000000000000;

    const auto bits = std::bit_cast<std::uint64_t>(value);
    auto exponent = static_cast<std::int64_t>((bits >> 52) & kExponent) - 1023;
    double m = std::bit_cast<double>((bits & 0x000FFFFFFFFFFFFF) | kOne);
    if (m >= 1.4142135623730951) {
        m *= 0.5;
        exponent += 1;
    }
    const double s = (m - 1.0) / (m + 1.0);
    const double q = s * s;
    double sum = 1.0 / 23.0;
    for (int odd = 21; odd >= 3; odd -= 2)
        sum = sum * q + 1.0 / odd;
    const double e = static_cast<double>(exponent);
    return e * kLn2High + (2.0 * s + (2.0 * s * (sum * q) + e * kLn2Low));
}

} // namespace simulation
