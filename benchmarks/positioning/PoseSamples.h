// SPDX-License-Identifier: MIT
//
// The samples that are measured, the same in every run.
#pragma once

#include "positioning/PoseSensorData.h"

#include <array>
#include <cmath>
#include <random>

namespace poses {

inline constexpr std::size_t kSamples = 1024; // a power of two
inline constexpr double kPoleLength = 2.0;    // [m]

// A pole that leans up to 45 degrees in a field of 45 000 nT, read in counts of 100 nT.
inline std::array<PoseSensorData, kSamples> MakeSamples()
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> lean(-45, 45);
    std::uniform_real_distribution<double> field(-450, 450);
    std::array<PoseSensorData, kSamples> samples;
    for (PoseSensorData& s : samples) {
        s.dPitch = lean(random);
        s.dRoll = lean(random);
        s.dGyro_x = field(random) / 450;
        s.dGyro_y = field(random) / 450;
        s.dGyro_z = field(random) / 450;
        s.dAcc_x = std::sin(s.dPitch / 57.3);
        s.dAcc_y = std::sin(s.dRoll / 57.3);
        s.dAcc_z = std::cos(s.dRoll / 57.3);
        s.dMag_x = field(random);
        s.dMag_y = field(random);
        s.dMag_z = field(random);
        s.dMag_x_2 = -s.dMag_x + 0.1 * field(random);
        s.dMag_y_2 = -s.dMag_y + 0.1 * field(random);
        s.dMag_z_2 = s.dMag_z + 0.1 * field(random);
    }
    return samples;
}

inline const std::array<PoseSensorData, kSamples>& Samples()
{
    static const auto samples = MakeSamples();
    return samples;
}

} // namespace poses
