// SPDX-License-Identifier: MIT
//
// Numbers at the start of a text: the longest part that is one, read as in the C locale whatever
// locale is set.
#pragma once

#include "framework/core/Export.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace framework {

template <class Value>
struct ParsedNumber
{
    Value value = 0;      // 0 where no number stands at the start
    std::size_t used = 0; // characters read, leading white space included; 0: no number
    bool inRange = true;  // false: `value` is the nearest that the type can hold
};

/// Which spellings count as numbers beside decimal ones.
enum class NumberForms {
    Decimal,          // "1", "-.5", "+2.e-3"
    DecimalAndSpecial // also "inf", "infinity", "nan", letters of either case
};

/// A floating point number: white space, sign, digits with a point, exponent. Correctly rounded.
/// Out of range: infinity above, 0 below, signed.
TILTPOLE_API ParsedNumber<double> ParseDouble(std::wstring_view text,
                                              NumberForms forms = NumberForms::Decimal);
TILTPOLE_API ParsedNumber<double> ParseDouble(std::string_view text,
                                              NumberForms forms = NumberForms::Decimal);

/// A decimal integer of 32 bits: white space, sign, digits. Out of range: the nearest limit.
TILTPOLE_API ParsedNumber<std::int32_t> ParseInteger(std::wstring_view text);
TILTPOLE_API ParsedNumber<std::int32_t> ParseInteger(std::string_view text);

} // namespace framework
