// SPDX-License-Identifier: MIT
#include "calibration/filter/SectorCoverage.h"

#include <bitset>
#include <cmath>
#include <cstddef>

namespace tiltpole::calibration {
namespace {

constexpr int kSmallRecord = 5 * kSectors; // samples; up to here counting the whole record is cheap

int CountSectors(const SampleArray& record)
{
    std::bitset<kSectors> covered;
    for (int i = 0; i < CountOf(record); ++i) {
        const PoseSensorData* sample = record.GetAt(i);
        const int sector = sample != nullptr ? SectorOf(sample->dAzimuth) : -1;
        if (sector >= 0) covered.set(static_cast<std::size_t>(sector));
    }
    return static_cast<int>(covered.count());
}

} // namespace

int SectorOf(double azimuth)
{
    if (!(azimuth > 0 && azimuth < 360)) return -1;
    int sector = static_cast<int>(azimuth / kSectorWidth);
    if (azimuth < sector * kSectorWidth) --sector; // the quotient was rounded up
    return azimuth > sector * kSectorWidth ? sector : -1;
}

void SectorCoverage::Note(const PoseSensorData& sample)
{
    const int sector = SectorOf(sample.dAzimuth);
    if (sector < 0) return;
    const PoseSensorData*& witness = m_Witness[static_cast<std::size_t>(sector)];
    if (witness == nullptr) witness = &sample;
}

int SectorCoverage::Covered(const SampleArray& record) const
{
    if (!m_Trusted || CountOf(record) <= kSmallRecord) return CountSectors(record);

    int covered = 0;
    for (int sector = 0; sector < kSectors; ++sector) {
        const PoseSensorData* witness = m_Witness[static_cast<std::size_t>(sector)];
        if (witness == nullptr) continue;
        if (SectorOf(witness->dAzimuth) != sector) return CountSectors(record);
        ++covered;
    }
    return covered;
}

bool SectorCoverage::IsFull(const SampleArray& record) const
{
    return CountOf(record) >= kSectors && Covered(record) == kSectors;
}

int SectorCoverage::Percentage(const SampleArray& record) const
{
    return static_cast<int>(std::lround(Covered(record) * kSectorWidth * 100 / 360.0));
}

} // namespace tiltpole::calibration
