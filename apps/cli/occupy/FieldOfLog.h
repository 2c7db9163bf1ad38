// SPDX-License-Identifier: MIT
//
// Strength and dip of the magnetic field at the points of a log, against those of a calibration on
// the spot.
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"
#include "field/DisturbanceMonitor.h"
#include "field/SpotCalibration.h"
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// The medians; none where the field was not watched.
std::optional<field::FieldShape> MiddleField(const std::vector<OccupiedPoint>& points);

/// One sentence on how a field differs from that of a calibration beyond the limits of a
/// disturbance; empty where it does not.
std::string ChangeOf(const field::FieldShape& now, const field::SpotMagnetometer& calibrated);

} // namespace cli
