// SPDX-License-Identifier: MIT
//
// field::AveragedTip: the mean of several tips of a still pole, without those that do not belong to it.
#include "field/job/AveragedTip.h"

#include "field/Geodesy.h"

#include <cmath>
#include <cstdio>
#include <vector>

int main()
{
    const field::Geodetic mark{47.5660567, 19.0083599, 150.0};
    std::vector<field::Tip> tips;
    for (int i = 0; i < 10; ++i) {
        field::Tip tip;
        const double north = i == 4 ? 0.120 : 0.002 * (i % 3 - 1); // one jumped by 12 cm
        tip.position = field::Offset(mark, north, 0.0, 0.0);
        tip.epoch.antenna = field::Offset(tip.position, 0.0, 0.0, 2.0);
        tip.epoch.fix = i == 8 ? field::Fix::Float : field::Fix::Fixed;
        tip.epoch.station = "0207";
        tip.epoch.sigma = {.nn = 6.4e-5, .ee = 6.4e-5, .hh = 2.25e-4};
        tip.sigma = tip.epoch.sigma; // an upright pole adds little
        tips.push_back(tip);
    }

    const field::TipAverage mean = field::AveragedTip(tips);
    const xyhCoordinate off = field::Difference(mark, mean.position);
    std::printf("mean of %zu tips, %.1f mm off to the north\n", mean.used,
                std::abs(1000.0 * off.x));
    std::printf("sd of north: %.1f mm, of one tip 8.0 mm\n", 1000.0 * std::sqrt(mean.sigma.nn));
    for (const field::LeftOutTip& left : mean.leftOut)
        std::printf("tip %zu left out: %s\n", left.index, left.why.c_str());
}
