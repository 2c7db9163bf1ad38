// SPDX-License-Identifier: MIT
#include "framework/core/TextConversion.h"

#include <array>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <string>

using framework::FromUtf8;
using framework::ToUtf8;

namespace {

struct Pair
{
    const char* bytes;
    const wchar_t* text;
    const char* why;
};

// A Unicode scalar value of every length class.
rc::Gen<std::wstring> AnyText()
{
    const auto range = [](unsigned low, unsigned high) {
        return rc::gen::cast<wchar_t>(rc::gen::inRange(low, high));
    };
    return rc::gen::container<std::wstring>(
        rc::gen::oneOf(range(0, 0x80), range(0x80, 0x800), range(0x800, 0xD800),
                       range(0xE000, 0x10000), range(0x10000, 0x110000)));
}

int Needed(const char* bytes)
{
    return MultiByteToWideChar(CP_UTF8, 0, bytes, -1, nullptr, 0);
}

} // namespace

TEST(TextConversion, MapsTheLimitsOfEveryLength)
{
    constexpr Pair cases[] = {
        {"",                 L"",         "empty"           },
        {"\x01\x7F",         L"\x01\x7F", "one byte"        },
        {"\xC2\x80",         L"\x80",     "first of two"    },
        {"\xDF\xBF",         L"\x7FF",    "last of two"     },
        {"\xE0\xA0\x80",     L"\x800",    "first of three"  },
        {"\xED\x9F\xBF",     L"\xD7FF",   "below surrogates"},
        {"\xEE\x80\x80",     L"\xE000",   "above surrogates"},
        {"\xEF\xBF\xBF",     L"\xFFFF",   "last of three"   },
        {"\xF0\x90\x80\x80", L"\x10000",  "first of four"   },
        {"\xF4\x8F\xBF\xBF", L"\x10FFFF", "last of all"     },
        {"\xEF\xBB\xBFx",    L"\xFEFFx",  "byte-order mark" },
    };
    for (const Pair& c : cases) {
        EXPECT_EQ(FromUtf8(c.bytes), c.text) << c.why;
        EXPECT_EQ(ToUtf8(c.text), c.bytes) << c.why;
    }
}

// One U+FFFD per maximal part of an ill-formed sequence, as the Unicode standard recommends
// (chapter 3, "U+FFFD Substitution of Maximal Subparts", tables 3-8 to 3-11).
TEST(TextConversion, ReplacesEveryIllFormedPartOnce)
{
    constexpr Pair cases[] = {
        {"a\x80z",           L"a\xFFFDz",                 "lone continuation"    },
        {"\xC0\xAF",         L"\xFFFD\xFFFD",             "overlong, two bytes"  },
        {"\xE0\x80\xAF",     L"\xFFFD\xFFFD\xFFFD",       "overlong, three bytes"},
        {"\xF0\x80\x80\xAF", L"\xFFFD\xFFFD\xFFFD\xFFFD", "overlong, four bytes" },
        {"\xED\xA0\x80",     L"\xFFFD\xFFFD\xFFFD",       "surrogate"            },
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD", "above U+10FFFF"       },
        {"\xF5\xFF",         L"\xFFFD\xFFFD",             "never a lead byte"    },
        {"\xE1\x80\xE2\xF0\x91\x92"
         "A",       L"\xFFFD\xFFFD\xFFFD"
         L"A",                      "truncated sequences"  },
        {"\xF0\x90\x80",     L"\xFFFD",                   "cut at the end"       },
        {"\xC3",             L"\xFFFD",                   "lead byte at the end" },
        {"\xC3\xC3\xA4",     L"\xFFFD\xE4",               "lead before a lead"   },
    };
    for (const Pair& c : cases)
        EXPECT_EQ(FromUtf8(c.bytes), c.text) << c.why;
}

TEST(TextConversion, ReplacesInvalidCharactersWhenEncoding)
{
    const std::wstring wrong = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDFFF),
                                static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
    EXPECT_EQ(ToUtf8(wrong), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(TextConversion, KeepsZerosInside)
{
    EXPECT_EQ(FromUtf8(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(ToUtf8(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
}

RC_GTEST_PROP(TextConversion, RoundTripsAnyText, ())
{
    const std::wstring text = *AnyText();
    RC_ASSERT(FromUtf8(ToUtf8(text)) == text);
}

RC_GTEST_PROP(TextConversion, JoinsWhereverWellFormedTextIsCut, ())
{
    // Lengths around the inner chunk size, at every alignment.
    const auto blanks = static_cast<std::size_t>(*rc::gen::inRange(1000, 1050));
    const std::wstring text = std::wstring(blanks, L' ') + *AnyText();
    RC_ASSERT(FromUtf8(ToUtf8(text)) == text);
}

RC_GTEST_PROP(TextConversion, MakesWellFormedTextOfAnyBytes, (const std::string& bytes))
{
    const std::wstring text = FromUtf8(bytes);
    RC_ASSERT(FromUtf8(ToUtf8(text)) == text);
    RC_ASSERT(text.size() <= bytes.size());
}

TEST(MultiByteToWideChar, ReturnsTheSizeAndFillsTheBuffer)
{
    std::array<wchar_t, 8> buffer{};
    EXPECT_EQ(Needed("\xC3\xA4z"), 3) << "two characters and the closing 0";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xC3\xA4z", -1, buffer.data(), 3), 3);
    EXPECT_STREQ(buffer.data(), L"\u00E4z");
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 2, buffer.data(), 8), 2);
    EXPECT_EQ(std::wstring(buffer.data(), 2), L"ab") << "no closing 0 with a length";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 2, nullptr, 0), 2);
}

TEST(MultiByteToWideChar, ReturnsZeroWhenItCannotConvert)
{
    std::array<wchar_t, 8> buffer{};
    wchar_t* out = buffer.data();
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, out, 3), 0) << "too small";
    EXPECT_EQ(buffer[3], 0) << "written behind the end";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 0, out, 8), 0) << "empty";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -2, out, 8), 0) << "negative";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, -1, out, 8), 0) << "no source";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, nullptr, 8), 0) << "no target";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, out, -1), 0) << "negative capacity";
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, out, 8), 0) << "another code page";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a\xFF", -1, out, 8), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a", -1, out, 8), 2);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a\xFF", -1, out, 8), 3);
    EXPECT_EQ(buffer[1], 0xFFFD);
}

TEST(WideCharToMultiByte, ReturnsTheSizeAndFillsTheBuffer)
{
    std::array<char, 8> buffer{};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\u00E4z", -1, nullptr, 0, nullptr, nullptr), 4);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\u00E4z", -1, buffer.data(), 4, nullptr, nullptr),
              4);
    EXPECT_STREQ(buffer.data(), "\xC3\xA4z");
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abc", 2, buffer.data(), 8, nullptr, nullptr), 2);
}

TEST(WideCharToMultiByte, ReturnsZeroWhenItCannotConvert)
{
    std::array<char, 8> buffer{};
    const auto convert = [&](UINT page, DWORD flags, const wchar_t* text, int length,
                             int capacity) {
        return WideCharToMultiByte(page, flags, text, length, buffer.data(), capacity, nullptr,
                                   nullptr);
    };
    EXPECT_EQ(convert(CP_UTF8, 0, L"\u00E4", 1, 1), 0) << "too small";
    EXPECT_EQ(buffer[1], 0) << "written behind the end";
    EXPECT_EQ(convert(CP_UTF8, 0, L"abc", 0, 8), 0) << "empty";
    EXPECT_EQ(convert(CP_UTF8, 0, L"abc", -2, 8), 0) << "negative";
    EXPECT_EQ(convert(CP_UTF8, 0, nullptr, -1, 8), 0) << "no source";
    EXPECT_EQ(convert(1252, 0, L"abc", -1, 8), 0) << "another code page";
    const wchar_t surrogate[] = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_EQ(convert(CP_UTF8, WC_ERR_INVALID_CHARS, surrogate, -1, 8), 0);
    EXPECT_EQ(convert(CP_UTF8, 0, surrogate, -1, 8), 4);
}

TEST(WideCharToMultiByte, ReportsReplacementsOnlyForTheSystemsCodePage)
{
    std::array<char, 8> buffer{};
    const wchar_t surrogate[] = {static_cast<wchar_t>(0xD800), 0};
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, surrogate, -1, buffer.data(), 8, "?", &used), 4);
    EXPECT_TRUE(used);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"a", -1, buffer.data(), 8, "?", &used), 2);
    EXPECT_FALSE(used);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"a", -1, buffer.data(), 8, nullptr, &used), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"a", -1, buffer.data(), 8, "?", nullptr), 0);
}
