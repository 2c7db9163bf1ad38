// SPDX-License-Identifier: MIT
#include "field/job/RecomputeOccupation.h"

#include "field/Geodesy.h"
#include "field/bridge/OccupationInput.h"
#include "field/job/OccupationRows.h"
#include "field/nmea/EpochReader.h"
#include "field/pose/PoseReader.h"

#include <chrono>
#include <cmath>
#include <memory>
#include <utility>

namespace tiltpole::field {

using ::field::Epoch;
using ::field::Instant;
using ::field::JobEpoch;
using ::field::JobRecord;
using ::field::OccupationEstimate;
using ::field::OccupationTrack;
using ::field::PoseSample;
using ::field::Setup;

namespace {

JobRecord Failed(std::string why)
{
    JobRecord record;
    record.error = std::move(why);
    return record;
}

// The track as it was stored, epochs moved by another delay; no pieces where lines are unreadable.
OccupationTrack TrackOf(std::span<const JobEpoch> epochs, double delayChange)
{
    OccupationTrack track;
    for (const JobEpoch& stored : epochs) {
        std::optional<Epoch> epoch = StoredEpoch(stored);
        if (!epoch) return {};
        epoch->moment -= InstantOf(delayChange);
        track.pieces.push_back(std::make_shared<OccupationTrack::Piece>(
            OccupationTrack::Piece{StoredPoses(stored), stored.disturbed, *std::move(epoch),
                                   stored.used ? "" : stored.why}));
    }
    return track;
}

OccupationEstimate EstimateOf(const OccupationTrack& track, const Setup& setup)
{
    const ::field::Geodetic& origin = track.pieces.front()->epoch.antenna;
    ::field::Occupation occupation(OccupationSetupOf(setup, track.declination));
    for (const auto& piece : track.pieces) {
        for (const PoseSample& pose : piece->poses)
            occupation.Add(InertialSampleOf(setup, pose, piece->disturbed));
        if (piece->leftOut.empty()) occupation.Add(AntennaEpochOf(origin, piece->epoch));
    }
    return occupation.Estimate();
}

} // namespace

Instant InstantOf(double seconds)
{
    constexpr double kLargest = 1e9; // [s]
    if (!(std::abs(seconds) < kLargest)) return Instant{};
    return std::chrono::duration_cast<Instant>(std::chrono::duration<double>(seconds));
}

std::optional<Epoch> StoredEpoch(const JobEpoch& stored)
{
    const Instant moment = InstantOf(stored.seconds);
    EpochReader reader;
    reader.Feed(stored.receiver, moment);
    reader.Tick(moment + std::chrono::seconds{1});
    std::vector<Epoch> epochs = reader.Take();
    if (epochs.size() != 1) return std::nullopt;
    epochs.front().moment = moment;
    return std::move(epochs.front());
}

std::vector<PoseSample> StoredPoses(const JobEpoch& stored)
{
    const auto reader = ::field::MakePoseReader(::field::PoseFormat::Ptps);
    reader->Feed(stored.pose, Instant{});
    std::vector<PoseSample> poses = reader->Take();
    for (PoseSample& pose : poses)
        pose.moment = InstantOf(pose.deviceSeconds.value_or(stored.seconds));
    return poses;
}

JobRecord RecomputedOccupation(const ::field::JobPoint& stored, std::span<const JobEpoch> epochs,
                               const Setup& setup, double delayChange)
{
    if (epochs.empty()) return Failed("there is no epoch");
    OccupationTrack track = TrackOf(epochs, delayChange);
    if (track.pieces.empty()) return Failed("the receiver's lines of an epoch are unreadable");
    track.declination = stored.declination;
    const OccupationEstimate estimate = EstimateOf(track, setup);
    if (estimate.advice != ::field::OccupationAdvice::Store || !estimate.hasTip)
        return Failed("its occupation: " + OccupationText(estimate));
    const ::field::Geodetic tip = ::field::Offset(track.pieces.front()->epoch.antenna,
                                                  estimate.tip.x, estimate.tip.y, estimate.tip.h);
    return RowsOf({track, estimate, tip}, stored.utc);
}

} // namespace tiltpole::field
