// SPDX-License-Identifier: MIT
//
// The dump of a failed calibration, byte for byte.
#include "tests/calibration/AdjustTools.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

constexpr const char* kDumpA = "Debug_MagneticAdjust_ErrorData_A.csv";
constexpr const char* kHeader =
    "Index,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,dMag_x,dMag_y,"
    "dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,dYaw,dYaw_2,dYaw_Y,dDeltaXY,\r\n";

PoseSensorData Sample()
{
    PoseSensorData s;
    s.nHour = 7;
    s.nMinute = 5;
    s.nSecond = 9;
    double next = -1.5;
    for (double* field :
         {&s.dPitch, &s.dRoll, &s.dRot, &s.dGyro_x, &s.dGyro_y, &s.dGyro_z, &s.dAcc_x, &s.dAcc_y,
          &s.dAcc_z, &s.dMag_x, &s.dMag_y, &s.dMag_z, &s.dMag_x_2, &s.dMag_y_2, &s.dMag_z_2,
          &s.dYaw, &s.dYaw_2, &s.dYaw_Y, &s.dDeltaXY})
        *field = next++;
    s.dAzimuth = 99; // not part of the text
    return s;
}

std::string Row(const std::string& index)
{
    return index
           + ",07:05:09,   -1.5000000000,   -0.5000000000,    0.5000000000,    1.5000000000,"
             "    2.5000000000,    3.5000000000,    4.5000000000,    5.5000000000,"
             "    6.5000000000,    7.5000000000,    8.5000000000,    9.5000000000,"
             "   10.5000000000,   11.5000000000,   12.5000000000,   13.5000000000,"
             "   14.5000000000,   15.5000000000,   16.5000000000,\r\n";
}

TEST(ErrorDump, HoldsAHeaderAndANumberedRowPerHorizontalSample)
{
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, {2, Sample()}, {9, PoseSensorData()});
    ASSERT_EQ(adjust.Adjust(), 0);
    EXPECT_EQ(folder.Read(kDumpA), kHeader + Row("  0") + Row("  1"))
        << "more vertical samples add no rows";
}

// A calibrates; B reads one y in the whole vertical turn.
TEST(ErrorDump, OfBHoldsTheHorizontalSamplesToo)
{
    const auto horizontal = turns::Make({.samples = 50}, turns::TurnAxis::Horizontal);
    auto vertical = turns::Make({.samples = 70}, turns::TurnAxis::Vertical);
    for (PoseSensorData& s : vertical)
        s.dMag_y_2 = 7;
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, horizontal, vertical);
    ASSERT_EQ(adjust.Adjust(), 0);

    std::istringstream text(folder.Read("Debug_MagneticAdjust_ErrorData_B.csv"));
    std::string line;
    std::getline(text, line);
    EXPECT_EQ(line + '\n', kHeader);
    std::size_t rows = 0;
    while (std::getline(text, line)) {
        ASSERT_LT(rows, horizontal.size());
        char x[40];
        std::snprintf(x, sizeof x, ",%16.10f,", horizontal[rows++].dMag_x);
        EXPECT_NE(line.find(x), std::string::npos) << line;
    }
    EXPECT_EQ(rows, horizontal.size());
}

TEST(ErrorDump, GrowsOverRepeatedFailures)
{
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, {1, Sample()}, {});
    adjust.Adjust();
    adjust.Horizontal_Clear();
    adjust.Adjust();
    EXPECT_EQ(folder.Read(kDumpA), kHeader + Row("  0") + kHeader);
}

TEST(ErrorDump, IndicesBeyond999TakeTheRoomTheyNeed)
{
    const OwnDataFolder folder;
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, {1001, Sample()}, {}); // one point over and over: no ellipse
    ASSERT_EQ(adjust.Adjust(), 0);
    const std::string text = folder.Read(kDumpA);
    ASSERT_GT(text.size(), Row("1000").size());
    EXPECT_EQ(text.substr(text.size() - Row("1000").size()), Row("1000"));
}

TEST(ErrorDump, ThatCannotBeWrittenIsSkipped)
{
    const OwnDataFolder folder;
    std::ofstream(folder.Root()) << "a file where the folder should be";
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    Load(adjust, {1, Sample()}, {});
    EXPECT_EQ(adjust.Adjust(), 0);
    EXPECT_EQ(boxes.shown.size(), 2U) << "no further box";
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.Root()));
}

} // namespace
