// SPDX-License-Identifier: MIT
//
// The rocked pole of tests/field/pose as a track of the whole engine, its poses and antenna exact but for
// the errors that are asked for.
#pragma once

#include "tests/field/bridge/LivePole.h"
#include "tests/field/pose/RockedPole.h"

#include <functional>
#include <random>
#include <vector>

namespace live_pole {

/// What is wrong around one epoch.
struct RockedErrors
{
    double pitch = 0.0;              ///< [degrees]
    double roll = 0.0;               ///< [degrees]
    double heading = 0.0;            ///< [degrees]
    double length = 0.0;             ///< [m]
    double time = 0.0;               ///< [s]
    std::array<double, 3> antenna{}; ///< to north, east, up [m]
};

struct RockedRun
{
    rocked_pole::Rocking rocking;
    double seconds = 30.0;
    double poseRate = 50.0;
    double epochRate = 10.0;
    /// Of an epoch, the number is that of its time; poses have those of the epoch next to them.
    std::function<RockedErrors(std::size_t)> errors = [](std::size_t) { return RockedErrors{}; };
    std::function<void(EpochFields&)> epoch = [](EpochFields&) {};

    RockedErrors At(double t) const
    {
        return errors(static_cast<std::size_t>(std::llround(t * epochRate)));
    }

    std::vector<Record> Records() const
    {
        Track track;
        for (int i = 0; i <= static_cast<int>(seconds * poseRate); ++i) {
            const double t = i / poseRate;
            const RockedErrors wrong = At(t);
            rocked_pole::Rocking turned = rocking;
            turned.magneticNorth = wrong.heading;
            const PoseSensorData pose = turned.PoseAt(t).data;
            TrackRow row;
            row.seconds = t;
            row.pitch = pose.dPitch + wrong.pitch;
            row.roll = pose.dRoll + wrong.roll;
            row.readings = {pose.dMag_x,   pose.dMag_y,   pose.dMag_z,
                            pose.dMag_x_2, pose.dMag_y_2, pose.dMag_z_2};
            row.readings[11] = 1.0;
            const auto up = rocked_pole::kLength * rocking.UpAt(t);
            row.antenna = {up.x, up.y, up.z};
            track.push_back(row);
        }
        Options options;
        options.epochRate = epochRate;
        options.epoch = [this](EpochFields& fields) {
            const RockedErrors wrong = At(fields.seconds);
            const double length = rocked_pole::kLength + wrong.length;
            const auto up = length * rocking.UpAt(fields.seconds + wrong.time);
            fields.antenna = field::Offset(kTip, up.x + wrong.antenna[0], up.y + wrong.antenna[1],
                                           up.z + wrong.antenna[2]);
            epoch(fields);
        };
        return RecordsOf(track, options);
    }

    /// Exact but for what the options say; the axes of the rocked pole are those of type 2.
    static field::Setup Setup()
    {
        field::Setup setup = TrackSetup();
        setup.sensorType = 2;
        return setup;
    }
};

} // namespace live_pole
