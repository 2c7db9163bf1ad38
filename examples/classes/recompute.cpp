// SPDX-License-Identifier: MIT
//
// field::Recomputed: a stored point once more, after it turned out that the pole was longer.
#include "field/job/Recompute.h"

#include "LivePole.h"

#include <cmath>
#include <cstdio>
#include <span>
#include <vector>

int main()
{
    field::Setup setup = live::PoleSetup();
    setup.poleLength = 1.8; // typed in the field; the pole was extended to 2 m
    const planted::Pole pole{.lean = 0.0, .pitch = 10.0};
    const std::vector<field::Report> reports = live::Reports(setup, live::Records(pole, 6));
    field::JobRecord stored = field::JobRecordOf(std::span(reports).last(10), {});
    stored.point.id = 17; // as the job gave it
    stored.point.name = "P1";

    setup.poleLength = 2.0;
    const field::JobRecord again = field::Recomputed(stored.point, stored.epochs, setup, 0.0);
    if (!again.error.empty()) return 1;
    std::printf("%s, %d epochs, replaces point %d\n", again.point.name.c_str(), again.point.epochs,
                static_cast<int>(again.point.replaces.value_or(0)));

    const xyhCoordinate off = field::Difference(planted::kPlace, stored.point.tip);
    const xyhCoordinate now = field::Difference(planted::kPlace, again.point.tip);
    std::printf("too high by %.3f m before, %.3f m now\n", off.h, std::abs(now.h));
    std::printf("in plan off by %.3f m before, %.3f m now\n", std::hypot(off.x, off.y),
                std::hypot(now.x, now.y));
}
