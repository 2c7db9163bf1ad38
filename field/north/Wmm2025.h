// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace tiltpole::field {

inline constexpr int kWmmDegree = 12;
inline constexpr double kWmmEpoch = 2025.0;
inline constexpr double kWmmRadius = 6371200.0; // of the reference sphere [m]

/// Gauss coefficients of degree n and order m, Schmidt semi-normalized, and their yearly changes.
struct GaussTerm
{
    int n, m;
    double g, h;             // [nT]
    double gChange, hChange; // [nT/year]
};

/// All terms, by degree and order.
const std::array<GaussTerm, 90>& Wmm2025Terms();

} // namespace tiltpole::field
