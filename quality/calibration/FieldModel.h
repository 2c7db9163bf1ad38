// SPDX-License-Identifier: MIT
//
// What the fits share: one observation of a turn and the full correction of one magnetometer.
#pragma once

#include "survey/Reading.h"

#include <Eigen/Core>

#include <vector>

namespace tiltpole::quality {

/// A reading or point as the vector of its x, y and z.
template <class Triple>
Eigen::Vector3d VectorOf(const Triple& t)
{
    return {t.x, t.y, t.z};
}

/// One sample of a turn as one magnetometer sees it, in that magnetometer's axes.
struct Observation
{
    Eigen::Vector3d reading; // raw [counts]
    Eigen::Vector3d up;      // unit vector against gravity, from the sample's pitch and roll
};

using Turn = std::vector<Observation>;

/// corrected = matrix·reading − offset, with nine independent weights.
struct FullCorrection
{
    Eigen::Matrix3d matrix = Eigen::Matrix3d::Identity();
    Eigen::Vector3d offset = Eigen::Vector3d::Zero();

    Eigen::Vector3d operator()(const Eigen::Vector3d& reading) const
    {
        return matrix * reading - offset;
    }
};

} // namespace tiltpole::quality
