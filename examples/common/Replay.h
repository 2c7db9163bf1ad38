// SPDX-License-Identifier: MIT
//
// A recorded motion for the example hosts: poses with headings, and antenna positions.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include "positioning/PoseSensorData.h"

#include <charconv>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace replay {

struct Sample
{
    PoseSensorData pose; // headings computed
    xyhCoordinate antenna;
};

constexpr double kPoleLength = 2.0; // [m]
constexpr int kMilliseconds = 21;   // from one sample to the next

/// The samples of a log like examples/pole-replay.csv, which names its columns in the first line;
/// none where it cannot be read.
inline std::vector<Sample> Read(const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    std::string field;
    std::vector<std::string> columns;
    std::getline(file, line);
    for (std::istringstream names(line); std::getline(names, field, ',');)
        columns.push_back(field);

    CInclineSensor_Position position;
    std::vector<Sample> samples;
    while (std::getline(file, line)) {
        std::map<std::string, double> values; // by column; 0 where there is no number
        std::istringstream fields(line);
        for (const std::string& column : columns)
            if (std::getline(fields, field, ','))
                std::from_chars(field.data(), field.data() + field.size(), values[column]);
        Sample sample;
        sample.pose.dPitch = values["dPitch"];
        sample.pose.dRoll = values["dRoll"];
        sample.pose.dMag_x = values["dMag_x"];
        sample.pose.dMag_y = values["dMag_y"];
        sample.pose.dMag_z = values["dMag_z"];
        sample.pose.dMag_x_2 = values["dMag_x_2"];
        sample.pose.dMag_y_2 = values["dMag_y_2"];
        sample.pose.dMag_z_2 = values["dMag_z_2"];
        sample.antenna = {values["x"], values["y"], values["h"]};
        xyhCoordinate tip = sample.antenna;
        position.Position(sample.pose, kPoleLength, tip);
        samples.push_back(sample);
    }
    return samples;
}

} // namespace replay
