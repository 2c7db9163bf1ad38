// SPDX-License-Identifier: MIT
#include "apps/cli/OptionChecks.h"

#include "apps/charts/Picture.h"
#include "apps/tables/Numbers.h"
#include <charconv>
#include <fmt/format.h>
#include <system_error>

namespace cli {

CLI::Validator NumberIn(const tables::Range& range)
{
    return {[range](std::string& text) {
                const auto value = tables::ParseNumber(text);
                return value ? tables::OutsideOf(range, *value)
                             : "'" + text + "' is not a finite number";
            },
            "", "number in a range"};
}

CLI::Validator IntegerIn(std::uint64_t low, std::uint64_t high)
{
    return {[low, high](std::string& text) {
                std::uint64_t value = 0;
                const char* const end = text.data() + text.size();
                const auto [stop, error] = std::from_chars(text.data(), end, value);
                const bool fits =
                    error == std::errc() && stop == end && low <= value && value <= high;
                return fits ? std::string{}
                            : fmt::format("'{}' is not an integer from {} to {}", text, low, high);
            },
            "", "integer in a range"};
}

CLI::Validator PointInSpace()
{
    return {[](std::string& text) {
                const auto values = tables::ParseNumbers(text, 3);
                if (!values) {
                    return fmt::format("'{}' is not 3 numbers with commas between them", text);
                }
                for (std::size_t k = 0; k < values->size(); ++k) {
                    const auto& range = k < 2 ? tables::kCoordinate : tables::kHeight;
                    const std::string problem = tables::OutsideOf(range, (*values)[k]);
                    if (!problem.empty()) return fmt::format("{} {}", "NEh"[k], problem);
                }
                return std::string{};
            },
            "", "point"};
}

CLI::Validator PictureName()
{
    return {[](std::string& path) {
                return charts::IsPictureName(path) ? std::string{}
                                                   : "'" + path + "' does not end in .png or .svg";
            },
            "", "picture name"};
}

} // namespace cli
