// SPDX-License-Identifier: MIT
#include "simulation/trials/Trial.h"

#include "quality/SolverRun.h"
#include "quality/calibration/EightValues.h"
#include "quality/calibration/JointModel.h"
#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <utility>

namespace study {

namespace {

using quality::CalibrationRun;
using tiltpole::quality::FullCorrection;
using tiltpole::quality::FullOf;
using tiltpole::quality::kDegreesPerRadian;
using tiltpole::quality::LevelFrame;
using tiltpole::quality::Magnetometer;
using tiltpole::quality::Pose;
using tiltpole::quality::VectorOf;

FullCorrection TruthOf(const simulation::MagnetometerModel& m, double strength)
{
    FullCorrection gain;
    for (int i = 0; i < 3; ++i) {
        gain.matrix.row(i) = VectorOf(m.softIron.rows[static_cast<std::size_t>(i)]).transpose();
    }
    FullCorrection truth;
    truth.matrix = gain.matrix.inverse() / strength;
    truth.offset = truth.matrix * VectorOf(m.hardIron);
    return truth;
}

// The frame that the sensor reports of a pose.
LevelFrame ReportedFrame(const simulation::PoseSensor& sensor, Magnetometer which, const Pose& pose)
{
    const double sign = which == Magnetometer::A ? 1.0 : -1.0;
    const auto tilt = tiltpole::quality::TiltOf(pose.frame.up, sensor.type);
    const simulation::PoseAngles angles = {0.0, sign * tilt.pitch, sign * tilt.roll};
    const simulation::PoseAngles reported = simulation::ReportedAngles(sensor.rollReport, angles);
    return tiltpole::quality::FrameOf(reported.pitch + sensor.pitchOffset,
                                      reported.roll + sensor.rollOffset, sensor.type, which);
}

class Truth
{
public:
    explicit Truth(const Setting& s)
        : m_sensor(s.sensor), m_elevation(-std::sin(s.field.dip / kDegreesPerRadian)),
          m_a(TruthOf(s.sensor.a, s.field.strength)), m_b(TruthOf(s.sensor.b, s.field.strength))
    {}

    TrueError ErrorOf(const FullCorrection& a, double biasA, const FullCorrection& b,
                      double biasB) const
    {
        const TrueError ofA = ErrorOfOne(a, biasA, m_a, Magnetometer::A);
        const TrueError ofB = ErrorOfOne(b, biasB, m_b, Magnetometer::B);
        return {std::max(ofA.asUsed, ofB.asUsed), std::max(ofA.trueTilt, ofB.trueTilt)};
    }

    TrueError ErrorOf(const quality::Calibration& c) const
    {
        return ErrorOf(FullOf(c.correctionA), c.biasAngleA, FullOf(c.correctionB), c.biasAngleB);
    }

private:
    TrueError ErrorOfOne(const FullCorrection& judged, double bias, const FullCorrection& truth,
                         Magnetometer which) const
    {
        const Eigen::Matrix3d gain = truth.matrix.inverse();
        TrueError squares;
        for (const Pose& pose : tiltpole::quality::HeadingGrid(m_sensor.type, which)) {
            const Eigen::Vector3d field = pose.frame.Field(pose.heading, m_elevation);
            const Eigen::Vector3d corrected = judged(gain * (field + truth.offset));
            const auto square = [&](const LevelFrame& frame) {
                const double off =
                    tiltpole::quality::Wrapped(frame.Heading(corrected) - bias - pose.heading);
                return pose.weight * off * off;
            };
            squares.asUsed += square(ReportedFrame(m_sensor, which, pose));
            squares.trueTilt += square(pose.frame);
        }
        return {std::sqrt(squares.asUsed), std::sqrt(squares.trueTilt)};
    }

    simulation::PoseSensor m_sensor;
    double m_elevation;
    FullCorrection m_a;
    FullCorrection m_b;
};

Result Judged(const CalibrationRun& run, const Truth& truth)
{
    Result result;
    result.report = quality::AssessCalibration(run);
    result.error = truth.ErrorOf(run.calibration);
    result.finite = std::isfinite(result.error.asUsed);
    return result;
}

// What the joint fit would have made of turns that it refuses.
double UnaskedError(const CalibrationRun& run, const Truth& truth)
{
    const auto fit = [&](Magnetometer which) {
        return tiltpole::quality::FitSphere(
            tiltpole::quality::TurnOf(run.recorded.horizontal, run.sensorType, which),
            tiltpole::quality::TurnOf(run.recorded.vertical, run.sensorType, which));
    };
    const auto a = fit(Magnetometer::A);
    const auto b = fit(Magnetometer::B);
    if (!a || !b) return std::nan("");
    return truth.ErrorOf(a->correction, 0.0, b->correction, 0.0).asUsed;
}

} // namespace

Trial Simulate(const Setting& s, std::uint64_t seed)
{
    quality::CalibrationTurns recorded = RecordTurns(s, seed);
    CalibrationRun run = s.screened
                             ? quality::RunSolver(std::move(recorded), s.sensor.type)
                             : quality::RunSolverUnscreened(std::move(recorded), s.sensor.type);
    const Truth truth(s);
    Trial trial;
    trial.solver = Judged(run, truth);
    trial.answered = run.solverAnswer != 0;

    const tiltpole::quality::JointModel model =
        tiltpole::quality::FitBoth(run.recorded, s.sensor.type);
    quality::JointFit fit = tiltpole::quality::InEightValues(model, run.recorded, s.sensor.type);
    trial.jointFitted = fit.outcome == quality::JointFitOutcome::Fitted;
    if (!trial.jointFitted) {
        trial.jointUnasked = UnaskedError(run, truth);
        return trial;
    }
    trial.jointFull = truth.ErrorOf(model.a.correction, 0.0, model.b.correction, 0.0);
    run.calibration = fit.calibration;
    run.used = std::move(fit.used);
    run.isJoint = true;
    run.solverAnswer = 1;
    trial.joint = Judged(run, truth);
    return trial;
}

} // namespace study
