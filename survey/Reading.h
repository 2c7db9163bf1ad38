// SPDX-License-Identifier: MIT
//
// Readings of the two magnetometers of a sample.
//
// A and B are mounted on one sensor with x and y opposed: apart from offsets and scales, B reads
// (−x, −y, z) where A reads (x, y, z).
#pragma once

#include "positioning/PoseSensorData.h"

#include <cmath>

namespace tiltpole::survey {

enum class Magnetometer { A, B };

/// Of one magnetometer, raw or corrected [counts].
struct Reading
{
    double x, y, z;
};

/// The reading that a sample carries.
inline Reading ReadingOf(const PoseSensorData& s, Magnetometer which)
{
    return which == Magnetometer::A ? Reading{s.dMag_x, s.dMag_y, s.dMag_z}
                                    : Reading{s.dMag_x_2, s.dMag_y_2, s.dMag_z_2};
}

/// Replaces the reading that a sample carries.
inline void SetReading(PoseSensorData& s, Magnetometer which, const Reading& m)
{
    if (which == Magnetometer::A) {
        s.dMag_x = m.x;
        s.dMag_y = m.y;
        s.dMag_z = m.z;
    } else {
        s.dMag_x_2 = m.x;
        s.dMag_y_2 = m.y;
        s.dMag_z_2 = m.z;
    }
}

/// |Δx| + |Δy| + |Δz| [counts].
inline double SumOfDifferences(const Reading& a, const Reading& b)
{
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y) + std::fabs(a.z - b.z);
}

} // namespace tiltpole::survey
