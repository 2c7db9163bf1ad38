// SPDX-License-Identifier: MIT
#include "apps/gallery/Replay.h"

#include "apps/cli/SampleLog.h"

namespace gallery {
namespace {

constexpr double kPoleLength = 2.0; // metres

} // namespace

std::vector<ReplaySample> ReadReplay(const std::string& path)
{
    cli::SampleLog::Options options;
    options.antenna = true;
    cli::SampleLog log(path, options);
    CInclineSensor_Position position;
    std::vector<ReplaySample> samples;
    while (log.Next()) {
        ReplaySample sample{log.Pose(), log.Antenna()};
        xyhCoordinate tip = sample.antenna;
        position.Position(sample.pose, kPoleLength, tip);
        samples.push_back(sample);
    }
    return samples;
}

} // namespace gallery
