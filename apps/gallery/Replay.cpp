// SPDX-License-Identifier: MIT
#include "apps/gallery/Replay.h"

#include "apps/tables/ReadFile.h"
#include "apps/tables/SampleLog.h"

namespace gallery {
namespace {

constexpr double kPoleLength = 2.0; // [m]

} // namespace

std::vector<ReplaySample> ReadReplay(const std::string& path)
{
    tables::SampleLog::Options options;
    options.antenna = true;
    options.mostBytes = tables::kMostInMemory;
    tables::SampleLog log(path, options);
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
