// SPDX-License-Identifier: MIT
#include "field/occupation/Report.h"

#include "field/occupation/Region.h"
#include "field/occupation/Rotations.h"
#include "field/occupation/Verdict.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;
using survey::Deg2Rad;
using survey::Rad2Deg;

namespace {

// Of the heading at the last sample: that of the first one, and what the gyros' bias made of it
// since.
double HeadingVariance(const Fit& fit, const Matrix3d& turning)
{
    const int heading = kTurnAt + 2;
    const Vector3d byBias = -(fit.state.turn.toRotationMatrix() * turning).row(2).transpose();
    const Vector3d mixed = fit.covariance.block<3, 1>(kBiasAt, heading);
    const Matrix3d bias = fit.covariance.block<3, 3>(kBiasAt, kBiasAt);
    return fit.covariance(heading, heading) + 2.0 * byBias.dot(mixed) + byBias.dot(bias * byBias);
}

} // namespace

double InCircle(double degrees)
{
    const double turned = survey::AdjustedAzimuth(std::fmod(degrees, 360.0));
    return turned >= 360.0 ? 0.0 : turned;
}

void SetResiduals(OccupationEstimate& e, const Fitter& fitter)
{
    Vector3d square = Vector3d::Zero();
    for (const auto& row : fitter.Rows()) {
        square += row.residual.cwiseAbs2();
        e.doubtful += row.doubt < 0.5 ? 1 : 0;
    }
    e.epochs = static_cast<int>(fitter.Rows().size());
    square /= e.epochs;
    e.planResidual = std::sqrt(0.5 * (square.x() + square.y()));
    e.heightResidual = std::sqrt(square.z());
    e.varianceFactor = fitter.Result().antennaMisfit / fitter.Result().freedom;
}

void SetAttitude(OccupationEstimate& e, const Fit& fit, const Track& track, double factor)
{
    const auto pose = track.At(track.End().time);
    const Vector3d drift = -pose.turning * fit.state.bias;
    Matrix3d hidden = Matrix3d::Identity(); // turns in gaps, as in AntennaPrediction
    for (std::size_t i = 0; i < static_cast<std::size_t>(pose.gaps); ++i)
        hidden = Exp(fit.state.gaps[i]).toRotationMatrix() * hidden;
    const Matrix3d attitude =
        (fit.state.turn * Exp(drift)).toRotationMatrix() * hidden * pose.attitude;
    e.heading = InCircle(Rad2Deg(std::atan2(-attitude(1, 0), attitude(0, 0))));
    e.headingSigma = Rad2Deg(std::sqrt(factor * HeadingVariance(fit, pose.turning)));
    e.lean = Rad2Deg(std::acos(survey::ClampToUnit(attitude(2, 2))));
}

void SetWithoutGyros(OccupationEstimate& e, const GyroFreeFit& fit, const OccupationSetup& setup)
{
    const double factor = PooledFactor(fit.misfit, fit.freedom);
    const double headingSigma = std::sqrt(factor * fit.cofactor(3, 3));
    e.turnSpread = Rad2Deg(fit.spread);
    e.planResidual = std::sqrt(0.5 * (fit.square.x() + fit.square.y()));
    e.heightResidual = std::sqrt(fit.square.z());
    e.varianceFactor = fit.misfit / fit.freedom;
    SetRegion(e, fit.cofactor.topLeftCorner<3, 3>(), factor, setup);
    e.lean = Rad2Deg(std::acos(survey::ClampToUnit(fit.lean.z())));
    e.headingSigma = Rad2Deg(headingSigma);
    e.magneticDifference = Rad2Deg(fit.offset);
    JudgeSize(e, setup.poleLength * std::sin(Deg2Rad(e.lean)) * headingSigma,
              setup.poleLength * std::sqrt(fit.cofactor(4, 4)), setup);
    // A pole that hardly moves has its heading from the magnetometer alone.
    constexpr double kNorthMoved =
        3.0 / survey::kDegreesPerRadian; // directions that show north [rad]
    if (e.advice == OccupationAdvice::Store && fit.spread < kNorthMoved) {
        e.advice = OccupationAdvice::Move;
        e.reason = OccupationReason::HeadingUncertain;
    }
    e.lengthError = fit.length.value;
    // Pitch and roll that lag look like another length: it is asked for, never named, and residuals
    // that are small say nothing of it.
    e.lengthSigma = std::sqrt(std::max(1.0, factor)) * fit.length.sigma;
    JudgeLength(e);
    e.tipStep = fit.jump.size > 0.0 ? fit.jump.size : fit.step;
    e.tipStepAt = fit.jump.size > 0.0 ? fit.jump.time : fit.stepAt;
    JudgeStep(e, fit.jump, fit.stepBound);
}

} // namespace tiltpole::field
