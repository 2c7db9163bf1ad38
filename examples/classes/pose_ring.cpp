// SPDX-License-Identifier: MIT
//
// field::PoseRing: the pose at the moment of an epoch, between the samples of the sensor.
#include "field/pose/PoseRing.h"

#include "field/ExactAttitude.h"

#include <chrono>
#include <cstdio>

int main()
{
    using namespace std::chrono_literals;

    field::PoseRing ring(5s);
    for (int i = 0; i < 50; ++i) {       // 1 s at 50 Hz: pitch rises by 10 degrees a second
        if (i >= 30 && i < 40) continue; // 0.2 s were lost on the line
        field::PoseSample sample;
        sample.moment = i * 20ms;
        sample.data.dPitch = 0.2 * i;
        sample.data.dMag_x = 300.0;
        sample.data.dMag_z = -400.0;
        ring.Add(sample);
    }

    const field::PoseLookup between = ring.At(410ms);
    std::printf("0.41 s: pitch %.2f degrees\n", between.pose.data.dPitch);
    std::printf("0.70 s: %s\n",
                ring.At(700ms).state == field::PoseLookup::State::Gap ? "a gap" : "a pose");
    std::printf("1.50 s, just asked: %s\n",
                ring.At(1500ms, 0ms).state == field::PoseLookup::State::Wait ? "wait" : "a pose");
    std::printf("still at 0.3 s: %s\n", ring.IsStill(300ms) ? "yes" : "no");

    // How fast the antenna of a pole of 2 m moves: 2 m times 10 degrees a second.
    const auto velocity = ring.Velocity(300ms, [](const field::PoseSample& sample) {
        const xyhCoordinate up = field::PoleDirection({.pitch = sample.data.dPitch}, 0.0);
        return xyhCoordinate{2.0 * up.x, 2.0 * up.y, 2.0 * up.h};
    });
    if (velocity) std::printf("antenna %.2f m/s to the south\n", -velocity->x);
}
