// SPDX-License-Identifier: MIT
#include "framework/core/ParseNumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace framework {

namespace {

template <class Character>
bool IsDigit(Character c)
{
    return c >= Character('0') && c <= Character('9');
}

// Reads a text character by character; past its end it reads 0.
template <class Character>
class Cursor
{
public:
    explicit Cursor(std::basic_string_view<Character> text) : m_text(text) {}

    Character Peek(std::size_t ahead = 0) const
    {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : Character(0);
    }
    std::size_t At() const { return m_at; }
    void Skip(std::size_t count = 1) { m_at += count; }

    void SkipWhiteSpace()
    {
        while (Peek() == Character(' ') || (Peek() >= Character('\t') && Peek() <= Character('\r')))
            Skip();
    }
    bool SkipMinus()
    {
        const bool minus = Peek() == Character('-');
        if (minus || Peek() == Character('+')) Skip();
        return minus;
    }
    std::size_t SkipDigits()
    {
        const std::size_t first = m_at;
        while (IsDigit(Peek()))
            Skip();
        return m_at - first;
    }
    // `word` is in lower case.
    bool SkipWord(std::string_view word)
    {
        for (std::size_t i = 0; i < word.size(); ++i)
            if ((Peek(i) | 0x20) != static_cast<Character>(word[i])) return false;
        Skip(word.size());
        return true;
    }

private:
    std::basic_string_view<Character> m_text;
    std::size_t m_at = 0;
};

template <class Character>
void SkipExponent(Cursor<Character>& cursor)
{
    if ((cursor.Peek() | 0x20) != Character('e')) return;
    const bool isSigned = cursor.Peek(1) == Character('-') || cursor.Peek(1) == Character('+');
    if (!IsDigit(cursor.Peek(isSigned ? 2 : 1))) return;
    cursor.Skip(isSigned ? 2 : 1);
    cursor.SkipDigits();
}

// Whether a nonzero decimal number that is out of range of double is too large (not too small).
bool IsLarge(std::string_view number)
{
    const std::size_t e = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, e);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_of("123456789");
    const auto magnitude = static_cast<long long>(point) - static_cast<long long>(first);
    if (e == number.size()) return magnitude > 0;

    const bool minus = number[e + 1] == '-';
    const std::size_t digits = e + 1 + (minus || number[e + 1] == '+' ? 1 : 0);
    long long exponent = 0;
    const auto result =
        std::from_chars(number.data() + digits, number.data() + number.size(), exponent);
    if (result.ec == std::errc::result_out_of_range) return !minus;
    return minus ? magnitude > exponent : magnitude > -exponent;
}

ParsedNumber<double> Convert(std::string_view number, std::size_t used, bool minus)
{
    double value = 0.0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    const bool inRange = result.ec == std::errc() && std::isfinite(value);
    if (!inRange) value = IsLarge(number) ? std::numeric_limits<double>::infinity() : 0.0;
    return {minus ? -value : value, used, inRange};
}

// `characters` are ASCII.
template <class Character>
ParsedNumber<double> ConvertAscii(std::basic_string_view<Character> characters, std::size_t used,
                                  bool minus)
{
    if constexpr (sizeof(Character) == 1) {
        return Convert(characters, used, minus);
    } else {
        std::array<char, 64> shortNumber;
        if (characters.size() <= shortNumber.size()) {
            std::transform(characters.begin(), characters.end(), shortNumber.begin(),
                           [](Character c) { return static_cast<char>(c); });
            return Convert({shortNumber.data(), characters.size()}, used, minus);
        }
        std::string number(characters.size(), '\0');
        std::transform(characters.begin(), characters.end(), number.begin(),
                       [](Character c) { return static_cast<char>(c); });
        return Convert(number, used, minus);
    }
}

template <class Character>
ParsedNumber<double> Double(std::basic_string_view<Character> text, NumberForms forms)
{
    Cursor<Character> cursor(text);
    cursor.SkipWhiteSpace();
    const bool minus = cursor.SkipMinus();
    if (forms == NumberForms::DecimalAndSpecial) {
        double special = 0.0;
        if (cursor.SkipWord("inf")) {
            cursor.SkipWord("inity");
            special = std::numeric_limits<double>::infinity();
        } else if (cursor.SkipWord("nan")) {
            special = std::numeric_limits<double>::quiet_NaN();
        }
        if (special != 0.0) return {minus ? -special : special, cursor.At(), true};
    }
    const std::size_t first = cursor.At();
    std::size_t digits = cursor.SkipDigits();
    if (cursor.Peek() == Character('.') && (digits > 0 || IsDigit(cursor.Peek(1)))) {
        cursor.Skip();
        digits += cursor.SkipDigits();
    }
    if (digits == 0) return {};
    SkipExponent(cursor);
    return ConvertAscii(text.substr(first, cursor.At() - first), cursor.At(), minus);
}

template <class Character>
ParsedNumber<std::int32_t> Integer(std::basic_string_view<Character> text)
{
    constexpr std::int64_t kLow = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHigh = std::numeric_limits<std::int32_t>::max();
    Cursor<Character> cursor(text);
    cursor.SkipWhiteSpace();
    const bool minus = cursor.SkipMinus();
    if (!IsDigit(cursor.Peek())) return {};

    std::int64_t magnitude = 0;
    for (; IsDigit(cursor.Peek()); cursor.Skip())
        magnitude = std::min(10 * magnitude + static_cast<int>(cursor.Peek() - Character('0')),
                             kHigh + 2); // past both limits, and no overflow
    const std::int64_t value = minus ? -magnitude : magnitude;
    const std::int64_t held = std::clamp(value, kLow, kHigh);
    return {static_cast<std::int32_t>(held), cursor.At(), held == value};
}

} // namespace

ParsedNumber<double> ParseDouble(std::wstring_view text, NumberForms forms)
{
    return Double(text, forms);
}

ParsedNumber<double> ParseDouble(std::string_view text, NumberForms forms)
{
    return Double(text, forms);
}

ParsedNumber<std::int32_t> ParseInteger(std::wstring_view text)
{
    return Integer(text);
}

ParsedNumber<std::int32_t> ParseInteger(std::string_view text)
{
    return Integer(text);
}

} // namespace framework
