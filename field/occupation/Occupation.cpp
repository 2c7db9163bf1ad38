// SPDX-License-Identifier: MIT
#include "field/Occupation.h"

#include "field/occupation/Alternatives.h"
#include "field/occupation/Axes.h"
#include "field/occupation/Fit.h"
#include "field/occupation/GyroFree.h"
#include "field/occupation/LastingErrors.h"
#include "field/occupation/Region.h"
#include "field/occupation/Report.h"
#include "field/occupation/Verdict.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace field {

namespace survey = tiltpole::survey;

using Eigen::Matrix3d;
using Eigen::Quaterniond;
using Eigen::Vector3d;
using survey::Deg2Rad;
using survey::Rad2Deg;
using tiltpole::field::Alternatives;
using tiltpole::field::Backward;
using tiltpole::field::Counts;
using tiltpole::field::Epoch;
using tiltpole::field::Fit;
using tiltpole::field::FitSetup;
using tiltpole::field::Fitter;
using tiltpole::field::Forward;
using tiltpole::field::GyroFreeFit;
using tiltpole::field::GyroFreeFitter;
using tiltpole::field::OwnMotion;
using tiltpole::field::Reading6;
using tiltpole::field::Track;
using tiltpole::field::WorldOf;

namespace {

constexpr std::size_t kNodes = 2048;
constexpr std::size_t kEpochs = 128;
constexpr double kDelayGain = 9.0;   // chi-square from which a delay is asked for
constexpr double kMovedGain = 20.0;  // by which a step of the tip must explain more
constexpr double kDelayKnown = 0.01; // [s]
// Of the stated variances of the antenna; what some seconds share their residuals do not show.
constexpr double kLeastFactor = 0.5;
// Of a hand, too slow for windows of a second to show it; as mean acceleration of a second.
constexpr double kSlowMotion = 0.04;   // [g]
constexpr double kUnseenMotion = 0.12; // likewise, of a hand that there is no time to watch [g]
constexpr int kFewestWindows = 5;      // for a word on sensors that do not belong to the track
constexpr double kPlanted = 0.7;       // explained part of the accelerations from which they fit
constexpr double kLeastSwing = 0.002;  // acceleration from which that can be seen [g]

SensorVector Minus(const SensorVector& a, const SensorVector& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

bool IsFinite(const InertialSample& s)
{
    return std::isfinite(s.seconds) && std::isfinite(s.rate.x + s.rate.y + s.rate.z)
           && std::isfinite(s.acceleration.x + s.acceleration.y + s.acceleration.z)
           && std::isfinite(s.magnetic.x + s.magnetic.y + s.magnetic.z);
}

bool IsFinite(const AntennaEpoch& e)
{
    return std::isfinite(e.seconds) && std::isfinite(e.position.x + e.position.y + e.position.h);
}

// Level by the first accelerations; the fit finds the rest.
Quaterniond FirstGuess(const Vector3d& force)
{
    return force.norm() > 0.1 ? tiltpole::field::Leveling(force) : Quaterniond::Identity();
}

Tilt TiltOf(const InertialSample& sample, const OccupationSetup& setup)
{
    Tilt tilt = sample.tilt;
    tilt.sensorType = setup.sensorType;
    return tilt;
}

// Sets the pole by pitch, roll and magnetic heading where these are known and believed.
void SetLean(Epoch& epoch, const InertialSample& sample, const OccupationSetup& setup)
{
    const Tilt tilt = TiltOf(sample, setup);
    const SensorVector& m = sample.magnetic;
    if (sample.disturbed || (m.x == 0.0 && m.y == 0.0 && m.z == 0.0)) return;
    const double heading = Deg2Rad(MagneticHeading(tilt, m) - setup.magneticBias);
    const LevelAxes level = LevelAxesOf(tilt);
    Matrix3d attitude; // sensor to level frame
    attitude << Forward(level.forward, tilt.sensorType).transpose(),
        Forward(level.left, tilt.sensorType).transpose(),
        Forward(level.up, tilt.sensorType).transpose();
    attitude = Eigen::AngleAxisd(-heading, Vector3d::UnitZ()).toRotationMatrix() * attitude;
    if (!attitude.allFinite()) return;
    epoch.lean = attitude.col(2);
    epoch.forward = attitude.col(0);
}

// Part of the track's time in which samples were disturbed.
double DisturbedPartOf(const Track& track)
{
    if (track.Nodes().empty()) return 0.0;
    const double span = track.End().time - track.Nodes().front().time;
    return span > 0.0 ? std::fmin(1.0, track.DisturbedTime() / span) : 0.0;
}

FitSetup FitSetupOf(const OccupationSetup& setup, const Track& track)
{
    FitSetup fit;
    fit.poleLength = setup.poleLength;
    fit.planSigma = setup.planSigma;
    fit.heightSigma = setup.heightSigma;
    fit.biasSigma = Deg2Rad(setup.gyroBiasSigma);
    fit.axisSigma = Deg2Rad(setup.axisSigma);
    const SensorVector axis{std::tan(Deg2Rad(setup.axisX)), std::tan(Deg2Rad(setup.axisY)), 0.0};
    fit.axis = Forward(axis, setup.sensorType).head<2>();
    fit.forceSigma = Deg2Rad(setup.accelerometerSigma);
    fit.magnetic = setup.useMagnetometer && track.End().magnetic.squaredNorm() > 0.0;
    fit.north = Deg2Rad(setup.magneticBias);
    fit.headingSigma = Deg2Rad(setup.headingSigma);
    fit.headingShare = 1.0 - DisturbedPartOf(track);
    return fit;
}

void SetOwnMotion(FitSetup& fit, OccupationEstimate& e, const OwnMotion& motion,
                  const OccupationSetup& setup)
{
    e.ownMotionFit = motion.lever > 0.0 ? motion.explained : 0.0;
    // The windows are few: a Student's t of so many degrees of freedom has more than their
    // variance.
    const double freedom = 2.0 * std::max(1.0, motion.windows - 2.0);
    const double few = std::sqrt((freedom + 2.0) / freedom);
    const double all = motion.windows < 3 ? kUnseenMotion : motion.all;
    fit.seenMotion = motion.windows < kFewestWindows ? 0.0 : all;
    fit.ownMotion = std::hypot(kSlowMotion, few * all);
    const bool fits = motion.explained > kPlanted && motion.swing > kLeastSwing
                      && motion.lever > 0.0 && motion.lever < 1.2 * setup.poleLength;
    if (!fits) return;
    fit.lever = setup.sensorHeight > 0.0 ? setup.sensorHeight : motion.lever;
    // What is left beside the motion of that height, which need not be the height that fits best.
    const double off = (fit.lever - motion.lever) * motion.swing;
    fit.seenMotion = std::hypot(motion.rest, off);
    fit.ownMotion = few * fit.seenMotion;
    e.sensorHeight = fit.lever;
}

double RegionFactorOf(const Fit& fit)
{
    return std::max(1.0, tiltpole::field::PooledFactor(fit.antennaMisfit, fit.freedom));
}

bool AsksForDelay(const Fitter& fitter)
{
    const auto delay = tiltpole::field::DelayScore(fitter);
    const bool moved = tiltpole::field::StepsOfTip(fitter).best.gain > delay.gain + kMovedGain;
    return delay.gain > kDelayGain && delay.sigma < kDelayKnown && !moved;
}

} // namespace

struct Occupation::Memory
{
    OccupationSetup setup;
    Track track{kNodes, kEpochs};
    Fitter fitter{kEpochs};
    GyroFreeFitter gyroFree{kEpochs};
    Counts counts;
    InertialSample last;
    double lastEpoch = -std::numeric_limits<double>::infinity();
    xyhCoordinate origin;

    explicit Memory(const OccupationSetup& given) : setup(given) {}

    void SetCounts(OccupationEstimate& e) const;
    xyhCoordinate PointOf(const Vector3d& world) const;
    struct Solution
    {
        FitSetup setup;
        Alternatives alternatives;
    };
    Solution Solve(OccupationEstimate& e);
};

void Occupation::Memory::SetCounts(OccupationEstimate& e) const
{
    e.poleLength = setup.poleLength;
    e.rejected = counts.late + counts.notFinite;
    e.gaps = track.GapCount();
    e.seconds = counts.samples > 0 ? track.End().time - track.Nodes().front().time : 0.0;
    e.disturbedPart = DisturbedPartOf(track);
    e.magneticDifference = std::numeric_limits<double>::quiet_NaN();
}

xyhCoordinate Occupation::Memory::PointOf(const Vector3d& world) const
{
    return {origin.x + world.x(), origin.y - world.y(), origin.h + world.z()};
}

// A delay that the residuals ask for becomes an unknown. Residuals below what is stated make the
// antenna better than stated; above it, all variances grow (RegionFactorOf).
Occupation::Memory::Solution Occupation::Memory::Solve(OccupationEstimate& e)
{
    Solution solution;
    FitSetup& fit = solution.setup;
    fit = FitSetupOf(setup, track);
    SetOwnMotion(fit, e, OwnMotionOf(track), setup);
    fitter.Run(track, fit);
    if (setup.delaySigma > 0.0 && AsksForDelay(fitter)) {
        fit.delaySigma = setup.delaySigma;
        fitter.Run(track, fit);
    }
    const Fit& result = fitter.Result();
    const double factor = tiltpole::field::PooledFactor(result.antennaMisfit, result.freedom);
    solution.alternatives = tiltpole::field::AlternativesOf(fitter, track, fit);
    fit.antennaFactor = std::clamp(factor, kLeastFactor, 1.0);
    fitter.Run(track, fit);
    return solution;
}

Occupation::Occupation(const OccupationSetup& setup) : m_memory(std::make_unique<Memory>(setup)) {}
Occupation::~Occupation() = default;
Occupation::Occupation(Occupation&&) noexcept = default;
Occupation& Occupation::operator=(Occupation&&) noexcept = default;

void Occupation::Clear()
{
    Memory& memory = *m_memory;
    memory.track.Clear();
    memory.counts = {};
    memory.lastEpoch = -std::numeric_limits<double>::infinity();
}

bool Occupation::Add(const InertialSample& sample)
{
    Memory& memory = *m_memory;
    if (!IsFinite(sample)) {
        ++memory.counts.notFinite;
        return false;
    }
    if (memory.counts.samples > 0 && sample.seconds <= memory.last.seconds) {
        ++memory.counts.late;
        return false;
    }
    ++memory.counts.samples;
    memory.last = sample;
    const int type = memory.setup.sensorType;
    Reading6 reading;
    reading.time = sample.seconds;
    reading.rate =
        Forward(Minus(sample.rate, memory.setup.gyroBias), type) / survey::kDegreesPerRadian;
    reading.force = Forward(Minus(sample.acceleration, memory.setup.accelerometerBias), type);
    reading.magnetic = Forward(sample.magnetic, type);
    reading.disturbed = sample.disturbed;
    memory.track.Add(reading, FirstGuess(reading.force));
    return true;
}

bool Occupation::Add(const AntennaEpoch& epoch)
{
    Memory& memory = *m_memory;
    if (!IsFinite(epoch)) {
        ++memory.counts.notFinite;
        return false;
    }
    if (epoch.seconds <= memory.lastEpoch) {
        ++memory.counts.late;
        return false;
    }
    memory.lastEpoch = epoch.seconds;
    if (memory.counts.epochs++ == 0) memory.origin = epoch.position;
    Epoch kept;
    kept.time = epoch.seconds + memory.setup.delay;
    kept.position = WorldOf(epoch.position) - WorldOf(memory.origin);
    kept.planSigma = epoch.planSigma;
    kept.heightSigma = epoch.heightSigma;
    if (memory.counts.samples > 0) SetLean(kept, memory.last, memory.setup);
    memory.track.Add(kept);
    return true;
}

OccupationEstimate Occupation::Estimate()
{
    Memory& memory = *m_memory;
    OccupationEstimate e;
    memory.SetCounts(e);
    if (tiltpole::field::RefusesInput(e, memory.track, memory.counts, true)) return e;
    const auto [setup, alternatives] = memory.Solve(e);
    const Fit& fit = memory.fitter.Result();
    e.hasTip = fit.state.tip.allFinite() && fit.covariance.allFinite();
    e.turnSpread = Rad2Deg(fit.turnSpread);
    tiltpole::field::SetResiduals(e, memory.fitter);
    if (e.hasTip) {
        const double factor = RegionFactorOf(fit);
        e.tip = memory.PointOf(fit.state.tip);
        Matrix3d own = fit.covariance.topLeftCorner<3, 3>();
        own.diagonal() += tiltpole::field::LastingVariance(memory.fitter, setup);
        own.topLeftCorner<2, 2>() += tiltpole::field::SpreadOfGlide(alternatives.glide);
        tiltpole::field::SetRegion(e, own, factor, memory.setup);
        tiltpole::field::SetAttitude(e, fit, memory.track, factor);
        const Vector3d known = Forward(memory.setup.gyroBias, memory.setup.sensorType);
        e.gyroBias =
            Backward(survey::kDegreesPerRadian * fit.state.bias + known, memory.setup.sensorType);
        using tiltpole::field::kDelayAt;
        if (setup.delaySigma > 0.0) {
            e.delay = memory.setup.delay + fit.state.delay;
            e.delaySigma = std::sqrt(factor * fit.covariance(kDelayAt, kDelayAt));
        }
        if (memory.track.End().magnetic.squaredNorm() > 0.0)
            e.magneticDifference = Rad2Deg(fit.magneticResidual);
    }
    tiltpole::field::Judge(e, memory.fitter, alternatives, setup, memory.setup);
    return e;
}

OccupationEstimate Occupation::EstimateWithoutGyros()
{
    constexpr double kRocking = 2.5;  // way over extent; a lean and one opposite lean: below 2
    const double slow = Deg2Rad(2.0); // [rad/s]
    constexpr double kAny = 3.0;      // offset of which nothing is known [rad]
    Memory& memory = *m_memory;
    OccupationEstimate e;
    memory.SetCounts(e);
    if (tiltpole::field::RefusesInput(e, memory.track, memory.counts, false)) return e;
    tiltpole::field::GyroFreeSetup setup;
    setup.poleLength = memory.setup.poleLength;
    setup.planSigma = memory.setup.planSigma;
    setup.heightSigma = memory.setup.heightSigma;
    setup.offsetSigma = memory.setup.useMagnetometer ? Deg2Rad(memory.setup.headingSigma) : kAny;
    setup.tiltSigma = Deg2Rad(memory.setup.tiltSigma);
    const GyroFreeFit fit = memory.gyroFree.Run(memory.track, setup);
    e.epochs = fit.epochs;
    if (fit.converged) {
        e.hasTip = true;
        e.tip = memory.PointOf(fit.tip);
        tiltpole::field::SetWithoutGyros(e, fit, memory.setup);
        const SensorVector& m = memory.last.magnetic;
        e.heading =
            m.x == 0.0 && m.y == 0.0 && m.z == 0.0
                ? std::numeric_limits<double>::quiet_NaN()
                : tiltpole::field::InCircle(MagneticHeading(TiltOf(memory.last, memory.setup), m)
                                            - memory.setup.magneticBias - Rad2Deg(fit.offset));
    }
    if (fit.epochs < tiltpole::field::kFewestEpochs) {
        e.advice = OccupationAdvice::Move;
        e.reason = OccupationReason::TooShort;
    } else if (fit.rocking > kRocking && fit.pace > slow) {
        e.advice = OccupationAdvice::Refuse;
        e.reason = OccupationReason::Rocked;
    }
    return e;
}

} // namespace field
