#include "positioning/InclineSensor_Position.h"

#include "positioning/detail/Angles.h"
#include "positioning/detail/Heading.h"
#include "positioning/detail/Spheres.h"
#include "positioning/detail/Tilt.h"
#include "positioning/detail/Tip.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

detail::Reading ReadingA(const PoseSensorData& s)
{
    return {s.dMag_x, s.dMag_y, s.dMag_z};
}

detail::Reading ReadingB(const PoseSensorData& s)
{
    return {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2};
}

void SetReadingA(PoseSensorData& s, const detail::Reading& m)
{
    s.dMag_x = m.x;
    s.dMag_y = m.y;
    s.dMag_z = m.z;
}

void SetReadingB(PoseSensorData& s, const detail::Reading& m)
{
    s.dMag_x_2 = m.x;
    s.dMag_y_2 = m.y;
    s.dMag_z_2 = m.z;
}

// Gives a sample its readings back at the end of the scope.
class RawReadings
{
public:
    explicit RawReadings(PoseSensorData& sample)
        : m_sample(sample), m_a(ReadingA(sample)), m_b(ReadingB(sample))
    {}
    ~RawReadings()
    {
        SetReadingA(m_sample, m_a);
        SetReadingB(m_sample, m_b);
    }
    RawReadings(const RawReadings&) = delete;
    RawReadings& operator=(const RawReadings&) = delete;

private:
    PoseSensorData& m_sample;
    const detail::Reading m_a;
    const detail::Reading m_b;
};

// Down the pole from the antenna, in the direction of its projection.
xyhCoordinate DownThePole(const xyhCoordinate& antenna, double length, const detail::Elevation& t,
                          const detail::Turn& azimuth)
{
    return {antenna.x + length * t.cos * azimuth.cos, antenna.y + length * t.cos * azimuth.sin,
            antenna.h - length * t.sin};
}

detail::Elevation ElevationFrom(double radians)
{
    return {std::sin(radians), std::cos(radians)};
}

detail::Turn TurnFrom(double radians)
{
    return {std::cos(radians), std::sin(radians)};
}

} // namespace

void CInclineSensor_Position::SetMagneticBiasAngle_A(double angle)
{
    m_dMagneticBiasAngle_A = angle;
    const bool usual = std::fabs(angle) <= kLargestUsualBias;
    const detail::Turn turn =
        TurnFrom(usual ? detail::Deg2Rad(angle) : std::numeric_limits<double>::quiet_NaN());
    m_dCosBiasAngle_A = turn.cos;
    m_dSinBiasAngle_A = turn.sin;
}

int CInclineSensor_Position::Position(PoseSensorData& sample, double poleLength,
                                      xyhCoordinate& point)
{
    const RawReadings putBack(sample);
    const detail::Pose pose = detail::PoseOf(sample.dPitch, sample.dRoll);
    const detail::TiltAngles tilt = detail::TiltAnglesOf(pose, m_nSensorType);
    if (!CalculateYaw_A(sample, pose, tilt) || !CalculateYaw_B(sample, pose)) return 0;
    return TipOf(sample, pose, tilt, poleLength, point);
}

int CInclineSensor_Position::TipOf(const PoseSensorData& sample, const detail::Pose& pose,
                                   const detail::TiltAngles& tilt, double poleLength,
                                   xyhCoordinate& point)
{
    const detail::Elevation elevation = detail::ElevationOf(pose, m_nSensorType);
    const double v = m_nSensorType == detail::kFirstConvention ? sample.dRoll : sample.dPitch;
    const detail::Projection projection =
        detail::ProjectionOf(tilt, v > 0.0, elevation, m_nSensorType);
    const detail::Turn heading =
        detail::HeadingTurnOf(detail::Level(pose, ReadingA(sample), m_nSensorType));
    const detail::Turn azimuth =
        heading + (projection.turn + detail::Turn{m_dCosBiasAngle_A, -m_dSinBiasAngle_A});
    if (projection.trusted && std::isfinite(azimuth.cos)) {
        KeepProjection(projection.k1);
        point = DownThePole(point, poleLength, elevation, azimuth);
        return 1;
    }

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
    tip = DownThePole(antenna, poleLength, ElevationFrom(t), TurnFrom(azimuth));
    return 1;
}

int CInclineSensor_Position::Position_Geometry_B(xyhCoordinate antenna, PoseSensorData sample,
                                                 double poleLength, xyhCoordinate& tip)
{
    const double t = Deg2Rad(GetAngleofPoletoHorizontal(-sample.dPitch, -sample.dRoll));
    const double azimuth =
        Deg2Rad(GetAngleofPoleProject(-sample.dPitch, -sample.dRoll, sample.dYaw_2, 0));
    tip = DownThePole(antenna, poleLength, ElevationFrom(t), TurnFrom(azimuth));
    return 1;
}

int CInclineSensor_Position::Position_Math(xyhCoordinate /*antenna*/, PoseSensorData sample,
                                           double /*poleLength*/, xyhCoordinate& /*tip*/) const
{
    GetTiltAngle(sample.dPitch, sample.dRoll);
    return 1;
}

int CInclineSensor_Position::CalculateYaw_A(PoseSensorData& sample)
{
    const detail::Pose pose = detail::PoseOf(sample.dPitch, sample.dRoll);
    return CalculateYaw_A(sample, pose, detail::TiltAnglesOf(pose, m_nSensorType));
}

int CInclineSensor_Position::CalculateYaw_A(PoseSensorData& sample, const detail::Pose& pose,
                                            const detail::TiltAngles& tilt)
{
    MagneticModify(m_MagneticCorrectPar_A, sample, 1);
    JudgeStillness(sample);
    sample.dYaw = Heading(sample, pose, 1);
    AdjustAzimuth(sample.dYaw);
    sample.dYaw_Y = sample.dYaw - detail::TiltDirection(pose, tilt, m_nSensorType);
    AdjustAzimuth(sample.dYaw_Y);
    return 1;
}

void CInclineSensor_Position::JudgeStillness(const PoseSensorData& sample)
{
    const detail::Reading last{m_dLastMag_x, m_dLastMag_y, m_dLastMag_z};
    if (detail::SumOfDifferences(ReadingA(sample), last) <= kStillField
        && std::fabs(sample.dRoll - m_dLastRoll) <= kStillTilt
        && std::fabs(sample.dPitch - m_dLastPitch) <= kStillTilt) {
        m_bStationary = 1; // the reference stays, so slow drift adds up against it
        return;
    }
    m_dLastMag_x = sample.dMag_x;
    m_dLastMag_y = sample.dMag_y;
    m_dLastMag_z = sample.dMag_z;
    m_dLastPitch = sample.dPitch;
    m_dLastRoll = sample.dRoll;
    m_bStationary = 0;
}

int CInclineSensor_Position::CalculateYaw_B(PoseSensorData& sample)
{
    return CalculateYaw_B(sample, detail::PoseOf(sample.dPitch, sample.dRoll));
}

int CInclineSensor_Position::CalculateYaw_B(PoseSensorData& sample, const detail::Pose& pose)
{
    MagneticModify(m_MagneticCorrectPar_B, sample, 0);
    const detail::Reading expected{-(sample.dMag_x + m_MagneticTranslationPar.dX),
                                   -(sample.dMag_y + m_MagneticTranslationPar.dY),
                                   sample.dMag_z + m_MagneticTranslationPar.dZ};
    m_bMagneticInterference =
        detail::SumOfDifferences(expected, ReadingB(sample)) > kUndisturbed ? 1 : 0;
    sample.dYaw_2 = Heading(sample, pose, 0);
    AdjustAzimuth(sample.dYaw_2);
    return 1;
}

void CInclineSensor_Position::MagneticModify(const Incline_MagneticCorrectParameter& par,
                                             PoseSensorData& sample, int useA) const
{
    if (useA)
        SetReadingA(sample, detail::Corrected(par, ReadingA(sample)));
    else
        SetReadingB(sample, detail::Corrected(par, ReadingB(sample)));
}

double CInclineSensor_Position::Heading(const PoseSensorData& sample, const detail::Pose& pose,
                                        int useA) const
{
    return m_nSensorType == detail::kFirstConvention ? CalculateYaw_ADI(sample, pose, useA)
                                                     : CalculateYaw_SCA(sample, pose, useA);
}

double CInclineSensor_Position::CalculateYaw_ADI(const PoseSensorData& sample,
                                                 const detail::Pose& pose, int useA) const
{
    const detail::LevelledField field =
        useA ? detail::LevelFirst(pose, ReadingA(sample))
             : detail::LevelFirst(pose.Reversed(), detail::TurnedToPole(ReadingB(sample)));
    return Unbiased(detail::HeadingOf(field), useA);
}

double CInclineSensor_Position::CalculateYaw_SCA(const PoseSensorData& sample,
                                                 const detail::Pose& pose, int useA) const
{
    const detail::LevelledField field =
        useA ? detail::LevelSecond(pose, ReadingA(sample))
             : detail::LevelSecond(pose.Reversed(), detail::TurnedToPole(ReadingB(sample)));
    return Unbiased(detail::HeadingOf(field), useA);
}

double CInclineSensor_Position::Unbiased(double heading, int useA) const
{
    const double unbiased = useA ? heading - m_dMagneticBiasAngle_A
                                 : heading - m_dMagneticBiasAngle_B + Rad2Deg(kMountingAngleB);
    return detail::AdjustedAzimuth(unbiased);
}

int CInclineSensor_Position::ConverseYaw(double x, double y, double& yaw, double& yawOpposite) const
{
    yaw = detail::AdjustedAzimuth(Rad2Deg(std::atan2(y, x)) - m_dProjectAngle);
    yawOpposite = detail::AdjustedAzimuth(yaw - 180.0);
    return 1;
}

double CInclineSensor_Position::ConverseYaw_True(double dx, double dy) const
{
    return detail::AzimuthOf(dx, dy);
}

double CInclineSensor_Position::GetAngleofPoletoHorizontal(double pitch, double roll) const
{
    const double p = Deg2Rad(pitch);
    const double r = Deg2Rad(roll);
    double lean = 0.0;
    if (m_nSensorType == detail::kFirstConvention) {
        lean = ASIN(std::sqrt(std::sin(r) * std::sin(r) + std::sin(p) * std::sin(p)));
    } else {
        lean = ACOS(std::cos(p) * std::cos(r));
        if (lean > detail::kHalfPi) lean = detail::kPi - lean;
    }
    return Rad2Deg(detail::kHalfPi - lean);
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
    if (m_nSensorType == detail::kTurnedProjectionType) {
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
    return detail::Deg2Rad(degrees);
}

double CInclineSensor_Position::Rad2Deg(double radians) const
{
    return detail::Rad2Deg(radians);
}

double CInclineSensor_Position::ASIN(double value) const
{
    return detail::ArcSine(value);
}

double CInclineSensor_Position::ACOS(double value) const
{
    return detail::ArcCosine(value);
}

void CInclineSensor_Position::AdjustAzimuth(double& azimuth) const
{
    azimuth = detail::AdjustedAzimuth(azimuth);
}

void CInclineSensor_Position::GetTiltAngle(double& first, double& second) const
{
    const double pitch = Deg2Rad(first);
    const double roll = Deg2Rad(second);
    if (m_nSensorType == detail::kFirstConvention) {
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
    return detail::LowerMeetingPoint({p1, r1}, {p2, r2}, {p3, r3}, result) ? 1 : 0;
}
