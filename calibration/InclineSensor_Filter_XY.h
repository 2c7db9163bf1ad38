// SPDX-License-Identifier: MIT
//
// Horizontal turn: the samples recorded while the pole is turned about the z axis of its sensor.
//
//   host: Add(new PoseSensorData(...)) per sample, GetRecordRate for the progress, IsRecordOK to
//         stop, then Filter, perhaps Select, and the result to the calibration
//   plane         dMag_x and dMag_y of magnetometer A, raw counts
//   azimuths      degrees about the centre of the turn, in (0, 360]; an azimuth of 0 is 360
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
/// The filter owns the samples that it is given; they must not be changed from outside while it
/// holds them, for it remembers their extremes and azimuths. Arrays that it returns belong to the
/// caller, the samples in them to the filter. Not copyable: a copy would free the samples twice.
class TILTPOLE_API CInclineSensor_Filter_XY
{
public:
    using Samples = CArray<PoseSensorData*, PoseSensorData*>;

    CInclineSensor_Filter_XY();
    /// Frees the samples.
    ~CInclineSensor_Filter_XY();
    CInclineSensor_Filter_XY(const CInclineSensor_Filter_XY&) = delete;
    CInclineSensor_Filter_XY& operator=(const CInclineSensor_Filter_XY&) = delete;

    /// Appends a sample and takes it over: made with new, freed by the filter. Null is ignored.
    /// Writes its azimuth; each tenth sample recomputes the centre and every azimuth instead.
    void Add(PoseSensorData* sample);

    /// Frees the samples and makes the centre invalid; its other fields stay.
    void Clear();

    /// The centre found last [counts]; not valid before the tenth sample.
    PoseSensorCenterParameter GetCenterPar() const;

    /// Orders an array by ascending azimuth and rewrites the turning directions: 0 where the
    /// azimuth does not exceed that of the entry just before by 1e-6 degrees. Equal azimuths may
    /// change their order; null entries keep their places. Null is ignored.
    void Sort_ByAzimuth(Samples* samples);

    /// The samples worth calibrating with: thinned by time and distance, ordered by azimuth,
    /// without those off the circle and without stretches turned back.
    /// @return array for the caller to delete (not the samples in it), or null when none is left
    Samples* Filter();

    /// About `count` samples of an array, the four extreme ones always among them.
    /// @return array for the caller to delete; a copy of the whole, null entries included, where
    ///         `count` exceeds its size; null for a null array or a `count` below 1
    Samples* Select(Samples* samples, int count);

    /// Whether an array sorted by azimuth closes the turn. Recomputes centre and azimuths from
    /// the array; its samples must stay alive until the next sample is added or Clear.
    /// @return 0 for null or where neighbours differ by more than 60 degrees, else 1
    int IsComplete(Samples* samples);

    /// 1 when every sector of 5 degrees holds a sample, else 0. A sample exactly on a boundary
    /// counts for neither neighbour.
    int IsRecordOK() const;

    /// Share of the sectors that hold a sample, a rounded percentage from 0 to 100.
    int GetRecordRate() const;

protected:
    /// Centre of an array: middle of the extreme dMag_x and dMag_y, mean of dMag_z, and the mean
    /// distance from it as radius.
    /// @return 1, or 0 with nothing changed when the array is null or holds no sample
    int Calculate_CenterPar(Samples* samples);

    /// Azimuths of all samples of an array, in its order. 0 while there is no valid centre.
    int Calculate_Azimuth(Samples* samples);

    /// Azimuth and turning direction of one sample. 0 for null or while there is no valid centre.
    int Calculate_Azimuth_One(PoseSensorData* sample);

    // Stages of Filter; each returns an array for the caller to delete, null when none is left.

    /// Drops samples within 30 counts and 3 seconds of the last kept one.
    Samples* Filter_ByTime(Samples* samples);
    /// Keeps samples within 200 counts of the circle and within 100 of its height.
    Samples* Filter_ByDistance(Samples* samples);
    /// Drops windows of 10 samples of which more than a fifth turned back, and the last sample.
    Samples* Filter_ByAzimuth(Samples* samples);

private:
    tiltpole::calibration::TurnRecord<tiltpole::calibration::PlaneXY> Turn();

    PoseSensorCenterParameter m_Center;
    PoseSensorData* m_Previous = nullptr; // whose azimuth was computed last
    Samples m_Record;                     // in order of arrival, owned
    std::unique_ptr<tiltpole::calibration::TurnNotes<tiltpole::calibration::PlaneXY>>
        m_Notes; // what keeps Add and the rate cheap
};
