// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/FieldOfLog.h"

#include <cmath>
#include <fmt/format.h>

namespace cli {

void FieldOfLog::Add(const field::InertialSample& sample, int sensorType)
{
    constexpr std::size_t kMost = 32768;
    const field::SensorVector& m = sample.magnetic;
    if (m.x == 0.0 && m.y == 0.0 && m.z == 0.0) return;
    if (m_seen++ % m_stride != 0) return;
    if (m_shapes.size() == kMost) {
        for (std::size_t i = 0; i < kMost / 2; ++i)
            m_shapes[i] = m_shapes[2 * i];
        m_shapes.resize(kMost / 2);
        m_stride *= 2;
    }
    field::Tilt tilt = sample.tilt;
    tilt.sensorType = sensorType;
    m_shapes.push_back(ShapeOf(tilt, m));
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
