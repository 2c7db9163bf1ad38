// SPDX-License-Identifier: MIT
#include "apps/cli/OptionChecks.h"

#include <gtest/gtest.h>

namespace {

TEST(NumberIn, AcceptsItsRangeOnly)
{
    const CLI::Validator check = cli::NumberIn(tables::kPoleLength);
    EXPECT_EQ(check("2.0"), "");
    EXPECT_EQ(check("0.01"), "");
    EXPECT_EQ(check("100"), "");
    EXPECT_EQ(check("0"), "is 0, not between 0.01 and 100 m");
    EXPECT_EQ(check("-2"), "is -2, not between 0.01 and 100 m");
    EXPECT_EQ(check("1e9"), "is 1000000000, not between 0.01 and 100 m");
    EXPECT_EQ(check("inf"), "'inf' is not a finite number");
    EXPECT_EQ(cli::NumberIn(tables::kCutoff)("-1"), "is -1, not between 0.1 and 90 degrees");
}

TEST(IntegerIn, AcceptsDigitsWithinItsRangeOnly)
{
    const CLI::Validator check = cli::IntegerIn(2, 10);
    EXPECT_EQ(check("2"), "");
    EXPECT_EQ(check("10"), "");
    for (const char* bad : {"1", "11", "-3", "+3", "3.0", "3e0", " 3", "3 ", "", "x",
                            "18446744073709551618"}) { // 2^64 + 2
        EXPECT_EQ(check(bad), "'" + std::string(bad) + "' is not an integer from 2 to 10");
    }
}

TEST(PointInSpace, ConsistsOfThreeCoordinatesInTheirRanges)
{
    const CLI::Validator check = cli::PointInSpace();
    EXPECT_EQ(check("4500000,500000,100"), "");
    EXPECT_EQ(check("1,2"), "'1,2' is not 3 numbers with commas between them");
    EXPECT_EQ(check("1,1e308,3"), "E is 1e+308, not between -100000000 and 100000000 m");
    EXPECT_EQ(check("1,2,500000"), "h is 500000, not between -100000 and 100000 m");
}

TEST(PictureName, EndsInPngOrSvg)
{
    const CLI::Validator check = cli::PictureName();
    EXPECT_EQ(check("a.png"), "");
    EXPECT_EQ(check("b/a.svg"), "");
    EXPECT_NE(check("a.pdf"), "");
    EXPECT_NE(check(".png"), "");
}

} // namespace
