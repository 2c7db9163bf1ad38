// SPDX-License-Identifier: MIT
#include "apps/live/Endpoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kind = live::Endpoint::Kind;
using testing::HasSubstr;

struct Case
{
    const char* text;
    Kind kind;
    const char* name;
    unsigned number; // port or speed
};

void Expect(const live::ParsedEndpoint& parsed, const Case& c)
{
    ASSERT_TRUE(parsed.endpoint) << c.text << ": " << parsed.problem;
    EXPECT_EQ(parsed.endpoint->kind, c.kind) << c.text;
    EXPECT_EQ(parsed.endpoint->name, c.name) << c.text;
    EXPECT_EQ(parsed.endpoint->port + parsed.endpoint->baud, c.number) << c.text;
    EXPECT_EQ(parsed.endpoint->text, c.text);
    EXPECT_EQ(parsed.problem, "");
}

TEST(Endpoint, OfASourceIsRead)
{
    constexpr Case cases[] = {
        {"serial:/dev/ttyACM0:460800", Kind::Serial,   "/dev/ttyACM0",   460800},
        {"serial:/dev/a:b:9600",       Kind::Serial,   "/dev/a:b",       9600  },
        {"tcp:localhost:2101",         Kind::Tcp,      "localhost",      2101  },
        {"tcp:10.0.0.7:1",             Kind::Tcp,      "10.0.0.7",       1     },
        {"tcp:[::1]:65535",            Kind::Tcp,      "::1",            65535 },
        {"tcp:Pole_3.LOCAL:2101",      Kind::Tcp,      "Pole_3.LOCAL",   2101  },
        {"udp:4000",                   Kind::Udp,      "127.0.0.1",      4000  },
        {"udp:0.0.0.0:4000",           Kind::Udp,      "0.0.0.0",        4000  },
        {"gpsd:pole-3.local:2947",     Kind::Gpsd,     "pole-3.local",   2947  },
        {"file:day.nmea",              Kind::File,     "day.nmea",       0     },
        {"file:mail@home.nmea",        Kind::File,     "mail@home.nmea", 0     },
        {"-",                          Kind::Standard, "",               0     },
    };
    for (const Case& c : cases)
        Expect(live::ParseSource(c.text), c);
}

TEST(Endpoint, OfASinkIsRead)
{
    constexpr Case cases[] = {
        {"tcp:10110",             Kind::Tcp,      "127.0.0.1",     10110},
        {"tcp:0",                 Kind::Tcp,      "127.0.0.1",     0    },
        {"tcp:0.0.0.0:10110",     Kind::Tcp,      "0.0.0.0",       10110},
        {"tcp:[fd00::7]:10110",   Kind::Tcp,      "fd00::7",       10110},
        {"udp:192.168.4.255:999", Kind::Udp,      "192.168.4.255", 999  },
        {"pty:/dev/pole",         Kind::Pty,      "/dev/pole",     0    },
        {"file:out@2.nmea",       Kind::File,     "out@2.nmea",    0    },
        {"-",                     Kind::Standard, "",              0    },
    };
    for (const Case& c : cases)
        Expect(live::ParseSink(c.text), c);
}

TEST(Endpoint, OfAFileMayHaveARate)
{
    const auto parsed = live::ParseSource("file:a@b.nmea@12.5");
    ASSERT_TRUE(parsed.endpoint);
    EXPECT_EQ(parsed.endpoint->name, "a@b.nmea");
    EXPECT_EQ(parsed.endpoint->rate, 12.5);
    EXPECT_EQ(live::ParseSource("file:a.nmea").endpoint->rate, std::nullopt);
    // A sink has no rate: what follows the @ belongs to its name.
    EXPECT_EQ(live::ParseSink("file:a@5").endpoint->name, "a@5");
}

struct Mistake
{
    const char* text;
    const char* reason;
};

TEST(Endpoint, OfASourceThatIsNoneIsRefusedWithTheReason)
{
    constexpr Mistake mistakes[] = {
        {"",                    "is not a source"                 },
        {"/dev/ttyUSB0",        "is not a source"                 },
        {"pty:link",            "is not a source"                 },
        {"SERIAL:/dev/a:9600",  "is not a source"                 },
        {"serial:/dev/ttyUSB0", "lacks DEV or BAUD"               },
        {"serial::9600",        "lacks DEV or BAUD"               },
        {"serial:/dev/a:9601",  "has the speed '9601', not 1200, "},
        {"serial:/dev/a:+9600", "has the speed '+9600'"           },
        {"serial:/dev/a:9600 ", "has the speed '9600 '"           },
        {"tcp:2101",            "lacks HOST or PORT"              },
        {"tcp::2101",           "has the host ''"                 },
        {"tcp:::1:2101",        "has the host '::1'"              },
        {"tcp:[::1]",           "lacks HOST or PORT"              },
        {"tcp:[::g]:1",         "has the host '[::g]'"            },
        {"tcp:[::1:80",         "has the host '[::1'"             },
        {"tcp:[127.0.0.1]:80",  "has the host '[127.0.0.1]'"      },
        {"tcp:a b:1",           "has the host 'a b'"              },
        {"tcp:a{b:1",           "has the host 'a{b'"              },
        {"tcp:a^b:1",           "has the host 'a^b'"              },
        {"tcp:host:0",          "not one from 1 to 65535"         },
        {"tcp:host:65536",      "not one from 1 to 65535"         },
        {"tcp:host:-1",         "not one from 1 to 65535"         },
        {"tcp:host:",           "has the port ''"                 },
        {"udp:host:1",          "none in digits"                  },
        {"file:",               "names no file"                   },
        {"file:@5",             "names no file"                   },
        {"file:a@0",            "has a rate that is not between"  },
        {"file:a@1e9",          "has a rate that is not between"  },
        {"udp:a b:1",           "none in digits"                  },
        {"tcp:ho\nst:1",        "cannot be printed"               },
        {"tcp:ho\x7fst:1",      "cannot be printed"               },
    };
    for (const Mistake& m : mistakes) {
        const auto parsed = live::ParseSource(m.text);
        EXPECT_FALSE(parsed.endpoint) << m.text;
        EXPECT_THAT(parsed.problem, HasSubstr(m.reason)) << m.text;
    }
}

TEST(Endpoint, OfASinkThatIsNoneIsRefusedWithTheReason)
{
    constexpr Mistake mistakes[] = {
        {"serial:/dev/a:9600", "is not a sink"          },
        {"tcp:",               "has the port ''"        },
        {"tcp:localhost:1",    "none in digits"         },
        {"tcp:1.2.3:1",        "none in digits"         },
        {"tcp:65536",          "not one from 0 to 65535"},
        {"udp:10110",          "lacks ADDR or PORT"     },
        {"udp:127.0.0.1:0",    "not one from 1 to 65535"},
        {"pty:",               "names no link"          },
        {"pty:a\nb",           "cannot be printed"      },
        {"file:",              "names no file"          },
    };
    for (const Mistake& m : mistakes) {
        const auto parsed = live::ParseSink(m.text);
        EXPECT_FALSE(parsed.endpoint) << m.text;
        EXPECT_THAT(parsed.problem, HasSubstr(m.reason)) << m.text;
    }
}

TEST(Endpoint, HasAHostOfNoMoreCharactersThanANameMayHave)
{
    const std::string longest(253, 'a');
    EXPECT_TRUE(live::ParseSource("tcp:" + longest + ":1").endpoint);
    EXPECT_THAT(live::ParseSource("tcp:" + longest + "a:1").problem, HasSubstr("has the host 'a"));
}

TEST(Endpoint, KnowsAddressesOfThisComputer)
{
    for (const char* const address : {"127.0.0.1", "127.3.2.1", "::1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(live::IsLoopback(address)) << address;
    for (const char* const address : {"0.0.0.0", "128.0.0.1", "::", "fd00::1", "localhost"})
        EXPECT_FALSE(live::IsLoopback(address)) << address;
}

} // namespace
