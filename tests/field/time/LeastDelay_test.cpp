// SPDX-License-Identifier: MIT
#include "field/time/LeastDelay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

using field::Instant;
using tiltpole::field::LeastDelay;

namespace {

using Random = std::mt19937_64;

// Latency beyond the least one of a line [s].
enum class Line { Serial, UsbFrames, Bluetooth, WiFi };

double Jitter(Line line, Random& random)
{
    const double uniform = std::uniform_real_distribution<double>(0.0, 1.0)(random);
    const auto exponential = [&](double mean) { return -mean * std::log(1.0 - uniform); };
    switch (line) {
    case Line::Serial:
        return uniform * 0.3e-3; // a FIFO's characters
    case Line::UsbFrames:
        return uniform * 1e-3; // polled once a frame
    case Line::Bluetooth:
        return exponential(0.010); // slots taken by others
    case Line::WiFi:
        break;
    }
    // Mostly quick, now and then held back by a beacon interval or a scan.
    const bool held = std::uniform_real_distribution<double>(0.0, 1.0)(random) < 0.05;
    return held ? 0.1 + exponential(0.1) : exponential(0.004);
}

Instant At(double seconds)
{
    return Instant(std::llround(seconds * 1e9));
}

struct Course
{
    Line line;
    double rate;  // [Hz]
    double drift; // of the device clock
};

// Absolute errors of the moments once the window is full [s].
std::vector<double> ErrorsOf(const Course& course, Random& random)
{
    constexpr double kFloor = 0.020; // least latency [s]
    constexpr double kLength = 400.0;
    const double filled = course.rate < 5.0 ? 60.0 : 30.0;
    LeastDelay delay;
    std::vector<double> errors;
    Instant last{};
    for (int i = 0; i < static_cast<int>(kLength * course.rate); ++i) {
        const double time = i / course.rate;
        const double device = 1000.0 + time * (1.0 + course.drift);
        // A line keeps the order of its bytes.
        last = std::max(last, At(5.0 + time + kFloor + Jitter(course.line, random)));
        delay.Add(device, last);
        if (time < filled) continue;
        const Instant truth = At(5.0 + time + kFloor);
        const Instant error = delay.HostTime(device).value() - truth;
        errors.push_back(std::fabs(std::chrono::duration<double>(error).count()));
    }
    return errors;
}

double Percentile99(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() * 99 / 100];
}

void CheckLine(Line line)
{
    Random random(20260816);
    for (const double rate : {1.0, 5.0, 10.0, 100.0}) {
        std::vector<double> errors;
        for (const double drift : {-30e-6, 0.0, 30e-6}) {
            const std::vector<double> some = ErrorsOf({line, rate, drift}, random);
            errors.insert(errors.end(), some.begin(), some.end());
        }
        EXPECT_LT(Percentile99(errors), rate < 5.0 ? 2e-3 : 1e-3) << rate << " Hz";
    }
}

} // namespace

TEST(LeastDelay, FindsTheOffsetThroughTheJitterOfSerialLines)
{
    CheckLine(Line::Serial);
}

TEST(LeastDelay, FindsTheOffsetThroughTheJitterOfUsbFrames)
{
    CheckLine(Line::UsbFrames);
}

TEST(LeastDelay, FindsTheOffsetThroughTheJitterOfBluetooth)
{
    CheckLine(Line::Bluetooth);
}

TEST(LeastDelay, FindsTheOffsetThroughTheJitterOfWiFi)
{
    CheckLine(Line::WiFi);
}

TEST(LeastDelay, KnowsNothingBeforeTheFirstSample)
{
    LeastDelay delay;
    EXPECT_FALSE(delay.HostTime(1.0));
    delay.Add(1.0, At(3.0));
    EXPECT_EQ(delay.HostTime(1.5), At(3.5));
    delay.Restart();
    EXPECT_FALSE(delay.HostTime(1.0));
}

// What the same samples, all kept, give.
TEST(LeastDelay, IsTheLeastOfItsWindow)
{
    Random random(7);
    std::uniform_real_distribution<double> uniform(0.0, 0.9);
    LeastDelay delay;
    std::vector<double> latencies;
    for (int i = 0; i < 2000; ++i) {
        latencies.push_back(uniform(random));
        const Instant arrival = At(i * 0.1 + latencies.back());
        delay.Add(i * 0.1, arrival);
        const Instant found = delay.HostTime(0.0).value();
        const auto leastOf = [&](int count) {
            const auto from = latencies.end() - std::min<std::ptrdiff_t>(count, i + 1);
            return At(*std::min_element(from, latencies.end()));
        };
        // Slices of 0.25 s leave whole: the window is 29 to 31 s of arrivals.
        ASSERT_GE(found + Instant(2), leastOf(315)) << i;
        ASSERT_LE(found - Instant(2), leastOf(285)) << i;
    }
}

TEST(LeastDelay, ForgetsWhatIsOlderThanItsWindow)
{
    LeastDelay delay;
    delay.Add(0.0, At(0.0));
    for (int i = 1; i <= 400; ++i)
        delay.Add(i * 0.1, At(i * 0.1 + 0.5));
    EXPECT_EQ(delay.HostTime(40.0), At(40.5));
}

TEST(LeastDelay, LooksBackTwiceAsFarOnASlowDevice)
{
    LeastDelay delay;
    delay.Add(0.0, At(0.0));
    for (int i = 1; i <= 50; ++i)
        delay.Add(i, At(i + 0.5));
    EXPECT_EQ(delay.HostTime(50.0), At(50.0));
    EXPECT_DOUBLE_EQ(delay.Period(), 1.0);
    for (int i = 51; i <= 70; ++i)
        delay.Add(i, At(i + 0.5));
    EXPECT_EQ(delay.HostTime(70.0), At(70.5));
}

TEST(LeastDelay, BeginsAnewWhenADeviceStaysLate)
{
    LeastDelay delay;
    for (int i = 0; i < 50; ++i)
        EXPECT_FALSE(delay.Add(i * 0.1, At(i * 0.1)));
    int restarts = 0;
    for (int i = 50; i < 100; ++i)
        restarts += delay.Add(i * 0.1, At(i * 0.1 + 3.0)) ? 1 : 0;
    EXPECT_EQ(restarts, 1);
    EXPECT_EQ(delay.HostTime(9.9), At(12.9));
}

// A radio that stops for five seconds delivers at once what it held back.
TEST(LeastDelay, SurvivesABurst)
{
    LeastDelay delay;
    for (int i = 0; i < 50; ++i)
        delay.Add(i * 0.1, At(i * 0.1));
    for (int i = 50; i < 100; ++i)
        EXPECT_FALSE(delay.Add(i * 0.1, At(9.9)));
    EXPECT_EQ(delay.HostTime(9.9), At(9.9));
}

TEST(LeastDelay, HoldsAnyRate)
{
    LeastDelay delay;
    for (int i = 0; i < 200000; ++i)
        delay.Add(i * 1e-3, At(i * 1.00003e-3));
    const Instant error = delay.HostTime(199.999).value() - At(199.999 * 1.00003);
    EXPECT_LT(std::abs(error.count()), 1'000'000);
}

TEST(LeastDelay, IsBoundedForArrivalsThatRunBack)
{
    LeastDelay delay;
    for (int i = 0; i < 5000; ++i) {
        const double arrival = 10.0 + (i % 2) * 5.0;
        delay.Add(arrival - i * 1e-6, At(arrival));
    }
    EXPECT_EQ(delay.HostTime(10.0), At(10.0));
}

TEST(LeastDelay, HasNoInstantForTimesBeyondAllClocks)
{
    LeastDelay delay;
    delay.Add(0.0, At(0.0));
    EXPECT_FALSE(delay.HostTime(1e12));
    EXPECT_FALSE(delay.HostTime(std::nan("")));
}
