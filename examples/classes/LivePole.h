// SPDX-License-Identifier: MIT
//
// The bytes that a receiver and a pose sensor on a planted pole send, with their arrivals.
#pragma once

#include "PlantedPole.h"
#include "field/Bridge.h"
#include "field/Recording.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace live {

template <class... Values>
std::string Printed(const char* format, Values... values)
{
    std::array<char, 256> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

/// With its checksum and line end.
inline std::string Sentence(const std::string& body)
{
    unsigned sum = 0;
    for (const char c : body)
        sum ^= static_cast<unsigned char>(c);
    return '$' + body + Printed("*%02X\r\n", sum);
}

/// $PTPS at t [s]: pitch, roll, magnetometers A and B, gyros, accelerations. The readings flicker a
/// little: a sensor that repeats itself is held for stuck.
inline std::string PoseLine(const planted::Pole& pole, double t)
{
    field::InertialSample s = pole.SampleAt(t);
    s.magnetic.x += 0.3 * std::sin(1000.0 * t);
    return Sentence(
        Printed("PTPS,1,%.0f,%.4f,%.4f,,", 1000.0 * t, s.tilt.pitch, s.tilt.roll)
        + Printed("%.2f,%.2f,%.2f,", s.magnetic.x, s.magnetic.y, s.magnetic.z)
        + Printed("%.2f,%.2f,%.2f,", -s.magnetic.x, -s.magnetic.y, s.magnetic.z)
        + Printed("%.3f,%.3f,%.3f,", s.rate.x, s.rate.y, s.rate.z)
        + Printed("%.5f,%.5f,%.5f", s.acceleration.x, s.acceleration.y, s.acceleration.z));
}

/// A fixed GGA, its date and its standard deviations at t [s] after 13:00 on 2026-11-22.
inline std::string EpochLines(const planted::Pole& pole, double t)
{
    const xyhCoordinate d = pole.AntennaFromTip(t);
    const field::Geodetic at = field::Offset(planted::kPlace, d.x, d.y, d.h);
    const auto place = [](double degrees, const char* format) {
        const int whole = static_cast<int>(degrees);
        return Printed(format, whole, 60.0 * (degrees - whole));
    };
    const std::string where =
        place(at.latitude, "%02d%010.7f,N,") + place(at.longitude, "%03d%010.7f,E,");
    const std::string time = Printed("13%02d%05.2f,", static_cast<int>(t) / 60, std::fmod(t, 60.0));
    return Sentence("GNGGA," + time + where + "4,14,0.7,"
                    + Printed("%.4f,M,40.000,M,1.0,0207", at.ellipsoidalHeight - 40.0))
           + Sentence("GNRMC," + time + "A," + where + "0.0,,221126,,,R,V")
           + Sentence("GNGST," + time + ",,,,0.008,0.008,0.015");
}

/// What arrives: poses at 50 Hz, epochs at 5 Hz and 0.12 s late.
inline std::vector<field::Record> Records(const planted::Pole& pole, int seconds)
{
    std::vector<field::Record> records;
    const std::chrono::milliseconds start(1000);
    for (int i = 0; i <= 50 * seconds; ++i) {
        const std::chrono::milliseconds at = start + std::chrono::milliseconds(20 * i);
        records.push_back({at, field::Channel::Pose, PoseLine(pole, 0.02 * i)});
        if (i % 10 == 6 && i > 10) // 0.12 s, six poses, after its moment
            records.push_back({at, field::Channel::Receiver, EpochLines(pole, 0.02 * (i - 6))});
    }
    return records;
}

/// A calibrated sensor whose readings need no correction, on a pole of 2 m.
inline field::Setup PoleSetup()
{
    field::Setup setup;
    setup.poleLength = planted::kLength;
    setup.delay = 0.12;
    setup.delaySigma = 0.007;
    setup.headingSigma = 1.0;
    setup.north = field::NorthSource::File;
    setup.calibration.bytes = "[parameters]";
    setup.calibration.complete = true;
    return setup;
}

/// The reports of a bridge that gets the records one by one.
inline std::vector<field::Report> Reports(const field::Setup& setup,
                                          const std::vector<field::Record>& records)
{
    field::Bridge bridge(setup);
    for (const field::Record& record : records) {
        field::Play(bridge, record);
        bridge.Tick(record.at);
    }
    bridge.Tick(records.back().at + std::chrono::milliseconds(100));
    return bridge.Take();
}

} // namespace live
