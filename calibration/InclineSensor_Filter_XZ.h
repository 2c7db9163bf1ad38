// SPDX-License-Identifier: MIT
/// @file
/// Vertical turn: the samples recorded while the pole is turned about the y axis of its sensor.
///
///     plane     dMag_x and dMag_z of magnetometer A [raw counts]
///     azimuths  about the center of the turn [degrees], in [1e-6, 360 + 1e-6); 0 is stored as 360
///     domain    readings and times of any value; what depends on a NaN reading becomes NaN
///
///     CInclineSensor_Filter_XZ filter;
///     while (!filter.IsRecordOK())
///         filter.Add(new PoseSensorData(NextSample())); // the filter deletes it
///     const std::unique_ptr<CInclineSensor_Filter_XZ::Samples> kept(filter.Filter());
///     for (int i = 0; kept && i < kept->GetSize(); ++i)
///         adjust.Vertical_Add(kept->GetAt(i));          // see InclineSensor_MagneticAdjust.h
#pragma once

#include "calibration/PoseSensorCenterParameter.h"
#include "framework/core/Array.h"
#include "framework/core/Export.h"
#include "positioning/PoseSensorData.h"

#include <memory>

namespace tiltpole::calibration {
struct PlaneXZ;
template <class Plane>
class TurnRecord;
template <class Plane>
struct TurnNotes;
} // namespace tiltpole::calibration

/// Samples of the vertical turn. Ownership, operations and failures are those of
/// CInclineSensor_Filter_XY; only the differences are documented here.
class TILTPOLE_API CInclineSensor_Filter_XZ
{
public:
    using Samples = CArray<PoseSensorData*, PoseSensorData*>;

    CInclineSensor_Filter_XZ();
    /// Frees the samples.
    ~CInclineSensor_Filter_XZ();
    CInclineSensor_Filter_XZ(const CInclineSensor_Filter_XZ&) = delete;
    CInclineSensor_Filter_XZ& operator=(const CInclineSensor_Filter_XZ&) = delete;

    /// Appends a sample created with new and takes ownership. Null is ignored.
    void Add(PoseSensorData* sample);

    /// Frees the samples. Unlike that of the horizontal filter, the center stays valid: the first
    /// samples of a new turn get azimuths about the center of the last one, until the tenth
    /// recomputes it.
    void Clear();

    /// The current center [counts].
    PoseSensorCenterParameter GetCenterPar() const;

    /// Orders an array by ascending azimuth and rewrites the turning directions.
    void Sort_ByAzimuth(Samples* samples);

    /// @return array that the caller deletes (not the samples in it), or null
    Samples* Filter();

    /// The extreme samples that are always included are those of dMag_x and dMag_z.
    /// @return array that the caller deletes, or null
    Samples* Select(Samples* samples, int count);

    /// 1 for a sorted array without a gap of more than 60 degrees.
    int IsComplete(Samples* samples);

    /// 1 when every sector of 5 degrees holds a sample.
    int IsRecordOK() const;

    /// Covered sectors, a rounded percentage.
    int GetRecordRate() const;

protected:
    /// Center of an array: midpoints of the extreme dMag_x and dMag_z, mean dMag_y of the samples
    /// with these four extremes (one that is extreme twice counts twice); radius: mean distance
    /// from the center in the x-z plane.
    int Calculate_CenterPar(Samples* samples);

    /// As in the horizontal filter, with dMag_z in place of dMag_y.
    int Calculate_Azimuth(Samples* samples);
    int Calculate_Azimuth_One(PoseSensorData* sample);

    /// Stages of Filter. Distances are measured in dMag_x and dMag_z; samples within 500 counts of
    /// the circle and within 200 of its plane are kept.
    Samples* Filter_ByTime(Samples* samples);
    Samples* Filter_ByDistance(Samples* samples);
    Samples* Filter_ByAzimuth(Samples* samples);

private:
    tiltpole::calibration::TurnRecord<tiltpole::calibration::PlaneXZ> Turn();

    Samples m_Record; // in order of arrival, owned
    PoseSensorCenterParameter m_Center;
    PoseSensorData* m_Previous = nullptr; // the sample whose azimuth was computed last
    std::unique_ptr<tiltpole::calibration::TurnNotes<tiltpole::calibration::PlaneXZ>>
        m_Notes; // intermediate results that make Add and the rate cheap
};
