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
constexpr double kMagnetRise = 0.5;         // [s] from nothing to full strength
constexpr double kMagnetometersApart = 0.1; // [m] B below A, along the pole

Point3 FromPolar(double strength, double azimuth, double below)
{
    const auto [sa, ca] = SineCosineOf(azimuth);
    const auto [sb, cb] = SineCosineOf(below);
    return {strength * cb * ca, strength * cb * sa, strength * sb};
}

// 0 outside the span, 1 inside, a smooth rise and fall between.
double PresenceOf(double from, double to, double seconds)
{
    const double inside = std::min(seconds - from, to - seconds);
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

// strength (3 (m.u) u - m) / r^3 with the axis m and the direction u from the dipole to the place,
// level frame. Closer than kClosest the field stays what it is there.
Point3 FieldOf(const Dipole& dipole, double presence, const Point3& place)
{
    constexpr double kClosest = 0.05; // [m]
    const Point3 away = place - dipole.place;
    const double distance = Length(away);
    const Point3 axis = FromPolar(1.0, dipole.azimuth, -dipole.elevation);
    const double r = std::max(distance, kClosest);
    const Point3 u = distance > 0.0 ? 1.0 / distance * away : axis;
    const double scale = presence * dipole.strength / (r * r * r);
    return scale * (3.0 * Dot(axis, u) * u - axis);
}

double RoundedTo(double step, double value)
{
    return step > 0.0 ? std::floor(value / step + 0.5) * step : value;
}

// Cut to +-range; unchanged where the range is 0.
double Limited(double range, double value)
{
    return range > 0.0 ? std::clamp(value, -range, range) : value;
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
    if (report == RollReport::Leveling) return angles;
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
{
    if (sensor.filterTime > 0.0) m_filter.emplace(sensor.filterTime);
}

PoseSensorData SensorReadings::Read(const Motion& before, const Motion& now, const Motion& after,
                                    double interval, double secondOfDay, double seconds,
                                    PoseTruth& truth)
{
    const Point3 bodyRate = RateBetween(before.attitude, after.attitude, 2.0 * interval);
    const Point3 bend = before.position + after.position - 2.0 * now.position;
    const Point3 acceleration = 1.0 / (interval * interval * kGravity) * bend;
    return ReadAll(now, bodyRate, acceleration, interval, secondOfDay, seconds, truth);
}

PoseSensorData SensorReadings::Read(const Instant& now, double interval, double secondOfDay,
                                    double seconds, PoseTruth& truth)
{
    const Point3 acceleration = 1.0 / kGravity * now.acceleration;
    return ReadAll(now.motion, now.rate, acceleration, interval, secondOfDay, seconds, truth);
}

// The acceleration is in g, level frame; at rest the specific force is 1 upward.
PoseSensorData SensorReadings::ReadAll(const Motion& now, const Point3& bodyRate,
                                       const Point3& acceleration, double interval,
                                       double secondOfDay, double seconds, PoseTruth& truth)
{
    constexpr Point3 kGravityDown{0.0, 0.0, 1.0};
    PoseSensorData sample{};
    truth.seconds = seconds;
    truth.angles = AnglesOf(now.attitude);
    SetTime(secondOfDay, sample);
    ReadInertial(bodyRate, now.attitude.Transposed() * (acceleration - kGravityDown), sample);
    ReadTilt(truth.angles, interval, sample);
    ReadMagnetometers(now, seconds, sample, truth);
    return sample;
}

void SensorReadings::ReadMagnetometers(const Motion& now, double seconds, PoseSensorData& sample,
                                       PoseTruth& truth)
{
    const Matrix toBody = now.attitude.Transposed();
    Point3 atA = toBody * m_field;
    Point3 atB = atA;
    truth.disturbed = false;
    for (const Magnet& magnet : m_magnets) {
        const double presence = PresenceOf(magnet.from, magnet.to, seconds);
        if (presence == 0.0) continue;
        const Point3 disturbance = FieldOf(magnet, presence, toBody);
        atA = atA + disturbance;
        atB = atB + magnet.shareAtB * disturbance;
        truth.disturbed = true;
    }
    for (const Dipole& dipole : m_dipoles) {
        const double presence = PresenceOf(dipole.from, dipole.to, seconds);
        if (presence == 0.0) continue;
        const Point3 below = kMagnetometersApart * now.attitude.Column(2);
        atA = atA + toBody * FieldOf(dipole, presence, now.position);
        atB = atB + toBody * FieldOf(dipole, presence, now.position + below);
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

void SensorReadings::ReadTilt(const PoseAngles& angles, double interval, PoseSensorData& sample)
{
    PoseAngles tilt = angles;
    if (m_filter) {
        const Point3 rate{sample.dGyro_x, sample.dGyro_y, sample.dGyro_z};
        const Point3 force{sample.dAcc_x, sample.dAcc_y, sample.dAcc_z};
        tilt = m_filter->Next(FromSensorAxes(m_sensor.type, rate),
                              FromSensorAxes(m_sensor.type, force), interval);
    }
    const PoseAngles reported = ReportedAngles(m_sensor.rollReport, tilt);
    sample.dPitch = reported.pitch + m_sensor.pitchOffset;
    sample.dRoll = reported.roll + m_sensor.rollOffset;
    if (m_sensor.tiltNoise > 0.0) {
        sample.dPitch += m_sensor.tiltNoise * m_noiseTilt.Normal();
        sample.dRoll += m_sensor.tiltNoise * m_noiseTilt.Normal();
    }
}

void SensorReadings::ReadInertial(const Point3& bodyRate, const Point3& bodyForce,
                                  PoseSensorData& sample)
{
    const Point3 trueRate = ToSensorAxes(m_sensor.type, bodyRate);
    const Point3& scale = m_sensor.gyroScale;
    Point3 rate = trueRate
                  + Point3{scale.x * trueRate.x, scale.y * trueRate.y, scale.z * trueRate.z}
                  + m_sensor.gyroBias;
    Point3 acceleration = ToSensorAxes(m_sensor.type, bodyForce);
    const Point3& bias = m_sensor.accelerationBias;
    if (bias != Point3{}) acceleration = acceleration + bias; // -0 stays -0 without one
    if (m_sensor.gyroNoise > 0.0) rate = rate + m_sensor.gyroNoise * NormalVector(m_noiseInertial);
    if (m_sensor.accelerationNoise > 0.0)
        acceleration = acceleration + m_sensor.accelerationNoise * NormalVector(m_noiseInertial);
    sample.dGyro_x = Limited(m_sensor.gyroRange, rate.x);
    sample.dGyro_y = Limited(m_sensor.gyroRange, rate.y);
    sample.dGyro_z = Limited(m_sensor.gyroRange, rate.z);
    sample.dAcc_x = acceleration.x;
    sample.dAcc_y = acceleration.y;
    sample.dAcc_z = acceleration.z;
}

} // namespace simulation
