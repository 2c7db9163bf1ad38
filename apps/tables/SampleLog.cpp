// SPDX-License-Identifier: MIT
#include "apps/tables/SampleLog.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace tables {

namespace {

struct PoseField
{
    Quantity quantity;
    double PoseSensorData::*field;
    bool needed;
};

constexpr PoseField kPoseFields[] = {
    {{"dPitch", ColumnUnit::Degrees, "dpitch pitch", ""},              &PoseSensorData::dPitch,   true },
    {{"dRoll", ColumnUnit::Degrees, "droll roll", ""},                 &PoseSensorData::dRoll,    true },
    {{"dRot", ColumnUnit::Degrees, "drot", ""},                        &PoseSensorData::dRot,     false},
    {{"dGyro_x", ColumnUnit::DegreesPerSecond, "dgyro_x gyro_x", ""},
     &PoseSensorData::dGyro_x,
     false                                                                                             },
    {{"dGyro_y", ColumnUnit::DegreesPerSecond, "dgyro_y gyro_y", ""},
     &PoseSensorData::dGyro_y,
     false                                                                                             },
    {{"dGyro_z", ColumnUnit::DegreesPerSecond, "dgyro_z gyro_z", ""},
     &PoseSensorData::dGyro_z,
     false                                                                                             },
    {{"dAcc_x", ColumnUnit::Gravities, "dacc_x acc_x", ""},            &PoseSensorData::dAcc_x,   false},
    {{"dAcc_y", ColumnUnit::Gravities, "dacc_y acc_y", ""},            &PoseSensorData::dAcc_y,   false},
    {{"dAcc_z", ColumnUnit::Gravities, "dacc_z acc_z", ""},            &PoseSensorData::dAcc_z,   false},
    {{"dMag_x", ColumnUnit::Counts, "dmag_x mag_x mag_a_x", ""},       &PoseSensorData::dMag_x,   true },
    {{"dMag_y", ColumnUnit::Counts, "dmag_y mag_y mag_a_y", ""},       &PoseSensorData::dMag_y,   true },
    {{"dMag_z", ColumnUnit::Counts, "dmag_z mag_z mag_a_z", ""},       &PoseSensorData::dMag_z,   true },
    {{"dMag_x_2", ColumnUnit::Counts, "dmag_x_2 mag_x_2 mag_b_x", ""},
     &PoseSensorData::dMag_x_2,
     true                                                                                              },
    {{"dMag_y_2", ColumnUnit::Counts, "dmag_y_2 mag_y_2 mag_b_y", ""},
     &PoseSensorData::dMag_y_2,
     true                                                                                              },
    {{"dMag_z_2", ColumnUnit::Counts, "dmag_z_2 mag_z_2 mag_b_z", ""},
     &PoseSensorData::dMag_z_2,
     true                                                                                              },
    {{"dYaw", ColumnUnit::Degrees, "dyaw", ""},                        &PoseSensorData::dYaw,     false},
    {{"dYaw_2", ColumnUnit::Degrees, "dyaw_2", ""},                    &PoseSensorData::dYaw_2,   false},
    {{"dYaw_Y", ColumnUnit::Degrees, "dyaw_y", ""},                    &PoseSensorData::dYaw_Y,   false},
    {{"dDeltaXY", ColumnUnit::None, "ddeltaxy", ""},                   &PoseSensorData::dDeltaXY, false},
};

constexpr Quantity kTime{"Time", ColumnUnit::None, "time", ""};

bool IsNeeded(const PoseField& field, const SampleLog::Options& options)
{
    const ColumnUnit unit = field.quantity.unit;
    if (unit == ColumnUnit::DegreesPerSecond || unit == ColumnUnit::Gravities)
        return options.inertial;
    return field.needed && (options.magnetometers || unit != ColumnUnit::Counts);
}

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

std::vector<std::string> SampleLog::ColumnKeys()
{
    std::vector<std::string> keys;
    for (const PoseField& field : kPoseFields)
        keys.emplace_back(field.quantity.key);
    keys.emplace_back(kTime.key);
    return keys;
}

SampleLog::SampleLog(const std::string& path, Options options)
    : m_rows(path, options.mostBytes), m_onBadRow(std::move(options.onBadRow))
{
    FindColumns(options);
}

void SampleLog::FindColumns(const Options& options)
{
    std::vector<std::string> missing;
    for (const PoseField& field : kPoseFields) {
        const bool needed = IsNeeded(field, options);
        if (const auto position = FindColumn(m_rows, field.quantity, options.columns)) {
            m_columns.push_back({field.quantity.key, *position, &(m_pose.*field.field), !needed,
                                 RangeOf(field.quantity.unit)});
        } else if (needed) {
            missing.emplace_back(field.quantity.key);
        }
    }
    if (options.antenna) {
        m_point = FindPointColumns(m_rows, options.columns, missing);
        if (m_point) {
            const bool blank = options.blankAntenna;
            m_columns.push_back({"N", m_point->north, &m_antenna.x, blank, kCoordinate});
            m_columns.push_back({"E", m_point->east, &m_antenna.y, blank, kCoordinate});
            m_columns.push_back({"h", m_point->height, &m_antenna.h, blank, kHeight});
        }
    }
    if (!missing.empty()) throw m_rows.MissingColumns(missing);
    m_time = FindColumn(m_rows, kTime, options.columns);
    for (std::size_t i = 0; i < m_rows.Columns().size(); ++i) {
        const bool taken = std::any_of(m_columns.begin(), m_columns.end(),
                                       [i](const Column& column) { return column.position == i; });
        if (!taken) m_carried.push_back(i);
    }
}

std::vector<std::pair<std::string, std::size_t>> SampleLog::UsedColumns() const
{
    std::vector<std::pair<std::string, std::size_t>> used;
    for (const Column& column : m_columns)
        used.emplace_back(column.key, column.position);
    return used;
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
    for (const auto& [key, position, target, mayBeBlank, range] : m_columns) {
        const bool blank = mayBeBlank && m_rows.Field(position).empty();
        *target = blank ? 0.0 : NumberIn(m_rows, position, range);
    }
    m_hasAntenna = m_point && AntennaIsGiven();
    if (m_time) ReadTime(m_rows.Field(*m_time));
}

// A position is whole or blank.
bool SampleLog::AntennaIsGiven() const
{
    const bool blank = m_rows.Field(m_point->north).empty();
    for (const std::size_t column : {m_point->east, m_point->height}) {
        if (m_rows.Field(column).empty() != blank)
            throw m_rows.Error("the antenna's N, E, h are blank in part: give all three or none");
    }
    return !blank;
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
