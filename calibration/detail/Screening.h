// Stages that thin a turn out: what a filter keeps of an array of samples.
//
// Every stage walks the array in order, passes over null entries and returns a new array for the
// caller to delete; the samples stay whose they are.
#pragma once

#include "calibration/detail/Plane.h"
#include "calibration/detail/SampleArray.h"

#include <cmath>

namespace detail {

inline constexpr double kStillDistance = 30.0; // counts from the last kept sample
inline constexpr int kStillSeconds = 3;        // after which a still pole gives a sample again

/// Time of day; a turn across midnight is not joined.
inline int SecondOfDay(const PoseSensorData& sample)
{
    return sample.nHour * 3600 + sample.nMinute * 60 + sample.nSecond;
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

/// Thins out samples taken while the pole stood still. Null for a null array or an empty result.
template <class Plane>
SampleArray* FilterByTime(const SampleArray* samples)
{
    if (samples == nullptr) return nullptr;
    std::unique_ptr<SampleArray> kept = NewSampleArray();
    if (!kept) return nullptr;

    const PoseSensorData* last = nullptr;
    for (int i = 0; i < CountOf(*samples); ++i) {
        PoseSensorData* sample = samples->GetAt(i);
        if (sample == nullptr) continue;
        if (last != nullptr && !HasMovedOn<Plane>(*sample, *last)) continue;
        kept->Add(sample);
        last = sample;
    }
    return ReleaseUnlessEmpty(std::move(kept));
}

template <class Plane>
bool LiesOnTurn(const PoseSensorData& sample, const PoseSensorCenterParameter& center)
{
    return std::fabs(DistanceFromCenter<Plane>(sample, center) - center.dRadius) < Plane::InPlane
           && std::fabs(sample.*Plane::Axis - center.*Plane::CenterAxis) < Plane::OffPlane;
}

/// Keeps the samples that lie on the turn. Null for a null array or an empty result.
template <class Plane>
SampleArray* FilterByDistance(const SampleArray* samples, const PoseSensorCenterParameter& center)
{
    if (samples == nullptr) return nullptr;
    std::unique_ptr<SampleArray> kept = NewSampleArray();
    if (!kept) return nullptr;

    for (int i = 0; i < CountOf(*samples); ++i) {
        PoseSensorData* sample = samples->GetAt(i);
        if (sample != nullptr && LiesOnTurn<Plane>(*sample, center)) kept->Add(sample);
    }
    return ReleaseUnlessEmpty(std::move(kept));
}

/// Drops windows of 10 samples in which more than a fifth turned back. The last sample of the
/// array never reaches the result. Null for a null array or an empty result.
SampleArray* FilterByAzimuth(const SampleArray* samples);

template <class Plane>
TurnExtent<Plane> ExtentOf(const SampleArray& samples)
{
    TurnExtent<Plane> extent;
    for (int i = 0; i < CountOf(samples); ++i)
        if (const PoseSensorData* sample = samples.GetAt(i)) extent.Include(*sample);
    return extent;
}

/// About `wanted` samples: the four extreme ones and every (count / wanted)-th since the last one
/// taken. All entries, nulls included, where more are wanted than there are; null for a null
/// array or `wanted` below 1.
template <class Plane>
SampleArray* Select(const SampleArray* samples, int wanted)
{
    if (samples == nullptr || wanted <= 0) return nullptr;
    std::unique_ptr<SampleArray> selected = NewSampleArray();
    if (!selected) return nullptr;

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
        if (++sinceTaken < step && !extent.Holds(sample)) continue;
        selected->Add(sample);
        sinceTaken = 0;
    }
    return selected.release();
}

} // namespace detail
