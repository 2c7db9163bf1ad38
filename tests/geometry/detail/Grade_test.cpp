// SPDX-License-Identifier: MIT
//
// The bounds of the grades, each at the bound and one representable number beyond it.
#include "geometry/detail/Grade.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();

double Above(double bound)
{
    return std::nextafter(bound, kFar);
}

TEST(Grade, BoundsAreExclusive)
{
    const struct
    {
        double pointError, figure, excess;
        int status;
        const char* why;
    } cases[] = {
        {0,            2.0,        0,           kTiltPointAccepted, "figure at 2.0"               },
        {0,            Above(2.0), 0,           kTiltPointPoor,     "figure above 2.0"            },
        {0.05,         1.0,        0,           kTiltPointAccepted, "error at 0.05, figure at 1.0"},
        {Above(0.05),  0,          0,           kTiltPointPoor,     "error above 0.05"            },
        {0.05,         Above(1.0), 0,           kTiltPointError40,  "figure above 1.0"            },
        {0.04,         Above(1.0), 0,           kTiltPointAccepted, "error at 0.04"               },
        {Above(0.04),  Above(1.0), 0,           kTiltPointError40,  "error above 0.04"            },
        {0.04,         1.2,        0,           kTiltPointAccepted, "figure at 1.2"               },
        {0.04,         Above(1.2), 0,           kTiltPointError35,  "figure above 1.2"            },
        {0.035,        Above(1.2), 0,           kTiltPointAccepted, "error at 0.035"              },
        {Above(0.035), Above(1.2), 0,           kTiltPointError35,  "error above 0.035"           },
        {0.035,        1.5,        0,           kTiltPointAccepted, "figure at 1.5"               },
        {0.035,        Above(1.5), 0,           kTiltPointError30,  "figure above 1.5"            },
        {0.03,         2.0,        0,           kTiltPointAccepted, "error at 0.03"               },
        {Above(0.03),  2.0,        0,           kTiltPointError30,  "error above 0.03"            },
        {0.03,         2.0,        0.04,        kTiltPointAccepted, "excess at 0.04"              },
        {0.03,         2.0,        Above(0.04), kTiltPointRadius,   "excess above 0.04"           },
        {0.03,         2.0,        -0.05,       kTiltPointRadius,   "a radius that is too short"  },
        {0.02,         2.0,        0.05,        kTiltPointAccepted, "error at 0.02"               },
        {Above(0.02),  2.0,        0.05,        kTiltPointRadius,   "error above 0.02"            },
        {0.03,         1.2,        0.05,        kTiltPointAccepted, "figure at 1.2, excess"       },
        {0.03,         Above(1.2), 0.05,        kTiltPointRadius,   "figure above 1.2, excess"    },
    };
    for (const auto& c : cases) {
        TiltPoint_State state;
        state.dPointError = c.pointError;
        state.dGeometryFigure = c.figure;
        state.dRadiusExcess = c.excess;
        EXPECT_EQ(tiltpole::geometry::GradeFigures(state), c.status) << c.why;
    }
}

} // namespace
