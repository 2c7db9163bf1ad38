// SPDX-License-Identifier: MIT
#include "field/time/EpochClock.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using tiltpole::field::EpochClock;
using tiltpole::field::SecondsOfDay;
using Step = EpochClock::Step;
using namespace std::chrono;

namespace {

constexpr double kRoundOff = 1e-9;

struct TimeCase
{
    const char* text;
    double expected; // [s]; below 0: not a time
};

struct Advanced
{
    const char* utc;
    Step step;
    double seconds;
};

void CheckCourse(std::initializer_list<Advanced> course)
{
    EpochClock clock;
    for (const Advanced& epoch : course) {
        const EpochClock::Result result = clock.Advance(epoch.utc, {});
        EXPECT_EQ(result.step, epoch.step) << epoch.utc;
        EXPECT_NEAR(result.seconds, epoch.seconds, kRoundOff) << epoch.utc;
    }
}

constexpr double kDay = 86400.0;

} // namespace

TEST(EpochClock, ReadsTimesOfDay)
{
    constexpr TimeCase cases[] = {
        {"000000",                 0.0      },
        {"000000.00",              0.0      },
        {"130758.20",              47278.2  },
        {"235959.999",             86399.999},
        {"235960",                 86400.0  },
        {"235960.80",              86400.8  },
        {"000000.",                0.0      },
        {"",                       -1.0     },
        {"13075",                  -1.0     },
        {"240000",                 -1.0     },
        {"126000",                 -1.0     },
        {"125960",                 -1.0     },
        {"225960",                 -1.0     },
        {"130758,2",               -1.0     },
        {"130758.2x",              -1.0     },
        {"-30758.2",               -1.0     },
        {" 30758.2",               -1.0     },
        {"130758.2e1",             -1.0     },
        {"130758.000000000000000", -1.0     },
    };
    for (const TimeCase& c : cases) {
        const std::optional<double> found = SecondsOfDay(c.text);
        ASSERT_EQ(found.has_value(), c.expected >= 0.0) << c.text;
        if (found) {
            EXPECT_NEAR(*found, c.expected, kRoundOff) << c.text;
        }
    }
}

TEST(EpochClock, IsNoDateBetweenARestartAndTheNextEpoch)
{
    EpochClock clock;
    clock.Advance("120000", sys_days(2026y / 11 / 22));
    EXPECT_EQ(clock.UnixSeconds(), 1795348800.0);
    clock.Restart();
    EXPECT_FALSE(clock.UnixSeconds());
    EXPECT_FALSE(clock.DecimalYear());
    clock.Advance("120001", {});
    EXPECT_EQ(clock.UnixSeconds(), 1795348801.0);
    EXPECT_TRUE(clock.DecimalYear());
}

TEST(EpochClock, TakesNoFirstStepAboveTenSecondsForThePeriod)
{
    EpochClock clock;
    clock.Advance("120000", {});
    clock.Advance("120011", {});
    EXPECT_EQ(clock.Period(), 0.0);
    clock.Advance("120021", {});
    EXPECT_EQ(clock.Period(), 10.0);
}

TEST(EpochClock, CountsOnAcrossMidnight)
{
    CheckCourse({
        {"235959.60", Step::First, kDay - 0.4},
        {"235959.80", Step::Next,  kDay - 0.2},
        {"000000.00", Step::Next,  kDay      },
        {"000000.20", Step::Next,  kDay + 0.2},
    });
}

TEST(EpochClock, NeverWrapsInThreeDays)
{
    EpochClock clock;
    double before = 0.0;
    for (int second = 0; second < 3 * 86400; second += 5) {
        char text[16];
        const int of = second % 86400;
        std::snprintf(text, sizeof text, "%02d%02d%02d.00", of / 3600, of / 60 % 60, of % 60);
        const EpochClock::Result result = clock.Advance(text, {});
        ASSERT_EQ(result.step, second == 0 ? Step::First : Step::Next) << text;
        ASSERT_GE(result.seconds, before);
        before = result.seconds;
    }
    EXPECT_NEAR(before, 3 * kDay - 5.0, kRoundOff);
}

TEST(EpochClock, CountsALeapSecond)
{
    CheckCourse({
        {"235958.50", Step::First, kDay - 1.5},
        {"235959.00", Step::Next,  kDay - 1.0},
        {"235959.50", Step::Next,  kDay - 0.5},
        {"235960.00", Step::Next,  kDay      },
        {"235960.50", Step::Next,  kDay + 0.5},
        {"000000.00", Step::Next,  kDay + 1.0},
        {"000000.50", Step::Next,  kDay + 1.5},
    });
}

TEST(EpochClock, DropsRepeatedTimes)
{
    CheckCourse({
        {"120000.00", Step::First,    43200.0},
        {"120000.00", Step::Repeated, 43200.0},
        {"120001.00", Step::Next,     43201.0},
        {"120001.0",  Step::Repeated, 43201.0},
    });
}

TEST(EpochClock, ReportsTheLeapSecondsOfAReceiverThatStarts)
{
    // GPS time until the leap seconds are received, 18 s ahead of UTC.
    CheckCourse({
        {"120018.00", Step::First, 43218.0},
        {"120019.00", Step::Next,  43219.0},
        {"120002.00", Step::Jump,  43202.0},
        {"120003.00", Step::Next,  43203.0},
    });
}

TEST(EpochClock, ReportsEveryStepBackAndLongStepsAhead)
{
    CheckCourse({
        {"120000.00", Step::First, 43200.0},
        {"120000.20", Step::Next,  43200.2},
        {"120001.40", Step::Next,  43201.4}, // 1.5 periods and 1 s are 1.3 s
        {"120002.80", Step::Jump,  43202.8},
        {"120002.60", Step::Jump,  43202.6},
        {"120002.80", Step::Next,  43202.8},
    });
}

TEST(EpochClock, StepsBackAcrossMidnight)
{
    CheckCourse({
        {"235959.80", Step::First, kDay - 0.2},
        {"000000.00", Step::Next,  kDay      },
        {"235959.90", Step::Jump,  kDay - 0.1},
        {"000000.00", Step::Next,  kDay      },
    });
}

TEST(EpochClock, LearnsAPeriodOfTenSeconds)
{
    CheckCourse({
        {"120000", Step::First, 43200.0},
        {"120010", Step::Next,  43210.0},
        {"120020", Step::Next,  43220.0},
        {"120040", Step::Jump,  43240.0}, // more than 16 s
    });
}

TEST(EpochClock, LearnsAnotherPeriodFromTwoSteps)
{
    EpochClock clock;
    for (const char* utc : {"120000.0", "120000.1", "120000.2"})
        clock.Advance(utc, {});
    EXPECT_NEAR(clock.Period(), 0.1, kRoundOff);
    EXPECT_EQ(clock.Advance("120005.2", {}).step, Step::Jump);
    EXPECT_EQ(clock.Advance("120010.2", {}).step, Step::Jump);
    EXPECT_NEAR(clock.Period(), 5.0, kRoundOff);
    EXPECT_EQ(clock.Advance("120015.2", {}).step, Step::Next);
}

TEST(EpochClock, LeavesTextThatIsNoTimeAlone)
{
    EpochClock clock;
    clock.Advance("120000.00", {});
    EXPECT_EQ(clock.Advance("12:00:01", {}).step, Step::NoTime);
    const EpochClock::Result next = clock.Advance("120001.00", {});
    EXPECT_EQ(next.step, Step::Next);
    EXPECT_NEAR(next.change, 1.0, kRoundOff);
}

TEST(EpochClock, KnowsTheYearOnceADateCame)
{
    EpochClock clock;
    clock.Advance("115959.00", {});
    EXPECT_FALSE(clock.DecimalYear());
    clock.Advance("120000.00", sys_days(2026y / July / 2));
    EXPECT_NEAR(clock.DecimalYear().value(), 2026.5, kRoundOff);
    // 2026-07-02 12:00 UTC, by `date -u -d ... +%s`.
    EXPECT_NEAR(clock.UnixSeconds().value(), 1782993600.0, kRoundOff);
}

TEST(EpochClock, KeepsTheDateAcrossMidnight)
{
    EpochClock clock;
    clock.Advance("235959.00", sys_days(2024y / December / 31));
    clock.Advance("000000.00", {});
    EXPECT_NEAR(clock.DecimalYear().value(), 2025.0, kRoundOff);
    clock.Advance("000001.00", sys_days(2025y / January / 1));
    EXPECT_NEAR(clock.DecimalYear().value(), 2025.0 + 1.0 / (365.0 * kDay), kRoundOff);
}

TEST(EpochClock, BeginsAnewAfterARestart)
{
    EpochClock clock;
    clock.Advance("120000.00", sys_days(2026y / July / 2));
    clock.Advance("120001.00", {});
    clock.Restart();
    EXPECT_EQ(clock.Period(), 0.0);
    EXPECT_EQ(clock.Advance("110000.00", {}).step, Step::First);
    EXPECT_TRUE(clock.DecimalYear());
}
