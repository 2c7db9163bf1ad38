// SPDX-License-Identifier: MIT
#include "field/tip/Covariance.h"

#include "survey/Angle.h"
#include "survey/SensorAxes.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using ::field::Covariance3;
using survey::Point3;

namespace {

constexpr double kAngleStep = 0.05;  // of the differences [degrees]
constexpr double kLengthStep = 0.05; // [m]

// Adds v·vᵀ·sigma².
void Add(Covariance3& c, const Point3& v, double sigma)
{
    const Point3 s = sigma * v;
    c.nn += s.x * s.x;
    c.ne += s.x * s.y;
    c.ee += s.y * s.y;
    c.nh += s.x * s.z;
    c.eh += s.y * s.z;
    c.hh += s.z * s.z;
}

} // namespace

TipErrors ErrorsOf(const ::field::Setup& setup, const ::field::Field& model, double clockSigma,
                   const Point3& velocity)
{
    const bool byModel = setup.north == ::field::NorthSource::Model;
    const double declination = byModel ? model.declinationSigma : 0.0;
    return {setup.tiltSigma, std::hypot(setup.headingSigma, declination), setup.lengthSigma,
            std::hypot(setup.delaySigma, clockSigma), velocity};
}

Covariance3 TipCovariance(const TipSolver& solver, const ::field::Tip& tip, const TipErrors& errors)
{
    const auto slope = [&](double PoseChange::*of, double step) {
        PoseChange up;
        PoseChange down;
        up.*of = step;
        down.*of = -step;
        return (0.5 / step)
               * (solver.Step(tip.pose, tip.declination, up)
                  - solver.Step(tip.pose, tip.declination, down));
    };
    Covariance3 c = tip.epoch.sigma;
    Add(c, slope(&PoseChange::pitch, kAngleStep), errors.tilt);
    Add(c, slope(&PoseChange::roll, kAngleStep), errors.tilt);
    Add(c, slope(&PoseChange::heading, kAngleStep), errors.heading);
    Add(c, slope(&PoseChange::length, kLengthStep), errors.length);
    Add(c, errors.velocity, errors.time);

    const ::field::Setup& setup = solver.GetSetup();
    const ModelSpread model =
        ModelSpreadOf(setup.sensorType, setup.poleLength + setup.phaseCenter, tip.tilt);
    Add(c, {1.0, 0.0, 0.0}, model.plan);
    Add(c, {0.0, 1.0, 0.0}, model.plan);
    Add(c, {0.0, 0.0, 1.0}, model.height);
    return c;
}

ModelSpread ModelSpreadOf(int sensorType, double length, double lean)
{
    if (survey::AxesOf(sensorType) != survey::SensorAxes::ForwardLeftUp) return {};
    constexpr double kPlan = 0.08838834764831845;   // 1/(8·√2)
    constexpr double kHeight = 0.07654655446197431; // √(3/512)
    const double s = std::sin(survey::Deg2Rad(lean));
    const double s2 = s * s;
    return {kPlan * length * s2 * s * (1.0 + s2),
            kHeight * length * s2 * s2 * (1.0 + 4.0 / 3.0 * s2)};
}

PlanEllipse EllipseOf(const Covariance3& covariance)
{
    const auto& [nn, ne, ee, nh, eh, hh] = covariance;
    const double middle = 0.5 * (nn + ee);
    const double half = std::hypot(0.5 * (nn - ee), ne);
    const double orientation = 0.5 * survey::Rad2Deg(std::atan2(2.0 * ne, nn - ee));
    const double positive = orientation < 0.0 ? orientation + 180.0 : orientation;
    return {std::sqrt(middle + half), std::sqrt(std::max(0.0, middle - half)),
            positive < 180.0 ? positive : 0.0};
}

} // namespace tiltpole::field
