// SPDX-License-Identifier: MIT
//
// Stages that thin a turn out: what a filter keeps of an array of samples.
//
// A stage walks its entries in order and skips null ones. The arrays it returns are new and belong
// to the caller; the samples in them keep their owner. Where memory is short a stage throws
// std::bad_alloc, having changed nothing.
#pragma once

#include "calibration/filter/Candidate.h"
#include "calibration/filter/Plane.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tiltpole::calibration {

inline constexpr double kStillDistance = 30.0; // counts from the last kept sample
inline constexpr int kStillSeconds = 3;        // after which a sample of a still pole is kept again
inline constexpr double kFarAway = std::numeric_limits<double>::infinity();

/// Time of day in seconds; any values of the fields.
inline std::int64_t SecondOfDay(const PoseSensorData& sample)
{
    return sample.nHour * std::int64_t{3600} + sample.nMinute * std::int64_t{60} + sample.nSecond;
}

/// PlaneDistance(dx, dSecond) < kStillDistance; the root is taken only next to the bound.
inline bool IsStill(double dx, double dSecond)
{
    constexpr double square = kStillDistance * kStillDistance;
    constexpr double rounding = 1e-12;
    const double sum = dx * dx + dSecond * dSecond;
    if (sum < square * (1 - rounding)) return true;
    if (sum > square * (1 + rounding)) return false;
    return std::sqrt(sum) < kStillDistance;
}

template <class Plane>
bool HasMovedOn(const PoseSensorData& sample, const PoseSensorData& lastKept)
{
    return !IsStill(sample.dMag_x - lastKept.dMag_x,
                    sample.*Plane::Second - lastKept.*Plane::Second)
           || SecondOfDay(sample) - SecondOfDay(lastKept) >= kStillSeconds;
}

/// Decides, sample by sample, which were not taken while the pole stood still.
template <class Plane>
class TimeScreen
{
public:
    bool Keeps(const PoseSensorData& sample)
    {
        if (m_LastKept != nullptr && !HasMovedOn<Plane>(sample, *m_LastKept)) return false;
        m_LastKept = &sample;
        return true;
    }

private:
    const PoseSensorData* m_LastKept = nullptr;
};

/// Thins out samples taken while the pole stood still. Null for a null array or an empty result.
template <class Plane>
SampleArray* FilterByTime(const SampleArray* samples)
{
    if (samples == nullptr) return nullptr;

    auto kept = std::make_unique<SampleArray>();
    TimeScreen<Plane> screen;
    for (PoseSensorData* sample : EntriesOf(*samples))
        if (sample != nullptr && screen.Keeps(*sample)) kept->Add(sample);
    return ReleaseUnlessEmpty(std::move(kept));
}

/// Whether a sample at that distance from the center lies near the circle [counts].
template <class Plane>
bool LiesOnCircle(double distance, const PoseSensorCenterParameter& center)
{
    return std::fabs(distance - center.dRadius) < Plane::InPlane;
}

/// Whether a sample lies near the plane of the circle.
template <class Plane>
bool LiesInPlane(const PoseSensorData& sample, const PoseSensorCenterParameter& center)
{
    return std::fabs(sample.*Plane::Axis - center.*Plane::CenterAxis) < Plane::OffPlane;
}

/// Keeps the samples that lie on the turn. Null for a null array or an empty result.
template <class Plane>
SampleArray* FilterByDistance(const SampleArray* samples, const PoseSensorCenterParameter& center)
{
    if (samples == nullptr) return nullptr;

    auto kept = std::make_unique<SampleArray>();
    for (PoseSensorData* sample : EntriesOf(*samples))
        if (sample != nullptr && LiesInPlane<Plane>(*sample, center)
            && LiesOnCircle<Plane>(DistanceFromCenter<Plane>(*sample, center), center))
            kept->Add(sample);
    return ReleaseUnlessEmpty(std::move(kept));
}

/// Drops windows of 10 samples in which more than a fifth turned back. The last sample of the
/// array never reaches the result. Null for a null array or an empty result.
SampleArray* FilterByAzimuth(const SampleArray* samples);
SampleArray* FilterByAzimuth(Candidates candidates);

/// The samples of a record that were not taken while the pole stood still, stored in `room`, which
/// is as large as the record. Also computes the radius of the turn.
template <class Plane>
Candidates ThinOut(const SampleArray& record, PoseSensorCenterParameter& turn, Candidate* room)
{
    const PoseSensorCenterParameter center = turn;
    double distances = 0.0;
    TimeScreen<Plane> screen;
    Candidate* next = room;
    for (PoseSensorData* sample : EntriesOf(record)) {
        const double distance = DistanceFromCenter<Plane>(*sample, center);
        distances += distance;
        if (!screen.Keeps(*sample)) continue;
        next->sample = sample;
        next->azimuth = sample->dAzimuth;
        next->distance = LiesInPlane<Plane>(*sample, center) ? distance : kFarAway;
        next->place = static_cast<std::uint32_t>(next - room);
        ++next;
    }
    turn.dRadius = distances / CountOf(record);
    return {room, next};
}

/// The candidates that lie on the turn, in the same order; overwrites the given ones.
template <class Plane>
Candidates KeepOnTurn(Candidates candidates, const PoseSensorCenterParameter& center)
{
    const auto end = std::remove_if(candidates.begin(), candidates.end(), [&](const Candidate& c) {
        return !LiesOnCircle<Plane>(c.distance, center);
    });
    return {candidates.begin(), end};
}

template <class Plane>
TurnExtent<Plane> ExtentOf(const SampleArray& samples)
{
    TurnExtent<Plane> extent;
    for (const PoseSensorData* sample : EntriesOf(samples))
        if (sample != nullptr) extent.Include(*sample);
    return extent;
}

/// About `wanted` samples: the four extreme ones and every (count / wanted)-th since the last one
/// taken. All entries, nulls included, where more are wanted than there are; null for a null
/// array or `wanted` below 1.
template <class Plane>
SampleArray* Select(const SampleArray* samples, int wanted)
{
    if (samples == nullptr || wanted <= 0) return nullptr;

    auto selected = std::make_unique<SampleArray>();
    if (wanted > CountOf(*samples)) {
        selected->Append(*samples);
        return selected.release();
    }
    const TurnExtent<Plane> extent = ExtentOf<Plane>(*samples);
    const int step = CountOf(*samples) / wanted;
    int sinceTaken = 0;
    for (int i = 0; i < CountOf(*samples); ++i) {
        PoseSensorData* sample = samples->GetAt(i);
        if (sample == nullptr) continue;
        if (++sinceTaken < step && !extent.IsExtreme(sample)) continue;
        selected->Add(sample);
        sinceTaken = 0;
    }
    return selected.release();
}

} // namespace tiltpole::calibration
