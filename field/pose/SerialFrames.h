// SPDX-License-Identifier: MIT
//
// Frames of common serial modules with nine axes: 11 bytes, all values 16 bits, low byte first.
//
//   0x55, type, d0 ... d7, sum of the ten bytes before it
//
//   type   values                              scale
//   0x50   year - 2000, month, day, hour,      1; milliseconds as the fourth value
//          minute, second (bytes)
//   0x51   acceleration x, y, z                16 g / 32768
//   0x52   rate x, y, z                        2000 degrees/s / 32768
//   0x53   angles about x, y, z                180 degrees / 32768; the module turns about z, y, x
//   0x54   magnetometer x, y, z                1 count
//   0x59   quaternion w, x, y, z               1 / 32768, sensor to world (z up)
//
// Axes: x right, y forward, z up the pole, those of sensor type 2. A sample is made of the frames
// of one cycle (ascending types), at the type that closed the cycle before. It needs a quaternion
// (or, without one, angles) and a magnetometer. The module's own azimuth is not used: in many of
// its modes it counts from where it was switched on. Magnetometer B is made from A: (−Ax, −Ay, Az).
#pragma once

#include "field/pose/PoseReader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tiltpole::field {

using ::field::Instant;
using ::field::PoseSample;

/// Pitch and roll of sensor type 2 [degrees].
struct TypeTwoAngles
{
    double pitch = 0.0; // [-90, 90]
    double roll = 0.0;  // [-180, 180]
};

/// By the upward direction in the axes of the sensor, of any length:
///
///   sin pitch = y / |u|,   roll = atan2(−x, z)
///
/// The tip by CInclineSensor_Position of type 2 is then that of the rotation
/// (SerialFrames.GiveTheTipOfTheRotation).
TypeTwoAngles AnglesOfUp(double x, double y, double z);

/// Of a quaternion w, x, y, z, sensor to world, of any length but 0.
TypeTwoAngles AnglesOfQuaternion(double w, double x, double y, double z);

/// Of angles about x, y [degrees] by which the module turns, about z first.
TypeTwoAngles AnglesOfTurns(double aboutX, double aboutY);

class SerialFrames : public ::field::PoseReader
{
public:
    void Feed(std::string_view bytes, Instant arrival) override;
    void Restart() override;
    bool HasOneMagnetometer() const override { return true; }

private:
    static constexpr std::size_t kLength = 11;

    void Resynchronize();
    void Understand(Instant arrival);
    void LearnClosing();
    void Read(std::uint8_t type);
    void ReadTime();
    void Close();
    double Value(std::size_t index) const;

    std::array<std::uint8_t, kLength> m_frame{};
    std::size_t m_filled = 0;
    bool m_synchronized = true; // what is skipped counts as bad once
    std::uint8_t m_lastType = 0;
    std::uint8_t m_closingType = 0; // 0: not known yet
    int m_earlyEnds = 0;            // cycles in a row that ended before it
    bool m_attitude = false;
    bool m_magnetometer = false;
    PoseSample m_sample;
};

} // namespace tiltpole::field
