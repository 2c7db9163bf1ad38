// SPDX-License-Identifier: MIT
/// @file
/// One sample of the pose sensor, and a point in the survey coordinate system.
///
///     PoseSensorData sample;
///     sample.dPitch = 3.0;
///     sample.dRoll = -8.0;
///     sample.dMag_x = 150.0; // ... to dMag_z_2
///     CString row = sample.ToText();
///
///     angles        degrees; positive pitch raises the forward axis, positive roll lowers the
///                   right side
///     magnetometer  raw sensor counts; A and B are mounted with their x and y axes opposed
///     gyro, acc     as the sensor reports them: written to the text form, not used for anything else
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"

#include <cstdint>
#include <cstring>

/// One sample of the pose sensor. A plain value type; every field starts at zero.
struct TILTPOLE_API PoseSensorData
{
    int nHour = 0; // time of day, without a date
    int nMinute = 0;
    int nSecond = 0;
    double dPitch = 0.0; // inclination about the first tilt axis [degrees]
    double dRoll = 0.0;  // inclination about the second tilt axis [degrees]
    double dRot = 0.0;   // rotation angle [degrees]; not used in any computation
    double dGyro_x = 0.0;
    double dGyro_y = 0.0;
    double dGyro_z = 0.0;
    double dAcc_x = 0.0;
    double dAcc_y = 0.0;
    double dAcc_z = 0.0;
    double dMag_x = 0.0; // magnetometer A [counts]; corrected in place by CalculateYaw_A
    double dMag_y = 0.0;
    double dMag_z = 0.0;
    double dMag_x_2 = 0.0; // magnetometer B [counts]; corrected in place by CalculateYaw_B
    double dMag_y_2 = 0.0;
    double dMag_z_2 = 0.0;
    double dYaw = 0.0;     // out: heading of magnetometer A [degrees], 0 to 360
    double dYaw_2 = 0.0;   // out: heading of magnetometer B [degrees], 0 to 360
    double dYaw_Y = 0.0;   // out: dYaw minus the tilt-direction angle [degrees], 0 to 360
    double dDeltaXY = 0.0; // not used in any computation; last field of the text form
    double dAzimuth = 0.0; // azimuth about the fitted center; set by the sample filters
    double dSpare = 0.0;   // holds the turning direction, see GetTurnFlag

    /// The time as hh:mm:ss, then dPitch to dDeltaXY with ten decimals each, separated by commas.
    /// There is no line end.
    CString ToText() const;

    /// The header line: an index column, then the columns of ToText. Ends with CR LF.
    static CString TextHeader();

    /// The turning direction (1 or 0) found by the sample filters, stored in the first 32 bits of
    /// dSpare.
    int GetTurnFlag() const
    {
        std::int32_t flag = 0;
        std::memcpy(&flag, &dSpare, sizeof flag);
        return flag;
    }
    void SetTurnFlag(int flag)
    {
        const std::int32_t stored = flag;
        std::memcpy(&dSpare, &stored, sizeof stored);
    }
};

/// A point: x to the north, y to the east, h up [m].
struct xyhCoordinate
{
    double x = 0.0;
    double y = 0.0;
    double h = 0.0;
};
