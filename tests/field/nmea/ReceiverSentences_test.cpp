// SPDX-License-Identifier: MIT
#include "field/nmea/ReceiverSentences.h"

#include "tests/field/nmea/Sentences.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::chrono_literals;
using nmea_tests::Read;
using tiltpole::field::IsGsa;
using tiltpole::field::ReadGga;
using tiltpole::field::ReadGst;
using tiltpole::field::ReadRmc;
using tiltpole::field::ReadSentence;
using tiltpole::field::ReadZda;

namespace {

const std::string kPlace = "4733.9633191,N,01900.5012567,E";
const std::string kGga =
    "GNGGA,130758.00,4733.9633191,N,01900.5012567,E,4,12,0.72,193.444,M,39.4290,M,1.0,0207";
const std::string kRmc =
    "GNRMC,130758.00,A,4733.9633191,N,01900.5012567,E,0.01,271.3,221126,5.8,E,R,V";
const std::string kGst = "GNGST,130758.00,0.9,0.012,0.008,160.1,0.011,0.009,0.015";
const std::string kZda = "GNZDA,130758.00,22,11,2026,00,00";

// `body` with `from` replaced by `to`.
std::string Changed(std::string body, const std::string& from, const std::string& to)
{
    const std::size_t at = body.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return body.replace(at, from.size(), to);
}

struct Change
{
    const char* from;
    const char* to;
};

bool IsGsaBody(const std::string& body)
{
    std::string line = nmea_tests::Line(body);
    line.resize(line.size() - 2);
    const auto sentence = ReadSentence(line);
    return sentence && IsGsa(*sentence);
}

} // namespace

TEST(Gga, GivesPositionHeightsAndQuality)
{
    const auto gga = Read(ReadGga, kGga);
    ASSERT_TRUE(gga);
    EXPECT_EQ(gga->utc, "130758.00");
    EXPECT_NEAR(gga->position->latitude, 47.566055318333333, 1e-13);
    EXPECT_NEAR(gga->position->longitude, 19.008354278333333, 1e-13);
    EXPECT_EQ(gga->position->latitudeDecimals, 7);
    EXPECT_EQ(gga->quality, 4);
    EXPECT_EQ(gga->satellites, 12);
    EXPECT_EQ(gga->hdop, 0.72);
    EXPECT_EQ(gga->height, 193.444);
    EXPECT_EQ(gga->heightDecimals, 3);
    EXPECT_EQ(gga->separation, 39.429);
    EXPECT_EQ(gga->separationText, "39.4290");
    EXPECT_EQ(gga->correctionAge, 1.0);
    EXPECT_EQ(gga->station, "0207");
}

TEST(Gga, SouthAndWestAreNegative)
{
    const auto gga = Read(ReadGga, Changed(Changed(kGga, ",N,", ",S,"), ",E,", ",W,"));
    ASSERT_TRUE(gga);
    EXPECT_NEAR(gga->position->latitude, -47.566055318333333, 1e-13);
    EXPECT_NEAR(gga->position->longitude, -19.008354278333333, 1e-13);
}

TEST(Gga, WithoutAFixNeedsNoPosition)
{
    for (const char* body :
         {"GNGGA,130758.00,,,,,0,00,99.99,,,,,,", "GNGGA,130758.00,,,,,0,,,,M,,M,,",
          "GNGGA,130758.00,,N,,E,0,00,,,M,,M,,"}) {
        const auto gga = Read(ReadGga, body);
        ASSERT_TRUE(gga) << body;
        EXPECT_FALSE(gga->position);
        EXPECT_EQ(gga->quality, 0);
    }
    EXPECT_TRUE(Read(ReadGga, Changed(kGga, ",4,12", ",0,12"))->position);
}

TEST(Gga, HasAWholePositionOrNoneWithoutAFixToo)
{
    for (const char* position :
         {"4733.9633191,N,,", ",,01900.5012567,E", ",N,01900.5012567,E", ",X,,E", ",N,,X"}) {
        const std::string body = std::string("GNGGA,130758.00,") + position + ",0,00,99.99,,,,,,";
        EXPECT_FALSE(Read(ReadGga, body)) << position;
    }
}

TEST(Gga, HoldsNumbersWhereItHoldsHeightsWithoutAFix)
{
    EXPECT_TRUE(Read(ReadGga, "GNGGA,130758.00,,,,,0,00,99.99,193.4,M,39.4,M,,"));
    EXPECT_FALSE(Read(ReadGga, "GNGGA,130758.00,,,,,0,00,99.99,high,M,39.4,M,,"));
    EXPECT_FALSE(Read(ReadGga, "GNGGA,130758.00,,,,,0,00,99.99,193.4,M,wide,M,,"));
}

TEST(Gga, IsRefusedWhereAFieldIsOutOfItsRange)
{
    const Change changes[] = {
        {"130758",        "240000"            },
        {"130758",        "136058"            },
        {"130758.00",     "13075"             },
        {"130758.00",     "130758."           },
        {"130758.00",     "130758.0000000000" },
        {"130758.00",     ""                  },
        {"4733.96",       "4760.00"           },
        {"4733.9633191",  "4760.0"            },
        {"4733.9633191",  "9000.1"            },
        {"4733.9633191",  "473.9"             },
        {"4733.9633191",  "47333.9"           },
        {"4733.9633191",  "473a.9"            },
        {"4733.9633191",  "-733.9"            },
        {"4733.9633191",  "47-3.9"            },
        {"4733.9633191",  "47-0.0"            },
        {"4733.9633191",  "47-00.0"           },
        {"4733.9633191",  ""                  },
        {"01900.5012567", "1900.5012567"      },
        {"01900.5012567", "18000.1"           },
        {",N,",           ",E,"               },
        {",N,",           ",,"                },
        {",N,",           ",n,"               },
        {",E,",           ",NE,"              },
        {",4,12",         ",,12"              },
        {",4,12",         ",44,12"            },
        {",4,12",         ",4,"               },
        {",4,12",         ",4,123"            },
        {",4,12",         ",4,-1"             },
        {"0.72",          "0.7.2"             },
        {"0.72",          "-1"                },
        {"193.444",       ""                  },
        {"193.444",       "1e2"               },
        {"193.444",       "nan"               },
        {"193.444",       "193444000"         },
        {",M,39",         ",F,39"             },
        {",M,39",         ",,39"              },
        {"39.4290",       ""                  },
        {"39.4290",       "3942.9"            },
        {"M,1.0",         ",1.0"              },
        {",1.0,",         ",x,"               },
        {kPlace.c_str(),  ",,,"               },
        {",0207",         ",01234567890123456"},
        {",0207",         ",0207,"            },
        {",0207",         ""                  },
    };
    for (const Change& c : changes)
        EXPECT_FALSE(Read(ReadGga, Changed(kGga, c.from, c.to))) << c.from << " to " << c.to;
}

TEST(Gga, TakesTheEndsOfTheRanges)
{
    constexpr Change changes[] = {
        {"4733.9633191",  "4759.9999999"    },
        {"4733.9633191",  "9000.0000000"    },
        {"4733.9633191",  "0000.00"         },
        {"01900.5012567", "18000.0000000"   },
        {"130758.00",     "235960.00"       },
        {"130758.00",     "130758"          },
        {"130758.00",     "130758.000000000"},
        {",1.0,0207",     ",-0.2,"          },
        {",1.0,",         ",,"              },
        {"193.444",       "-193.444"        },
        {"39.4290",       "-39.4290"        },
        {"0.72",          ""                },
    };
    for (const Change& c : changes)
        EXPECT_TRUE(Read(ReadGga, Changed(kGga, c.from, c.to))) << c.from << " to " << c.to;
}

TEST(Rmc, GivesSpeedCourseAndDate)
{
    const auto rmc = Read(ReadRmc, kRmc);
    ASSERT_TRUE(rmc);
    EXPECT_NEAR(*rmc->speed, 0.00514444, 1e-8);
    EXPECT_EQ(rmc->course, 271.3);
    EXPECT_EQ(rmc->date, std::chrono::sys_days(2026y / 11 / 22));
    EXPECT_NEAR(rmc->position->latitude, 47.566055318333333, 1e-13);
}

TEST(Rmc, MayBeVoidAndOfAnyVersion)
{
    EXPECT_FALSE(Read(ReadRmc, "GNRMC,130758.00,V,,,,,,,221126,,,N")->position);
    EXPECT_TRUE(Read(ReadRmc, Changed(kRmc, ",R,V", "")));
    EXPECT_FALSE(Read(ReadRmc, Changed(kRmc, "221126", ""))->date);
    EXPECT_FALSE(Read(ReadRmc, Changed(kRmc, "271.3", ""))->course);
}

TEST(Rmc, IsRefusedWhereAFieldIsOutOfItsRange)
{
    const Change changes[] = {
        {"130758",       "240000"  },
        {kPlace.c_str(), ",,,"     },
        {"221126",       "320126"  },
        {"221126",       "300226"  },
        {"221126",       "221326"  },
        {"221126",       "22112026"},
        {"221126",       "2211 6"  },
        {",A,",          ",X,"     },
        {",A,",          ",,"      },
        {"271.3",        "360.1"   },
        {"0.01",         "-0.01"   },
        {"4733.9633191", ""        },
        {",E,R",         ",N,R"    },
        {",R,V",         ",Q,V"    },
        {",R,V",         ",R,V,V"  },
        {"5.8,E,R,V",    "5.8"     },
    };
    for (const Change& c : changes)
        EXPECT_FALSE(Read(ReadRmc, Changed(kRmc, c.from, c.to))) << c.from << " to " << c.to;
}

TEST(Gst, GivesSigmasAndTheEllipse)
{
    const auto gst = Read(ReadGst, kGst);
    ASSERT_TRUE(gst);
    EXPECT_TRUE(gst->Stated());
    EXPECT_EQ(gst->latitude, 0.011);
    EXPECT_EQ(gst->longitude, 0.009);
    EXPECT_EQ(gst->height, 0.015);
    EXPECT_EQ(gst->major, 0.012);
    EXPECT_EQ(gst->minor, 0.008);
    EXPECT_EQ(gst->orientation, 160.1);
}

TEST(Gst, NeedsNoEllipse)
{
    EXPECT_FALSE(Read(ReadGst, "GNGST,130758.00,,,,,0.011,0.009,0.015")->major);
    for (const Change& c : {
             Change{"0.012,0.008",       "0.008,0.012" }, // the minor axis is longer
             {"0.012,0.008,160.1", ",0.008,160.1"},
             {"0.012,0.008,160.1", "0.012,,160.1"},
             {"0.012,0.008,160.1", "0.012,0.008,"}
    }) {
        const auto gst = Read(ReadGst, Changed(kGst, c.from, c.to));
        ASSERT_TRUE(gst) << c.to;
        EXPECT_TRUE(gst->Stated()) << c.to;
        EXPECT_FALSE(gst->major || gst->minor || gst->orientation) << c.to;
    }
}

TEST(Gst, WithoutSigmasStatesNothing)
{
    EXPECT_FALSE(Read(ReadGst, "GNGST,130758.00,,,,,,,")->Stated());
    EXPECT_FALSE(Read(ReadGst, Changed(kGst, "0.009,0.015", "0.000,0.015"))->Stated());
}

TEST(Gst, IsRefusedWhereAFieldIsOutOfItsRange)
{
    constexpr Change changes[] = {
        {"0.015",  "-0.015"},
        {"0.015",  "x"     },
        {"160.1",  "361"   },
        {"0.015",  "0.015,"},
        {",0.015", ""      },
    };
    for (const Change& c : changes)
        EXPECT_FALSE(Read(ReadGst, Changed(kGst, c.from, c.to))) << c.from << " to " << c.to;
}

TEST(Zda, GivesTheDate)
{
    EXPECT_EQ(Read(ReadZda, kZda)->date, std::chrono::sys_days(2026y / 11 / 22));
    EXPECT_FALSE(Read(ReadZda, "GNZDA,130758.00,,,,,")->date);
    for (const Change& c : {
             Change{"22,11",  "31,11" },
             {"2026",   "26"    },
             {"2026",   "1999"  },
             {"22,",    ","     },
             {"22,11",  ","     },
             {"130758", "240000"},
             {",00,00", ",00"   }
    })
        EXPECT_FALSE(Read(ReadZda, Changed(kZda, c.from, c.to))) << c.from << " to " << c.to;
}

TEST(Gsa, IsKnownByItsForm)
{
    const std::string gsa = "GNGSA,A,3,15,08,07,28,30,13,14,05,,,,,1.15,0.68,0.93,1";
    EXPECT_TRUE(IsGsaBody(gsa));
    EXPECT_TRUE(IsGsaBody(Changed(gsa, "0.93,1", "0.93")));
    EXPECT_TRUE(IsGsaBody("GNGSA,A,1,,,,,,,,,,,,,99.99,99.99,99.99,1"));
    for (const Change& c : {
             Change{"A,3",    "B,3"    },
             {"A,3",    "A,4"    },
             {"15,08",  "1x,08"  },
             {"0.68",   "-1"     },
             {"0.93,1", "0.93,12"},
             {",,,,,",  ",,,,"   }
    })
        EXPECT_FALSE(IsGsaBody(Changed(gsa, c.from, c.to))) << c.from << " to " << c.to;
}
