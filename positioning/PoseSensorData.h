// SPDX-License-Identifier: MIT
//
// What the pose sensor reports, and a point of the survey coordinate system.
//
//   angles        degrees
//   magnetometer  raw sensor counts; A and B are mounted with x and y opposed
//   gyro, acc     as the sensor reports them: carried and written out, never computed with
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"

#include <cstdint>
#include <cstring>

/// One sample of the pose sensor. A plain value: copied whole, all zero when made.
struct TILTPOLE_API PoseSensorData
{
    int nHour = 0; // time of day, no date
    int nMinute = 0;
    int nSecond = 0;
    double dPitch = 0.0; // inclination about the first tilt axis [degrees]
    double dRoll = 0.0;  // inclination about the second tilt axis [degrees]
    double dRot = 0.0;   // rotation angle [degrees], carried only
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
    double dYaw_Y = 0.0;   // out: dYaw less the tilt-direction angle [degrees], 0 to 360
    double dDeltaXY = 0.0; // carried; the last field of the text form
    double dAzimuth = 0.0; // of the sample about a fitted centre; set by the sample filters
    double dSpare = 0.0;   // its storage holds the turning-direction flag

    /// Time as hh:mm:ss, then dPitch to dDeltaXY with ten decimals each, joined by commas; no line
    /// end.
    CString ToText() const;

    /// Names of an index column and of the columns of ToText, with CR LF.
    static CString TextHeader();

    /// The flag of the sample filters, 1 or 0, kept in the first 32 bits of dSpare.
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
