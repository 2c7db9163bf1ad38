// SPDX-License-Identifier: MIT
//
// quality::EstimateTip: the tip from antenna positions at many leans, with a region that holds it 95
// times of 100, and a verdict on whether to store it.
#include "quality/TipEstimate.h"

#include <cmath>
#include <cstdio>
#include <vector>

int main()
{
    // The antenna of a pole of 2 m whose tip stands on (1000, 2000, 100), led round in a spiral.
    std::vector<xyhCoord> antennas;
    for (int i = 0; i < 30; ++i) {
        const double azimuth = 2.4 * i; // [rad]
        const double lean = 0.1 + 0.015 * i;
        antennas.push_back({1000.0 + 2.0 * std::sin(lean) * std::cos(azimuth),
                            2000.0 + 2.0 * std::sin(lean) * std::sin(azimuth),
                            100.0 + 2.0 * std::cos(lean)});
    }

    const quality::TipEstimate good = quality::EstimateTip(antennas, 2.0);
    std::printf("tip N %.3f E %.3f h %.3f m, %s\n", good.tip.x, good.tip.y, good.tip.h,
                good.verdict == quality::TipVerdict::Store ? "store" : "do not store");
    std::printf("95 %%: %.0f by %.0f mm in plan, %.0f mm in height\n", 1000.0 * good.ellipseMajor,
                1000.0 * good.ellipseMinor, 1000.0 * good.heightHalfInterval);

    antennas[25].h += 0.30; // the receiver lost its fix for a moment
    const quality::TipEstimate bad = quality::EstimateTip(antennas, 2.0);
    if (bad.verdict == quality::TipVerdict::Outlier)
        std::printf("position %zu does not belong to the others\n", bad.suspectIndex);

    antennas.resize(3);
    if (quality::EstimateTip(antennas, 2.0).verdict == quality::TipVerdict::NoSolution)
        std::printf("three positions are too few\n");
}
