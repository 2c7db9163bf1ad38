// SPDX-License-Identifier: MIT
#include "field/pose/SerialFrames.h"

#include "field/pose/Readings.h"
#include "survey/Angle.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>

namespace tiltpole::field {

namespace {

constexpr std::uint8_t kHead = 0x55;
constexpr std::uint8_t kTime = 0x50;
constexpr std::uint8_t kAcceleration = 0x51;
constexpr std::uint8_t kRate = 0x52;
constexpr std::uint8_t kAngles = 0x53;
constexpr std::uint8_t kMagnetometer = 0x54;
constexpr std::uint8_t kQuaternion = 0x59;
constexpr std::uint8_t kLastType = 0x5F;

constexpr double kFull = 32768.0;
constexpr double kAccelerationRange = 16.0; // [g]
constexpr double kRateRange = 2000.0;       // [degrees/s]
constexpr double kAngleRange = 180.0;       // [degrees]

} // namespace

TypeTwoAngles AnglesOfUp(double x, double y, double z)
{
    return {survey::Rad2Deg(std::atan2(y, std::hypot(x, z))), survey::Rad2Deg(std::atan2(-x, z))};
}

// The third row of the rotation matrix, times the square of the quaternion's length.
TypeTwoAngles AnglesOfQuaternion(double w, double x, double y, double z)
{
    return AnglesOfUp(2.0 * (x * z - w * y), 2.0 * (y * z + w * x), w * w - x * x - y * y + z * z);
}

// The third row of Rz·Ry·Rx.
TypeTwoAngles AnglesOfTurns(double aboutX, double aboutY)
{
    const double a = survey::Deg2Rad(aboutX);
    const double b = survey::Deg2Rad(aboutY);
    return AnglesOfUp(-std::sin(b), std::cos(b) * std::sin(a), std::cos(b) * std::cos(a));
}

void SerialFrames::Feed(std::string_view bytes, Instant arrival)
{
    try {
        for (const char byte : bytes) {
            m_frame[m_filled++] = static_cast<std::uint8_t>(byte);
            if (m_filled == 1 && m_frame[0] != kHead) Resynchronize();
            if (m_filled == kLength) Understand(arrival);
        }
    } catch (...) {
        Restart();
        throw;
    }
}

void SerialFrames::Restart()
{
    m_filled = 0;
    m_synchronized = true;
    m_lastType = 0;
    m_closingType = 0;
    m_earlyEnds = 0;
    m_attitude = false;
    m_magnetometer = false;
    m_sample = {};
}

// Drops the first byte and what follows it up to the next possible head.
void SerialFrames::Resynchronize()
{
    if (m_synchronized) ++m_counters.bad;
    m_synchronized = false;
    const auto end = m_frame.begin() + static_cast<std::ptrdiff_t>(m_filled);
    const auto head = std::find(m_frame.begin() + 1, end, kHead);
    std::copy(head, end, m_frame.begin());
    m_filled = static_cast<std::size_t>(end - head);
}

void SerialFrames::Understand(Instant arrival)
{
    const int sum = std::accumulate(m_frame.begin(), m_frame.end() - 1, 0);
    const std::uint8_t type = m_frame[1];
    if ((sum & 0xFF) != m_frame.back() || type < kTime || type > kLastType) {
        Resynchronize();
        return;
    }
    m_filled = 0;
    m_synchronized = true;
    ++m_counters.lines;

    if (type <= m_lastType) {
        Close();
        LearnClosing();
    }
    m_lastType = type;
    m_sample.arrival = arrival;
    Read(type);
    if (type == m_closingType) Close();
}

// A cycle ended with `m_lastType`. Ends before the usual one are lost frames, until they are the
// rule.
void SerialFrames::LearnClosing()
{
    constexpr int kRule = 3; // cycles
    m_earlyEnds = m_lastType < m_closingType ? m_earlyEnds + 1 : 0;
    if (m_earlyEnds > 0 && m_earlyEnds < kRule) return;
    m_closingType = m_lastType;
    m_earlyEnds = 0;
}

void SerialFrames::Read(std::uint8_t type)
{
    PoseSensorData& data = m_sample.data;
    const auto readAngles = [&](const TypeTwoAngles& angles) {
        data.dPitch = angles.pitch;
        data.dRoll = angles.roll;
        m_attitude = true;
    };
    switch (type) {
    case kTime:
        ReadTime();
        break;
    case kAcceleration:
        data.dAcc_x = Value(0) / kFull * kAccelerationRange;
        data.dAcc_y = Value(1) / kFull * kAccelerationRange;
        data.dAcc_z = Value(2) / kFull * kAccelerationRange;
        break;
    case kRate:
        data.dGyro_x = Value(0) / kFull * kRateRange;
        data.dGyro_y = Value(1) / kFull * kRateRange;
        data.dGyro_z = Value(2) / kFull * kRateRange;
        break;
    case kAngles:
        readAngles(AnglesOfTurns(Value(0) / kFull * kAngleRange, Value(1) / kFull * kAngleRange));
        break;
    case kMagnetometer:
        data.dMag_x = Value(0);
        data.dMag_y = Value(1);
        data.dMag_z = Value(2);
        MakeMagnetometerB(data);
        m_magnetometer = true;
        break;
    case kQuaternion:
        if (Value(0) == 0.0 && Value(1) == 0.0 && Value(2) == 0.0 && Value(3) == 0.0) break;
        // It replaces the angles: types ascend within a cycle.
        readAngles(AnglesOfQuaternion(Value(0), Value(1), Value(2), Value(3)));
        break;
    default:
        ++m_counters.other;
    }
}

void SerialFrames::ReadTime()
{
    using namespace std::chrono;
    const year_month_day date(year(2000 + m_frame[2]), month(m_frame[3]), day(m_frame[4]));
    const int hour = m_frame[5];
    const int minute = m_frame[6];
    const int second = m_frame[7];
    const double milliseconds = Value(3);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return;
    if (milliseconds < 0.0 || milliseconds > 999.0) return;
    m_sample.data.nHour = hour;
    m_sample.data.nMinute = minute;
    m_sample.data.nSecond = second;
    const auto days = static_cast<double>(sys_days(date).time_since_epoch().count());
    m_sample.deviceSeconds =
        days * 86400.0 + hour * 3600.0 + minute * 60.0 + second + milliseconds / 1000.0;
}

// Ends the cycle; its sample is passed on where it is one.
void SerialFrames::Close()
{
    if (m_attitude && m_magnetometer) Emit(m_sample);
    m_attitude = false;
    m_magnetometer = false;
    m_sample = {};
}

double SerialFrames::Value(std::size_t index) const
{
    const std::size_t at = 2 + 2 * index;
    return static_cast<std::int16_t>(m_frame[at] | m_frame[at + 1] << 8);
}

} // namespace tiltpole::field
