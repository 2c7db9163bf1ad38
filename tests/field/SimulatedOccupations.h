// SPDX-License-Identifier: MIT
//
// Occupations of simulated points by a sensor with the errors that a calibration leaves, mounted anew on
// each point; its pitch and roll are those of a filter of 2 s.
#pragma once

#include "field/Occupation.h"
#include "simulation/Occupation.h"

#include <cstddef>
#include <cstdint>

namespace field_tests {

inline xyhCoordinate CoordinateOf(const simulation::Point3& p)
{
    return {p.x, p.y, p.z};
}

inline void Add(field::Occupation& occupation, const simulation::OccupationRow& row)
{
    const PoseSensorData& s = row.sample;
    field::InertialSample sample;
    sample.seconds = row.truth.pose.seconds;
    sample.rate = {s.dGyro_x, s.dGyro_y, s.dGyro_z};
    sample.acceleration = {s.dAcc_x, s.dAcc_y, s.dAcc_z};
    sample.magnetic = {s.dMag_x, s.dMag_y, s.dMag_z};
    sample.tilt.pitch = s.dPitch;
    sample.tilt.roll = s.dRoll;
    occupation.Add(sample);
    if (!row.antenna) return;
    field::AntennaEpoch epoch;
    epoch.seconds = sample.seconds;
    epoch.position = CoordinateOf(*row.antenna);
    occupation.Add(epoch);
}

inline simulation::PoseSensor UsualSensor()
{
    simulation::PoseSensor sensor;
    sensor.a.noise = 1.0;
    sensor.rollReport = simulation::RollReport::Inclination;
    sensor.filterTime = 2.0;
    sensor.gyroNoise = 0.1;
    sensor.accelerationNoise = 0.002;
    return sensor;
}

// Calls take(occupation, true tip) after the last sample of each point.
template <class Take>
void OccupyEach(simulation::OccupationPlan plan, std::uint64_t seed, Take take,
                const simulation::PoseSensor& sensor = UsualSensor())
{
    plan.anew = true;
    const auto log = SimulateOccupations(sensor, {}, plan, seed);
    field::Occupation occupation({});
    for (std::size_t i = 0; i < log.rows.size(); ++i) {
        const simulation::OccupationRow& row = log.rows[i];
        Add(occupation, row);
        if (i + 1 < log.rows.size() && log.rows[i + 1].point == row.point) continue;
        take(occupation, CoordinateOf(log.points[static_cast<std::size_t>(row.point - 1)].tip));
        occupation.Clear();
    }
}

} // namespace field_tests
