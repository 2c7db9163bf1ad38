// SPDX-License-Identifier: MIT
//
// Poses as rows of text with commas, as PoseSensorData::ToText writes them.
//
//   header   any line with the name "dPitch"; its names say which column holds what, in any order. Until
//            one comes: PoseSensorData::TextHeader
//   needed   dPitch, dRoll, dMag_x, dMag_y, dMag_z; without B's columns B is (−Ax, −Ay, Az)
//   seconds  column for the sensor's clock; without it "Time" (hh:mm:ss.sss), where it has decimals: it
//            counts on at midnight, when it falls by more than 12 h
#pragma once

#include "field/pose/PoseReader.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tiltpole::field {

using ::field::Instant;
using ::field::PoseSample;

class PoseTable : public ::field::PoseReader
{
public:
    PoseTable();
    void Feed(std::string_view bytes, Instant arrival) override;
    void Restart() override;
    bool HasOneMagnetometer() const override { return m_oneMagnetometer; }

private:
    static constexpr std::size_t kColumns = 17; // that are read

    void Read(std::string_view bytes, Instant arrival);
    void TakeLine(Instant arrival);
    void Split();
    bool TakeHeader();
    bool TakeRow(Instant arrival);
    double CountedOn(double secondsOfDay);

    // Where each column stands in a row; kNowhere: nowhere.
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
    std::array<std::size_t, kColumns> m_places{};
    bool m_oneMagnetometer = false;
    double m_secondsOfDay = 0.0; // of the last time with decimals
    int m_days = 0;              // midnights since the first
    std::string m_line;
    bool m_overlong = false;
    bool m_isCut = false;                   // the beginning of the line may be lost
    std::vector<std::string_view> m_fields; // of m_line
};

} // namespace tiltpole::field
