// SPDX-License-Identifier: MIT
#include "framework/core/Format.h"

#include "framework/core/String.h"
#include "framework/core/TextConversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <limits>

namespace framework {

namespace {

constexpr int kLongestField = 1 << 20;
// Room for the digits of the largest double before the point, sign, point and exponent.
constexpr std::size_t kRealOverhead = 330;
constexpr std::size_t kNoLimit = std::wstring_view::npos;

struct Conversion
{
    bool left = false, plus = false, blank = false, zero = false, alternate = false;
    int width = 0;
    int precision = -1; // none given
    int shorts = 0;     // number of h
    wchar_t type = 0;
};

class Arguments
{
public:
    Arguments(const FormatArgument* first, std::size_t count) : m_next(first), m_left(count) {}

    const FormatArgument& Next()
    {
        static constexpr FormatArgument nothing;
        if (m_left == 0) return nothing;
        --m_left;
        return *m_next++;
    }

private:
    const FormatArgument* m_next;
    std::size_t m_left;
};

int Limited(std::int64_t value)
{
    return static_cast<int>(std::clamp<std::int64_t>(value, -kLongestField, kLongestField));
}

// A number at `at`, or the next argument for '*'; moves `at` past it.
int ReadCount(const wchar_t*& at, Arguments& arguments)
{
    if (*at == L'*') {
        ++at;
        return Limited(arguments.Next().AsSigned());
    }
    int count = 0;
    for (; *at >= L'0' && *at <= L'9'; ++at)
        count = std::min(kLongestField, count * 10 + static_cast<int>(*at - L'0'));
    return count;
}

void ReadFlags(const wchar_t*& at, Conversion& conversion)
{
    for (;; ++at) {
        switch (*at) {
        case L'-':
            conversion.left = true;
            break;
        case L'+':
            conversion.plus = true;
            break;
        case L' ':
            conversion.blank = true;
            break;
        case L'0':
            conversion.zero = true;
            break;
        case L'#':
            conversion.alternate = true;
            break;
        default:
            return;
        }
    }
}

void ReadSize(const wchar_t*& at, Conversion& conversion)
{
    for (; *at != 0 && std::wcschr(L"hlLjztwqI", *at) != nullptr; ++at) {
        if (*at == L'h') ++conversion.shorts;
        if (*at == L'I' && ((at[1] == L'6' && at[2] == L'4') || (at[1] == L'3' && at[2] == L'2')))
            at += 2;
    }
}

// Reads a conversion from the character after its percent sign; moves `at` past its type.
Conversion ReadConversion(const wchar_t*& at, Arguments& arguments)
{
    Conversion conversion;
    ReadFlags(at, conversion);
    conversion.width = ReadCount(at, arguments);
    if (conversion.width < 0) {
        conversion.left = true;
        conversion.width = -conversion.width;
    }
    if (*at == L'.') {
        ++at;
        conversion.precision = std::max(-1, ReadCount(at, arguments));
    }
    ReadSize(at, conversion);
    conversion.type = *at;
    if (*at != 0) ++at;
    return conversion;
}

void Pad(std::wstring& out, std::size_t count, wchar_t filler)
{
    out.append(count, filler);
}

std::size_t Missing(const Conversion& conversion, std::size_t length)
{
    const auto width = static_cast<std::size_t>(conversion.width);
    return width > length ? width - length : 0;
}

void AppendText(std::wstring& out, const Conversion& conversion, std::wstring_view text)
{
    const std::size_t missing = Missing(conversion, text.size());
    if (!conversion.left) Pad(out, missing, L' ');
    out.append(text);
    if (conversion.left) Pad(out, missing, L' ');
}

// A number in its field: prefix (sign or base), leading zeros of precision or flag, digits.
void AppendNumber(std::wstring& out, const Conversion& conversion, std::string_view prefix,
                  std::size_t zeros, std::string_view digits, bool fillWithZeros)
{
    const std::size_t missing = Missing(conversion, prefix.size() + zeros + digits.size());
    const bool padLeft = !conversion.left && !fillWithZeros;
    if (padLeft) Pad(out, missing, L' ');
    out.append(prefix.begin(), prefix.end());
    Pad(out, zeros + (!conversion.left && fillWithZeros ? missing : 0), L'0');
    out.append(digits.begin(), digits.end());
    if (conversion.left) Pad(out, missing, L' ');
}

std::string_view SignOf(const Conversion& conversion, bool negative)
{
    if (negative) return "-";
    if (conversion.plus) return "+";
    return conversion.blank ? " " : "";
}

// Of a number: there is nothing behind its letters.
void ToUpper(char* first, char* last)
{
    for (; first != last; ++first)
        if (*first >= 'a') *first = static_cast<char>(*first - 'a' + 'A');
}

void AppendDigits(std::wstring& out, const Conversion& conversion, std::string_view prefix,
                  std::uint64_t magnitude, int base)
{
    std::array<char, 64> buffer;
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude, base).ptr;
    if (conversion.type == L'X') ToUpper(buffer.data(), end);
    auto length = static_cast<std::size_t>(end - buffer.data());
    if (conversion.precision == 0 && magnitude == 0) length = 0;

    const auto wanted = static_cast<std::size_t>(std::max(0, conversion.precision));
    std::size_t zeros = wanted > length ? wanted - length : 0;
    if (base == 8 && conversion.alternate && zeros == 0 && (length == 0 || buffer[0] != '0'))
        zeros = 1;
    AppendNumber(out, conversion, prefix, zeros, {buffer.data(), length},
                 conversion.zero && conversion.precision < 0);
}

// The low bits that remain under the size h or hh, as an unsigned or signed integer.
std::uint64_t LowBits(const Conversion& conversion, std::uint64_t value)
{
    if (conversion.shorts == 0) return value;
    return value & (conversion.shorts == 1 ? 0xFFFF : 0xFF);
}

std::int64_t LowBits(const Conversion& conversion, std::int64_t value)
{
    if (conversion.shorts == 0) return value;
    const int unused = conversion.shorts == 1 ? 48 : 56;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << unused) >> unused;
}

void AppendSigned(std::wstring& out, const Conversion& conversion, const FormatArgument& argument)
{
    const std::int64_t value = LowBits(conversion, argument.AsSigned());
    const auto bits = static_cast<std::uint64_t>(value);
    AppendDigits(out, conversion, SignOf(conversion, value < 0), value < 0 ? 0 - bits : bits, 10);
}

void AppendUnsigned(std::wstring& out, const Conversion& conversion, const FormatArgument& argument)
{
    const std::uint64_t value = LowBits(conversion, argument.AsUnsigned());
    switch (conversion.type) {
    case L'o':
        return AppendDigits(out, conversion, "", value, 8);
    case L'x':
        return AppendDigits(out, conversion, conversion.alternate && value != 0 ? "0x" : "", value,
                            16);
    case L'X':
        return AppendDigits(out, conversion, conversion.alternate && value != 0 ? "0X" : "", value,
                            16);
    default:
        return AppendDigits(out, conversion, "", value, 10);
    }
}

// '#' keeps the point and, for %g, the trailing zeros that std::to_chars omits.
std::string WithPoint(std::string_view digits, bool general, int precision)
{
    const std::size_t exponentAt = std::min(digits.find('e'), digits.size());
    std::string mantissa(digits.substr(0, exponentAt));
    if (mantissa.find('.') == std::string::npos) mantissa += '.';
    if (general) {
        const std::size_t firstDigit = mantissa.find_first_of("123456789");
        const bool isZero = firstDigit == std::string::npos;
        std::size_t significant = 0;
        for (std::size_t i = isZero ? 0 : firstDigit; i < mantissa.size(); ++i)
            if (mantissa[i] != '.') ++significant;
        const auto wanted = static_cast<std::size_t>(std::max(1, precision));
        if (wanted > significant) mantissa.append(wanted - significant, '0');
    }
    return mantissa.append(digits.substr(exponentAt));
}

void AppendFinite(std::wstring& out, const Conversion& conversion, double magnitude,
                  std::string_view sign)
{
    const wchar_t lower = conversion.type | 0x20;
    const std::chars_format form = lower == L'f'   ? std::chars_format::fixed
                                   : lower == L'e' ? std::chars_format::scientific
                                                   : std::chars_format::general;
    const int precision = conversion.precision < 0 ? 6 : conversion.precision;
    std::array<char, 512> small;
    std::string large;
    char* first = small.data();
    std::size_t capacity = small.size();
    if (static_cast<std::size_t>(precision) + kRealOverhead > capacity) {
        large.resize(static_cast<std::size_t>(precision) + kRealOverhead);
        first = large.data();
        capacity = large.size();
    }
    char* last = std::to_chars(first, first + capacity, magnitude, form, precision).ptr;
    std::string_view digits(first, static_cast<std::size_t>(last - first));
    std::string withPoint;
    if (conversion.alternate) {
        withPoint = WithPoint(digits, lower == L'g', precision);
        first = withPoint.data();
        last = first + withPoint.size();
        digits = withPoint;
    }
    if (conversion.type != lower) ToUpper(first, last);
    AppendNumber(out, conversion, sign, 0, digits, conversion.zero);
}

void AppendReal(std::wstring& out, const Conversion& conversion, const FormatArgument& argument)
{
    const double value = argument.AsReal();
    const std::string_view sign = SignOf(conversion, std::signbit(value));
    if (std::isfinite(value)) return AppendFinite(out, conversion, std::fabs(value), sign);

    const bool upper = conversion.type <= L'Z';
    const std::string_view lowerName = std::isnan(value) ? "nan" : "inf";
    const std::string_view upperName = std::isnan(value) ? "NAN" : "INF";
    AppendNumber(out, conversion, sign, 0, upper ? upperName : lowerName, false);
}

void AppendAddress(std::wstring& out, const Conversion& conversion, const void* address)
{
    Conversion all = conversion;
    all.type = L'X';
    all.precision = 2 * static_cast<int>(sizeof address);
    AppendDigits(out, all, "", reinterpret_cast<std::uintptr_t>(address), 16);
}

void AppendConversion(std::wstring& out, const Conversion& conversion, Arguments& arguments)
{
    switch (conversion.type) {
    case 0:
        return;
    case L'd':
    case L'i':
        return AppendSigned(out, conversion, arguments.Next());
    case L'u':
    case L'o':
    case L'x':
    case L'X':
        return AppendUnsigned(out, conversion, arguments.Next());
    case L'f':
    case L'F':
    case L'e':
    case L'E':
    case L'g':
    case L'G':
        return AppendReal(out, conversion, arguments.Next());
    case L'c':
    case L'C': {
        const auto character = static_cast<wchar_t>(arguments.Next().AsSigned());
        return AppendText(out, conversion, {&character, 1});
    }
    case L's':
    case L'S': {
        const std::size_t limit =
            conversion.precision < 0 ? kNoLimit : static_cast<std::size_t>(conversion.precision);
        return AppendText(out, conversion, arguments.Next().AsText(limit));
    }
    case L'p':
        return AppendAddress(out, conversion, arguments.Next().AsAddress());
    default:
        out.push_back(conversion.type);
    }
}

// The first `limit` characters of UTF-8 text. With a limit the text need not end with 0, so nothing
// after the last of them is read.
std::string_view FirstCharacters(const char* utf8, std::size_t limit)
{
    if (limit == kNoLimit) return utf8;
    std::size_t length = 0;
    for (; limit > 0 && utf8[length] != 0; --limit) {
        const auto lead = static_cast<unsigned char>(utf8[length]);
        int trailing = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : 0;
        ++length;
        for (; trailing > 0 && (utf8[length] & 0xC0) == 0x80; --trailing)
            ++length;
    }
    return {utf8, length};
}

} // namespace

FormatArgument::FormatArgument(const CString& text)
    : m_kind(Kind::Wide), m_pointer(text.GetString())
{}

std::int64_t FormatArgument::AsSigned() const
{
    if (m_kind == Kind::Real) {
        constexpr double kLimit = 9223372036854775808.0; // 2^63
        if (std::isnan(m_real)) return 0;
        if (m_real >= kLimit) return std::numeric_limits<std::int64_t>::max();
        if (m_real < -kLimit) return std::numeric_limits<std::int64_t>::min();
        return static_cast<std::int64_t>(m_real);
    }
    const auto value = static_cast<std::int64_t>(m_integer);
    return m_bits == 32 ? static_cast<std::int32_t>(value) : value;
}

std::uint64_t FormatArgument::AsUnsigned() const
{
    if (m_kind == Kind::Real) return static_cast<std::uint64_t>(AsSigned());
    return m_bits == 32 ? static_cast<std::uint32_t>(m_integer) : m_integer;
}

double FormatArgument::AsReal() const
{
    if (m_kind == Kind::Real) return m_real;
    return m_isSigned ? static_cast<double>(AsSigned()) : static_cast<double>(m_integer);
}

std::wstring FormatArgument::AsText(std::size_t limit) const
{
    if (m_kind != Kind::Wide && m_kind != Kind::Narrow && m_kind != Kind::Address) return {};
    if (m_pointer == nullptr) return std::wstring(L"(null)").substr(0, limit);
    if (m_kind == Kind::Address) return {};
    if (m_kind == Kind::Narrow)
        return FromUtf8(FirstCharacters(static_cast<const char*>(m_pointer), limit));
    const auto* text = static_cast<const wchar_t*>(m_pointer);
    return {text, limit == kNoLimit ? std::wcslen(text) : wcsnlen(text, limit)};
}

void AppendFormatted(std::wstring& out, const wchar_t* format, const FormatArgument* arguments,
                     std::size_t count)
{
    if (format == nullptr) return;
    Arguments remaining(arguments, count);
    while (*format != 0) {
        const std::size_t plain = std::wcscspn(format, L"%");
        out.append(format, plain);
        format += plain;
        if (*format == 0) return;
        ++format;
        AppendConversion(out, ReadConversion(format, remaining), remaining);
    }
}

} // namespace framework
