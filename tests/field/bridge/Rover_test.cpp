// SPDX-License-Identifier: MIT
//
// A recorded rover without a pose sensor through the whole engine: 1848 epochs at 1 Hz in a car, of GGA
// among GNS and GSA, without GST and RMC.
#include "tests/field/bridge/LivePole.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

using namespace live_pole;
using Code = field::Reason::Code;

// A second of sentences in one record each, as a serial line brings them.
std::vector<Record> RoverRecords()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/nmea_rover.txt");
    std::vector<Record> records;
    std::string line;
    while (std::getline(file, line)) {
        if (line.ends_with('\r')) line.pop_back();
        if (line.starts_with("$GNGNS"))
            records.push_back({InstantOf(static_cast<double>(records.size()) + 0.1),
                               field::Channel::Receiver, ""});
        records.back().bytes += line + "\r\n";
    }
    return records;
}

TEST(Rover, PassesTheFixGateWithEveryFixedEpoch)
{
    const auto records = RoverRecords();
    ASSERT_EQ(records.size(), 1848U);
    field::Bridge bridge(TrackSetup());
    const auto reports = ReportsOf(bridge, records);
    EXPECT_EQ(reports.size(), 1848U);
    EXPECT_EQ(bridge.Count().receiverBad, 0U);
    EXPECT_EQ(bridge.Count().receiverRefused, 0U);
    std::size_t passed = 0;
    std::size_t jumped = 0;
    for (const Report& report : reports) {
        if (!Has(report, Code::FloatFix) && !Has(report, Code::NoFix)) ++passed;
        jumped += Has(report, Code::Jump) ? 1U : 0U;
        EXPECT_TRUE(Has(report, Code::NoPose));
        EXPECT_FALSE(report.tip);
        EXPECT_FALSE(CarriesAntenna(report)) << report.nmea;
    }
    EXPECT_EQ(passed, 1825U);
    EXPECT_EQ(jumped, 0U);
}

TEST(Rover, GivesTheSameAtAnySpeedOfTheLine)
{
    auto records = RoverRecords();
    records.resize(200);
    std::string whole;
    for (const Report& report : ReportsOf(TrackSetup(), records))
        whole += report.nmea;
    for (const double baud : {9600.0, 115200.0}) {
        std::vector<Record> slow;
        for (const Record& record : records) {
            for (std::size_t i = 0; i < record.bytes.size(); i += 16) {
                const double after = 10.0 * static_cast<double>(i + 16) / baud;
                slow.push_back(
                    {record.at + InstantOf(after), record.channel, record.bytes.substr(i, 16)});
            }
        }
        std::string nmea;
        for (const Report& report : ReportsOf(TrackSetup(), slow))
            nmea += report.nmea;
        EXPECT_EQ(nmea, whole) << baud;
    }
}

TEST(Rover, GivesTheSameInAnyPiecesAndFromARecording)
{
    const auto records = RoverRecords();
    std::string whole;
    for (const Report& report : ReportsOf(TrackSetup(), records))
        whole += report.nmea;
    ASSERT_GT(whole.size(), 100000U);

    std::mt19937 random(5);
    field::Bridge pieces(TrackSetup());
    field::Bridge replayed(TrackSetup());
    field::RecordingReader reader;
    std::string header = field::RecordingHeader(1795352878.0);
    header.pop_back(); // its line end
    ASSERT_TRUE(reader.Read(header));
    for (const Record& record : records) {
        const std::size_t most = &record - records.data() < 60 ? 1 : 200;
        std::string_view rest = record.bytes;
        while (!rest.empty()) {
            const std::size_t size = std::min<std::size_t>(1 + random() % most, rest.size());
            pieces.FeedReceiver(rest.substr(0, size), record.at);
            rest.remove_prefix(size);
        }
        std::istringstream lines(field::RecordingLines(record.at, record.channel, record.bytes));
        std::string line;
        while (std::getline(lines, line)) {
            ASSERT_TRUE(reader.Read(line)) << reader.Error();
            field::Play(replayed, *reader.Last());
        }
    }
    for (field::Bridge* bridge : {&pieces, &replayed}) {
        bridge->Tick(records.back().at + std::chrono::milliseconds(150));
        std::string nmea;
        for (const Report& report : bridge->Take())
            nmea += report.nmea;
        EXPECT_EQ(nmea, whole);
    }
}

} // namespace
