// SPDX-License-Identifier: MIT
#include "apps/tables/SampleLog.h"

#include "tests/apps/SampleRows.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::kLogHeader;
using apps::test::LogRow;
using apps::test::ScratchFolder;
using tables::InputError;
using tables::SampleLog;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

std::string Complaint(const std::string& content, bool antenna = true)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("log.csv", content);
    try {
        SampleLog log(path, {.antenna = antenna, .onBadRow = {}});
        while (log.Next()) {
        }
    } catch (const InputError& error) {
        return std::string(error.what()).substr(path.size() - std::string("log.csv").size());
    }
    return {};
}

TEST(SampleLog, FillsEveryFieldFromItsColumn)
{
    const ScratchFolder folder;
    SampleLog log(
        folder.Write("log.csv",
                     "h,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,"
                     "dAcc_z,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,dYaw,"
                     "dYaw_2,dYaw_Y,dDeltaXY,y,x\n"
                     "22,07:05:09,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,21,20\n"),
        {.antenna = true, .onBadRow = {}});
    ASSERT_TRUE(log.Next());
    const PoseSensorData& p = log.Pose();
    const double values[] = {
        p.dPitch,   p.dRoll,         p.dRot,          p.dGyro_x,      p.dGyro_y, p.dGyro_z,
        p.dAcc_x,   p.dAcc_y,        p.dAcc_z,        p.dMag_x,       p.dMag_y,  p.dMag_z,
        p.dMag_x_2, p.dMag_y_2,      p.dMag_z_2,      p.dYaw,         p.dYaw_2,  p.dYaw_Y,
        p.dDeltaXY, log.Antenna().x, log.Antenna().y, log.Antenna().h};
    double expected = 0.0;
    for (const double value : values)
        EXPECT_EQ(value, expected += 1.0);
    EXPECT_EQ(p.nHour, 7);
    EXPECT_EQ(p.nMinute, 5);
    EXPECT_EQ(p.nSecond, 9);
}

TEST(SampleLog, ReadsTheTextFormOfASample)
{
    PoseSensorData sample;
    sample.nHour = 23;
    sample.dPitch = -1.5;
    sample.dMag_z_2 = 439.25;
    sample.dDeltaXY = 7.0;
    std::string text;
    const CString line = sample.ToText();
    for (int i = 0; i < line.GetLength(); ++i)
        text += static_cast<char>(line.GetAt(i));
    const CString names = PoseSensorData::TextHeader();
    std::string header;
    for (int i = 0; i < names.GetLength(); ++i)
        header += static_cast<char>(names.GetAt(i));

    const ScratchFolder folder;
    SampleLog log(folder.Write("dump.csv", header + "1," + text + "\r\n"),
                  {.antenna = false, .onBadRow = {}});
    ASSERT_TRUE(log.Next());
    EXPECT_EQ(log.Pose().nHour, 23);
    EXPECT_EQ(log.Pose().dPitch, -1.5);
    EXPECT_EQ(log.Pose().dMag_z_2, 439.25);
    EXPECT_EQ(log.Pose().dDeltaXY, 7.0);
}

TEST(SampleLog, NamesEveryMissingColumn)
{
    EXPECT_EQ(Complaint("dPitch,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,x,y\n"),
              "log.csv:1: missing in the header: dRoll, dMag_z_2, h; it names dPitch, dMag_x, "
              "dMag_y, dMag_z, dMag_x_2, dMag_y_2, x, y");
}

TEST(SampleLog, RequiresTheAntennaOnlyOnRequest)
{
    const std::string turn = "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2\n"
                             "0,0,1,2,3,4,5,6\n";
    EXPECT_EQ(Complaint(turn, false), "");
    EXPECT_THAT(Complaint(turn, true), StartsWith("log.csv:1: missing in the header: N, E, h; "));
}

TEST(SampleLog, RequiresGyrosAndAccelerometersOnRequest)
{
    const ScratchFolder folder;
    const auto complaint = [&folder](const std::string& content) -> std::string {
        try {
            SampleLog log(folder.Write("log.csv", content),
                          {.inertial = true, .magnetometers = false, .onBadRow = {}});
            while (log.Next()) {
            }
        } catch (const InputError& error) {
            return std::string(error.what()).substr(folder.Path("").size());
        }
        return {};
    };
    EXPECT_THAT(complaint("dPitch,dRoll,dGyro_x,dGyro_y,dAcc_x,dAcc_y,dAcc_z\n"),
                StartsWith("log.csv:1: missing in the header: dGyro_z; "));
    const std::string header = "dPitch,dRoll,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,dMag_x\n";
    EXPECT_EQ(complaint(header + "0,0,1,2,3,0,0,1,\n"), "");
    EXPECT_EQ(complaint(header + "0,0,1,,3,0,0,1,\n"),
              "log.csv:2: dGyro_y is '', not a finite number");
}

TEST(SampleLog, MayHaveRowsWithoutAnAntenna)
{
    const ScratchFolder folder;
    const std::string blank = "10:57:07,0,0,400,0,0,-400,0,0,,,\n";
    SampleLog log(folder.Write("log.csv", kLogHeader + LogRow("0", "0") + blank + LogRow("0", "0")
                                              + "10:57:07,0,0,400,0,0,-400,0,0,1,,3\n"),
                  {.antenna = true, .blankAntenna = true, .onBadRow = {}});
    for (const bool expected : {true, false, true}) {
        ASSERT_TRUE(log.Next());
        EXPECT_EQ(log.HasAntenna(), expected);
    }
    EXPECT_THROW(log.Next(), InputError);
    EXPECT_THAT(Complaint(kLogHeader + blank), EndsWith("x is '', not a finite number"));
}

TEST(SampleLog, CarriesColumnsItDoesNotKnowAndTheTime)
{
    const ScratchFolder folder;
    const SampleLog log(
        folder.Write("log.csv", "Index," + kLogHeader.substr(0, kLogHeader.size() - 1) + ",note\n"),
        {.antenna = true, .onBadRow = {}});
    EXPECT_THAT(log.CarriedColumns(), ElementsAre(0U, 1U, 13U));
}

TEST(SampleLog, RejectsValuesThatAreNotFinite)
{
    for (const char* bad : {"nan", "inf", "-inf", "1e999", "", "ten", "1,0,0"}) {
        const std::string quoted = std::string("\"") + bad + '"';
        EXPECT_EQ(Complaint(kLogHeader + LogRow("0", "0") + LogRow("1", quoted)),
                  std::string("log.csv:3: dRoll is '") + bad + "', not a finite number");
    }
}

TEST(SampleLog, RejectsValuesThatCannotBe)
{
    struct Case
    {
        const char* pitch;
        const char* roll;
        const char* complaint;
    };
    constexpr Case cases[] = {
        {"-360", "360",    ""                                                 },
        {"400",  "0",      "dPitch is 400, not between -360 and 360 degrees"  },
        {"0",    "-360.5", "dRoll is -360.5, not between -360 and 360 degrees"},
        {"0",    "1e308",  "dRoll is 1e+308, not between -360 and 360 degrees"},
    };
    for (const Case& c : cases) {
        const std::string expected = *c.complaint ? std::string("log.csv:2: ") + c.complaint : "";
        EXPECT_EQ(Complaint(kLogHeader + LogRow(c.pitch, c.roll)), expected);
    }
}

// One value of each kind at its limit and beyond it.
TEST(SampleLog, LimitsReadingsCoordinatesAndOptionalValues)
{
    struct Case
    {
        const char* row;
        const char* complaint;
    };
    constexpr Case cases[] = {
        {"10:57:07,0,0,1e6,0,0,0,0,-1e6,1e8,-1e8,1e5,1e6", ""                                             },
        {"10:57:07,0,0,1e9,0,0,0,0,0,0,0,0,0",
         "dMag_x is 1000000000, not between -1000000 and 1000000 counts"                                  },
        {"10:57:07,0,0,0,0,0,0,0,-1000001,0,0,0,0",
         "dMag_z_2 is -1000001, not between -1000000 and 1000000 counts"                                  },
        {"10:57:07,0,0,0,0,0,0,0,0,100000001,0,0,0",
         "x is 100000001, not between -100000000 and 100000000 m"                                         },
        {"10:57:07,0,0,0,0,0,0,0,0,0,-1e9,0,0",
         "y is -1000000000, not between -100000000 and 100000000 m"                                       },
        {"10:57:07,0,0,0,0,0,0,0,0,0,0,500000,0",          "h is 500000, not between -100000 and 100000 m"},
        {"10:57:07,0,0,0,0,0,0,0,0,0,0,0,1e7",
         "dGyro_x is 10000000, not between -1000000 and 1000000"                                          },
    };
    const std::string header = kLogHeader.substr(0, kLogHeader.size() - 1) + ",dGyro_x\n";
    for (const Case& c : cases) {
        const std::string expected = *c.complaint ? std::string("log.csv:2: ") + c.complaint : "";
        EXPECT_EQ(Complaint(header + c.row + "\n", true), expected);
    }
}

TEST(SampleLog, ABlankOptionalFieldIsZero)
{
    EXPECT_EQ(Complaint("dGyro_x," + kLogHeader + "," + LogRow("0", "0")), "");
    EXPECT_EQ(Complaint("dGyro_x," + kLogHeader + "fast," + LogRow("0", "0")),
              "log.csv:2: dGyro_x is 'fast', not a finite number");
}

TEST(SampleLog, AcceptsOtherSpellingsOfItsColumns)
{
    const ScratchFolder folder;
    SampleLog log(folder.Write("log.csv", "# exported\nPITCH [deg]\troll\tmag_x\tMag A y\tMag-A-z"
                                          "\tmag_b_x\tmag_y_2\tdMag_z_2 [counts]\tACC_X [g]\t"
                                          "Northing [m]\tEasting [m]\tHeight [m]\tnote\n"
                                          "1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\ta, b\n"),
                  {.antenna = true, .onBadRow = {}});
    ASSERT_TRUE(log.Next());
    const PoseSensorData& p = log.Pose();
    const double values[] = {p.dPitch, p.dRoll,         p.dMag_x,        p.dMag_y,
                             p.dMag_z, p.dMag_x_2,      p.dMag_y_2,      p.dMag_z_2,
                             p.dAcc_x, log.Antenna().x, log.Antenna().y, log.Antenna().h};
    double expected = 0.0;
    for (const double value : values)
        EXPECT_EQ(value, expected += 1.0);
    EXPECT_THAT(log.CarriedColumns(), ElementsAre(12U));
}

TEST(SampleLog, ReadsTheColumnsThatTheCallerChose)
{
    const ScratchFolder folder;
    const std::string path = folder.Write(
        "log.csv",
        "p,q,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,pitch\n1,2,3,4,5,6,7,8,9\n");
    SampleLog log(
        path, {
                  .antenna = false, .onBadRow = {              },
                       .columns = { {"dPitch", "p"}, {"dRoll", "q"}}
    });
    ASSERT_TRUE(log.Next());
    EXPECT_EQ(log.Pose().dPitch, 1.0);
    EXPECT_EQ(log.Pose().dRoll, 2.0);
    EXPECT_THAT(log.CarriedColumns(), ElementsAre(8U));
}

TEST(SampleLog, TheTimeIsATimeOfDay)
{
    const auto complaint = [](const std::string& time) {
        return Complaint(kLogHeader + time + LogRow("0", "0").substr(8));
    };
    for (const char* good : {"00:00:00", "23:59:60", "10:57:07.25", "07:05:09."}) {
        EXPECT_EQ(complaint(good), "") << good;
    }
    for (const char* bad :
         {"24:00:00", "12:60:00", "12:00:61", "7:05:09", "120000", "12:00", "-1:00:00", "1-:00:00",
          "1x:00:00", "x1:00:00", "12:00:00x", "12:00:00.2s", ""}) {
        EXPECT_EQ(complaint(bad), std::string("log.csv:2: Time is '") + bad + "', not hh:mm:ss");
    }
}

TEST(SampleLog, SkipsBadRowsOnRequest)
{
    const ScratchFolder folder;
    std::vector<std::string> bad;
    SampleLog log(
        folder.Write("log.csv", kLogHeader + LogRow("1", "0") + "short\n" + LogRow("x", "0")
                                    + LogRow("2", "0")),
        {.antenna = true, .onBadRow = [&](const std::string& message) { bad.push_back(message); }});
    double sum = 0.0;
    while (log.Next())
        sum += log.Pose().dPitch;
    EXPECT_EQ(sum, 3.0);
    EXPECT_THAT(bad, ElementsAre(EndsWith("log.csv:3: 1 fields where the header names 12 columns"),
                                 EndsWith("log.csv:4: dPitch is 'x', not a finite number")));
}

TEST(SampleLog, RejectsWhatItsCallerCannotUse)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("log.csv", kLogHeader + LogRow("1", "0"));
    std::vector<std::string> bad;
    SampleLog skipping(path, {.antenna = true, .onBadRow = [&](const std::string& message) {
                                  bad.push_back(message);
                              }});
    ASSERT_TRUE(skipping.Next());
    skipping.Reject("it is too steep");
    EXPECT_THAT(bad, ElementsAre(path + ":2: it is too steep"));
    SampleLog strict(path, {.antenna = true, .onBadRow = {}});
    ASSERT_TRUE(strict.Next());
    EXPECT_THROW(strict.Reject("it is too steep"), InputError);
}

} // namespace
