// SPDX-License-Identifier: MIT
//
// Elementary functions that give the same bits on every platform.
//
// The transcendental functions of the standard library differ in the last bit from one platform to
// the next, and with them every simulated log. These are made of + - * / and sqrt alone, which
// IEEE 754 rounds exactly; the build keeps products and sums apart (no contraction). Series and
// error bounds: docs/simulation.md, "The same bytes everywhere". Angles are degrees, so that whole
// quarter turns are exact.
#pragma once

#include <cfloat>
#include <limits>

namespace simulation {

static_assert(std::numeric_limits<double>::is_iec559, "doubles must be IEEE 754 binary64");
static_assert(FLT_EVAL_METHOD == 0, "expressions of doubles must be rounded to double");

struct SineCosine
{
    double sine = 0.0;
    double cosine = 1.0;
};

/// Sine and cosine of an angle [degrees], |angle| < 1e9. Multiples of 90 are exact; otherwise the
/// error stays below 2.5e-16.
SineCosine SineCosineOf(double degrees);

/// The angle of the vector (x, y) against the x axis [degrees], in [-180, 180], 0 for (0, 0).
/// Relative error below 5e-16.
double ArcTangent(double y, double x);

/// Natural logarithm of a positive, normal number. Relative error below 4e-16.
double Logarithm(double value);

} // namespace simulation
