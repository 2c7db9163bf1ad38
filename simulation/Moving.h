// SPDX-License-Identifier: MIT
//
// A number that moves: its value and its first two derivatives in time. Products, sines and cosines
// carry the derivatives along by the chain rule, so that rates and accelerations are exact instead
// of differences of positions. Angles are degrees, as in PortableMath.h.
//
//     const Moving lean = Moved(5.0, 20.0, seconds / 2.0, 2.0);  // from 5 to 20 degrees in 2 s
//     const double acceleration = 1.8 * SineOf(lean).bend;       // of a point 1.8 m up
#pragma once

#include "simulation/PortableMath.h"
#include "survey/Angle.h"

#include <algorithm>

namespace simulation {

struct Moving
{
    double value = 0.0;
    double rate = 0.0; // per second
    double bend = 0.0; // per second squared
};

constexpr Moving operator+(const Moving& a, const Moving& b)
{
    return {a.value + b.value, a.rate + b.rate, a.bend + b.bend};
}

constexpr Moving operator*(double s, const Moving& a)
{
    return {s * a.value, s * a.rate, s * a.bend};
}

constexpr Moving operator*(const Moving& a, const Moving& b)
{
    return {a.value * b.value, a.rate * b.value + a.value * b.rate,
            a.bend * b.value + 2.0 * a.rate * b.rate + a.value * b.bend};
}

inline constexpr double kRadiansPerDegree = tiltpole::survey::kPi / 180.0;

/// (sin a)'' = a'' cos a - a'^2 sin a, the angle's derivatives in radians.
inline Moving SineOf(const Moving& degrees)
{
    const auto [s, c] = SineCosineOf(degrees.value);
    const double rate = kRadiansPerDegree * degrees.rate;
    return {s, rate * c, kRadiansPerDegree * degrees.bend * c - rate * rate * s};
}

/// (cos a)'' = -a'' sin a - a'^2 cos a
inline Moving CosineOf(const Moving& degrees)
{
    const auto [s, c] = SineCosineOf(degrees.value);
    const double rate = kRadiansPerDegree * degrees.rate;
    return {c, -rate * s, -kRadiansPerDegree * degrees.bend * s - rate * rate * c};
}

/// From `from` to `to`: `share` runs from 0 to 1 in `duration` seconds and is cut to that range.
/// Position 10s^3 - 15s^4 + 6s^5; speed and acceleration are 0 at both ends, as a hand moves
/// (T. Flash, N. Hogan, J. Neurosci. 5(7), 1985).
inline Moving Moved(double from, double to, double share, double duration)
{
    const double s = std::clamp(share, 0.0, 1.0);
    const double way = to - from;
    const double away = 1.0 - s;
    return {from + way * (s * s * s * (10.0 - s * (15.0 - 6.0 * s))),
            way * 30.0 * s * s * away * away / duration,
            way * 60.0 * s * away * (1.0 - 2.0 * s) / (duration * duration)};
}

} // namespace simulation
