// SPDX-License-Identifier: MIT
//
// field::ExactTip: the exact tip of a straight pole from pitch, roll and heading.
#include "field/ExactAttitude.h"

#include <cstdio>

int main()
{
    const field::Tilt tilt{.pitch = 0.0, .roll = 30.0}; // the right side is lower [degrees]

    // The heading needs the reading of one magnetometer, along the axes of the sensor.
    const double heading = field::MagneticHeading(tilt, {200.0, 0.0, -400.0});
    std::printf("heading %.2f degrees\n", heading);

    const xyhCoordinate up = field::PoleDirection(tilt, 90.0);
    std::printf("faces east, leans south: N %.3f h %.3f\n", up.x, up.h);

    const xyhCoordinate antenna{4500000.0, 500000.0, 100.0};
    const xyhCoordinate tip = field::ExactTip(antenna, 2.0, tilt, 90.0);
    std::printf("tip N %.4f E %.4f h %.4f m\n", tip.x, tip.y, tip.h);

    // Sensors disagree on what roll is once there is pitch: the slope of the left axis, or a turn.
    const field::Tilt slopes{.pitch = 20.0, .roll = 30.0, .meaning = field::PitchRoll::Slopes};
    const field::Tilt turns{.pitch = 20.0, .roll = 30.0, .meaning = field::PitchRoll::Turns};
    const xyhCoordinate a = field::ExactTip(antenna, 2.0, slopes, 90.0);
    const xyhCoordinate b = field::ExactTip(antenna, 2.0, turns, 90.0);
    std::printf("the other meaning: %.3f m higher\n", a.h - b.h);
}
