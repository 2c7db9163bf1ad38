// SPDX-License-Identifier: MIT
//
// A stream of the receiver that is cut, flipped and joined at random never makes a wrong tip, and the
// sentence after the damage is understood. A round has 1000 damages; ten of them:
//
//     TILTPOLE_ROUNDS=10 build/dev/tests/field/live_pole_tests --gtest_filter='Damage.*'
#include "tests/field/bridge/LivePole.h"
#include "tests/reference/RandomRuns.h"

#include <gtest/gtest.h>

namespace {

using namespace live_pole;

constexpr std::size_t kDamages = 1000; // of a round
constexpr double kEpochRate = 5.0;     // [Hz]

class Damager
{
public:
    explicit Damager(unsigned seed) : m_random(seed) {}

    // Bytes lost, bits or a digit changed, line ends lost, a piece sent twice, the end lost with the
    // beginning of what follows, an older piece in between.
    void Damage(std::string& bytes, std::string& next, const std::string& before)
    {
        const std::size_t at = Below(bytes.size());
        const std::size_t length = std::min(1 + Below(40), bytes.size() - at);
        switch (Below(7)) {
        case 0:
            bytes.erase(at, length);
            return;
        case 1:
            for (std::size_t flips = 1 + Below(3); flips > 0; --flips) {
                char& c = bytes[Below(bytes.size())];
                c = static_cast<char>(static_cast<unsigned char>(c) ^ (1U << Below(8)));
            }
            return;
        case 2:
            bytes[at] = static_cast<char>('0' + Below(10));
            return;
        case 3:
            std::erase(bytes, '\n');
            return;
        case 4:
            bytes.insert(at, bytes.substr(at, length));
            return;
        case 5:
            bytes.erase(at);
            next.erase(0, Below(next.size()));
            return;
        default:
            bytes.replace(at, length, before.substr(Below(before.size()), 1 + Below(150)));
        }
    }

private:
    std::size_t Below(std::size_t n) { return static_cast<std::size_t>(m_random() % n); }

    std::mt19937 m_random;
};

std::vector<std::string> LinesOf(const std::string& bytes)
{
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = bytes.find('\n'); end != std::string::npos;
         end = bytes.find('\n', begin)) {
        lines.push_back(bytes.substr(begin, end + 1 - begin));
        begin = end + 1;
    }
    return lines;
}

// Sentences of what was sent that are still there from '$' to line end.
std::uint64_t WholeLines(const std::string& sent, const std::string& damaged)
{
    std::uint64_t whole = 0;
    for (const std::string& line : LinesOf(sent))
        whole += damaged.find(line) != std::string::npos ? 1U : 0U;
    return whole;
}

struct Outcome
{
    std::size_t damaged = 0;
    std::size_t tips = 0;
    std::size_t wrong = 0;
    std::size_t lost = 0;      // whole epochs of which a sentence was not used
    std::size_t notResync = 0; // records in which a whole sentence was not read
};

struct Stream
{
    std::vector<Record> records;
    std::vector<std::uint64_t> whole; // sentences of each record
    std::vector<std::string> spared;  // epochs that were left whole
};

// Every third epoch is damaged, and with it in one of seven cases the second's beginning; the third is
// left whole.
Stream DamagedStream(const Track& track, Damager& damager)
{
    Stream stream;
    stream.records = RecordsOf(track, {.epochRate = kEpochRate});
    std::vector<std::size_t> epochs;
    for (std::size_t i = 0; i < stream.records.size(); ++i)
        if (stream.records[i].channel == field::Channel::Receiver) epochs.push_back(i);
    stream.whole.resize(stream.records.size());
    for (std::size_t i = 1; i + 1 < epochs.size(); i += 3) {
        const auto bytes = [&](std::size_t k) -> std::string& {
            return stream.records[epochs[k]].bytes;
        };
        const std::string sent = bytes(i);
        const std::string sentNext = bytes(i + 1);
        damager.Damage(bytes(i), bytes(i + 1), bytes(i - 1));
        stream.whole[epochs[i]] = WholeLines(sent, bytes(i));
        stream.whole[epochs[i + 1]] = WholeLines(sentNext, bytes(i + 1));
        if (i + 2 >= epochs.size()) break;
        stream.whole[epochs[i + 2]] = LinesOf(bytes(i + 2)).size();
        stream.spared.push_back(bytes(i + 2));
    }
    return stream;
}

// A tip is wrong where its sentences name a place farther from the true one than this [m].
Outcome RunDamaged(const Track& track, const field::Setup& setup, unsigned seed, double wrong)
{
    Damager damager(seed);
    const Stream stream = DamagedStream(track, damager);
    Outcome outcome;
    outcome.damaged = stream.spared.size();
    std::size_t next = 0;
    field::Bridge bridge(setup);
    for (std::size_t i = 0; i < stream.records.size(); ++i) {
        const field::Counters before = bridge.Count();
        field::Play(bridge, stream.records[i]);
        const field::Counters& after = bridge.Count();
        const std::uint64_t good =
            after.receiverLines - after.receiverBad - (before.receiverLines - before.receiverBad);
        outcome.notResync += good < stream.whole[i] ? 1U : 0U;
        for (const Report& report : bridge.Take()) {
            CheckSentences(report);
            if (next < stream.spared.size() && report.epoch.lines == stream.spared[next]) ++next;
            const auto places = PlacesOf(report);
            if (places.empty()) continue;
            ++outcome.tips;
            const bool isWrong = std::ranges::any_of(places, [&](const field::Geodetic& place) {
                const xyhCoordinate d = field::Difference(kTip, place);
                return !(std::hypot(d.x, d.y, d.h) <= wrong);
            });
            outcome.wrong += isWrong ? 1U : 0U;
            if (isWrong) ADD_FAILURE() << report.epoch.lines << report.nmea;
        }
    }
    outcome.lost = stream.spared.size() - next;
    return outcome;
}

void CheckRounds(const Track& track, const field::Setup& setup, double wrong)
{
    for (unsigned round = 0; round < reference::Rounds(); ++round) {
        const unsigned seed = reference::SeedOfRun() + round;
        SCOPED_TRACE(seed);
        const Outcome outcome = RunDamaged(track, setup, seed, wrong);
        EXPECT_GE(outcome.damaged, kDamages);
        EXPECT_GT(outcome.tips, 2 * kDamages);
        EXPECT_EQ(outcome.wrong, 0U);
        EXPECT_EQ(outcome.lost, 0U);
        EXPECT_EQ(outcome.notResync, 0U);
    }
}

constexpr double kSeconds = 3.0 * (kDamages + 2) / kEpochRate;

TEST(Damage, MakesNoWrongTipAndLosesNoWholeEpoch)
{
    CheckRounds(StandingTrack(kSeconds, 6.0, -4.0, 40.0, 25.0), TrackSetup(), 0.05);
}

} // namespace
