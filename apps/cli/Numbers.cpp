// SPDX-License-Identifier: MIT
#include "apps/cli/Numbers.h"

#include "framework/core/ParseNumber.h"
#include <algorithm>
#include <fmt/format.h>

namespace cli {

std::string_view Trim(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<double> ParseNumber(std::string_view text)
{
    text = Trim(text);
    const auto [value, used, inRange] = framework::ParseDouble(text);
    if (used == 0 || used != text.size() || !inRange) return std::nullopt;
    return value;
}

std::optional<std::vector<double>> ParseNumbers(std::string_view text, std::size_t count)
{
    std::vector<double> values;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const auto value = ParseNumber(text.substr(at, end - at));
        if (!value) return std::nullopt;
        values.push_back(*value);
        at = end + 1;
    }
    if (values.size() != count) return std::nullopt;
    return values;
}

CLI::Validator FiniteNumber()
{
    return {[](std::string& text) {
                return ParseNumber(text) ? std::string{} : "'" + text + "' is not a finite number";
            },
            "", "finite number"};
}

CLI::Validator PositiveNumber()
{
    return {[](std::string& text) {
                const auto value = ParseNumber(text);
                return value && *value > 0.0 ? std::string{}
                                             : "'" + text + "' is not a number above zero";
            },
            "", "positive number"};
}

CLI::Validator NumberList(std::size_t count)
{
    return {[count](std::string& text) {
                return ParseNumbers(text, count) ? std::string{}
                                                 : fmt::format("'{}' is not {} numbers with commas "
                                                               "between them",
                                                               text, count);
            },
            "", "numbers"};
}

} // namespace cli
