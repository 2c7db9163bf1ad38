// SPDX-License-Identifier: MIT
#include "framework/core/Format.h"

#include "tests/framework/core/TextOf.h"

#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <rapidcheck/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <class... Arguments>
CString Formatted(const wchar_t* format, const Arguments&... arguments)
{
    CString text;
    text.Format(format, arguments...);
    return text;
}

// What the C library of a program in the C locale prints.
template <class... Arguments>
std::string Printed(const std::string& format, Arguments... arguments)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    const int length = std::snprintf(nullptr, 0, format.c_str(), arguments...);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format.c_str(), arguments...);
#pragma GCC diagnostic pop
    text.pop_back();
    return text;
}

template <class... Arguments>
void CheckLikePrinted(const std::string& format, Arguments... arguments)
{
    const CString text = Formatted(CString(format.c_str()), arguments...);
    EXPECT_EQ(framework::ToUtf8(text.GetString()), Printed(format, arguments...)) << format;
}

std::string AnyOf(const std::vector<std::string>& choices, std::mt19937& random)
{
    return choices[random() % choices.size()];
}

std::string RandomConversion(const std::string& types, std::mt19937& random)
{
    std::string format = "<%";
    for (const char flag : std::string("-+ 0#"))
        if (random() % 3 == 0) format += flag;
    format += AnyOf({"", "", "1", "8", "25", "120"}, random);
    format += AnyOf({"", "", ".", ".0", ".1", ".6", ".10", ".17", ".40"}, random);
    return format + types + '>';
}

// Doubles of every size: any bits, and numbers as people write them.
double RandomDouble(std::mt19937_64& random)
{
    switch (random() % 4) {
    case 0:
        return std::bit_cast<double>(random());
    case 1:
        return static_cast<double>(static_cast<std::int64_t>(random() % 2'000'001) - 1'000'000)
               / 1000;
    case 2:
        return static_cast<double>(random() % 1000) / 8; // ties of rounding
    default:
        return std::ldexp(static_cast<double>(random() % 100),
                          static_cast<int>(random() % 200) - 100);
    }
}

enum class Fix { None = 0, Rough = 4, Good = 5 };

} // namespace

TEST(Format, TakesWideTextForPercentS)
{
    const CString name = L"tip";
    EXPECT_EQ(Formatted(L"%s|%ls|%ws", name, L"wide", name), L"tip|wide|tip");
    EXPECT_EQ(Formatted(L"%hs|%S|%hS", "na\xC3\xAFve", "b", "c"), L"na\u00EFve|b|c");
    wchar_t buffer[8] = L"array";
    EXPECT_EQ(Formatted(L"%s", buffer), L"array");
}

TEST(Format, TakesEveryKindOfTextWhateverTheSize)
{
    EXPECT_EQ(Formatted(L"%s %hs", "narrow", L"wide"), L"narrow wide");
}

TEST(Format, PadsAndTruncatesText)
{
    EXPECT_EQ(Formatted(L"<%6s|%-6s|%.2s|%5.1s>", L"abc", L"abc", L"abc", L"abc"),
              L"<   abc|abc   |ab|    a>");
    EXPECT_EQ(Formatted(L"<%*s|%-*s|%*s>", 5, L"a", 3, L"b", -3, L"c"), L"<    a|b  |c  >");
    EXPECT_EQ(Formatted(L"%.*s", 2, L"abc"), L"ab");
    EXPECT_EQ(Formatted(L"%.*s", -1, L"abc"), L"abc");
    EXPECT_EQ(Formatted(L"%.2hs", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), L"\u00E4\u20AC");
}

TEST(Format, ReadsUnterminatedTextNoFurtherThanItsPrecision)
{
    const wchar_t wide[3] = {L'a', L'b', L'c'};
    const char narrow[4] = {'a', '\xC3', '\xA4', 'c'};
    EXPECT_EQ(Formatted(L"%.3s", static_cast<const wchar_t*>(wide)), L"abc");
    EXPECT_EQ(Formatted(L"%.3hs", static_cast<const char*>(narrow)), L"a\u00E4c");
}

TEST(Format, PrintsANullText)
{
    EXPECT_EQ(Formatted(L"%s", static_cast<const wchar_t*>(nullptr)), L"(null)");
    EXPECT_EQ(Formatted(L"%hs", static_cast<const char*>(nullptr)), L"(null)");
    EXPECT_EQ(Formatted(L"%s", nullptr), L"(null)");
    EXPECT_EQ(Formatted(L"%.3s", nullptr), L"(nu");
}

TEST(Format, PrintsCharactersPercentSignsAndPlainText)
{
    EXPECT_EQ(Formatted(L"%c%3c%-3c%C|", L'a', L'b', 'c', L'\u00E4'), L"a  bc  \u00E4|");
    EXPECT_EQ(Formatted(L"100%% %d%%", 5), L"100% 5%");
    EXPECT_EQ(Formatted(L"plain"), L"plain");
    EXPECT_TRUE(Formatted(L"").IsEmpty());
    EXPECT_TRUE(Formatted(nullptr).IsEmpty());
    EXPECT_EQ(Formatted(L"a%cb", 0).GetLength(), 3);
}

TEST(Format, PrintsAnUnknownTypeAsItself)
{
    EXPECT_EQ(Formatted(L"%y %5k %!", 1), L"y k !");
    EXPECT_EQ(Formatted(L"end %"), L"end ");
    EXPECT_EQ(Formatted(L"end %5.2l"), L"end ");
}

TEST(Format, PrintsAddressesInFull)
{
    EXPECT_EQ(Formatted(L"%p", reinterpret_cast<const void*>(0x1234ABCD)),
              CString(L'0', 2 * static_cast<int>(sizeof(void*)) - 8) + L"1234ABCD");
}

TEST(Format, AcceptsTheSizesOfBothWorlds)
{
    const std::int64_t large = -1234567890123;
    EXPECT_EQ(Formatted(L"%lld %I64d %ld %jd %td", large, large, large, large, large),
              L"-1234567890123 -1234567890123 -1234567890123 -1234567890123 -1234567890123");
    EXPECT_EQ(Formatted(L"%I64u %I32d %Id %zu %lu", 5u, 6, 7, sizeof(char), 8ul), L"5 6 7 1 8");
    EXPECT_EQ(Formatted(L"%lf %Lf", 1.5, 2.5L), L"1.500000 2.500000");
    EXPECT_EQ(Formatted(L"%hd %hhd %hu %hhu %hx", 65537, 257, 65537, 257, -1), L"1 1 1 1 ffff");
}

TEST(Format, ShowsIntegersInTheirOwnWidth)
{
    EXPECT_EQ(Formatted(L"%x %u", -1, -1), L"ffffffff 4294967295");
    EXPECT_EQ(Formatted(L"%x", std::int64_t{-1}), L"ffffffffffffffff");
    EXPECT_EQ(Formatted(L"%d", 4294967295u), L"-1");
    EXPECT_EQ(Formatted(L"%d %d %d", true, L'a', Fix::Good), L"1 97 5");
    EXPECT_EQ(Formatted(L"%d %d", static_cast<signed char>(-5), static_cast<unsigned char>(200)),
              L"-5 200");
}

TEST(Format, ConvertsNumbersOfTheOtherKind)
{
    EXPECT_EQ(Formatted(L"%.1f %.1f", 3, -4), L"3.0 -4.0");
    EXPECT_EQ(Formatted(L"%.1f %.0f", 4294967295u, ~std::uint64_t{0}),
              L"4294967295.0 18446744073709551616");
    EXPECT_EQ(Formatted(L"%d %d %u", 3.9, -3.9, 7.5), L"3 -3 7");
    EXPECT_EQ(Formatted(L"%d", 1e300), L"9223372036854775807");
    EXPECT_EQ(Formatted(L"%d", -kInfinity), L"-9223372036854775808");
    EXPECT_EQ(Formatted(L"%d", kNaN), L"0");
}

TEST(Format, TreatsAMissingOrMisplacedArgumentAsEmpty)
{
    EXPECT_EQ(Formatted(L"%d %s %.1f %c|", 1).GetLength(), 9);
    EXPECT_EQ(Formatted(L"%d|%s|%.1f", 1), L"1||0.0");
    EXPECT_EQ(Formatted(L"%d|%f|%s", L"text", "text", 5), L"0|0.000000|");
    EXPECT_EQ(Formatted(L"%d", 1, 2, 3), L"1");
}

TEST(Format, LimitsWidthAndPrecision)
{
    constexpr int kLimit = 1 << 20;
    EXPECT_EQ(Formatted(L"%99999999999999999999d", 1).GetLength(), kLimit);
    EXPECT_EQ(Formatted(L"%*d", INT_MAX, 1).GetLength(), kLimit);
    EXPECT_EQ(Formatted(L"%*d|", INT_MIN, 1).GetLength(), kLimit + 1);
    EXPECT_EQ(Formatted(L"%.2000000f", 1.0).GetLength(), kLimit + 2);
    EXPECT_EQ(Formatted(L"%.2000000d", 1).GetLength(), kLimit);
}

TEST(Format, PrintsNumbersAsTheCLocaleDoes)
{
    for (const double value :
         {0.0, -0.0, 1.0, -1.5, 0.5, 2.5, 1e-5, 123456.0, 1234567.0, 1e100, DBL_MAX, DBL_MIN,
          DBL_TRUE_MIN, 1.0 / 3, kInfinity, -kInfinity, kNaN, -kNaN})
        for (const char* format :
             {"%f", "%e", "%g", "%F", "%E", "%G", "%010.3f", "%+.0e", "% g", "%#.0f", "%#g",
              "%#.3G", "%-12.2e|", "%.0g", "%16.10f", "%5.f", "%+08.2F", "%.400f", "%.350e"})
            CheckLikePrinted(format, value);
}

// A case of its own: some C libraries omit the zeros when rounding adds a digit.
TEST(Format, KeepsTheZerosOfARoundedPowerOfTen)
{
    EXPECT_EQ(Formatted(L"%g %#g %#.3g", 999999.5, 999999.5, 9.999), L"1e+06 1.00000e+06 10.0");
}

TEST(Format, PrintsExponentsOfTwoOrMoreDigits)
{
    EXPECT_EQ(Formatted(L"%.2e %.2E %.0e", 1.0, 1e-7, 1e100), L"1.00e+00 1.00E-07 1e+100");
}

TEST(Format, PrintsIntegersAsTheCLocaleDoes)
{
    for (const int value : {0, 1, -1, 42, INT_MAX, INT_MIN})
        for (const char* format :
             {"%d",     "%i",     "%5d",   "%-5d|", "%05d",    "%+d", "% d",  "%.3d", "%8.3d",
              "%08.3d", "%.0d",   "%u",    "%x",    "%X",      "%o",  "%#x",  "%#X",  "%#o",
              "%#.0o",  "%#8.4x", "%#08x", "%+u",   "%-#10x|", "%hd", "%hhu", "%ho"})
            CheckLikePrinted(format, value);
}

TEST(Format, AgreesWithPrintedRealsOfRandomBitsAndFormats)
{
    std::mt19937_64 bits(20240611);
    std::mt19937 random(7);
    for (int i = 0; i < 100'000 && !testing::Test::HasFailure(); ++i) {
        const double value = RandomDouble(bits);
        CheckLikePrinted(RandomConversion(AnyOf({"f", "e", "g", "F", "E", "G"}, random), random),
                         value);
    }
}

TEST(Format, AgreesWithPrintedIntegersOfRandomBitsAndFormats)
{
    std::mt19937_64 bits(20240612);
    std::mt19937 random(8);
    for (int i = 0; i < 50'000 && !testing::Test::HasFailure(); ++i) {
        const auto value = static_cast<long long>(bits() >> (bits() % 64));
        const std::string type = AnyOf({"d", "i", "u", "x", "X", "o"}, random);
        CheckLikePrinted(RandomConversion("ll" + type, random), value);
        CheckLikePrinted(RandomConversion(type, random), static_cast<int>(value));
        CheckLikePrinted(RandomConversion("hh" + type, random), static_cast<int>(value));
    }
}

TEST(Format, AppendsAndAcceptsTheTextItself)
{
    CString text = L"a";
    text.Format(L"%s-%s", text, text);
    EXPECT_EQ(text, L"a-a");
    text.AppendFormat(L"[%s]", text);
    EXPECT_EQ(text, L"a-a[a-a]");
    CString format = L"%d";
    format.Format(format, 5);
    EXPECT_EQ(format, L"5");
}

TEST(Format, PrintsWhatFollowsASizeThatIsNone)
{
    EXPECT_EQ(Formatted(L"%I64d", 7), L"7");
    EXPECT_EQ(Formatted(L"%I32d", 7), L"7");
    EXPECT_EQ(Formatted(L"%I65d", 7), L"65d");
    EXPECT_EQ(Formatted(L"%I34d", 7), L"34d");
}

TEST(Format, CutsNarrowTextBetweenCharacters)
{
    EXPECT_EQ(Formatted(L"%.9hs", "abc"), L"abc") << "no more than there is";
    EXPECT_EQ(Formatted(L"%.1hs|", "\xF0\x9F\x98\x80x"), L"\U0001F600|") << "four bytes";
    EXPECT_EQ(Formatted(L"%.2hs|", "\xC3(x"), L"\uFFFD(|") << "no byte of another character";
}

TEST(Format, PrintsNoTextForAnAddress)
{
    int value = 0;
    EXPECT_EQ(Formatted(L"<%s>", static_cast<void*>(&value)), L"<>");
}
