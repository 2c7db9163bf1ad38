// SPDX-License-Identifier: MIT
//
// What both sample filters do with a turn, on the members of the filter that calls it.
#pragma once

#include "calibration/filter/AzimuthSort.h"
#include "calibration/filter/Screening.h"
#include "calibration/filter/SectorCoverage.h"
#include "calibration/filter/TurnAzimuth.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>

namespace tiltpole::calibration {

inline constexpr int kRecenterEvery = 10;   // samples
inline constexpr double kLargestGap = 60.0; // degrees between neighbors of a closed turn
inline constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();

/// What a filter keeps about its record so that a new sample costs little.
template <class Plane>
struct TurnNotes
{
    TurnExtent<Plane> extent;
    SectorCoverage coverage;
    double aboutX = kNowhere; // the center that the azimuths refer to [counts]
    double aboutSecond = kNowhere;
    int azimuths = 0;         // number of leading samples whose azimuth is about that center
    bool flagsInOrder = true; // their turning directions follow the order of arrival
    int radiusOwed = 0;       // number of leading samples whose mean distance is the radius, not
                              // computed yet

    bool IsAbout(const PoseSensorCenterParameter& center) const
    {
        return aboutX == center.dX && aboutSecond == center.*Plane::CenterSecond;
    }
};

/// Mean distance of the first `count` entries from the center, null entries left out [counts].
template <class Plane>
double MeanDistance(const SampleArray& samples, int count, const PoseSensorCenterParameter& center)
{
    double sum = 0;
    int taken = 0;
    for (int i = 0; i < count; ++i) {
        const PoseSensorData* sample = samples.GetAt(i);
        if (sample == nullptr) continue;
        sum += DistanceFromCenter<Plane>(*sample, center);
        ++taken;
    }
    return sum / taken;
}

/// Valid center of a turn of that extent; the radius is left alone.
template <class Plane>
void SetCenter(PoseSensorCenterParameter& center, const TurnExtent<Plane>& extent)
{
    center.nValid = 1;
    center.dX = extent.MiddleX();
    center.*Plane::CenterSecond = extent.MiddleSecond();
    center.*Plane::CenterAxis = Plane::AxisCenter(extent);
}

/// The center with its radius, which is computed only when it is needed.
template <class Plane>
PoseSensorCenterParameter CenterWithRadius(const PoseSensorCenterParameter& center,
                                           const SampleArray& record, const TurnNotes<Plane>& notes)
{
    PoseSensorCenterParameter result = center;
    if (notes.radiusOwed > 0)
        result.dRadius = MeanDistance<Plane>(record, notes.radiusOwed, center);
    return result;
}

/// The operations that change a filter. An object lives for one call.
template <class Plane>
class TurnRecord
{
public:
    TurnRecord(PoseSensorCenterParameter& center, PoseSensorData*& previous, SampleArray& record,
               TurnNotes<Plane>& notes)
        : m_Center(center), m_Previous(previous), m_Record(record), m_Notes(notes)
    {}

    void Add(PoseSensorData* sample)
    {
        if (sample == nullptr) return;
        std::unique_ptr<PoseSensorData> owner(sample);
        m_Record.Add(sample);
        owner.release(); // NOLINT(bugprone-unused-return-value): the record owns it now
        m_Notes.extent.Include(*sample);
        if (CountOf(m_Record) % kRecenterEvery == 0)
            Recenter();
        else
            WriteNext(*sample);
    }

    /// Frees the samples; the center is kept.
    void Clear()
    {
        m_Center = CenterWithRadius<Plane>(m_Center, m_Record, m_Notes);
        for (int i = 0; i < CountOf(m_Record); ++i)
            delete m_Record.GetAt(i);
        m_Record.RemoveAll();
        m_Previous = nullptr;
        m_Notes = {};
    }

    int CalculateCenter(const SampleArray* samples)
    {
        if (samples == nullptr) return 0;
        const TurnExtent<Plane> extent = ExtentOf<Plane>(*samples);
        if (extent.count == 0) return 0;

        SetCenter<Plane>(m_Center, extent);
        m_Center.dRadius = MeanDistance<Plane>(*samples, CountOf(*samples), m_Center);
        m_Notes.radiusOwed = 0;
        return 1;
    }

    int CalculateAzimuths(const SampleArray* samples)
    {
        if (samples == nullptr || m_Center.nValid == 0) return 0;
        for (int i = 0; i < CountOf(*samples); ++i)
            CalculateAzimuth(samples->GetAt(i));
        return 1;
    }

    int CalculateAzimuth(PoseSensorData* sample)
    {
        if (sample == nullptr || m_Center.nValid == 0) return 0;
        WriteAzimuth<Plane>(*sample, m_Center, m_Previous);
        m_Notes.azimuths = 0; // it may be any sample of the record
        m_Notes.coverage.Distrust();
        return 1;
    }

    void Sort(SampleArray* samples)
    {
        if (samples == nullptr) return;
        SortByAzimuth(*samples);
        m_Notes.flagsInOrder = false;
    }

    int IsComplete(const SampleArray* samples)
    {
        if (samples == nullptr) return 0;
        CalculateCenter(samples);
        CalculateAzimuths(samples);
        const PoseSensorData* before = nullptr;
        for (int i = 0; i < CountOf(*samples); ++i) {
            const PoseSensorData* sample = samples->GetAt(i);
            if (sample == nullptr) continue;
            if (before != nullptr && std::fabs(sample->dAzimuth - before->dAzimuth) > kLargestGap)
                return 0;
            before = sample;
        }
        return 1;
    }

    SampleArray* Filter()
    {
        Recenter();
        if (CountOf(m_Record) == 0) return nullptr;

        const auto room = std::make_unique_for_overwrite<Candidate[]>(
            static_cast<std::size_t>(CountOf(m_Record)));
        const Candidates kept = ThinOut<Plane>(m_Record, m_Center, room.get());
        m_Notes.radiusOwed = 0;
        SortByAzimuth(kept);
        m_Notes.flagsInOrder = false;
        return FilterByAzimuth(KeepOnTurn<Plane>(kept, m_Center));
    }

private:
    // Center of the record and the azimuths of all its samples about it. Where the center has not
    // moved the azimuths are up to date, and only the flags that a walk over the record would
    // change are written.
    void Recenter()
    {
        if (m_Notes.extent.count == 0) return;
        SetCenter<Plane>(m_Center, m_Notes.extent);
        m_Notes.radiusOwed = CountOf(m_Record);
        if (m_Notes.IsAbout(m_Center) && m_Notes.azimuths > 0)
            RewriteFlags();
        else
            ForgetAzimuths();
        while (m_Notes.azimuths < CountOf(m_Record)) {
            FetchAhead(m_Notes.azimuths);
            WriteNoted(*m_Record.GetAt(m_Notes.azimuths));
        }
    }

    // The samples are scattered in memory and, ten samples later, in no cache any more.
    void FetchAhead(int index) const
    {
        constexpr int kAhead = 16; // samples
        if (index + kAhead >= CountOf(m_Record)) return;
        const PoseSensorData& sample = *m_Record.GetAt(index + kAhead);
        __builtin_prefetch(&sample.dMag_x);
        __builtin_prefetch(&(sample.*Plane::Second));
        __builtin_prefetch(&sample.dAzimuth, 1);
        __builtin_prefetch(&sample.dSpare, 1);
    }

    void ForgetAzimuths()
    {
        m_Notes.azimuths = 0;
        m_Notes.flagsInOrder = true;
        m_Notes.aboutX = m_Center.dX;
        m_Notes.aboutSecond = m_Center.*Plane::CenterSecond;
        m_Notes.coverage.Clear();
    }

    // A walk over the record compares its first sample with the one whose azimuth was computed
    // last.
    void RewriteFlags()
    {
        const int count = m_Notes.flagsInOrder ? 1 : m_Notes.azimuths;
        const PoseSensorData* before = m_Previous;
        for (int i = 0; i < count; ++i) {
            PoseSensorData* sample = m_Record.GetAt(i);
            if (before != nullptr)
                sample->SetTurnFlag(TurnFlag(sample->dAzimuth, before->dAzimuth));
            before = sample;
        }
        m_Notes.flagsInOrder = true;
        m_Previous = m_Record.GetAt(m_Notes.azimuths - 1);
    }

    void WriteNoted(PoseSensorData& sample)
    {
        WriteAzimuth<Plane>(sample, m_Center, m_Previous);
        m_Notes.coverage.Note(sample);
        ++m_Notes.azimuths;
    }

    // The newest sample alone.
    void WriteNext(PoseSensorData& sample)
    {
        const bool followsOn =
            m_Notes.IsAbout(m_Center) && m_Notes.azimuths == CountOf(m_Record) - 1;
        if (followsOn) return WriteNoted(sample);
        CalculateAzimuth(&sample);
        m_Notes.coverage.Distrust();
    }

    PoseSensorCenterParameter& m_Center;
    PoseSensorData*& m_Previous;
    SampleArray& m_Record;
    TurnNotes<Plane>& m_Notes;
};

} // namespace tiltpole::calibration
