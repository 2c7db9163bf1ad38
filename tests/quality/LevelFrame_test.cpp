// SPDX-License-Identifier: MIT
#include "quality/calibration/LevelFrame.h"

#include "positioning/InclineSensor_Position.h"
#include <Eigen/Geometry>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using tiltpole::quality::FrameOf;
using tiltpole::quality::FrameOfLean;
using tiltpole::quality::LevelFrame;
using tiltpole::quality::Magnetometer;
using tiltpole::quality::Wrapped;

namespace {

constexpr double kRoundOff = 1e-9; // degrees

// The heading that the library computes from the same pose and reading, uncorrected.
double LibraryHeading(double pitch, double roll, const Eigen::Vector3d& m, int sensorType,
                      Magnetometer which)
{
    PoseSensorData s;
    s.dPitch = pitch;
    s.dRoll = roll;
    s.dMag_x = s.dMag_x_2 = m.x();
    s.dMag_y = s.dMag_y_2 = m.y();
    s.dMag_z = s.dMag_z_2 = m.z();
    CInclineSensor_Position position;
    position.SetSensorType(sensorType);
    position.CalculateYaw_A(s);
    position.CalculateYaw_B(s);
    return which == Magnetometer::A ? s.dYaw : s.dYaw_2;
}

RC_GTEST_PROP(LevelFrame, GivesTheHeadingOfThePositioning, ())
{
    const auto within = [](int limit) {
        return *rc::gen::inRange(-limit * 100, limit * 100 + 1) / 100.0;
    };
    const double pitch = within(85);
    const double roll = within(179);
    const Eigen::Vector3d m(within(500), within(500), within(500) + 0.5);
    const int sensorType = *rc::gen::element(0, 1, 2);
    const Magnetometer which = *rc::gen::element(Magnetometer::A, Magnetometer::B);
    const LevelFrame frame = FrameOf(pitch, roll, sensorType, which);
    RC_PRE(std::hypot(frame.forward.dot(m), frame.rightward.dot(m)) > 1.0);
    const double expected = LibraryHeading(pitch, roll, m, sensorType, which);
    RC_ASSERT(std::fabs(Wrapped(frame.Heading(m) - expected)) < kRoundOff);
}

RC_GTEST_PROP(LevelFrame, HasThreeUnitVectorsAtRightAngles, ())
{
    const double pitch = *rc::gen::inRange(-180, 181);
    const double roll = *rc::gen::inRange(-180, 181);
    const LevelFrame f = FrameOf(pitch, roll, *rc::gen::element(0, 1),
                                 *rc::gen::element(Magnetometer::A, Magnetometer::B));
    Eigen::Matrix3d axes;
    axes << f.forward, f.rightward, f.up;
    RC_ASSERT((axes.transpose() * axes - Eigen::Matrix3d::Identity()).norm() < 1e-12);
    RC_ASSERT(std::fabs(f.forward.cross(f.rightward).dot(f.up) + 1.0) < 1e-12);
}

TEST(LevelFrame, PutsUpAlongZOnAPlumbPole)
{
    for (const int type : {0, 1}) {
        for (const Magnetometer which : {Magnetometer::A, Magnetometer::B}) {
            EXPECT_NEAR(FrameOf(0, 0, type, which).up.z(), 1.0, 1e-15) << "type " << type;
        }
    }
}

TEST(LevelFrame, TurnsUpHalfARevolutionForMagnetometerB)
{
    const LevelFrame a = FrameOf(20, -15, 1, Magnetometer::A);
    const LevelFrame b = FrameOf(20, -15, 1, Magnetometer::B);
    EXPECT_NEAR(a.up.x(), -b.up.x(), 1e-15);
    EXPECT_NEAR(a.up.y(), -b.up.y(), 1e-15);
    EXPECT_NEAR(a.up.z(), b.up.z(), 1e-15);
}

TEST(LevelFrame, LeansByTheTiltAskedForInItsDirection)
{
    for (const int type : {0, 1}) {
        const LevelFrame f = FrameOfLean(30, 90, type, Magnetometer::A);
        EXPECT_NEAR(f.up.x(), 0.0, 1e-15) << "type " << type;
        EXPECT_NEAR(f.up.y(), 0.5, 1e-15) << "type " << type;
        EXPECT_NEAR(f.up.z(), std::sqrt(0.75), 1e-15) << "type " << type;
    }
}

TEST(LevelFrame, MakesAFieldThatReadsAsItsHeading)
{
    const LevelFrame f = FrameOf(25, -40, 0, Magnetometer::B);
    const Eigen::Vector3d field = f.Field(123.0, -0.8);
    EXPECT_NEAR(f.Heading(field), 123.0, kRoundOff);
    EXPECT_NEAR(field.norm(), 1.0, 1e-15);
    EXPECT_NEAR(field.dot(f.up), -0.8, 1e-15);
}

} // namespace
