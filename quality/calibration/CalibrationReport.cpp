// SPDX-License-Identifier: MIT
#include "quality/CalibrationReport.h"

#include "quality/calibration/EightValues.h"
#include "quality/calibration/JointModel.h"
#include "quality/calibration/TurnReport.h"

#include <Eigen/Eigenvalues>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>

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

// A cause is notable from these sizes on; the report names the one that exceeds its size most.
constexpr double kNotableAxis = 1.5;       // degrees
constexpr double kNotableWobble = 1.5;     // degrees
constexpr double kNotableDisturbed = 0.03; // share of readings
constexpr double kNotableGap = 60.0;       // degrees
constexpr double kNotableLoss = 0.5;       // share of the heading error

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

HeadingError HeadingErrorOf(const Side& side, const inside::SphereFit& joint, int sensorType)
{
    const std::vector<inside::Pose> grid = inside::HeadingGrid(sensorType, side.which);
    const inside::HeadingDifference d = inside::Compare(
        side.correction, side.biasAngle, joint.correction, joint.elevationHorizontal, grid);
    HeadingError error;
    error.rms = d.rms;
    error.rmsLevel = d.rmsAt[0];
    error.rms15 = d.rmsAt[1];
    error.rms30 = d.rmsAt[2];
    error.constant = d.mean;
    error.tip15 = TipError(d.rmsAt[1], inside::kTilts[1]);
    error.tip30 = TipError(d.rmsAt[2], inside::kTilts[2]);
    const inside::HeadingUncertainty known =
        inside::UncertaintyOf(joint.correction, joint.covariance, joint.elevationHorizontal, grid);
    error.uncertainty = std::hypot(known.constant, known.varying);
    error.uncertaintyConstant = known.constant;
    return error;
}

std::optional<HeadingAgreement> AgreementOf(const CalibrationRun& run, const Side& a, const Side& b)
{
    const std::vector<PoseSensorData>& samples = run.used.horizontal;
    if (samples.empty()) return {};
    double sum = 0.0;
    double squares = 0.0;
    HeadingAgreement agreement;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const PoseSensorData& s = samples[i];
        const auto heading = [&](const Side& side) {
            const auto frame = inside::FrameOf(s.dPitch, s.dRoll, run.sensorType, side.which);
            return frame.Heading(side.correction(side.horizontal[i].reading)) - side.biasAngle;
        };
        const double off = inside::Wrapped(heading(b) - heading(a) - 180.0);
        sum += off;
        squares += off * off;
        agreement.largest = std::max(agreement.largest, std::fabs(off));
    }
    const double n = static_cast<double>(samples.size());
    agreement.mean = sum / n;
    agreement.deviation = std::sqrt(std::max(squares / n - agreement.mean * agreement.mean, 0.0));
    return agreement;
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
        figures.heading = HeadingErrorOf(side, fit, run.sensorType);
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

struct Cause
{
    Finding finding;
    double excess; // above one: notable
};

// Why the headings differ: the cause that stands out most.
Finding CauseOf(const CalibrationReport& report, const HeadingError& worse, double loss)
{
    const double varying =
        std::sqrt(std::max(worse.rms * worse.rms - worse.constant * worse.constant, 0.0));
    if (varying < kGoodHeading && varying < 0.6 * std::fabs(worse.constant)) {
        return Finding::ConstantHeading;
    }
    const TurnFigures& h = report.horizontal;
    const TurnFigures& v = report.vertical;
    const double gap = 360.0 - std::min(h.covered, v.covered);
    const double wobble = std::max(h.wobble, v.wobble);
    const double disturbed = std::max(report.a.disturbed, report.b.disturbed);
    const Cause causes[] = {
        {Finding::HorizontalAxis,    h.axisError / kNotableAxis       },
        {Finding::VerticalAxis,      v.axisError / kNotableAxis       },
        {Finding::Wobble,            wobble / kNotableWobble          },
        {Finding::Disturbed,         disturbed / kNotableDisturbed    },
        {Finding::SectorsMissing,    gap / kNotableGap                },
        {Finding::BeyondEightValues, loss / (kNotableLoss * worse.rms)},
    };
    const Cause& largest =
        *std::max_element(std::begin(causes), std::end(causes),
                          [](const Cause& x, const Cause& y) { return x.excess < y.excess; });
    return largest.excess >= 1.0 ? largest.finding : Finding::HeadingsRoughlyAgree;
}

// The finding for an outcome of the joint fit that is the operator's doing.
std::optional<Finding> ObstacleOf(JointFitOutcome outcome)
{
    switch (outcome) {
    case JointFitOutcome::TooFewSamples:
        return Finding::TooFewSamples;
    case JointFitOutcome::HorizontalIncomplete:
        return Finding::HorizontalIncomplete;
    case JointFitOutcome::VerticalIncomplete:
        return Finding::VerticalIncomplete;
    default:
        return {};
    }
}

void JudgeWithoutJointFit(CalibrationReport& report)
{
    report.weak = true;
    if (report.jointFit == JointFitOutcome::NotFinite) {
        report.verdict = Verdict::Refused;
        report.reason = Finding::NotFinite;
    } else if (const std::optional<Finding> obstacle = ObstacleOf(report.jointFit)) {
        report.verdict = Verdict::Poor;
        report.reason = *obstacle;
    } else {
        const bool even = std::max(report.a.spreadAfter, report.b.spreadAfter) <= kUsableSpread;
        report.verdict = even ? Verdict::Usable : Verdict::Poor;
        report.reason = even ? Finding::TiltUnusable : Finding::FieldUneven;
    }
}

void Judge(const CalibrationRun& run, const inside::JointModel& model, CalibrationReport& report)
{
    if (model.outcome != JointFitOutcome::Fitted) return JudgeWithoutJointFit(report);

    const HeadingError& a = *report.a.heading;
    const HeadingError& b = *report.b.heading;
    const auto larger = [&](double certainty) {
        return std::max(a.With(certainty), b.With(certainty));
    };
    const HeadingError& worse = a.rms >= b.rms ? a : b;
    report.headingError = worse.rms;
    report.headingBound = larger(kGoodCertainty);
    report.verdict = report.headingBound < kGoodHeading          ? Verdict::Good
                     : larger(kUsableCertainty) < kUsableHeading ? Verdict::Usable
                                                                 : Verdict::Poor;
    if (report.verdict == Verdict::Good) {
        report.reason = Finding::HeadingsAgree;
        return;
    }
    if (worse.rms < kGoodHeading) {
        report.reason = Finding::JointFitUncertain;
        return;
    }
    const JointFit eight = inside::InEightValues(model, run.recorded, run.sensorType);
    report.reason = CauseOf(report, worse, a.rms >= b.rms ? eight.lossA : eight.lossB);
}

} // namespace

double HeadingError::With(double certainty) const
{
    const double alike = uncertaintyConstant * uncertaintyConstant;
    const double varying = uncertainty * uncertainty - alike;
    return std::sqrt(rms * rms + alike + certainty * certainty * varying);
}

CalibrationReport AssessCalibration(const CalibrationRun& run)
{
    CalibrationReport report;
    report.horizontal = inside::FiguresOf(
        {run.recorded.horizontal, run.used.horizontal, TurnAxis::Horizontal, run.sensorType});
    report.vertical = inside::FiguresOf(
        {run.recorded.vertical, run.used.vertical, TurnAxis::Vertical, run.sensorType});
    const inside::JointModel model = inside::FitBoth(run.recorded, run.sensorType);
    report.jointFit = model.outcome;
    if (!IsFinite(run.calibration)) {
        report.reason = run.solverAnswer == 0 ? Finding::SolverFailed : Finding::NotFinite;
        return report;
    }
    const Side a = SideOf(run, Magnetometer::A);
    const Side b = SideOf(run, Magnetometer::B);
    DescribeSide(a, run, model, report);
    DescribeSide(b, run, model, report);
    report.agreement = AgreementOf(run, a, b);
    if (run.solverAnswer == 0) {
        report.reason = Finding::SolverFailed;
    } else if (!IsPlausible(run.calibration.correctionA)
               || !IsPlausible(run.calibration.correctionB)) {
        report.reason = Finding::Implausible;
    } else {
        Judge(run, model, report);
    }
    return report;
}

} // namespace quality
