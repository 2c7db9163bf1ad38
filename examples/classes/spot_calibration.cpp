// SPDX-License-Identifier: MIT
//
// field::SpotCalibration: 20 s of rocking and turning a pole on any fixed point tell its iron, the
// biases of its gyros and the axis of the pole in the sensor.
#include "field/SpotCalibration.h"

#include "PlantedPole.h"

#include <cstdio>

int main()
{
    const planted::Pole pole{.lean = 20.0, .turns = 150.0};
    field::SpotCalibration calibration({.poleLength = planted::kLength});
    for (int i = 0; i <= 1000; ++i) { // 20 s: samples at 50 Hz, epochs at 5 Hz
        const double t = 0.02 * i;
        field::InertialSample sample = pole.SampleAt(t);
        sample.magnetic.x += 40.0; // iron on the pole [counts]
        sample.magnetic.y -= 25.0;
        sample.rate.z += 0.5; // a bias of the gyro [degrees/s]
        calibration.Add(sample);
        if (i % 10 == 0) calibration.Add(pole.EpochAt(t));
        if (i == 250)
            std::printf("after 5 s: %s\n", field::SpotText(calibration.Estimate()).c_str());
    }

    const field::SpotResult found = calibration.Estimate();
    std::printf("after 20 s: %s\n", field::SpotText(found).c_str());
    const field::SensorVector& iron = found.a.hardIron.value;
    std::printf("iron %.0f %.0f counts, gyro z %.1f degrees/s\n", iron.x, iron.y,
                found.gyroBias.value.z);

    // The next occupations know it beforehand.
    field::OccupationSetup next;
    next = field::WithCalibration(next, found);
    std::printf("next occupation: gyro z %.1f degrees/s\n", next.gyroBias.z);
}
