// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltAxes.h"

#include "quality/JointFitResult.h"
#include "quality/calibration/LevelFrame.h"
#include "quality/calibration/TurnGeometry.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr double kSteady = 0.8;       // length of the mean vertical of a turn that stays upright
constexpr double kMostOffPlane = 0.5; // of the verticals of a turn over head

struct TiltOfTurn
{
    std::optional<Eigen::Vector3d> mean;   // direction, where it is steady
    std::optional<Eigen::Vector3d> around; // axis, where the vertical goes all round
};

TiltOfTurn TiltOfTurnOf(const std::vector<PoseSensorData>& samples, int sensorType)
{
    std::vector<Eigen::Vector3d> ups;
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const PoseSensorData& s : samples) {
        const Eigen::Vector3d up = FrameOf(s.dPitch, s.dRoll, sensorType, Magnetometer::A).up;
        if (!up.allFinite()) return {};
        ups.push_back(up);
        mean += up;
    }
    if (ups.empty()) return {};
    mean /= static_cast<double>(ups.size());
    TiltOfTurn tilt;
    if (mean.norm() > kSteady) {
        tilt.mean = mean.normalized();
        return tilt;
    }
    const Plane plane = PlaneThroughOrigin(ups);
    const bool allRound =
        CoveredBy(GapsOf(AnglesAbout(plane.normal, ups))) >= ::quality::kLeastCovered;
    if (allRound && plane.spread < kMostOffPlane) tilt.around = plane.normal;
    return tilt;
}

double DegreesBetween(double cosine)
{
    return survey::ArcCosine(cosine) * kDegreesPerRadian;
}

} // namespace

TiltAxes TiltAxesOf(const ::quality::CalibrationTurns& turns, int sensorType)
{
    const TiltOfTurn horizontal = TiltOfTurnOf(turns.horizontal, sensorType);
    const TiltOfTurn vertical = TiltOfTurnOf(turns.vertical, sensorType);
    TiltAxes axes;
    if (horizontal.mean) axes.horizontal = DegreesBetween(horizontal.mean->z());
    if (vertical.around) axes.vertical = DegreesBetween(std::fabs(vertical.around->y()));
    axes.exchanged = horizontal.around && vertical.mean;
    return axes;
}

} // namespace tiltpole::quality
