// SPDX-License-Identifier: MIT
#include "apps/live/AddressRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

live::AddressRange Range(const char* text)
{
    const auto parsed = live::ParseRange(text);
    EXPECT_TRUE(parsed.range) << text << ": " << parsed.problem;
    return parsed.range.value_or(live::AddressRange{});
}

TEST(AddressRange, HoldsWhatSharesItsLeadingBits)
{
    struct Case
    {
        const char* range;
        const char* address;
        bool isHeld;
    };
    constexpr Case cases[] = {
        {"192.168.4.0/24", "192.168.4.255",    true },
        {"192.168.4.0/24", "192.168.5.0",      false},
        {"10.32.0.0/11",   "10.63.255.255",    true },
        {"10.32.0.0/11",   "10.64.0.0",        false},
        {"10.0.0.7",       "10.0.0.7",         true },
        {"10.0.0.7",       "10.0.0.6",         false},
        {"0.0.0.0/0",      "203.0.113.9",      true },
        {"0.0.0.0/0",      "::1",              false},
        {"10.0.0.0/8",     "::ffff:10.1.2.3",  true },
        {"fd00::/8",       "fdff::1",          true },
        {"fd00::/8",       "fe00::1",          false},
        {"2001:db8::/33",  "2001:db8:7fff::1", true },
        {"2001:db8::/33",  "2001:db8:8000::",  false},
    };
    for (const Case& c : cases) {
        const auto address = live::ParseAddress(c.address);
        ASSERT_TRUE(address) << c.address;
        EXPECT_EQ(Range(c.range).Holds(*address), c.isHeld) << c.range << ' ' << c.address;
    }
}

TEST(AddressRange, ThatIsNoneIsRefusedWithTheReason)
{
    struct Case
    {
        const char* text;
        const char* reason;
    };
    constexpr Case cases[] = {
        {"",            "is not ADDRESS/BITS"                       },
        {"localhost",   "is not ADDRESS/BITS"                       },
        {"10.0.0/8",    "is not ADDRESS/BITS"                       },
        {"10.0.0.0/",   "not a number of bits from 0 to 32"         },
        {"10.0.0.0/33", "not a number of bits from 0 to 32"         },
        {"10.0.0.0/8x", "not a number of bits from 0 to 32"         },
        {"fd00::/129",  "not a number of bits from 0 to 128"        },
        {"10.0.0.1/8",  "has bits of its address beyond the first 8"},
    };
    for (const Case& c : cases) {
        const auto parsed = live::ParseRange(c.text);
        EXPECT_FALSE(parsed.range) << c.text;
        EXPECT_THAT(parsed.problem, HasSubstr(c.reason)) << c.text;
    }
}

TEST(AddressRange, LetsThisComputerInAlways)
{
    const std::vector<live::AddressRange> allowed = {Range("192.168.4.0/24"), Range("fd00::/8")};
    const auto may = [&](const char* text) {
        return live::MayConnect(allowed, live::ParseAddress(text).value());
    };
    EXPECT_TRUE(may("127.0.0.1"));
    EXPECT_TRUE(may("::1"));
    EXPECT_TRUE(may("192.168.4.9"));
    EXPECT_TRUE(may("fd00::9"));
    EXPECT_FALSE(may("192.168.5.9"));
    EXPECT_FALSE(may("::"));
    EXPECT_TRUE(live::MayConnect({}, live::ParseAddress("192.168.5.9").value()));
}

} // namespace
