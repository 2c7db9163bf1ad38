// SPDX-License-Identifier: MIT
#include "field/nmea/Sentence.h"

#include "field/nmea/Numbers.h"
#include "field/nmea/SentenceText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using tiltpole::field::AppendFixed;
using tiltpole::field::Framed;
using tiltpole::field::PositionText;
using tiltpole::field::ReadDecimal;
using tiltpole::field::ReadDigits;
using tiltpole::field::ReadSentence;
using tiltpole::field::Sentence;

namespace {

// Recorded by a receiver.
constexpr const char* kGsa = "$GNGSA,A,3,15,08,07,28,30,13,14,05,,,,,1.15,0.68,0.93,1*00";

std::string Fixed(double value, int decimals)
{
    std::string text;
    AppendFixed(text, value, decimals);
    return text;
}

} // namespace

TEST(Sentence, IsSplitIntoTalkerTypeAndFields)
{
    const auto sentence = ReadSentence(kGsa);
    ASSERT_TRUE(sentence);
    EXPECT_EQ(sentence->Line(), kGsa);
    EXPECT_EQ(sentence->Talker(), "GN");
    EXPECT_EQ(sentence->Type(), "GSA");
    EXPECT_EQ(sentence->Fields(), 18U);
    EXPECT_EQ(sentence->Field(1), "A");
    EXPECT_EQ(sentence->Field(11), "");
    EXPECT_EQ(sentence->Field(18), "1");
    EXPECT_EQ(sentence->Field(0), "");
    EXPECT_EQ(sentence->Field(19), "");
}

TEST(Sentence, OfAMakerHasTheTalkerP)
{
    const auto sentence = ReadSentence("$PTPS,1,,*1A");
    ASSERT_TRUE(sentence);
    EXPECT_EQ(sentence->Talker(), "P");
    EXPECT_EQ(sentence->Type(), "TPS");
    EXPECT_EQ(sentence->Fields(), 3U);
    EXPECT_EQ(sentence->Field(3), "");
}

TEST(Sentence, OfAMakerHasAnAddressOfThreeToSixteenCharacters)
{
    const auto reads = [](std::size_t size) {
        std::string line = Framed("P" + std::string(size - 1, 'X') + ",1");
        line.resize(line.size() - 2);
        return ReadSentence(line).has_value();
    };
    EXPECT_FALSE(reads(1));
    EXPECT_FALSE(reads(2));
    EXPECT_TRUE(reads(3));
    EXPECT_TRUE(reads(16));
    EXPECT_FALSE(reads(17));
}

TEST(Sentence, NeedsBothDigitsOfTheRightChecksum)
{
    struct Case
    {
        const char* line;
        bool good;
        const char* why;
    };
    constexpr Case cases[] = {
        {"$GPXYZ,1*51",  true,  "right"                       },
        {"$GPXYZ,k*0b",  true,  "small letters"               },
        {"$GPXYZ,1*50",  false, "another digit"               },
        {"$GPXYZ,1*1",   false, "one digit"                   },
        {"$GPXYZ,1*51 ", false, "something behind it"         },
        {"$GPXYZ,1",     false, "none"                        },
        {"$GPXYZ,1*",    false, "none behind the star"        },
        {"$GPXYZ,1*4G",  false, "not a digit"                 },
        {"GPXYZ,1*51",   false, "no dollar"                   },
        {"$*00",         false, "no address"                  },
        {"$GPXY,1*0B",   false, "address of four characters"  },
        {"$gpXYZ,1*51",  false, "small letters in the address"},
        {"",             false, "empty"                       },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ReadSentence(c.line).has_value(), c.good) << c.why;
}

TEST(Sentence, HoldsPrintableCharactersAlone)
{
    for (const char* body :
         {"GPXYZ,\x07", "GPXYZ,\x7F", "GPXYZ,\x80", "GPXYZ,*", "GPXYZ,a!b", "GPXYZ,a$b"}) {
        std::string line = Framed(body);
        line.resize(line.size() - 2);
        EXPECT_FALSE(ReadSentence(line)) << body;
    }
}

TEST(Sentence, HasABoundedNumberOfFields)
{
    const auto reads = [](std::size_t fields) {
        std::string line = Framed("GPXYZ" + std::string(fields, ','));
        line.resize(line.size() - 2);
        return ReadSentence(line).has_value();
    };
    EXPECT_TRUE(reads(Sentence::kMostFields));
    EXPECT_FALSE(reads(Sentence::kMostFields + 1));
}

TEST(Sentence, IsFramedWithItsChecksum)
{
    EXPECT_EQ(Framed("GPXYZ,1"), "$GPXYZ,1*51\r\n");
    const std::string_view gsa = kGsa;
    EXPECT_EQ(Framed(gsa.substr(1, gsa.size() - 4)), std::string(gsa).append("\r\n"));
}

TEST(Decimal, IsReadStrictly)
{
    for (const char* text : {"", "-", ".5", "5.", "+1", " 1", "1 ", "1e3", "nan", "inf", "0x10",
                             "1.2.3", "--1", "1,5", "1234567890123456789012345"})
        EXPECT_FALSE(ReadDecimal(text)) << text;
    EXPECT_EQ(ReadDecimal("-00.50")->value, -0.5);
    EXPECT_EQ(ReadDecimal("-00.50")->decimals, 2);
    EXPECT_EQ(ReadDecimal("17")->decimals, 0);
    EXPECT_FALSE(ReadDecimal("10.01", -10.0, 10.0));
    EXPECT_TRUE(ReadDecimal("-10.00", -10.0, 10.0));
}

TEST(Digits, AreOfTheGivenNumber)
{
    EXPECT_EQ(ReadDigits("07", 2, 2), 7);
    EXPECT_FALSE(ReadDigits("7", 2, 2));
    EXPECT_FALSE(ReadDigits("007", 2, 2));
    EXPECT_FALSE(ReadDigits("-7", 2, 2));
    EXPECT_FALSE(ReadDigits("", 0, 2));
    EXPECT_EQ(ReadDigits("2147483647", 1, 10), 2147483647);
    EXPECT_FALSE(ReadDigits("2147483648", 1, 10)) << "more than an int holds";
}

TEST(Fixed, WritesDecimalsWithoutANegativeZero)
{
    EXPECT_EQ(Fixed(191.37636, 4), "191.3764");
    EXPECT_EQ(Fixed(-0.0312, 4), "-0.0312");
    EXPECT_EQ(Fixed(0.05, 4), "0.0500");
    EXPECT_EQ(Fixed(-0.00004, 4), "0.0000");
    EXPECT_EQ(Fixed(-0.0, 1), "0.0");
    EXPECT_EQ(Fixed(-1.25, 1), "-1.3");
    EXPECT_EQ(Fixed(12.0, 0), "12");
}

TEST(Fixed, WritesNothingOfWhatIsNoNumber)
{
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double value : {std::nan(""), infinite, -infinite, 1e15})
        EXPECT_EQ(Fixed(value, 4), "") << value;
}

TEST(PositionText, CarriesMinutesAndKeepsLeadingZeros)
{
    struct Case
    {
        double latitude;
        double longitude;
        const char* expected;
        const char* why;
    };
    constexpr Case cases[] = {
        {47 + 33.9633422 / 60,    19 + 0.5015858 / 60, "4733.9633422,N,01900.5015858,E", "plain"            },
        {9 + 59.99999996 / 60,    7.5,                 "1000.0000000,N,00730.0000000,E", "60 minutes carry" },
        {-(9 + 59.99999994 / 60), -0.25,               "0959.9999999,S,00015.0000000,W", "59.9999999 stays" },
        {0.05 / 60,               -0.05 / 60,          "0000.0500000,N,00000.0500000,W", "zeros before"     },
        {-1e-12,                  -1e-12,              "0000.0000000,N,00000.0000000,E", "no negative zero" },
        {-90.0,                   180.0,               "9000.0000000,S,18000.0000000,E", "the ends"         },
        {90.0,                    -179.9999999999,     "9000.0000000,N,18000.0000000,W", "rounds to the end"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PositionText(c.latitude, c.longitude), c.expected) << c.why;
}

TEST(PositionText, IsEmptyForWhatIsNoPosition)
{
    for (const double latitude : {90.1, std::nan(""), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(PositionText(latitude, 0.0), ",,,");
    EXPECT_EQ(PositionText(0.0, -180.1), ",,,");
}
