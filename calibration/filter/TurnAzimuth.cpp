// SPDX-License-Identifier: MIT
#include "calibration/filter/TurnAzimuth.h"

#include "survey/Angle.h"

#include <cmath>

namespace tiltpole::calibration {
namespace {

double AzimuthFromZero(double dx, double dSecond)
{
    if (std::fabs(dx) < kTiny) {
        if (std::fabs(dSecond) < kTiny) return 0;
        return dSecond > kTiny ? 90 : 270;
    }
    if (std::fabs(dSecond) < kTiny) return dx > kTiny ? 0 : 180;

    const double angle = std::atan(std::fabs(dx / dSecond)) * survey::kDegreesPerRadian;
    if (dx > kTiny && dSecond > kTiny) return angle;
    if (dx > kTiny && dSecond < kTiny) return 180 - angle;
    if (dx < kTiny && dSecond < kTiny) return 180 + angle;
    return 360 - angle;
}

} // namespace

double TurnAzimuth(double dx, double dSecond)
{
    const double azimuth = AzimuthFromZero(dx, dSecond);
    return azimuth < kTiny ? azimuth + 360 : azimuth;
}

} // namespace tiltpole::calibration
