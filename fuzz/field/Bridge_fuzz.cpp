// SPDX-License-Identifier: MIT
//
// Bytes of any kind on the channels of a live pole, at instants of any distance: the engine does not crash,
// gives the same reports for the same bytes in pieces and with ticks in between, writes whole sentences
// only, and never hides a tip behind a verdict that lets it be stored.
#include "field/Recording.h"
#include "fuzz/Input.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using field::Channel;
using field::Record;
using fuzz::Input;
using fuzz::Require;

std::string Framed(const std::string& body)
{
    unsigned sum = 0;
    for (const char c : body)
        sum ^= static_cast<unsigned char>(c);
    char end[8];
    std::snprintf(end, sizeof end, "*%02X\r\n", sum);
    return '$' + body + end;
}

std::string EpochOf(Input& input, unsigned number)
{
    char body[160];
    const unsigned tenths = number + (input.Byte() == 255 ? 600 : 0);
    std::snprintf(
        body, sizeof body,
        "GNGGA,13%02u%02u.%u0,4734.%02u00000,N,01900.0000000,E,%u,12,0.7,%u.000,M,39.4,M,1.0,%04u",
        tenths / 600 % 60, tenths / 10 % 60, tenths % 10, input.Byte() % 100 % 3, input.Byte() % 7,
        100 + input.Byte() % 2, input.Byte() % 3);
    return Framed(body);
}

std::string PoseOf(Input& input, unsigned number)
{
    char body[160];
    const unsigned tilt = input.Byte();
    std::snprintf(body, sizeof body, "PTPS,1,%u,%u.%u,-3.0,,%u,80,-400,-%u,-80,-400,0,0,%u,0,0,1",
                  20 * number, tilt / 16, tilt % 10, 180 + input.Byte() % 40,
                  180 + input.Byte() % 40, input.Byte());
    return Framed(body);
}

std::vector<Record> RecordsOf(Input& input)
{
    std::vector<Record> records;
    field::Instant at{};
    for (unsigned number = 1; !input.Ended() && number < 400; ++number) {
        const unsigned what = input.Byte();
        const unsigned step = input.Byte();
        at += std::chrono::milliseconds(step < 192 ? step % 64 : 10 * (step - 192));
        switch (what % 8) {
        case 0:
            records.push_back({at, Channel::Receiver, input.Bytes()});
            break;
        case 1:
            records.push_back({at, Channel::Pose, input.Bytes()});
            break;
        case 2:
            records.push_back({at, Channel::Receiver, Framed(input.Bytes())});
            break;
        case 3:
            records.push_back({at, Channel::Pose, Framed(input.Bytes())});
            break;
        case 4:
            records.push_back({at, Channel::Receiver, EpochOf(input, number)});
            break;
        case 5:
        case 6:
            records.push_back({at, Channel::Pose, PoseOf(input, number)});
            break;
        default:
            records.push_back({at, Channel::Keys,
                               std::string(what < 64    ? field::kAcknowledgeBase
                                           : what < 128 ? field::kAcknowledgeDatum
                                           : what < 192 ? field::kRestartReceiver
                                                        : field::kRestartPose)});
        }
    }
    return records;
}

// piece: bytes that are played at a time, with ticks in between; 0: whole records without.
std::string Run(const field::Setup& setup, const std::vector<Record>& records, std::size_t piece)
{
    field::Bridge bridge(setup);
    bridge.Tick({}); // the first call is when waiting for the receiver begins
    for (const Record& record : records) {
        if (piece == 0 || record.channel == Channel::Keys) {
            field::Play(bridge, record);
            continue;
        }
        bridge.Tick(record.at - std::chrono::milliseconds(1));
        for (std::size_t at = 0; at < record.bytes.size(); at += piece)
            field::Play(bridge, {record.at, record.channel, record.bytes.substr(at, piece)});
    }
    if (!records.empty()) bridge.Tick(records.back().at + std::chrono::milliseconds(200));

    std::string text;
    for (const field::Report& report : bridge.Take()) {
        Require(report.nmea.empty()
                || (report.nmea.front() == '$' && report.nmea.ends_with("\r\n")));
        Require(report.tip || report.verdict.state != field::State::Store);
        Require(report.nmea.empty() == report.epoch.utc.empty());
        text += report.nmea;
        for (const field::Reason& reason : report.verdict.reasons)
            text += reason.text + '\n';
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const unsigned flags = input.Byte();
    field::Setup setup;
    setup.calibration.complete = true;
    setup.north = (flags & 1U) != 0 ? field::NorthSource::File : field::NorthSource::Model;
    setup.profile = (flags & 2U) != 0 ? field::Profile::QField : field::Profile::Strict;
    setup.enforce = (flags & 4U) != 0;
    setup.sensorType = (flags & 8U) != 0 ? 2 : 1;
    setup.poseFormat = (flags & 16U) != 0   ? field::PoseFormat::SerialFrames
                       : (flags & 32U) != 0 ? field::PoseFormat::Csv
                                            : field::PoseFormat::Ptps;
    setup.started = (flags & 64U) != 0 ? std::optional<double>(1795352878.0) : std::nullopt;

    const unsigned piece = input.Byte();
    const std::vector<Record> records = RecordsOf(input);
    const std::string whole = Run(setup, records, 0);
    if (piece < 128) Require(Run(setup, records, piece % 64 + 1) == whole);
    return 0;
}
