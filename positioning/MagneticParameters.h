// SPDX-License-Identifier: MIT
/// @file
/// Calibration of the two magnetometers.
///
///     Incline_MagneticCorrectParameter correction; // leaves readings unchanged
///     correction.x0 = 120.0;
///     correction.b = 1.04;
///     sensor.SetMagneticCorrectPar_A(correction); // a CInclineSensor_Position
///
/// Offsets are in sensor counts, scales and mixing factors have no unit; any value is accepted.
/// The axes are those of the magnetometer itself.
#pragma once

/// Correction of one three-axis magnetometer. A raw reading (mx, my, mz) [counts] becomes
///
///   x =   mx                   − x0
///   y = a·mx + b·my            − y0
///   z = c·mx + d·my + e·mz     − z0
///
/// The x axis is the reference: it is shifted, but neither scaled nor rotated. The default values
/// leave a reading unchanged.
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

/// Offset between the corrected readings of the two magnetometers [counts]: when A reads (x, y, z),
/// B is expected to read (−(x + dX), −(y + dY), z + dZ).
struct Incline_MagneticTranslationParameter
{
    double dX = 0.0;
    double dY = 0.0;
    double dZ = 0.0;
};
