// SPDX-License-Identifier: MIT
#include "field/job/OccupationRecord.h"

#include "field/Geodesy.h"
#include "field/OccupationTrack.h"
#include "field/bridge/OccupationInput.h"
#include "field/job/EpochSummary.h"
#include "field/job/OccupationRows.h"
#include "field/job/PtpsLine.h"
#include "survey/Angle.h"

#include <cmath>
#include <cstddef>

namespace tiltpole::field {

using ::field::Epoch;
using ::field::Instant;
using ::field::JobEpoch;
using ::field::JobPoint;
using ::field::JobRecord;
using ::field::OccupationEstimate;
using ::field::OccupationTrack;
using ::field::PoseSample;

namespace {

using Piece = OccupationTrack::Piece;

// Beyond so many epochs an occupation keeps every second, every fourth ... from its first.
constexpr std::size_t kMostKept = 128;

JobEpoch EpochOf(const Piece& piece)
{
    JobEpoch epoch;
    epoch.seconds = SecondsOf(piece.epoch.moment);
    epoch.receiver = piece.epoch.lines;
    epoch.used = piece.leftOut.empty();
    epoch.why = piece.leftOut;
    epoch.disturbed = piece.disturbed;
    for (const PoseSample& pose : piece.poses)
        epoch.pose += PtpsLine(pose, SecondsOf(pose.moment));
    return epoch;
}

Instant LastPoseOf(const OccupationTrack& track)
{
    for (auto piece = track.pieces.rbegin(); piece != track.pieces.rend(); ++piece)
        if (!(*piece)->poses.empty()) return (*piece)->poses.back().moment;
    return Instant::min();
}

Instant FirstPoseOf(const OccupationTrack& track)
{
    for (const auto& piece : track.pieces)
        if (!piece->poses.empty()) return piece->poses.front().moment;
    return Instant::max();
}

// Those that were given and still have no part in the estimate.
void LeaveOut(std::vector<JobEpoch>& epochs, const OccupationTrack& track)
{
    std::size_t given = 0;
    for (const JobEpoch& epoch : epochs)
        given += epoch.used ? 1 : 0;
    std::size_t stride = 1;
    while ((given + stride - 1) / stride > kMostKept)
        stride *= 2;
    const Instant first = FirstPoseOf(track);
    const Instant last = LastPoseOf(track);
    std::size_t seen = 0;
    for (std::size_t i = 0; i < epochs.size(); ++i) {
        if (!epochs[i].used) continue;
        const bool kept = seen++ % stride == 0;
        const Instant moment = track.pieces[i]->epoch.moment;
        if (!kept)
            epochs[i].why = "one of " + std::to_string(stride) + " is kept of so many";
        else if (moment < first || moment > last)
            epochs[i].why = "there is no pose before or after it";
        epochs[i].used = epochs[i].why.empty();
    }
}

// Mean lean and antenna.
void SetLean(JobPoint& point, const std::vector<const Epoch*>& used)
{
    xyhCoordinate sum;
    for (const Epoch* epoch : used) {
        const xyhCoordinate step = ::field::Difference(point.tip, epoch->antenna);
        sum = {sum.x + step.x, sum.y + step.y, sum.h + step.h};
    }
    const auto count = static_cast<double>(used.size());
    point.antenna = ::field::Offset(point.tip, sum.x / count, sum.y / count, sum.h / count);
    point.tilt = survey::Rad2Deg(std::atan2(std::hypot(sum.x, sum.y), sum.h));
    point.azimuthTrue = survey::AdjustedAzimuth(survey::Rad2Deg(std::atan2(sum.y, sum.x)));
}

std::string GateText(const OccupationEstimate& estimate)
{
    std::string text =
        "store: by an occupation of " + std::to_string(std::lround(estimate.seconds)) + " s";
    if (estimate.doubtful > 0)
        text += ", " + std::to_string(estimate.doubtful) + " epochs with less than half a vote";
    return text;
}

} // namespace

JobRecord RowsOf(const SolvedOccupation& occupation, ::field::JobTime now)
{
    JobRecord record;
    const OccupationTrack& track = occupation.track;
    for (const auto& piece : track.pieces)
        record.epochs.push_back(EpochOf(*piece));
    LeaveOut(record.epochs, track);

    std::vector<const Epoch*> used;
    for (std::size_t i = 0; i < record.epochs.size(); ++i) {
        record.epochs[i].n = static_cast<int>(i) + 1;
        if (record.epochs[i].used) used.push_back(&track.pieces[i]->epoch);
    }
    if (used.empty()) {
        record.error = "no epoch of the occupation lies between its poses";
        return record;
    }
    JobPoint& point = record.point;
    point.tip = occupation.tip;
    point.sigma = CovarianceOf(occupation.estimate);
    point.byOccupation = true;
    point.epochs = static_cast<int>(used.size());
    point.leftOut = static_cast<int>(record.epochs.size() - used.size());
    point.declination = track.declination;
    SetLean(point, used);
    Summarize(point, used, now);
    point.gate = GateText(occupation.estimate);
    return record;
}

} // namespace tiltpole::field

namespace field {

JobRecord OccupationRecordOf(const Report& report, JobTime now)
{
    if (!report.occupationTrack || !report.occupation || !report.occupationTip) {
        JobRecord none;
        none.error = report.occupation ? OccupationText(*report.occupation)
                                       : "there is no occupation, which needs gyros";
        return none;
    }
    JobRecord record = tiltpole::field::RowsOf(
        {*report.occupationTrack, *report.occupation, *report.occupationTip}, now);
    for (const Reason& note : report.verdict.reasons)
        record.point.gate += "; " + note.text;
    return record;
}

} // namespace field
