// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/FieldOfLog.h"

#include <cmath>
#include <fmt/format.h>

namespace cli {

std::optional<field::FieldShape> MiddleField(const std::vector<OccupiedPoint>& points)
{
    std::vector<field::FieldShape> shapes;
    for (const OccupiedPoint& point : points)
        shapes.insert(shapes.end(), point.field.shapes.begin(), point.field.shapes.end());
    return MedianShape(shapes);
}

std::string ChangeOf(const field::FieldShape& now, const field::SpotMagnetometer& calibrated)
{
    const field::MonitorLimits limits;
    const double strength = now.strength / calibrated.strength - 1.0;
    const double dip = now.dip - calibrated.dip;
    if (std::fabs(strength) > limits.strength)
        return fmt::format("the magnetic field is {:.0f} % {} than at the calibration",
                           100.0 * std::fabs(strength), strength > 0.0 ? "stronger" : "weaker");
    if (std::fabs(dip) > limits.dip)
        return fmt::format("the magnetic field is {:.1f} degrees {} than at the calibration",
                           std::fabs(dip), dip > 0.0 ? "steeper" : "flatter");
    return {};
}

} // namespace cli
