// SPDX-License-Identifier: MIT
#include "quality/calibration/HiddenError.h"

#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr double kUnseenOffset = 0.15;  // of pitch and roll that nothing shows [degrees]
constexpr double kOfDip = 0.6;          // heading error by degree of difference in dip, level field
constexpr double kUnseenByGyros = 0.12; // of pitch and roll, each, beside what gyros see [degrees]
constexpr double kOfSeen = 1.2;         // by heading error that gyros show
constexpr double kOfStepKnown = 0.5;    // of how well gyros know a step: what it may hide
// Apparent tilt of turns made by hand, beyond that of simulated ones: about 0.02 g outward
// [degrees].
constexpr double kHandSwing = 0.86;
// Noise and disagreement stand for errors of the tilt as well, where nothing else shows those.
constexpr double kOfDisagreement = 0.7;
constexpr double kOfDisagreementByGyros = 0.5;
constexpr double kOfNoise = 40.0; // degrees by noise in parts of the field
constexpr double kOfNoiseByGyros = 10.0;
constexpr double kSteepest = 0.98; // sine of the elevation, 78.5 degrees

double DegreesOf(double sine)
{
    return survey::ArcSine(sine) * survey::kDegreesPerRadian;
}

double SineOf(const SphereFit& fit)
{
    return std::min(std::fabs(fit.elevationHorizontal), kSteepest);
}

// An offset of pitch or roll turns the field out of the level by its angle: headings are off by
// tan(dip) times it, RMS over all headings 1/√2 of that.
// @param squares  of the errors of pitch and roll, their sum
// @param unseen   of either
double HeadingErrorOfTilt(const SphereFit& fit, double squares, double unseen)
{
    const double sine = SineOf(fit);
    return sine / std::sqrt(1.0 - sine * sine) * std::sqrt(squares / 2.0 + unseen * unseen);
}

void AddTilt(const SphereFit& fit, const TurnEvidence& evidence, Magnetometer which,
             ::quality::HiddenError& hidden)
{
    const TiltEvidence& tilt = evidence.tilt;
    const double swing = tilt.swing * tilt.swing;
    // That of a swing is gone when the pole is used; the little of turns made by hand, which pitch
    // and roll from a filter hardly follow, is left to good.
    const double swingInUse = std::max(0.0, swing - kHandSwing * kHandSwing);
    if (tilt.gyros) {
        const TiltEffect& effect = evidence.byGyros[which == Magnetometer::A ? 0 : 1];
        const ::quality::TiltError& step = tilt.gyros->step;
        const double unseen = std::max(
            kUnseenByGyros, kOfStepKnown * std::max(step.pitchDeviation, step.rollDeviation));
        const double inUse = HeadingErrorOfTilt(fit, swingInUse, unseen);
        const double all = HeadingErrorOfTilt(fit, swing, unseen);
        hidden.tiltInUse = std::hypot(kOfSeen * effect.inUse, inUse);
        hidden.tilt = std::hypot(kOfSeen * std::max(effect.inUse, effect.trueTilt), all);
        return;
    }
    const double drift = tilt.drift.Excess();
    hidden.tiltInUse = HeadingErrorOfTilt(fit, drift + swingInUse, kUnseenOffset);
    hidden.tilt = HeadingErrorOfTilt(fit, tilt.offset.Excess() + drift + swing, kUnseenOffset);
}

} // namespace

::quality::HiddenError HiddenErrorOf(const SphereFit& fit, const TurnEvidence& evidence,
                                     Magnetometer which)
{
    const double level = std::sqrt(1.0 - SineOf(fit) * SineOf(fit));
    ::quality::HiddenError hidden;
    hidden.dipDifference =
        std::fabs(DegreesOf(fit.elevationVertical) - DegreesOf(fit.elevationHorizontal));
    AddTilt(fit, evidence, which, hidden);
    // Where gyros have seen no step, a dip that differs is one of the field and does no harm, or
    // one of gains.
    const bool gyros = evidence.tilt.gyros.has_value();
    const double common = gyros ? evidence.gains.alike : kOfDip * hidden.dipDifference / level;
    hidden.gains = evidence.gains.apart;
    hidden.turns = std::hypot(common, hidden.gains);
    hidden.noise = std::hypot(
        (gyros ? kOfNoiseByGyros : kOfNoise) * std::max(fit.sphereSpread, fit.elevationSpread),
        (gyros ? kOfDisagreementByGyros : kOfDisagreement) * evidence.disagreement);
    return hidden;
}

} // namespace tiltpole::quality
