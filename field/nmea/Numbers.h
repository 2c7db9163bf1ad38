// SPDX-License-Identifier: MIT
//
// Numbers of sentences, read strictly and written alike whatever locale is set.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

/// A number and the digits after its point.
struct Decimal
{
    double value = 0.0;
    int decimals = 0;
};

/// A minus or none, one digit or more, perhaps a point and digits behind it; nothing before, after
/// or between. "1.", ".5", "+1", "1e3" and "nan" are none.
/// @return none, too, for more than 24 characters
std::optional<Decimal> ReadDecimal(std::string_view text);

/// A decimal within [least, most].
std::optional<Decimal> ReadDecimal(std::string_view text, double least, double most);

/// Digits alone, `fewest` to `longest` of them, of a number that an int holds.
std::optional<int> ReadDigits(std::string_view text, std::size_t fewest, std::size_t longest);

/// `value` with this number of decimals (0 to 9), halves away from zero: "-0.0312", never
/// "-0.0000". Nothing is appended where it is not finite or its digits are more than 15.
void AppendFixed(std::string& text, double value, int decimals);

} // namespace tiltpole::field
