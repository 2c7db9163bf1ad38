// SPDX-License-Identifier: MIT
#include "field/nmea/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace tiltpole::field {

namespace {

constexpr std::size_t kLongestNumber = 24; // characters
constexpr double kMostUnits = 1e15;        // of the last digit, exact in a double
constexpr std::array kPowers = {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

bool AreDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

} // namespace

std::optional<Decimal> ReadDecimal(std::string_view text)
{
    if (text.empty() || text.size() > kLongestNumber) return std::nullopt;
    const std::string_view digits = text.substr(text.front() == '-' ? 1 : 0);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    if (!AreDigits(digits.substr(0, point))) return std::nullopt;

    Decimal number;
    if (point < digits.size()) {
        const std::string_view behind = digits.substr(point + 1);
        if (!AreDigits(behind)) return std::nullopt;
        number.decimals = static_cast<int>(behind.size());
    }
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number.value,
                                      std::chars_format::fixed);
    if (read.ec != std::errc()) return std::nullopt; // there was no memory
    return number;
}

std::optional<Decimal> ReadDecimal(std::string_view text, double least, double most)
{
    const std::optional<Decimal> number = ReadDecimal(text);
    if (!number || number->value < least || number->value > most) return std::nullopt;
    return number;
}

std::optional<int> ReadDigits(std::string_view text, std::size_t fewest, std::size_t longest)
{
    if (text.size() < fewest || text.size() > longest || !AreDigits(text)) return std::nullopt;
    int value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc()) return std::nullopt;
    return value;
}

void AppendFixed(std::string& text, double value, int decimals)
{
    const double units =
        std::round(std::fabs(value) * kPowers.at(static_cast<std::size_t>(decimals)));
    if (!(units < kMostUnits)) return;
    std::array<char, 20> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(),
                                       static_cast<std::int64_t>(units));
    std::string digits(buffer.data(), written.ptr);
    const auto places = static_cast<std::size_t>(decimals);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    if (places > 0) digits.insert(digits.size() - places, 1, '.');
    if (units > 0.0 && value < 0.0) text += '-';
    text += digits;
}

} // namespace tiltpole::field
