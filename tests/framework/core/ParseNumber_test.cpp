// SPDX-License-Identifier: MIT
#include "framework/core/ParseNumber.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <rapidcheck/gtest.h>
#include <string>

using framework::NumberForms;
using framework::ParseDouble;
using framework::ParseInteger;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Double
{
    const char* text;
    double value;
    std::size_t used;
    bool inRange;
};

struct Integer
{
    const char* text;
    std::int32_t value;
    unsigned used;
    bool inRange;
};

std::wstring Widened(std::string_view text)
{
    return {text.begin(), text.end()};
}

void CheckDouble(const Double& c, NumberForms forms)
{
    for (const auto& number :
         {ParseDouble(std::string_view(c.text), forms), ParseDouble(Widened(c.text), forms)}) {
        EXPECT_EQ(number.value, c.value) << c.text;
        EXPECT_EQ(std::signbit(number.value), std::signbit(c.value)) << c.text;
        EXPECT_EQ(number.used, c.used) << c.text;
        EXPECT_EQ(number.inRange, c.inRange) << c.text;
    }
}

} // namespace

TEST(ParseDouble, ReadsTheLongestNumberAtTheStart)
{
    constexpr Double cases[] = {
        {"1",                1,                  1,  true},
        {"-1.5x",            -1.5,               4,  true},
        {"+.5",              0.5,                3,  true},
        {"5.",               5,                  2,  true},
        {"5.e1",             50,                 4,  true},
        {"1e3",              1000,               3,  true},
        {"1E-3,",            1e-3,               4,  true},
        {"1e+2",             100,                4,  true},
        {"1e",               1,                  1,  true},
        {"1e+",              1,                  1,  true},
        {"1ex",              1,                  1,  true},
        {"1.2.3",            1.2,                3,  true},
        {"1,5",              1,                  1,  true},
        {"0x10",             0,                  1,  true},
        {"-0",               -0.0,               2,  true},
        {" \t\n\v\f\r7",     7,                  7,  true},
        {"007",              7,                  3,  true},
        {"0.1",              0.1,                3,  true},
        {"9007199254740993", 9007199254740992.0, 16, true},
    };
    for (const Double& c : cases)
        CheckDouble(c, NumberForms::Decimal);
}

TEST(ParseDouble, FindsNoNumberWhereThereIsNone)
{
    for (const char* text : {"", " ", "x1", "-", "+", "--1", "+-1", ".", "-.", ".e5", "e5", "- 1",
                             "nan", "inf", "-inf", "\xC2\xA0 1"})
        CheckDouble({text, 0.0, 0, true}, NumberForms::Decimal);
}

TEST(ParseDouble, ReportsNumbersOutOfRange)
{
    constexpr Double cases[] = {
        {"1e309",                        kInfinity,               5,  false},
        {"-1e309",                       -kInfinity,              6,  false},
        {"1e-400",                       0.0,                     6,  false},
        {"-1e-400",                      -0.0,                    7,  false},
        {"1e99999999999999999999",       kInfinity,               22, false},
        {"1e-99999999999999999999",      0.0,                     23, false},
        {"0.00001e310",                  1e305,                   11, true },
        {"100000e-320",                  1e-315,                  11, true },
        {"1e308",                        1e308,                   5,  true },
        {"4.9406564584124654e-324",      4.9406564584124654e-324, 23, true },
        {"0e99999999999999999999",       0.0,                     22, true },
        {"-0.000e-99999999999999999999", -0.0,                    28, true },
    };
    for (const Double& c : cases)
        CheckDouble(c, NumberForms::Decimal);
}

TEST(ParseDouble, ReadsLongNumbersCorrectlyRounded)
{
    const std::string many(100'000, '9');
    CheckDouble({("0." + many).c_str(), 1.0, 100'002, true}, NumberForms::Decimal);
    CheckDouble({many.c_str(), kInfinity, 100'000, false}, NumberForms::Decimal);
    CheckDouble({("0." + std::string(100'000, '0') + "1").c_str(), 0.0, 100'003, false},
                NumberForms::Decimal);
}

TEST(ParseDouble, ReadsSpecialValuesOnRequest)
{
    constexpr Double cases[] = {
        {"inf",       kInfinity,  3, true},
        {"-INFINITY", -kInfinity, 9, true},
        {"+Infinit",  kInfinity,  4, true},
        {"in",        0,          0, true},
        {"na",        0,          0, true},
        {"2",         2,          1, true},
    };
    for (const Double& c : cases)
        CheckDouble(c, NumberForms::DecimalAndSpecial);
    const auto nan = ParseDouble(L" NaN(1)", NumberForms::DecimalAndSpecial);
    EXPECT_TRUE(std::isnan(nan.value));
    EXPECT_EQ(nan.used, 4u);
}

TEST(ParseDouble, AgreesWithTheCLocaleOnRandomNumbers)
{
    std::mt19937_64 random(99);
    for (int i = 0; i < 50'000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        char text[64];
        std::snprintf(text, sizeof text, "%.*e", static_cast<int>(random() % 25), value);
        const double expected = std::strtod(text, nullptr);
        ASSERT_EQ(ParseDouble(std::string_view(text)).value, expected) << text;
        ASSERT_EQ(ParseDouble(Widened(text)).value, expected) << text;
    }
}

RC_GTEST_PROP(ParseDouble, UsesWhatTheCLocaleUses, ())
{
    const auto text =
        *rc::gen::container<std::string>(rc::gen::elementOf(std::string(" 0123456789.eE+-x")));
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const std::string used(text.c_str(), static_cast<const char*>(end));
    RC_PRE(used.find('x') == std::string::npos);
    const auto number = ParseDouble(text);
    RC_ASSERT(number.value == value);
    RC_ASSERT(number.used == used.size());
}

TEST(ParseInteger, ReadsTheLongestNumberAtTheStart)
{
    constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();
    constexpr Integer cases[] = {
        {"42x",                  42,    2,  true },
        {" -7",                  -7,    3,  true },
        {"+7",                   7,     2,  true },
        {"1.9",                  1,     1,  true },
        {"0010",                 10,    4,  true },
        {"0x10",                 0,     1,  true },
        {"2147483647",           kHigh, 10, true },
        {"2147483648",           kHigh, 10, false},
        {"-2147483648",          kLow,  11, true },
        {"-2147483649",          kLow,  11, false},
        {"99999999999999999999", kHigh, 20, false},
        {"",                     0,     0,  true },
        {"-",                    0,     0,  true },
        {"x1",                   0,     0,  true },
    };
    for (const Integer& c : cases)
        for (const auto& number :
             {ParseInteger(std::string_view(c.text)), ParseInteger(Widened(c.text))}) {
            EXPECT_EQ(number.value, c.value) << c.text;
            EXPECT_EQ(number.used, c.used) << c.text;
            EXPECT_EQ(number.inRange, c.inRange) << c.text;
        }
}
