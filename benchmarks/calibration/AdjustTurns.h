// SPDX-License-Identifier: MIT
//
// The turns that are calibrated, and the check that a peer solves the same calibration.
#pragma once

#include "calibration/InclineSensor_MagneticAdjust.h"
#include "tests/reference/Turns.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace adjusting {

using Turn = std::vector<PoseSensorData>;

struct Turns
{
    Turn horizontal, vertical;
};

enum Kind { Round, Skewed, RealNoise };

// RealNoise: round turns with the differences between successive recorded readings as noise.
inline Turns MakeTurns(int samples, Kind kind)
{
    turns::Shape shape{.samples = samples, .revolutions = 1.1, .noise = 2, .seed = 21};
    if (kind == Skewed) {
        shape.skew = 0.3;
        shape.scale = 0.7;
        shape.offset = 600;
    }
    Turns made{turns::Make(shape, turns::TurnAxis::Horizontal),
               turns::Make(shape, turns::TurnAxis::Vertical)};
    if (kind != RealNoise) return made;
    const Turn recorded = turns::Recorded();
    for (Turn* turn : {&made.horizontal, &made.vertical})
        for (std::size_t i = 0; i < turn->size(); ++i) {
            const PoseSensorData& a = recorded[i % (recorded.size() - 1)];
            const PoseSensorData& b = recorded[i % (recorded.size() - 1) + 1];
            (*turn)[i].dMag_x += b.dMag_x - a.dMag_x;
            (*turn)[i].dMag_y += b.dMag_y - a.dMag_y;
            (*turn)[i].dMag_z += b.dMag_z - a.dMag_z;
        }
    return made;
}

inline double Field(const PoseSensorData& s, int sensor, int axis)
{
    const double values[2][3] = {
        {s.dMag_x,   s.dMag_y,   s.dMag_z  },
        {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2}
    };
    return values[sensor][axis];
}

struct Weights
{
    double a, b, c, d, e, x0, y0, z0;
};

// The first correction from both conics and slopes.
inline Weights FirstWeights(double E0, double F0, double F1, double k, double m)
{
    const double Q = (E0 - k * k) + E0 * k * k, S = std::sqrt(-Q * (E0 - 1));
    const double T = std::sqrt(-F1 * F1 + 4 * F0 - 4 * F0 * F0);
    const double a = -1 / Q * S * k, b = S / Q;
    return {a,
            b,
            ((b * F1 - 2 * a * m) + 2 * F0 * a * m) / T / b,
            2 / T * (F0 - 1) * m,
            -2 / T * (F0 - 1),
            0,
            0,
            0};
}

inline void CheckAgreement(const Weights& peer, const Turns& turns)
{
    CInclineSensor_MagneticAdjust adjust;
    for (PoseSensorData s : turns.horizontal)
        adjust.Horizontal_Add(&s);
    for (PoseSensorData s : turns.vertical)
        adjust.Vertical_Add(&s);
    const bool done = adjust.Adjust() == 1;
    const auto P = adjust.GetCorrectPar_A();
    if (!done || !(std::fabs(P.c - peer.c) < 1e-6 && std::fabs(P.z0 - peer.z0) < 1e-3))
        throw std::runtime_error("the peer does not solve the same calibration");
}

inline Turns TurnsOf(const benchmark::State& state)
{
    return MakeTurns(static_cast<int>(state.range(0)), static_cast<Kind>(state.range(1)));
}

inline void Sizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"samples", "kind"});
    for (const int samples : {100, 300, 500, 1000, 3000})
        b->Args({samples, Round});
    b->Args({500, Skewed});
    b->Args({500, RealNoise});
}

} // namespace adjusting
