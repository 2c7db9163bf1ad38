// SPDX-License-Identifier: MIT
#include "quality/calibration/Text.h"

#include <charconv>
#include <cmath>
#include <cstddef>

namespace tiltpole::quality {

std::string Fixed(double number, int decimals, int width)
{
    std::string text = "-";
    if (std::isfinite(number)) {
        char digits[400]; // a double has at most 309 digits before the point
        const auto end = std::to_chars(digits, digits + sizeof digits, number,
                                       std::chars_format::fixed, decimals);
        text.assign(digits, end.ptr);
        if (text.find_first_not_of("-0.") == std::string::npos && text[0] == '-') text.erase(0, 1);
    }
    const auto places = static_cast<std::size_t>(width);
    if (text.size() < places) text.insert(0, places - text.size(), ' ');
    return text;
}

std::string Shortest(double number)
{
    char digits[40];
    const double size = std::fabs(number);
    const bool isPlain = size == 0.0 || (size >= 1e-4 && size < 1e16);
    const auto form = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(digits, digits + sizeof digits, number, form);
    return {digits, end.ptr};
}

} // namespace tiltpole::quality
