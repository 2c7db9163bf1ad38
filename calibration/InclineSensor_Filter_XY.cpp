// SPDX-License-Identifier: MIT
#include "calibration/InclineSensor_Filter_XY.h"

#include "calibration/ShortMemory.h"
#include "calibration/filter/TurnRecord.h"

namespace calibration = tiltpole::calibration;

using calibration::PlaneXY;

CInclineSensor_Filter_XY::CInclineSensor_Filter_XY()
    : m_Notes(std::make_unique<calibration::TurnNotes<PlaneXY>>())
{}

CInclineSensor_Filter_XY::~CInclineSensor_Filter_XY()
{
    Turn().Clear();
}

calibration::TurnRecord<PlaneXY> CInclineSensor_Filter_XY::Turn()
{
    return {m_Center, m_Previous, m_Record, *m_Notes};
}

void CInclineSensor_Filter_XY::Add(PoseSensorData* sample)
{
    calibration::OrFailure([&] { Turn().Add(sample); });
}

void CInclineSensor_Filter_XY::Clear()
{
    Turn().Clear();
    m_Center.nValid = 0;
}

PoseSensorCenterParameter CInclineSensor_Filter_XY::GetCenterPar() const
{
    return calibration::CenterWithRadius<PlaneXY>(m_Center, m_Record, *m_Notes);
}

int CInclineSensor_Filter_XY::Calculate_CenterPar(Samples* samples)
{
    return Turn().CalculateCenter(samples);
}

int CInclineSensor_Filter_XY::Calculate_Azimuth(Samples* samples)
{
    return Turn().CalculateAzimuths(samples);
}

int CInclineSensor_Filter_XY::Calculate_Azimuth_One(PoseSensorData* sample)
{
    return Turn().CalculateAzimuth(sample);
}

void CInclineSensor_Filter_XY::Sort_ByAzimuth(Samples* samples)
{
    calibration::OrFailure([&] { Turn().Sort(samples); });
}

CInclineSensor_Filter_XY::Samples* CInclineSensor_Filter_XY::Filter_ByTime(Samples* samples)
{
    return calibration::OrFailure([&] { return calibration::FilterByTime<PlaneXY>(samples); });
}

CInclineSensor_Filter_XY::Samples* CInclineSensor_Filter_XY::Filter_ByDistance(Samples* samples)
{
    return calibration::OrFailure(
        [&] { return calibration::FilterByDistance<PlaneXY>(samples, GetCenterPar()); });
}

CInclineSensor_Filter_XY::Samples* CInclineSensor_Filter_XY::Filter_ByAzimuth(Samples* samples)
{
    return calibration::OrFailure([&] { return calibration::FilterByAzimuth(samples); });
}

CInclineSensor_Filter_XY::Samples* CInclineSensor_Filter_XY::Filter()
{
    return calibration::OrFailure([&] { return Turn().Filter(); });
}

CInclineSensor_Filter_XY::Samples* CInclineSensor_Filter_XY::Select(Samples* samples, int count)
{
    return calibration::OrFailure([&] { return calibration::Select<PlaneXY>(samples, count); });
}

int CInclineSensor_Filter_XY::IsComplete(Samples* samples)
{
    return Turn().IsComplete(samples);
}

int CInclineSensor_Filter_XY::IsRecordOK() const
{
    return m_Notes->coverage.IsFull(m_Record) ? 1 : 0;
}

int CInclineSensor_Filter_XY::GetRecordRate() const
{
    return m_Notes->coverage.Percentage(m_Record);
}
