// SPDX-License-Identifier: MIT
//
// Vertical turn: the samples recorded while the pole is turned about the y axis of its sensor.
//
// Used like the horizontal filter (calibration/InclineSensor_Filter_XY.h), with
//   plane         dMag_x and dMag_z of magnetometer A, raw counts
//   azimuths      degrees about the centre of the turn, in (0, 360]; an azimuth of 0 is 360
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

/// Samples of the vertical turn. Ownership and operations are those of CInclineSensor_Filter_XY;
/// told here is what differs.
class TILTPOLE_API CInclineSensor_Filter_XZ
{
public:
    using Samples = CArray<PoseSensorData*, PoseSensorData*>;

    CInclineSensor_Filter_XZ();
    /// Frees the samples.
    ~CInclineSensor_Filter_XZ();
    CInclineSensor_Filter_XZ(const CInclineSensor_Filter_XZ&) = delete;
    CInclineSensor_Filter_XZ& operator=(const CInclineSensor_Filter_XZ&) = delete;

    /// Takes a sample over, made with new. Null is ignored.
    void Add(PoseSensorData* sample);

    /// Frees the samples. The centre stays valid: the first samples of a new turn get their
    /// azimuths about the centre of the last one, until the tenth recomputes it.
    void Clear();

    /// The centre found last [counts].
    PoseSensorCenterParameter GetCenterPar() const;

    /// By ascending azimuth, turning directions rewritten.
    void Sort_ByAzimuth(Samples* samples);

    /// @return array for the caller to delete (not the samples in it), or null
    Samples* Filter();

    /// The extremes that always survive are those of dMag_x and dMag_z.
    /// @return array for the caller to delete, or null
    Samples* Select(Samples* samples, int count);

    /// 1 for a sorted array without a gap of more than 60 degrees.
    int IsComplete(Samples* samples);

    /// 1 when every sector of 5 degrees holds a sample.
    int IsRecordOK() const;

    /// Covered sectors, a rounded percentage.
    int GetRecordRate() const;

protected:
    /// Centre of an array: middle of the extreme dMag_x and dMag_z, mean dMag_y of the samples
    /// with these four extremes (one that is extreme twice counts twice), and the mean distance
    /// from it as radius.
    int Calculate_CenterPar(Samples* samples);

    /// As in the horizontal filter, with dMag_z in the place of dMag_y.
    int Calculate_Azimuth(Samples* samples);
    int Calculate_Azimuth_One(PoseSensorData* sample);

    /// Stages of Filter. Distances are those of dMag_x and dMag_z; kept are samples within 500
    /// counts of the circle and within 200 of its plane.
    Samples* Filter_ByTime(Samples* samples);
    Samples* Filter_ByDistance(Samples* samples);
    Samples* Filter_ByAzimuth(Samples* samples);

private:
    tiltpole::calibration::TurnRecord<tiltpole::calibration::PlaneXZ> Turn();

    Samples m_Record; // in order of arrival, owned
    PoseSensorCenterParameter m_Center;
    PoseSensorData* m_Previous = nullptr; // whose azimuth was computed last
    std::unique_ptr<tiltpole::calibration::TurnNotes<tiltpole::calibration::PlaneXZ>>
        m_Notes; // what keeps Add and the rate cheap
};
