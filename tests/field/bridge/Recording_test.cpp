// SPDX-License-Identifier: MIT
#include "field/Recording.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace {

using field::Channel;
using field::Instant;
using field::RecordingReader;
using std::chrono::microseconds;

constexpr const char* kHeader = "# tiltpole recording 1, started 2026-11-22T13:07:58.123456Z";
constexpr double kStarted = 1795352878.123456; // of the header, by `date -u +%s`

std::string AllBytes()
{
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    return bytes;
}

// What a reader finds in the lines of `text`, without their instants.
std::string BytesOf(RecordingReader& reader, std::string_view text)
{
    std::string bytes;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        EXPECT_TRUE(reader.Read(text.substr(0, end))) << reader.Error();
        if (reader.Last()) bytes += reader.Last()->bytes;
        text.remove_prefix(end + 1);
    }
    return bytes;
}

TEST(Recording, OpensWithItsStartInUtc)
{
    EXPECT_EQ(field::RecordingHeader(kStarted), std::string(kHeader) + '\n');
    EXPECT_EQ(field::RecordingHeader(-1.0),
              "# tiltpole recording 1, started 1970-01-01T00:00:00.000000Z\n");
    EXPECT_EQ(field::RecordingHeader(1e300), field::RecordingHeader(0.0));

    RecordingReader reader;
    ASSERT_TRUE(reader.Read(kHeader));
    EXPECT_NEAR(reader.Started().value(), kStarted, 1e-6);
    EXPECT_FALSE(reader.Last());
}

TEST(Recording, WritesALineForEachArrival)
{
    EXPECT_EQ(field::RecordingLines(microseconds(12345678), Channel::Receiver, "$GP*\\\r\n\xFF"),
              "+12.345678 R $GP*\\x5C\\x0D\\x0A\\xFF\n");
    EXPECT_EQ(field::RecordingLines(Instant(1999), Channel::Keys, "k"), "+0.000001 K k\n");
    EXPECT_EQ(field::RecordingLines(Instant(-5), Channel::Pose, " "), "+0.000000 P  \n");
    EXPECT_EQ(field::RecordingLines(Instant(0), Channel::Pose, ""), "");
}

TEST(Recording, GivesEveryByteBack)
{
    std::string bytes;
    for (int i = 0; i < 40; ++i)
        bytes += AllBytes(); // more than a line holds
    const std::string text = field::RecordingLines(microseconds(7), Channel::Corrections, bytes);
    EXPECT_GT(std::count(text.begin(), text.end(), '\n'), 1);

    RecordingReader reader;
    reader.Read(kHeader);
    EXPECT_EQ(BytesOf(reader, text), bytes);
    ASSERT_TRUE(reader.Last());
    EXPECT_EQ(reader.Last()->at, microseconds(7));
    EXPECT_EQ(reader.Last()->channel, Channel::Corrections);
}

TEST(Recording, PassesOverCommentsEmptyLinesAndCarriageReturns)
{
    RecordingReader reader;
    EXPECT_TRUE(reader.Read(std::string(kHeader) + '\r'));
    EXPECT_TRUE(reader.Read(""));
    EXPECT_TRUE(reader.Read("# a note"));
    EXPECT_FALSE(reader.Last());
    EXPECT_TRUE(reader.Read("+1.000000 K s\r"));
    EXPECT_EQ(reader.Last()->bytes, "s");
}

struct BadLine
{
    const char* line;
    const char* error;
};

TEST(Recording, NamesTheLineThatIsBad)
{
    const BadLine cases[] = {
        {"1.000000 R a",                     "line 3: a record begins with + and the seconds"         },
        {"+.000000 R a",                     "line 3: the time is no number of seconds like 12.345678"},
        {"+-1.000000 R a",                   "line 3: the time is no number of seconds like 12.345678"},
        {"+99999999999.000000 R a",          "line 3: the time is no number of seconds like 12.345678"},
        {"+99999999999999999999.000000 R a",
         "line 3: the time is no number of seconds like 12.345678"                                    },
        {"+5.00000 R a",                     "line 3: the time needs six decimals and a space"        },
        {"+5.0000000 R a",                   "line 3: the time needs six decimals and a space"        },
        {"+5.000000 X a",                    "line 3: the channel is none of R, P, C, K"              },
        {"+5.000000 R",                      "line 3: the channel is none of R, P, C, K"              },
        {"+5.000000 Ra",                     "line 3: the channel is none of R, P, C, K"              },
        {"+1.999999 R a",                    "line 3: the time runs back"                             },
        {"+5.000000 R \\x4",                 "line 3: a byte is neither printable nor \\xHH"          },
        {"+5.000000 R \\xG0",                "line 3: a byte is neither printable nor \\xHH"          },
        {"+5.000000 R \\n",                  "line 3: a byte is neither printable nor \\xHH"          },
        {"+5.000000 R \\n41",                "line 3: a byte is neither printable nor \\xHH"          },
        {"+5.000000 R \\x4G",                "line 3: a byte is neither printable nor \\xHH"          },
        {"+5.000000 R \x7F",                 "line 3: a byte is neither printable nor \\xHH"          },
        {"+5,000000 R a",                    "line 3: the time is no number of seconds like 12.345678"},
        {"+5.000000 R \t",                   "line 3: a byte is neither printable nor \\xHH"          },
    };
    for (const BadLine& c : cases) {
        RecordingReader reader;
        reader.Read(kHeader);
        reader.Read("+2.000000 R a");
        EXPECT_FALSE(reader.Read(c.line)) << c.line;
        EXPECT_EQ(reader.Error(), c.error) << c.line;
        EXPECT_FALSE(reader.Last()) << c.line;
        EXPECT_TRUE(reader.Read("+2.000000 R next")) << c.line;
    }
}

TEST(Recording, RefusesAHeaderThatIsNone)
{
    const char* const cases[] = {
        "",
        "+0.000000 R a",
        "# tiltpole recording 2, started 2026-11-22T13:07:58.123456Z",
        "# tiltpole recording 1, started 2026-02-29T13:07:58.123456Z",
        "# tiltpole recording 1, started 1969-12-31T13:07:58.123456Z",
        "# tiltpole recording 1, started 2026-11-22T24:00:00.000000Z",
        "# tiltpole recording 1, started 2026-11-22T13:07:58.123456",
        "# tiltpole recording 1, started 2026-11-22T13:07:58Z",
        "# tiltpole recording 1, started year-11-22T13:07:58.123456Z",
        "# tiltpole recording 1, started 2026/11-22T13:07:58.123456Z",
        "# tiltpole recording 1, started 2026-mm-22T13:07:58.123456Z",
        "# tiltpole recording 1, started 2026-11-22 13:07:58.123456Z",
        "# tiltpole recording 1, started 2026-11-22T13.07:58.123456Z",
        "# tiltpole recording 1, started 2026-11-22T13:07.58.123456Z",
        "# tiltpole recording 1, started 2026-11-22T13:07:58.microsZ",
        "# tiltpole recording 1, started 2026-11-22T13:60:00.000000Z",
        "# tiltpole recording 1, started 2026-11-22T13:07:60.000000Z",
    };
    for (const char* const line : cases) {
        RecordingReader reader;
        EXPECT_FALSE(reader.Read(line)) << line;
        EXPECT_TRUE(reader.Error().starts_with("line 1: ")) << line;
        EXPECT_FALSE(reader.Started()) << line;
    }
}

TEST(Recording, RefusesALineBeyondItsBound)
{
    RecordingReader reader;
    reader.Read(kHeader);
    const std::string most(RecordingReader::kMostBytes, 'a');
    EXPECT_TRUE(reader.Read("+0.000000 R " + most));
    EXPECT_FALSE(reader.Read("+0.000000 R a" + most));
    EXPECT_EQ(reader.Error(), "line 3: the line is too long");
    EXPECT_FALSE(reader.Read("+0.000000 R \t" + most + most + most + most));
    EXPECT_EQ(reader.Error(), "line 4: the line is too long") << "and not looked at";
}

} // namespace
