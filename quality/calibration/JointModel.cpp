// SPDX-License-Identifier: MIT
#include "quality/calibration/JointModel.h"

#include "quality/calibration/EightValues.h"

#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr std::size_t kFewest = 10;          // samples of a turn
constexpr std::size_t kMostReadings = 2000;  // of a turn
constexpr double kLeastUpright = 0.7;        // cosine of the mean tilt of the horizontal turn
constexpr double kLeastAlongY = 0.7;         // cosine of the vertical turn's axis from y
constexpr double kMostElevationSpread = 0.1; // of the field; 6 degrees of pitch or roll

bool AllFinite(const Turn& turn)
{
    for (const Observation& o : turn) {
        if (!o.reading.allFinite() || !o.up.allFinite()) return false;
    }
    return true;
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
    const Plane plane = PlaneThrough(ups, true);
    if (std::fabs(plane.normal.y()) < kLeastAlongY) return false;
    return CoveredBy(GapsOf(AnglesAbout(plane.normal, ups))) >= ::quality::kLeastCovered;
}

::quality::JointFitOutcome Fitness(const Turn& horizontal, const Turn& vertical)
{
    if (horizontal.size() < kFewest || vertical.size() < kFewest) {
        return ::quality::JointFitOutcome::TooFewSamples;
    }
    if (!AllFinite(horizontal) || !AllFinite(vertical))
        return ::quality::JointFitOutcome::NotFinite;
    if (CoveredBy(GapsOfTurn(horizontal, false)) < ::quality::kLeastCovered) {
        return ::quality::JointFitOutcome::HorizontalIncomplete;
    }
    if (CoveredBy(GapsOfTurn(vertical, true)) < ::quality::kLeastCovered) {
        return ::quality::JointFitOutcome::VerticalIncomplete;
    }
    if (!TiltFollows(horizontal, vertical)) return ::quality::JointFitOutcome::TiltUnusable;
    return ::quality::JointFitOutcome::Fitted;
}

// Every n-th reading of a long recording, which tells as much as all of them.
Turn Thinned(Turn turn)
{
    const std::size_t step = turn.size() / kMostReadings + 1;
    if (step == 1) return turn;
    Turn thinned;
    for (std::size_t i = 0; i < turn.size(); i += step)
        thinned.push_back(turn[i]);
    return thinned;
}

::quality::JointFitOutcome FitOne(const ::quality::CalibrationTurns& turns, int sensorType,
                                  Magnetometer which, SphereFit& result)
{
    const Turn horizontal = Thinned(TurnOf(turns.horizontal, sensorType, which));
    const Turn vertical = Thinned(TurnOf(turns.vertical, sensorType, which));
    const ::quality::JointFitOutcome fitness = Fitness(horizontal, vertical);
    if (fitness != ::quality::JointFitOutcome::Fitted) return fitness;

    const std::optional<SphereFit> fit = FitSphere(horizontal, vertical);
    if (!fit) return ::quality::JointFitOutcome::NoSolution;
    if (fit->elevationSpread > kMostElevationSpread)
        return ::quality::JointFitOutcome::TiltUnusable;
    result = *fit;
    return ::quality::JointFitOutcome::Fitted;
}

// B is expected at (−(x + dX), −(y + dY), z + dZ) of A: means over the horizontal turn.
Incline_MagneticTranslationParameter TranslationOf(const std::vector<PoseSensorData>& horizontal,
                                                   const FullCorrection& a, const FullCorrection& b)
{
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const PoseSensorData& s : horizontal) {
        const Eigen::Vector3d readA = a({s.dMag_x, s.dMag_y, s.dMag_z});
        const Eigen::Vector3d readB = b({s.dMag_x_2, s.dMag_y_2, s.dMag_z_2});
        sum +=
            Eigen::Vector3d(-readB.x() - readA.x(), -readB.y() - readA.y(), readB.z() - readA.z());
    }
    sum /= static_cast<double>(horizontal.size());
    return {sum.x(), sum.y(), sum.z()};
}

} // namespace

Observation ObservationOf(const PoseSensorData& s, int sensorType, Magnetometer which)
{
    const Eigen::Vector3d reading = which == Magnetometer::A
                                        ? Eigen::Vector3d(s.dMag_x, s.dMag_y, s.dMag_z)
                                        : Eigen::Vector3d(s.dMag_x_2, s.dMag_y_2, s.dMag_z_2);
    return {reading, FrameOf(s.dPitch, s.dRoll, sensorType, which).up};
}

Turn TurnOf(const std::vector<PoseSensorData>& samples, int sensorType, Magnetometer which)
{
    Turn turn;
    turn.reserve(samples.size());
    for (const PoseSensorData& s : samples)
        turn.push_back(ObservationOf(s, sensorType, which));
    return turn;
}

std::vector<Eigen::Vector2d> InPlane(const Turn& turn, bool vertical)
{
    std::vector<Eigen::Vector2d> points;
    points.reserve(turn.size());
    for (const Observation& o : turn) {
        points.emplace_back(o.reading.x(), vertical ? o.reading.z() : o.reading.y());
    }
    return points;
}

std::vector<Gap> GapsOfTurn(const Turn& turn, bool vertical)
{
    const std::vector<Eigen::Vector2d> points = InPlane(turn, vertical);
    return GapsOf(AzimuthsAbout(CircleThrough(points), points));
}

JointModel FitBoth(const ::quality::CalibrationTurns& turns, int sensorType)
{
    JointModel model;
    model.outcome = FitOne(turns, sensorType, Magnetometer::A, model.a);
    if (model.outcome == ::quality::JointFitOutcome::Fitted) {
        model.outcome = FitOne(turns, sensorType, Magnetometer::B, model.b);
    }
    return model;
}

::quality::JointFit InEightValues(const JointModel& model, const ::quality::CalibrationTurns& turns,
                                  int sensorType)
{
    ::quality::JointFit fit;
    fit.outcome = model.outcome;
    if (model.outcome != ::quality::JointFitOutcome::Fitted) return fit;

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
        fit.outcome = ::quality::JointFitOutcome::NoSolution;
        return fit;
    }
    c.translation = TranslationOf(turns.horizontal, FullOf(c.correctionA), FullOf(c.correctionB));
    return fit;
}

} // namespace tiltpole::quality
