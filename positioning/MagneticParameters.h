// SPDX-License-Identifier: MIT
//
// The calibration of the two magnetometers: what makes their readings comparable.
#pragma once

/// Correction of one three-axis magnetometer, from raw readings (mx, my, mz) [counts]:
///
///   x =   mx                   − x0
///   y = a·mx + b·my            − y0
///   z = c·mx + d·my + e·mz     − z0
///
/// The x axis is the reference: shifted, never scaled or turned. A new record changes nothing.
struct Incline_MagneticCorrectParameter
{
    double x0 = 0.0; // offsets [counts]
    double y0 = 0.0;
    double z0 = 0.0;
    double a = 0.0; // share of x in y
    double c = 0.0; // share of x in z
    double d = 0.0; // share of y in z
    double b = 1.0; // scale of y
    double e = 1.0; // scale of z
};

/// Offset between the corrected readings of the two magnetometers [counts]: where A reads
/// (x, y, z), B is expected to read (−(x + dX), −(y + dY), z + dZ).
struct Incline_MagneticTranslationParameter
{
    double dX = 0.0;
    double dY = 0.0;
    double dZ = 0.0;
};
