// SPDX-License-Identifier: MIT
#include "field/Bridge.h"

#include <gtest/gtest.h>

TEST(Epoch, NumbersItsQualitiesAsGgaDoes)
{
    EXPECT_EQ(static_cast<int>(field::Fix::Fixed), 4);
    EXPECT_EQ(static_cast<int>(field::Fix::Float), 5);
    EXPECT_EQ(static_cast<int>(field::Fix::Estimated), 6);
}
