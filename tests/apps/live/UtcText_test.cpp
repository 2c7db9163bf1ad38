// SPDX-License-Identifier: MIT
#include "apps/cli/live/UtcText.h"

#include <gtest/gtest.h>

namespace {

TEST(UtcText, ReadsTimesOfDayAndOfDates)
{
    struct Case
    {
        const char* text;
        double seconds;
        bool hasDate;
    };
    constexpr Case cases[] = {
        {"13:07:58",                 47278.0,        false},
        {"13:07:58.125",             47278.125,      false},
        {"13:07:58.",                47278.0,        false},
        {"23:59:60.5",               86400.5,        false},
        {"47278.125",                47278.125,      false},
        {"1795352878.5",             1795352878.5,   true },
        {"2026-11-22T13:07:58.125Z", 1795352878.125, true },
        {"2026-11-22 13:07:58",      1795352878.0,   true },
        {"1970-01-01T00:00:00",      0.0,            true },
    };
    for (const Case& c : cases) {
        const auto time = cli::ParseUtcTime(c.text);
        ASSERT_TRUE(time) << c.text;
        EXPECT_EQ(time->seconds, c.seconds) << c.text;
        EXPECT_EQ(time->hasDate, c.hasDate) << c.text;
    }
}

TEST(UtcText, RefusesWhatIsNoTime)
{
    for (const char* const text : {"",
                                   "x",
                                   "-1",
                                   "24:00:00",
                                   "13:60:00",
                                   "13:07:61",
                                   "13:07",
                                   "13:07:5",
                                   "13:07:58,5",
                                   "2026-13-01T00:00:00",
                                   "2026-02-30T00:00:00",
                                   "2026-11-22T",
                                   "2026/11/22T13:07:58",
                                   "nan",
                                   ":",
                                   "1:",
                                   "13:07-58",
                                   "x3:07:58",
                                   "13:x7:58",
                                   "13:07:x8",
                                   "13:07:-8",
                                   "13:07:5.8",
                                   "13:07:58x",
                                   "13:07:58.x",
                                   "13:07:58.1e1",
                                   "x026-11-22T13:07:58",
                                   "2026-x1-22T13:07:58",
                                   "2026-11/22T13:07:58",
                                   "2026-11-x2T13:07:58",
                                   "2026-11-22T1",
                                   "2026-11-22T13:07"})
        EXPECT_FALSE(cli::ParseUtcTime(text)) << text;
}

TEST(UtcText, CountsDaysOnFromMidnight)
{
    cli::DayCounter days;
    EXPECT_EQ(days.Next({86399.0, false}), 86399.0);
    EXPECT_EQ(days.Next({1.0, false}), 86401.0);
    EXPECT_EQ(days.Next({0.5, false}), 86400.5); // a small step back is none of midnight
    EXPECT_EQ(days.Next({1795352878.0, true}), 1795352878.0);
}

} // namespace
