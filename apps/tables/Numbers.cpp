// SPDX-License-Identifier: MIT
#include "apps/tables/Numbers.h"

#include "framework/core/ParseNumber.h"
#include <algorithm>

namespace tables {

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

} // namespace tables
