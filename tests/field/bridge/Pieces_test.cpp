// SPDX-License-Identifier: MIT
//
// The same bytes at the same instants give the same reports, whatever pieces they come in and however
// often Tick is called; a recording gives them again.
#include "tests/field/bridge/LivePole.h"

#include <gtest/gtest.h>

namespace {

using namespace live_pole;

// Six seconds of the recorded pole with faults of all kinds, so that every way is gone.
std::vector<Record> TroubledRecords()
{
    Track track = ReplayTrack();
    std::erase_if(track, [](const TrackRow& row) { return row.seconds > 6.0; });
    Options options;
    options.delay = 0.004; // epochs wait for the newer pose
    options.epoch = [](EpochFields& epoch) {
        epoch.gst = std::fmod(epoch.seconds, 0.7) < 0.5; // some close by time
        if (epoch.seconds > 2.0 && epoch.seconds < 2.5) epoch.send = false;
        if (epoch.seconds > 4.0) epoch.station = "0001";
    };
    options.pose = [](PoseFields& pose) {
        pose.send = !(pose.seconds > 3.0 && pose.seconds < 3.3);
    };
    std::vector<Record> records = RecordsOf(track, options);
    for (std::size_t i = 40; i < records.size(); i += 37)
        records[i].bytes.erase(records[i].bytes.size() / 2, 3);
    return records;
}

field::Setup TroubledSetup()
{
    field::Setup setup = ReplaySetup();
    setup.delay = 0.0;
    return setup;
}

// All that a report says, numbers to their last bit.
std::string TextOf(const std::vector<Report>& reports)
{
    std::string text;
    for (const Report& report : reports) {
        text += report.nmea + ReasonsOf(report) + '\n' + report.epoch.lines + report.epoch.gsa;
        text += Printed("state %d at %lld, arrived %lld\n", static_cast<int>(report.verdict.state),
                        static_cast<long long>(report.epoch.moment.count()),
                        static_cast<long long>(report.epoch.arrival.count()));
        if (report.tip) {
            const field::Tip& tip = *report.tip;
            const field::Covariance3& c = tip.sigma;
            text +=
                Printed("tip %a %a %a, speed %a\n", tip.position.latitude, tip.position.longitude,
                        tip.position.ellipsoidalHeight, tip.antennaSpeed);
            text += Printed("sigma %a %a %a %a %a %a\n", c.nn, c.ne, c.ee, c.nh, c.eh, c.hh);
        }
        if (report.occupation)
            text += Printed("occupation %a %a %d\n", report.occupation->seconds,
                            report.occupation->ellipseMajor, report.occupation->epochs);
    }
    return text;
}

std::string TextOf(const field::Counters& c)
{
    std::string text;
    for (const std::uint64_t count :
         {c.receiverLines, c.receiverBad, c.receiverOther, c.receiverRefused, c.epochs, c.repeated,
          c.poses, c.posesBad, c.posesRefused, c.stored, c.waited, c.blocked})
        text += std::to_string(count) + ' ';
    return text;
}

std::string WholeText(const field::Setup& setup, const std::vector<Record>& records)
{
    field::Bridge bridge(setup);
    const std::string text = TextOf(ReportsOf(bridge, records));
    return text + TextOf(bridge.Count());
}

// Every record in pieces of a size below this, and ticks in between; 1: each byte alone.
std::string TextInPieces(const field::Setup& setup, const std::vector<Record>& records,
                         std::size_t most, unsigned seed)
{
    std::mt19937 random(seed);
    field::Bridge bridge(setup);
    std::vector<Report> reports;
    Instant now{};
    const auto take = [&] {
        for (Report& report : bridge.Take())
            reports.push_back(std::move(report));
    };
    for (const Record& record : records) {
        while (random() % 3 == 0 && now < record.at) {
            now += std::chrono::microseconds(random() % 30000);
            if (now < record.at) bridge.Tick(now);
        }
        std::string_view rest = record.bytes;
        while (!rest.empty()) {
            const std::size_t size = std::min<std::size_t>(1 + random() % most, rest.size());
            field::Play(bridge, {record.at, record.channel, std::string(rest.substr(0, size))});
            rest.remove_prefix(size);
            if (random() % 5 == 0) bridge.Tick(record.at);
            if (random() % 2 == 0) take();
        }
        now = record.at;
    }
    bridge.Tick(records.back().at + std::chrono::milliseconds(150));
    take();
    return TextOf(reports) + TextOf(bridge.Count());
}

// The beginning of each record's first sentence comes before, among the sentences of the other channel:
// the line ends arrive when they did.
std::vector<Record> Interleaved(const std::vector<Record>& records, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<Record> pieces;
    std::array<Instant, 2> last{};
    for (const Record& record : records) {
        Instant& before = last[record.channel == field::Channel::Pose ? 0 : 1];
        const std::size_t end = record.bytes.find('\n');
        const auto gap = std::chrono::duration_cast<std::chrono::microseconds>(record.at - before);
        const std::size_t early = end == 0 || end > record.bytes.size() ? 0 : random() % end;
        const auto part = std::min<std::int64_t>(gap.count(), 60000);
        if (early > 0 && part > 0) {
            const auto ago = std::chrono::microseconds(static_cast<std::int64_t>(random()) % part);
            pieces.push_back({record.at - ago, record.channel, record.bytes.substr(0, early)});
        }
        pieces.push_back({record.at, record.channel, record.bytes.substr(early)});
        before = record.at;
    }
    std::ranges::stable_sort(pieces, {}, &Record::at);
    return pieces;
}

std::vector<field::Setup> TroubledSetups()
{
    std::vector<field::Setup> setups(3, TroubledSetup());
    setups[1].profile = field::Profile::QField;
    setups[1].north = field::NorthSource::Model;
    setups[2].enforce = true;
    setups[2].delay = -0.03; // every epoch waits for its pose
    return setups;
}

TEST(Pieces, DoNotMatter)
{
    const auto records = TroubledRecords();
    for (const field::Setup& setup : TroubledSetups()) {
        const std::string whole = WholeText(setup, records);
        EXPECT_GT(whole.size(), 15000U);
        for (unsigned seed = 1; seed <= 7; ++seed)
            ASSERT_EQ(TextInPieces(setup, records, 90, seed), whole) << seed;
        ASSERT_EQ(TextInPieces(setup, records, 1, 1), whole);
    }
}

// An epoch is judged by what came before it, also where bad lines are read together with it.
TEST(Pieces, OfBadLinesBehindAnEpochDoNotMatter)
{
    auto records = RecordsOf(StandingTrack(4.0));
    for (std::size_t i = records.size() / 2;; ++i) {
        if (records.at(i).channel != field::Channel::Receiver) continue;
        for (int line = 0; line < 40; ++line)
            records[i].bytes += "$GNGGA,1,2*00\r\n";
        break;
    }
    const std::string whole = WholeText(TrackSetup(), records);
    EXPECT_NE(whole.find("bad"), std::string::npos) << "they speak against the epochs after them";
    EXPECT_EQ(TextInPieces(TrackSetup(), records, 1, 1), whole);
}

TEST(Pieces, OfSentencesMayComeAmongTheOtherChannels)
{
    const auto records = TroubledRecords();
    for (const field::Setup& setup : TroubledSetups()) {
        const std::string whole = WholeText(setup, records);
        for (unsigned seed = 1; seed <= 7; ++seed) {
            const auto pieces = Interleaved(records, seed);
            ASSERT_GT(pieces.size(), records.size() + records.size() / 2);
            ASSERT_EQ(WholeText(setup, pieces), whole) << seed;
            ASSERT_EQ(TextInPieces(setup, pieces, 1, seed), whole) << seed;
        }
    }
}

TEST(Pieces, OfARecordingGiveTheSameAgain)
{
    const auto records = TroubledRecords();
    std::string text = field::RecordingHeader(1795352878.0);
    for (const Record& record : records)
        text += field::RecordingLines(record.at, record.channel, record.bytes);

    field::RecordingReader reader;
    field::Bridge bridge(TroubledSetup());
    std::vector<Report> reports;
    std::istringstream file(text);
    std::string line;
    Instant last{};
    while (std::getline(file, line)) {
        ASSERT_TRUE(reader.Read(line)) << reader.Error();
        if (!reader.Last()) continue;
        field::Play(bridge, *reader.Last());
        last = reader.Last()->at;
    }
    bridge.Tick(last + std::chrono::milliseconds(150));
    EXPECT_EQ(TextOf(bridge.Take()), TextOf(ReportsOf(TroubledSetup(), records)));
}

// The live clock has nanoseconds, the recording has not.
TEST(Pieces, InstantsCountInMicroseconds)
{
    auto records = TroubledRecords();
    const std::string whole = TextOf(ReportsOf(TroubledSetup(), records));
    for (Record& record : records)
        record.at += Instant(999);
    EXPECT_EQ(TextOf(ReportsOf(TroubledSetup(), records)), whole);
}

} // namespace
