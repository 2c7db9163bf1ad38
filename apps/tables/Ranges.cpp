// SPDX-License-Identifier: MIT
#include "apps/tables/Ranges.h"

#include <fmt/format.h>

namespace tables {

Range RangeOf(ColumnUnit unit)
{
    if (unit == ColumnUnit::Degrees) return kAngle;
    return unit == ColumnUnit::Counts ? kReading : kSensorValue;
}

std::string OutsideOf(const Range& range, double value)
{
    if (value >= range.low && value <= range.high) return {};
    return fmt::format("is {}, not between {} and {}{}{}", value, range.low, range.high,
                       range.unit.empty() ? "" : " ", range.unit);
}

double NumberIn(const CsvReader& rows, std::size_t column, const Range& range)
{
    const double value = rows.Number(column);
    const std::string problem = OutsideOf(range, value);
    if (!problem.empty()) throw rows.Error(rows.Columns()[column] + ' ' + problem);
    return value;
}

} // namespace tables
