// SPDX-License-Identifier: MIT
/// @file
/// Records of the multi-point solution: an antenna observation, the solved tip and its grading.
///
///     x, y, h   plane coordinates and height [m]
///     angles    [degrees]
#pragma once

#include "framework/core/core.h"

#include <cstdint>

/// One antenna observation. Zero and empty when made; copied whole.
/// The solution uses the antenna position and the incline angle and carries the rest unchanged.
struct TiltPoint_Sensor
{
    std::int32_t nSet = 0; ///< not 0: the record holds an observation
    std::int32_t nWord2 = 0;
    std::int32_t nWord3 = 0;
    std::int32_t nWord4 = 0;
    CString strLabel;            ///< name of the observation
    std::int32_t nConfirmed = 0; ///< not 0: the observation is confirmed
    double dX = 0.0;             ///< antenna [m]
    double dY = 0.0;
    double dH = 0.0;
    double dX2 = 0.0;
    double dY2 = 0.0;
    double dH2 = 0.0;
    double dValue1 = 0.0;
    double dValue2 = 0.0;
    double dValue3 = 0.0;
    double dIncline = 0.0; ///< incline of the pole [degrees]
};

/// A solved tip [m].
struct xyhCoord
{
    double x = 0.0;
    double y = 0.0;
    double h = 0.0;
};

/// Quality of a solved tip. All zero when made.
struct TiltPoint_State
{
    double dRadius = 0.0;         ///< fitted antenna-to-tip distance [m]
    double dPointError = 0.0;     ///< mean position error sqrt(mx² + my² + mh²) [m]
    double dGeometryFigure = 0.0; ///< sqrt(trace Q), Q the inverse normal matrix; no unit
    double dHeightCofactor = 0.0; ///< Q(3,3)
    double dRadiusExcess = 0.0;   ///< radius − antenna height [m]
    std::int32_t nStatus = 0;     ///< a TiltPointStatus
};

/// Outcome of CTiltPosition_Geometry::Calculate; later conditions override earlier ones.
enum TiltPointStatus : std::int32_t {
    kTiltPointAccepted = 1,
    kTiltPointPoor = -1,         ///< point error > 0.05 m or geometry figure > 2.0
    kTiltPointError40 = -2,      ///< else point error > 0.04 m and geometry figure > 1.0
    kTiltPointError35 = -3,      ///< else point error > 0.035 m and geometry figure > 1.2
    kTiltPointError30 = -4,      ///< else point error > 0.03 m and geometry figure > 1.5
    kTiltPointRadius = -5,       ///< else point error > 0.02 m, figure > 1.2, |excess| > 0.04 m
    kTiltPointImplausible = -88, ///< h_tip > h_1 or h_1 − h_tip > 2·antenna height
    kTiltPointTooFew = -99,      ///< fewer than four observations
    kTiltPointNoSphere = -100,   ///< no start had a radius within 0.05 m of the antenna height
};
