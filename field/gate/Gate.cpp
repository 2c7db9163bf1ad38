// SPDX-License-Identifier: MIT
#include "field/gate/Gate.h"

#include "field/Geodesy.h"
#include "field/gate/Reasons.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using ::field::Fix;
using Code = Reason::Code;

namespace {

constexpr double kLevelLean = 1.0;    // [degrees]
constexpr double kLevelFoot = 0.035;  // [m]
constexpr double kStalePeriods = 2.5; // an epoch is fresh for so many periods
constexpr int kFineDecimals = 6;      // of a minute: 1.9 mm

constexpr double kTrackSigmas = 4.0; // of the antenna's noise, beyond which it moves
constexpr double kTrackPause = 3.0;  // a longer one begins the track anew [s]

double LargestInPlan(const ::field::Covariance3& c)
{
    return std::sqrt(std::max({c.nn, c.ee, 0.0}));
}

double Largest(const ::field::Covariance3& c)
{
    return std::sqrt(std::max({c.nn, c.ee, c.hh, 0.0}));
}

} // namespace

bool IsLevel(double lean, double length)
{
    return lean < kLevelLean && length * std::sin(survey::Deg2Rad(lean)) < kLevelFoot;
}

std::vector<Reason> FieldReasons(const FieldSight& sight, const ::field::GateLimits& limits)
{
    std::vector<Reason> reasons;
    if (sight.measured && sight.strength && *sight.strength > 0.0) {
        const double part = sight.measured->strength / *sight.strength - 1.0;
        if (!(std::fabs(part) <= limits.fieldStrength))
            reasons.push_back(FieldStrength(part, limits.fieldStrength));
    }
    if (sight.measured && sight.dip) {
        const double difference = sight.measured->dip - *sight.dip;
        if (!(std::fabs(difference) <= limits.fieldDip))
            reasons.push_back(FieldDip(difference, limits.fieldDip));
    }
    if (sight.pair && !(*sight.pair <= limits.fieldPair))
        reasons.push_back(MagnetometersDiffer(*sight.pair, limits.fieldPair));
    return reasons;
}

Gate::Gate(const ::field::Setup& setup)
    : m_limits(setup.limits), m_sensorType(setup.sensorType),
      m_oneMagnetometer(setup.oneMagnetometer), m_hasFile(!setup.calibration.bytes.empty()),
      m_complete(setup.calibration.complete), m_usable(setup.calibration.usable),
      m_made(setup.calibration.made), m_steps(setup.limits.datumStep)
{}

Judgement Gate::Judge(const Sight& sight)
{
    Judgement judgement;
    std::vector<Reason>& reasons = judgement.verdict.reasons;
    reasons = sight.doubts;
    AddReceiver(sight, reasons);
    AddBase(sight, reasons);
    judgement.refuted = AddSteps(sight, reasons);
    AddPose(sight, reasons);
    AddCalibration(sight, reasons);
    if (sight.tip != nullptr) AddTip(sight, reasons);

    std::ranges::stable_sort(reasons, {}, &Reason::code);
    const auto sameCode = [](const Reason& a, const Reason& b) { return a.code == b.code; };
    reasons.erase(std::unique(reasons.begin(), reasons.end(), sameCode), reasons.end());
    judgement.verdict.state = WorstOf(reasons);
    judgement.hidden =
        sight.tip == nullptr || std::ranges::any_of(reasons, HidesTip, &Reason::code);
    return judgement;
}

void Gate::AddReceiver(const Sight& sight, std::vector<Reason>& reasons) const
{
    const ::field::Epoch& epoch = sight.epoch;
    if (epoch.fix == Fix::Invalid) reasons.push_back(NoFix());
    const bool enough = epoch.fix == Fix::Fixed || (m_limits.allowFloat && epoch.fix == Fix::Float);
    if (epoch.fix != Fix::Invalid && !enough) reasons.push_back(NotFixed(epoch.fix));

    const auto& age = epoch.correctionAge;
    if (age && !(*age >= 0.0 && *age <= m_limits.correctionAge))
        reasons.push_back(CorrectionAge(*age, m_limits.correctionAge));
    if (epoch.satellites < m_limits.satellites)
        reasons.push_back(Satellites(epoch.satellites, m_limits.satellites));

    double fresh = m_limits.epochAge;
    if (sight.period > 0.0) fresh = std::min(fresh, kStalePeriods * sight.period);
    if (!(sight.age <= fresh)) reasons.push_back(EpochOld(sight.age, fresh));
    if (sight.badLines >= m_limits.badLines)
        reasons.push_back(BadLines(sight.badLines, m_limits.badLines));
    if (sight.timeStep) reasons.push_back(TimeStep());

    if (epoch.sigmaAssumed) reasons.push_back(SigmaAssumed());
    if (epoch.fix != Fix::Invalid && epoch.minuteDecimals < kFineDecimals)
        reasons.push_back(CoarseText(epoch.minuteDecimals));
}

void Gate::AddBase(const Sight& sight, std::vector<Reason>& reasons)
{
    if (sight.epoch.fix != Fix::Invalid && !sight.epoch.station.empty()) {
        m_current = sight.epoch.station;
        if (m_station.empty()) m_station = m_current;
    }
    if (m_current != m_station) reasons.push_back(BaseChanged(m_station, m_current));
}

bool Gate::AddSteps(const Sight& sight, std::vector<Reason>& reasons)
{
    bool refuted = false;
    if (sight.epoch.fix != Fix::Invalid) {
        StepEpoch now;
        now.seconds = sight.seconds;
        now.antenna = sight.epoch.antenna;
        now.sigma = Largest(sight.epoch.sigma);
        now.fixed = sight.epoch.fix == Fix::Fixed;
        now.lean = sight.lean;
        now.still = sight.pose == PoseSight::Found && sight.still >= m_limits.stillFor;
        now.speed = sight.epoch.speed;
        const StepVerdict step = m_steps.Add(now);
        if (step.jump) reasons.push_back(Jump(step.step, step.allowed));
        if (step.datumStep > 0.0) m_datumStep = step.datumStep;
        refuted = step.refuted;
        m_trackSpeed = TrackSpeed(sight, step.jump || step.refuted || step.datumStep > 0.0);
    }
    if (m_datumStep > 0.0) reasons.push_back(DatumStep(m_datumStep, m_limits.datumStep));
    return refuted;
}

// A sensor that is not on this pole, or whose angles are in another unit, stands still while the
// antenna moves: by its way in once or twice the time that a pole has to be still.
double Gate::TrackSpeed(const Sight& sight, bool isStep)
{
    const ::field::Epoch& epoch = sight.epoch;
    const bool paused = m_newer && !(sight.seconds - m_newer->seconds <= kTrackPause);
    if (epoch.fix != Fix::Fixed || isStep || paused) {
        m_older.reset();
        m_newer.reset();
        if (epoch.fix != Fix::Fixed) return 0.0;
    }
    const Place now{sight.seconds, epoch.antenna, LargestInPlan(epoch.sigma)};
    if (!m_newer || now.seconds - m_newer->seconds >= m_limits.stillFor) {
        m_older = m_newer;
        m_newer = now;
    }
    if (!m_older) return 0.0;
    const xyhCoordinate way = ::field::Difference(m_older->antenna, now.antenna);
    const double moved = std::hypot(way.x, way.y);
    const double noise = kTrackSigmas * std::hypot(m_older->sigma, now.sigma);
    const double seconds = now.seconds - m_older->seconds;
    return moved - noise > m_limits.antennaSpeed * seconds ? moved / seconds : 0.0;
}

void Gate::AddPose(const Sight& sight, std::vector<Reason>& reasons) const
{
    switch (sight.pose) {
    case PoseSight::Found:
        break;
    case PoseSight::Gap:
        reasons.push_back(PoseGap(sight.poseGap, m_limits.poseGap));
        return;
    case PoseSight::None:
        reasons.push_back(NoPose(sight.poseSilence, sight.poseFault));
        return;
    case PoseSight::Stuck:
        reasons.push_back(SensorStuck(sight.poseFault));
        return;
    }
    if (m_oneMagnetometer) reasons.push_back(OneMagnetometer());
    if (sight.tip == nullptr) return;

    const double speed = std::isnan(sight.tip->antennaSpeed)
                             ? sight.tip->antennaSpeed
                             : std::max(sight.tip->antennaSpeed, m_trackSpeed);
    const bool moves = !(speed < m_limits.antennaSpeed);
    if (moves) reasons.push_back(Moving(speed, m_limits.antennaSpeed));
    if (!moves && sight.still < m_limits.stillFor)
        reasons.push_back(Settling(sight.still, m_limits.stillFor));
    if (moves && !(sight.timeSigma <= m_limits.timeSigma))
        reasons.push_back(TimeSigma(sight.timeSigma, m_limits.timeSigma));
}

void Gate::AddCalibration(const Sight& sight, std::vector<Reason>& reasons) const
{
    // A heading that the sensor formed needs no calibration.
    if (sight.tip != nullptr && sight.tip->pose.heading) return;
    if (!m_complete) {
        reasons.push_back(NoCalibration(m_hasFile));
        return;
    }
    if (!m_usable) reasons.push_back(CalibrationPoor());
    if (!m_made || !sight.today) return;
    const double days = static_cast<double>((*sight.today - *m_made).count());
    if (days > m_limits.calibrationDays)
        reasons.push_back(CalibrationOld(days, m_limits.calibrationDays));
}

void Gate::AddTip(const Sight& sight, std::vector<Reason>& reasons) const
{
    const ::field::Tip& tip = *sight.tip;
    const double plan = std::sqrt(std::max(tip.sigma.nn, tip.sigma.ee));
    if (!(plan <= m_limits.planSigma)) reasons.push_back(PlanSigma(plan, m_limits.planSigma));
    const double height = std::sqrt(tip.sigma.hh);
    if (!(height <= m_limits.heightSigma))
        reasons.push_back(HeightSigma(height, m_limits.heightSigma));
    if (!(tip.tilt <= m_limits.lean))
        reasons.push_back(Lean(tip.tilt, m_limits.lean));
    else if (m_sensorType == 1 && tip.tilt > m_limits.leanNoted)
        reasons.push_back(LeanNoted(tip.tilt, m_limits.leanNoted));
}

void Gate::Acknowledge(Code code)
{
    if (code == Code::BaseChanged) m_station = m_current;
    if (code == Code::DatumStep) m_datumStep = 0.0;
}

void Gate::Restart()
{
    m_steps.Restart();
    m_older.reset();
    m_newer.reset();
    m_trackSpeed = 0.0;
}

} // namespace tiltpole::field
