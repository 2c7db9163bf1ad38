// SPDX-License-Identifier: MIT
//
// Turns of a pole with known truth, made from closed formulas and without noise of their own.
//
//   level axes   north, west, up
//   sensor axes  type 1: x forward, y left, z up the pole; type 0: x right, y forward, z up
//   raw          gain·field + offset; B sees x and y of the sensor's axes negated
#pragma once

#include "quality/Calibration.h"
#include <Eigen/Geometry>
#include <cmath>
#include <optional>
#include <random>

namespace turnmaker {

using Eigen::Matrix3d;
using Eigen::Vector3d;

inline constexpr double kPerDegree = 0.017453292519943295769;

struct Distortion
{
    Matrix3d gain = Matrix3d::Identity();
    Vector3d offset = Vector3d::Zero(); // counts

    Vector3d Raw(const Vector3d& field) const { return gain * field + offset; }
};

struct World
{
    double strength = 500.0; // counts
    double dip = 65.0;       // degrees
    Distortion a;
    Distortion b;
    int sensorType = 1;
    double noise = 0.0;     // counts
    double tiltNoise = 0.0; // degrees
};

struct Plan
{
    int samples = 200;
    double from = 0.0; // degrees turned
    double to = 360.0;
    Vector3d axis = Vector3d::UnitZ();  // in the sensor's axes
    Vector3d space = Vector3d::UnitZ(); // the same axis in level axes
    double magnet = 0.0;                // counts to the north, over 40 degrees in the middle
    // Where given, the sensor records accelerations and gyros, and its pitch and roll follow the
    // accelerations: this much of them turns with the pole, across the axis [g].
    std::optional<double> outward{};
    bool hasGyros = true;
};

inline Plan HorizontalPlan()
{
    return {};
}

inline Plan VerticalPlan(double axisHeading = 20.0)
{
    Plan plan;
    plan.axis = Vector3d::UnitY();
    plan.space = {std::cos(axisHeading * kPerDegree), -std::sin(axisHeading * kPerDegree), 0.0};
    return plan;
}

// Pitch and roll whose vertical is `up` in the sensor's axes.
inline void SetTilt(PoseSensorData& sample, const Vector3d& up, int sensorType)
{
    const double lean = std::clamp(sensorType == 1 ? up.x() : up.y(), -1.0, 1.0);
    sample.dPitch = std::asin(lean) / kPerDegree;
    sample.dRoll = std::atan2(sensorType == 1 ? up.y() : -up.x(), up.z()) / kPerDegree;
}

// What a sensor feels whose pitch and roll come from its accelerometers.
inline void SetMotion(PoseSensorData& sample, const Plan& plan, const Vector3d& up, int sensorType)
{
    const Vector3d felt = up + *plan.outward * plan.axis.unitOrthogonal();
    sample.dAcc_x = felt.x();
    sample.dAcc_y = felt.y();
    sample.dAcc_z = felt.z();
    const Vector3d rate = (plan.hasGyros ? 20.0 : 0.0) * plan.axis.normalized();
    sample.dGyro_x = rate.x();
    sample.dGyro_y = rate.y();
    sample.dGyro_z = rate.z();
    SetTilt(sample, felt.normalized(), sensorType);
}

inline std::vector<PoseSensorData> MakeTurn(const World& world, const Plan& plan)
{
    std::mt19937_64 random(20240611);
    std::normal_distribution<double> normal;
    const auto noise = [&](double size) { return size > 0.0 ? size * normal(random) : 0.0; };
    const Matrix3d start =
        Eigen::Quaterniond::FromTwoVectors(plan.axis, plan.space).toRotationMatrix();
    const double dip = world.dip * kPerDegree;
    const Vector3d earth = world.strength * Vector3d(std::cos(dip), 0.0, -std::sin(dip));
    std::vector<PoseSensorData> turn;
    for (int i = 0; i < plan.samples; ++i) {
        const double share = (i + 0.5) / plan.samples;
        const double turned = plan.from + (plan.to - plan.from) * share;
        const Matrix3d attitude =
            Eigen::AngleAxisd(turned * kPerDegree, plan.space.normalized()) * start;
        Vector3d level = earth;
        if (std::fabs(turned - (plan.from + plan.to) / 2.0) < 20.0) level.x() += plan.magnet;
        const Vector3d field = attitude.transpose() * level;
        const auto shaken = [&] {
            return Vector3d(noise(world.noise), noise(world.noise), noise(world.noise));
        };
        const Vector3d a = world.a.Raw(field) + shaken();
        const Vector3d b = world.b.Raw({-field.x(), -field.y(), field.z()}) + shaken();
        PoseSensorData sample;
        sample.nHour = 10;
        sample.nSecond = i / 20 % 60;
        sample.nMinute = i / 1200;
        sample.dMag_x = a.x();
        sample.dMag_y = a.y();
        sample.dMag_z = a.z();
        sample.dMag_x_2 = b.x();
        sample.dMag_y_2 = b.y();
        sample.dMag_z_2 = b.z();
        const Vector3d up = attitude.transpose() * Vector3d::UnitZ();
        SetTilt(sample, up, world.sensorType);
        if (plan.outward) SetMotion(sample, plan, up, world.sensorType);
        sample.dPitch += noise(world.tiltNoise);
        sample.dRoll += noise(world.tiltNoise);
        turn.push_back(sample);
    }
    return turn;
}

inline quality::CalibrationTurns MakeTurns(const World& world, const Plan& horizontal,
                                           const Plan& vertical)
{
    return {MakeTurn(world, horizontal), MakeTurn(world, vertical)};
}

inline quality::CalibrationTurns MakeTurns(const World& world)
{
    return MakeTurns(world, HorizontalPlan(), VerticalPlan());
}

// A symmetric soft iron with all its terms, and hard iron.
inline World DistortedWorld()
{
    World world;
    world.a.gain << 1.04, 0.03, -0.02, 0.03, 0.95, 0.025, -0.02, 0.025, 1.02;
    world.a.offset = {120.0, -80.0, 45.0};
    world.b.gain << 0.97, -0.02, 0.015, -0.02, 1.05, 0.01, 0.015, 0.01, 0.99;
    world.b.offset = {-60.0, 150.0, -90.0};
    return world;
}

// A lower triangular distortion, which eight values undo exactly; the first gain is one.
inline World TriangularWorld()
{
    World world;
    world.a.gain << 1.0, 0.0, 0.0, 0.04, 0.95, 0.0, -0.03, 0.02, 1.05;
    world.a.offset = {120.0, -80.0, 45.0};
    world.b.gain << 1.0, 0.0, 0.0, -0.02, 1.03, 0.0, 0.01, -0.015, 0.97;
    world.b.offset = {-60.0, 150.0, -90.0};
    return world;
}

} // namespace turnmaker
