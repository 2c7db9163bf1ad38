// SPDX-License-Identifier: MIT
#include "field/occupation/Verdict.h"

#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using Eigen::Vector3d;

namespace {

constexpr double kShortest = 2.0;        // occupation [s]
constexpr double kWidestSpacing = 0.12;  // of the attitudes that are kept [s]
constexpr double kLongestGap = 0.5;      // that two readings may bridge [s]
constexpr double kLatePart = 0.01;       // of the samples
constexpr double kMoves = 0.05;          // root mean square of positions that do move [m]
constexpr double kStill = 0.2;           // part of the way expected below which nothing moves
constexpr double kStepEvidence = 1.0;    // logarithm of the odds from which a step is named ...
constexpr double kLikelyEvidence = -2.5; // ... one that would do harm
constexpr double kHeightEvidence = 4.0;  // one that is mostly of the height
constexpr double kHarmfulStep = 0.018;   // in plan [m]
constexpr double kHarmfulDepth = 0.022;  // in all [m]
constexpr double kStepFirst = 2.2;       // by which a wrong length must be likelier ...
constexpr double kSwingEvidence = 10.0;  // ... and where the residuals jump
constexpr double kLeastStep = 0.010;     // [m]
constexpr double kGlideGain = 11.0;      // chi-square of a glide in plan that is one: 99.6 %
constexpr double kNamedGlide = 0.020;    // below it the tip may still be found to stand [m]
constexpr double kGlideExcluded = 2.0;   // of a stored tip, a glide of 30 mm [sigma]
constexpr double kSuddenStep = 0.018;    // jump of the residuals that is one [m]
constexpr double kLengthEvidence = 0.3;  // likewise of another length
constexpr double kLeastLength = 0.015;   // [m]
constexpr double kHarmfulLength = 0.05;  // error that a stored tip excludes [m] ...
constexpr double kExcluded = 2.33;       // ... with 99 % [sigma]
constexpr double kWorstVariance = 6.0;   // factor of the stated variances
constexpr double kWorstTilt = 4.0;       // mean force against the vertical [sigma]
// Mean force of a second against that of the window: a free hand reaches 0.12; gyros with the wrong
// axes or signs carry gravity along.
constexpr double kWildForce = 0.2;     // [g]
constexpr double kTwoAxes = 2.4477468; // 95 %, two degrees of freedom

void Set(OccupationEstimate& e, OccupationAdvice advice, OccupationReason reason)
{
    e.advice = advice;
    e.reason = reason;
}

double SpreadOf(const std::vector<EpochRow>& rows)
{
    Vector3d mean = Vector3d::Zero();
    double square = 0.0;
    const double n = static_cast<double>(rows.size());
    for (const EpochRow& row : rows)
        mean += row.epoch->position / n;
    for (const EpochRow& row : rows)
        square += (row.epoch->position - mean).head<2>().squaredNorm() / n;
    return std::sqrt(square);
}

// One of both hardly moves where the other does.
bool OneIsStill(OccupationEstimate& e, const Fitter& fitter, const OccupationSetup& setup)
{
    const double antenna = SpreadOf(fitter.Rows());
    const double expected = setup.poleLength * fitter.Result().turnSpread;
    if (expected > kMoves && antenna < kStill * expected) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::AntennaStill);
        return true;
    }
    if (antenna > kMoves && expected < kStill * antenna) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::GyrosStill);
        return true;
    }
    return false;
}

bool HasHarmfulGap(const Track& track)
{
    double longest = 0.0;
    for (const Gap& gap : track.Gaps())
        longest = std::max(longest, gap.length);
    return longest > kLongestGap || track.GapCount() > kGaps;
}

// The pole is interpolated between the attitudes that are kept: the wider they lie, the less it
// follows a rock.
double SpacingOf(const Track& track)
{
    const auto& nodes = track.Nodes();
    if (nodes.size() < 2) return 0.0;
    return (nodes.back().time - nodes.front().time) / static_cast<double>(nodes.size() - 1);
}

// Whether the antenna's errors that last for minutes reach so far: within half a minute they wander
// by themselves, in a shorter time by its root.
bool IsWander(const OccupationEstimate& e, const StepScore& step, const OccupationSetup& setup)
{
    constexpr double kSlow = 30.0;  // [s]
    constexpr double kFarOut = 4.5; // [sigma]
    const double sigmas =
        std::hypot(step.size.head<2>().norm() / std::max(1e-9, setup.sharedPlanSigma),
                   step.size.z() / std::max(1e-9, setup.sharedHeightSigma));
    return sigmas < kFarOut * std::sqrt(std::min(1.0, e.seconds / kSlow));
}

// A tip that glides evenly looks like biases of the gyros but for their size.
bool HasGlided(OccupationEstimate& e, const StepScore& glide, const OccupationSetup& setup)
{
    const double size = glide.size.head<2>().norm();
    if (!(glide.planGain > kGlideGain) || !(size > kNamedGlide) || IsWander(e, glide, setup))
        return false;
    e.tipStep = size;
    e.tipStepAt = glide.time;
    Set(e, OccupationAdvice::Refuse, OccupationReason::TipMoved);
    return true;
}

// A step of the tip and an error of the length: of two that explain the residuals the likelier one
// is named.
bool HasFault(OccupationEstimate& e, const Alternatives& alternatives, const OccupationSetup& setup)
{
    const Score& length = alternatives.length;
    const StepScore& step = alternatives.step;
    e.tipStep = step.size.norm();
    e.tipStepAt = step.time;
    e.lengthError = length.value;
    e.lengthSigma = length.sigma;
    const double plan = step.size.head<2>().norm();
    // Errors of the height that last for seconds look like steps of it.
    const bool sinks = plan < std::fabs(step.size.z());
    const bool harmful = plan > kHarmfulStep || e.tipStep > kHarmfulDepth;
    const double least = harmful ? kLikelyEvidence : sinks ? kHeightEvidence : kStepEvidence;
    const bool moved = !IsWander(e, step, setup) && step.evidence > least && e.tipStep > kLeastStep
                       && alternatives.leftByStep < kWorstVariance;
    const bool wrong = length.evidence > kLengthEvidence && std::fabs(length.value) > kLeastLength
                       && alternatives.leftByLength < kWorstVariance;
    const bool jumped = alternatives.jump.size > kSuddenStep;
    if (!moved && !wrong && !jumped) return HasGlided(e, alternatives.glide, setup);
    // Residuals of another length swing with a pole that is rocked, and look sudden.
    const bool swings = wrong && length.evidence > step.evidence + kSwingEvidence;
    const bool isStep =
        (jumped && !swings) || (moved && (!wrong || step.evidence > length.evidence - kStepFirst));
    Set(e, OccupationAdvice::Refuse,
        isStep ? OccupationReason::TipMoved : OccupationReason::WrongLength);
    return true;
}

// What is stored did not glide as far as a slip that must be named. Where the sensor does not move
// with the pole, its own motion hides what the vertical says of that.
void JudgeGlide(OccupationEstimate& e, const StepScore& glide)
{
    if (e.advice != OccupationAdvice::Store) return;
    const double size = glide.size.head<2>().norm();
    const bool seen = glide.planGain > kGlideGain && size > kLeastStep;
    const bool excluded =
        !(e.sensorHeight > 0.0) || glide.harmGain > kGlideExcluded * kGlideExcluded;
    if (!seen && excluded) return;
    e.tipStep = size;
    e.tipStepAt = glide.time;
    Set(e, OccupationAdvice::Move, OccupationReason::TipUnchecked);
}

// A slip just before the end has too few epochs after it to be named, and one of the height looks
// like what errors of the antenna make: what is nearer to one that must be named than to none is
// not stored yet.
void JudgeHiddenSteps(OccupationEstimate& e, const Alternatives& alternatives)
{
    constexpr double kNearer = 0.015; // in plan [m]
    constexpr double kSunk = 0.020;   // heights wander further [m]
    if (e.advice != OccupationAdvice::Store) return;
    const bool late = alternatives.late > kNearer;
    if (!late && !(alternatives.sunk > kSunk)) return;
    e.tipStep = late ? alternatives.late : alternatives.sunk;
    Set(e, OccupationAdvice::Move, OccupationReason::TipUnchecked);
}

// A track may fit a pole that hangs from its tip as well as one that stands.
bool Hangs(const Fitter& fitter)
{
    double up = 0.0;
    for (const EpochRow& row : fitter.Rows())
        up += row.pole.z();
    return up < 0.0;
}

bool Contradicts(const OccupationEstimate& e, const Fit& fit)
{
    const double tilt = fit.tilt.norm() / fit.tiltSigma;
    return fit.antennaMisfit / fit.freedom > kWorstVariance || tilt > kWorstTilt
           || 3 * e.doubtful > e.epochs;
}

} // namespace

double LengthBound(const OccupationEstimate& e)
{
    return std::fabs(e.lengthError) + kExcluded * e.lengthSigma;
}

void JudgeLength(OccupationEstimate& e)
{
    if (e.advice == OccupationAdvice::Store && !(LengthBound(e) < kHarmfulLength))
        Set(e, OccupationAdvice::Move, OccupationReason::LengthUnchecked);
}

void JudgeStep(OccupationEstimate& e, const Jump& jump, double bound)
{
    constexpr double kHarmful = 0.03; // [m]
    constexpr double kSudden = 0.013; // [m]
    if (e.advice != OccupationAdvice::Store) return;
    if (jump.size > kSudden)
        Set(e, OccupationAdvice::Refuse, OccupationReason::TipMoved);
    else if (!(bound < kHarmful))
        Set(e, OccupationAdvice::Move, OccupationReason::TipUnchecked);
}

bool RefusesInput(OccupationEstimate& e, const Track& track, const Counts& counts, bool gyros)
{
    const auto refuse = [&e](OccupationReason reason) {
        Set(e, OccupationAdvice::Refuse, reason);
        return true;
    };
    if (counts.late >= 2 && counts.late > kLatePart * (counts.samples + counts.epochs))
        return refuse(OccupationReason::TimeRanBack);
    if (counts.samples == 0) return refuse(OccupationReason::NoInertialSamples);
    if (counts.epochs == 0) return refuse(OccupationReason::NoAntennaEpochs);
    if (gyros && HasHarmfulGap(track)) return refuse(OccupationReason::Gap);
    if (gyros && SpacingOf(track) > kWidestSpacing) return refuse(OccupationReason::TooLong);
    int epochs = 0;
    for (const Epoch& epoch : track.Epochs())
        epochs += track.Covers(epoch.time) ? 1 : 0;
    if (epochs < kFewestEpochs || e.seconds < kShortest) {
        Set(e, OccupationAdvice::Move, OccupationReason::TooShort);
        return true;
    }
    return false;
}

void JudgeSize(OccupationEstimate& e, double heading, double vertical, const OccupationSetup& setup)
{
    constexpr int kFewestStored = 5; // epochs: of four, three may be on one side of a slip
    const bool few = e.epochs < kFewestStored;
    if (!few && e.ellipseMajor <= setup.tolerance && e.heightHalfInterval <= setup.tolerance) {
        Set(e, OccupationAdvice::Store, OccupationReason::Sure);
        return;
    }
    const double part = kTwoAxes * std::max(heading, vertical);
    OccupationReason reason = OccupationReason::AntennaUncertain;
    if (e.ellipseMajor > setup.tolerance && part > 0.5 * e.ellipseMajor)
        reason = heading >= vertical ? OccupationReason::HeadingUncertain
                                     : OccupationReason::VerticalUncertain;
    Set(e, OccupationAdvice::Move, reason);
}

void Judge(OccupationEstimate& e, const Fitter& fitter, const Alternatives& alternatives,
           const FitSetup& fitSetup, const OccupationSetup& setup)
{
    const Fit& fit = fitter.Result();
    if (OneIsStill(e, fitter, setup)) return;
    if (!fit.covariance.allFinite() || !e.hasTip) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::NoSolution);
        return;
    }
    if (Hangs(fitter)) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::SensorsContradict);
        return;
    }
    const bool faulty = HasFault(e, alternatives, setup);
    if (fitSetup.seenMotion > kWildForce || (!faulty && Contradicts(e, fit))) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::SensorsContradict);
        return;
    }
    if (faulty) return;
    if (!fit.converged) {
        Set(e, OccupationAdvice::Refuse, OccupationReason::NoSolution);
        return;
    }
    const double lean = std::sin(survey::Deg2Rad(e.lean));
    JudgeSize(e, setup.poleLength * lean * survey::Deg2Rad(e.headingSigma),
              setup.poleLength * fit.tiltSigma, setup);
    JudgeLength(e);
    JudgeGlide(e, alternatives.glide);
    JudgeHiddenSteps(e, alternatives);
}

} // namespace tiltpole::field
