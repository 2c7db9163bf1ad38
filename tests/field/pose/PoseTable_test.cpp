// SPDX-License-Identifier: MIT
#include "field/pose/PoseReader.h"
#include "framework/core/TextConversion.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

using namespace std::chrono_literals;
using field::PoseFormat;
using field::PoseSample;

namespace {

std::string Utf8(const CString& text)
{
    return framework::ToUtf8(std::wstring_view(text));
}

PoseSensorData SomePose()
{
    PoseSensorData data;
    data.nHour = 9;
    data.nMinute = 8;
    data.nSecond = 7;
    data.dPitch = 3.25;
    data.dRoll = -8.5;
    data.dGyro_z = 0.5;
    data.dAcc_x = 0.125;
    data.dMag_x = 150.0;
    data.dMag_y = -2.0;
    data.dMag_z = 400.0;
    data.dMag_x_2 = -151.0;
    data.dMag_y_2 = 3.0;
    data.dMag_z_2 = 401.0;
    return data;
}

// What the rows as the library writes them give, with and without their header.
void CheckRow(bool withHeader)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    if (withHeader) reader->Feed(Utf8(PoseSensorData::TextHeader()), 1s);
    reader->Feed("0," + Utf8(SomePose().ToText()) + "\r\n", 2s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    const PoseSensorData& data = samples[0].data;
    EXPECT_EQ(Utf8(data.ToText()), Utf8(SomePose().ToText()));
    EXPECT_EQ(samples[0].arrival, 2s);
    EXPECT_FALSE(samples[0].deviceSeconds);
    EXPECT_FALSE(reader->HasOneMagnetometer());
    EXPECT_EQ(reader->Count().bad, 0U);
}

void CheckRefusal(const std::string& row)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z\n", 1s);
    reader->Feed(row, 1s);
    EXPECT_TRUE(reader->Take().empty()) << row;
    EXPECT_EQ(reader->Count().bad, 1U) << row;
    reader->Feed("10:57:07,1,2,3,4,5\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U) << row;
}

} // namespace

TEST(PoseTable, ReadsWhatThePoseWrites)
{
    CheckRow(true);
}

TEST(PoseTable, NeedsNoHeaderForThoseColumns)
{
    CheckRow(false);
}

TEST(PoseTable, FollowsTheNamesOfAHeader)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("seconds, dRoll ,dPitch,note,dMag_z,dMag_y,dMag_x\n12.5,2,1,x,5,4,3\n", 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    const PoseSensorData& data = samples[0].data;
    EXPECT_EQ(samples[0].deviceSeconds, 12.5);
    EXPECT_EQ(data.dPitch, 1.0);
    EXPECT_EQ(data.dRoll, 2.0);
    EXPECT_EQ(data.dMag_x, 3.0);
    EXPECT_EQ(data.dMag_z, 5.0);
}

TEST(PoseTable, MakesMagnetometerBWhereThereIsNone)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("dPitch,dRoll,dMag_x,dMag_y,dMag_z\n1,2,3,4,5\n", 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_TRUE(reader->HasOneMagnetometer());
    EXPECT_EQ(samples[0].data.dMag_x_2, -3.0);
    EXPECT_EQ(samples[0].data.dMag_y_2, -4.0);
    EXPECT_EQ(samples[0].data.dMag_z_2, 5.0);
}

TEST(PoseTable, TakesATimeWithDecimalsForTheClock)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z\n10:57:07.250,1,2,3,4,5\n", 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_DOUBLE_EQ(samples[0].deviceSeconds.value(), 39427.25);
    EXPECT_EQ(samples[0].data.nSecond, 7);
}

TEST(PoseTable, NeedsANumberOfSecondsWhereItHasSuchAColumn)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("seconds,dPitch,dRoll,dMag_x,dMag_y,dMag_z\nlate,1,2,3,4,5\n,1,2,3,4,5\n", 1s);
    EXPECT_TRUE(reader->Take().empty());
    EXPECT_EQ(reader->Count().bad, 2U);
    reader->Feed("1.5,1,2,3,4,5\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U);
}

TEST(PoseTable, LeavesOutWhatStandsBehindItsFirst64Fields)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    const std::string header = "dPitch,dRoll,dMag_x,dMag_y,dMag_z";
    const std::string others59(59, ',');
    reader->Feed(header + others59 + "seconds\n1,2,3,4,5" + others59 + "6\n", 1s);
    std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].deviceSeconds, 6.0) << "the 64th";
    reader->Feed(header + "," + others59 + "seconds\n1,2,3,4,5," + others59 + "6\n", 1s);
    samples = reader->Take();
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_FALSE(samples[0].deviceSeconds) << "the 65th";
}

TEST(PoseTable, CountsOnAcrossMidnight)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z\n"
                 "23:59:59.75,1,2,3,4,5\n00:00:00.00,1,2,3,4,5\n00:00:00.25,1,2,3,4,5\n",
                 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 3U);
    EXPECT_DOUBLE_EQ(samples[0].deviceSeconds.value(), 86399.75);
    EXPECT_DOUBLE_EQ(samples[1].deviceSeconds.value(), 86400.0);
    EXPECT_DOUBLE_EQ(samples[2].deviceSeconds.value(), 86400.25);
}

TEST(PoseTable, CountsRowsOfTheWrongForm)
{
    const char* const bad[] = {
        "10:57:07,1,2,3,4\n",           // a field missing
        "10:57:07,1,2,3,4,\n",          // empty
        "10:57:07,1,2,3,4,five\n",      // no number
        "10:57,1,2,3,4,5\n",            // no time
        "25:57:07,1,2,3,4,5\n",         // no hour
        "-1:57:07,1,2,3,4,5\n",         //
        "nan:57:07,1,2,3,4,5\n",        //
        "ten:57:07,1,2,3,4,5\n",        //
        "10:60:07,1,2,3,4,5\n",         // no minute
        "10:-1:07,1,2,3,4,5\n",         //
        "10:x:07,1,2,3,4,5\n",          //
        "10:57:61,1,2,3,4,5\n",         // no second
        "10:57:-1,1,2,3,4,5\n",         //
        "dPitch,dRoll,dMag_x,dMag_y\n", // a header without a column that is needed
    };
    for (const char* const row : bad)
        CheckRefusal(row);
}

TEST(PoseTable, HoldsLinesOfOneKibibyteAtMost)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed("dPitch,dRoll,dMag_x,dMag_y,dMag_z,note\n", 1s);
    const std::string row = "1,2,3,4,5,";
    const std::string longest(1024 - row.size(), 'x');
    reader->Feed(row + longest + "\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U);
    reader->Feed(row + longest + "x\n", 1s);
    EXPECT_EQ(reader->Take().size(), 0U);
    EXPECT_EQ(reader->Count().bad, 1U);
    reader->Feed(row + "\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U);
}

// Rows have no checksum: "21.25,..." of which the first digit is lost reads as another pitch.
TEST(PoseTable, TakesNoRowWhoseBeginningWasForgotten)
{
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    const std::string header = "dPitch,dRoll,dMag_x,dMag_y,dMag_z\n";
    reader->Feed(header + "21.25,2,3,4,5\n2", 1s);
    reader->Restart();
    reader->Feed("1.25,2,3,4,5\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U);
    EXPECT_EQ(reader->Count().bad, 1U);
    reader->Feed("2", 1s);
    reader->Restart();
    reader->Feed(header + "7,2,3,4,5\n", 1s);
    EXPECT_EQ(reader->Take().size(), 1U) << "a device that began anew";
    reader->Feed("2", 1s);
    reader->Restart();
    reader->Restart();
    reader->Feed("1.25,2,3,4,5\n", 1s);
    EXPECT_TRUE(reader->Take().empty()) << "once more before the line ended";
}

TEST(PoseTable, ReadsTheRecordedPole)
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv", std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    const auto reader = field::MakePoseReader(PoseFormat::Csv);
    reader->Feed(text.str(), 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 2071U);
    EXPECT_EQ(reader->Count().bad, 0U);
    EXPECT_EQ(samples[2].deviceSeconds, 40.131);
    EXPECT_EQ(samples[2].data.dMag_z_2, -438.38);
}
