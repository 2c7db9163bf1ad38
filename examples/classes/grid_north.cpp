// SPDX-License-Identifier: MIT
//
// field::GridNorth: the direction of a map's north, for bearings on a plan.
#include "field/north/GridNorth.h"

#include <cstdio>

int main()
{
    const auto utm = field::GridNorth::Of("EPSG:32634"); // central meridian 21 degrees east
    if (!utm) return 1;
    for (const double longitude : {19.0, 20.0, 23.0})
        std::printf("longitude %.0f: grid north lies %+.4f degrees from true north\n", longitude,
                    utm->Convergence(47.5, longitude));
    std::printf("true 120.0000 degrees: %.4f on the grid\n", 120.0 - utm->Convergence(47.5, 19.0));

    std::printf("latitudes and longitudes have %s\n",
                field::GridNorth::Of("EPSG:4326") ? "a grid" : "no grid");
    std::printf("EPSG:1 is %s\n", field::GridNorth::Of("EPSG:1") ? "a system" : "no system");
}
