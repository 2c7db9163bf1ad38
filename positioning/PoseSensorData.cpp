#include "positioning/PoseSensorData.h"

#include <cstdint>
#include <cstring>

static_assert(sizeof(std::int32_t) <= sizeof(PoseSensorData::dSpare));

CString PoseSensorData::ToText() const
{
    CString text;
    text.Format(L"%02d:%02d:%02d", nHour, nMinute, nSecond);
    for (const double value :
         {dPitch, dRoll, dRot, dGyro_x, dGyro_y, dGyro_z, dAcc_x, dAcc_y, dAcc_z, dMag_x, dMag_y,
          dMag_z, dMag_x_2, dMag_y_2, dMag_z_2, dYaw, dYaw_2, dYaw_Y, dDeltaXY})
        text.AppendFormat(L",%16.10f", value);
    return text;
}

CString PoseSensorData::TextHeader()
{
    return L"Index,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
           L"dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,dYaw,dYaw_2,dYaw_Y,dDeltaXY,\r\n";
}

int PoseSensorData::GetTurnFlag() const
{
    std::int32_t flag = 0;
    std::memcpy(&flag, &dSpare, sizeof flag);
    return flag;
}

void PoseSensorData::SetTurnFlag(int flag)
{
    const std::int32_t stored = flag;
    std::memcpy(&dSpare, &stored, sizeof stored);
}
