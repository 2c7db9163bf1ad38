// SPDX-License-Identifier: MIT
//
// What the model of an occupation leaves out, tested at its solution: another length of the pole, a
// step of the tip, a delay.
//
// An added unknown c with the columns C has the normal equations (CᵀWC − BᵀN⁻¹B) c = −CᵀWv, B =
// AᵀWC. Its solution takes its gain off the misfit. Derivation: docs/occupation.md, "What is
// detected".
#pragma once

#include "field/occupation/Fit.h"
#include "field/occupation/Jump.h"
#include "field/occupation/Trend.h"

#include <limits>

namespace tiltpole::field {

/// An unknown that the model lacks.
struct Score
{
    double value = 0.0;
    double sigma = 0.0;    // of the value
    double gain = 0.0;     // chi-square of one degree of freedom
    double evidence = 0.0; // logarithm of how much more likely it makes the observations
};

Score LengthScore(const Fitter& fitter); // of the pole's length [m]
Score DelayScore(const Fitter& fitter);  // of the delay [s]

/// A step of the tip between two epochs.
struct StepScore
{
    Eigen::Vector3d size = Eigen::Vector3d::Zero(); // [m]
    double gain = 0.0;                              // chi-square of three degrees of freedom
    double time = 0.0;     // of the epoch after the step that explains most
    double evidence = 0.0; // of a step at some time, see Score
    double planGain =
        0.0; // chi-square of its plan part, two degrees of freedom, where the antenna wanders
    // Likewise of what parts it from the nearest one of 30 mm; where it is not asked for, none
    // comes near.
    double harmGain = std::numeric_limits<double>::infinity();
};

/// The steps of the tip at all times.
struct TipSteps
{
    StepScore best;    // explains most
    double late = 0.0; // size in plan of the largest one shortly before the end [m]
    double sunk = 0.0; // size of the largest one of the height alone, but near the ends [m]
};

TipSteps StepsOfTip(const Fitter& fitter);

/// The same of a tip that glides from the first epoch, its time, to the last, evenly or from rest
/// to rest: of both the one that explains more in plan, and the smaller harmGain.
/// @param trend  what tells a glide from biases of the gyros, where known
StepScore GlideOfTip(const Fitter& fitter, const WithTrend& trend);

struct Alternatives
{
    Score length;
    StepScore step;
    StepScore glide; // none where the occupation is longer than the antenna's own wander
    Jump jump;
    double late = 0.0; // see TipSteps [m]
    double sunk = 0.0; // likewise [m]
    double leftByLength =
        0.0;                 ///< of the antenna's misfit per degree of freedom, by stated variances
    double leftByStep = 0.0; ///< likewise
};

/// The variance that lets the region hold where the tip stood at first and at last if it glided:
/// none where no glide is seen (90 %). North and west [m²].
Eigen::Matrix2d SpreadOfGlide(const StepScore& glide);

/// Both at a solution whose antenna has the variance that residuals of a second leave; of these,
/// what a fault explains is taken off where that is much.
/// @param fitter  in: run with `setup`; out: run with that variance
Alternatives AlternativesOf(Fitter& fitter, const Track& track, const FitSetup& setup);

} // namespace tiltpole::field
