// SPDX-License-Identifier: MIT
//
// Azimuth of a sample about the center of its turn, and the direction in which the pole turned.
#pragma once

#include "calibration/filter/Plane.h"

namespace tiltpole::calibration {

inline constexpr double kTiny = 1e-6; // counts beside an axis, degrees beside a predecessor

/// Azimuth of an offset from the center, degrees in [1e-6, 360 + 1e-6).
///
/// Offsets on an axis count from the x axis (90 for +second), all others from the second axis
/// (0 towards +second); an azimuth of 0 is returned as 360.
double TurnAzimuth(double dx, double dSecond);

/// 1 when the pole turned on from `before` to `azimuth` [degrees], 0 when it stood still or turned
/// back.
inline int TurnFlag(double azimuth, double before)
{
    return azimuth - before < kTiny ? 0 : 1;
}

/// Writes azimuth and turning direction of one sample; `previous` is the sample before it and
/// becomes this one. Without a previous sample the direction keeps its value.
template <class Plane>
void WriteAzimuth(PoseSensorData& sample, const PoseSensorCenterParameter& center,
                  PoseSensorData*& previous)
{
    sample.dAzimuth =
        TurnAzimuth(sample.dMag_x - center.dX, sample.*Plane::Second - center.*Plane::CenterSecond);
    if (previous != nullptr) sample.SetTurnFlag(TurnFlag(sample.dAzimuth, previous->dAzimuth));
    previous = &sample;
}

} // namespace tiltpole::calibration
