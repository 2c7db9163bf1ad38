// SPDX-License-Identifier: MIT
#include "simulation/Attitude.h"

#include "simulation/PortableMath.h"
#include "survey/SensorAxes.h"
#include "survey/TurnAngle.h"

namespace survey = tiltpole::survey;

namespace simulation {

Matrix AttitudeOf(const PoseAngles& angles)
{
    const auto [sh, ch] = SineCosineOf(angles.heading);
    const auto [sp, cp] = SineCosineOf(angles.pitch);
    const auto [sr, cr] = SineCosineOf(angles.roll);
    return {
        {Point3{ch * cp, ch * sp * sr - sh * cr, ch * sp * cr + sh * sr},
         Point3{sh * cp, sh * sp * sr + ch * cr, sh * sp * cr - ch * sr},
         Point3{-sp, cp * sr, cp * cr}}
    };
}

PoseAngles AnglesOf(const Matrix& attitude)
{
    const Point3& down = attitude.rows[2]; // in body axes
    const double level = std::sqrt(down.y * down.y + down.z * down.z);
    return {survey::InTurn(ArcTangent(attitude.rows[1].x, attitude.rows[0].x)),
            ArcTangent(-down.x, level), ArcTangent(down.y, down.z)};
}

// Down the pole, in the level frame turned to the heading, is the third column of Ry Rx:
//   (sin p cos r, -sin r, cos p cos r) = (-sin g cos a, -sin g sin a, cos g)
PoseAngles AnglesOfLean(double heading, double lean, double leanAzimuth)
{
    const auto [sg, cg] = SineCosineOf(lean);
    const auto [sa, ca] = SineCosineOf(leanAzimuth - heading);
    const double ahead = -sg * ca;
    return {heading, ArcTangent(ahead, cg),
            ArcTangent(sg * sa, std::sqrt(ahead * ahead + cg * cg))};
}

// Rodrigues: v cos + (k x v) sin + k (k.v)(1 - cos)
Matrix RotationAbout(const Point3& k, double degrees)
{
    const auto [s, c] = SineCosineOf(degrees);
    const double t = 1.0 - c;
    return {
        {Point3{c + k.x * k.x * t, k.x * k.y * t - k.z * s, k.x * k.z * t + k.y * s},
         Point3{k.y * k.x * t + k.z * s, c + k.y * k.y * t, k.y * k.z * t - k.x * s},
         Point3{k.z * k.x * t - k.y * s, k.z * k.y * t + k.x * s, c + k.z * k.z * t}}
    };
}

Point3 ToSensorAxes(int sensorType, const Point3& body)
{
    if (survey::AxesOf(sensorType) == survey::SensorAxes::ForwardLeftUp)
        return {body.x, -body.y, -body.z};
    return {body.y, body.x, -body.z};
}

// Both exchanges are their own inverse.
Point3 FromSensorAxes(int sensorType, const Point3& components)
{
    return ToSensorAxes(sensorType, components);
}

Point3 ToSensorAxesB(int sensorType, const Point3& body)
{
    const Point3 a = ToSensorAxes(sensorType, body);
    return {-a.x, -a.y, a.z};
}

// The rotation between the attitudes, axis times angle: its skew part is the axis times the sine,
// its trace gives the cosine.
Point3 RateBetween(const Matrix& from, const Matrix& to, double seconds)
{
    const Matrix step = from.Transposed() * to;
    const Point3 skew{0.5 * (step.rows[2].y - step.rows[1].z),
                      0.5 * (step.rows[0].z - step.rows[2].x),
                      0.5 * (step.rows[1].x - step.rows[0].y)};
    const double sine = Length(skew);
    if (sine == 0.0) return {};
    const double cosine = 0.5 * (step.rows[0].x + step.rows[1].y + step.rows[2].z - 1.0);
    return (ArcTangent(sine, cosine) / sine / seconds) * skew;
}

} // namespace simulation
