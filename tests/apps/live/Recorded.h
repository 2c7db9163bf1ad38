// SPDX-License-Identifier: MIT
//
// Recordings of poles that tests make, and the parameter file they are used with.
#pragma once

#include "field/Recording.h"
#include "positioning/InclineSensor_Position.h"
#include "tests/ScratchFolder.h"
#include "tests/field/bridge/LivePole.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace apps::test {

/// The records as a file, in the order in which they arrived.
inline std::string RecordingOf(const std::vector<field::Record>& records)
{
    constexpr double kStarted = 1795352877.0; // 2026-11-22T13:07:57Z
    std::string text = field::RecordingHeader(kStarted);
    for (const field::Record& record : records)
        text += field::RecordingLines(record.at, record.channel, record.bytes);
    return text;
}

/// A complete parameter file that corrects nothing, with a bias of both magnetometers.
inline std::string ParameterFile(const ScratchFolder& folder, double bias = 0.0)
{
    const std::string path = folder.Path("pole.cfg");
    CInclineSensor_Position sensor;
    sensor.SetMagneticBiasAngle_A(bias);
    sensor.SetMagneticBiasAngle_B(bias);
    EXPECT_EQ(sensor.ConfigSave(path.c_str()), 1);
    return path;
}

/// The options that belong to the tracks of tests/field/bridge/LivePole.h.
inline std::vector<std::string> PoleOptions(const std::string& config)
{
    return {"--pole", "2.0",     "--north",     "file",         "--config",
            config,   "--delay", "0.117,0.007", "--heading-sd", "1.0"};
}

inline std::vector<std::string> Joined(std::vector<std::string> a,
                                       const std::vector<std::string>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::size_t Count(const std::string& text, const std::string& what)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

} // namespace apps::test
