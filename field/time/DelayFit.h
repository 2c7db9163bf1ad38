// SPDX-License-Identifier: MIT
//
// Least squares of a rocked pole at a given delay.
//
//   antenna(i) = t + L·R(o)·u(i)        t: tip, o: heading offset, L: length, u: unit vector up the pole
//
// With means taken off (a, u), and heights weighted by w, the sum of squares has its minimum at
//
//   A = Σ (a_n u_n + a_e u_e)    C = Σ (a_e u_n − a_n u_e)    H = Σ a_h u_h
//   o = atan2(C, A)              L = (√(A² + C²) + w·H) / (Σ (u_n² + u_e²) + w·Σ u_h²)
//   sum = Σ (a_n² + a_e²) + w·Σ a_h² − L·(√(A² + C²) + w·H)
//
// since the turn that fits best does not depend on the length.
#pragma once

#include "survey/Point.h"

#include <span>
#include <vector>

namespace tiltpole::field {

/// The solution at one delay.
struct RockingFit
{
    survey::Point3 tip;         // [m]
    double headingOffset = 0.0; // [rad]
    double length = 0.0;        // [m]
    double sum = 0.0;           // of squares, heights weighted [m²]
};

/// @param antenna       north, east, up [m]
/// @param up            unit vectors up the pole, as many
/// @param heightWeight  w
RockingFit FitRocking(std::span<const survey::Point3> antenna, std::span<const survey::Point3> up,
                      double heightWeight);

/// antenna(i) − t − L·R(o)·u(i) [m].
std::vector<survey::Point3> ResidualsOf(std::span<const survey::Point3> antenna,
                                        std::span<const survey::Point3> up, const RockingFit& fit);

} // namespace tiltpole::field
