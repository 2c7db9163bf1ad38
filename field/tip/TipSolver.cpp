// SPDX-License-Identifier: MIT
#include "field/tip/TipSolver.h"

#include "field/Digits.h"
#include "field/Geodesy.h"
#include "survey/Angle.h"
#include "survey/Correction.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace tiltpole::field {

using ::field::NorthSource;
using ::field::PoseSample;
using ::field::Setup;
using survey::Magnetometer;
using survey::Point3;
using Code = ::field::Reason::Code;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double LengthOf(const Setup& setup)
{
    return setup.poleLength + setup.phaseCenter;
}

// The lean of pitch and roll [degrees]; NaN where they belong to no pole that stands.
double LeanOf(const CInclineSensor_Position& sensor, const PoseSensorData& pose)
{
    const double sinPitch = std::sin(survey::Deg2Rad(pose.dPitch));
    const double sinRoll = std::sin(survey::Deg2Rad(pose.dRoll));
    const bool slopes = survey::AxesOf(sensor.GetSensorType()) == survey::SensorAxes::ForwardLeftUp;
    const bool stands = std::fabs(pose.dPitch) < 90.0 && std::fabs(pose.dRoll) < 90.0
                        && (!slopes || sinPitch * sinPitch + sinRoll * sinRoll < 1.0);
    return stands ? 90.0 - sensor.GetAngleofPoletoHorizontal(pose.dPitch, pose.dRoll) : kNaN;
}

// The readings of a field without dip whose leveled direction gives this heading at the sample's
// pitch and roll, instead of what the magnetometers read.
void ReadHeading(PoseSensorData& sample, double heading, int sensorType)
{
    constexpr double kStrength = 1000.0; // [counts], of no effect
    const auto pose = survey::PoseOf(sample.dPitch, sample.dRoll);
    const auto level = survey::LevelFrameOf(pose, survey::AxesOf(sensorType));
    const double h = survey::Deg2Rad(heading);
    const Point3 m = kStrength * (std::cos(h) * level.forward - std::sin(h) * level.rightward);
    survey::SetReading(sample, Magnetometer::A, {m.x, m.y, m.z});
    survey::SetReading(sample, Magnetometer::B, {-m.x, -m.y, m.z});
}

// Takes `sample` to the headings and the step of a pose.
Point3 Solved(const Setup& setup, PoseSensorData& sample, std::optional<double> heading,
              double declination, const PoseChange& change)
{
    CInclineSensor_Position sensor = setup.calibration.sensor;
    sensor.SetSensorType(setup.sensorType);
    sample.dPitch += change.pitch;
    sample.dRoll += change.roll;
    if (std::isnan(LeanOf(sensor, sample))) return {kNaN, kNaN, kNaN};

    const PoseSensorData read = sample;
    const bool byModel = setup.north == NorthSource::Model;
    const double turn = (byModel ? declination : 0.0) + change.heading;
    double offsetA = sensor.GetMagneticBiasAngle_A();
    double offsetB = sensor.GetMagneticBiasAngle_B();
    if (heading) {
        sensor.SetMagneticCorrectPar_A({});
        sensor.SetMagneticCorrectPar_B({});
        sensor.SetMagneticTranslationPar({});
        if (byModel) offsetA = 0.0;
        offsetB = offsetA;
        ReadHeading(sample, *heading, setup.sensorType);
    }
    sensor.SetMagneticBiasAngle_A(survey::Wrapped(offsetA - turn));
    sensor.SetMagneticBiasAngle_B(survey::Wrapped(offsetB - turn));
    xyhCoordinate step;
    sensor.Position(sample, LengthOf(setup) + change.length, step);
    survey::SetReading(sample, Magnetometer::A, survey::ReadingOf(read, Magnetometer::A));
    survey::SetReading(sample, Magnetometer::B, survey::ReadingOf(read, Magnetometer::B));
    return survey::PointOf(step);
}

void Add(TipSolution& solution, Code code, std::string text)
{
    solution.reasons.emplace_back().code = code;
    solution.reasons.back().text = std::move(text);
}

// Why the magnetic north of the model is none; notes are added, too.
void JudgeModel(const ::field::Field& model, double decimalYear, TipSolution& solution)
{
    if (std::isnan(decimalYear)) {
        Add(solution, Code::NoNorth, "the date is not known, and the declination depends on it");
    } else if (std::isnan(model.declination)) {
        Add(solution, Code::NoNorth,
            "the magnetic model holds from " + FixedText(::field::kFieldModelBegins, 1) + " to "
                + FixedText(::field::kFieldModelEnds, 1) + ", not in " + FixedText(decimalYear, 1));
    } else if (model.horizontal < kLeastHorizontal) {
        Add(solution, Code::NoNorth,
            "the horizontal field has " + FixedText(model.horizontal, 0) + " nT, a heading needs "
                + FixedText(kLeastHorizontal, 0));
    } else if (model.horizontal < kUsualHorizontal) {
        Add(solution, Code::WeakField,
            "the horizontal field has only " + FixedText(model.horizontal, 0)
                + " nT: headings are uncertain");
    }
}

void JudgeNorth(const Setup& setup, const ::field::Epoch& epoch, double decimalYear,
                TipSolution& solution)
{
    if (std::fabs(epoch.antenna.latitude) > kTipLatitude)
        Add(solution, Code::NoNorth,
            "latitude " + FixedText(epoch.antenna.latitude, 2) + " is beyond "
                + FixedText(kTipLatitude, 0));
    else if (setup.north == NorthSource::Model)
        JudgeModel(solution.model, decimalYear, solution);
}

// Whether the corrected reading of magnetometer A has a horizontal part.
bool PointsSomewhere(const Setup& setup, const PoseSensorData& pose)
{
    const survey::Reading raw = survey::ReadingOf(pose, Magnetometer::A);
    if (raw.x == 0.0 && raw.y == 0.0 && raw.z == 0.0) return false;
    const auto level =
        survey::Levelled(survey::PoseOf(pose.dPitch, pose.dRoll),
                         survey::Corrected(setup.calibration.sensor.GetMagneticCorrectPar_A(), raw),
                         survey::AxesOf(setup.sensorType));
    const double horizontal = std::hypot(level.forward, level.rightward);
    return std::isfinite(horizontal) && horizontal > 0.0;
}

void JudgeHeading(const Setup& setup, const PoseSample& pose, TipSolution& solution)
{
    if (pose.heading) {
        if (!std::isfinite(*pose.heading))
            Add(solution, Code::NoHeading, "the sensor's heading is no number");
    } else if (!setup.calibration.complete) {
        Add(solution, Code::NoCalibration, "the magnetometers have no complete calibration");
    } else if (!PointsSomewhere(setup, pose.data)) {
        Add(solution, Code::NoHeading, "the magnetometer shows no direction");
    }
}

bool IsKnown(const ::field::Geodetic& place)
{
    return std::fabs(place.latitude) <= 90.0 && std::isfinite(place.longitude)
           && std::isfinite(place.ellipsoidalHeight);
}

// The same azimuth in [0, 360), of one in [-180, 540].
double WithinTurn(double azimuth)
{
    const double positive = survey::AdjustedAzimuth(azimuth);
    return positive < 360.0 ? positive : 0.0;
}

// Of the direction from tip to antenna [degrees]; 0 for a plumb pole.
double AzimuthOfLean(const Point3& step)
{
    if (step.x == 0.0 && step.y == 0.0) return 0.0;
    return WithinTurn(survey::Rad2Deg(std::atan2(-step.y, -step.x)));
}

bool Forbids(const TipSolution& solution)
{
    for (const ::field::Reason& reason : solution.reasons)
        if (reason.code != Code::WeakField) return true;
    return false;
}

} // namespace

TipSolver::TipSolver(const Setup& setup) : m_setup(setup) {}

Point3 TipSolver::Step(const PoseSample& pose, double declination, const PoseChange& change) const
{
    PoseSensorData sample = pose.data;
    return Solved(m_setup, sample, pose.heading, declination, change);
}

TipSolution TipSolver::Solve(const ::field::Epoch& epoch, const PoseSample& pose,
                             double decimalYear) const
{
    TipSolution solution;
    CInclineSensor_Position sensor;
    sensor.SetSensorType(m_setup.sensorType);
    solution.lean = LeanOf(sensor, pose.data);
    solution.drop = LengthOf(m_setup) * std::cos(survey::Deg2Rad(solution.lean));
    solution.model = ::field::MagneticFieldAt(epoch.antenna, decimalYear);
    if (std::isnan(solution.lean))
        Add(solution, Code::NoPose, "pitch and roll are those of no standing pole");
    if (!IsKnown(epoch.antenna)) Add(solution, Code::NoFix, "the receiver's position is none");
    if (!solution.reasons.empty()) return solution;
    JudgeNorth(m_setup, epoch, decimalYear, solution);
    JudgeHeading(m_setup, pose, solution);
    if (Forbids(solution)) return solution;

    ::field::Tip tip;
    tip.epoch = epoch;
    tip.pose = pose;
    tip.tilt = solution.lean;
    tip.declination = m_setup.north == NorthSource::Model ? solution.model.declination : kNaN;
    const Point3 step = Solved(m_setup, tip.pose.data, pose.heading, tip.declination, {});
    tip.position = ::field::Offset(epoch.antenna, step.x, step.y, step.z);
    tip.azimuthTrue = AzimuthOfLean(step);
    tip.headingTrue = WithinTurn(tip.pose.data.dYaw);
    solution.tip = std::move(tip);
    return solution;
}

} // namespace tiltpole::field
