// SPDX-License-Identifier: MIT
//
// How much of a turn is covered: the sectors of the full circle that hold a sample.
#pragma once

#include "calibration/filter/SampleArray.h"

#include <array>

namespace tiltpole::calibration {

inline constexpr int kSectorWidth = 5; // degrees
inline constexpr int kSectors = 360 / kSectorWidth;

/// The sector j with j·5 < azimuth < (j + 1)·5, or -1: a boundary belongs to no sector.
int SectorOf(double azimuth);

/// Notes per sector one sample that lies in it, so that counting sectors does not depend on the
/// number of samples. The notes are checked when read: a record whose noted samples no longer
/// lie in their sectors, or that is small, is counted afresh.
class SectorCoverage
{
public:
    void Note(const PoseSensorData& sample);
    void Clear() { *this = {}; }

    /// The azimuths may have changed in a way that was not noted.
    void Distrust() { m_Trusted = false; }

    /// Number of sectors that hold a sample of `record`, the record that was noted.
    int Covered(const SampleArray& record) const;
    /// Every sector holds a sample.
    bool IsFull(const SampleArray& record) const;
    /// Share of the sectors that hold a sample, rounded, 0 to 100.
    int Percentage(const SampleArray& record) const;

private:
    std::array<const PoseSensorData*, kSectors> m_Witness{};
    bool m_Trusted = true;
};

} // namespace tiltpole::calibration
