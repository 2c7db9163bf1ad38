// SPDX-License-Identifier: MIT
/// @file
/// The Earth's magnetic field by the World Magnetic Model 2025, compiled in: no file is read.
///
///     const field::Field north = field::MagneticFieldAt({47.5, 19.05, 150.0}, 2026.9);
///     const double trueHeading = magneticHeading + north.declination;
///
///     declination  from true to magnetic north, east positive [degrees]
///     dip          below the horizon positive [degrees]
///     strength     F, of the whole field; horizontal: H, of its horizontal part [nT]
///
/// The model holds the field of the core: what iron, buildings, rocks and the sun add is not in it.
/// Within 0.005 degrees of the official test values
/// (MagneticField.AgreesWithTheOfficialTestValues). Derivation: docs/live-formulas.md, "North".
#pragma once

#include "field/Epoch.h"
#include "framework/core/Export.h"

#include <chrono>

namespace field {

/// The field at a place and time. All NaN where the model has no value.
struct Field
{
    double declination = 0.0;
    double dip = 0.0;
    double strength = 0.0;
    double horizontal = 0.0;
    /// Standard deviation of the declination [degrees], √(0.26² + (5417 nT/H)²): what the model
    /// leaves out, as its report states it.
    double declinationSigma = 0.0;
};

/// Decimal years between which the model is valid, both ends included.
inline constexpr double kFieldModelBegins = 2025.0;
inline constexpr double kFieldModelEnds = 2030.0;

/// @param decimalYear  see DecimalYear
/// @return all NaN before 2025.0, after 2030.0, beyond latitude ±90, below -1 km or above 850 km, where a
///         value is not finite, or where memory is too short for the coefficients, which the first
///         call keeps for good; declination and its sigma mean nothing where H vanishes
TILTPOLE_API Field MagneticFieldAt(const Geodetic& place, double decimalYear);

/// The year and the part of it that has passed: 2026-07-02 12:00 is 2026.5.
/// @param secondsOfDay  since midnight UTC
/// @return NaN where the day is no date
TILTPOLE_API double DecimalYear(std::chrono::sys_days day, double secondsOfDay = 0.0);

} // namespace field
