// SPDX-License-Identifier: MIT
/// @file
/// Short steps on the ellipsoid of WGS 84, without a map projection.
///
///     const field::Geodetic tip = field::Offset(antenna, -0.31, 0.22, -1.96);
///     const xyhCoordinate back = field::Difference(antenna, tip); // -0.31, 0.22, -1.96
///
///     latitude += N / (M + h)      longitude += E / ((Nu + h)·cos latitude)      height += U
///
/// N, E, U: meters towards true north, east and up; M, Nu: radii of curvature in the meridian and
/// across it at the first point. The error against the plane that touches the ellipsoid grows with
/// the square of the step: 2 m are off by at most 4.2e-6 m up to latitude 85, 2.1e-5 m at 89,
/// 2.1e-4 m at 89.9 (Geodesy.AgreesWithTheTangentPlane). Derivation: docs/live-formulas.md,
/// "Offset".
#pragma once

#include "field/Epoch.h"
#include "framework/core/Export.h"
#include "positioning/PoseSensorData.h"

namespace field {

/// Beyond it north and south, neither function has a result [degrees].
inline constexpr double kLargestLatitude = 89.9;

/// The point at north, east, up [m] of `from`.
/// @return longitude in [-180, 180]; all NaN where the latitude of `from` is beyond ±89.9 or a value is
///         not finite
TILTPOLE_API Geodetic Offset(const Geodetic& from, double north, double east, double up);

/// The reverse: x north, y east, h up [m] from `from` to `to`, the shorter way around the Earth.
/// @return all NaN where the latitude of `from` is beyond ±89.9 or a value is not finite
TILTPOLE_API xyhCoordinate Difference(const Geodetic& from, const Geodetic& to);

} // namespace field
