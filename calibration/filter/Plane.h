// SPDX-License-Identifier: MIT
//
// How the horizontal and the vertical filter differ.
#pragma once

#include "calibration/PoseSensorCenterParameter.h"
#include "calibration/filter/TurnExtent.h"
#include "positioning/PoseSensorData.h"

#include <cmath>

namespace tiltpole::calibration {

/// The horizontal turn: dMag_x and Second span its plane, the pole turns about Axis.
struct PlaneXY
{
    static constexpr auto Second = &PoseSensorData::dMag_y;
    static constexpr auto Axis = &PoseSensorData::dMag_z;
    static constexpr auto CenterSecond = &PoseSensorCenterParameter::dY;
    static constexpr auto CenterAxis = &PoseSensorCenterParameter::dZ;
    static constexpr double InPlane = 200.0;  // distance from the circle [counts]
    static constexpr double OffPlane = 100.0; // distance along the axis [counts]

    /// Where the turn lies along its axis: the mean over all samples.
    static double AxisCenter(const TurnExtent<PlaneXY>& extent)
    {
        return extent.axisSum / extent.count;
    }
};

/// The vertical turn.
struct PlaneXZ
{
    static constexpr auto Second = &PoseSensorData::dMag_z;
    static constexpr auto Axis = &PoseSensorData::dMag_y;
    static constexpr auto CenterSecond = &PoseSensorCenterParameter::dZ;
    static constexpr auto CenterAxis = &PoseSensorCenterParameter::dY;
    static constexpr double InPlane = 500.0;
    static constexpr double OffPlane = 200.0;

    /// The mean over the four extreme samples; one that is extreme twice counts twice.
    static double AxisCenter(const TurnExtent<PlaneXZ>& extent)
    {
        return (extent.leastX->*Axis + extent.greatestX->*Axis + extent.leastSecond->*Axis
                + extent.greatestSecond->*Axis)
               / 4;
    }
};

/// Distance between two points of the turn's plane.
inline double PlaneDistance(double dx, double dSecond)
{
    return std::sqrt(dx * dx + dSecond * dSecond);
}

/// Distance of a sample from the center, measured in the turn's plane [counts].
template <class Plane>
double DistanceFromCenter(const PoseSensorData& sample, const PoseSensorCenterParameter& center)
{
    return PlaneDistance(sample.dMag_x - center.dX,
                         sample.*Plane::Second - center.*Plane::CenterSecond);
}

} // namespace tiltpole::calibration
