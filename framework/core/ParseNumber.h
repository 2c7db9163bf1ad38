// SPDX-License-Identifier: MIT
/// @file
/// Parsing of numbers: the longest number at the start of a text, read as in the C locale whatever
/// locale is set.
///
///     const auto length = framework::ParseDouble("2.05 m"); // value 2.05, used 4, inRange
///     if (length.used == 0 || !length.inRange) return 0;
///
/// A wide number of more than 64 characters allocates and may throw std::bad_alloc; nothing else
/// does.
#pragma once

#include "framework/core/Export.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace framework {

/// The number at the start of a text, and how much of the text it is.
template <class Value>
struct ParsedNumber
{
    Value value = 0;      // 0 where the text does not start with a number
    std::size_t used = 0; // characters read, leading white space included; 0: not a number
    bool inRange = true;  // false: `value` is the nearest that the type can represent
};

/// Which spellings are accepted.
enum class NumberForms {
    Decimal,          // "1", "-.5", "+2.e-3"
    DecimalAndSpecial // also "inf", "infinity", "nan", letters of either case
};

/// A floating-point number: white space, sign, digits with a point, exponent. Correctly rounded;
/// out of range it is infinity or, where too small, 0, with the sign of the text.
TILTPOLE_API ParsedNumber<double> ParseDouble(std::wstring_view text,
                                              NumberForms forms = NumberForms::Decimal);
TILTPOLE_API ParsedNumber<double> ParseDouble(std::string_view text,
                                              NumberForms forms = NumberForms::Decimal);

/// A 32-bit decimal integer: white space, sign, digits. Out of range it is the nearest limit.
TILTPOLE_API ParsedNumber<std::int32_t> ParseInteger(std::wstring_view text);
TILTPOLE_API ParsedNumber<std::int32_t> ParseInteger(std::string_view text);

} // namespace framework
