// SPDX-License-Identifier: MIT
//
// How much of a turn is covered: the sectors of the full circle that have a sample.
#pragma once

#include "calibration/filter/SampleArray.h"

#include <array>

namespace tiltpole::calibration {

inline constexpr int kSectorWidth = 5; // degrees
inline constexpr int kSectors = 360 / kSectorWidth;

/// The sector j with j·5 < azimuth < (j + 1)·5, or -1: a boundary belongs to no sector.
int SectorOf(double azimuth);

/// Keeps one sample per sector that lies in it, so that the cost of counting sectors does not
/// depend on the number of samples. The samples kept are checked at every count: where one no
/// longer lies in its sector, or where the record is small, the whole record is counted.
class SectorCoverage
{
public:
    void Note(const PoseSensorData& sample);
    void Clear() { *this = {}; }

    /// To be called when azimuths may have changed without a call of Note.
    void Distrust() { m_Trusted = false; }

    /// Number of sectors with a sample of `record`, whose samples were passed to Note.
    int Covered(const SampleArray& record) const;
    /// Whether every sector has a sample.
    bool IsFull(const SampleArray& record) const;
    /// Percentage of the sectors with a sample, rounded.
    int Percentage(const SampleArray& record) const;

private:
    std::array<const PoseSensorData*, kSectors> m_Witness{};
    bool m_Trusted = true;
};

} // namespace tiltpole::calibration
