// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <charconv>
#include <string>

namespace tiltpole::field {

/// `value` with this many decimals and a point, whatever the locale; of a value beyond 1e30 or with
/// more than 30 decimals nothing.
inline std::string FixedText(double value, int decimals)
{
    std::array<char, 64> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                            std::chars_format::fixed, decimals);
    return error == std::errc{} ? std::string(text.data(), end) : std::string();
}

} // namespace tiltpole::field
