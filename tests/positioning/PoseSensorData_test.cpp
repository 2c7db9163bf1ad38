// SPDX-License-Identifier: MIT
#include "positioning/PoseSensorData.h"

#include "positioning/MagneticParameters.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>

namespace {

std::wstring Wide(const CString& text)
{
    return text.GetString();
}

TEST(PoseSensorData, StartsAllZero)
{
    const PoseSensorData sample;
    EXPECT_EQ(sample.nHour + sample.nMinute + sample.nSecond, 0);
    for (const double value :
         {sample.dPitch,  sample.dRoll,  sample.dRot,     sample.dGyro_x,  sample.dGyro_y,
          sample.dGyro_z, sample.dAcc_x, sample.dAcc_y,   sample.dAcc_z,   sample.dMag_x,
          sample.dMag_y,  sample.dMag_z, sample.dMag_x_2, sample.dMag_y_2, sample.dMag_z_2,
          sample.dYaw,    sample.dYaw_2, sample.dYaw_Y,   sample.dDeltaXY, sample.dAzimuth,
          sample.dSpare})
        EXPECT_EQ(value, 0.0);
    EXPECT_EQ(sample.GetTurnFlag(), 0);
}

TEST(PoseSensorData, IsAPlainValueInItsDeclaredOrder)
{
    static_assert(std::is_trivially_copyable_v<PoseSensorData>);
    static_assert(std::is_standard_layout_v<PoseSensorData>);
    const PoseSensorData sample{7, 5, 9, 1.5, -2.5};
    EXPECT_EQ(sample.nSecond, 9);
    EXPECT_EQ(sample.dPitch, 1.5);
    EXPECT_EQ(sample.dRoll, -2.5);
}

TEST(PoseSensorData, WritesItsTimeWithTwoDigitsPerPart)
{
    PoseSensorData sample;
    sample.nHour = 7;
    sample.nMinute = 5;
    sample.nSecond = 9;
    EXPECT_EQ(Wide(sample.ToText().Left(9)), L"07:05:09,");
}

TEST(PoseSensorData, WritesNineteenValuesInDeclaredOrder)
{
    PoseSensorData sample;
    double* const fields[] = {&sample.dPitch,   &sample.dRoll,    &sample.dRot,     &sample.dGyro_x,
                              &sample.dGyro_y,  &sample.dGyro_z,  &sample.dAcc_x,   &sample.dAcc_y,
                              &sample.dAcc_z,   &sample.dMag_x,   &sample.dMag_y,   &sample.dMag_z,
                              &sample.dMag_x_2, &sample.dMag_y_2, &sample.dMag_z_2, &sample.dYaw,
                              &sample.dYaw_2,   &sample.dYaw_Y,   &sample.dDeltaXY};
    std::wstring expected = L"23:59:00";
    sample.nHour = 23;
    sample.nMinute = 59;
    for (int i = 0; i < 19; ++i) {
        *fields[i] = 10 + i; // two digits: 16 characters hold three blanks, "dd." and ten decimals
        expected += L",   " + std::to_wstring(10 + i) + L".0000000000";
    }
    sample.dAzimuth = 99.0;
    sample.SetTurnFlag(1);
    EXPECT_EQ(Wide(sample.ToText()), expected);
}

TEST(PoseSensorData, WritesValuesWiderThanTheirColumnWhole)
{
    PoseSensorData sample;
    sample.dPitch = -123456789.0625;
    sample.dRoll = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Wide(sample.ToText().Mid(8, 39)), L",-123456789.0625000000,             nan");
}

TEST(PoseSensorData, NamesAsManyColumnsAsItWritesPlusTheIndex)
{
    const std::wstring header = Wide(PoseSensorData::TextHeader());
    EXPECT_EQ(header, L"Index,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
                      L"dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,dYaw,dYaw_2,dYaw_Y,"
                      L"dDeltaXY,\r\n");
    const std::wstring line = Wide(PoseSensorData{}.ToText());
    EXPECT_EQ(std::count(header.begin(), header.end(), L','),
              std::count(line.begin(), line.end(), L',') + 2);
}

TEST(PoseSensorData, KeepsTheTurnFlagInTheStorageOfItsSpareField)
{
    PoseSensorData sample;
    sample.SetTurnFlag(1);
    EXPECT_EQ(sample.GetTurnFlag(), 1);
    int stored = 0;
    std::memcpy(&stored, &sample.dSpare, sizeof stored);
    EXPECT_EQ(stored, 1);

    const PoseSensorData copy = sample;
    EXPECT_EQ(copy.GetTurnFlag(), 1);
    sample.SetTurnFlag(0);
    EXPECT_EQ(sample.GetTurnFlag(), 0);
    EXPECT_EQ(sample.dSpare, 0.0);
}

TEST(Coordinate, StartsAtTheOrigin)
{
    const xyhCoordinate point;
    EXPECT_EQ(point.x, 0.0);
    EXPECT_EQ(point.y, 0.0);
    EXPECT_EQ(point.h, 0.0);
}

TEST(MagneticParameters, StartAsTheIdentityInTheirDeclaredOrder)
{
    const auto [x0, y0, z0, a, c, d, b, e] = Incline_MagneticCorrectParameter{};
    for (const double zero : {x0, y0, z0, a, c, d})
        EXPECT_EQ(zero, 0.0);
    EXPECT_EQ(b, 1.0);
    EXPECT_EQ(e, 1.0);
    const auto [dX, dY, dZ] = Incline_MagneticTranslationParameter{};
    EXPECT_EQ(dX, 0.0);
    EXPECT_EQ(dY, 0.0);
    EXPECT_EQ(dZ, 0.0);
}

} // namespace
