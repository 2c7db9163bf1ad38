// SPDX-License-Identifier: MIT
//
// field::RecordingReader: what arrived of a live pole as lines of text, and played to a bridge again.
#include "field/Recording.h"

#include "LivePole.h"

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>

int main()
{
    using namespace std::chrono_literals;

    std::string text = field::RecordingHeader(1795352400.0); // UTC [s since 1970]
    for (const field::Record& record : live::Records({.lean = 0.0}, 2))
        text += field::RecordingLines(record.at, record.channel, record.bytes);
    text += field::RecordingLines(3s, field::Channel::Keys, field::kAcknowledgeBase);
    text += "+2.9 R too late\n";
    std::printf("%s\n", text.substr(0, text.find('\n')).c_str());

    field::Bridge bridge(live::PoleSetup());
    field::RecordingReader reader;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!reader.Read(line)) std::printf("%s\n", reader.Error().c_str());
        if (reader.Last()) field::Play(bridge, *reader.Last());
        if (reader.Last() && reader.Last()->channel == field::Channel::Keys)
            std::printf("%s\n", line.c_str());
    }
    bridge.Tick(4s);
    std::printf("%d epochs, %d poses\n", static_cast<int>(bridge.Count().epochs),
                static_cast<int>(bridge.Count().poses));
}
