#include "apps/cli/Numbers.h"

#include "framework/core/ParseNumber.h"

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

} // namespace cli
