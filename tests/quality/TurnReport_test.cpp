// SPDX-License-Identifier: MIT
#include "quality/calibration/TurnReport.h"

#include "quality/calibration/LevelFrame.h"

#include <Eigen/Geometry>
#include <cmath>
#include <gtest/gtest.h>

using namespace tiltpole::quality;

namespace {

// Fields of a turn about an axis that is this far from z.
Turn TurnAbout(double degrees, double direction)
{
    const double angle = degrees / kDegreesPerRadian;
    const double towards = direction / kDegreesPerRadian;
    const Eigen::Vector3d axis(std::sin(angle) * std::cos(towards),
                               std::sin(angle) * std::sin(towards), std::cos(angle));
    Turn turn;
    for (int i = 0; i < 36; ++i) {
        const Eigen::AngleAxisd turned(i * 10.0 / kDegreesPerRadian, axis);
        const Eigen::Vector3d field = turned * axis.unitOrthogonal() + 0.4 * axis;
        turn.push_back({field, Eigen::Vector3d::UnitZ()});
    }
    return turn;
}

// An axis has no direction: no error exceeds a right angle.
TEST(AxisError, ReachesARightAngle)
{
    for (const double error : {2.0, 45.0, 84.0, 89.0}) {
        for (int direction = 0; direction < 360; direction += 30) {
            TurnFigures figures;
            DescribeAxis(TurnAbout(error, direction), TurnAxis::Horizontal, {}, Tilt::Unusable,
                         figures);
            EXPECT_NEAR(figures.axisError, error, 1e-6) << direction;
        }
    }
}

} // namespace
