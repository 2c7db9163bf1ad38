// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/AntennaRecord.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <array>
#include <string_view>

namespace cli {

namespace {

using simulation::Point3;

constexpr std::string_view kBlanks = " \t\r";

// Takes the first word off the line.
std::string_view TakeWord(std::string_view& line)
{
    const std::size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
    const std::size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

Point3 PositionIn(std::string_view line, const std::string& path, std::uint64_t number)
{
    std::array<double, 3> values{};
    for (double& value : values) {
        const auto parsed = tables::ParseNumber(TakeWord(line));
        if (!parsed)
            throw tables::InputError(path, number, "does not begin with easting, northing, height");
        value = *parsed;
    }
    return {values[1], values[0], values[2]};
}

} // namespace

simulation::RecordedNoise ReadAntennaRecord(const std::string& path)
{
    const std::string content = tables::ReadFile(path);
    std::string_view text = content;
    simulation::RecordedNoise record;
    std::vector<Point3>& errors = record.errors;
    Point3 sum;
    for (std::uint64_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.find_first_not_of(kBlanks) == std::string_view::npos) continue;
        // From the first position on: means of large coordinates would lose digits.
        const Point3 position = PositionIn(line, path, number);
        errors.push_back(position);
        sum = sum + (position - errors.front());
    }
    if (errors.size() < 2) throw tables::InputError(path, "has fewer than two positions");
    const Point3 mean = errors.front() + 1.0 / static_cast<double>(errors.size()) * sum;
    for (Point3& error : errors)
        error = error - mean;
    return record;
}

} // namespace cli
