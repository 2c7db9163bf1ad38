// SPDX-License-Identifier: MIT
//
// Between the axes of a sensor and those of the computation: forward, left, up the pole.
#pragma once

#include "field/ExactAttitude.h"
#include "survey/SensorAxes.h"

#include <Eigen/Core>

namespace tiltpole::field {

inline Eigen::Vector3d Forward(const ::field::SensorVector& v, int sensorType)
{
    return survey::AxesOf(sensorType) == survey::SensorAxes::ForwardLeftUp
               ? Eigen::Vector3d(v.x, v.y, v.z)
               : Eigen::Vector3d(v.y, -v.x, v.z);
}

inline ::field::SensorVector Backward(const Eigen::Vector3d& v, int sensorType)
{
    return survey::AxesOf(sensorType) == survey::SensorAxes::ForwardLeftUp
               ? ::field::SensorVector{v.x(), v.y(), v.z()}
               : ::field::SensorVector{-v.y(), v.x(), v.z()};
}

/// A point of the survey as north, west, up.
inline Eigen::Vector3d WorldOf(const xyhCoordinate& p)
{
    return {p.x, -p.y, p.h};
}

} // namespace tiltpole::field
