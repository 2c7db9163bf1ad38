// SPDX-License-Identifier: MIT
//
// A calibration on the spot from samples of a pole that is rocked and turned on its tip, and, in between,
// of any numbers: what may be used is finite and has sigmas, what may not changes no setup, and the
// same input after Clear gives the same result.
#include "field/SpotCalibration.h"
#include "fuzz/Input.h"

namespace {

using field::SpotReason;
using field::SpotResult;
using fuzz::AreSame;
using fuzz::Input;
using fuzz::Require;

constexpr double kDegrees = 57.29577951308232;

struct Vector
{
    double x, y, z;
};

// A pole of 2 m on a tip at the origin that leans towards an azimuth and turns about its axis.
struct Motion
{
    double reach, speed, swing, turn; // [rad], [rad/s], [rad], [rad/s]

    double LeanX(double t) const { return reach * std::sin(speed * t); }
    double LeanY(double t) const { return reach * std::sin(1.3 * speed * t + 0.5); }
    double Heading(double t) const { return swing * std::sin(turn * t); }

    // What is seen along the axes of the sensor: x forward, y left, z up the pole.
    Vector Seen(const Vector& v, double t) const
    {
        const double h = Heading(t), a = LeanX(t), b = LeanY(t);
        const Vector p{v.x * std::cos(a) - v.z * std::sin(a), v.y,
                       v.x * std::sin(a) + v.z * std::cos(a)};
        const Vector q{p.x, p.y * std::cos(b) - p.z * std::sin(b),
                       p.y * std::sin(b) + p.z * std::cos(b)};
        return {q.x * std::cos(h) + q.y * std::sin(h), q.y * std::cos(h) - q.x * std::sin(h), q.z};
    }

    // The rate of the turn from the axes now to those a moment later [degrees/s].
    Vector Rate(double t) const
    {
        constexpr double kMoment = 1e-5;
        const Vector axes[] = {
            {1.0, 0.0, 0.0},
            {0.0, 1.0, 0.0},
            {0.0, 0.0, 1.0}
        };
        double change[3][3] = {};
        for (const Vector& axis : axes) {
            const Vector now = Seen(axis, t), then = Seen(axis, t + kMoment);
            const double n[3] = {now.x, now.y, now.z};
            const double m[3] = {then.x, then.y, then.z};
            for (int i = 0; i < 3; ++i)
                for (int k = 0; k < 3; ++k)
                    change[i][k] += n[i] * m[k];
        }
        const double scale = 0.5 * kDegrees / kMoment;
        return {scale * (change[2][1] - change[1][2]), scale * (change[0][2] - change[2][0]),
                scale * (change[1][0] - change[0][1])};
    }

    // The upper end in axes of the place: the row of the turn that z is.
    Vector Antenna(double t) const
    {
        const Vector n = Seen({1.0, 0.0, 0.0}, t), w = Seen({0.0, 1.0, 0.0}, t);
        const Vector u = Seen({0.0, 0.0, 1.0}, t);
        return {2.0 * n.z, -2.0 * w.z, 2.0 * u.z};
    }
};

struct Fed
{
    field::InertialSample sample;
    field::SensorVector magneticB;
    field::AntennaEpoch epoch;
};

Fed FedAt(const Motion& motion, double t)
{
    Fed fed;
    fed.sample.seconds = fed.epoch.seconds = t;
    const Vector rate = motion.Rate(t);
    fed.sample.rate = {rate.x, rate.y, rate.z};
    const Vector up = motion.Seen({0.0, 0.0, 1.0}, t);
    fed.sample.acceleration = {up.x, up.y, up.z};
    const Vector m = motion.Seen({200.0, 0.0, -450.0}, t);
    fed.sample.magnetic = {m.x + 40.0, 1.1 * m.y - 30.0, m.z + 25.0};
    fed.magneticB = {-m.x, -m.y, m.z};
    const Vector antenna = motion.Antenna(t);
    fed.epoch.position = {antenna.x, antenna.y, antenna.z};
    return fed;
}

void Feed(field::SpotCalibration& calibration, Input input)
{
    const Motion motion{input.Between(0.0, 0.6), input.Between(0.3, 4.0), input.Between(0.0, 4.0),
                        input.Between(0.1, 1.5)};
    const double seconds = input.Below(4) == 0 ? input.Between(0.0, 40.0) : 11.0;
    const double step = input.Below(4) == 0 ? input.Between(0.05, 0.2) : 0.125;
    const int every = 2 + input.Below(4);
    const bool hasReadings = input.Below(8) != 0;
    for (int i = 0; i * step < seconds; ++i) {
        Fed fed = FedAt(motion, i * step);
        if (!hasReadings) fed.sample.magnetic = fed.magneticB = {};
        const int damage = input.Ended() ? 0 : input.Below(64);
        if (damage == 1) fed.sample.rate.y = input.Number();
        if (damage == 2) fed.sample.acceleration.x = input.Number();
        if (damage == 3) fed.sample.magnetic.z = input.Number();
        if (damage == 4) fed.sample.seconds = input.Number();
        if (damage == 5) fed.sample.disturbed = true;
        if (damage == 6) fed.magneticB.x = input.Number();
        calibration.Add(fed.sample, fed.magneticB);
        if (i % every != 0) continue;
        if (damage == 7) fed.epoch.position.h = input.Number();
        if (damage == 8) fed.epoch.planSigma = input.Number();
        if (damage == 9) fed.epoch.position.x += 0.02;
        calibration.Add(fed.epoch);
    }
}

bool IsFinite(const field::SensorVector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

void CheckVector(const field::SpotVector& v)
{
    Require(IsFinite(v.value) && IsFinite(v.sigma));
    Require(v.sigma.x > 0.0 && v.sigma.y > 0.0 && v.sigma.z > 0.0);
}

void CheckMagnetometer(const field::SpotMagnetometer& m)
{
    if (!m.found) return;
    CheckVector(m.hardIron);
    const Incline_MagneticCorrectParameter& c = m.correction;
    for (const double value : {c.x0, c.y0, c.z0, c.a, c.b, c.c, c.d, c.e, m.bias, m.residual})
        Require(std::isfinite(value));
    Require(c.b > 0.0 && c.e > 0.0 && std::fabs(m.bias) <= 360.0 && std::fabs(m.dip) <= 90.0);
    for (const double value :
         {m.softIronSigma, m.biasSigma, m.strength, m.strengthSigma, m.dipSigma})
        Require(value > 0.0 && std::isfinite(value));
}

void Check(const SpotResult& r)
{
    Require(!SpotText(r).empty());
    const field::OccupationSetup before;
    const field::OccupationSetup after = WithCalibration(before, r);
    if (!r.IsUsable()) {
        Require(AreSame(after.axisX, before.axisX) && AreSame(after.gyroBias.z, before.gyroBias.z));
        Require(AreSame(after.axisSigma, before.axisSigma) && AreSame(after.delay, before.delay));
        return;
    }
    Require(r.hasValues && r.seconds >= 10.0 && r.epochs >= 10);
    CheckVector(r.accelerometerBias);
    CheckVector(r.gyroBias);
    CheckVector(r.gyroScale);
    CheckMagnetometer(r.a);
    CheckMagnetometer(r.b);
    for (const double value : {r.axisX, r.axisY, r.sensorHeight, r.delay, r.tip.x, r.tip.y, r.tip.h,
                               r.lengthError, r.tipStep})
        Require(std::isfinite(value));
    for (const double value : {r.axisSigma, r.sensorHeightSigma, r.delaySigma, r.lengthSigma})
        Require(value > 0.0 && std::isfinite(value));
    Require(AreSame(after.axisX, r.axisX) && after.axisSigma > 0.0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    field::SpotSetup setup;
    setup.sensorType = 1 + input.Below(2);
    if (input.Below(4) == 0) setup.poleLength = input.Between(0.5, 4.0);
    field::SpotCalibration calibration(setup);
    Feed(calibration, input);
    const SpotResult first = calibration.Estimate();
    Check(first);
    if (!fuzz::IsOneIn(16, data, size)) return 0;
    calibration.Clear();
    Feed(calibration, input);
    const SpotResult second = calibration.Estimate();
    Require(first.reason == second.reason && first.hasValues == second.hasValues);
    Require(AreSame(first.tip.x, second.tip.x) && AreSame(first.axisX, second.axisX)
            && AreSame(first.a.bias, second.a.bias));
    return 0;
}
