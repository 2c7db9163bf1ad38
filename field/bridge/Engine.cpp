// SPDX-License-Identifier: MIT
#include "field/bridge/Engine.h"

#include "field/bridge/OccupationInput.h"
#include "field/gate/Reasons.h"
#include "field/nmea/NmeaWriter.h"
#include "field/tip/Covariance.h"
#include "survey/Angle.h"
#include "survey/Correction.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <utility>

namespace tiltpole::field {

using ::field::Instant;
using ::field::NorthSource;
using ::field::PoseLookup;
using ::field::PoseSample;
using ::field::Report;
using ::field::Setup;
using survey::Magnetometer;
using survey::Point3;
using Code = ::field::Reason::Code;
using Seconds = std::chrono::duration<double>;

namespace {

constexpr double kReceiverClockSigma = 0.002; // of the least delay [s]
constexpr double kMotionMargin = 0.5;         // poses before the span that has to be still [s]
constexpr std::string_view kNotPlumb =
    "pitch and roll are not those of the accelerations: are they in degrees?";

Setup Completed(const Setup& given, const PoseInput& poses)
{
    Setup setup = given;
    setup.oneMagnetometer = given.oneMagnetometer || poses.HasOneMagnetometer();
    return setup;
}

::field::SensorVector VectorOf(const survey::Reading& reading)
{
    return {reading.x, reading.y, reading.z};
}

Point3 PointOf(const ::field::SensorVector& v)
{
    return {v.x, v.y, v.z};
}

// |A − B| as part of |A|, B in the axes of A.
double PairDifference(const Setup& setup, const PoseSensorData& pose, const survey::Reading& a)
{
    const CInclineSensor_Position& sensor = setup.calibration.sensor;
    const survey::Reading b = survey::Corrected(sensor.GetMagneticCorrectPar_B(),
                                                survey::ReadingOf(pose, Magnetometer::B));
    const Incline_MagneticTranslationParameter shift = sensor.GetMagneticTranslationPar();
    const Point3 difference{a.x - (-b.x - shift.dX), a.y - (-b.y - shift.dY),
                            a.z - (b.z - shift.dZ)};
    return survey::Length(difference) / survey::Length({a.x, a.y, a.z});
}

::field::Tilt TiltOf(const Setup& setup, const PoseSensorData& pose)
{
    const bool slopes = survey::AxesOf(setup.sensorType) == survey::SensorAxes::ForwardLeftUp;
    ::field::Tilt tilt;
    tilt.pitch = pose.dPitch;
    tilt.roll = pose.dRoll;
    tilt.meaning = slopes ? ::field::PitchRoll::Slopes : ::field::PitchRoll::Turns;
    tilt.sensorType = setup.sensorType;
    return tilt;
}

// A level pole whose heading is not believed: the foot lies anywhere on the circle of its lean.
void AddCircle(::field::Covariance3& sigma, double length, double lean)
{
    const double radius = length * std::sin(survey::Deg2Rad(lean));
    sigma.nn += 0.5 * radius * radius;
    sigma.ee += 0.5 * radius * radius;
}

void CountVerdict(::field::State state, ::field::Counters& counters)
{
    switch (state) {
    case ::field::State::Store:
        ++counters.stored;
        break;
    case ::field::State::Wait:
        ++counters.waited;
        break;
    case ::field::State::Block:
        ++counters.blocked;
        break;
    }
}

// Takes back what speaks against the tip of a single epoch only because the pole moves, and holds
// the tip of the occupation against the limits of a sigma instead.
void PassMotion(::field::Verdict& verdict, const ::field::Covariance3& sigma,
                const ::field::GateLimits& limits)
{
    std::erase_if(verdict.reasons, [](const ::field::Reason& reason) {
        return reason.code == Code::Moving || reason.code == Code::Settling
               || reason.code == Code::TimeSigma || reason.code == Code::PlanSigma
               || reason.code == Code::HeightSigma;
    });
    const double plan = std::sqrt(std::max(sigma.nn, sigma.ee));
    const double height = std::sqrt(sigma.hh);
    auto& reasons = verdict.reasons;
    if (!(plan <= limits.planSigma)) reasons.push_back(PlanSigma(plan, limits.planSigma));
    if (!(height <= limits.heightSigma)) reasons.push_back(HeightSigma(height, limits.heightSigma));
    std::ranges::stable_sort(reasons, {}, &::field::Reason::code);
    verdict.state = WorstOf(verdict.reasons);
}

} // namespace

Engine::Engine(const Setup& setup)
    : m_receiver(setup), m_poses(setup.poseFormat), m_solver(setup),
      m_gate(Completed(setup, m_poses)), m_occupation(setup)
{
    m_setup = Completed(setup, m_poses);
}

void Engine::Advance(Instant now)
{
    m_now = std::max<Instant>(m_now, std::chrono::floor<std::chrono::microseconds>(now));
    m_receiver.Tick(m_now);
    TakeEpochs();
    Resolve();
    EmitSilence(m_receiver.NewSilence(m_now));
    CountAll();
}

void Engine::EmitSilence(std::optional<::field::Reason> reason)
{
    if (!reason) return;
    Report report;
    report.verdict.reasons.push_back(std::move(*reason));
    Emit(std::move(report));
}

// A step that ends halfway, as where memory is short, leaves parts that do not belong together: a
// pose that the occupation has and its track has not, an epoch that the gate has seen already.
template <class Call>
void Engine::WholeOrForgotten(const Call& call)
{
    try {
        call();
    } catch (...) {
        Forget();
        throw;
    }
}

void Engine::Forget()
{
    m_receiver.Forget();
    RestartPose();
    m_waiting.clear();
    m_gate.Restart();
    m_occupation.Clear();
    CountAll();
}

void Engine::Tick(Instant now)
{
    WholeOrForgotten([&] { Advance(now); });
}

void Engine::FeedReceiver(std::string_view bytes, Instant arrival)
{
    WholeOrForgotten([&] {
        Advance(arrival);
        while (!bytes.empty()) {
            const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
            m_receiver.Feed(bytes.substr(0, end), m_now);
            bytes.remove_prefix(end);
            EmitSilence(m_receiver.NewSilence(m_now));
            TakeEpochs();
            Resolve();
        }
        CountAll();
    });
}

void Engine::FeedPose(std::string_view bytes, Instant arrival)
{
    WholeOrForgotten([&] {
        Advance(arrival);
        for (const PoseSample& sample : m_poses.Read(bytes, m_now))
            AddPose(sample);
        CountAll();
    });
}

void Engine::FeedPose(const PoseSample& sample)
{
    WholeOrForgotten([&] {
        Advance(sample.arrival);
        PoseSample arrived = sample;
        arrived.arrival = m_now;
        AddPose(arrived);
        CountAll();
    });
}

void Engine::AddPose(const PoseSample& sample)
{
    const std::optional<PoseSample> kept = m_poses.Add(sample, m_solver);
    if (!kept) return;
    m_occupation.Add(*kept, m_disturbed);
    Resolve();
}

void Engine::TakeEpochs()
{
    for (TimedEpoch& timed : m_receiver.Take()) {
        EmitSilence(std::move(timed.silence));
        m_waiting.push_back(std::move(timed));
        if (m_waiting.size() > kMostWaiting) ResolveFirst(true);
    }
}

void Engine::Resolve()
{
    while (!m_waiting.empty() && ResolveFirst(false)) {
    }
}

bool Engine::ResolveFirst(bool waitNoMore)
{
    const TimedEpoch& first = m_waiting.front();
    const Instant waited = waitNoMore ? ::field::PoseRing::kWait : m_now - first.epoch.arrival;
    const PoseLookup lookup = m_poses.Ring().At(first.epoch.moment, waited);
    if (lookup.state == PoseLookup::State::Wait) return false;
    Complete(first, lookup);
    m_waiting.pop_front();
    return true;
}

void Engine::Complete(const TimedEpoch& timed, const PoseLookup& lookup)
{
    Sight sight(timed.epoch);
    sight.today = timed.today;
    sight.seconds = timed.seconds;
    sight.age = timed.age;
    sight.period = timed.period;
    sight.timeStep = timed.timeStep;
    sight.badLines = m_receiver.BadLines(m_now);
    if (timed.restarted) m_gate.Restart();

    TipSolution solution;
    solution.lean = kNotKnown;
    solution.model.declination = kNotKnown;
    if (lookup.state == PoseLookup::State::Found) {
        sight.pose = PoseSight::Found;
        solution = Solved(timed, lookup.pose, sight);
        CheckPlumb(timed.epoch.moment, lookup.pose, sight);
        if (sight.pose == PoseSight::None) {
            solution.tip.reset();
            solution.lean = kNotKnown;
        }
    } else {
        m_poses.Explain(timed.epoch.moment, sight);
    }
    sight.doubts.insert(sight.doubts.end(), solution.reasons.begin(), solution.reasons.end());
    if (solution.tip) sight.tip = &*solution.tip;
    const Judgement judgement = m_gate.Judge(sight);
    Finish(timed, std::move(solution), judgement);
}

TipSolution Engine::Solved(const TimedEpoch& timed, const PoseSample& pose, Sight& sight)
{
    TipSolution solution = m_solver.Solve(timed.epoch, pose, timed.decimalYear);
    if (!solution.tip) return solution;

    ::field::Tip& tip = *solution.tip;
    const auto leanOf = [&](const PoseSample& sample) {
        return survey::RecordOf<xyhCoordinate>(-1.0 * m_solver.Step(sample, tip.declination));
    };
    sight.lean = survey::PointOf(leanOf(pose));
    const auto velocity = m_poses.Ring().Velocity(timed.epoch.moment, leanOf);
    const double clocks = std::hypot(kReceiverClockSigma, m_poses.ClockSigma());
    const TipErrors errors =
        ErrorsOf(m_setup, solution.model, clocks, velocity ? survey::PointOf(*velocity) : Point3{});
    tip.sigma = TipCovariance(m_solver, tip, errors);
    sight.timeSigma = errors.time;

    const ::field::GateLimits& limits = m_setup.limits;
    const PoleMotion motion = m_poses.Motion(m_solver, tip.declination, timed.epoch.moment,
                                             limits.antennaSpeed, limits.stillFor + kMotionMargin);
    tip.antennaSpeed = motion.speed;
    sight.still = motion.still;

    if (tip.pose.heading) return solution;
    sight.doubts = FieldReasons(SeenField(solution), limits);
    m_disturbed = !sight.doubts.empty();
    const double length = m_setup.poleLength + m_setup.phaseCenter;
    if (!sight.doubts.empty() && IsLevel(tip.tilt, length)) {
        sight.doubts.clear();
        AddCircle(tip.sigma, length, tip.tilt);
    }
    return solution;
}

// Whether gravity bears out pitch and roll: of a sensor that stands still, by its own word, it is
// the mean acceleration. The answer holds until it stands again.
void Engine::CheckPlumb(Instant moment, const PoseSample& pose, Sight& sight)
{
    constexpr double kFarOff = 5.0; // accelerometers that were never calibrated: 2 [degrees]
    constexpr double kLeast = 0.5;  // what is taken for gravity [g]
    constexpr double kMost = 2.0;
    if (sight.still >= m_setup.limits.stillFor) {
        const Point3 up = PointOf(::field::LevelAxesOf(TiltOf(m_setup, pose.data)).up);
        const Point3 force = PointOf(m_poses.MeanForce(moment, m_setup.limits.stillFor));
        const double size = survey::Length(force);
        const bool known = size > kLeast && size < kMost;
        const auto isOff = [&](const Point3& axis) {
            return survey::Length((1.0 / size) * force - axis) > survey::Deg2Rad(kFarOff);
        };
        m_askew = known && isOff(up) && isOff(-1.0 * up); // some tell -1 g at rest
        if (!m_askew) m_plumb = moment;
    }
    if (!m_askew) return;
    sight.pose = PoseSight::None;
    sight.poseFault = kNotPlumb;
    sight.lean.reset();
    if (m_plumb) sight.poseSilence = Seconds(moment - *m_plumb).count();
}

FieldSight Engine::SeenField(const TipSolution& solution)
{
    const PoseSensorData& pose = solution.tip->pose.data;
    const auto& calibration = m_setup.calibration;
    const survey::Reading a = survey::Corrected(calibration.sensor.GetMagneticCorrectPar_A(),
                                                survey::ReadingOf(pose, Magnetometer::A));

    FieldSight sight;
    sight.measured = ::field::ShapeOf(TiltOf(m_setup, pose), VectorOf(a));
    if (calibration.field) {
        sight.strength = calibration.field->strength;
        sight.dip = calibration.field->dip;
    }
    if (m_setup.north == NorthSource::Model) { // there is a tip, so the model has a field
        // Counts per nT were found where the calibration was made; taken for near the first place.
        if (!m_strengthAtStart) m_strengthAtStart = solution.model.strength;
        if (sight.strength) *sight.strength *= solution.model.strength / *m_strengthAtStart;
        sight.dip = solution.model.dip;
    }
    if (!m_setup.oneMagnetometer) sight.pair = PairDifference(m_setup, pose, a);
    return sight;
}

void Engine::Finish(const TimedEpoch& timed, TipSolution&& solution, const Judgement& judgement)
{
    PoleState pole;
    pole.lean = solution.lean;
    pole.declination = solution.tip ? solution.tip->declination : solution.model.declination;

    Report report;
    report.epoch = timed.epoch;
    report.verdict = judgement.verdict;
    if (!judgement.hidden) report.tip = std::move(solution.tip);
    report.nmea = WriteEpoch(report.epoch, report.tip, report.verdict, m_setup, pole, m_clients);
    if (m_onSentences) m_onSentences(report.nmea); // an estimate takes longer than all the rest
    AddOccupation(report, pole.declination);
    const ::field::State state = report.verdict.state;
    Emit(std::move(report));
    CountVerdict(state, m_counters);
}

void Engine::AddOccupation(Report& report, double declination)
{
    const auto hasCode = [&](Code code) {
        return std::ranges::find(report.verdict.reasons, code, &::field::Reason::code)
               != report.verdict.reasons.end();
    };
    if (hasCode(Code::Jump))
        m_occupation.LeaveOut(report.epoch, "a step that lean and speed do not explain");
    else
        m_occupation.Add(report.epoch, report.tip, declination);
    report.occupation = m_occupation.Estimate();
    report.occupationTip = m_occupation.Tip();
    report.occupationTrack = m_occupation.Track();
    if (!report.occupation || !report.occupationTip || !report.tip) return;
    if (report.occupation->advice != ::field::OccupationAdvice::Store) return;
    if (report.verdict.state == ::field::State::Store) return;
    PassMotion(report.verdict, CovarianceOf(*report.occupation), m_setup.limits);
    report.byOccupation = report.verdict.state == ::field::State::Store;
}

void Engine::Emit(Report&& report)
{
    m_reports.push_back(std::move(report));
    if (m_reports.size() > kMostReports) m_reports.pop_front();
}

std::vector<Report> Engine::Take()
{
    std::vector<Report> taken(std::make_move_iterator(m_reports.begin()),
                              std::make_move_iterator(m_reports.end()));
    m_reports.clear();
    return taken;
}

void Engine::RestartReceiver()
{
    m_receiver.Restart();
}
void Engine::RestartPose()
{
    m_poses.Restart();
    m_plumb.reset();
    m_askew = false;
}

void Engine::CountAll()
{
    m_receiver.Count(m_counters);
    m_poses.Count(m_counters);
}

} // namespace tiltpole::field
