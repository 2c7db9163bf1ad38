// SPDX-License-Identifier: MIT
#include "apps/live/GpsdJson.h"

#include "field/nmea/EpochReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

const std::string kTpv =
    R"({"class":"TPV","device":"/dev/pts/1","status":3,"mode":3,"time":"2026-11-22T13:07:58.200Z",)"
    R"("ept":0.005,"lat":47.566055318,"lon":-19.008354278,"altHAE":232.8730,"altMSL":193.4440,)"
    R"("alt":193.4440,"track":271.3,"speed":0.500,"eph":11.4,"geoidSep":39.4290,)"
    R"("dgpsAge":1.0,"dgpsSta":207})";
const std::string kGst =
    R"({"class":"GST","device":"/dev/pts/1","time":"2026-11-22T13:07:58.200Z",)"
    R"("rms":0.9,"major":0.012,"minor":0.008,"orient":160.1,)"
    R"("lat":0.011,"lon":0.009,"alt":0.015})";
const std::string kSky = R"({"class":"SKY","hdop":0.72,"nSat":30,"uSat":17,"satellites":[]})";

std::string Changed(std::string text, const std::string& from, const std::string& to)
{
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

std::vector<field::Epoch> EpochsOf(const std::string& sentences)
{
    tiltpole::field::EpochReader reader;
    reader.Feed(sentences, {});
    reader.Tick(std::chrono::seconds(1));
    EXPECT_EQ(reader.Lines().bad, 0U);
    EXPECT_EQ(reader.Epochs().Refused(), 0U);
    return reader.Take();
}

} // namespace

TEST(GpsdJson, TurnsItsObjectsIntoOneEpoch)
{
    GpsdJson gpsd;
    EXPECT_EQ(gpsd.Feed(kSky + "\r\n"), "");
    const std::string fix = gpsd.Feed(kTpv + "\r\n");
    const auto epochs = EpochsOf(fix + gpsd.Feed(kGst));
    ASSERT_EQ(epochs.size(), 1U);
    const field::Epoch& epoch = epochs[0];
    EXPECT_EQ(epoch.utc, "130758.200");
    EXPECT_NEAR(epoch.antenna.latitude, 47.566055318, 1e-9);
    EXPECT_NEAR(epoch.antenna.longitude, -19.008354278, 1e-9);
    EXPECT_NEAR(epoch.antenna.ellipsoidalHeight, 232.873, 1e-9);
    EXPECT_EQ(epoch.geoidSeparation, 39.429);
    EXPECT_EQ(epoch.fix, field::Fix::Fixed);
    EXPECT_EQ(epoch.satellites, 17);
    EXPECT_EQ(epoch.hdop, 0.72);
    EXPECT_EQ(epoch.correctionAge, 1.0);
    EXPECT_EQ(epoch.station, "0207");
    EXPECT_NEAR(*epoch.speed, 0.5, 1e-3);
    EXPECT_EQ(epoch.date, std::chrono::sys_days(std::chrono::year(2026) / 11 / 22));
    EXPECT_FALSE(epoch.sigmaAssumed);
    EXPECT_NEAR(std::sqrt(epoch.sigma.nn), 0.011, 1e-9);
    EXPECT_NEAR(std::sqrt(epoch.sigma.hh), 0.015, 1e-9);
}

TEST(GpsdJson, MapsStatusToQuality)
{
    struct Case
    {
        const char* status;
        field::Fix fix;
    };
    for (const Case& c : {
             Case{"1",   field::Fix::Single      },
             {"2",   field::Fix::Differential},
             {"3",   field::Fix::Fixed       },
             {"4",   field::Fix::Float       },
             {"5",   field::Fix::Estimated   },
             {"6",   field::Fix::Estimated   },
             {"8",   field::Fix::Estimated   },
             {"1e9", field::Fix::Single      },
             {"7",   field::Fix::Single      }
    }) {
        const auto epochs = EpochsOf(
            GpsdJson().Feed(Changed(kTpv, "\"status\":3", std::string("\"status\":") + c.status)));
        ASSERT_EQ(epochs.size(), 1U) << c.status;
        EXPECT_EQ(epochs[0].fix, c.fix) << c.status;
    }
    const auto single = EpochsOf(GpsdJson().Feed(Changed(kTpv, "\"status\":3,", "")));
    EXPECT_EQ(single.at(0).fix, field::Fix::Single);
    const auto none = EpochsOf(GpsdJson().Feed(Changed(kTpv, "\"mode\":3", "\"mode\":1")));
    EXPECT_EQ(none.at(0).fix, field::Fix::Invalid);
}

TEST(GpsdJson, CompletesHeightsAndWaitsForOneThatIsMissing)
{
    const auto epochs = EpochsOf(GpsdJson().Feed(Changed(kTpv, "\"geoidSep\":39.4290,", "")));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_NEAR(epochs[0].geoidSeparation, 39.429, 1e-9);
    EXPECT_EQ(GpsdJson().Feed(Changed(Changed(kTpv, "altMSL", "x"), "altHAE", "y")), "");
}

TEST(GpsdJson, TakesHeightsByAnyTwoOfThree)
{
    for (const char* const without : {"altHAE", "altMSL", "geoidSep"}) {
        const auto epochs = EpochsOf(GpsdJson().Feed(Changed(kTpv, without, "x")));
        ASSERT_EQ(epochs.size(), 1U) << without;
        EXPECT_NEAR(epochs[0].antenna.ellipsoidalHeight, 232.873, 1e-9) << without;
        EXPECT_NEAR(epochs[0].geoidSeparation, 39.429, 1e-9) << without;
    }
    for (const auto& [one, other] : {
             std::pair("altHAE", "altMSL"), {"altMSL", "geoidSep"},
               {"altHAE", "geoidSep"}
    })
        EXPECT_EQ(GpsdJson().Feed(Changed(Changed(kTpv, one, "x"), other, "y")), "") << one;
}

TEST(GpsdJson, TakesNoPositionWithoutBothCoordinates)
{
    for (const char* const of : {"\"lat\":47.566055318", "\"lon\":-19.008354278"}) {
        EXPECT_EQ(GpsdJson().Feed(Changed(kTpv, of, "\"x\":1")), "") << of;
        EXPECT_EQ(GpsdJson().Feed(Changed(kTpv, of, std::string(of).substr(0, 6) + "\"7\"")), "")
            << of;
    }
}

TEST(GpsdJson, LeavesOutWhatIsNotGivenBesideThePosition)
{
    std::string line = kTpv;
    for (const char* const key : {"speed", "track", "dgpsAge", "dgpsSta"})
        line = Changed(line, key, "x");
    const auto epochs = EpochsOf(GpsdJson().Feed(line));
    ASSERT_EQ(epochs.size(), 1U);
    EXPECT_FALSE(epochs[0].speed);
    EXPECT_FALSE(epochs[0].correctionAge);
    EXPECT_EQ(epochs[0].station, "");
    const auto negative = EpochsOf(GpsdJson().Feed(Changed(kTpv, ":207", ":-207")));
    EXPECT_EQ(negative.at(0).station, "");
}

TEST(GpsdJson, TakesNoTimeOfAnotherForm)
{
    for (const char* const time : {"13:07:58.200Z", "2026-11-22T13:07:58Z0",
                                   "2026-11-22T13:07:58.2", "2026-11-22T13:07:58.2000000000000Z"}) {
        EXPECT_EQ(GpsdJson().Feed(Changed(kTpv, "2026-11-22T13:07:58.200Z", time)), "") << time;
        EXPECT_EQ(GpsdJson().Feed(Changed(kGst, "2026-11-22T13:07:58.200Z", time)), "") << time;
    }
}

TEST(GpsdJson, KeepsTheLastDilutionThatCanBe)
{
    for (const char* const sky :
         {R"({"class":"SKY","hdop":-1})", R"({"class":"SKY","hdop":1000})",
          R"({"class":"SKY","hdop":"0.9"})", R"({"class":"SKY","satellites":7})"}) {
        GpsdJson gpsd;
        gpsd.Feed(kSky);
        gpsd.Feed(sky);
        const auto epochs = EpochsOf(gpsd.Feed(kTpv));
        ASSERT_EQ(epochs.size(), 1U) << sky;
        EXPECT_EQ(epochs[0].hdop, 0.72) << sky;
        EXPECT_EQ(epochs[0].satellites, 17) << sky;
    }
}

TEST(GpsdJson, CountsUsedSatellitesWhereTheirNumberIsNotGiven)
{
    GpsdJson gpsd;
    gpsd.Feed(
        R"({"class":"SKY","satellites":[{"PRN":1,"used":true},{"PRN":2,"used":false},7,{"used":1},{"used":true}]})");
    EXPECT_EQ(EpochsOf(gpsd.Feed(kTpv)).at(0).satellites, 2);
}

TEST(GpsdJson, TakesNothingFromWhatItDoesNotKnow)
{
    const std::string deep(8000, '[');
    const std::string lines[] = {"",
                                 "{",
                                 "7",
                                 "[]",
                                 deep,
                                 "{\"class\":7}",
                                 "{\"kind\":\"TPV\"}",
                                 "{\"class\":\"VERSION\",\"release\":\"3.22\"}",
                                 "{\"class\":\"TPV\"}",
                                 Changed(kTpv, "2026-11-22T", "22.11.2026 "),
                                 Changed(kTpv, "58.200Z", "58,200Z"),
                                 Changed(kTpv, "\"2026-11-22T13:07:58.200Z\"", "1234"),
                                 std::string("{\"class\":\"TPV\",\"x\":\"")
                                     + std::string(20000, 'x') + "\"}"};
    for (const std::string& line : lines)
        EXPECT_EQ(GpsdJson().Feed(line), "") << line.substr(0, 60);
}
