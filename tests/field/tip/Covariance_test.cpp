// SPDX-License-Identifier: MIT
#include "field/tip/Covariance.h"

#include "tests/field/tip/LeaningPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using field::Covariance3;
using tiltpole::field::EllipseOf;
using tiltpole::field::ErrorsOf;
using tiltpole::field::ModelSpreadOf;
using tiltpole::field::PlanEllipse;
using tiltpole::field::PoseChange;
using tiltpole::field::TipCovariance;
using tiltpole::field::TipErrors;
using tiltpole::field::TipSolver;
using tip_tests::kLength;
using tip_tests::kRadian;
using tip_tests::LeaningPole;
using tip_tests::Point3;
using tip_tests::SetupOf;

field::Tip TipOf(const LeaningPole& pole, const Covariance3& antenna)
{
    field::Tip tip;
    tip.pose = pole.Sample();
    tip.declination = pole.declination;
    tip.epoch.sigma = antenna;
    tip.tilt = std::acos(pole.Up().z) * kRadian;
    return tip;
}

// Towards the lean, across it and up.
struct LeanFrame
{
    double along, across, up;
};

LeanFrame DeviationsOf(const Covariance3& c, double azimuth)
{
    const double x = std::cos(azimuth);
    const double y = std::sin(azimuth);
    return {std::sqrt(x * x * c.nn + 2.0 * x * y * c.ne + y * y * c.ee),
            std::sqrt(y * y * c.nn - 2.0 * x * y * c.ne + x * x * c.ee), std::sqrt(c.hh)};
}

// A pole that leans by this [degrees] at a side of the sensor [degrees].
LeaningPole PoleLeaning(double lean, double side, int sensorType)
{
    const double g = lean / kRadian;
    LeaningPole pole{.heading = 250.0, .sensorType = sensorType, .declination = 5.8};
    // Up the pole in forward, right, up of the level frame: −sin p·cos r, sin r, cos p·cos r.
    pole.roll = std::asin(std::sin(g) * std::sin(side / kRadian)) * kRadian;
    pole.pitch = -std::atan2(std::sin(g) * std::cos(side / kRadian), std::cos(g)) * kRadian;
    return pole;
}

Covariance3 WithoutModel(Covariance3 c, const TipSolver& solver, double lean)
{
    const auto model = ModelSpreadOf(solver.GetSetup().sensorType, kLength, lean);
    c.nn -= model.plan * model.plan;
    c.ee -= model.plan * model.plan;
    c.hh -= model.height * model.height;
    return c;
}

// Deviations by the covariance relative to the closed form, mean squares over all sides, for a heading
// that the sensor forms.
LeanFrame AgainstTheClosedForm(double lean, int sensorType)
{
    constexpr TipErrors errors{.tilt = 0.1, .heading = 1.0, .length = 0.001};
    const TipSolver solver(SetupOf(sensorType));
    const double g = lean / kRadian;
    const double tilt = kLength * errors.tilt / kRadian;
    const double turn = kLength * std::sin(g) * errors.heading / kRadian;
    LeanFrame sum{};
    constexpr int kSides = 36;
    for (int side = 0; side < kSides; ++side) {
        const LeaningPole pole = PoleLeaning(lean, side * 360.0 / kSides, sensorType);
        field::Tip tip = TipOf(pole, {});
        tip.pose.heading = pole.heading - pole.declination;
        const LeanFrame found =
            DeviationsOf(WithoutModel(TipCovariance(solver, tip, errors), solver, lean),
                         std::atan2(pole.Up().y, pole.Up().x));
        sum.along += std::pow(
            found.along / std::hypot(std::cos(g) * tilt, std::sin(g) * errors.length), 2.0);
        sum.across += std::pow(found.across / std::hypot(turn, tilt), 2.0);
        sum.up +=
            std::pow(found.up / std::hypot(std::sin(g) * tilt, std::cos(g) * errors.length), 2.0);
    }
    return {std::sqrt(sum.along / kSides), std::sqrt(sum.across / kSides),
            std::sqrt(sum.up / kSides)};
}

struct Drawn
{
    Covariance3 covariance;
    double inside; // part of the draws within the 95 % ellipse stated
};

// The whole chain again and again, with errors of pitch, roll, heading, length, time and antenna. The
// readings stay what they are, so that a tilt error turns the heading through the dip.
Drawn Draw(const TipSolver& solver, const field::Tip& tip, const TipErrors& errors,
           const Covariance3& stated)
{
    constexpr int kDraws = 40000;
    constexpr double kTwoDegreesOfFreedom = 5.991464547107979; // 95 % of chi-squared
    std::mt19937_64 random(20261122);
    std::normal_distribution<double> normal;
    const Point3 middle = solver.Step(tip.pose, tip.declination);
    const Covariance3& antenna = tip.epoch.sigma; // without correlations
    Drawn drawn{};
    int inside = 0;
    for (int i = 0; i < kDraws; ++i) {
        PoseChange change;
        change.pitch = errors.tilt * normal(random);
        change.roll = errors.tilt * normal(random);
        change.heading = errors.heading * normal(random);
        change.length = errors.length * normal(random);
        const Point3 late = errors.time * normal(random) * errors.velocity;
        Point3 d = solver.Step(tip.pose, tip.declination, change) - middle + late;
        d.x += std::sqrt(antenna.nn) * normal(random);
        d.y += std::sqrt(antenna.ee) * normal(random);
        d.z += std::sqrt(antenna.hh) * normal(random);
        Covariance3& c = drawn.covariance;
        c.nn += d.x * d.x / kDraws;
        c.ne += d.x * d.y / kDraws;
        c.ee += d.y * d.y / kDraws;
        c.hh += d.z * d.z / kDraws;
        const double determinant = stated.nn * stated.ee - stated.ne * stated.ne;
        const double square =
            (stated.ee * d.x * d.x - 2.0 * stated.ne * d.x * d.y + stated.nn * d.y * d.y)
            / determinant;
        if (square <= kTwoDegreesOfFreedom) ++inside;
    }
    drawn.inside = static_cast<double>(inside) / kDraws;
    return drawn;
}

constexpr Covariance3 kAntenna{.nn = 64e-6, .ee = 49e-6, .hh = 225e-6};

} // namespace

TEST(TipCovariance, AgreesWithItsClosedForm)
{
    for (const int type : {1, 2}) {
        for (const double lean : {3.0, 10.0, 15.0, 20.0}) {
            const LeanFrame ratio = AgainstTheClosedForm(lean, type);
            EXPECT_NEAR(ratio.along, 1.0, 0.018) << type << ' ' << lean;
            EXPECT_NEAR(ratio.across, 1.0, 0.015) << type << ' ' << lean;
            EXPECT_NEAR(ratio.up, 1.0, 0.018) << type << ' ' << lean;
        }
        const LeanFrame far = AgainstTheClosedForm(30.0, type);
        for (const double ratio : {far.along, far.across, far.up}) {
            EXPECT_GT(ratio, 0.98) << type;
            EXPECT_LT(ratio, 1.06) << type;
        }
    }
}

TEST(TipCovariance, IsThatOfManyDraws)
{
    for (const int type : {1, 2}) {
        const TipSolver solver(SetupOf(type));
        for (const double lean : {0.0, 15.0, 30.0}) {
            const field::Tip tip = TipOf(PoleLeaning(lean, 35.0, type), kAntenna);
            const TipErrors errors{
                .tilt = 0.1,
                .heading = 1.5,
                .length = 0.001,
                .time = 0.02,
                .velocity = {0.3, -0.1, 0.05}
            };
            const Covariance3 stated =
                WithoutModel(TipCovariance(solver, tip, errors), solver, tip.tilt);
            const Drawn drawn = Draw(solver, tip, errors, stated);
            EXPECT_NEAR(std::sqrt(drawn.covariance.nn / stated.nn), 1.0, 0.01)
                << type << ' ' << lean;
            EXPECT_NEAR(std::sqrt(drawn.covariance.ee / stated.ee), 1.0, 0.01)
                << type << ' ' << lean;
            EXPECT_NEAR(std::sqrt(drawn.covariance.hh / stated.hh), 1.0, 0.01)
                << type << ' ' << lean;
            EXPECT_NEAR(drawn.inside, 0.95, 0.02) << type << ' ' << lean;
        }
    }
}

// A pole that leans forward, or back, in the magnetic meridian, its roll off by s: across the lean the
// upper end moves by L·s, and the heading turns by s·(tan dip·cos pitch + sin pitch).
TEST(TipCovariance, LetsATiltErrorTurnTheHeadingThroughTheDip)
{
    constexpr TipErrors errors{.tilt = 0.1};
    for (const double pitch : {-20.0, 20.0}) {
        const LeaningPole pole{.pitch = pitch};
        const Covariance3 c = TipCovariance(TipSolver(SetupOf(2)), TipOf(pole, {}), errors);
        const double p = pitch / kRadian;
        const double turn = std::tan(pole.dip / kRadian) * std::cos(p) + std::sin(p);
        const double expected = kLength * errors.tilt / kRadian * (1.0 - std::sin(p) * turn);
        EXPECT_NEAR(std::sqrt(c.ee), std::fabs(expected), 1e-7) << pitch;
    }
}

TEST(TipCovariance, HoldsTheAntennaOfAnErrorlessPole)
{
    const Covariance3 antenna{1e-4, 2e-5, 3e-4, -1e-5, 4e-5, 9e-4};
    const Covariance3 c =
        TipCovariance(TipSolver(SetupOf(2)), TipOf(PoleLeaning(20.0, 0.0, 2), antenna), {});
    EXPECT_EQ(c.nn, antenna.nn);
    EXPECT_EQ(c.ne, antenna.ne);
    EXPECT_EQ(c.ee, antenna.ee);
    EXPECT_EQ(c.nh, antenna.nh);
    EXPECT_EQ(c.eh, antenna.eh);
    EXPECT_EQ(c.hh, antenna.hh);
}

TEST(TipCovariance, GrowsAlongTheMotionByTheTime)
{
    const TipErrors errors{
        .time = 0.02, .velocity = {0.3, -0.4, 0.1}
    };
    const Covariance3 c =
        TipCovariance(TipSolver(SetupOf(2)), TipOf(PoleLeaning(20.0, 0.0, 2), {}), errors);
    EXPECT_NEAR(c.nn, 36e-6, 1e-15);
    EXPECT_NEAR(c.ne, -48e-6, 1e-15);
    EXPECT_NEAR(c.ee, 64e-6, 1e-15);
    EXPECT_NEAR(c.nh, 12e-6, 1e-15);
    EXPECT_NEAR(c.eh, -16e-6, 1e-15);
    EXPECT_NEAR(c.hh, 4e-6, 1e-15);
}

TEST(TipErrors, JoinTheDeclinationAndTheClocks)
{
    field::Setup setup = SetupOf(2);
    setup.headingSigma = 1.2;
    setup.delaySigma = 0.007;
    field::Field model;
    model.declinationSigma = 0.5;
    const TipErrors errors = ErrorsOf(setup, model, 0.024, {0.1, 0.2, 0.3});
    EXPECT_NEAR(errors.heading, 1.3, 1e-12);
    EXPECT_NEAR(errors.time, 0.025, 1e-12);
    EXPECT_EQ(errors.tilt, setup.tiltSigma);
    EXPECT_EQ(errors.length, setup.lengthSigma);
    EXPECT_EQ(errors.velocity, (Point3{0.1, 0.2, 0.3}));
    setup.north = field::NorthSource::File;
    EXPECT_EQ(ErrorsOf(setup, model, 0.0, {}).heading, 1.2);
}

// What the solution leaves on an errorless straight pole, by the truth.
TEST(ModelSpread, IsWhatTheSolutionOfTypeOneMissesByARollAboutTheForwardAxis)
{
    constexpr int kSides = 360;
    for (const double lean : {5.0, 10.0, 15.0, 20.0, 25.0, 30.0}) {
        double plan = 0.0;
        double height = 0.0;
        const TipSolver solver(SetupOf(1));
        for (int side = 0; side < kSides; ++side) {
            const LeaningPole pole = PoleLeaning(lean, side, 1);
            const Point3 step = solver.Step(pole.Sample(), pole.declination);
            const Point3 miss = step + kLength * pole.Up();
            plan += (miss.x * miss.x + miss.y * miss.y) / (2.0 * kSides);
            height += miss.z * miss.z / kSides;
        }
        EXPECT_NEAR(ModelSpreadOf(1, kLength, lean).plan / std::sqrt(plan), 1.0, 0.03) << lean;
        EXPECT_NEAR(ModelSpreadOf(1, kLength, lean).height / std::sqrt(height), 1.0, 0.03) << lean;
    }
}

TEST(ModelSpread, IsNothingForOtherTypes)
{
    for (const int type : {0, 2, 7}) {
        EXPECT_EQ(ModelSpreadOf(type, 2.0, 30.0).plan, 0.0);
        EXPECT_EQ(ModelSpreadOf(type, 2.0, 30.0).height, 0.0);
    }
}

// A covariance made of semi-axes 3 and 1 at an azimuth.
TEST(PlanEllipse, FindsTheAxesThatMadeIt)
{
    for (const double azimuth : {0.0, 20.0, 45.0, 90.0, 135.0, 179.0}) {
        const double x = std::cos(azimuth / kRadian);
        const double y = std::sin(azimuth / kRadian);
        Covariance3 c;
        c.nn = 9.0 * x * x + y * y;
        c.ne = 8.0 * x * y;
        c.ee = 9.0 * y * y + x * x;
        const PlanEllipse ellipse = EllipseOf(c);
        EXPECT_NEAR(ellipse.major, 3.0, 1e-12) << azimuth;
        EXPECT_NEAR(ellipse.minor, 1.0, 1e-12) << azimuth;
        EXPECT_NEAR(std::remainder(ellipse.orientation - azimuth, 180.0), 0.0, 1e-9) << azimuth;
        EXPECT_GE(ellipse.orientation, 0.0);
        EXPECT_LT(ellipse.orientation, 180.0);
    }
}

TEST(PlanEllipse, MayBeALineOrAPoint)
{
    const PlanEllipse line = EllipseOf({.nn = 1.0, .ne = -1.0, .ee = 1.0});
    EXPECT_NEAR(line.major, std::sqrt(2.0), 1e-12);
    EXPECT_EQ(line.minor, 0.0);
    EXPECT_NEAR(line.orientation, 135.0, 1e-12);
    EXPECT_EQ(EllipseOf({.nn = 1.0, .ne = -1e-300}).orientation, 0.0) << "180 degrees are 0";
    EXPECT_EQ(EllipseOf({}).major, 0.0);
    EXPECT_EQ(EllipseOf({}).orientation, 0.0);
}
