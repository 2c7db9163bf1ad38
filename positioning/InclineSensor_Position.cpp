// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"

#include "positioning/detail/Heading.h"
#include "positioning/detail/Measure.h"
#include "positioning/detail/Spheres.h"
#include "positioning/detail/Tilt.h"
#include "survey/Angle.h"
#include "survey/Correction.h"
#include "survey/Point.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace positioning = tiltpole::positioning;
namespace survey = tiltpole::survey;
using survey::Magnetometer;

namespace {

constexpr double kStillField = 1000.0;    // [counts], sum over the axes
constexpr double kStillTilt = 0.5;        // [degrees], pitch and roll each
constexpr double kUndisturbed = 300.0;    // [counts], sum over the axes
constexpr double kProjectBase = 180.0;    // [degrees]
constexpr double kShortestLine2 = 1e-6;   // [m²]
constexpr double kLargestUsualBias = 1e3; // [degrees]; headings lose digits beyond it

// The state of `filter`, shared by all objects.
struct Smoothing
{
    int counter = 0;
    double previous[2] = {0.0, 0.0};
};
Smoothing smoothing;

Magnetometer MagnetometerOf(int useA)
{
    return useA ? Magnetometer::A : Magnetometer::B;
}

positioning::Measured MeasureAtOnce(int sensorType, const survey::Pose& pose,
                                    const positioning::Observation& sample)
{
    switch (sensorType) {
    case survey::kForwardLeftUpType:
        return positioning::MeasureAtOnce<survey::kForwardLeftUpType>(pose, sample);
    case survey::kTurnedProjectionType:
        return positioning::MeasureAtOnce<survey::kTurnedProjectionType>(pose, sample);
    default:
        return positioning::MeasureAtOnce<survey::kRightForwardUpType>(pose, sample);
    }
}

// The sign of a zero included, which a sine keeps.
bool IsSameNumber(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void Fill(PoseSensorData& sample, const positioning::Measured& measured)
{
    sample.dYaw = measured.headingA;
    sample.dYaw_2 = measured.headingB;
    sample.dYaw_Y = measured.headingLessTilt;
}

xyhCoordinate Moved(const xyhCoordinate& antenna, const survey::Point3& step)
{
    return survey::RecordOf<xyhCoordinate>(survey::PointOf(antenna) + step);
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

inline positioning::Observation CInclineSensor_Position::Observe(const PoseSensorData& sample,
                                                                 double length) const
{
    return {
        sample.dPitch,
        sample.dRoll,
        survey::Corrected(m_MagneticCorrectPar_A, survey::ReadingOf(sample, Magnetometer::A)),
        survey::Corrected(m_MagneticCorrectPar_B, survey::ReadingOf(sample, Magnetometer::B)),
        {m_dMagneticBiasAngle_A, m_dMagneticBiasAngle_B, {m_dCosBiasAngle_A, m_dSinBiasAngle_A}},
        length
    };
}

// Observes the sample again: passing on the observation of Position would keep it out of registers.
positioning::Measured CInclineSensor_Position::MeasureByFormulas(const PoseSensorData& sample,
                                                                 double length,
                                                                 positioning::Trust trust,
                                                                 survey::Point3 step) const
{
    positioning::Measured exact =
        positioning::MeasureByFormulas(m_nSensorType, Observe(sample, length));
    if (trust == positioning::Trust::Step) exact.step = step;
    return exact;
}

int CInclineSensor_Position::Position(PoseSensorData& sample, double poleLength,
                                      xyhCoordinate& point)
{
    const survey::Pose pose = survey::PoseOf(sample.dPitch, sample.dRoll);
    const positioning::Observation observed = Observe(sample, poleLength);
    JudgeStillness(observed.a, observed.pitch, observed.roll);
    JudgeInterference(observed.a, observed.b);

    positioning::Measured measured = MeasureAtOnce(m_nSensorType, pose, observed);
    if (measured.trust != positioning::Trust::Everything) [[unlikely]]
        measured = MeasureByFormulas(sample, poleLength, measured.trust, measured.step);
    Fill(sample, measured);
    if (measured.leans) Keep(sample);
    point = Moved(point, measured.step);
    return 1;
}

int CInclineSensor_Position::Position_Geometry_A(xyhCoordinate antenna, PoseSensorData sample,
                                                 double poleLength, xyhCoordinate& tip)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(sample.dPitch, sample.dRoll));
    const double azimuth =
        Deg2Rad(GetAngleofPoleProject(sample.dPitch, sample.dRoll, sample.dYaw, 1));
    tip = Moved(antenna, positioning::StepOf(poleLength, t, azimuth));
    return 1;
}

int CInclineSensor_Position::Position_Geometry_B(xyhCoordinate antenna, PoseSensorData sample,
                                                 double poleLength, xyhCoordinate& tip)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(-sample.dPitch, -sample.dRoll));
    const double azimuth =
        Deg2Rad(GetAngleofPoleProject(-sample.dPitch, -sample.dRoll, sample.dYaw_2, 0));
    tip = Moved(antenna, positioning::StepOf(poleLength, t, azimuth));
    return 1;
}

int CInclineSensor_Position::Position_Math(xyhCoordinate /*antenna*/, PoseSensorData sample,
                                           double /*poleLength*/, xyhCoordinate& /*tip*/) const
{
    GetTiltAngle(sample.dPitch, sample.dRoll);
    return 1;
}

// The pose that CalculateYaw_A left, if it is that of the sample.
survey::Pose CInclineSensor_Position::PoseOf(const PoseSensorData& sample) const
{
    if (!IsSameNumber(sample.dPitch, m_dPosePitch) || !IsSameNumber(sample.dRoll, m_dPoseRoll))
        return survey::PoseOf(sample.dPitch, sample.dRoll);
    return {m_dSinPitch,
            m_dCosPitch,
            m_dSinRoll,
            m_dCosRoll,
            m_dSinPitch * m_dSinRoll,
            m_dSinPitch * m_dCosRoll};
}

survey::Pose CInclineSensor_Position::KeepPose(const PoseSensorData& sample)
{
    const survey::Pose pose = survey::PoseOf(sample.dPitch, sample.dRoll);
    m_dPosePitch = sample.dPitch;
    m_dPoseRoll = sample.dRoll;
    m_dSinPitch = pose.sinPitch;
    m_dCosPitch = pose.cosPitch;
    m_dSinRoll = pose.sinRoll;
    m_dCosRoll = pose.cosRoll;
    return pose;
}

double CInclineSensor_Position::HeadingByAxes(const PoseSensorData& sample, Magnetometer which,
                                              survey::SensorAxes axes) const
{
    const double bias = which == Magnetometer::A ? m_dMagneticBiasAngle_A : m_dMagneticBiasAngle_B;
    return positioning::HeadingOf(PoseOf(sample), survey::ReadingOf(sample, which), which, axes,
                                  bias);
}

double CInclineSensor_Position::CalculateYaw_ADI(const PoseSensorData& sample, int useA) const
{
    return HeadingByAxes(sample, MagnetometerOf(useA), survey::SensorAxes::ForwardLeftUp);
}

double CInclineSensor_Position::CalculateYaw_SCA(const PoseSensorData& sample, int useA) const
{
    return HeadingByAxes(sample, MagnetometerOf(useA), survey::SensorAxes::RightForwardUp);
}

// Normalized where it is computed and here again: two steps in all
// (Heading.IsNormalizedByTwoStepsAtMost).
double CInclineSensor_Position::Heading(const PoseSensorData& sample, Magnetometer which) const
{
    const int useA = which == Magnetometer::A;
    const bool first = m_nSensorType == survey::kForwardLeftUpType;
    return survey::AdjustedAzimuth(first ? CalculateYaw_ADI(sample, useA)
                                         : CalculateYaw_SCA(sample, useA));
}

int CInclineSensor_Position::CalculateYaw_A(PoseSensorData& sample)
{
    MagneticModify(m_MagneticCorrectPar_A, sample, 1);
    JudgeStillness(survey::ReadingOf(sample, Magnetometer::A), sample.dPitch, sample.dRoll);
    const double tiltDirection =
        positioning::TiltDirectionOf(KeepPose(sample), survey::AxesOf(m_nSensorType));
    sample.dYaw = Heading(sample, Magnetometer::A);
    sample.dYaw_Y = survey::AdjustedAzimuth(sample.dYaw - tiltDirection);
    return 1;
}

int CInclineSensor_Position::CalculateYaw_B(PoseSensorData& sample)
{
    MagneticModify(m_MagneticCorrectPar_B, sample, 0);
    JudgeInterference(survey::ReadingOf(sample, Magnetometer::A),
                      survey::ReadingOf(sample, Magnetometer::B));
    sample.dYaw_2 = Heading(sample, Magnetometer::B);
    return 1;
}

void CInclineSensor_Position::MagneticModify(const Incline_MagneticCorrectParameter& par,
                                             PoseSensorData& sample, int useA) const
{
    const Magnetometer which = MagnetometerOf(useA);
    survey::SetReading(sample, which, survey::Corrected(par, survey::ReadingOf(sample, which)));
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
    return positioning::ElevationOf(Deg2Rad(pitch), Deg2Rad(roll), survey::AxesOf(m_nSensorType));
}

double CInclineSensor_Position::GetAngleofPoleProject(double pitch, double roll, double heading,
                                                      int store)
{
    const double p = Deg2Rad(pitch);
    const double r = Deg2Rad(roll);
    const double k1 = positioning::ProjectionAngleOf(p, r, survey::AxesOf(m_nSensorType));
    if (store) {
        m_dProjectAngle = k1;
        m_dProjectBase = kProjectBase;
        m_bProjectByPose = 0;
    }
    return positioning::ProjectionAzimuthOf(heading, k1, p, r, m_nSensorType);
}

void CInclineSensor_Position::Keep(const PoseSensorData& sample)
{
    m_dProjectPitch = sample.dPitch;
    m_dProjectRoll = sample.dRoll;
    m_nProjectSensorType = m_nSensorType;
    m_dProjectBase = kProjectBase;
    m_bProjectByPose = 1;
}

double CInclineSensor_Position::ProjectionAngle() const
{
    if (!m_bProjectByPose) return m_dProjectAngle;
    return positioning::ProjectionAngleOf(Deg2Rad(m_dProjectPitch), Deg2Rad(m_dProjectRoll),
                                          survey::AxesOf(m_nProjectSensorType));
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
    const auto [u, v] =
        positioning::TiltAnglesOf(Deg2Rad(first), Deg2Rad(second), survey::AxesOf(m_nSensorType));
    first = u;
    second = v;
}

xyhCoordinate CInclineSensor_Position::GetInclinePoint(xyhCoordinate point, double length,
                                                       double elevation, double azimuth) const
{
    const survey::Point3 step = positioning::StepOf(length, Deg2Rad(elevation), Deg2Rad(azimuth));
    return Moved(point, {-step.x, -step.y, step.z});
}

double CInclineSensor_Position::GetDistance(xyhCoordinate p, xyhCoordinate q) const
{
    const survey::Point3 line = survey::PointOf(p) - survey::PointOf(q);
    return survey::Dot(line, line) <= kShortestLine2 ? 0.0 : survey::Length(line);
}

int CInclineSensor_Position::GetSolvePoint(xyhCoordinate p1, xyhCoordinate p2, xyhCoordinate p3,
                                           double r1, double r2, double r3,
                                           xyhCoordinate& result) const
{
    const auto point = positioning::LowerMeetingPoint(
        {survey::PointOf(p1), r1}, {survey::PointOf(p2), r2}, {survey::PointOf(p3), r3});
    if (!point) return 0;
    result = survey::RecordOf<xyhCoordinate>(*point);
    return 1;
}
