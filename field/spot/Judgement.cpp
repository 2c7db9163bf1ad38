// SPDX-License-Identifier: MIT
#include "field/spot/Judgement.h"

#include "field/occupation/Region.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using ::field::OccupationSetup;
using ::field::SpotMagnetometer;
using ::field::SpotReason;
using ::field::SpotResult;
using survey::Rad2Deg;

namespace {

constexpr double kShortest = 10.0; // [s]
constexpr double kLongest = 35.0;  // then gyros have drifted too far [s]
constexpr int kFewestEpochs = 10;
constexpr double kLongestGap = 0.15; // [s]
constexpr double kLatePart = 0.01;   // of samples and epochs

constexpr double kEnoughTurn = 270.0;  // about the pole's axis [degrees]
constexpr double kEnoughLean = 6.0;    // root mean square of the directions [degrees]
constexpr double kAxisKnown = 0.15;    // sigma [degrees]
constexpr double kForceKnown = 0.0026; // of x and y: 0.15 degrees [g]
constexpr double kIronKnown = 0.006;   // of hard iron, relative to the field

constexpr double kStepGain = 25.0;   // chi-square, as for an occupation
constexpr double kLeastStep = 0.012; // [m]
constexpr double kLengthSigmas = 3.0;
constexpr double kLeastLength = 0.015; // [m]
constexpr double kMostLength = 0.25;   // error that somebody could have entered [lengths]
constexpr double kWorstVariance = 6.0; // factor of the antenna's variances
constexpr double kWildForce = 0.05;    // residual of a second's mean force [g]
constexpr double kRoughField = 0.02;   // residual of the readings, relative to the field ...
constexpr double kSuspectField = 0.01; // ... and where hard iron is not known therefore
constexpr double kDipsDiffer = 10.0;   // of A and B: one of them is reversed [degrees]

bool IronIsKnown(const SpotMagnetometer& m)
{
    const auto& s = m.hardIron.sigma;
    return !m.found || std::max({s.x, s.y, s.z}) < kIronKnown * m.strength;
}

bool IsRough(const SpotMagnetometer& m)
{
    const double limit = IronIsKnown(m) ? kRoughField : kSuspectField;
    return m.found && !(m.residual < limit * m.strength);
}

SpotReason ReasonFor(const SpotResult& result, const MotionFit& motion, double poleLength)
{
    const double left = std::max(1.0, motion.AntennaMisfit() / motion.Freedom());
    const auto step = motion.StepOfTip();
    const double length = result.lengthError / result.lengthSigma;
    const bool wrong =
        std::fabs(length) > kLengthSigmas && std::fabs(result.lengthError) > kLeastLength;
    const bool moved = step.gain / left > kStepGain && step.size > kLeastStep;
    if (std::fabs(result.lengthError) > kMostLength * poleLength)
        return SpotReason::SensorsContradict;
    if (wrong && (!moved || length * length > step.gain / left)) return SpotReason::WrongLength;
    if (moved) return SpotReason::TipMoved;
    if (left > kWorstVariance || motion.ForceSigma() > kWildForce
        || 3 * motion.Doubtful() > motion.Epochs())
        return SpotReason::SensorsContradict;
    if (result.turned < kEnoughTurn) return SpotReason::TurnMore;
    if (result.leanSpread < kEnoughLean) return SpotReason::LeanFurther;
    if (result.a.stuck || result.b.stuck) return SpotReason::MagnetometerStuck;
    if (IsRough(result.a) || IsRough(result.b)) return SpotReason::FieldDisturbed;
    // A reversed field is constant, too, and only turns the heading bias by half a turn.
    if (result.a.found && result.b.found && std::fabs(result.a.dip - result.b.dip) > kDipsDiffer)
        return SpotReason::SensorsContradict;
    const auto& acceleration = result.accelerometerBias.sigma;
    const bool forceIsKnown = std::max(acceleration.x, acceleration.y) < kForceKnown;
    const bool known = result.axisSigma < kAxisKnown && forceIsKnown && IronIsKnown(result.a)
                       && IronIsKnown(result.b);
    return known ? SpotReason::Usable : SpotReason::GoOn;
}

} // namespace

bool RefusesInput(SpotResult& result, const std::vector<SpotReading>& readings,
                  const SpotCounts& counts)
{
    const auto refuse = [&result](SpotReason reason) {
        result.reason = reason;
        return true;
    };
    if (counts.late >= 2 && counts.late > kLatePart * (result.samples + result.epochs))
        return refuse(SpotReason::TimeRanBack);
    if (readings.empty()) return refuse(SpotReason::NoInertialSamples);
    if (result.epochs == 0) return refuse(SpotReason::NoAntennaEpochs);
    if (counts.tooMany || result.seconds > kLongest) return refuse(SpotReason::TooLong);
    for (std::size_t i = 1; i < readings.size(); ++i)
        if (readings[i].time - readings[i - 1].time > kLongestGap) return refuse(SpotReason::Gap);
    if (result.epochs < kFewestEpochs || result.seconds < kShortest)
        return refuse(SpotReason::TooShort);
    return false;
}

void Judge(SpotResult& result, const MotionFit& motion, double poleLength)
{
    result.reason = ReasonFor(result, motion, poleLength);
}

OccupationSetup PriorsBy(const OccupationSetup& setup, const SpotResult& result)
{
    constexpr double kAxisKeeps = 0.03; // a clamp gives [degrees]
    constexpr double kVerticalKeeps =
        0.05;                             // accelerometers, until the temperature changes [degrees]
    constexpr double kGyroKeeps = 0.01;   // [degrees/s]
    constexpr double kHeading = 1.5;      // what surroundings do to a calibrated compass [degrees]
    constexpr double kDelayKeeps = 0.005; // between clocks of one equipment [s]
    OccupationSetup priors = setup;
    priors.axisX = result.axisX;
    priors.axisY = result.axisY;
    priors.axisSigma = std::hypot(result.axisSigma, kAxisKeeps);
    priors.accelerometerBias = result.accelerometerBias.value;
    const auto& force = result.accelerometerBias.sigma;
    priors.accelerometerSigma = std::hypot(Rad2Deg(std::max(force.x, force.y)), kVerticalKeeps);
    priors.gyroBias = result.gyroBias.value;
    const auto& gyro = result.gyroBias.sigma;
    priors.gyroBiasSigma = std::hypot(std::max({gyro.x, gyro.y, gyro.z}), kGyroKeeps);
    if (!(setup.sensorHeight > 0.0)) priors.sensorHeight = result.sensorHeight;
    if (setup.delaySigma > 0.0 && setup.delay == 0.0 && result.delaySigma > 0.0) {
        priors.delay = result.delay;
        priors.delaySigma = std::hypot(result.delaySigma, kDelayKeeps);
    }
    if (result.a.found) {
        priors.magneticBias = result.a.bias;
        priors.headingSigma = std::hypot(result.a.biasSigma, kHeading);
    }
    return priors;
}

} // namespace tiltpole::field
