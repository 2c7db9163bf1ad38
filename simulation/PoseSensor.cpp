// SPDX-License-Identifier: MIT
#include "simulation/PoseSensor.h"

#include "simulation/PortableMath.h"
#include "survey/Reading.h"
#include <algorithm>

namespace survey = tiltpole::survey;

namespace simulation {

namespace {

constexpr double kGravity = 9.80665; // [m/s^2] per g
constexpr double kSecondsADay = 86400.0;
constexpr double kMagnetRise = 0.5; // [s] from nothing to full strength

Point3 FromPolar(double strength, double azimuth, double below)
{
    const auto [sa, ca] = SineCosineOf(azimuth);
    const auto [sb, cb] = SineCosineOf(below);
    return {strength * cb * ca, strength * cb * sa, strength * sb};
}

// 0 outside the span, 1 inside, a smooth rise and fall between.
double PresenceOf(const Magnet& magnet, double seconds)
{
    const double inside = std::min(seconds - magnet.from, magnet.to - seconds);
    if (inside <= 0.0) return 0.0;
    const double share = std::min(inside / kMagnetRise, 1.0);
    return share * share * (3.0 - 2.0 * share);
}

// At magnetometer A, in body axes.
Point3 FieldOf(const Magnet& magnet, double presence, const Matrix& toBody)
{
    const Point3 full = FromPolar(magnet.strength * presence, magnet.azimuth, -magnet.elevation);
    return magnet.onPole ? full : toBody * full;
}

double RoundedTo(double step, double value)
{
    return step > 0.0 ? std::floor(value / step + 0.5) * step : value;
}

Point3 NormalVector(Generator& random)
{
    const double x = random.Normal();
    const double y = random.Normal();
    return {x, y, random.Normal()};
}

void SetTime(double secondOfDay, PoseSensorData& sample)
{
    const double day = secondOfDay - kSecondsADay * std::floor(secondOfDay / kSecondsADay);
    const int second = static_cast<int>(day);
    sample.nHour = second / 3600 % 24;
    sample.nMinute = second / 60 % 60;
    sample.nSecond = second % 60;
}

} // namespace

// The right axis lies cos p sin r below the horizon.
PoseAngles ReportedAngles(RollReport report, const PoseAngles& angles)
{
    if (report == RollReport::Levelling) return angles;
    const SineCosine pitch = SineCosineOf(angles.pitch);
    const SineCosine roll = SineCosineOf(angles.roll);
    const double below = pitch.cosine * roll.sine;
    const double along = pitch.cosine * roll.cosine;
    const double level = std::sqrt(pitch.sine * pitch.sine + along * along);
    return {angles.heading, angles.pitch, ArcTangent(below, level)};
}

Point3 LevelField(const EarthField& field)
{
    return FromPolar(field.strength, field.declination, field.dip);
}

std::optional<Matrix> InverseOf(const Matrix& m)
{
    const auto& [r0, r1, r2] = m.rows;
    const auto cross = [](const Point3& p, const Point3& q) {
        return Point3{p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
    };
    const double determinant = Dot(r0, cross(r1, r2));
    if (determinant == 0.0) return std::nullopt;

    const double scale = 1.0 / determinant;
    const Matrix columns{
        {scale * cross(r1, r2), scale * cross(r2, r0), scale * cross(r0, r1)}
    };
    return columns.Transposed();
}

// M = D11 D^-1 has 1 in its first place; the offset is M times the hard iron.
std::optional<Incline_MagneticCorrectParameter> CorrectionOf(const MagnetometerModel& magnetometer)
{
    const auto& [r0, r1, r2] = magnetometer.softIron.rows;
    if (r0.y != 0.0 || r0.z != 0.0 || r1.z != 0.0) return std::nullopt;
    if (r0.x == 0.0 || r1.y == 0.0 || r2.z == 0.0) return std::nullopt;

    Incline_MagneticCorrectParameter p;
    p.b = r0.x / r1.y;
    p.a = -r1.x / r1.y;
    p.e = r0.x / r2.z;
    p.d = -r2.y / r2.z * p.b;
    p.c = -(r2.x + r2.y * p.a) / r2.z;
    const Point3& h = magnetometer.hardIron;
    p.x0 = h.x;
    p.y0 = p.a * h.x + p.b * h.y;
    p.z0 = p.c * h.x + p.d * h.y + p.e * h.z;
    return p;
}

double BiasAngleOf(const EarthField& field)
{
    return 0.0 - field.declination; // never -0
}

SensorReadings::SensorReadings(const PoseSensor& sensor, const EarthField& field,
                               const std::vector<Magnet>& magnets, std::uint64_t seed,
                               std::uint64_t index)
    : m_sensor(sensor), m_magnets(magnets), m_field(LevelField(field)),
      m_noiseA(seed, Stream::MagnetometerA, index), m_noiseB(seed, Stream::MagnetometerB, index),
      m_noiseTilt(seed, Stream::Tilt, index), m_noiseInertial(seed, Stream::Inertial, index)
{}

PoseSensorData SensorReadings::Read(const Motion& before, const Motion& now, const Motion& after,
                                    double interval, double secondOfDay, double seconds,
                                    PoseTruth& truth)
{
    PoseSensorData sample{};
    truth.seconds = seconds;
    truth.angles = AnglesOf(now.attitude);
    SetTime(secondOfDay, sample);
    ReadTilt(truth.angles, sample);
    ReadInertial(before, now, after, interval, sample);
    ReadMagnetometers(now.attitude.Transposed(), seconds, sample, truth);
    return sample;
}

void SensorReadings::ReadMagnetometers(const Matrix& toBody, double seconds, PoseSensorData& sample,
                                       PoseTruth& truth)
{
    Point3 atA = toBody * m_field;
    Point3 atB = atA;
    truth.disturbed = false;
    for (const Magnet& magnet : m_magnets) {
        const double presence = PresenceOf(magnet, seconds);
        if (presence == 0.0) continue;
        const Point3 disturbance = FieldOf(magnet, presence, toBody);
        atA = atA + disturbance;
        atB = atB + magnet.shareAtB * disturbance;
        truth.disturbed = true;
    }
    const Point3 a = Distorted(m_sensor.a, ToSensorAxes(m_sensor.type, atA), m_noiseA);
    const Point3 b = Distorted(m_sensor.b, ToSensorAxesB(m_sensor.type, atB), m_noiseB);
    SetReading(sample, survey::Magnetometer::A, {a.x, a.y, a.z});
    SetReading(sample, survey::Magnetometer::B, {b.x, b.y, b.z});
}

Point3 SensorReadings::Distorted(const MagnetometerModel& magnetometer, const Point3& field,
                                 Generator& noise) const
{
    Point3 raw = magnetometer.softIron * field + magnetometer.hardIron;
    if (magnetometer.noise > 0.0) raw = raw + magnetometer.noise * NormalVector(noise);
    const double step = m_sensor.magneticStep;
    return {RoundedTo(step, raw.x), RoundedTo(step, raw.y), RoundedTo(step, raw.z)};
}

void SensorReadings::ReadTilt(const PoseAngles& angles, PoseSensorData& sample)
{
    const PoseAngles reported = ReportedAngles(m_sensor.rollReport, angles);
    sample.dPitch = reported.pitch + m_sensor.pitchOffset;
    sample.dRoll = reported.roll + m_sensor.rollOffset;
    if (m_sensor.tiltNoise > 0.0) {
        sample.dPitch += m_sensor.tiltNoise * m_noiseTilt.Normal();
        sample.dRoll += m_sensor.tiltNoise * m_noiseTilt.Normal();
    }
}

void SensorReadings::ReadInertial(const Motion& before, const Motion& now, const Motion& after,
                                  double interval, PoseSensorData& sample)
{
    const Point3 bodyRate = RateBetween(before.attitude, after.attitude, 2.0 * interval);
    Point3 rate = ToSensorAxes(m_sensor.type, bodyRate) + m_sensor.gyroBias;
    const Point3 bend = before.position + after.position - 2.0 * now.position;
    const Point3 gravity{0.0, 0.0, 1.0};
    const Point3 force = 1.0 / (interval * interval * kGravity) * bend - gravity;
    Point3 acceleration = ToSensorAxes(m_sensor.type, now.attitude.Transposed() * force);
    if (m_sensor.gyroNoise > 0.0) rate = rate + m_sensor.gyroNoise * NormalVector(m_noiseInertial);
    if (m_sensor.accelerationNoise > 0.0)
        acceleration = acceleration + m_sensor.accelerationNoise * NormalVector(m_noiseInertial);
    sample.dGyro_x = rate.x;
    sample.dGyro_y = rate.y;
    sample.dGyro_z = rate.z;
    sample.dAcc_x = acceleration.x;
    sample.dAcc_y = acceleration.y;
    sample.dAcc_z = acceleration.z;
}

} // namespace simulation
