// SPDX-License-Identifier: MIT
#include "apps/cli/OptionChecks.h"

#include <gtest/gtest.h>

namespace {

TEST(PositiveNumber, RejectsZeroAndBelow)
{
    const CLI::Validator check = cli::PositiveNumber();
    EXPECT_EQ(check("2.0"), "");
    EXPECT_NE(check("0"), "");
    EXPECT_NE(check("-2"), "");
    EXPECT_NE(check("inf"), "");
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
