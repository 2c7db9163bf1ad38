// SPDX-License-Identifier: MIT
#include "quality/statistics/Quantiles.h"

#include <cmath>
#include <numbers>

namespace tiltpole::quality {

// Abramowitz & Stegun, Handbook of Mathematical Functions, 26.7.3 and 26.7.4: a finite series in
// cos θ, θ = atan(x / sqrt(ν)).
double StudentWithin(double x, int freedom)
{
    const double angle = std::atan(x / std::sqrt(static_cast<double>(freedom)));
    const double cosine = std::cos(angle);
    const bool odd = freedom % 2 == 1;
    double term = odd ? cosine : 1.0;
    double sum = freedom == 1 ? 0.0 : term;
    for (int k = odd ? 2 : 1; k <= freedom - 3; k += 2) {
        term *= cosine * cosine * static_cast<double>(k) / static_cast<double>(k + 1);
        sum += term;
    }
    const double series = std::sin(angle) * sum;
    return odd ? 2.0 / std::numbers::pi * (angle + series) : series;
}

double StudentBound(double probability, int freedom)
{
    double low = 0.0;
    double high = 1.0;
    while (StudentWithin(high, freedom) < probability && high < 1e12)
        high *= 2.0;
    for (int halving = 0; halving < 100; ++halving) {
        const double middle = 0.5 * (low + high);
        (StudentWithin(middle, freedom) < probability ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

// P(F > x) = (1 + 2x/ν)^(−ν/2).
double FisherBoundOfTwo(double probability, int freedom)
{
    const double half = 0.5 * static_cast<double>(freedom);
    return half * (std::pow(1.0 - probability, -1.0 / half) - 1.0);
}

// √ν/2·(√F − 1/√F) of an F with (ν, ν) degrees of freedom is a Student's t with ν: T. Cacoullos,
// A relation between t and F-distributions, J. Amer. Statist. Assoc. 60 (1965) 528.
double VarianceRatioBound(double probability, int freedom)
{
    const double t = StudentBound(probability, freedom);
    const double half = t / std::sqrt(static_cast<double>(freedom));
    const double root = half + std::sqrt(1.0 + half * half);
    return root * root;
}

} // namespace tiltpole::quality
