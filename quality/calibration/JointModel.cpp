// SPDX-License-Identifier: MIT
#include "quality/calibration/JointModel.h"

#include "quality/calibration/EightValues.h"
#include "quality/calibration/Swing.h"
#include "quality/statistics/Statistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tiltpole::quality {
namespace {

using ::quality::kLeastCovered;

constexpr std::size_t kFewest = 10;          // samples of a turn
constexpr std::size_t kMostReadings = 2000;  // of a turn
constexpr double kLeastUpright = 0.7;        // cosine of the mean tilt of the horizontal turn
constexpr double kLeastAlongY = 0.7;         // cosine of the vertical turn's axis from y
constexpr double kMostElevationSpread = 0.1; // of the field; 6 degrees of pitch or roll

constexpr double kStray = 3.0; // times the distance that nine in ten readings keep to

bool AllFinite(const Turn& turn)
{
    for (const Observation& o : turn) {
        if (!o.reading.allFinite() || !o.up.allFinite()) return false;
    }
    return true;
}

Observation ObservationOf(const PoseSensorData& s, int sensorType, Magnetometer which)
{
    return {VectorOf(ReadingOf(s, which)), FrameOf(s.dPitch, s.dRoll, sensorType, which).up};
}

std::vector<Eigen::Vector3d> UpsOf(const Turn& turn)
{
    std::vector<Eigen::Vector3d> ups;
    ups.reserve(turn.size());
    for (const Observation& o : turn)
        ups.push_back(o.up);
    return ups;
}

// Upright in the horizontal turn, all round about y in the vertical one.
bool TiltFollows(const Turn& horizontal, const Turn& vertical)
{
    double upright = 0.0;
    for (const Observation& o : horizontal)
        upright += o.up.z();
    if (upright < kLeastUpright * static_cast<double>(horizontal.size())) return false;

    const std::vector<Eigen::Vector3d> ups = UpsOf(vertical);
    const Plane plane = PlaneThroughOrigin(ups);
    if (std::fabs(plane.normal.y()) < kLeastAlongY) return false;
    return CoveredBy(GapsOf(AnglesAbout(plane.normal, ups))) >= kLeastCovered;
}

JointFitOutcome Fitness(const Turn& horizontal, const Turn& vertical)
{
    if (horizontal.size() < kFewest || vertical.size() < kFewest) {
        return JointFitOutcome::TooFewSamples;
    }
    if (!AllFinite(horizontal) || !AllFinite(vertical)) return JointFitOutcome::NotFinite;
    if (CoveredBy(GapsOfTurn(horizontal, TurnAxis::Horizontal)) < kLeastCovered) {
        return JointFitOutcome::HorizontalIncomplete;
    }
    if (CoveredBy(GapsOfTurn(vertical, TurnAxis::Vertical)) < kLeastCovered) {
        return JointFitOutcome::VerticalIncomplete;
    }
    if (!TiltFollows(horizontal, vertical)) return JointFitOutcome::TiltUnusable;
    return JointFitOutcome::Fitted;
}

// Every n-th reading of a long recording: neighbors share their errors, so the others add little.
Turn Thinned(Turn turn)
{
    const std::size_t step = turn.size() / kMostReadings + 1;
    if (step == 1) return turn;
    Turn thinned;
    for (std::size_t i = 0; i < turn.size(); i += step)
        thinned.push_back(turn[i]);
    return thinned;
}

// Middle of the readings, axis by axis.
Eigen::Vector3d MiddleOf(const Turn& turn)
{
    Eigen::Vector3d middle = Eigen::Vector3d::Zero();
    for (Eigen::Index axis = 0; axis < 3; ++axis) {
        std::vector<double> values;
        values.reserve(turn.size());
        for (const Observation& o : turn)
            values.push_back(o.reading[axis]);
        middle[axis] = Median(std::move(values));
    }
    return middle;
}

// Without readings that no turn in the earth's field gives, such as saturated ones: they would set
// the scale of the fit and the circle of the turn. Up to a tenth of all readings can be such.
Turn WithoutStrays(Turn turn)
{
    if (turn.empty() || !AllFinite(turn)) return turn;
    const Eigen::Vector3d middle = MiddleOf(turn);
    std::vector<double> distances;
    distances.reserve(turn.size());
    for (const Observation& o : turn)
        distances.push_back((o.reading - middle).norm());
    const auto ninth = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() * 9 / 10);
    std::nth_element(distances.begin(), ninth, distances.end());
    const double most = kStray * *ninth;
    std::erase_if(turn, [&](const Observation& o) { return (o.reading - middle).norm() > most; });
    return turn;
}

JointFitOutcome FitOne(const CalibrationTurns& turns, int sensorType, Magnetometer which,
                       SphereFit& result)
{
    const Turn horizontal = Thinned(WithoutStrays(TurnOf(turns.horizontal, sensorType, which)));
    const Turn vertical = Thinned(WithoutStrays(TurnOf(turns.vertical, sensorType, which)));
    const JointFitOutcome fitness = Fitness(horizontal, vertical);
    if (fitness != JointFitOutcome::Fitted) return fitness;

    const std::optional<SphereFit> fit = FitSphere(horizontal, vertical);
    if (!fit) return JointFitOutcome::NoSolution;
    if (fit->elevationSpread > kMostElevationSpread) return JointFitOutcome::TiltUnusable;
    result = *fit;
    return JointFitOutcome::Fitted;
}

// Share of the readings of both turns that a fit does not keep.
double DeniedShare(const SphereFit& fit, const CalibrationTurns& turns, int sensorType,
                   Magnetometer which)
{
    std::ptrdiff_t denied = 0;
    for (const TurnAxis axis : {TurnAxis::Horizontal, TurnAxis::Vertical}) {
        const auto& samples = axis == TurnAxis::Horizontal ? turns.horizontal : turns.vertical;
        denied += std::count_if(samples.begin(), samples.end(), [&](const PoseSensorData& s) {
            return !fit.Keeps(ObservationOf(s, sensorType, which), axis);
        });
    }
    return static_cast<double>(denied)
           / static_cast<double>(turns.horizontal.size() + turns.vertical.size());
}

// Mean over samples of the horizontal turn of what takes A's corrected reading (x, y, z) to B's
// (−(x + dX), −(y + dY), z + dZ).
Incline_MagneticTranslationParameter TranslationOf(const std::vector<PoseSensorData>& horizontal,
                                                   const FullCorrection& a, const FullCorrection& b)
{
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const PoseSensorData& s : horizontal) {
        const Eigen::Vector3d readA = a(VectorOf(ReadingOf(s, Magnetometer::A)));
        const Eigen::Vector3d readB = b(VectorOf(ReadingOf(s, Magnetometer::B)));
        sum +=
            Eigen::Vector3d(-readB.x() - readA.x(), -readB.y() - readA.y(), readB.z() - readA.z());
    }
    sum /= static_cast<double>(horizontal.size());
    return {sum.x(), sum.y(), sum.z()};
}

} // namespace

Turn TurnOf(const std::vector<PoseSensorData>& samples, int sensorType, Magnetometer which)
{
    Turn turn;
    turn.reserve(samples.size());
    for (const PoseSensorData& s : samples)
        turn.push_back(ObservationOf(s, sensorType, which));
    return turn;
}

std::vector<Eigen::Vector2d> InPlane(const Turn& turn, TurnAxis axis)
{
    std::vector<Eigen::Vector2d> points;
    points.reserve(turn.size());
    for (const Observation& o : turn) {
        points.emplace_back(o.reading.x(),
                            axis == TurnAxis::Vertical ? o.reading.z() : o.reading.y());
    }
    return points;
}

std::vector<Gap> GapsOfTurn(const Turn& turn, TurnAxis axis)
{
    const std::vector<Eigen::Vector2d> points = InPlane(turn, axis);
    return GapsOf(AzimuthsAbout(CircleThrough(points), points));
}

JointModel FitBoth(const CalibrationTurns& turns, int sensorType)
{
    JointModel model;
    if (IsSwung(AccelerationOf(turns.horizontal, TurnAxis::Horizontal))
        || IsSwung(AccelerationOf(turns.vertical, TurnAxis::Vertical))) {
        model.outcome = JointFitOutcome::Swung;
        return model;
    }
    const CalibrationTurns steady = WithoutSwing(turns);
    model.outcome = FitOne(steady, sensorType, Magnetometer::A, model.a);
    if (model.outcome == JointFitOutcome::Fitted) {
        model.outcome = FitOne(steady, sensorType, Magnetometer::B, model.b);
    }
    if (model.outcome != JointFitOutcome::Fitted) return model;
    model.a.disturbed = DeniedShare(model.a, steady, sensorType, Magnetometer::A);
    model.b.disturbed = DeniedShare(model.b, steady, sensorType, Magnetometer::B);
    return model;
}

CalibrationTurns KeptBy(const JointModel& model, const CalibrationTurns& turns, int sensorType)
{
    CalibrationTurns kept = WithoutSwing(turns);
    const auto isDenied = [&](const PoseSensorData& s, TurnAxis axis) {
        return !model.a.Keeps(ObservationOf(s, sensorType, Magnetometer::A), axis)
               || !model.b.Keeps(ObservationOf(s, sensorType, Magnetometer::B), axis);
    };
    std::erase_if(kept.horizontal,
                  [&](const PoseSensorData& s) { return isDenied(s, TurnAxis::Horizontal); });
    std::erase_if(kept.vertical,
                  [&](const PoseSensorData& s) { return isDenied(s, TurnAxis::Vertical); });
    return kept;
}

JointFit InEightValues(const JointModel& model, const CalibrationTurns& turns, int sensorType)
{
    JointFit fit;
    fit.outcome = model.outcome;
    if (model.outcome != JointFitOutcome::Fitted) return fit;

    const auto reduce = [sensorType](const SphereFit& full, Magnetometer which,
                                     Incline_MagneticCorrectParameter& values, double& bias,
                                     double& loss) {
        const std::vector<Pose> grid = HeadingGrid(sensorType, which);
        const auto reduced = Reduced(full.correction, full.elevationHorizontal, grid);
        if (!reduced) return false;
        values = reduced->values;
        bias = reduced->biasAngle;
        loss = Compare(FullOf(values), bias, full.correction, full.elevationHorizontal, grid).rms;
        return true;
    };
    ::quality::Calibration& c = fit.calibration;
    if (!reduce(model.a, Magnetometer::A, c.correctionA, c.biasAngleA, fit.lossA)
        || !reduce(model.b, Magnetometer::B, c.correctionB, c.biasAngleB, fit.lossB)) {
        fit.outcome = JointFitOutcome::NoSolution;
        return fit;
    }
    fit.used = KeptBy(model, turns, sensorType);
    if (fit.used.horizontal.empty()) {
        fit.outcome = JointFitOutcome::NoSolution;
        return fit;
    }
    c.translation =
        TranslationOf(fit.used.horizontal, FullOf(c.correctionA), FullOf(c.correctionB));
    return fit;
}

} // namespace tiltpole::quality
