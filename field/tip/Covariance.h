// SPDX-License-Identifier: MIT
//
// How uncertain a tip is.
//
//   C_tip = C_antenna + J·diag(s_tilt², s_tilt², s_heading², s_length²)·Jᵀ + w·wᵀ·s_time² + C_model
//
// J: central differences of the step from antenna to tip by pitch, roll, heading and length; a
// change of pitch or roll turns a magnetic heading, too, through the dip. w: velocity of the
// antenna relative to the tip. C_model: what the solution for the sensor type misses of a straight
// pole. Derivation and the form for checks: docs/live-formulas.md, "Covariance".
#pragma once

#include "field/Bridge.h"
#include "field/tip/TipSolver.h"
#include "survey/Point.h"

namespace tiltpole::field {

/// Standard deviations of what leads from the antenna to the tip.
struct TipErrors
{
    double tilt = 0.0;         // of pitch and roll each [degrees]
    double heading = 0.0;      // declination included [degrees]
    double length = 0.0;       // [m]
    double time = 0.0;         // of the pose against the antenna [s]
    survey::Point3 velocity{}; // of the antenna relative to the tip, north, east, up [m/s]
};

/// Those of a setup. The declination's sigma joins that of the heading unless the file holds the
/// north.
/// @param velocity  see above; time sigma: setup.delaySigma joined with `clockSigma` [s], of the clocks
TipErrors ErrorsOf(const ::field::Setup& setup, const ::field::Field& model, double clockSigma,
                   const survey::Point3& velocity);

/// The covariance of `tip`, a solution of `solver` whose epoch holds that of the antenna.
::field::Covariance3 TipCovariance(const TipSolver& solver, const ::field::Tip& tip,
                                   const TipErrors& errors);

/// Standard deviations of what the solution for a sensor type leaves on a straight pole.
struct ModelSpread
{
    double plan = 0.0;   // of each coordinate [m]
    double height = 0.0; // [m]
};

/// For a pole of this length [m] and lean [degrees] towards any side, of a sensor whose roll is a
/// turn about its forward axis, the worse of the two for dips to 70 degrees. 0 for types other than
/// 1.
ModelSpread ModelSpreadOf(int sensorType, double length, double lean);

/// One-sigma ellipse of the plan.
struct PlanEllipse
{
    double major = 0.0; // semi-axes [m]
    double minor = 0.0;
    double orientation =
        0.0; // of the major axis from true north towards east [degrees], in [0, 180)
};

PlanEllipse EllipseOf(const ::field::Covariance3& covariance);

} // namespace tiltpole::field
