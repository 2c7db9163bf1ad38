// SPDX-License-Identifier: MIT
#include "quality/CalibrationReport.h"

#include "quality/calibration/Agreement.h"
#include "quality/calibration/EightValues.h"
#include "quality/calibration/GainEvidence.h"
#include "quality/calibration/HiddenError.h"
#include "quality/calibration/InputFaults.h"
#include "quality/calibration/JointModel.h"
#include "quality/calibration/Swing.h"
#include "quality/calibration/TiltByGyros.h"
#include "quality/calibration/TurnReport.h"
#include "quality/calibration/Verdict.h"

#include <Eigen/Eigenvalues>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inside = tiltpole::quality;

namespace quality {
namespace {

using inside::FullCorrection;
using inside::FullOf;
using inside::Magnetometer;
using inside::Turn;
using inside::TurnAxis;

// Gains of a plausible sensor's axes differ by less than a factor of five.
constexpr double kLeastScale = 0.2;
constexpr double kMostScale = 5.0;

bool IsFinite(const Incline_MagneticCorrectParameter& v)
{
    const double all[] = {v.x0, v.y0, v.z0, v.a, v.b, v.c, v.d, v.e};
    return std::all_of(std::begin(all), std::end(all), [](double x) { return std::isfinite(x); });
}

bool IsFinite(const Calibration& c)
{
    const double others[] = {c.translation.dX, c.translation.dY, c.translation.dZ, c.biasAngleA,
                             c.biasAngleB};
    return IsFinite(c.correctionA) && IsFinite(c.correctionB)
           && std::all_of(std::begin(others), std::end(others),
                          [](double x) { return std::isfinite(x); });
}

bool IsPlausible(const Incline_MagneticCorrectParameter& v)
{
    const auto within = [](double scale) { return kLeastScale <= scale && scale <= kMostScale; };
    return within(v.b) && within(v.e);
}

// One magnetometer's side of a run.
struct Side
{
    Magnetometer which;
    Turn horizontal;
    Turn vertical;
    FullCorrection correction;
    double biasAngle;
};

Side SideOf(const CalibrationRun& run, Magnetometer which)
{
    const bool isA = which == Magnetometer::A;
    const Calibration& c = run.calibration;
    return {which, inside::TurnOf(run.used.horizontal, run.sensorType, which),
            inside::TurnOf(run.used.vertical, run.sensorType, which),
            FullOf(isA ? c.correctionA : c.correctionB), isA ? c.biasAngleA : c.biasAngleB};
}

double SpreadOf(const Side& side, const FullCorrection& correction)
{
    double sum = 0.0;
    double squares = 0.0;
    for (const Turn* turn : {&side.horizontal, &side.vertical}) {
        for (const inside::Observation& o : *turn) {
            const double strength = correction(o.reading).norm();
            sum += strength;
            squares += strength * strength;
        }
    }
    const double n = static_cast<double>(side.horizontal.size() + side.vertical.size());
    if (!(n > 0.0) || !(sum > 0.0)) return 0.0;
    const double mean = sum / n;
    return std::sqrt(std::max(squares / n - mean * mean, 0.0)) / mean;
}

Direction DirectionOf(const Eigen::Vector3d& v, double size)
{
    Direction d;
    d.size = size;
    d.azimuth = std::atan2(v.y(), v.x()) * inside::kDegreesPerRadian;
    if (d.azimuth < 0.0) d.azimuth += 360.0;
    d.elevation = std::atan2(v.z(), std::hypot(v.x(), v.y())) * inside::kDegreesPerRadian;
    return d;
}

// Hard iron is the raw reading in no field, soft iron the unevenness of the raw gains.
void DescribeIron(const Side& side, const FullCorrection& best, MagnetometerFigures& figures)
{
    const Eigen::Matrix3d gain = best.matrix.inverse();
    if (!gain.allFinite()) return;
    const Eigen::Vector3d offset = gain * best.offset;
    figures.hardIron = DirectionOf(offset, offset.norm());

    double strength = 0.0;
    for (const Turn* turn : {&side.horizontal, &side.vertical}) {
        for (const inside::Observation& o : *turn)
            strength += (o.reading - offset).norm();
    }
    strength /= std::max<double>(1.0, double(side.horizontal.size() + side.vertical.size()));
    if (strength > 0.0) figures.hardIronShare = offset.norm() / strength;

    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> axes(gain * gain.transpose());
    const Eigen::Vector3d& squares = axes.eigenvalues();
    if (!(squares[0] > 0.0)) return;
    Eigen::Vector3d strongest = axes.eigenvectors().col(2);
    if (strongest.z() < 0.0) strongest = -strongest;
    figures.softIron = DirectionOf(strongest, std::sqrt(squares[2] / squares[0]) - 1.0);
}

double TipError(double headingError, double tilt)
{
    const double reach = kReportPole * std::sin(tilt / inside::kDegreesPerRadian);
    return 1000.0 * reach * headingError / inside::kDegreesPerRadian;
}

HeadingError HeadingErrorOf(const Side& side, const inside::SphereFit& joint,
                            const CalibrationRun& run)
{
    const std::vector<inside::Pose> grid = inside::HeadingGrid(run.sensorType, side.which);
    const inside::HeadingDifference d = inside::Compare(
        side.correction, side.biasAngle, joint.correction, joint.elevationHorizontal, grid);
    HeadingError error;
    error.rms = d.rms;
    error.rmsLevel = d.rmsAt[0];
    error.rms15 = d.rmsAt[1];
    error.rms30 = d.rmsAt[2];
    error.constant = d.mean;
    const inside::HeadingUncertainty known =
        inside::UncertaintyOf(joint.correction, joint.covariance, joint.elevationHorizontal, grid);
    error.uncertainty = std::hypot(known.constant, known.varying);
    error.uncertaintyConstant = known.constant;
    const double own = run.isJoint ? error.uncertainty : 0.0;
    error.tip15 = TipError(std::hypot(d.rmsAt[1], own), inside::kTilts[1]);
    error.tip30 = TipError(std::hypot(d.rmsAt[2], own), inside::kTilts[2]);
    return error;
}

FieldChange ChangeOf(const inside::SphereFit& fit)
{
    const double steeper = std::asin(std::clamp(-fit.elevationVertical, -1.0, 1.0))
                           - std::asin(std::clamp(-fit.elevationHorizontal, -1.0, 1.0));
    return {fit.lengthRatio - 1.0, steeper * inside::kDegreesPerRadian};
}

std::vector<double> HeadingsOf(const CalibrationRun& run, const Side& side)
{
    std::vector<double> headings;
    headings.reserve(side.horizontal.size());
    for (std::size_t i = 0; i < side.horizontal.size(); ++i) {
        const PoseSensorData& s = run.used.horizontal[i];
        const auto frame = inside::FrameOf(s.dPitch, s.dRoll, run.sensorType, side.which);
        headings.push_back(frame.Heading(side.correction(side.horizontal[i].reading))
                           - side.biasAngle);
    }
    return headings;
}

void DescribeSide(const Side& side, const CalibrationRun& run, const inside::JointModel& model,
                  CalibrationReport& report)
{
    const bool isA = side.which == Magnetometer::A;
    const bool joint = model.outcome == JointFitOutcome::Fitted;
    const inside::SphereFit& fit = isA ? model.a : model.b;
    const FullCorrection& best = joint ? fit.correction : side.correction;
    MagnetometerFigures& figures = isA ? report.a : report.b;

    figures.spreadBefore = SpreadOf(side, FullCorrection{});
    figures.spreadAfter = SpreadOf(side, side.correction);
    DescribeIron(side, best, figures);
    if (joint) {
        figures.disturbed = fit.disturbed;
        figures.heading = HeadingErrorOf(side, fit, run);
        figures.change = ChangeOf(fit);
    }
    (isA ? report.horizontal.circleA : report.horizontal.circleB) =
        inside::CircleResidual(side.horizontal, TurnAxis::Horizontal, side.correction);
    (isA ? report.vertical.circleA : report.vertical.circleB) =
        inside::CircleResidual(side.vertical, TurnAxis::Vertical, side.correction);
    if (!isA) return;
    const inside::Tilt tilt = joint ? inside::Tilt::Usable : inside::Tilt::Unusable;
    inside::DescribeAxis(side.horizontal, TurnAxis::Horizontal, best, tilt, report.horizontal);
    inside::DescribeAxis(side.vertical, TurnAxis::Vertical, best, tilt, report.vertical);
}

void DescribeHiddenErrors(const CalibrationRun& run, const inside::JointModel& model,
                          CalibrationReport& report)
{
    if (model.outcome != JointFitOutcome::Fitted) return;
    const auto headings = [&](Magnetometer which, const inside::SphereFit& fit) {
        return HeadingsOf(run, {which,
                                inside::TurnOf(run.used.horizontal, run.sensorType, which),
                                {},
                                fit.correction,
                                0.0});
    };
    const auto agreement =
        inside::AgreementOf(headings(Magnetometer::A, model.a), headings(Magnetometer::B, model.b));
    // Measured for sensors of type 1 alone; of others only the allowance is known.
    if (run.sensorType == 1) {
        report.tilt = inside::TiltEvidenceOf(run.recorded, run.sensorType, model);
    }
    report.tilt.swing = std::max(inside::ApparentTilt(report.horizontal.acceleration),
                                 inside::ApparentTilt(report.vertical.acceleration));
    report.tilt.gyros = inside::TiltByGyros(run.recorded, run.sensorType, model);
    inside::TurnEvidence evidence;
    evidence.tilt = report.tilt;
    if (report.tilt.gyros) {
        const auto effects =
            inside::TiltEffectOf(run.recorded, run.sensorType, model, *report.tilt.gyros);
        // What they see and cannot be weighed counts as not seen.
        if (effects)
            evidence.byGyros = *effects;
        else
            evidence.tilt.gyros = report.tilt.gyros = std::nullopt;
    }
    evidence.gains = inside::GainEvidenceOf(run.recorded, run.sensorType, model);
    evidence.disagreement = agreement ? agreement->systematic : 0.0;
    report.a.heading->hidden = inside::HiddenErrorOf(model.a, evidence, Magnetometer::A);
    report.b.heading->hidden = inside::HiddenErrorOf(model.b, evidence, Magnetometer::B);
}

// Refuses logs that are wrong as such, and says what is wrong with them.
bool NameInputFault(const CalibrationRun& run, bool finite, CalibrationReport& report)
{
    const inside::Suspicion suspicion = {report.jointFit,
                                         report.agreement ? report.agreement->systematic : 0.0,
                                         finite && inside::TurnsBackwards(run)};
    auto fault = inside::InputFaultOf(run.recorded, run.sensorType, suspicion);
    if (!fault) return false;
    report.verdict = Verdict::Refused;
    report.reason = fault->finding;
    report.suspects = std::move(fault->suspects);
    return true;
}

} // namespace

double TiltError::Excess() const
{
    return std::max(pitch * pitch - pitchDeviation * pitchDeviation, 0.0)
           + std::max(roll * roll - rollDeviation * rollDeviation, 0.0);
}

double HeadingError::With(double certainty) const
{
    const double alike = uncertaintyConstant * uncertaintyConstant;
    const double varying = uncertainty * uncertainty - alike;
    const double unseen =
        hidden.tilt * hidden.tilt + hidden.turns * hidden.turns + hidden.noise * hidden.noise;
    return std::sqrt(rms * rms + alike + certainty * certainty * varying + unseen);
}

CalibrationReport AssessCalibration(const CalibrationRun& run)
{
    CalibrationReport report;
    report.isJoint = run.isJoint;
    report.horizontal = inside::FiguresOf(
        {run.recorded.horizontal, run.used.horizontal, TurnAxis::Horizontal, run.sensorType});
    report.vertical = inside::FiguresOf(
        {run.recorded.vertical, run.used.vertical, TurnAxis::Vertical, run.sensorType});
    report.horizontal.acceleration =
        inside::AccelerationOf(run.recorded.horizontal, TurnAxis::Horizontal);
    report.vertical.acceleration =
        inside::AccelerationOf(run.recorded.vertical, TurnAxis::Vertical);
    const inside::JointModel model = inside::FitBoth(run.recorded, run.sensorType);
    report.jointFit = model.outcome;
    const bool finite = IsFinite(run.calibration);
    if (finite) {
        const Side a = SideOf(run, Magnetometer::A);
        const Side b = SideOf(run, Magnetometer::B);
        DescribeSide(a, run, model, report);
        DescribeSide(b, run, model, report);
        DescribeHiddenErrors(run, model, report);
        report.agreement = inside::AgreementOf(HeadingsOf(run, a), HeadingsOf(run, b));
    }
    if (NameInputFault(run, finite, report)) return report;
    if (run.solverAnswer == 0) {
        report.reason = run.isJoint ? Finding::JointFitFailed : Finding::SolverFailed;
    } else if (!finite) {
        report.reason = Finding::NotFinite;
    } else if (!IsPlausible(run.calibration.correctionA)
               || !IsPlausible(run.calibration.correctionB)) {
        report.reason = Finding::Implausible;
    } else {
        inside::Judge(run, model, report);
    }
    return report;
}

} // namespace quality
