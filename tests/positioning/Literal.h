// The whole measurement written out formula by formula, one library call per function named in a
// formula and nothing shared between operations: what the class is compared with, in value and in
// time. Operations are calls, as in a class whose operations a host can call one by one.
#pragma once

#include "positioning/InclineSensor_Position.h"

#include <algorithm>
#include <cmath>

namespace literal {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfPi = 1.5707963267948966;

[[gnu::noinline]] inline double Rad(double degrees)
{
    return degrees * kPi / 180.0;
}
[[gnu::noinline]] inline double Deg(double radians)
{
    return radians * 180.0 / kPi;
}
[[gnu::noinline]] inline double Asin(double x)
{
    return std::asin(x > 1.0 ? 1.0 : x < -1.0 ? -1.0 : x);
}
[[gnu::noinline]] inline double Acos(double x)
{
    return std::acos(x > 1.0 ? 1.0 : x < -1.0 ? -1.0 : x);
}
[[gnu::noinline]] inline double Adjust(double a)
{
    return a < 0.0 ? a + 360.0 : a > 360.0 ? a - 360.0 : a;
}

struct Setup
{
    int sensorType = 1;
    Incline_MagneticCorrectParameter parA, parB;
    Incline_MagneticTranslationParameter translation;
    double biasA = 0.0, biasB = 0.0;
};

struct Result
{
    double yaw, yaw2, yawY;
    double correctedA[3], correctedB[3];
    double quotient;  // of the tilt-direction angle
    double cosine[2]; // arguments of the arc cosines k1, k3
    xyhCoordinate tip;
};

[[gnu::noinline]] inline void Modify(const Incline_MagneticCorrectParameter& p, const double raw[3],
                                     double out[3])
{
    out[0] = raw[0] - p.x0;
    out[1] = p.a * raw[0] + p.b * raw[1] - p.y0;
    out[2] = p.c * raw[0] + p.d * raw[1] + p.e * raw[2] - p.z0;
}

[[gnu::noinline]] inline double Heading(int sensorType, double p, double r, double x, double y,
                                        double z)
{
    using std::cos, std::sin;
    if (sensorType == 1) {
        const double mx = x;
        const double my = -y;
        const double mz = -z;
        const double xh = cos(p) * mx + sin(p) * sin(r) * my + sin(p) * cos(r) * mz;
        const double yh = cos(r) * my - sin(r) * mz;
        return Deg(std::atan2(-yh, xh));
    }
    const double a1 = cos(r) * x + sin(r) * z;
    const double b1 = sin(r) * sin(p) * x + cos(p) * y - cos(r) * sin(p) * z;
    return Deg(std::atan2(-a1, b1));
}

[[gnu::noinline]] inline void TiltAngles(int sensorType, double pitch, double roll, double& u,
                                         double& v)
{
    u = Rad(pitch);
    v = Rad(roll);
    if (sensorType == 1) return;
    const double derived = -Asin(std::cos(u) * std::sin(v));
    v = u;
    u = derived;
}

[[gnu::noinline]] inline double ElevationDegrees(int sensorType, double pitch, double roll)
{
    const double p = Rad(pitch);
    const double r = Rad(roll);
    double g = 0.0;
    if (sensorType == 1) {
        g = Asin(std::sqrt(std::pow(std::sin(r), 2) + std::pow(std::sin(p), 2)));
    } else {
        g = Acos(std::cos(p) * std::cos(r));
        if (g > kHalfPi) g = kPi - g;
    }
    return Deg(kHalfPi - g);
}

[[gnu::noinline]] inline double Projection(int sensorType, double pitch, double roll,
                                           double heading, double cosine[2])
{
    const double t = Rad(ElevationDegrees(sensorType, pitch, roll));
    double u = 0.0;
    double v = 0.0;
    TiltAngles(sensorType, pitch, roll, u, v);
    cosine[0] = std::tan(t) * std::tan(u);
    cosine[1] = -std::tan(u) * std::tan(v);
    double k1 = Deg(Acos(cosine[0]));
    double k2 = Deg(Acos(std::tan(t) * std::tan(v)));
    const double k3 = Deg(Acos(cosine[1]));
    if (v > 0.0) k1 = -k1;
    if (u < 0.0) k2 = -k2;
    double result = heading + k1;
    const double other = heading + k2;
    static_cast<void>(other);
    if (sensorType == 2) result = heading + k3 + k1;
    return Adjust(result);
}

inline Result Measure(const Setup& setup, const PoseSensorData& s, double length,
                      const xyhCoordinate& antenna)
{
    using std::cos, std::sin, std::pow;
    Result out{};
    const double rawA[] = {s.dMag_x, s.dMag_y, s.dMag_z};
    const double rawB[] = {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2};
    Modify(setup.parA, rawA, out.correctedA);
    Modify(setup.parB, rawB, out.correctedB);

    const double p = Rad(s.dPitch);
    const double r = Rad(s.dRoll);
    const auto& a = out.correctedA;
    const auto& b = out.correctedB;
    out.yaw = Adjust(Adjust(Heading(setup.sensorType, p, r, a[0], a[1], a[2]) - setup.biasA));
    const double bx = b[0] * cos(0.0) + b[1] * sin(0.0);
    const double by = -b[0] * sin(0.0) + b[1] * cos(0.0);
    out.yaw2 =
        Adjust(Adjust(Heading(setup.sensorType, -p, -r, bx, by, b[2]) - setup.biasB + Deg(0.0)));

    double u = 0.0;
    double v = 0.0;
    TiltAngles(setup.sensorType, s.dPitch, s.dRoll, u, v);
    out.quotient = (pow(cos(u), 2) * pow(sin(v), 2) + pow(cos(v), 2) * pow(sin(u), 2)
                    - (pow(sin(v), 2) + pow(sin(u), 2)))
                   / (2.0 * cos(u) * cos(v) * sin(u) * sin(v));
    out.yawY = Adjust(out.yaw - Deg(Acos(out.quotient)));

    out.tip = antenna;
    if (std::fabs(u) < 1e-6 && std::fabs(v) < 1e-6) {
        out.tip.h -= length;
        return out;
    }
    const double t = Rad(ElevationDegrees(setup.sensorType, s.dPitch, s.dRoll));
    const double az = Rad(Projection(setup.sensorType, s.dPitch, s.dRoll, out.yaw, out.cosine));
    out.tip.x = antenna.x + length * cos(t) * cos(az);
    out.tip.y = antenna.y + length * cos(t) * sin(az);
    out.tip.h = antenna.h - length * sin(t);
    return out;
}

} // namespace literal
