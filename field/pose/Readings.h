// SPDX-License-Identifier: MIT
//
// The readings of a pose by their places in PoseSensorData, for what is done to each of them alike.
#pragma once

#include "positioning/PoseSensorData.h"

namespace tiltpole::field {

/// Magnetometers A and B, gyro, acceleration: the order of $PTPS.
inline constexpr double PoseSensorData::*kReadings[] = {
    &PoseSensorData::dMag_x,   &PoseSensorData::dMag_y,   &PoseSensorData::dMag_z,
    &PoseSensorData::dMag_x_2, &PoseSensorData::dMag_y_2, &PoseSensorData::dMag_z_2,
    &PoseSensorData::dGyro_x,  &PoseSensorData::dGyro_y,  &PoseSensorData::dGyro_z,
    &PoseSensorData::dAcc_x,   &PoseSensorData::dAcc_y,   &PoseSensorData::dAcc_z,
};

/// Gives magnetometer B the reading that it would have, were it there: (−Ax, −Ay, Az).
inline void MakeMagnetometerB(PoseSensorData& data)
{
    data.dMag_x_2 = -data.dMag_x;
    data.dMag_y_2 = -data.dMag_y;
    data.dMag_z_2 = data.dMag_z;
}

} // namespace tiltpole::field
