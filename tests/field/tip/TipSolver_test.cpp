// SPDX-License-Identifier: MIT
#include "field/tip/TipSolver.h"

#include "field/ExactAttitude.h"
#include "field/Geodesy.h"
#include "tests/field/tip/LeaningPole.h"
#include "tests/field/tip/Places.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using field::Geodetic;
using field::NorthSource;
using tiltpole::field::TipSolution;
using tiltpole::field::TipSolver;
using tip_tests::Distance;
using tip_tests::kLength;
using tip_tests::LeaningPole;
using tip_tests::Places;
using tip_tests::Point3;
using tip_tests::SetupOf;
using tip_tests::TrueTip;
using Code = field::Reason::Code;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kYear = 2026.9;
constexpr Geodetic kBudapest{47.566055, 19.008354, 232.873};

field::Epoch EpochAt(const Geodetic& antenna)
{
    field::Epoch epoch;
    epoch.fix = field::Fix::Fixed;
    epoch.antenna = antenna;
    return epoch;
}

TipSolution Solve(const field::Setup& setup, const Geodetic& antenna, const field::PoseSample& pose,
                  double year = kYear)
{
    return TipSolver(setup).Solve(EpochAt(antenna), pose, year);
}

// Whether `code` is the first reason, and there is no tip.
bool Refuses(const TipSolution& solution, Code code)
{
    return !solution.tip && !solution.reasons.empty() && solution.reasons.front().code == code
           && !solution.reasons.front().text.empty();
}

LeaningPole PoleAt(const Geodetic& place, int sensorType = 2)
{
    LeaningPole pole{.heading = 250.0, .pitch = 9.0, .roll = -7.0, .sensorType = sensorType};
    pole.declination = field::MagneticFieldAt(place, kYear).declination;
    return pole;
}

} // namespace

// The declination of each place is the model's, which the official values confirm; the axis offset of 11
// degrees is what the readings are turned by. A wrong sign of either moves tips by up to meters.
TEST(Tip, LiesWhereTheLocalFrameHasIt)
{
    constexpr double kOffset = 11.0;
    field::Setup setup = SetupOf(2);
    setup.calibration.sensor.SetMagneticBiasAngle_A(kOffset);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(0.0, 360.0);
    std::uniform_real_distribution<double> lean(-20.0, 20.0);
    int solved = 0;
    for (const Geodetic& place : Places()) {
        LeaningPole pole = PoleAt(place);
        pole.heading = angle(random);
        pole.pitch = lean(random);
        pole.roll = lean(random);
        pole.declination -= kOffset;
        const TipSolution solution = Solve(setup, place, pole.Sample());
        if (field::MagneticFieldAt(place, kYear).horizontal < 2000.0) {
            EXPECT_TRUE(Refuses(solution, Code::NoNorth)) << place.latitude;
            continue;
        }
        ASSERT_TRUE(solution.tip) << place.latitude << ' ' << place.longitude;
        EXPECT_LT(Distance(solution.tip->position, TrueTip(place, pole)), 1e-5)
            << place.latitude << ' ' << place.longitude;
        EXPECT_NEAR(std::remainder(solution.tip->headingTrue - pole.heading, 360.0), 0.0, 1e-9);
        ++solved;
    }
    EXPECT_GE(solved, 190);
}

// With the official components of the field, [nT] to north, east and down, in place of the model's own:
// half of the last digit of a declination, 0.005 degrees, moves the tip by 0.06 mm, a wrong sign by 0.8 m.
TEST(Tip, LiesWhereTheOfficialFieldLeadsIt)
{
    struct OfficialCase
    {
        double latitude, longitude; // [degrees]
        double x, y, z;
    };
    constexpr OfficialCase cases[] = {
        {80.0,  0.0,   6521.6,  145.9,   54791.5 },
        {0.0,   120.0, 39677.8, -109.6,  -10580.2},
        {-80.0, 240.0, 6117.5,  15751.9, -52022.5},
    };
    for (const OfficialCase& c : cases) {
        const Geodetic place{c.latitude, std::remainder(c.longitude, 360.0), 0.0};
        LeaningPole pole{.heading = 40.0, .pitch = 16.0, .roll = 11.0};
        pole.declination = std::atan2(c.y, c.x) * tip_tests::kRadian;
        pole.dip = std::atan2(c.z, std::hypot(c.x, c.y)) * tip_tests::kRadian;
        const TipSolution solution = Solve(SetupOf(2), place, pole.Sample(), 2025.0);
        ASSERT_TRUE(solution.tip);
        EXPECT_LT(Distance(solution.tip->position, TrueTip(place, pole)), 6e-5) << c.latitude;
    }
}

TEST(Tip, TellsLeanAndAzimuthFromTrueNorth)
{
    // Forward axis to the east, raised: the pole leans back, to the west.
    LeaningPole pole{.heading = 90.0, .pitch = 12.0, .roll = 0.0};
    pole.declination = field::MagneticFieldAt(kBudapest, kYear).declination;
    const TipSolution solution = Solve(SetupOf(2), kBudapest, pole.Sample());
    ASSERT_TRUE(solution.tip);
    EXPECT_NEAR(solution.tip->tilt, 12.0, 1e-9);
    EXPECT_NEAR(solution.tip->azimuthTrue, 270.0, 1e-9);
    EXPECT_NEAR(solution.tip->declination, 5.8, 0.1); // of Budapest, 2026
    EXPECT_NEAR(solution.drop, kLength * std::cos(12.0 / tip_tests::kRadian), 1e-12);
}

TEST(Tip, StandsBelowAPlumbPole)
{
    LeaningPole pole = PoleAt(kBudapest);
    pole.pitch = pole.roll = 0.0;
    for (const int type : {0, 1, 2}) {
        pole.sensorType = type;
        const TipSolution solution = Solve(SetupOf(type), kBudapest, pole.Sample());
        ASSERT_TRUE(solution.tip);
        EXPECT_EQ(solution.tip->position.latitude, kBudapest.latitude);
        EXPECT_EQ(solution.tip->position.longitude, kBudapest.longitude);
        EXPECT_NEAR(solution.tip->position.ellipsoidalHeight, kBudapest.ellipsoidalHeight - kLength,
                    1e-12);
        EXPECT_EQ(solution.tip->tilt, 0.0);
        EXPECT_EQ(solution.tip->azimuthTrue, 0.0);
    }
}

TEST(Tip, KeepsWhatTheSensorRead)
{
    const field::PoseSample sample = PoleAt(kBudapest).Sample();
    field::PoseSample formed = sample;
    formed.heading = 33.0;
    for (const field::PoseSample& given : {sample, formed}) {
        const TipSolution solution = Solve(SetupOf(2), kBudapest, given);
        ASSERT_TRUE(solution.tip);
        const PoseSensorData& kept = solution.tip->pose.data;
        EXPECT_EQ(kept.dPitch, given.data.dPitch);
        EXPECT_EQ(kept.dRoll, given.data.dRoll);
        EXPECT_EQ(kept.dMag_x, given.data.dMag_x);
        EXPECT_EQ(kept.dMag_z_2, given.data.dMag_z_2);
    }
}

// With the file's bias alone: it holds offset minus declination, and no date is needed.
TEST(Tip, TakesNorthFromTheFileWhenToldSo)
{
    field::Setup setup = SetupOf(2);
    const LeaningPole pole = PoleAt(kBudapest);
    setup.calibration.sensor.SetMagneticBiasAngle_A(-pole.declination);
    setup.north = NorthSource::File;
    for (const double year : {kYear, 2031.0, kNaN}) {
        const TipSolution solution = Solve(setup, kBudapest, pole.Sample(), year);
        ASSERT_TRUE(solution.tip) << year;
        EXPECT_LT(Distance(solution.tip->position, TrueTip(kBudapest, pole)), 1e-5) << year;
        EXPECT_TRUE(std::isnan(solution.tip->declination)) << year;
    }
}

// The heading that the magnetometers would give, given by the sensor: the same tip for every type.
TEST(Tip, ByAFormedHeadingIsThatOfTheReadings)
{
    for (const int type : {0, 1, 2}) {
        LeaningPole pole = PoleAt(kBudapest, type);
        for (const double heading : {0.0, 77.0, 180.0, 359.9}) {
            pole.heading = heading;
            const field::PoseSample read = pole.Sample();
            const TipSolution byReadings = Solve(SetupOf(type), kBudapest, read);
            ASSERT_TRUE(byReadings.tip);
            field::PoseSample formed;
            formed.data.dPitch = pole.pitch;
            formed.data.dRoll = pole.roll;
            formed.heading = byReadings.tip->headingTrue - byReadings.tip->declination;
            field::Setup uncalibrated = SetupOf(type);
            uncalibrated.calibration.complete = false;
            const TipSolution byHeading = Solve(uncalibrated, kBudapest, formed);
            ASSERT_TRUE(byHeading.tip);
            EXPECT_LT(Distance(byHeading.tip->position, byReadings.tip->position), 1e-8) << type;
        }
    }
}

// By the exact attitude, which shares no formula with the solution: type 2 with the roll as a turn.
TEST(Tip, ByAFormedHeadingIsThatOfTheExactAttitude)
{
    field::PoseSample formed;
    formed.data.dPitch = -14.0;
    formed.data.dRoll = 21.0;
    formed.heading = 123.0;
    const TipSolution solution = Solve(SetupOf(2), kBudapest, formed);
    ASSERT_TRUE(solution.tip);
    const xyhCoordinate up = field::PoleDirection(
        {.pitch = -14.0, .roll = 21.0, .meaning = field::PitchRoll::Turns, .sensorType = 2},
        123.0 + solution.tip->declination);
    // Pitch about x after roll about y: the order of a type 2 sensor, seen from its own axes.
    const LeaningPole pole{
        .heading = 123.0 + solution.tip->declination, .pitch = -14.0, .roll = 21.0};
    EXPECT_NEAR(up.x, pole.Up().x, 1e-12);
    EXPECT_NEAR(up.y, pole.Up().y, 1e-12);
    EXPECT_LT(Distance(solution.tip->position, TrueTip(kBudapest, pole)), 1e-5);
}

// Neither correction nor offset of the magnetometers belongs to a heading that the sensor formed.
TEST(Tip, LeavesTheCalibrationOutOfAFormedHeading)
{
    field::PoseSample formed = PoleAt(kBudapest).Sample();
    formed.heading = 200.0;
    const TipSolution plain = Solve(SetupOf(2), kBudapest, formed);
    field::Setup iron = SetupOf(2);
    Incline_MagneticCorrectParameter correction;
    correction.x0 = 130.0;
    correction.b = 1.2;
    iron.calibration.sensor.SetMagneticCorrectPar_A(correction);
    iron.calibration.sensor.SetMagneticBiasAngle_A(4.0);
    const TipSolution calibrated = Solve(iron, kBudapest, formed);
    ASSERT_TRUE(plain.tip && calibrated.tip);
    EXPECT_NEAR(plain.tip->headingTrue, 200.0 + plain.tip->declination, 1e-9);
    EXPECT_EQ(calibrated.tip->headingTrue, plain.tip->headingTrue);

    iron.north = NorthSource::File; // here the bias is what leads to true north
    const TipSolution byFile = Solve(iron, kBudapest, formed);
    ASSERT_TRUE(byFile.tip);
    EXPECT_NEAR(byFile.tip->headingTrue, 196.0, 1e-9);
}

// Hard iron in the readings, its correction in the calibration.
TEST(Tip, CorrectsTheReadings)
{
    const LeaningPole pole = PoleAt(kBudapest);
    field::PoseSample sample = pole.Sample();
    sample.data.dMag_x += 130.0;
    sample.data.dMag_z -= 40.0;
    field::Setup setup = SetupOf(2);
    Incline_MagneticCorrectParameter correction;
    correction.x0 = 130.0;
    correction.z0 = -40.0;
    setup.calibration.sensor.SetMagneticCorrectPar_A(correction);
    const TipSolution solution = Solve(setup, kBudapest, sample);
    ASSERT_TRUE(solution.tip);
    EXPECT_LT(Distance(solution.tip->position, TrueTip(kBudapest, pole)), 1e-5);
}

TEST(Tip, IsRefusedWhereThereIsNoNorth)
{
    const field::PoseSample pose = PoleAt(kBudapest).Sample();
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), {85.01, 19.0, 0.0}, pose), Code::NoNorth));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), {-85.01, 19.0, 0.0}, pose), Code::NoNorth));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, pose, 2030.01), Code::NoNorth));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, pose, 2024.99), Code::NoNorth));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, pose, kNaN), Code::NoNorth));
    EXPECT_TRUE(Solve(SetupOf(2), kBudapest, pose, 2030.0).tip);
}

TEST(Tip, BeyondLatitude85IsRefusedByTheFileToo)
{
    field::Setup setup = SetupOf(2);
    setup.north = NorthSource::File;
    const field::PoseSample pose = PoleAt(kBudapest).Sample();
    EXPECT_TRUE(Refuses(Solve(setup, {85.01, 19.0, 0.0}, pose), Code::NoNorth));
    EXPECT_TRUE(Solve(setup, {85.0, 19.0, 0.0}, pose).tip);
}

// The magnetic pole of the south lies near 64 south, 136 east.
TEST(Tip, IsRefusedNearTheMagneticPoleAndNotedAroundIt)
{
    const Geodetic near{-64.0, 136.0, 0.0};
    const Geodetic around{-64.0, 149.0, 0.0};
    ASSERT_LT(field::MagneticFieldAt(near, kYear).horizontal, 2000.0);
    const double horizontal = field::MagneticFieldAt(around, kYear).horizontal;
    ASSERT_GT(horizontal, 2000.0);
    ASSERT_LT(horizontal, 6000.0);
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), near, PoleAt(near).Sample()), Code::NoNorth));
    const TipSolution noted = Solve(SetupOf(2), around, PoleAt(around).Sample());
    EXPECT_TRUE(noted.tip);
    ASSERT_EQ(noted.reasons.size(), 1u);
    EXPECT_EQ(noted.reasons.front().code, Code::WeakField);
    EXPECT_TRUE(Solve(SetupOf(2), kBudapest, PoleAt(kBudapest).Sample()).reasons.empty());
}

TEST(Tip, NeedsACalibrationForReadings)
{
    field::Setup setup = SetupOf(2);
    setup.calibration.complete = false;
    const field::PoseSample pose = PoleAt(kBudapest).Sample();
    EXPECT_TRUE(Refuses(Solve(setup, kBudapest, pose), Code::NoCalibration));
}

TEST(Tip, NeedsADirectionOfTheField)
{
    field::PoseSample none;
    none.data.dPitch = 5.0;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, none), Code::NoHeading));
    field::PoseSample broken = PoleAt(kBudapest).Sample();
    broken.data.dMag_y = kNaN;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, broken), Code::NoHeading));
    field::PoseSample formed = none;
    formed.heading = kNaN;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, formed), Code::NoHeading));
}

// A field along one axis of the sensor has a direction, unless it is the plumb line's.
TEST(Tip, NeedsAHorizontalPartOfTheField)
{
    field::PoseSample plumb;
    plumb.data.dMag_y = 300.0;
    EXPECT_TRUE(Solve(SetupOf(2), kBudapest, plumb).tip);
    plumb.data.dMag_y = 0.0;
    plumb.data.dMag_z = -400.0;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, plumb), Code::NoHeading));
    plumb.data.dPitch = 10.0;
    EXPECT_TRUE(Solve(SetupOf(2), kBudapest, plumb).tip);
}

// A heading a rounding error below north is north, and 360 degrees are 0.
TEST(Tip, HasAzimuthsBelowAFullTurn)
{
    field::Setup setup = SetupOf(2);
    setup.north = NorthSource::File;
    field::PoseSample formed;
    formed.data.dPitch = -12.0;
    for (const double heading : {0.0, -0.0, -1e-300, -1e-18, -1e-15, -1e-14, 360.0}) {
        formed.heading = heading;
        const TipSolution solution = Solve(setup, kBudapest, formed);
        ASSERT_TRUE(solution.tip);
        for (const double azimuth : {solution.tip->headingTrue, solution.tip->azimuthTrue}) {
            EXPECT_GE(azimuth, 0.0) << heading;
            EXPECT_LT(azimuth, 360.0) << heading;
            EXPECT_NEAR(std::remainder(azimuth, 360.0), 0.0, 1e-12) << heading;
        }
    }
}

// The lean is known without a north: the antenna stands drop above the tip.
TEST(Tip, TellsTheLeanWithoutANorth)
{
    const LeaningPole pole = PoleAt(kBudapest);
    const TipSolution solution = Solve(SetupOf(2), kBudapest, pole.Sample(), kNaN);
    EXPECT_FALSE(solution.tip);
    EXPECT_NEAR(solution.drop, kLength * pole.Up().z, 1e-12);
    EXPECT_NEAR(std::cos(solution.lean / tip_tests::kRadian), pole.Up().z, 1e-12);
}

TEST(Tip, NeedsAPoleThatStandsAndAPlace)
{
    field::PoseSample pose = PoleAt(kBudapest).Sample();
    pose.data.dPitch = kNaN;
    const TipSolution broken = Solve(SetupOf(2), kBudapest, pose);
    EXPECT_TRUE(Refuses(broken, Code::NoPose));
    EXPECT_TRUE(std::isnan(broken.lean) && std::isnan(broken.drop));
    pose.data.dPitch = 100.0;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, pose), Code::NoPose));
    pose.data.dPitch = 50.0;
    pose.data.dRoll = -100.0;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), kBudapest, pose), Code::NoPose));
    pose.data.dRoll = 50.0; // both slopes at once are no direction, both turns are
    EXPECT_TRUE(Refuses(Solve(SetupOf(1), kBudapest, pose), Code::NoPose));
    EXPECT_TRUE(Solve(SetupOf(2), kBudapest, pose).tip);
    pose.data.dRoll = 0.0;
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), {kNaN, 19.0, 0.0}, pose), Code::NoFix));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), {47.0, kNaN, 0.0}, pose), Code::NoFix));
    EXPECT_TRUE(Refuses(Solve(SetupOf(2), {47.0, 19.0, kNaN}, pose), Code::NoFix));
}

TEST(Tip, StepIsWhatSolveAdds)
{
    const field::PoseSample pose = PoleAt(kBudapest).Sample();
    const TipSolver solver(SetupOf(2));
    const TipSolution solution = solver.Solve(EpochAt(kBudapest), pose, kYear);
    ASSERT_TRUE(solution.tip);
    const Point3 step = solver.Step(pose, solution.tip->declination);
    const Geodetic tip = field::Offset(kBudapest, step.x, step.y, step.z);
    EXPECT_EQ(tip.latitude, solution.tip->position.latitude);
    EXPECT_EQ(tip.longitude, solution.tip->position.longitude);
    EXPECT_EQ(tip.ellipsoidalHeight, solution.tip->position.ellipsoidalHeight);
}
