// SPDX-License-Identifier: MIT
//
// field::FindDelay: how much later the receiver tells of a moment than the pose sensor, from 20 s of
// rocking the pole on a mark.
#include "field/Delay.h"

#include "PlantedPole.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

field::Instant InstantOf(double seconds)
{
    return std::chrono::microseconds(std::llround(seconds * 1e6));
}

} // namespace

int main()
{
    const planted::Pole pole;
    field::PoseRing poses(std::chrono::seconds(60));
    for (int i = 0; i <= 1050; ++i) {
        field::PoseSample sample;
        sample.moment = InstantOf(0.02 * i);
        sample.data.dPitch = pole.TiltAt(0.02 * i).pitch;
        sample.data.dRoll = pole.TiltAt(0.02 * i).roll;
        const field::SensorVector magnetic = pole.MagneticAt(0.02 * i);
        sample.data.dMag_x = magnetic.x;
        sample.data.dMag_y = magnetic.y;
        sample.data.dMag_z = magnetic.z;
        poses.Add(sample);
    }
    std::vector<field::Epoch> epochs;
    for (int i = 0; i <= 100; ++i) { // 20 s at 5 Hz, each stamped 0.124 s too late
        const xyhCoordinate d = pole.AntennaFromTip(0.2 * i);
        field::Epoch epoch;
        epoch.antenna = field::Offset(planted::kPlace, d.x, d.y, d.h);
        epoch.sigma = {.nn = 6.4e-5, .ee = 6.4e-5, .hh = 2.25e-4};
        epoch.fix = field::Fix::Fixed;
        epoch.moment = InstantOf(0.2 * i + 0.124);
        epochs.push_back(epoch);
    }

    field::Setup setup; // whose calibration leaves readings as they are
    setup.north = field::NorthSource::File;
    const field::DelayResult found = field::FindDelay(epochs, poses, setup);
    std::printf("delay %.3f s, pole of %.3f m, %d epochs\n", found.delay, found.length,
                found.epochs);
    std::printf("residuals %.0f mm instead of %.0f mm\n", 1000.0 * found.rms,
                1000.0 * found.rmsWithout);

    epochs.resize(10);
    const field::DelayResult none = field::FindDelay(epochs, poses, setup);
    std::printf("2 s: %s\n", std::string(field::TextOf(none.outcome)).c_str());
}
