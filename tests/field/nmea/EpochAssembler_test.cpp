// SPDX-License-Identifier: MIT
#include "field/nmea/EpochSigma.h"
#include "tests/field/nmea/Sentences.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using field::Epoch;
using field::Fix;
using nmea_tests::EpochsOf;
using nmea_tests::Line;
using tiltpole::field::EpochReader;

namespace {

const std::string kPlace = "4733.9633191,N,01900.5012567,E";

std::string Gga(const std::string& utc, const std::string& place = kPlace, char quality = '4',
                const std::string& height = "193.444")
{
    return Line("GNGGA," + utc + "," + place + "," + quality + ",12,0.72," + height
                + ",M,39.4290,M,1.0,0207");
}

std::string Rmc(const std::string& utc, const std::string& place = kPlace)
{
    return Line("GNRMC," + utc + ",A," + place + ",0.50,271.3,221126,,,R,V");
}

std::string Gst(const std::string& utc, const std::string& ellipse = ",,,",
                const std::string& sigmas = "0.011,0.009,0.015")
{
    return Line("GNGST," + utc + "," + ellipse + "," + sigmas);
}

std::string Zda(const std::string& utc)
{
    return Line("GNZDA," + utc + ",23,11,2026,00,00");
}

std::string Gsa(int system)
{
    return Line("GNGSA,A,3,15,,,,,,,,,,,,1.15,0.68,0.93," + std::to_string(system));
}

// 13:07:00 and so many tenths.
std::string Tenth(int count)
{
    char text[32];
    std::snprintf(text, sizeof text, "1307%02d.%d0", count / 10, count % 10);
    return text;
}

// The instants at which epochs of `sentences` were ready, fed one sentence every 10 ms.
struct Timed
{
    std::vector<Epoch> epochs;
    std::vector<field::Instant> ready;
};

void Play(EpochReader& reader, const std::vector<std::string>& lines, field::Instant& now,
          Timed& timed)
{
    const auto take = [&] {
        for (Epoch& epoch : reader.Take()) {
            timed.epochs.push_back(std::move(epoch));
            timed.ready.push_back(now);
        }
    };
    for (const std::string& line : lines) {
        reader.Feed(line, now);
        take();
        now += 10ms;
        reader.Tick(now);
        take();
    }
}

void Pause(EpochReader& reader, field::Instant until, field::Instant& now, Timed& timed)
{
    while (now < until)
        Play(reader, {""}, now, timed);
}

} // namespace

TEST(EpochAssembler, JoinsTheSentencesOfOneTime)
{
    EpochReader reader;
    const std::string t = "130758.00";
    const std::string bytes = Gga(t) + Rmc(t) + Gst(t, "0.1,0.012,0.008,160.1") + Zda(t);
    const auto epochs = EpochsOf(reader, bytes);
    ASSERT_EQ(epochs.size(), 1U);
    const Epoch& epoch = epochs[0];
    EXPECT_EQ(epoch.utc, t);
    EXPECT_NEAR(epoch.antenna.latitude, 47.566055318333333, 1e-13);
    EXPECT_NEAR(epoch.antenna.ellipsoidalHeight, 193.444 + 39.429, 1e-9);
    EXPECT_EQ(epoch.geoidSeparation, 39.429);
    EXPECT_EQ(epoch.fix, Fix::Fixed);
    EXPECT_EQ(epoch.satellites, 12);
    EXPECT_EQ(epoch.hdop, 0.72);
    EXPECT_EQ(epoch.correctionAge, 1.0);
    EXPECT_EQ(epoch.station, "0207");
    EXPECT_NEAR(*epoch.speed, 0.5 * 1852 / 3600, 1e-12);
    EXPECT_EQ(epoch.course, 271.3);
    EXPECT_EQ(epoch.date, std::chrono::sys_days(2026y / 11 / 22));
    EXPECT_EQ(epoch.minuteDecimals, 7);
    EXPECT_EQ(epoch.text.geoidSeparation, "39.4290");
    EXPECT_EQ(epoch.text.correctionAge, "1.0");
    EXPECT_EQ(epoch.lines, bytes);
    EXPECT_FALSE(epoch.sigmaAssumed);
}

TEST(EpochAssembler, TakesTheDateFromZdaWithoutRmc)
{
    EpochReader reader;
    const auto epochs = EpochsOf(reader, Zda("130758.00") + Gga("130758.00") + Gga("130759.00"));
    ASSERT_EQ(epochs.size(), 2U);
    EXPECT_EQ(epochs[0].date, std::chrono::sys_days(2026y / 11 / 23));
    EXPECT_FALSE(epochs[1].date);
    EXPECT_FALSE(epochs[1].speed);
}

TEST(EpochAssembler, WithoutAFixHasNoPosition)
{
    for (const std::string& place : {std::string(",,,"), kPlace}) {
        EpochReader reader;
        const auto epochs = EpochsOf(reader, Gga("130758.00", place, '0'));
        ASSERT_EQ(epochs.size(), 1U);
        EXPECT_EQ(epochs[0].fix, Fix::Invalid);
        EXPECT_TRUE(std::isnan(epochs[0].antenna.latitude));
        EXPECT_TRUE(std::isnan(epochs[0].antenna.ellipsoidalHeight));
        EXPECT_TRUE(std::isnan(epochs[0].geoidSeparation));
        EXPECT_EQ(epochs[0].sigma.nn, 1e4);
    }
}

TEST(EpochAssembler, TurnsTheEllipseOfGstIntoACovariance)
{
    EpochReader reader;
    const std::string t = "130758.00";
    // Axes 12 and 8 mm, the major one at 30 degrees: nn = 144·3/4 + 64/4, ee = 144/4 + 64·3/4, and
    // ne = (144 − 64)·sqrt(3)/4 mm².
    const auto epochs =
        EpochsOf(reader, Gga(t) + Gst(t, ",0.012,0.008,30", "0.0111355287,0.0091651514,0.015"));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_NEAR(epochs[0].sigma.nn, 124e-6, 1e-12);
    EXPECT_NEAR(epochs[0].sigma.ee, 84e-6, 1e-12);
    EXPECT_NEAR(epochs[0].sigma.ne, 34.641016e-6, 1e-12);
    EXPECT_NEAR(epochs[0].sigma.hh, 225e-6, 1e-12);
}

TEST(EpochAssembler, KeepsTheCovariancePositive)
{
    EpochReader reader;
    const std::string t = "130758.00";
    const auto epochs = EpochsOf(reader, Gga(t) + Gst(t, ",9.0,0.008,45"));
    EXPECT_NEAR(epochs.at(0).sigma.ne, 0.011 * 0.009, 1e-12);
}

TEST(EpochAssembler, AssumesSigmaByHdopAndQualityWithoutGst)
{
    struct Case
    {
        char quality;
        double plan; // for HDOP 1
    };
    for (const Case& c : {
             Case{'4', 0.012},
             {'5', 0.4  },
             {'2', 0.8  },
             {'1', 3.0  },
             {'6', 10.0 }
    }) {
        EpochReader reader;
        const auto epochs = EpochsOf(reader, Gga("130758.00", kPlace, c.quality));
        ASSERT_EQ(epochs.size(), 1U);
        EXPECT_TRUE(epochs[0].sigmaAssumed);
        EXPECT_NEAR(std::sqrt(epochs[0].sigma.nn), 0.72 * c.plan, 1e-9) << c.quality;
        EXPECT_NEAR(std::sqrt(epochs[0].sigma.ee), 0.72 * c.plan, 1e-9) << c.quality;
        EXPECT_NEAR(std::sqrt(epochs[0].sigma.hh), 0.72 * c.plan * 1.8, 1e-9) << c.quality;
    }
}

TEST(EpochSigma, NeedsAWholeEllipse)
{
    tiltpole::field::Gga gga;
    gga.quality = 4;
    gga.position = tiltpole::field::TextPosition{47.5, 19.0, 7, 7};
    tiltpole::field::Gst gst;
    gst.latitude = gst.longitude = gst.height = 0.1;
    gst.major = 0.12;
    EXPECT_EQ(tiltpole::field::SigmaOf(gga, gst).ne, 0.0);
    gst.minor = 0.08;
    EXPECT_EQ(tiltpole::field::SigmaOf(gga, gst).ne, 0.0);
    gst.orientation = 45.0;
    EXPECT_NEAR(tiltpole::field::SigmaOf(gga, gst).ne, (0.0144 - 0.0064) / 2.0, 1e-12);
}

TEST(EpochSigma, IsWideWithoutAPosition)
{
    tiltpole::field::Gga gga;
    gga.quality = 4;
    const field::Covariance3 sigma = tiltpole::field::SigmaOf(gga, {});
    EXPECT_EQ(sigma.nn, 1e4);
    EXPECT_EQ(sigma.ee, 1e4);
    EXPECT_EQ(sigma.hh, 1e4);
}

// A receiver that says of one axis only that it is bad is not taken for a good one.
TEST(EpochAssembler, NeverAssumesLessThanAnUnfinishedGstStates)
{
    for (const std::string sigmas : {"2.5,2.5,", "2.5,0.000,9.0", ",,9.0", "0,0,9.0"}) {
        EpochReader reader;
        const std::string t = "130758.00";
        const auto epochs = EpochsOf(reader, Gga(t) + Gst(t, ",,,", sigmas));
        ASSERT_EQ(epochs.size(), 1U) << sigmas;
        EXPECT_TRUE(epochs[0].sigmaAssumed) << sigmas;
        EXPECT_GE(std::sqrt(std::max(epochs[0].sigma.nn, epochs[0].sigma.hh)), 2.5) << sigmas;
        EXPECT_GE(std::sqrt(epochs[0].sigma.nn), 0.72 * 0.012 - 1e-12) << sigmas;
    }
}

TEST(EpochAssembler, BelievesAHugeSigma)
{
    for (const std::string height : {"99999999.9999", "123456789012345678"}) {
        EpochReader reader;
        const std::string t = "130758.00";
        const auto epochs = EpochsOf(reader, Gga(t) + Gst(t, ",,,", "0.011,99999999.9," + height));
        ASSERT_EQ(epochs.size(), 1U) << height;
        EXPECT_FALSE(epochs[0].sigmaAssumed) << height;
        EXPECT_EQ(std::sqrt(epochs[0].sigma.ee), 1e7) << height;
        EXPECT_EQ(std::sqrt(epochs[0].sigma.hh), 1e7) << height;
    }
}

TEST(EpochAssembler, AssumesAWideSigmaWhereHdopIsMissing)
{
    EpochReader reader;
    const auto epochs =
        EpochsOf(reader, Line("GNGGA,130758.00," + kPlace + ",4,12,,193.444,M,39.4290,M,1.0,0207"));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_NEAR(std::sqrt(epochs[0].sigma.nn), 0.060, 1e-9); // above what may be stored
}

TEST(EpochAssembler, TakesSentencesOfAnyTalker)
{
    const std::string body = Gga("130758.00") + Gst("130758.00");
    for (const char* talker : {"GP", "GL", "GB", "GA", "BD"}) {
        EpochReader reader;
        std::string lines;
        for (const std::string type : {"GGA", "GST"}) {
            const std::size_t at = body.find("GN" + type);
            ASSERT_NE(at, std::string::npos);
            const std::string rest = body.substr(at + 2, body.find('*', at) - at - 2);
            lines += Line(talker + rest);
        }
        const auto epochs = EpochsOf(reader, lines);
        ASSERT_EQ(epochs.size(), 1U) << talker;
        EXPECT_FALSE(epochs[0].sigmaAssumed) << talker;
    }
}

TEST(EpochAssembler, AddsTheResolutionOfACoarseText)
{
    EpochReader reader;
    const std::string t = "130758.00";
    const auto epochs =
        EpochsOf(reader, Gga(t, "6000.12345,N,01900.50126,E", '4', "193.4") + Gst(t));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].minuteDecimals, 5);
    const double north = 0.01852; // of the last digit [m]; half of it eastward at latitude 60
    EXPECT_NEAR(epochs[0].sigma.nn, 0.011 * 0.011 + north * north / 12, 1e-9);
    EXPECT_NEAR(epochs[0].sigma.ee, 0.009 * 0.009 + north * north / 48, 1e-8);
    EXPECT_NEAR(epochs[0].sigma.hh, 0.015 * 0.015 + 0.01 / 12, 1e-9);
}

TEST(EpochAssembler, DoesNotUseTheGstOfAnotherTime)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 1; i <= 20; ++i)
        bytes += Gga(Tenth(i)) + Gst(Tenth(i - 1)) + Rmc(Tenth(i));
    const auto epochs = EpochsOf(reader, bytes);
    ASSERT_EQ(epochs.size(), 20U);
    for (const Epoch& epoch : epochs) {
        EXPECT_TRUE(epoch.sigmaAssumed);
        EXPECT_TRUE(epoch.speed);
    }
    EXPECT_EQ(reader.Epochs().otherTime, 20U);
}

TEST(EpochAssembler, ClosesSixtyMillisecondsAfterGga)
{
    EpochReader reader;
    Timed timed;
    field::Instant now{};
    Play(reader, {Gga(Tenth(0)), Rmc(Tenth(0))}, now, timed);
    Pause(reader, 200ms, now, timed);
    ASSERT_EQ(timed.epochs.size(), 1U);
    EXPECT_EQ(timed.ready[0], 60ms);
    EXPECT_EQ(timed.epochs[0].arrival, 10ms);
    EXPECT_TRUE(timed.epochs[0].speed);
}

TEST(EpochAssembler, ClosesWithWhatEndedTheLastFive)
{
    EpochReader reader;
    Timed timed;
    field::Instant now{};
    for (int i = 0; i < 8; ++i) {
        Play(reader, {Gga(Tenth(i)), Rmc(Tenth(i)), Gst(Tenth(i)), Gsa(1)}, now, timed);
        Pause(reader, (i + 1) * 100ms, now, timed);
    }
    ASSERT_EQ(timed.epochs.size(), 8U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(timed.ready[i], static_cast<int>(i) * 100ms + 60ms) << i;
    for (std::size_t i = 5; i < 8; ++i)
        EXPECT_EQ(timed.ready[i], static_cast<int>(i) * 100ms + 20ms) << i;
}

TEST(EpochAssembler, LearnsAnotherEndFromSentencesThatCameTooLate)
{
    EpochReader reader;
    Timed timed;
    field::Instant now{};
    int i = 0;
    for (; i < 6; ++i) {
        Play(reader, {Gga(Tenth(i))}, now, timed);
        Pause(reader, (i + 1) * 100ms, now, timed);
    }
    for (; i < 13; ++i) {
        Play(reader, {Gga(Tenth(i)), Gst(Tenth(i))}, now, timed);
        Pause(reader, (i + 1) * 100ms, now, timed);
    }
    ASSERT_EQ(timed.epochs.size(), 13U);
    EXPECT_EQ(timed.ready[6], 600ms) << "GGA ended the last five";
    EXPECT_TRUE(timed.epochs[6].sigmaAssumed);
    EXPECT_EQ(timed.ready[7], 760ms);
    EXPECT_FALSE(timed.epochs[7].sigmaAssumed);
    EXPECT_EQ(timed.ready[12], 1210ms) << "GST did";
}

TEST(EpochAssembler, ClosesWhenAnotherTimeBegins)
{
    EpochReader reader;
    reader.Feed(Gst(Tenth(1)) + Gga(Tenth(1)) + Gst(Tenth(2)), 0ms);
    EXPECT_EQ(reader.Take().size(), 1U);
    reader.Feed(Gga(Tenth(2)) + Gga("000000.00"), 0ms);
    const auto epochs = reader.Take();
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_FALSE(epochs[0].sigmaAssumed);
}

TEST(EpochAssembler, FollowsMidnightAndTimeThatStepsBack)
{
    EpochReader reader;
    const auto epochs =
        EpochsOf(reader, Rmc("235959.90") + Gga("235959.90") + Rmc("000000.00") + Gga("000000.00")
                             + Gga("235900.00") + Rmc("235900.00"));
    ASSERT_EQ(epochs.size(), 3U);
    for (const Epoch& epoch : epochs)
        EXPECT_TRUE(epoch.speed) << epoch.utc;
}

TEST(EpochAssembler, RefusesAnEpochWhoseGgaAndRmcDisagree)
{
    EpochReader reader;
    const std::string other = "4733.9633291,N,01900.5012567,E";
    const auto epochs =
        EpochsOf(reader, Gga(Tenth(0)) + Rmc(Tenth(0), other) + Gga(Tenth(1)) + Rmc(Tenth(1))
                             + Gga(Tenth(2)) + Gga(Tenth(2), other));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].utc, Tenth(1));
    EXPECT_EQ(reader.Epochs().disagree, 2U);
}

TEST(EpochAssembler, ComparesGgaAndRmcWithinTheCoarserText)
{
    EpochReader reader;
    std::string bytes = Gga(Tenth(0)) + Rmc(Tenth(0), "4733.96332,N,01900.50125,E");
    bytes += Gga(Tenth(1)) + Rmc(Tenth(1), "4733.96334,N,01900.50125,E");
    const auto epochs = EpochsOf(reader, bytes);
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].utc, Tenth(0));
}

TEST(EpochAssembler, RefusesAnEpochWhoseWitnessIsAmongBadLines)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 10; ++i)
        bytes += Gga(Tenth(i)) + Rmc(Tenth(i)) + Gst(Tenth(i));
    bytes += Gga(Tenth(10)) + "$GNRMC,1307*00\r\n" + Gst(Tenth(10));
    bytes += Gga(Tenth(11)) + "$GNRMC,13" + Gst(Tenth(11));
    bytes += Gga(Tenth(12)) + Rmc(Tenth(12)) + "$GNGST,13\r\n";
    bytes += Gga(Tenth(13)) + Gst(Tenth(13)) + Gga(Tenth(14)) + Rmc(Tenth(14));
    const auto epochs = EpochsOf(reader, bytes);
    EXPECT_EQ(epochs.size(), 13U);
    EXPECT_EQ(reader.Epochs().disagree, 2U) << "the first two that are short of a line";
}

TEST(EpochAssembler, RefusesATimeThatGgaAloneTells)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 3; ++i)
        bytes += Gga(Tenth(i)) + Rmc(Tenth(i));
    bytes += Gga(Tenth(33)) + Rmc(Tenth(3)) + Gga(Tenth(4)) + Rmc(Tenth(4)) + Gga(Tenth(5));
    const auto epochs = EpochsOf(reader, bytes);
    ASSERT_EQ(epochs.size(), 5U);
    EXPECT_EQ(epochs[3].utc, Tenth(4));
    EXPECT_EQ(epochs[4].utc, Tenth(5));
    EXPECT_EQ(reader.Epochs().disagree, 1U);
}

TEST(EpochAssembler, TakesAnyTimeWhereGgaIsAllThereIs)
{
    EpochReader reader;
    EXPECT_EQ(
        EpochsOf(reader, Gga(Tenth(0)) + Gga(Tenth(1)) + Gga(Tenth(33)) + Gga(Tenth(2))).size(),
        4U);
}

TEST(EpochAssembler, RefusesOtherDecimalsAndFieldsThanBefore)
{
    const std::string places[] = {"4733.963319,N,01900.5012567,E", "4733.9633191,N,01900.501256,E"};
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 10; ++i)
        bytes += Gga(Tenth(i));
    bytes += Gga(Tenth(10), places[0]) + Gga(Tenth(11), places[1]);
    bytes += Gga(Tenth(12), kPlace, '4', "19.34") + Gga("130713.0");
    bytes += Gga(Tenth(14));
    EXPECT_EQ(EpochsOf(reader, bytes).size(), 11U);
    EXPECT_EQ(reader.Epochs().shape, 4U);
    EXPECT_EQ(reader.Epochs().Refused(), 4U);
}

TEST(EpochAssembler, TakesOtherDecimalsOnceTheyStay)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 10; ++i)
        bytes += Gga(Tenth(i));
    for (int i = 10; i < 30; ++i)
        bytes += Gga(Tenth(i), "4733.96331,N,01900.50125,E");
    const auto epochs = EpochsOf(reader, bytes);
    EXPECT_EQ(epochs.size(), 21U);
    EXPECT_EQ(epochs.back().minuteDecimals, 5);
    EXPECT_EQ(reader.Epochs().shape, 9U);
}

TEST(EpochAssembler, EmptyFieldsTellNothingOfTheShape)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 30; ++i)
        bytes += Gga(Tenth(i), i % 3 == 0 ? ",,," : kPlace, i % 3 == 0 ? '0' : '4');
    EXPECT_EQ(EpochsOf(reader, bytes).size(), 30U);
}

TEST(EpochAssembler, CountsARepeatedTimeOnce)
{
    EpochReader reader;
    const std::string bytes = Gga(Tenth(0));
    EXPECT_EQ(EpochsOf(reader, bytes + bytes).size(), 1U);
    EXPECT_EQ(EpochsOf(reader, bytes, 1000, 5s).size(), 0U);
    EXPECT_EQ(reader.Epochs().repeated, 2U);
    EXPECT_EQ(reader.Epochs().epochs, 1U);
}

TEST(EpochAssembler, RefusesAnEpochWhoseGgasDisagree)
{
    struct Case
    {
        std::string first, second;
        std::size_t epochs;
        const char* why;
    };
    const std::string t = "130758.00";
    const std::string none = Gga(t, ",,,", '0');
    const std::string some = Gga(t);
    const std::string higher = Gga(t, kPlace, '4', "193.445");
    const Case cases[] = {
        {none, none,   1, "both without a position"},
        {none, some,   0, "one without a position" },
        {some, none,   0, "one without a position" },
        {some, higher, 0, "another height"         },
    };
    for (const Case& c : cases) {
        EpochReader reader;
        EXPECT_EQ(EpochsOf(reader, c.first + c.second).size(), c.epochs) << c.why;
        EXPECT_EQ(reader.Epochs().repeated, 1U) << c.why;
        EXPECT_EQ(reader.Epochs().disagree, 1U - c.epochs) << c.why;
    }
}

TEST(EpochAssembler, HasNoPositionWhereRmcAloneHasOne)
{
    EpochReader reader;
    const std::string t = "130758.00";
    const auto epochs = EpochsOf(reader, Gga(t, ",,,", '0') + Rmc(t));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].fix, Fix::Invalid);
    EXPECT_TRUE(std::isnan(epochs[0].antenna.latitude));
    EXPECT_EQ(reader.Epochs().disagree, 0U);
}

TEST(EpochAssembler, KeepsTheDateOfZdaWhereRmcHasNone)
{
    EpochReader reader;
    const std::string t = "130758.00";
    const std::string undated = Line("GNRMC," + t + ",A," + kPlace + ",0.50,271.3,,,,R,V");
    const auto epochs = EpochsOf(reader, Zda(t) + Gga(t) + undated);
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].date, std::chrono::sys_days(2026y / 11 / 23));
    EXPECT_TRUE(epochs[0].speed);
}

// 23:59:60 is as late as 00:00:00: what comes late of a leap second ends no epoch of the new day.
TEST(EpochAssembler, IsNotEndedByWhatComesLateOfALeapSecond)
{
    EpochReader reader;
    const auto epochs = EpochsOf(reader, Gga("000000.00") + Rmc("235960.00") + Rmc("000000.00"));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_TRUE(epochs[0].speed);
    EXPECT_EQ(reader.Epochs().otherTime, 1U);
}

TEST(EpochAssembler, ForgetsTheOldestOfEpochsThatNobodyTakes)
{
    EpochReader reader;
    constexpr int kMost = 4096;
    for (int i = 0; i <= kMost; ++i) {
        char utc[16];
        std::snprintf(utc, sizeof utc, "%02d%02d%02d.00", i / 3600, i / 60 % 60, i % 60);
        reader.Feed(Gga(utc), 0ms);
    }
    reader.Tick(1s);
    const auto epochs = reader.Take();
    ASSERT_EQ(epochs.size(), static_cast<std::size_t>(kMost));
    EXPECT_EQ(epochs.front().utc, "000001.00");
    EXPECT_EQ(epochs.back().utc, "010816.00") << "4096 s";
}

TEST(EpochAssembler, CountsWhatItTakesNothingFrom)
{
    EpochReader reader;
    const auto epochs = EpochsOf(
        reader, Line("GNGNS,130700.00," + kPlace + ",RRRR,25,0.68,193.444,39.429,1.0,0207,V")
                    + Gga(Tenth(0)) + Line("GNGLL," + kPlace + ",130700.00,A,R")
                    + Line("GNVTG,,T,,M,0.01,N,0.02,K,R") + Line("PGGA,1") + "!AIVDM,1\r\n"
                    + "$GNGGA,1*00\r\n");
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].lines, Gga(Tenth(0)));
    EXPECT_EQ(reader.Epochs().other, 4U);
    EXPECT_EQ(reader.Lines().lines, 7U);
    EXPECT_EQ(reader.Lines().bad, 1U);
}

TEST(EpochAssembler, GivesASetOfGsaOnceASecond)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 25; ++i)
        bytes += Gga(Tenth(i)) + Gsa(1) + Gsa(2) + Gsa(3);
    const auto epochs = EpochsOf(reader, bytes);
    ASSERT_EQ(epochs.size(), 25U);
    const std::string set = Gsa(1) + Gsa(2) + Gsa(3);
    std::vector<std::size_t> with;
    for (std::size_t i = 0; i < epochs.size(); ++i) {
        if (epochs[i].gsa.empty()) continue;
        EXPECT_EQ(epochs[i].gsa, set);
        with.push_back(i);
    }
    EXPECT_EQ(with, (std::vector<std::size_t>{0, 10, 20}));
}

TEST(EpochAssembler, PassesNoMoreThanAKibibyteAndAHalfOfGsa)
{
    EpochReader reader;
    std::string bytes;
    for (int i = 0; i < 100; ++i)
        bytes += Gsa(1);
    const auto epochs = EpochsOf(reader, bytes + Gga(Tenth(0)));
    ASSERT_EQ(epochs.size(), 1U);
    const std::size_t whole = 1500 / Gsa(1).size() * Gsa(1).size();
    EXPECT_LE(epochs[0].gsa.size(), 1500U);
    EXPECT_GE(epochs[0].gsa.size(), whole - Gsa(1).size());
    EXPECT_EQ(epochs[0].gsa.size() % Gsa(1).size(), 0U) << "whole sentences";
}

TEST(EpochAssembler, ForgetsTheHalfEpochOnRestart)
{
    EpochReader reader;
    reader.Feed(Gga(Tenth(0)) + "$GNGST,", 0ms);
    reader.Restart();
    const auto epochs =
        EpochsOf(reader, Gst(Tenth(0)) + Gga(Tenth(1), "4733.96,N,01900.50,E"), 9, 1s);
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_EQ(epochs[0].utc, Tenth(1));
}
