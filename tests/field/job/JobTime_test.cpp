// SPDX-License-Identifier: MIT
#include "field/job/JobTime.h"

#include <gtest/gtest.h>

namespace field {
namespace {

using std::chrono::milliseconds;

TEST(JobTime, IsOfTheFormOfAGeoPackage)
{
    EXPECT_EQ(JobTimeText(JobTime{}), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(JobTimeText(JobTime{milliseconds{1'795'352'878'200}}), "2026-11-22T13:07:58.200Z");
    EXPECT_EQ(JobTimeText(JobTime{milliseconds{-1}}), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(JobTimeText(JobTime{milliseconds{951'782'400'007}}), "2000-02-29T00:00:00.007Z");
    EXPECT_EQ(JobTimeText(JobTime::max()), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(JobTimeText(JobTime::min()), "0000-01-01T00:00:00.000Z");
}

TEST(JobTime, IsReadWithAnyFractionOfTheSecond)
{
    const JobTime second{milliseconds{1'795'352'878'000}};
    EXPECT_EQ(JobTimeOf("2026-11-22T13:07:58Z"), second);
    EXPECT_EQ(JobTimeOf("2026-11-22T13:07:58.2Z"), second + milliseconds{200});
    EXPECT_EQ(JobTimeOf("2026-11-22T13:07:58.2345Z"), second + milliseconds{234});
}

TEST(JobTime, IsRefusedInAnotherForm)
{
    for (const char* text :
         {"", "Z", "2026-11-22", "2026-11-22 13:07:58Z", "2026-11-22T13:07:58",
          "2026-11-22T13:07:58.Z", "2026-02-30T00:00:00Z", "2026-13-01T00:00:00Z",
          "2026-11-22T24:00:00Z", "2026-11-22T13:60:00Z", "2026-11-22T13:07:58.12a4Z",
          "2026-11-22T13:07:60Z", "2026-11-22T13:07:58,2Z", "2026-11-22T13:07:5 Z",
          "2026-11-22T13:07:58.1234567890Z", "2026-11-22T13:07:58+01"})
        EXPECT_FALSE(JobTimeOf(text)) << text;
}

} // namespace
} // namespace field
