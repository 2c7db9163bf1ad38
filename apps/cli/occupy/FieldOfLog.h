// SPDX-License-Identifier: MIT
//
// Strength and dip of the magnetic field in a log, against those of a calibration on the spot.
#pragma once

#include "field/DisturbanceMonitor.h"
#include "field/Occupation.h"
#include "field/SpotCalibration.h"
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// Keeps every second, every fourth, ... sample of a long log.
class FieldOfLog
{
public:
    void Add(const field::InertialSample& sample, int sensorType);

    /// The medians; none without readings.
    std::optional<field::FieldShape> Middle() const { return MedianShape(m_shapes); }

private:
    std::vector<field::FieldShape> m_shapes;
    std::size_t m_seen = 0;
    std::size_t m_stride = 1;
};

/// One sentence on how a field differs from that of a calibration beyond the limits of a
/// disturbance; empty where it does not.
std::string ChangeOf(const field::FieldShape& now, const field::SpotMagnetometer& calibrated);

} // namespace cli
