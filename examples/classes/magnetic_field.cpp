// SPDX-License-Identifier: MIT
//
// field::MagneticFieldAt: the Earth's magnetic field at a place and time. A compass heading plus the
// declination is the heading from true north.
#include "field/North.h"

#include <chrono>
#include <cmath>
#include <cstdio>

int main()
{
    using namespace std::chrono_literals;

    const double year = field::DecimalYear(2026y / 7 / 2, 12.0 * 3600.0);
    std::printf("2 July 2026, noon: %.3f\n", year);

    const field::Geodetic budapest{47.5, 19.05, 150.0};
    const field::Field here = field::MagneticFieldAt(budapest, year);
    std::printf("declination %.1f degrees, sd %.1f; dip %.1f degrees\n", here.declination,
                here.declinationSigma, here.dip);
    std::printf("strength %.1f, horizontal %.1f microtesla\n", here.strength / 1000.0,
                here.horizontal / 1000.0);
    std::printf("compass 120.0 degrees: true %.1f degrees\n", 120.0 + here.declination);

    const field::Field tooLate = field::MagneticFieldAt(budapest, field::kFieldModelEnds + 0.1);
    std::printf("after 2030 the model has %s\n", std::isnan(tooLate.dip) ? "no value" : "a value");
}
