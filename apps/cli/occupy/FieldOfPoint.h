// SPDX-License-Identifier: MIT
//
// Strength and dip of the magnetic field at one point, and which of its samples lie in a disturbed
// one. The dip needs the vertical, and
// pitch and roll of a rocked sensor are those of its accelerations. Gyros carry the mean force of
// some seconds to each sample instead:
//
//   up(t) = R(t)' f / |f|,   f = mean of R a with the weight s^2 (1 - s)^2,   s from 0 to 1,   dR = R [rate dt]
//
// so that what stays within bounds, as a rocked sensor does, hardly moves f. Without gyros, and in
// pieces of less than two seconds, the vertical is that of pitch and roll.
#pragma once

#include "field/DisturbanceMonitor.h"
#include "field/Occupation.h"
#include <optional>
#include <vector>

namespace cli {

/// A row that waits for the end of its point.
struct WaitingRow
{
    field::InertialSample sample;         // marked by MarkDisturbed
    std::optional<field::SensorVector> b; // corrected, along the axes of A
    std::optional<field::AntennaEpoch> epoch;
};

struct FieldOfPoint
{
    std::vector<field::DisturbedSpan> disturbances; // when it was disturbed, and how
    std::vector<field::FieldShape> shapes;          // of some of the samples, evenly spread
};

/// Marks the samples of a point that are in a disturbed field.
/// @param expected  the undisturbed field
/// @param gyros     whether the samples have rates and accelerations
FieldOfPoint MarkDisturbed(std::vector<WaitingRow>& rows, const field::FieldShape& expected,
                           int sensorType, bool gyros);

} // namespace cli
