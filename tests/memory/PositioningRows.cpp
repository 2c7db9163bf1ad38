// SPDX-License-Identifier: MIT
#include "framework/core/TextConversion.h"
#include "tests/ScratchFolder.h"
#include "tests/memory/Rows.h"
#include "tests/positioning/Reach.h"

namespace sweep {

namespace {

struct Measured
{
    PoseSensorData sample;
    CString result;
};

std::string Describe(const Measured& m)
{
    return framework::ToUtf8(m.result.GetString());
}

struct Saved
{
    Saved()
    {
        folder.Write(kName, "[MagneticA.x0]12.5\r\n[MagneticBiasAngle_A]4.25\r\n");
        sensor.SetMagneticBiasAngle_A(1.5);
    }

    // The operations take a path by value, and a copy of it is the caller's.
    CString Path() { return std::move(paths[used++]); }

    static constexpr const char* kName = "a calibration whose name is too long to lie inside";
    ScratchFolder folder;
    CString paths[3] = {folder.Path(kName).c_str(), folder.Path(kName).c_str(),
                        folder.Path(kName).c_str()};
    int used = 0;
    CInclineSensor_Position sensor;
    int answer = 0;
};

std::string Describe(const Saved& s)
{
    std::string text = std::to_string(s.answer) + ' ' + Text(s.sensor.GetMagneticBiasAngle_A())
                       + Text(s.sensor.GetMagneticCorrectPar_A().x0);
    for (const std::string& name : s.folder.Names())
        text += name + ": " + s.folder.Read(name);
    return text;
}

void MeasureOnce()
{
    Reach reach;
    PoseSensorData sample;
    sample.dPitch = 3.0;
    sample.dRoll = -8.0;
    sample.dMag_x = 150.0;
    sample.dMag_x_2 = -150.0;
    reach.SetMagneticBiasAngle_A(1.0);
    xyhCoordinate tip{1.0, 2.0, 3.0};
    EXPECT_EQ(reach.Position(sample, 2.0, tip), 1);
    EXPECT_EQ(reach.Position_Geometry_A({}, sample, 2.0, tip), 1);
    EXPECT_EQ(reach.Position_Geometry_B({}, sample, 2.0, tip), 1);
    EXPECT_EQ(reach.Position_Math({}, sample, 2.0, tip), 1);
    EXPECT_EQ(reach.CalculateYaw_A(sample) + reach.CalculateYaw_B(sample), 2);
    double yaw = 0.0;
    double opposite = 0.0;
    EXPECT_EQ(reach.ConverseYaw(1.0, 1.0, yaw, opposite), 1);
    EXPECT_GT(reach.ConverseYaw_True(1.0, 1.0), 44.0);
    EXPECT_LT(reach.GetAngleofPoletoHorizontal(3.0, -8.0), 90.0);
    EXPECT_LE(reach.GetAngleofPoleProject(3.0, -8.0, 10.0, 1), 360.0);
    double smoothed[2] = {1.0, 2.0};
    reach.filter(smoothed, 3, 1);
    reach.AdjustAzimuth(yaw);
    reach.GetTiltAngle(yaw, opposite);
    EXPECT_GT(reach.ACOS(0.5) + reach.ASIN(0.5), 1.5);
    EXPECT_GT(reach.Deg2Rad(90.0) + reach.Rad2Deg(1.0), 50.0);
    EXPECT_EQ(reach.GetDistance({}, {3.0, 4.0, 0.0}), 5.0);
    reach.GetInclinePoint({}, 2.0, 80.0, 10.0);
    reach.GetSolvePoint({}, {1.0, 0.0, 0.5}, {0.0, 1.0, 0.25}, 2.0, 2.0, 2.0, tip);
}

} // namespace

std::vector<Row> PositioningRows()
{
    std::vector<Row> rows;
    rows.push_back(Operation<Measured>(
        "PoseSensorData::ToText", Shortage::Throws,
        [](Measured& m) { m.result = m.sample.ToText(); },
        [](const Measured& m) { return Describe(m); }));
    rows.push_back(Operation<Measured>(
        "PoseSensorData::TextHeader", Shortage::Throws,
        [](Measured& m) { m.result = PoseSensorData::TextHeader(); },
        [](const Measured& m) { return Describe(m); }));
    rows.push_back(Operation<Saved>(
        "CInclineSensor_Position::ConfigSave", Shortage::Reports,
        [](Saved& s) { s.answer = s.sensor.ConfigSave(s.Path()); },
        [](const Saved& s) { return Describe(s); }));
    rows.push_back(Operation<Saved>(
        "CInclineSensor_Position::ConfigRead", Shortage::Reports,
        [](Saved& s) { s.answer = s.sensor.ConfigRead(s.Path()); },
        [](const Saved& s) { return Describe(s); }));
    rows.push_back(WithoutMemory(
        "CInclineSensor_Position::ACOS CInclineSensor_Position::ASIN "
        "CInclineSensor_Position::AdjustAzimuth CInclineSensor_Position::CalculateYaw_A "
        "CInclineSensor_Position::CalculateYaw_B CInclineSensor_Position::ConverseYaw "
        "CInclineSensor_Position::ConverseYaw_True CInclineSensor_Position::Deg2Rad "
        "CInclineSensor_Position::GetAngleofPoleProject "
        "CInclineSensor_Position::GetAngleofPoletoHorizontal CInclineSensor_Position::GetDistance "
        "CInclineSensor_Position::GetInclinePoint CInclineSensor_Position::GetSolvePoint "
        "CInclineSensor_Position::GetTiltAngle CInclineSensor_Position::Position "
        "CInclineSensor_Position::Position_Geometry_A CInclineSensor_Position::Position_Geometry_B "
        "CInclineSensor_Position::Position_Math CInclineSensor_Position::Rad2Deg "
        "CInclineSensor_Position::SetMagneticBiasAngle_A CInclineSensor_Position::filter",
        MeasureOnce));
    return rows;
}

} // namespace sweep
