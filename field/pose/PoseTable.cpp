// SPDX-License-Identifier: MIT
#include "field/pose/PoseTable.h"

#include "field/pose/PoseLine.h"
#include "field/pose/Readings.h"
#include "framework/core/TextConversion.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr std::size_t kLongestLine = 1024;
constexpr std::size_t kMostFields = 64;

struct Column
{
    std::string_view name;
    double PoseSensorData::*member;
    bool needed;
};

constexpr Column kNumbers[] = {
    {"dPitch",   &PoseSensorData::dPitch,   true },
    {"dRoll",    &PoseSensorData::dRoll,    true },
    {"dMag_x",   &PoseSensorData::dMag_x,   true },
    {"dMag_y",   &PoseSensorData::dMag_y,   true },
    {"dMag_z",   &PoseSensorData::dMag_z,   true },
    {"dMag_x_2", &PoseSensorData::dMag_x_2, false},
    {"dMag_y_2", &PoseSensorData::dMag_y_2, false},
    {"dMag_z_2", &PoseSensorData::dMag_z_2, false},
    {"dRot",     &PoseSensorData::dRot,     false},
    {"dGyro_x",  &PoseSensorData::dGyro_x,  false},
    {"dGyro_y",  &PoseSensorData::dGyro_y,  false},
    {"dGyro_z",  &PoseSensorData::dGyro_z,  false},
    {"dAcc_x",   &PoseSensorData::dAcc_x,   false},
    {"dAcc_y",   &PoseSensorData::dAcc_y,   false},
    {"dAcc_z",   &PoseSensorData::dAcc_z,   false},
};
constexpr std::size_t kFirstOfB = 5;
constexpr std::size_t kLastOfB = 7;
constexpr std::size_t kTime = std::size(kNumbers);
constexpr std::size_t kSeconds = kTime + 1;

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlank = " \t";
    const std::size_t begin = text.find_first_not_of(kBlank);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlank) - begin + 1);
}

// The text up to the next `separator`, which is taken off too.
std::string_view Cut(std::string_view& text, char separator)
{
    const std::size_t end = text.find(separator);
    const std::string_view first = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return first;
}

// hh:mm:ss or hh:mm:ss.sss; the latter is exact enough for a clock.
bool ReadTime(std::string_view text, PoseSample& sample)
{
    const bool decimals = text.find('.') != std::string_view::npos;
    const std::optional<double> hour = WholeNumber(Cut(text, ':'));
    const std::optional<double> minute = WholeNumber(Cut(text, ':'));
    const std::optional<double> second = WholeNumber(text);
    if (!hour || !minute || !second) return false;
    if (!(*hour >= 0.0 && *hour < 24.0 && *minute >= 0.0 && *minute < 60.0)) return false;
    if (!(*second >= 0.0 && *second < 61.0)) return false;
    sample.data.nHour = static_cast<int>(*hour);
    sample.data.nMinute = static_cast<int>(*minute);
    sample.data.nSecond = static_cast<int>(*second);
    if (decimals)
        sample.deviceSeconds = sample.data.nHour * 3600.0 + sample.data.nMinute * 60.0 + *second;
    return true;
}

} // namespace

PoseTable::PoseTable()
{
    static_assert(kSeconds + 1 == kColumns);
    m_fields.reserve(kMostFields);
    m_line = framework::ToUtf8(std::wstring_view(PoseSensorData::TextHeader()));
    while (m_line.ends_with('\n') || m_line.ends_with('\r'))
        m_line.pop_back();
    Split();
    TakeHeader();
    m_line.clear();
}

// Rows have no checksum: the rest of one that was half read could be taken for a row.
void PoseTable::Restart()
{
    m_isCut = m_isCut || !m_line.empty();
    m_line.clear();
    m_overlong = false;
}

void PoseTable::Feed(std::string_view bytes, Instant arrival)
{
    try {
        Read(bytes, arrival);
    } catch (...) {
        Restart();
        m_isCut = true; // bytes of another line may be lost, too
        throw;
    }
}

void PoseTable::Read(std::string_view bytes, Instant arrival)
{
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        if (m_line.size() + part.size() > kLongestLine) {
            m_overlong = true;
            m_line.clear();
        }
        if (!m_overlong) m_line += part;
        if (end == std::string_view::npos) return;
        bytes.remove_prefix(end + 1);
        TakeLine(arrival);
        m_line.clear();
        m_overlong = false;
        m_isCut = false;
    }
}

void PoseTable::TakeLine(Instant arrival)
{
    if (!m_line.empty() && m_line.back() == '\r') m_line.pop_back();
    if (m_line.empty() && !m_overlong) return;
    Split();
    const bool header =
        std::find(m_fields.begin(), m_fields.end(), kNumbers[0].name) != m_fields.end();
    const bool good = !m_overlong && (header ? TakeHeader() : !m_isCut && TakeRow(arrival));
    ++(good ? m_counters.lines : m_counters.bad);
}

// The fields of m_line; more than kMostFields are left out.
void PoseTable::Split()
{
    m_fields.clear();
    std::string_view rest = m_line;
    while (!rest.empty() && m_fields.size() < kMostFields)
        m_fields.push_back(Trimmed(Cut(rest, ',')));
}

// Without its needed columns a header changes nothing.
bool PoseTable::TakeHeader()
{
    const auto placeOf = [&](std::string_view name) {
        const auto found = std::find(m_fields.begin(), m_fields.end(), name);
        return found == m_fields.end() ? kNowhere
                                       : static_cast<std::size_t>(found - m_fields.begin());
    };
    std::array<std::size_t, kColumns> places{};
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
        places[i] = placeOf(kNumbers[i].name);
        if (kNumbers[i].needed && places[i] == kNowhere) return false;
    }
    places[kTime] = placeOf("Time");
    places[kSeconds] = placeOf("seconds");
    m_places = places;
    m_oneMagnetometer =
        std::count(places.begin() + kFirstOfB, places.begin() + kLastOfB + 1, kNowhere) > 0;
    return true;
}

bool PoseTable::TakeRow(Instant arrival)
{
    const auto fieldOf = [&](std::size_t column) {
        const std::size_t place = m_places[column];
        return place < m_fields.size() ? m_fields[place] : std::string_view();
    };
    PoseSample sample;
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
        if (m_places[i] == kNowhere) continue;
        const std::optional<double> number = WholeNumber(fieldOf(i));
        if (!number) return false;
        sample.data.*kNumbers[i].member = *number;
    }
    if (m_places[kTime] != kNowhere && !ReadTime(fieldOf(kTime), sample)) return false;
    if (sample.deviceSeconds) sample.deviceSeconds = CountedOn(*sample.deviceSeconds);
    if (m_places[kSeconds] != kNowhere) {
        sample.deviceSeconds = WholeNumber(fieldOf(kSeconds));
        if (!sample.deviceSeconds) return false;
    }
    if (m_oneMagnetometer) MakeMagnetometerB(sample.data);
    sample.arrival = arrival;
    Emit(sample);
    return true;
}

double PoseTable::CountedOn(double secondsOfDay)
{
    constexpr double kDay = 86400.0;
    if (secondsOfDay < m_secondsOfDay - 0.5 * kDay) ++m_days;
    m_secondsOfDay = secondsOfDay;
    return m_days * kDay + secondsOfDay;
}

} // namespace tiltpole::field
