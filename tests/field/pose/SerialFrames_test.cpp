// SPDX-License-Identifier: MIT
#include "field/pose/SerialFrames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <string>

using namespace std::chrono_literals;
using field::PoseFormat;
using field::PoseSample;
using tiltpole::field::AnglesOfQuaternion;
using tiltpole::field::AnglesOfTurns;
using tiltpole::field::TypeTwoAngles;

namespace {

constexpr double kPi = 3.14159265358979323846;

using Values = std::array<int, 4>;

// One frame of four values, low bytes first.
std::string Frame(int type, const Values& values)
{
    std::string frame = {'\x55', static_cast<char>(type)};
    for (const int value : values) {
        frame += static_cast<char>(value & 0xFF);
        frame += static_cast<char>(value >> 8 & 0xFF);
    }
    int sum = 0;
    for (const char byte : frame)
        sum += static_cast<unsigned char>(byte);
    frame += static_cast<char>(sum & 0xFF);
    return frame;
}

// 2026-11-22 13:07:58.250
std::string Time(int milliseconds = 250)
{
    return Frame(0x50, {26 | 11 << 8, 22 | 13 << 8, 7 | 58 << 8, milliseconds});
}

const Values kLevel = {32767, 0, 0, 0};

std::string Cycle(int milliseconds, const Values& quaternion = kLevel)
{
    return Time(milliseconds) + Frame(0x51, {0, 1024, 2048, 0}) + Frame(0x52, {-16384, 0, 164, 0})
           + Frame(0x54, {1500, -200, -3800, 0}) + Frame(0x59, quaternion);
}

std::vector<PoseSample> SamplesOf(const std::string& bytes)
{
    const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
    reader->Feed(bytes, 1s);
    return reader->Take();
}

struct Vector
{
    double x, y, z;
};

// A rotation from the sensor (x right, y forward, z up) to the world (x east, y north, z up), by turning
// about a level axis and then about the vertical.
struct Rotation
{
    double axis;  // azimuth of the level axis, from east towards north [rad]
    double lean;  // turn about it [rad]
    double about; // turn about the vertical after that [rad]

    Vector operator()(const Vector& v) const
    {
        const double ux = std::cos(axis);
        const double uy = std::sin(axis);
        const double along = (ux * v.x + uy * v.y) * (1.0 - std::cos(lean));
        const double c = std::cos(lean);
        const double s = std::sin(lean);
        const Vector w = {c * v.x + s * uy * v.z + along * ux, c * v.y - s * ux * v.z + along * uy,
                          c * v.z + s * (ux * v.y - uy * v.x)};
        return {std::cos(about) * w.x - std::sin(about) * w.y,
                std::sin(about) * w.x + std::cos(about) * w.y, w.z};
    }

    // What a sensor so turned sees of a vector of the world.
    Vector Seen(const Vector& v) const
    {
        const Vector x = (*this)({1, 0, 0});
        const Vector y = (*this)({0, 1, 0});
        const Vector z = (*this)({0, 0, 1});
        return {x.x * v.x + x.y * v.y + x.z * v.z, y.x * v.x + y.y * v.y + y.z * v.z,
                z.x * v.x + z.y * v.y + z.z * v.z};
    }

    std::array<double, 4> Quaternion() const
    {
        const double c = std::cos(lean / 2.0);
        const double s = std::sin(lean / 2.0);
        const double ca = std::cos(about / 2.0);
        const double sa = std::sin(about / 2.0);
        const double x = s * std::cos(axis);
        const double y = s * std::sin(axis);
        return {ca * c, ca * x - sa * y, ca * y + sa * x, sa * c};
    }
};

Rotation Random(std::mt19937_64& random, double most)
{
    std::uniform_real_distribution<double> turn(-kPi, kPi);
    std::uniform_real_distribution<double> lean(0.0, most);
    return {turn(random), lean(random), turn(random)};
}

// Tip by type 2, about a zero point: x north, y east.
xyhCoordinate TipOf(PoseSensorData data)
{
    CInclineSensor_Position sensor;
    sensor.SetSensorType(2);
    xyhCoordinate tip;
    sensor.Position(data, 2.0, tip);
    return tip;
}

double MissOf(const xyhCoordinate& tip, const Rotation& rotation)
{
    const Vector pole = rotation({0, 0, 1});
    return std::hypot(tip.x + 2.0 * pole.y, tip.y + 2.0 * pole.x, tip.h + 2.0 * pole.z);
}

constexpr Vector kField = {0.0, 10000.0, -21000.0}; // east, north, up [counts]

} // namespace

TEST(SerialFrames, GiveTheTipOfTheRotation)
{
    std::mt19937_64 random(5);
    double worst = 0.0;
    for (int i = 0; i < 20000; ++i) {
        const Rotation rotation = Random(random, 80.0 * kPi / 180.0);
        const auto [w, x, y, z] = rotation.Quaternion();
        const TypeTwoAngles angles = AnglesOfQuaternion(w, x, y, z);
        const Vector seen = rotation.Seen(kField);
        PoseSensorData data;
        data.dPitch = angles.pitch;
        data.dRoll = angles.roll;
        data.dMag_x = seen.x;
        data.dMag_y = seen.y;
        data.dMag_z = seen.z;
        worst = std::max(worst, MissOf(TipOf(data), rotation));
    }
    // The solution's arc cosines lose half of the digits near the plumb line.
    EXPECT_LT(worst, 1e-7);
}

// The frames' own resolution: 2 m · 3e-5 for each of the angles, and half a count of 10,000.
TEST(SerialFrames, GiveTheTipThroughTheirBytes)
{
    std::mt19937_64 random(6);
    const auto rounded = [](double value) { return static_cast<int>(std::lround(value)); };
    std::string bytes;
    std::vector<Rotation> rotations;
    for (int i = 0; i < 500; ++i) {
        const Rotation rotation = Random(random, 45.0 * kPi / 180.0);
        const auto [w, x, y, z] = rotation.Quaternion();
        const Vector seen = rotation.Seen(kField);
        bytes += Frame(0x54, {rounded(seen.x), rounded(seen.y), rounded(seen.z), 0});
        bytes += Frame(
            0x59, {rounded(w * 32767), rounded(x * 32767), rounded(y * 32767), rounded(z * 32767)});
        rotations.push_back(rotation);
    }
    bytes += Frame(0x54, {});
    const std::vector<PoseSample> samples = SamplesOf(bytes);
    ASSERT_EQ(samples.size(), rotations.size());
    for (std::size_t i = 0; i < rotations.size(); ++i)
        EXPECT_LT(MissOf(TipOf(samples[i].data), rotations[i]), 0.3e-3) << i;
}

TEST(SerialFrames, TurnAboutZYX)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> turn(-60.0, 60.0);
    for (int i = 0; i < 1000; ++i) {
        const double aboutX = turn(random);
        const double aboutY = turn(random);
        const double a = aboutX * kPi / 360.0;
        const double b = aboutY * kPi / 360.0;
        // Quaternion of the turn about y times that about x.
        const TypeTwoAngles expected =
            AnglesOfQuaternion(std::cos(b) * std::cos(a), std::cos(b) * std::sin(a),
                               std::sin(b) * std::cos(a), -std::sin(b) * std::sin(a));
        const TypeTwoAngles found = AnglesOfTurns(aboutX, aboutY);
        ASSERT_NEAR(found.pitch, expected.pitch, 1e-12);
        ASSERT_NEAR(found.roll, expected.roll, 1e-12);
    }
}

TEST(SerialFrames, RaiseTheForwardAxisByPositivePitchAndLowerTheRightSideByPositiveRoll)
{
    const double half = std::sin(5.0 * kPi / 180.0); // of a turn by 10 degrees
    const double rest = std::cos(5.0 * kPi / 180.0);
    EXPECT_NEAR(AnglesOfQuaternion(rest, half, 0, 0).pitch, 10.0, 1e-12);
    EXPECT_NEAR(AnglesOfQuaternion(rest, 0, half, 0).roll, 10.0, 1e-12);
    EXPECT_NEAR(AnglesOfQuaternion(2 * rest, 0, 0, 2 * half).roll, 0.0, 1e-12);
}

TEST(SerialFrames, ScaleWhatTheyHold)
{
    const std::vector<PoseSample> samples = SamplesOf(Cycle(250) + Cycle(260));
    ASSERT_EQ(samples.size(), 2U);
    const PoseSample& sample = samples[0];
    const PoseSensorData& data = sample.data;
    EXPECT_DOUBLE_EQ(data.dAcc_y, 0.5);
    EXPECT_DOUBLE_EQ(data.dAcc_z, 1.0);
    EXPECT_DOUBLE_EQ(data.dGyro_x, -1000.0);
    EXPECT_NEAR(data.dGyro_z, 10.0, 0.05);
    EXPECT_EQ(data.dMag_x, 1500.0);
    EXPECT_EQ(data.dMag_z, -3800.0);
    EXPECT_EQ(data.nHour, 13);
    EXPECT_EQ(data.nSecond, 58);
    // By `date -u -d "2026-11-22 13:07:58" +%s`.
    EXPECT_DOUBLE_EQ(sample.deviceSeconds.value(), 1795352878.25);
    EXPECT_FALSE(sample.heading);
}

TEST(SerialFrames, MakeMagnetometerBFromA)
{
    const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
    reader->Feed(Cycle(0) + Cycle(10), 1s);
    const std::vector<PoseSample> samples = reader->Take();
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_TRUE(reader->HasOneMagnetometer());
    EXPECT_EQ(samples[0].data.dMag_x_2, -1500.0);
    EXPECT_EQ(samples[0].data.dMag_y_2, 200.0);
    EXPECT_EQ(samples[0].data.dMag_z_2, -3800.0);
}

TEST(SerialFrames, EndACycleWithTheTypeThatEndedTheLast)
{
    const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
    reader->Feed(Cycle(0), 1s);
    EXPECT_EQ(reader->Take().size(), 0U);
    reader->Feed(Cycle(10), 2s);
    const std::vector<PoseSample> both = reader->Take();
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0].arrival, 1s);
    EXPECT_EQ(both[1].arrival, 2s);
    reader->Feed(Cycle(20), 3s);
    EXPECT_EQ(reader->Take().size(), 1U);
}

TEST(SerialFrames, AreTheSameHoweverTheyAreCut)
{
    const std::string bytes = Cycle(0) + "noise" + Cycle(10) + Cycle(20);
    for (std::size_t size = 1; size < 80; ++size) {
        const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
        for (std::size_t at = 0; at < bytes.size(); at += size)
            reader->Feed(std::string_view(bytes).substr(at, size), 1s);
        EXPECT_EQ(reader->Take().size(), 3U) << size;
        EXPECT_EQ(reader->Count().bad, 1U) << size;
    }
}

TEST(SerialFrames, LoseOneSampleWithALostQuaternion)
{
    std::string bytes;
    for (int i = 0; i < 10; ++i) {
        std::string cycle = Cycle(10 * i);
        if (i == 5) cycle.back() = static_cast<char>(cycle.back() ^ 1);
        bytes += cycle;
    }
    const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
    reader->Feed(bytes, 1s);
    EXPECT_EQ(reader->Take().size(), 9U);
    EXPECT_EQ(reader->Count().bad, 1U);
}

TEST(SerialFrames, FindTheirHeadAgainAmongFalseOnes)
{
    // Every byte of the values is a head.
    std::string bytes;
    for (int i = 0; i < 6; ++i)
        bytes += Frame(0x54, {0x5555, 0x5555, 0x5555, 0x5555}) + Frame(0x59, kLevel);
    const std::vector<PoseSample> samples = SamplesOf(bytes.substr(5));
    EXPECT_GE(samples.size(), 4U);
    for (const PoseSample& sample : samples)
        EXPECT_EQ(sample.data.dMag_x, 0x5555);
}

TEST(SerialFrames, LoseNothingToAFalseHeadBeforeThem)
{
    const std::vector<PoseSample> samples = SamplesOf("\x55" + Cycle(0) + Cycle(10));
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_TRUE(samples[0].deviceSeconds);
}

TEST(SerialFrames, GiveNoSampleWithoutMagnetometerOrAttitude)
{
    std::string bytes;
    for (int i = 0; i < 5; ++i)
        bytes += Time(i) + Frame(0x59, kLevel);
    for (int i = 0; i < 5; ++i)
        bytes += Time(i) + Frame(0x54, {1, 2, 3, 0});
    for (int i = 0; i < 5; ++i)
        bytes += Frame(0x54, {1, 2, 3, 0}) + Frame(0x59, {});
    EXPECT_TRUE(SamplesOf(bytes).empty());
}

TEST(SerialFrames, PreferTheQuaternionToTheAngles)
{
    std::string with;
    std::string without;
    for (int i = 0; i < 3; ++i) {
        const std::string some = Frame(0x53, {0, 3641, 0, 0}) + Frame(0x54, {1, 2, 3 + i, 0});
        with += some + Frame(0x59, kLevel);
        without += some;
    }
    ASSERT_FALSE(SamplesOf(with).empty());
    EXPECT_NEAR(SamplesOf(with)[0].data.dRoll, 0.0, 1e-12);
    ASSERT_FALSE(SamplesOf(without).empty());
    EXPECT_NEAR(SamplesOf(without)[0].data.dRoll, 20.0, 0.01);
}

TEST(SerialFrames, TakeNoQuaternionOfZeros)
{
    // Each value alone makes it a rotation.
    const Values quaternions[] = {
        {32767, 0,     0,     0    },
        {0,     32767, 0,     0    },
        {0,     0,     32767, 0    },
        {0,     0,     0,     32767}
    };
    for (const Values& quaternion : quaternions)
        EXPECT_FALSE(SamplesOf(Cycle(0, quaternion) + Cycle(10, quaternion)).empty());
    EXPECT_TRUE(SamplesOf(Cycle(0, {}) + Cycle(10, {})).empty());
}

TEST(SerialFrames, PassOverFramesOfOtherTypes)
{
    const auto reader = field::MakePoseReader(PoseFormat::SerialFrames);
    std::string bytes;
    for (int i = 0; i < 3; ++i)
        bytes += Time(i) + Frame(0x54, {1, 2, 3 + i, 0}) + Frame(0x56, {1, 2, 3, 4})
                 + Frame(0x59, kLevel);
    reader->Feed(bytes, 1s);
    EXPECT_EQ(reader->Take().size(), 3U);
    EXPECT_EQ(reader->Count().other, 3U);
    EXPECT_EQ(reader->Count().bad, 0U);
    reader->Feed(Frame(0x4F, {1, 2, 3, 4}) + Frame(0x7F, {1, 2, 3, 4}), 1s);
    EXPECT_GT(reader->Count().bad, 0U) << "types that no sensor sends";
}

TEST(SerialFrames, HaveNoClockWithAnImpossibleTime)
{
    const auto secondsOf = [](const Values& time) {
        std::string bytes;
        for (int i = 0; i < 2; ++i)
            bytes += Frame(0x50, time) + Frame(0x54, {1, 2, 3, 0}) + Frame(0x59, kLevel);
        const auto samples = SamplesOf(bytes);
        return samples.empty() ? std::optional<double>(0.0) : samples[0].deviceSeconds;
    };
    constexpr Values kImpossible[] = {
        {26 | 13 << 8, 22 | 13 << 8, 7 | 58 << 8,  0   }, // month
        {26 | 11 << 8, 31 | 13 << 8, 7 | 58 << 8,  0   }, // day
        {26 | 11 << 8, 22 | 24 << 8, 7 | 58 << 8,  0   }, // hour
        {26 | 11 << 8, 22 | 13 << 8, 60 | 58 << 8, 0   }, // minute
        {26 | 11 << 8, 22 | 13 << 8, 7 | 60 << 8,  0   }, // second
        {26 | 11 << 8, 22 | 13 << 8, 7 | 58 << 8,  -1  }, // millisecond
        {26 | 11 << 8, 22 | 13 << 8, 7 | 58 << 8,  1000},
    };
    for (const Values& time : kImpossible)
        EXPECT_FALSE(secondsOf(time)) << time[0] << ' ' << time[1] << ' ' << time[2];
    EXPECT_EQ(secondsOf({26 | 11 << 8, 22 | 23 << 8, 59 | 59 << 8, 999}),
              1795391999.999); // 2026-11-22 23:59:59.999
}
