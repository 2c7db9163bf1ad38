// SPDX-License-Identifier: MIT
#include "positioning/PoseSensorData.h"

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
