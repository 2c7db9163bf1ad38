// SPDX-License-Identifier: MIT
//
// A recorded receiver, whole and damaged.
#include "field/time/EpochClock.h"
#include "tests/field/nmea/Sentences.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using field::Epoch;
using nmea_tests::EpochsOf;
using nmea_tests::Line;
using nmea_tests::Recorded;
using tiltpole::field::EpochReader;

namespace {

// Where and when, and all that a point is stored with.
std::string Told(const Epoch& epoch)
{
    std::ostringstream text;
    text.precision(17);
    text << epoch.utc << ' ' << epoch.antenna.latitude << ' ' << epoch.antenna.longitude << ' '
         << epoch.antenna.ellipsoidalHeight << ' ' << epoch.geoidSeparation << ' ' << epoch.sigma.nn
         << ' ' << epoch.sigma.hh << ' ' << static_cast<int>(epoch.fix) << ' ' << epoch.text.hdop
         << ' ' << epoch.text.correctionAge << ' ' << epoch.station << '\n'
         << epoch.lines << epoch.gsa;
    return text.str();
}

std::vector<std::string> Told(const std::vector<Epoch>& epochs)
{
    std::vector<std::string> told;
    for (const Epoch& epoch : epochs)
        told.push_back(Told(epoch));
    return told;
}

std::string Padded(int value, std::size_t digits)
{
    const std::string text = std::to_string(value);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

// An antenna that is walked about, in units of its text.
struct Place
{
    int north = 9633191;  // 1e-7 minutes beyond 47 33 N
    int east = 5012567;   // 1e-7 minutes beyond 19 00 E
    int height = 1933444; // [mm]

    bool operator==(const Place&) const = default;
};

Place PlaceOf(const Epoch& epoch)
{
    const auto minutes = [](double degrees, double beyond) {
        return static_cast<int>(std::lround((degrees - beyond) * 60e7));
    };
    const double height = epoch.antenna.ellipsoidalHeight - epoch.geoidSeparation;
    return {minutes(epoch.antenna.latitude, 47.55), minutes(epoch.antenna.longitude, 19.0),
            static_cast<int>(std::lround(height * 1000.0))};
}

// So many tenths of a second after midnight.
std::string Clock(std::size_t epoch)
{
    const int tenths = static_cast<int>(epoch);
    return Padded(tenths / 36000, 2) + Padded(tenths / 600 % 60, 2) + Padded(tenths / 10 % 60, 2)
           + '.' + Padded(tenths % 10, 1) + '0';
}

std::size_t TenthsOf(const Epoch& epoch)
{
    return static_cast<std::size_t>(
        std::lround(tiltpole::field::SecondsOfDay(epoch.utc).value_or(0.0) * 10.0));
}

std::string LinesOf(const Place& place, const std::string& utc)
{
    const std::string position =
        "4733." + Padded(place.north, 7) + ",N,01900." + Padded(place.east, 7) + ",E";
    const std::string height =
        Padded(place.height / 1000, 1) + '.' + Padded(place.height % 1000, 3);
    return Line("GNGGA," + utc + ',' + position + ",4,12,0.72," + height + ",M,39.429,M,1.0,0207")
           + Line("GNRMC," + utc + ",A," + position + ",0.01,,221126,,,R,V")
           + Line("GNGST," + utc + ",,0.012,0.008,160.1,0.011,0.009,0.015")
           + Line("GNGSA,A,3,15,08,07,28,30,13,14,05,,,,,1.15,0.68,0.93,1");
}

// What a bad line does to a text: bytes lost, bits changed, the rest of another text joined on.
void Damage(std::string& text, const std::string& other, std::mt19937& random)
{
    const auto within = [&random](std::size_t size) { return random() % size; };
    switch (random() % 3) {
    case 0:
        text.erase(within(text.size()), 1 + within(40));
        break;
    case 1:
        for (std::size_t flips = 1 + within(3); flips > 0; --flips) {
            char& byte = text[within(text.size())];
            byte = static_cast<char>(static_cast<unsigned char>(byte) ^ 1U << within(8));
        }
        break;
    default:
        text.replace(within(text.size()), std::string::npos, other.substr(within(other.size())));
    }
}

} // namespace

// Every third epoch is damaged. Two bits changed in one GGA can keep its checksum; RMC then shows a wrong
// place, but has no height: what is wrong there is left to the step that it makes.
TEST(DamagedStream, GivesNoWrongPlaceAndIsBackWithTheNextSentence)
{
    constexpr std::size_t kSound = 10; // epochs before the first damage
    constexpr std::size_t kEpochs = kSound + 3 * 10000;
    constexpr int kStep = 300; // of the antenna that shows [mm]
    const auto isDamaged = [](std::size_t epoch) { return epoch >= kSound && epoch % 3 == 0; };

    std::mt19937 random(11);
    const auto step = [&random](int most) {
        return static_cast<int>(random() % (2U * static_cast<unsigned>(most))) - most;
    };
    std::vector<Place> truth(1);
    for (std::size_t i = 1; i < kEpochs; ++i) {
        const Place& last = truth.back();
        truth.push_back({last.north + step(300), last.east + step(300), last.height + step(50)});
    }

    EpochReader reader;
    std::vector<bool> read(kEpochs + 1);
    for (std::size_t i = 0; i < kEpochs; ++i) {
        std::string lines = LinesOf(truth[i], Clock(i));
        if (isDamaged(i) && i + 1 < kEpochs)
            Damage(lines, LinesOf(truth[i + 1], Clock(i + 1)), random);
        reader.Feed(lines, {});
        for (const Epoch& epoch : reader.Take()) {
            const std::size_t of = TenthsOf(epoch);
            ASSERT_LE(of, std::min(i + 1, kEpochs - 1)); // which may have been joined on whole
            const Place place = PlaceOf(epoch);
            const int apart = std::abs(place.height - truth[of].height);
            EXPECT_TRUE(place == truth[of] || apart > kStep) << epoch.lines;
            EXPECT_EQ(place.north, truth[of].north) << epoch.lines;
            EXPECT_EQ(place.east, truth[of].east) << epoch.lines;
            read[of] = true;
        }
    }
    int lost = 0;
    for (std::size_t i = 0; i < kEpochs - 1; ++i)
        lost += read[i] || isDamaged(i) ? 0 : 1;
    EXPECT_EQ(lost, 0);
    EXPECT_GT(reader.Lines().bad, 9000U);
}

TEST(RecordedRover, LosesNoEpoch)
{
    EpochReader reader;
    const auto epochs = EpochsOf(reader, Recorded());
    ASSERT_EQ(epochs.size(), 1848U);
    std::map<field::Fix, int> counts;
    int withGsa = 0;
    for (const Epoch& epoch : epochs) {
        ++counts[epoch.fix];
        EXPECT_TRUE(epoch.sigmaAssumed);
        withGsa += epoch.gsa.empty() ? 0 : 1;
    }
    EXPECT_EQ(counts[field::Fix::Fixed], 1825);
    EXPECT_EQ(counts[field::Fix::Float], 12);
    EXPECT_EQ(counts[field::Fix::Differential], 2);
    EXPECT_EQ(counts[field::Fix::Single], 9);
    EXPECT_EQ(withGsa, 1847) << "but the first that closes with its GGA";
    EXPECT_EQ(reader.Lines().lines, 11088U);
    EXPECT_EQ(reader.Lines().bad, 0U);
    EXPECT_EQ(reader.Epochs().other, 1848U);
    EXPECT_EQ(reader.Epochs().Refused(), 0U);
}

TEST(RecordedRover, GivesTheSameEpochsHoweverItIsCut)
{
    const std::string bytes = Recorded().substr(0, 100000);
    EpochReader whole;
    const auto expected = Told(EpochsOf(whole, bytes));
    ASSERT_GT(expected.size(), 200U);
    for (const std::size_t size : {1U, 7U, 64U, 4096U}) {
        EpochReader reader;
        EXPECT_EQ(Told(EpochsOf(reader, bytes, size)), expected) << size;
    }
}
