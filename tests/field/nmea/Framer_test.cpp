// SPDX-License-Identifier: MIT
#include "field/nmea/Framer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace field_nmea = tiltpole::field;

namespace {

using Lines = std::vector<std::string>;

// Fed in pieces of `size` bytes.
Lines LinesOf(field_nmea::Framer& framer, std::string_view bytes, std::size_t size = 100000)
{
    Lines lines;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size()))) {
        std::string_view piece = bytes.substr(0, size);
        while (const auto line = framer.Next(piece))
            lines.emplace_back(*line);
        EXPECT_TRUE(piece.empty());
    }
    return lines;
}

Lines LinesOf(std::string_view bytes)
{
    field_nmea::Framer framer;
    return LinesOf(framer, bytes);
}

} // namespace

TEST(Framer, EndsLinesAtLfAndDropsTheCr)
{
    EXPECT_EQ(LinesOf("$GPA,1\r\n$GPB,2\n!AIVDM\r\n"), (Lines{"$GPA,1", "$GPB,2", "!AIVDM"}));
}

TEST(Framer, BeginsAnewAtEveryDollar)
{
    field_nmea::Framer framer;
    EXPECT_EQ(LinesOf(framer, "13,M$GNGGA,1307$GNRMC,2\r\nrest\r\n$GNGST\r\n"),
              (Lines{"$GNRMC,2", "$GNGST"}));
    EXPECT_EQ(framer.Count().cut, 1U);
    EXPECT_EQ(framer.Count().lines, 2U);
}

TEST(Framer, BeginsAnewAtEveryExclamationMark)
{
    field_nmea::Framer framer;
    EXPECT_EQ(LinesOf(framer, "$GNGGA,1307!AIVDM,1\r\n!AI$GNRMC,2!AIVDM,2\n"),
              (Lines{"!AIVDM,1", "!AIVDM,2"}));
    EXPECT_EQ(framer.Count().cut, 3U);
}

TEST(Framer, PassesOverBinaryMessages)
{
    field_nmea::Framer framer;
    const std::string binary("\xB5\x62$\x01!\x00$9\n$A\n", 12);
    EXPECT_EQ(LinesOf(framer, binary + "$GNGGA,1\r\n" + binary), (Lines{"$GNGGA,1"}));
    EXPECT_EQ(framer.Count().cut, 0U);
}

TEST(Framer, DropsLinesOverOneKibibyte)
{
    const auto line = [](std::size_t size) { return "$GN" + std::string(size - 3, 'x'); };
    const std::size_t longest = field_nmea::Framer::kLongestLine;
    for (const char* end : {"\n", "\r\n"}) {
        field_nmea::Framer framer;
        EXPECT_EQ(LinesOf(framer, line(longest) + end), (Lines{line(longest)}));
        EXPECT_EQ(LinesOf(framer, line(longest + 1) + end + "$GNA\n"), (Lines{"$GNA"}));
        EXPECT_EQ(LinesOf(framer, line(100 * longest) + end + "$GNA\n"), (Lines{"$GNA"}));
        EXPECT_EQ(framer.Count().overlong, 2U);
    }
}

TEST(Framer, GivesTheSameLinesHoweverTheStreamIsCut)
{
    const std::string bytes = "x\n$GNGGA,1\r\n$$GNRMC,2\n\n$G\n$GNGST,$GNGST,3\r\n!AB\r\r\n"
                              + std::string("$GN") + std::string(1100, 'y') + "\n$GNZDA\n";
    const Lines whole = LinesOf(bytes);
    ASSERT_EQ(whole.size(), 5U);
    for (std::size_t size = 1; size < 60; ++size) {
        field_nmea::Framer framer;
        EXPECT_EQ(LinesOf(framer, bytes, size), whole) << "pieces of " << size;
        EXPECT_EQ(framer.Count().cut, 1U);
        EXPECT_EQ(framer.Count().overlong, 1U);
    }
}

TEST(Framer, ForgetsTheHalfLineOnRestart)
{
    field_nmea::Framer framer;
    EXPECT_EQ(LinesOf(framer, "$GNGGA,13"), Lines{});
    framer.Restart();
    EXPECT_EQ(LinesOf(framer, "07\r\n$GNRMC\r\n"), (Lines{"$GNRMC"}));
    EXPECT_EQ(framer.Count().cut, 0U);
}
