// SPDX-License-Identifier: MIT
#include "field/SpotCalibration.h"

#include "field/occupation/Axes.h"
#include "field/occupation/Region.h"
#include "field/occupation/Track.h"
#include "field/spot/Iron.h"
#include "field/spot/Judgement.h"
#include "field/spot/Motion.h"
#include "survey/Angle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace field {

namespace spot = tiltpole::field::spot;
namespace survey = tiltpole::survey;

using Eigen::Matrix3d;
using Eigen::Vector3d;
using survey::Rad2Deg;
using tiltpole::field::Backward;
using tiltpole::field::Forward;
using tiltpole::field::Iron;
using tiltpole::field::MotionFit;
using tiltpole::field::MotionSetup;
using tiltpole::field::SpotCounts;
using tiltpole::field::SpotEpoch;
using tiltpole::field::SpotReading;
using tiltpole::field::WorldOf;

namespace {

bool IsFinite(const SensorVector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// The columns are what raw unit vectors become.
Matrix3d AxesOf(int sensorType)
{
    Matrix3d axes;
    axes << Forward({1.0, 0.0, 0.0}, sensorType), Forward({0.0, 1.0, 0.0}, sensorType),
        Forward({0.0, 0.0, 1.0}, sensorType);
    return axes;
}

// `first` is where the three unknowns begin.
template <class Matrix>
Vector3d SigmaAt(const Matrix& covariance, int first, double factor)
{
    return (factor * covariance.diagonal().template segment<3>(first)).cwiseSqrt();
}

SpotVector InSensor(const Vector3d& value, const Vector3d& sigma, int sensorType)
{
    const SensorVector turned = Backward(sigma, sensorType);
    return {
        Backward(value, sensorType),
        {std::fabs(turned.x), std::fabs(turned.y), std::fabs(turned.z)}
    };
}

void SetField(SpotMagnetometer& m, const Iron& iron, const Vector3d& field)
{
    m.bias = Rad2Deg(std::atan2(field.y(), field.x()));
    m.strength = field.norm();
    m.dip = Rad2Deg(std::atan2(-field.z(), std::hypot(field.x(), field.y())));
    const Matrix3d covariance = iron.covariance.topLeftCorner<3, 3>();
    const Vector3d along = iron.field.normalized();
    const Vector3d west = Vector3d::UnitZ().cross(along).normalized();
    const Vector3d down = west.cross(along);
    const double level = std::hypot(iron.field.x(), iron.field.y());
    m.strengthSigma = std::sqrt(along.dot(covariance * along));
    m.dipSigma = Rad2Deg(std::sqrt(down.dot(covariance * down)) / iron.field.norm());
    m.biasSigma = Rad2Deg(std::sqrt(west.dot(covariance * west)) / level);
}

SpotMagnetometer MagnetometerOf(const Iron& iron, int which, int sensorType)
{
    SpotMagnetometer m;
    if (!iron.solved) return m;
    m.found = true;
    const Matrix3d axes = AxesOf(sensorType);
    m.hardIron = InSensor(iron.hard, SigmaAt(iron.covariance, 3, 1.0), sensorType);
    const Matrix3d soft = axes.transpose() * iron.soft * axes;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            m.softIron[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                soft(row, column) / soft(0, 0);
    m.softIronSigma = std::sqrt(iron.covariance.diagonal().tail<9>().maxCoeff());
    const auto correction = tiltpole::field::CorrectionOf(iron, axes, which);
    m.correction = correction.values;
    m.residual = iron.residual;
    SetField(m, iron, correction.field);
    return m;
}

// Whether an axis of a magnetometer that has readings always reads the same.
bool IsStuck(const std::vector<SpotReading>& readings, std::size_t which)
{
    std::optional<Vector3d> first;
    std::array<bool, 3> changes{};
    for (const SpotReading& reading : readings) {
        const Vector3d& magnetic = reading.magnetic[which];
        if (magnetic.isZero(0.0)) continue;
        if (!first) first = magnetic;
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (magnetic[static_cast<int>(axis)] != (*first)[static_cast<int>(axis)])
                changes[axis] = true;
    }
    return first && !(changes[0] && changes[1] && changes[2]);
}

// How far the pole was turned about its axis, from one extreme to the other [rad].
double TurnedBy(const std::vector<SpotReading>& readings, const MotionFit& motion)
{
    double angle = 0.0;
    double least = 0.0;
    double most = 0.0;
    for (std::size_t i = 1; i < readings.size(); ++i) {
        const double rate = 0.5 * (readings[i - 1].rate.z() + readings[i].rate.z());
        angle += (rate - motion.State().bias.z()) * (readings[i].time - readings[i - 1].time);
        least = std::min(least, angle);
        most = std::max(most, angle);
    }
    return most - least;
}

// Of the stated variances, which residuals never make smaller: part of the errors they do not show.
double FactorOf(const MotionFit& motion)
{
    return std::fmax(1.0, tiltpole::field::PooledFactor(motion.AntennaMisfit(), motion.Freedom()));
}

void SetMotion(SpotResult& result, const MotionFit& motion, const SpotSetup& setup)
{
    const auto& state = motion.State();
    const auto& covariance = motion.Covariance();
    const double factor = FactorOf(motion);
    const auto sigmaOf = [&covariance, factor](int at) {
        return std::sqrt(factor * covariance(at, at));
    };
    const SensorVector axis = Backward({state.axis.x(), state.axis.y(), 0.0}, setup.sensorType);
    result.axisX = Rad2Deg(std::atan(axis.x));
    result.axisY = Rad2Deg(std::atan(axis.y));
    result.axisSigma = Rad2Deg(std::fmax(sigmaOf(spot::kAxis), sigmaOf(spot::kAxis + 1)));
    const int type = setup.sensorType;
    result.accelerometerBias =
        InSensor(state.force, SigmaAt(covariance, spot::kForce, factor), type);
    result.gyroBias =
        InSensor(survey::kDegreesPerRadian * state.bias,
                 survey::kDegreesPerRadian * SigmaAt(covariance, spot::kBias, factor), type);
    // A scale has no direction: x and y change places, but not their signs.
    result.gyroScale = InSensor(state.scale, SigmaAt(covariance, spot::kScale, factor), type);
    if (survey::AxesOf(type) != survey::SensorAxes::ForwardLeftUp)
        result.gyroScale.value.x = -result.gyroScale.value.x;
    result.sensorHeight = state.height;
    result.sensorHeightSigma = sigmaOf(spot::kHeight);
    result.delay = state.delay;
    result.delaySigma = sigmaOf(spot::kDelay);
    result.leanSpread = Rad2Deg(motion.Spread());
    const Vector3d squares = motion.MeanSquares();
    result.planResidual = std::sqrt(0.5 * (squares.x() + squares.y()));
    result.heightResidual = std::sqrt(squares.z());
    result.varianceFactor = motion.AntennaMisfit() / motion.Freedom();
    result.tipStep = motion.StepOfTip().size;
}

} // namespace

struct SpotCalibration::Memory
{
    SpotSetup setup;
    std::vector<SpotReading> readings;
    std::vector<SpotEpoch> epochs;
    SpotCounts counts;
    xyhCoordinate origin;

    explicit Memory(const SpotSetup& given) : setup(given) {}

    void Solve(SpotResult& result) const;
};

// The length of the pole is first left open, to see whether the track agrees with it.
void SpotCalibration::Memory::Solve(SpotResult& result) const
{
    MotionSetup fit{setup.poleLength, setup.planSigma, setup.heightSigma,
                    tiltpole::field::kWideLength};
    MotionFit open(readings, epochs);
    MotionFit motion(readings, epochs);
    const bool lengthFound = open.Run(fit);
    fit.lengthSigma = setup.poleSigma;
    if (!lengthFound || !motion.Run(fit)) {
        const bool tooFew = open.Epochs() < tiltpole::field::kFewestEpochs;
        result.reason = tooFew ? SpotReason::NoSolution : SpotReason::SensorsContradict;
        return;
    }
    result.hasValues = true;
    const double factor = FactorOf(open);
    result.lengthError = open.State().length;
    result.lengthSigma = std::sqrt(factor * open.Covariance()(spot::kLength, spot::kLength));
    const Vector3d& tip = motion.State().tip;
    result.tip = {origin.x + tip.x(), origin.y - tip.y(), origin.h + tip.z()};
    result.turned = Rad2Deg(TurnedBy(readings, motion));
    SetMotion(result, motion, setup);
    result.a = MagnetometerOf(IronOf(readings, motion, 0), 0, setup.sensorType);
    result.b = MagnetometerOf(IronOf(readings, motion, 1), 1, setup.sensorType);
    result.a.stuck = result.a.found && IsStuck(readings, 0);
    result.b.stuck = result.b.found && IsStuck(readings, 1);
    tiltpole::field::Judge(result, motion, setup.poleLength);
}

SpotCalibration::SpotCalibration(const SpotSetup& setup) : m_memory(std::make_unique<Memory>(setup))
{}
SpotCalibration::~SpotCalibration() = default;
SpotCalibration::SpotCalibration(SpotCalibration&&) noexcept = default;
SpotCalibration& SpotCalibration::operator=(SpotCalibration&&) noexcept = default;

void SpotCalibration::Clear()
{
    *m_memory = Memory(m_memory->setup);
}

bool SpotCalibration::Add(const InertialSample& sample, const SensorVector& magneticB)
{
    Memory& memory = *m_memory;
    if (!std::isfinite(sample.seconds) || !IsFinite(sample.rate) || !IsFinite(sample.acceleration)
        || !IsFinite(sample.magnetic) || !IsFinite(magneticB)) {
        ++memory.counts.notFinite;
        return false;
    }
    if (!memory.readings.empty() && sample.seconds <= memory.readings.back().time) {
        ++memory.counts.late;
        return false;
    }
    if (memory.readings.size() >= tiltpole::field::kMostSpotReadings) {
        memory.counts.tooMany = true;
        return false;
    }
    const int type = memory.setup.sensorType;
    SpotReading reading;
    reading.time = sample.seconds;
    reading.rate = Forward(sample.rate, type) / survey::kDegreesPerRadian;
    reading.force = Forward(sample.acceleration, type);
    if (!sample.disturbed)
        reading.magnetic = {Forward(sample.magnetic, type), Forward(magneticB, type)};
    memory.readings.push_back(reading);
    return true;
}

bool SpotCalibration::Add(const AntennaEpoch& epoch)
{
    Memory& memory = *m_memory;
    if (!std::isfinite(epoch.seconds)
        || !std::isfinite(epoch.position.x + epoch.position.y + epoch.position.h)) {
        ++memory.counts.notFinite;
        return false;
    }
    if (!memory.epochs.empty() && epoch.seconds <= memory.epochs.back().time) {
        ++memory.counts.late;
        return false;
    }
    if (memory.epochs.size() >= tiltpole::field::kMostSpotEpochs) {
        memory.counts.tooMany = true;
        return false;
    }
    if (memory.epochs.empty()) memory.origin = epoch.position;
    memory.epochs.push_back({epoch.seconds, WorldOf(epoch.position) - WorldOf(memory.origin),
                             epoch.planSigma, epoch.heightSigma});
    return true;
}

SpotResult SpotCalibration::Estimate() const
{
    const Memory& memory = *m_memory;
    SpotResult result;
    result.samples = static_cast<int>(memory.readings.size());
    result.epochs = static_cast<int>(memory.epochs.size());
    result.rejected = memory.counts.late + memory.counts.notFinite;
    if (!memory.readings.empty())
        result.seconds = memory.readings.back().time - memory.readings.front().time;
    if (!tiltpole::field::RefusesInput(result, memory.readings, memory.counts))
        memory.Solve(result);
    return result;
}

OccupationSetup WithCalibration(const OccupationSetup& setup, const SpotResult& result)
{
    if (!result.IsUsable()) return setup;
    return tiltpole::field::PriorsBy(setup, result);
}

} // namespace field
