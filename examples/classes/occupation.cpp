// SPDX-License-Identifier: MIT
//
// field::Occupation: the tip of a pole that was rocked for some seconds, from the antenna's track and
// the gyros. The magnetometer is only a witness.
#include "field/Occupation.h"

#include "PlantedPole.h"

#include <cmath>
#include <cstdio>

int main()
{
    field::OccupationSetup setup;
    setup.poleLength = planted::kLength;
    field::Occupation occupation(setup);

    const planted::Pole pole;
    for (int i = 0; i <= 500; ++i) { // 10 s: samples at 50 Hz, epochs at 5 Hz
        const double t = 0.02 * i;
        occupation.Add(pole.SampleAt(t));
        if (i % 10 == 0) occupation.Add(pole.EpochAt(t));
        if (i == 50 || i == 500)
            std::printf("after %2.0f s: %s\n", t,
                        field::OccupationText(occupation.Estimate()).c_str());
    }

    const field::OccupationEstimate found = occupation.Estimate();
    std::printf("tip N %.2f E %.2f h %.2f m\n", found.tip.x, found.tip.y, found.tip.h);
    std::printf("heading %.1f degrees; the magnetometer's differs by %.1f\n", found.heading,
                std::abs(found.magneticDifference));
    std::printf("95 %% within 5 cm: %s\n",
                found.ellipseMajor < 0.05 && found.heightHalfInterval < 0.05 ? "yes" : "no");
}
