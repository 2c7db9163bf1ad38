// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"

#include "positioning/detail/Heading.h"
#include "positioning/detail/Spheres.h"
#include "positioning/detail/Tilt.h"
#include "positioning/detail/Tip.h"
#include "survey/Angle.h"
#include "survey/Correction.h"
#include "survey/SensorAxes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace positioning = tiltpole::positioning;
namespace survey = tiltpole::survey;
using survey::Magnetometer;

namespace {

constexpr double kPlumb = 1e-6;           // [rad], each tilt angle
constexpr double kStillField = 1000.0;    // [counts], sum over the axes
constexpr double kStillTilt = 0.5;        // [degrees], pitch and roll each
constexpr double kUndisturbed = 300.0;    // [counts], sum over the axes
constexpr double kProjectBase = 180.0;    // [degrees]
constexpr double kShortestLine2 = 1e-6;   // [m²]
constexpr double kLargestUsualBias = 1e3; // [degrees]; beyond, headings lose digits
constexpr double kMountingAngleB = 0.0;   // [rad], of magnetometer B about the pole

// What `filter` remembers, for all objects together.
struct Smoothing
{
    int counter = 0;
    double previous[2] = {0.0, 0.0};
};
Smoothing smoothing;

// Down the pole from the antenna by its elevation and the azimuth of its projection [rad].
xyhCoordinate DownThePole(const xyhCoordinate& antenna, double length, double elevation,
                          double azimuth)
{
    const double level = length * std::cos(elevation);
    return {antenna.x + level * std::cos(azimuth), antenna.y + level * std::sin(azimuth),
            antenna.h - length * std::sin(elevation)};
}

// The same by a way down, the heading given by the field. False, with `point` as it was, where
// either is not to be trusted.
inline bool StepDown(const positioning::WayDown& way, const survey::LevelledField& field,
                     const survey::Rotation& bias, double length, xyhCoordinate& point)
{
    const double strength =
        std::sqrt(field.forward * field.forward + field.rightward * field.rightward);
    const survey::Rotation north = survey::Rotation{field.forward, -field.rightward} + bias;
    const double scale = length / strength;
    const survey::Rotation azimuth = north + way.level;
    if (!(way.trusted && positioning::IsUsualStrength(strength) && !std::isnan(bias.cos)))
        return false;
    point.x += scale * azimuth.cos;
    point.y += scale * azimuth.sin;
    point.h -= length * way.down;
    return true;
}

} // namespace

void CInclineSensor_Position::SetMagneticBiasAngle_A(double angle)
{
    m_dMagneticBiasAngle_A = angle;
    const bool usual = std::fabs(angle) <= kLargestUsualBias;
    const double radians =
        usual ? survey::Deg2Rad(angle) : std::numeric_limits<double>::quiet_NaN();
    m_dCosBiasAngle_A = std::cos(radians);
    m_dSinBiasAngle_A = std::sin(radians);
}

int CInclineSensor_Position::Position(PoseSensorData& sample, double poleLength,
                                      xyhCoordinate& point)
{
    switch (m_nSensorType) {
    case survey::kForwardLeftUpType:
        return PositionOfType<survey::kForwardLeftUpType>(sample, poleLength, point);
    case survey::kTurnedProjectionType:
        return PositionOfType<survey::kTurnedProjectionType>(sample, poleLength, point);
    default:
        return PositionOfType<survey::kRightForwardUpType>(sample, poleLength, point);
    }
}

// CalculateYaw_A, CalculateYaw_B and the tip on corrected readings that the sample never sees.
// Arithmetic comes first, then the arc functions, then what is made of them: none waits for
// another. Where a last digit decides, the formulas are evaluated one by one.
template <int SensorType>
int CInclineSensor_Position::PositionOfType(PoseSensorData& sample, double poleLength,
                                            xyhCoordinate& point)
{
    const survey::Pose pose = survey::PoseOf(sample.dPitch, sample.dRoll);
    const survey::Reading a =
        survey::Corrected(m_MagneticCorrectPar_A, survey::ReadingOf(sample, Magnetometer::A));
    const survey::Reading b =
        survey::Corrected(m_MagneticCorrectPar_B, survey::ReadingOf(sample, Magnetometer::B));
    JudgeStillness(a, sample.dPitch, sample.dRoll);
    JudgeInterference(a, b);

    const survey::LevelledField fieldA = survey::Levelled(pose, a, survey::AxesOf(SensorType));
    const survey::LevelledField fieldB =
        positioning::LevelledOfB(pose, b, survey::AxesOf(SensorType));
    const double v = SensorType == survey::kForwardLeftUpType ? sample.dRoll : sample.dPitch;
    const positioning::WayDown way = positioning::WayDownOf(pose, v, SensorType);
    if (!StepDown(way, fieldA, {m_dCosBiasAngle_A, -m_dSinBiasAngle_A}, poleLength, point))
        [[unlikely]]
        return PositionByFormulas(sample, poleLength, point);
    KeepProjection(sample.dPitch, sample.dRoll, m_nSensorType);

    const double azimuthA = positioning::QuickHeadingOf(fieldA);
    const double azimuthB = positioning::QuickHeadingOf(fieldB);
    const double tiltDirection = Rad2Deg(std::acos(way.cosK3));
    sample.dYaw = survey::AdjustedAzimuth(LessBias_A(azimuthA));
    sample.dYaw_2 = survey::AdjustedAzimuth(LessBias_B(azimuthB));
    sample.dYaw_Y = survey::AdjustedAzimuth(sample.dYaw - tiltDirection);
    const bool within = survey::IsWithinTurn(sample.dYaw) && survey::IsWithinTurn(sample.dYaw_2)
                        && survey::IsWithinTurn(sample.dYaw_Y);
    if (!within) [[unlikely]]
        HeadingsByFormulas(sample);
    return 1;
}

void CInclineSensor_Position::HeadingsByFormulas(PoseSensorData& sample) const
{
    PoseSensorData corrected = sample;
    MagneticModify(m_MagneticCorrectPar_A, corrected, 1);
    MagneticModify(m_MagneticCorrectPar_B, corrected, 0);
    FillHeadings_A(corrected);
    sample.dYaw = corrected.dYaw;
    sample.dYaw_Y = corrected.dYaw_Y;
    sample.dYaw_2 = Heading(corrected, 0);
}

int CInclineSensor_Position::PositionByFormulas(PoseSensorData& sample, double poleLength,
                                                xyhCoordinate& point)
{
    HeadingsByFormulas(sample);
    double first = sample.dPitch;
    double second = sample.dRoll;
    GetTiltAngle(first, second);
    if (std::fabs(first) < kPlumb && std::fabs(second) < kPlumb) {
        point.h -= poleLength;
        return 1;
    }
    return Position_Geometry_A(point, sample, poleLength, point);
}

int CInclineSensor_Position::Position_Geometry_A(xyhCoordinate antenna, PoseSensorData sample,
                                                 double poleLength, xyhCoordinate& tip)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(sample.dPitch, sample.dRoll));
    const double azimuth =
        Deg2Rad(GetAngleofPoleProject(sample.dPitch, sample.dRoll, sample.dYaw, 1));
    tip = DownThePole(antenna, poleLength, t, azimuth);
    return 1;
}

int CInclineSensor_Position::Position_Geometry_B(xyhCoordinate antenna, PoseSensorData sample,
                                                 double poleLength, xyhCoordinate& tip)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(-sample.dPitch, -sample.dRoll));
    const double azimuth =
        Deg2Rad(GetAngleofPoleProject(-sample.dPitch, -sample.dRoll, sample.dYaw_2, 0));
    tip = DownThePole(antenna, poleLength, t, azimuth);
    return 1;
}

int CInclineSensor_Position::Position_Math(xyhCoordinate /*antenna*/, PoseSensorData sample,
                                           double /*poleLength*/, xyhCoordinate& /*tip*/) const
{
    GetTiltAngle(sample.dPitch, sample.dRoll);
    return 1;
}

double CInclineSensor_Position::HeadingByType(const PoseSensorData& sample, int useA,
                                              int sensorType) const
{
    const survey::Pose pose = survey::PoseOf(sample.dPitch, sample.dRoll);
    const survey::LevelledField field =
        useA ? survey::Levelled(pose, survey::ReadingOf(sample, Magnetometer::A),
                                survey::AxesOf(sensorType))
             : positioning::LevelledOfB(pose, survey::ReadingOf(sample, Magnetometer::B),
                                        survey::AxesOf(sensorType));
    const double azimuth = positioning::HeadingOf(field);
    return survey::AdjustedAzimuth(useA ? LessBias_A(azimuth) : LessBias_B(azimuth));
}

double CInclineSensor_Position::CalculateYaw_ADI(const PoseSensorData& sample, int useA) const
{
    return HeadingByType(sample, useA, survey::kForwardLeftUpType);
}

double CInclineSensor_Position::CalculateYaw_SCA(const PoseSensorData& sample, int useA) const
{
    return HeadingByType(sample, useA, survey::kRightForwardUpType);
}

// Normalised where it is formed and again here: two steps in all
// (Heading.IsNormalisedByTwoStepsAtMost).
double CInclineSensor_Position::Heading(const PoseSensorData& sample, int useA) const
{
    const bool first = m_nSensorType == survey::kForwardLeftUpType;
    return survey::AdjustedAzimuth(first ? CalculateYaw_ADI(sample, useA)
                                         : CalculateYaw_SCA(sample, useA));
}

int CInclineSensor_Position::CalculateYaw_A(PoseSensorData& sample)
{
    MagneticModify(m_MagneticCorrectPar_A, sample, 1);
    JudgeStillness(survey::ReadingOf(sample, Magnetometer::A), sample.dPitch, sample.dRoll);
    FillHeadings_A(sample);
    return 1;
}

void CInclineSensor_Position::FillHeadings_A(PoseSensorData& corrected) const
{
    double u = corrected.dPitch;
    double v = corrected.dRoll;
    GetTiltAngle(u, v);
    const double tiltDirection = Rad2Deg(ACOS(positioning::TiltDirectionCosine(u, v)));
    corrected.dYaw = Heading(corrected, 1);
    corrected.dYaw_Y = survey::AdjustedAzimuth(corrected.dYaw - tiltDirection);
}

int CInclineSensor_Position::CalculateYaw_B(PoseSensorData& sample)
{
    MagneticModify(m_MagneticCorrectPar_B, sample, 0);
    JudgeInterference(survey::ReadingOf(sample, Magnetometer::A),
                      survey::ReadingOf(sample, Magnetometer::B));
    sample.dYaw_2 = Heading(sample, 0);
    return 1;
}

void CInclineSensor_Position::MagneticModify(const Incline_MagneticCorrectParameter& par,
                                             PoseSensorData& sample, int useA) const
{
    if (useA)
        survey::SetReading(sample, Magnetometer::A,
                           survey::Corrected(par, survey::ReadingOf(sample, Magnetometer::A)));
    else
        survey::SetReading(sample, Magnetometer::B,
                           survey::Corrected(par, survey::ReadingOf(sample, Magnetometer::B)));
}

void CInclineSensor_Position::JudgeStillness(const survey::Reading& a, double pitch, double roll)
{
    const survey::Reading last{m_dLastMag_x, m_dLastMag_y, m_dLastMag_z};
    if (std::fabs(roll - m_dLastRoll) <= kStillTilt && std::fabs(pitch - m_dLastPitch) <= kStillTilt
        && survey::SumOfDifferences(a, last) <= kStillField) {
        m_bStationary = 1; // the reference stays, so slow drift adds up against it
        return;
    }
    m_dLastMag_x = a.x;
    m_dLastMag_y = a.y;
    m_dLastMag_z = a.z;
    m_dLastPitch = pitch;
    m_dLastRoll = roll;
    m_bStationary = 0;
}

void CInclineSensor_Position::JudgeInterference(const survey::Reading& a, const survey::Reading& b)
{
    const survey::Reading expected{-(a.x + m_MagneticTranslationPar.dX),
                                   -(a.y + m_MagneticTranslationPar.dY),
                                   a.z + m_MagneticTranslationPar.dZ};
    m_bMagneticInterference = survey::SumOfDifferences(expected, b) > kUndisturbed ? 1 : 0;
}

double CInclineSensor_Position::LessBias_A(double azimuth) const
{
    return azimuth - m_dMagneticBiasAngle_A;
}

double CInclineSensor_Position::LessBias_B(double azimuth) const
{
    return azimuth - m_dMagneticBiasAngle_B + Rad2Deg(kMountingAngleB);
}

int CInclineSensor_Position::ConverseYaw(double x, double y, double& yaw, double& yawOpposite) const
{
    yaw = survey::AdjustedAzimuth(Rad2Deg(std::atan2(y, x)) - ProjectionAngle());
    yawOpposite = survey::AdjustedAzimuth(yaw - 180.0);
    return 1;
}

double CInclineSensor_Position::ConverseYaw_True(double dx, double dy) const
{
    return survey::AzimuthOf(dx, dy);
}

double CInclineSensor_Position::GetAngleofPoletoHorizontal(double pitch, double roll) const
{
    const double p = Deg2Rad(pitch);
    const double r = Deg2Rad(roll);
    double lean = 0.0;
    if (m_nSensorType == survey::kForwardLeftUpType) {
        lean = ASIN(std::sqrt(std::sin(r) * std::sin(r) + std::sin(p) * std::sin(p)));
    } else {
        lean = ACOS(std::cos(p) * std::cos(r));
        if (lean > survey::kHalfPi) lean = survey::kPi - lean;
    }
    return Rad2Deg(survey::kHalfPi - lean);
}

double CInclineSensor_Position::GetAngleofPoleProject(double pitch, double roll, double heading,
                                                      int store)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(pitch, roll));
    double u = pitch;
    double v = roll;
    GetTiltAngle(u, v);
    double k1 = Rad2Deg(ACOS(std::tan(t) * std::tan(u)));
    if (v > 0.0) k1 = -k1;

    double azimuth = heading + k1;
    if (m_nSensorType == survey::kTurnedProjectionType) {
        const double k3 = Rad2Deg(ACOS(-std::tan(u) * std::tan(v)));
        azimuth = heading + k3 + k1;
    }
    AdjustAzimuth(azimuth);
    if (store) KeepProjection(k1);
    return azimuth;
}

void CInclineSensor_Position::KeepProjection(double angle)
{
    m_dProjectAngle = angle;
    m_dProjectBase = kProjectBase;
    m_bProjectByPose = 0;
}

void CInclineSensor_Position::KeepProjection(double pitch, double roll, int sensorType)
{
    m_dProjectPitch = pitch;
    m_dProjectRoll = roll;
    m_nProjectSensorType = sensorType;
    m_dProjectBase = kProjectBase;
    m_bProjectByPose = 1;
}

double CInclineSensor_Position::ProjectionAngle() const
{
    if (!m_bProjectByPose) return m_dProjectAngle;
    CInclineSensor_Position then;
    then.SetSensorType(m_nProjectSensorType);
    then.GetAngleofPoleProject(m_dProjectPitch, m_dProjectRoll, 0.0, 1);
    return then.m_dProjectAngle;
}

void CInclineSensor_Position::filter(double* const values, int n, int reset)
{
    if (reset) smoothing = {};
    const double weight = std::min(n, smoothing.counter);
    for (int i = 0; i < 2; ++i) {
        values[i] = (values[i] + smoothing.previous[i] * weight) / (weight + 1.0);
        smoothing.previous[i] = values[i];
    }
    if (smoothing.counter <= n && smoothing.counter < std::numeric_limits<int>::max())
        ++smoothing.counter;
}

double CInclineSensor_Position::Deg2Rad(double degrees) const
{
    return survey::Deg2Rad(degrees);
}

double CInclineSensor_Position::Rad2Deg(double radians) const
{
    return survey::Rad2Deg(radians);
}

double CInclineSensor_Position::ASIN(double value) const
{
    return survey::ArcSine(value);
}

double CInclineSensor_Position::ACOS(double value) const
{
    return survey::ArcCosine(value);
}

void CInclineSensor_Position::AdjustAzimuth(double& azimuth) const
{
    azimuth = survey::AdjustedAzimuth(azimuth);
}

void CInclineSensor_Position::GetTiltAngle(double& first, double& second) const
{
    const double pitch = Deg2Rad(first);
    const double roll = Deg2Rad(second);
    if (m_nSensorType == survey::kForwardLeftUpType) {
        first = pitch;
        second = roll;
        return;
    }
    first = -ASIN(std::cos(pitch) * std::sin(roll));
    second = pitch;
}

xyhCoordinate CInclineSensor_Position::GetInclinePoint(xyhCoordinate point, double length,
                                                       double elevation, double azimuth) const
{
    const double alpha = Deg2Rad(elevation);
    const double beta = Deg2Rad(azimuth);
    return {point.x - length * std::cos(alpha) * std::cos(beta),
            point.y - length * std::cos(alpha) * std::sin(beta),
            point.h - length * std::sin(alpha)};
}

double CInclineSensor_Position::GetDistance(xyhCoordinate p, xyhCoordinate q) const
{
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    const double dh = p.h - q.h;
    const double square = dx * dx + dy * dy + dh * dh;
    return square <= kShortestLine2 ? 0.0 : std::sqrt(square);
}

int CInclineSensor_Position::GetSolvePoint(xyhCoordinate p1, xyhCoordinate p2, xyhCoordinate p3,
                                           double r1, double r2, double r3,
                                           xyhCoordinate& result) const
{
    return positioning::LowerMeetingPoint({p1, r1}, {p2, r2}, {p3, r3}, result) ? 1 : 0;
}
