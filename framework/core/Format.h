// SPDX-License-Identifier: MIT
/// @file
/// Formatting behind CString::Format: type-safe, and independent of any locale.
///
///     CString text;
///     text.Format(L"%-8s|%8.3f|%03d", L"tip", 1.25, 7); // "tip     |   1.250|007"
#pragma once

#include "framework/core/Export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

class CString;

namespace framework {

/// One argument to format: a number, a text or an address, together with its type. Made by
/// CString::Format; the text must outlive it.
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
            // Sign extension to 64 bits keeps the value; %u and %x need the original width.
            m_kind = Kind::Integer;
            m_integer = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
            m_bits = sizeof(Number) <= sizeof(int) ? 32 : 64;
            m_isSigned = static_cast<Number>(-1) < Number{};
        }
    }

    Kind GetKind() const { return m_kind; }
    /// The value as a signed integer of the argument's own width; a floating-point value is
    /// truncated and limited to 64 bits; 0 for anything else.
    std::int64_t AsSigned() const;
    /// The value as an unsigned integer of the argument's own width.
    std::uint64_t AsUnsigned() const;
    double AsReal() const;
    /// The text up to its closing 0, `limit` characters at most; empty for a number, "(null)" for a
    /// null pointer.
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

/// Appends `format`, with `arguments` in place of its conversions, to `out`. This is what
/// CString::Format calls. Throws std::bad_alloc where memory does not suffice.
///
///   %[flags - + blank 0 #][width or *][.precision or .*][size]type
///
///   d i u o x X    integers; the size h or hh truncates the value to 16 or 8 bits, every other
///   size
///                  (l ll I I32 I64 j z t w q L) is ignored: the argument knows its own
///   f F e E g G    floating point as in the C locale; exponents have at least two digits
///   c C            one character
///   s S            text; s, ls, hs, S and ws all accept wide text and UTF-8
///   p              address, in upper-case hexadecimal with leading zeros
///   %              a percent sign
///
/// Any other character after a percent sign is copied. Integers and floating-point values convert
/// into each other; an argument that is missing or of another kind is taken as 0 or empty text.
/// Width and precision are limited to 1048576.
TILTPOLE_API void AppendFormatted(std::wstring& out, const wchar_t* format,
                                  const FormatArgument* arguments, std::size_t count);

} // namespace framework
