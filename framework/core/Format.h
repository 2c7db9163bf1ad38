// SPDX-License-Identifier: MIT
//
// Formatted text as CString::Format gives it, type-safe and independent of every locale.
#pragma once

#include "framework/core/Export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

class CString;

namespace framework {

/// One argument of a format: a number, a text or an address, with its type.
class TILTPOLE_API FormatArgument
{
public:
    enum class Kind { Nothing, Integer, Real, Wide, Narrow, Address };

    FormatArgument() = default;
    FormatArgument(const CString& text);
    FormatArgument(const wchar_t* text) : m_kind(Kind::Wide), m_pointer(text) {}
    FormatArgument(const char* text) : m_kind(Kind::Narrow), m_pointer(text) {}
    FormatArgument(const void* address) : m_kind(Kind::Address), m_pointer(address) {}
    FormatArgument(std::nullptr_t) : m_kind(Kind::Address) {}

    template <class Number>
    requires std::is_arithmetic_v<Number> || std::is_enum_v<Number> FormatArgument(Number value)
    {
        if constexpr (std::is_floating_point_v<Number>) {
            m_kind = Kind::Real;
            m_real = static_cast<double>(value);
        } else {
            // Sign extension to 64 bits keeps the value; the width tells what %u and %x show.
            m_kind = Kind::Integer;
            m_integer = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
            m_bits = sizeof(Number) <= sizeof(int) ? 32 : 64;
            m_isSigned = static_cast<Number>(-1) < Number{};
        }
    }

    Kind GetKind() const { return m_kind; }
    /// The value read as a signed integer of the argument's own width; a real is cut towards zero
    /// and limited to 64 bits; anything else is 0.
    std::int64_t AsSigned() const;
    /// The value read as an unsigned integer of the argument's own width.
    std::uint64_t AsUnsigned() const;
    double AsReal() const;
    /// The text up to its closing 0 or, if that comes first, `limit` characters; empty for a
    /// number, "(null)" for a null pointer.
    std::wstring AsText(std::size_t limit) const;
    const void* AsAddress() const { return m_pointer; }

private:
    Kind m_kind = Kind::Nothing;
    int m_bits = 64;
    bool m_isSigned = true;
    std::uint64_t m_integer = 0;
    double m_real = 0.0;
    const void* m_pointer = nullptr;
};

/// Appends `format` with its conversions replaced to `out`.
///
///   %[flags - + blank 0 #][width or *][.precision or .*][size]type
///
///   d i u o x X    integers; the size h or hh cuts the value to 16 or 8 bits, every other size
///                  (l ll I I32 I64 j z t w q L) changes nothing, the argument knows its own
///   f F e E g G    floating point, digits as the C locale gives them, exponent of two or more
///   c C            one character
///   s S            text, wide or UTF-8: s, ls, hs, S, ws all take what the argument is
///   p              address, upper-case hexadecimal digits, all of them
///   %              the sign itself
///
/// After a percent sign any other character stands for itself. Integers and floating point convert
/// into each other; an argument that is missing or of another kind counts as 0 or empty text.
/// Width and precision are limited to 1048576.
TILTPOLE_API void AppendFormatted(std::wstring& out, const wchar_t* format,
                                  const FormatArgument* arguments, std::size_t count);

} // namespace framework
