// SPDX-License-Identifier: MIT
#include "survey/TurnAngle.h"

#include <cmath>
#include <gtest/gtest.h>

using tiltpole::survey::InTurn;

namespace {

TEST(InTurn, BringsEveryAngleIntoOneTurn)
{
    const double below = std::nextafter(720.0, 0.0);
    struct
    {
        double given, expected;
    } const cases[] = {
        {0,      0          },
        {359,    359        },
        {360,    0          },
        {-30,    330        },
        {-400,   320        },
        {730,    10         },
        {below,  below - 360},
        {-1e-18, 0          },
    };
    for (const auto& c : cases)
        EXPECT_EQ(InTurn(c.given), c.expected) << c.given;
}

} // namespace
