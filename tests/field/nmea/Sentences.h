// SPDX-License-Identifier: MIT
//
// What a simulated receiver sends, in texts of its own making.
#pragma once

#include "field/nmea/EpochReader.h"
#include "field/nmea/Sentence.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace nmea_tests {

/// The first reading of the bodies as a whole line, with checksum and CR LF.
inline std::string Line(const std::string& body)
{
    return tiltpole::field::Framed(body);
}

/// Reads `body` as a sentence by one of the Read... functions.
template <class Record>
std::optional<Record> Read(std::optional<Record> (*read)(const tiltpole::field::Sentence&),
                           const std::string& body)
{
    std::string line = Line(body);
    line.resize(line.size() - 2);
    const auto sentence = tiltpole::field::ReadSentence(line);
    return sentence ? read(*sentence) : std::nullopt;
}

/// All epochs of `bytes`, fed in pieces of `size`, which all arrive at once.
inline std::vector<field::Epoch> EpochsOf(tiltpole::field::EpochReader& reader,
                                          std::string_view bytes, std::size_t size = 1U << 20U,
                                          field::Instant arrival = {})
{
    std::vector<field::Epoch> epochs;
    const auto take = [&] {
        for (field::Epoch& epoch : reader.Take())
            epochs.push_back(std::move(epoch));
    };
    for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size()))) {
        reader.Feed(bytes.substr(0, size), arrival);
        take();
    }
    reader.Tick(arrival + std::chrono::seconds(1));
    take();
    return epochs;
}

inline std::string Recorded()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/nmea_rover.txt", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace nmea_tests
