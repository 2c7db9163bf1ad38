// SPDX-License-Identifier: MIT
/// @file
/// Horizontal turn: the samples recorded while the pole is turned about the z axis of its sensor.
///
///     plane     dMag_x and dMag_y of magnetometer A [raw counts]
///     azimuths  about the center of the turn [degrees], in [1e-6, 360 + 1e-6); 0 is stored as 360
///     domain    readings and times of any value; what depends on a NaN reading becomes NaN
///
///     CInclineSensor_Filter_XY filter;
///     while (!filter.IsRecordOK()) {                    // until all sectors of 5 degrees are full
///         filter.Add(new PoseSensorData(NextSample())); // the filter deletes it
///         ShowProgress(filter.GetRecordRate());         // percent
///     }
///     const std::unique_ptr<CInclineSensor_Filter_XY::Samples> kept(filter.Filter());
///     for (int i = 0; kept && i < kept->GetSize(); ++i)
///         adjust.Horizontal_Add(kept->GetAt(i));        // see InclineSensor_MagneticAdjust.h
#pragma once

#include "calibration/PoseSensorCenterParameter.h"
#include "framework/core/Array.h"
#include "framework/core/Export.h"
#include "positioning/PoseSensorData.h"

#include <memory>

namespace tiltpole::calibration {
struct PlaneXY;
template <class Plane>
class TurnRecord;
template <class Plane>
struct TurnNotes;
} // namespace tiltpole::calibration

/// Samples of the horizontal turn.
///
/// The filter owns the samples passed to Add. They must not be changed from outside while it owns
/// them, because it keeps their extremes and azimuths. Arrays that it returns belong to the caller,
/// the samples in them to the filter. Not copyable: a copy would free the samples twice.
///
/// Where memory is short, operations that return an array return null and Sort_ByAzimuth changes
/// nothing. Only the constructor throws (std::bad_alloc).
class TILTPOLE_API CInclineSensor_Filter_XY
{
public:
    using Samples = CArray<PoseSensorData*, PoseSensorData*>;

    CInclineSensor_Filter_XY();
    /// Frees the samples.
    ~CInclineSensor_Filter_XY();
    CInclineSensor_Filter_XY(const CInclineSensor_Filter_XY&) = delete;
    CInclineSensor_Filter_XY& operator=(const CInclineSensor_Filter_XY&) = delete;

    /// Appends a sample and takes ownership: it was created with new and is deleted by the filter,
    /// at once where memory is too short to record it. Null is ignored. Writes its azimuth; every
    /// tenth sample recomputes the center and all azimuths instead.
    void Add(PoseSensorData* sample);

    /// Frees the samples and marks the center invalid; its other fields keep their values.
    void Clear();

    /// The current center [counts]; not valid before the tenth sample.
    PoseSensorCenterParameter GetCenterPar() const;

    /// Orders an array by ascending azimuth and rewrites the turning directions: 0 where the
    /// azimuth exceeds that of the entry just before by less than 1e-6 degrees, else 1. Equal
    /// azimuths may change their order; null entries keep their places. Null is ignored.
    void Sort_ByAzimuth(Samples* samples);

    /// The samples to calibrate with: without those of a standing pole, ordered by azimuth, without
    /// those off the circle and without stretches where the pole was turned back.
    /// @return array that the caller deletes (not the samples in it), or null when none is left
    Samples* Filter();

    /// About `count` samples of an array, always including the four extreme ones.
    /// @return array that the caller deletes; all entries, null ones included, where `count`
    ///         exceeds the size of the array; null for a null array or a `count` below 1
    Samples* Select(Samples* samples, int count);

    /// Whether an array sorted by azimuth closes the turn. Recomputes the center and the azimuths
    /// from the array; its samples must stay alive until the next call of Add or Clear.
    /// @return 0 for null or where neighbors differ by more than 60 degrees, else 1
    int IsComplete(Samples* samples);

    /// 1 when every sector of 5 degrees holds a sample, else 0. A sample exactly on a boundary
    /// counts for neither neighbor.
    int IsRecordOK() const;

    /// Share of the sectors that hold a sample, a rounded percentage from 0 to 100.
    int GetRecordRate() const;

protected:
    /// Center of an array: midpoints of the extreme dMag_x and dMag_y, mean of dMag_z; radius: mean
    /// distance from the center in the x-y plane.
    /// @return 1, or 0 with nothing changed when the array is null or has no samples
    int Calculate_CenterPar(Samples* samples);

    /// Azimuths of all samples of an array, in its order. 0 while the center is not valid.
    int Calculate_Azimuth(Samples* samples);

    /// Azimuth and turning direction of one sample. 0 for null or while the center is not valid.
    int Calculate_Azimuth_One(PoseSensorData* sample);

    // Stages of Filter; each returns an array that the caller deletes, or null when none is left.

    /// Drops samples within 30 counts and 3 seconds of the last kept one.
    Samples* Filter_ByTime(Samples* samples);
    /// Keeps samples within 200 counts of the circle and within 100 of its height.
    Samples* Filter_ByDistance(Samples* samples);
    /// Drops windows of 10 samples of which more than a fifth turned back, and the last sample.
    Samples* Filter_ByAzimuth(Samples* samples);

private:
    tiltpole::calibration::TurnRecord<tiltpole::calibration::PlaneXY> Turn();

    PoseSensorCenterParameter m_Center;
    PoseSensorData* m_Previous = nullptr; // the sample whose azimuth was computed last
    Samples m_Record;                     // in order of arrival, owned
    std::unique_ptr<tiltpole::calibration::TurnNotes<tiltpole::calibration::PlaneXY>>
        m_Notes; // intermediate results that make Add and the rate cheap
};
