// SPDX-License-Identifier: MIT
#include "apps/tables/Numbers.h"

#include <gtest/gtest.h>

namespace {

struct NumberCase
{
    const char* given;
    std::optional<double> expected;
    const char* why;
};

TEST(ParseNumber, AcceptsOnlyTextThatIsAFiniteNumber)
{
    const NumberCase cases[] = {
        {"0.75",     0.75,         "a decimal point"                    },
        {"-12",      -12.0,        "a sign"                             },
        {"+3",       3.0,          "a plus sign"                        },
        {"1.5e-3",   0.0015,       "an exponent"                        },
        {"  7.25\t", 7.25,         "spaces around it, as padded columns"},
        {".5",       0.5,          "no digit before the point"          },
        {"",         std::nullopt, "nothing"                            },
        {"1,5",      std::nullopt, "a decimal comma"                    },
        {"1 000",    std::nullopt, "a space inside"                     },
        {"12m",      std::nullopt, "a unit behind it"                   },
        {"nan",      std::nullopt, "not a number"                       },
        {"-inf",     std::nullopt, "an infinity"                        },
        {"1e999",    std::nullopt, "more than a double holds"           },
        {"0x10",     std::nullopt, "hexadecimal"                        },
        {"+-5",      std::nullopt, "two signs"                          },
    };
    for (const NumberCase& c : cases) {
        EXPECT_EQ(tables::ParseNumber(c.given), c.expected) << c.given << ": " << c.why;
    }
}

TEST(ParseNumbers, RequiresExactlyTheGivenCount)
{
    EXPECT_EQ(tables::ParseNumbers("1,-2.5, 3", 3), (std::vector<double>{1.0, -2.5, 3.0}));
    for (const char* bad : {"1,2", "1,2,3,4", "1,2,", ",2,3", "1;2;3", "1,2,x", ""}) {
        EXPECT_EQ(tables::ParseNumbers(bad, 3), std::nullopt) << bad;
    }
}

} // namespace
