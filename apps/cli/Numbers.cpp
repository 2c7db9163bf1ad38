#include "apps/cli/Numbers.h"

#include <charconv>
#include <cmath>

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
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);

    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
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
