// SPDX-License-Identifier: MIT
#include "tests/reference/LiteralPosition.h"

#include <cmath>

namespace literal {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;

// One rounding in every build; std::pow may give another last digit.
double Square(double x)
{
    return x * x;
}

} // namespace

double Rad(double degrees)
{
    return degrees * kPi / 180.0;
}
double Deg(double radians)
{
    return radians * 180.0 / kPi;
}
double Asin(double x)
{
    return std::asin(x > 1.0 ? 1.0 : x < -1.0 ? -1.0 : x);
}
double Acos(double x)
{
    return std::acos(x > 1.0 ? 1.0 : x < -1.0 ? -1.0 : x);
}
double Adjust(double a)
{
    return a < 0.0 ? a + 360.0 : a > 360.0 ? a - 360.0 : a;
}

void Modify(const Incline_MagneticCorrectParameter& p, const double raw[3], double out[3])
{
    out[0] = raw[0] - p.x0;
    out[1] = p.a * raw[0] + p.b * raw[1] - p.y0;
    out[2] = p.c * raw[0] + p.d * raw[1] + p.e * raw[2] - p.z0;
}

double Heading(int sensorType, double p, double r, double x, double y, double z)
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

void TiltAngles(int sensorType, double pitch, double roll, double& u, double& v)
{
    u = Rad(pitch);
    v = Rad(roll);
    if (sensorType == 1) return;
    const double derived = -Asin(std::cos(u) * std::sin(v));
    v = u;
    u = derived;
}

double ElevationDegrees(int sensorType, double pitch, double roll)
{
    const double p = Rad(pitch);
    const double r = Rad(roll);
    double g = 0.0;
    if (sensorType == 1) {
        g = Asin(std::sqrt(Square(std::sin(r)) + Square(std::sin(p))));
    } else {
        g = Acos(std::cos(p) * std::cos(r));
        if (g > kHalfPi) g = kPi - g;
    }
    return Deg(kHalfPi - g);
}

double Projection(int sensorType, double pitch, double roll, double heading, double cosine[2])
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

Result Measure(const Setup& setup, const PoseSensorData& s, double length,
               const xyhCoordinate& antenna)
{
    using std::cos, std::sin;
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
    out.quotient = (Square(cos(u)) * Square(sin(v)) + Square(cos(v)) * Square(sin(u))
                    - (Square(sin(v)) + Square(sin(u))))
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

void JudgeStillness(State& state, const PoseSensorData& s)
{
    const PoseSensorData& last = state.still;
    const double difference = std::fabs(s.dMag_x - last.dMag_x) + std::fabs(s.dMag_y - last.dMag_y)
                              + std::fabs(s.dMag_z - last.dMag_z);
    state.stationary = difference <= 1000.0 && std::fabs(s.dRoll - last.dRoll) <= 0.5
                       && std::fabs(s.dPitch - last.dPitch) <= 0.5;
    if (state.stationary) return;
    state.still.dMag_x = s.dMag_x;
    state.still.dMag_y = s.dMag_y;
    state.still.dMag_z = s.dMag_z;
    state.still.dPitch = s.dPitch;
    state.still.dRoll = s.dRoll;
}

void JudgeInterference(const Setup& setup, State& state, const PoseSensorData& s)
{
    const double x = -(s.dMag_x + setup.translation.dX);
    const double y = -(s.dMag_y + setup.translation.dY);
    const double z = s.dMag_z + setup.translation.dZ;
    state.interference =
        std::fabs(x - s.dMag_x_2) + std::fabs(y - s.dMag_y_2) + std::fabs(z - s.dMag_z_2) > 300.0;
}

int Position(const Setup& setup, State& state, PoseSensorData& sample, double length,
             xyhCoordinate& point)
{
    const PoseSensorData kept = sample;
    const Result result = Measure(setup, sample, length, point);
    sample.dMag_x = result.correctedA[0];
    sample.dMag_y = result.correctedA[1];
    sample.dMag_z = result.correctedA[2];
    sample.dMag_x_2 = result.correctedB[0];
    sample.dMag_y_2 = result.correctedB[1];
    sample.dMag_z_2 = result.correctedB[2];
    JudgeStillness(state, sample);
    JudgeInterference(setup, state, sample);
    sample = kept;
    sample.dYaw = result.yaw;
    sample.dYaw_2 = result.yaw2;
    sample.dYaw_Y = result.yawY;
    point = result.tip;
    return 1;
}

} // namespace literal
