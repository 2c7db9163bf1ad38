// SPDX-License-Identifier: MIT
#pragma once

#include "field/ExactAttitude.h"
#include "survey/Angle.h"
#include <cmath>

namespace cli {

/// Rodrigues' rotation of v by the vector `turn` [rad].
inline field::SensorVector Turned(const field::SensorVector& v, const field::SensorVector& turn)
{
    const double angle = std::hypot(turn.x, turn.y, turn.z);
    if (angle == 0.0) return v;
    const field::SensorVector k{turn.x / angle, turn.y / angle, turn.z / angle};
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double along = (1.0 - c) * (k.x * v.x + k.y * v.y + k.z * v.z);
    return {c * v.x + s * (k.y * v.z - k.z * v.y) + along * k.x,
            c * v.y + s * (k.z * v.x - k.x * v.z) + along * k.y,
            c * v.z + s * (k.x * v.y - k.y * v.x) + along * k.z};
}

/// How what stands still in the world turns in a sensor between two samples [rad].
/// @param before  rate at the first one [degrees/s]
/// @param seconds  between both
inline field::SensorVector TurnInSensor(const field::SensorVector& before,
                                        const field::SensorVector& now, double seconds)
{
    const double half = -0.5 * tiltpole::survey::Deg2Rad(seconds);
    return {half * (before.x + now.x), half * (before.y + now.y), half * (before.z + now.z)};
}

} // namespace cli
