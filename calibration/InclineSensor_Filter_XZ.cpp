// SPDX-License-Identifier: MIT
#include "calibration/InclineSensor_Filter_XZ.h"

#include "calibration/ShortMemory.h"
#include "calibration/filter/TurnRecord.h"

namespace calibration = tiltpole::calibration;

using calibration::PlaneXZ;

CInclineSensor_Filter_XZ::CInclineSensor_Filter_XZ()
    : m_Notes(std::make_unique<calibration::TurnNotes<PlaneXZ>>())
{}

CInclineSensor_Filter_XZ::~CInclineSensor_Filter_XZ()
{
    Turn().Clear();
}

calibration::TurnRecord<PlaneXZ> CInclineSensor_Filter_XZ::Turn()
{
    return {m_Center, m_Previous, m_Record, *m_Notes};
}

void CInclineSensor_Filter_XZ::Add(PoseSensorData* sample)
{
    calibration::OrFailure([&] { Turn().Add(sample); });
}

void CInclineSensor_Filter_XZ::Clear()
{
    Turn().Clear();
}

PoseSensorCenterParameter CInclineSensor_Filter_XZ::GetCenterPar() const
{
    return calibration::CenterWithRadius<PlaneXZ>(m_Center, m_Record, *m_Notes);
}

int CInclineSensor_Filter_XZ::Calculate_CenterPar(Samples* samples)
{
    return Turn().CalculateCenter(samples);
}

int CInclineSensor_Filter_XZ::Calculate_Azimuth(Samples* samples)
{
    return Turn().CalculateAzimuths(samples);
}

int CInclineSensor_Filter_XZ::Calculate_Azimuth_One(PoseSensorData* sample)
{
    return Turn().CalculateAzimuth(sample);
}

void CInclineSensor_Filter_XZ::Sort_ByAzimuth(Samples* samples)
{
    calibration::OrFailure([&] { Turn().Sort(samples); });
}

CInclineSensor_Filter_XZ::Samples* CInclineSensor_Filter_XZ::Filter_ByTime(Samples* samples)
{
    return calibration::OrFailure([&] { return calibration::FilterByTime<PlaneXZ>(samples); });
}

CInclineSensor_Filter_XZ::Samples* CInclineSensor_Filter_XZ::Filter_ByDistance(Samples* samples)
{
    return calibration::OrFailure(
        [&] { return calibration::FilterByDistance<PlaneXZ>(samples, GetCenterPar()); });
}

CInclineSensor_Filter_XZ::Samples* CInclineSensor_Filter_XZ::Filter_ByAzimuth(Samples* samples)
{
    return calibration::OrFailure([&] { return calibration::FilterByAzimuth(samples); });
}

CInclineSensor_Filter_XZ::Samples* CInclineSensor_Filter_XZ::Filter()
{
    return calibration::OrFailure([&] { return Turn().Filter(); });
}

CInclineSensor_Filter_XZ::Samples* CInclineSensor_Filter_XZ::Select(Samples* samples, int count)
{
    return calibration::OrFailure([&] { return calibration::Select<PlaneXZ>(samples, count); });
}

int CInclineSensor_Filter_XZ::IsComplete(Samples* samples)
{
    return Turn().IsComplete(samples);
}

int CInclineSensor_Filter_XZ::IsRecordOK() const
{
    return m_Notes->coverage.IsFull(m_Record) ? 1 : 0;
}

int CInclineSensor_Filter_XZ::GetRecordRate() const
{
    return m_Notes->coverage.Percentage(m_Record);
}
