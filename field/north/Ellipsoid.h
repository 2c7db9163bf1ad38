// SPDX-License-Identifier: MIT
//
// The ellipsoid of WGS 84. Derivation: docs/live-formulas.md, "Offset".
#pragma once

#include "survey/Angle.h"

#include <cmath>

namespace tiltpole::field {

inline constexpr double kEquator = 6378137.0;                        // a [m]
inline constexpr double kFlattening = 1.0 / 298.257223563;           // f
inline constexpr double kExcess = kFlattening * (2.0 - kFlattening); // e²

/// Radii of curvature at a latitude.
struct Radii
{
    double meridian; // M = a(1 − e²)/(1 − e² sin²)^(3/2) [m]
    double across;   // Nu = a/√(1 − e² sin²) [m]
};

inline Radii RadiiAt(double sinLatitude)
{
    const double w2 = 1.0 - kExcess * sinLatitude * sinLatitude;
    const double across = kEquator / std::sqrt(w2);
    return {across * (1.0 - kExcess) / w2, across};
}

} // namespace tiltpole::field
