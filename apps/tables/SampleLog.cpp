// SPDX-License-Identifier: MIT
#include "apps/tables/SampleLog.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tables {

namespace {

struct PoseField
{
    const char* name;
    double PoseSensorData::*field;
    bool needed;
};

constexpr PoseField kPoseFields[] = {
    {"dPitch",   &PoseSensorData::dPitch,   true },
    {"dRoll",    &PoseSensorData::dRoll,    true },
    {"dRot",     &PoseSensorData::dRot,     false},
    {"dGyro_x",  &PoseSensorData::dGyro_x,  false},
    {"dGyro_y",  &PoseSensorData::dGyro_y,  false},
    {"dGyro_z",  &PoseSensorData::dGyro_z,  false},
    {"dAcc_x",   &PoseSensorData::dAcc_x,   false},
    {"dAcc_y",   &PoseSensorData::dAcc_y,   false},
    {"dAcc_z",   &PoseSensorData::dAcc_z,   false},
    {"dMag_x",   &PoseSensorData::dMag_x,   true },
    {"dMag_y",   &PoseSensorData::dMag_y,   true },
    {"dMag_z",   &PoseSensorData::dMag_z,   true },
    {"dMag_x_2", &PoseSensorData::dMag_x_2, true },
    {"dMag_y_2", &PoseSensorData::dMag_y_2, true },
    {"dMag_z_2", &PoseSensorData::dMag_z_2, true },
    {"dYaw",     &PoseSensorData::dYaw,     false},
    {"dYaw_2",   &PoseSensorData::dYaw_2,   false},
    {"dYaw_Y",   &PoseSensorData::dYaw_Y,   false},
    {"dDeltaXY", &PoseSensorData::dDeltaXY, false},
};

struct AntennaField
{
    const char* name;
    double xyhCoordinate::*field;
};

constexpr AntennaField kAntennaFields[] = {
    {"x", &xyhCoordinate::x},
    {"y", &xyhCoordinate::y},
    {"h", &xyhCoordinate::h},
};

// Removes two digits from the start of the text; nullopt where their value is above `most`.
std::optional<int> TakeTwoDigits(std::string_view& text, int most)
{
    int value = 0;
    if (text.size() < 2 || text[0] < '0' || text[1] < '0') return std::nullopt;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + 2, value);
    if (error != std::errc{} || stop != text.data() + 2 || value > most) return std::nullopt;
    text.remove_prefix(2);
    return value;
}

bool TakeColon(std::string_view& text)
{
    if (text.empty() || text[0] != ':') return false;
    text.remove_prefix(1);
    return true;
}

// Allowed after the seconds: nothing, or a point and digits.
bool IsFraction(std::string_view text)
{
    if (text.empty()) return true;
    return text[0] == '.' && text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

} // namespace

SampleLog::SampleLog(const std::string& path, Options options)
    : m_rows(path, options.mostBytes), m_onBadRow(std::move(options.onBadRow))
{
    FindColumns(options.antenna);
}

void SampleLog::FindColumns(bool antenna)
{
    std::vector<std::string> missing;
    const auto find = [&](const char* name, double* target, bool needed) {
        if (const auto position = m_rows.Find(name)) {
            m_columns.push_back({*position, target, !needed});
        } else if (needed) {
            missing.emplace_back(name);
        }
    };
    for (const PoseField& field : kPoseFields)
        find(field.name, &(m_pose.*field.field), field.needed);
    if (antenna) {
        for (const AntennaField& field : kAntennaFields) {
            find(field.name, &(m_antenna.*field.field), true);
        }
    }
    if (!missing.empty()) {
        throw m_rows.HeaderError(
            fmt::format("missing in the header: {}", fmt::join(missing, ", ")));
    }
    m_time = m_rows.Find("Time");
    for (std::size_t i = 0; i < m_rows.Columns().size(); ++i) {
        const bool taken = std::any_of(m_columns.begin(), m_columns.end(),
                                       [i](const Column& column) { return column.position == i; });
        if (!taken) m_carried.push_back(i);
    }
}

bool SampleLog::Next()
{
    for (;;) {
        try {
            if (!m_rows.Next()) return false;
            ReadRow();
            return true;
        } catch (const InputError& error) {
            if (!m_onBadRow || m_rows.Failed()) throw;
            m_onBadRow(error.what());
        }
    }
}

void SampleLog::Reject(const std::string& reason) const
{
    if (!m_onBadRow) throw m_rows.Error(reason);
    m_onBadRow(m_rows.Error(reason).what());
}

void SampleLog::ReadRow()
{
    for (const auto& [position, target, mayBeBlank] : m_columns) {
        const bool blank = mayBeBlank && m_rows.Field(position).empty();
        *target = blank ? 0.0 : m_rows.Number(position);
    }
    if (m_time) ReadTime(m_rows.Field(*m_time));
}

void SampleLog::ReadTime(std::string_view text)
{
    std::string_view rest = text;
    const auto hour = TakeTwoDigits(rest, 23);
    const auto minute = hour && TakeColon(rest) ? TakeTwoDigits(rest, 59) : std::nullopt;
    const auto second = minute && TakeColon(rest) ? TakeTwoDigits(rest, 60) : std::nullopt;
    if (!second || !IsFraction(rest)) {
        throw m_rows.Error(fmt::format("Time is '{:.40}', not hh:mm:ss", text));
    }
    m_pose.nHour = *hour;
    m_pose.nMinute = *minute;
    m_pose.nSecond = *second;
}

} // namespace tables
