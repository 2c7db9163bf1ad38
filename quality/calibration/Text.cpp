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

} // namespace tiltpole::quality
