// SPDX-License-Identifier: MIT
//
// Calibration on the spot against the true errors of simulated sensors, each way in which it is refused,
// and what it is worth to the occupations that follow.
#include "field/SpotCalibration.h"

#include "simulation/Occupation.h"
#include "survey/Correction.h"
#include "tests/field/OccupationFigures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace {

using field::InertialSample;
using field::SpotCalibration;
using field::SpotReason;
using field::SpotResult;
using field_tests::Covers;
using field_tests::PlanError;
using field_tests::Quantile;
using simulation::OccupationMotion;
using simulation::OccupationPlan;
using simulation::OccupationRow;
using simulation::PoleErrors;

constexpr double kRadian = 57.29577951308232; // [degrees]

xyhCoordinate CoordinateOf(const simulation::Point3& p)
{
    return {p.x, p.y, p.z};
}

simulation::PoseSensor Sensor()
{
    simulation::PoseSensor sensor;
    sensor.a.noise = 1.0;
    sensor.b.noise = 1.0;
    sensor.gyroNoise = 0.1;
    sensor.accelerationNoise = 0.002;
    return sensor;
}

OccupationPlan FreePlan()
{
    OccupationPlan plan;
    plan.motion = simulation::UsualMotion(OccupationMotion::Free);
    plan.points = 1;
    return plan;
}

InertialSample SampleOf(const OccupationRow& row)
{
    const PoseSensorData& s = row.sample;
    InertialSample sample;
    sample.seconds = row.truth.pose.seconds;
    sample.rate = {s.dGyro_x, s.dGyro_y, s.dGyro_z};
    sample.acceleration = {s.dAcc_x, s.dAcc_y, s.dAcc_z};
    sample.magnetic = {s.dMag_x, s.dMag_y, s.dMag_z};
    return sample;
}

// A row as it is fed, to be spoilt by a test.
struct Fed
{
    InertialSample sample;
    field::SensorVector magneticB;
    bool hasEpoch = false;
    field::AntennaEpoch epoch;
};

std::vector<Fed> RowsOf(const simulation::Occupations& log)
{
    std::vector<Fed> rows;
    for (const OccupationRow& row : log.rows) {
        Fed fed;
        fed.sample = SampleOf(row);
        fed.magneticB = {row.sample.dMag_x_2, row.sample.dMag_y_2, row.sample.dMag_z_2};
        fed.hasEpoch = row.antenna.has_value();
        fed.epoch.seconds = fed.sample.seconds;
        if (row.antenna) fed.epoch.position = CoordinateOf(*row.antenna);
        rows.push_back(fed);
    }
    return rows;
}

SpotResult ResultOf(const std::vector<Fed>& rows, const field::SpotSetup& setup = {})
{
    SpotCalibration calibration(setup);
    for (const Fed& row : rows) {
        calibration.Add(row.sample, row.magneticB);
        if (row.hasEpoch) calibration.Add(row.epoch);
    }
    return calibration.Estimate();
}

struct Calibrated
{
    SpotResult result;
    PoleErrors truth;
};

Calibrated CalibratedBy(const OccupationPlan& plan, std::uint64_t seed)
{
    const simulation::Occupations log = SimulateOccupations(Sensor(), {}, plan, seed);
    return {ResultOf(RowsOf(log)), log.points.front().errors};
}

double Length(double x, double y, double z = 0.0)
{
    return std::sqrt(x * x + y * y + z * z);
}

double Distance(const field::SensorVector& v, const simulation::Point3& p)
{
    return Length(v.x - p.x, v.y - p.y, v.z - p.z);
}

// How many of the components lie within 1.96 sigma.
struct Held
{
    int within = 0;
    int all = 0;

    void Take(double error, double sigma)
    {
        ++all;
        within += std::fabs(error) <= 1.96 * sigma ? 1 : 0;
    }
    void Take(const field::SpotVector& found, const simulation::Point3& truth)
    {
        Take(found.value.x - truth.x, found.sigma.x);
        Take(found.value.y - truth.y, found.sigma.y);
        Take(found.value.z - truth.z, found.sigma.z);
    }
    double Share() const { return static_cast<double>(within) / all; }
};

TEST(SpotCalibration, FindsTheErrorsOfTheSensors)
{
    std::vector<double> axis;
    std::vector<double> force;
    std::vector<double> ironA;
    std::vector<double> ironB;
    Held heldAxis;
    Held heldForce;
    Held heldGyro;
    Held heldIron;
    int usable = 0;
    for (std::uint64_t seed = 41; seed < 61; ++seed) {
        const auto [result, truth] = CalibratedBy(FreePlan(), seed);
        usable += result.IsUsable() ? 1 : 0;
        const double forward = result.axisX - truth.axisForward;
        const double right = -result.axisY - truth.axisRight;
        axis.push_back(Length(forward, right));
        heldAxis.Take(forward, result.axisSigma);
        heldAxis.Take(right, result.axisSigma);
        const auto& bias = result.accelerometerBias;
        force.push_back(kRadian
                        * Length(bias.value.x - truth.accelerationBias.x,
                                 bias.value.y - truth.accelerationBias.y));
        heldForce.Take(bias, truth.accelerationBias);
        heldGyro.Take(result.gyroBias, truth.gyroBias);
        ironA.push_back(Distance(result.a.hardIron.value, truth.hardIronA));
        ironB.push_back(Distance(result.b.hardIron.value, truth.hardIronB));
        heldIron.Take(result.a.hardIron, truth.hardIronA);
        heldIron.Take(result.b.hardIron, truth.hardIronB);
    }
    EXPECT_EQ(usable, 20);
    EXPECT_LT(Quantile(axis, 0.5), 0.061);
    EXPECT_LT(Quantile(force, 0.5), 0.069);
    EXPECT_LT(Quantile(ironA, 0.5), 1.2);
    EXPECT_LT(Quantile(ironB, 0.5), 1.2);
    EXPECT_GE(heldAxis.Share(), 0.85);
    EXPECT_GE(heldForce.Share(), 0.85);
    EXPECT_GE(heldGyro.Share(), 0.85);
    EXPECT_GE(heldIron.Share(), 0.93);
}

// Hard iron as large as that of a sensor that was never calibrated.
TEST(SpotCalibration, CorrectsASensorThatWasNeverCalibrated)
{
    OccupationPlan plan = FreePlan();
    plan.spread.hardIron = 100.0;
    const simulation::EarthField field{.declination = 4.0};
    const simulation::Occupations log = SimulateOccupations(Sensor(), field, plan, 5);
    const SpotResult result = ResultOf(RowsOf(log));
    ASSERT_TRUE(result.IsUsable()) << SpotText(result);
    EXPECT_NEAR(result.a.bias, -4.0, 1.5);
    EXPECT_NEAR(result.a.dip, 66.0, 1.5);
    std::vector<double> errors;
    for (const OccupationRow& row : log.rows) {
        const auto& s = row.sample;
        const auto m =
            tiltpole::survey::Corrected(result.a.correction, {s.dMag_x, s.dMag_y, s.dMag_z});
        const auto& angles = row.truth.pose.angles;
        const field::Tilt tilt{
            .pitch = angles.pitch, .roll = angles.roll, .meaning = field::PitchRoll::Turns};
        const double heading = MagneticHeading(tilt, {m.x, m.y, m.z}) - result.a.bias;
        errors.push_back(std::fabs(std::remainder(heading - angles.heading, 360.0)));
    }
    EXPECT_LT(Quantile(errors, 0.5), 0.6);
    EXPECT_LT(Quantile(errors, 0.95), 1.5);
}

// The same readings with the axes named as those of the other sensor types.
TEST(SpotCalibration, FollowsTheAxesOfTheSensorType)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 8));
    const SpotResult forward = ResultOf(rows);
    const auto turned = [](field::SensorVector& v) { v = {-v.y, v.x, v.z}; };
    for (Fed& row : rows) {
        turned(row.sample.rate);
        turned(row.sample.acceleration);
        turned(row.sample.magnetic);
        turned(row.magneticB);
    }
    const SpotResult right = ResultOf(rows, {.sensorType = 2});
    ASSERT_TRUE(right.IsUsable());
    EXPECT_NEAR(right.axisX, -forward.axisY, 1e-9);
    EXPECT_NEAR(right.axisY, forward.axisX, 1e-9);
    EXPECT_NEAR(right.gyroBias.value.x, -forward.gyroBias.value.y, 1e-9);
    EXPECT_NEAR(right.gyroScale.value.x, forward.gyroScale.value.y, 1e-9);
    EXPECT_NEAR(right.a.hardIron.value.x, -forward.a.hardIron.value.y, 1e-6);
    EXPECT_NEAR(right.b.hardIron.value.y, forward.b.hardIron.value.x, 1e-6);
    // Which axis is the reference of the correction makes a difference.
    EXPECT_NEAR(right.a.bias, forward.a.bias, 1.5);
}

void CheckRefused(const std::vector<Fed>& rows, SpotReason reason, const char* what)
{
    const SpotResult result = ResultOf(rows);
    EXPECT_EQ(result.reason, reason) << what << ": " << SpotText(result);
    EXPECT_FALSE(result.IsUsable()) << what;
}

void CheckRefused(const OccupationPlan& plan, SpotReason reason, const char* what)
{
    CheckRefused(RowsOf(SimulateOccupations(Sensor(), {}, plan, 3)), reason, what);
}

TEST(SpotCalibration, AsksForTheMotionThatIsMissing)
{
    OccupationPlan plan = FreePlan();
    plan.motion.turn = 180.0;
    CheckRefused(plan, SpotReason::TurnMore, "half a turn");
    plan = FreePlan();
    plan.motion.amplitude = 3.0;
    CheckRefused(plan, SpotReason::LeanFurther, "small leans");
    plan = FreePlan();
    plan.motion.duration = 8.0;
    CheckRefused(plan, SpotReason::TooShort, "8 s");
    plan.motion.duration = 36.0;
    CheckRefused(plan, SpotReason::TooLong, "36 s");
}

TEST(SpotCalibration, NamesWhatDoesNotFit)
{
    OccupationPlan plan = FreePlan();
    plan.motion.slips.push_back({
        .at = 10.0, .by = {0.04, 0.0, 0.0}
    });
    CheckRefused(plan, SpotReason::TipMoved, "a slip");
    plan = FreePlan();
    plan.poleError = 0.06;
    CheckRefused(plan, SpotReason::WrongLength, "a longer pole");
    plan.poleError = -0.3;
    CheckRefused(plan, SpotReason::WrongLength, "1.7 m for 2 m");
    plan = FreePlan();
    plan.magnets.push_back({.from = 5.0, .to = 9.0, .strength = 80.0, .azimuth = 90.0});
    CheckRefused(plan, SpotReason::FieldDisturbed, "a magnet");
    plan = FreePlan();
    plan.losses.gaps.push_back({10.0, 10.3});
    CheckRefused(plan, SpotReason::Gap, "a pause");
}

TEST(SpotCalibration, NamesAMagnetometerWhoseSignsAreAllReversed)
{
    for (const bool isA : {true, false}) {
        std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
        for (Fed& row : rows) {
            field::SensorVector& m = isA ? row.sample.magnetic : row.magneticB;
            m = {-m.x, -m.y, -m.z};
        }
        CheckRefused(rows, SpotReason::SensorsContradict, isA ? "A" : "B");
    }
}

TEST(SpotCalibration, RefusesRowsThatCannotBeUsed)
{
    const std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    const auto check = [&rows](SpotReason reason, const char* what, auto spoil) {
        std::vector<Fed> spoilt = rows;
        for (std::size_t i = 1; i < spoilt.size(); ++i)
            spoil(spoilt[i], spoilt[i - 1]);
        CheckRefused(spoilt, reason, what);
    };
    check(SpotReason::TimeRanBack, "times repeat",
          [](Fed& row, const Fed& last) { row.sample.seconds = last.sample.seconds; });
    check(SpotReason::SensorsContradict, "axes exchanged",
          [](Fed& row, const Fed&) { std::swap(row.sample.rate.x, row.sample.rate.y); });
    CheckRefused(std::vector<Fed>(), SpotReason::NoInertialSamples, "nothing");
    std::vector<Fed> spoilt = rows;
    for (Fed& row : spoilt)
        row.hasEpoch = false;
    CheckRefused(spoilt, SpotReason::NoAntennaEpochs, "no epochs");
    for (Fed& row : spoilt)
        row.sample.rate.x = std::numeric_limits<double>::quiet_NaN();
    CheckRefused(spoilt, SpotReason::NoInertialSamples, "no numbers");
}

TEST(SpotCalibration, NamesTheLargerOfAStepAndAWrongLength)
{
    OccupationPlan plan = FreePlan();
    plan.motion.slips.push_back({
        .at = 10.0, .by = {0.04, 0.0, 0.0}
    });
    plan.poleError = 0.15;
    CheckRefused(plan, SpotReason::WrongLength, "a much longer pole and a slip");
    plan.motion.slips.front().by = {0.3, 0.0, 0.0};
    plan.poleError = 0.02;
    CheckRefused(plan, SpotReason::TipMoved, "a large slip and a longer pole");
}

TEST(SpotCalibration, NamesAFieldThatOneMagnetometerAloneSees)
{
    for (const bool isA : {true, false}) {
        std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
        for (Fed& row : rows)
            if (row.sample.seconds > 5.0 && row.sample.seconds < 9.0)
                (isA ? row.sample.magnetic : row.magneticB).x += 120.0;
        CheckRefused(rows, SpotReason::FieldDisturbed, isA ? "A" : "B");
    }
}

// What the gate does not believe is left out.
TEST(SpotCalibration, LeavesOutReadingsThatAreDisturbed)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    for (Fed& row : rows) {
        row.sample.disturbed = row.sample.seconds > 5.0 && row.sample.seconds < 7.0;
        if (row.sample.disturbed) row.sample.magnetic.x += 120.0;
    }
    const SpotResult result = ResultOf(rows);
    EXPECT_TRUE(result.IsUsable()) << SpotText(result);
}

TEST(SpotCalibration, RefusesAnAntennaThatIsWorseThanItSays)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    int epoch = 0;
    for (Fed& row : rows)
        if (row.hasEpoch) row.epoch.position.h += ++epoch % 2 == 0 ? 0.25 : -0.25;
    CheckRefused(rows, SpotReason::SensorsContradict, "heights");
    rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    for (Fed& row : rows)
        if (row.hasEpoch && ++epoch % 5 < 2) row.epoch.position.h += 2.0;
    CheckRefused(rows, SpotReason::SensorsContradict, "two of five elsewhere");
}

// The pole's errors do as much.
TEST(SpotCalibration, NamesNoStepBelowTwelveMillimeters)
{
    for (const std::uint64_t seed : {3u, 4u, 5u}) {
        OccupationPlan plan = FreePlan();
        plan.motion.slips.push_back({
            .at = 10.0, .by = {0.009, 0.0, 0.0}
        });
        const SpotResult result = CalibratedBy(plan, seed).result;
        EXPECT_LT(result.tipStep, 0.012);
        EXPECT_TRUE(result.IsUsable()) << SpotText(result);
    }
}

TEST(SpotCalibration, GoesOnWhereAMagnetometerWasReadForTwoSecondsOnly)
{
    for (const bool isA : {true, false}) {
        std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
        for (Fed& row : rows)
            if (row.sample.seconds > 2.0) (isA ? row.sample.magnetic : row.magneticB) = {};
        const SpotResult result = ResultOf(rows);
        EXPECT_TRUE(result.a.found && result.b.found);
        EXPECT_EQ(result.reason, SpotReason::GoOn) << SpotText(result);
    }
}

TEST(SpotCalibration, GoesOnWhereAccelerationsAreNoisyAndRefusesThemWhereTheyAreWild)
{
    for (const double noise : {0.15, 0.4}) { // [g]
        simulation::PoseSensor sensor = Sensor();
        sensor.accelerationNoise = noise;
        const SpotResult result = ResultOf(RowsOf(SimulateOccupations(sensor, {}, FreePlan(), 3)));
        EXPECT_EQ(result.reason, noise < 0.3 ? SpotReason::GoOn : SpotReason::SensorsContradict);
        EXPECT_LT(std::fabs(result.lengthError), 0.015) << "the antenna fits";
    }
}

TEST(SpotCalibration, RefusesAccelerationsThatAreNoGravity)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    for (Fed& row : rows) {
        const double shake = 0.4 * std::sin(3.0 * row.sample.seconds);
        row.sample.acceleration.x += shake;
        row.sample.acceleration.y -= shake;
    }
    CheckRefused(rows, SpotReason::SensorsContradict, "shaken");
}

TEST(SpotCalibration, GoesOnBesideTwoSamplesOfWrongTime)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    for (const std::size_t i : {500u, 900u})
        rows[i].sample.seconds = rows[i - 1].sample.seconds;
    const SpotResult result = ResultOf(rows);
    EXPECT_EQ(result.rejected, 2);
    EXPECT_TRUE(result.IsUsable()) << SpotText(result);
}

TEST(SpotCalibration, NeedsAntennaPositionsWithinTheTimeOfItsSamples)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
    for (Fed& row : rows)
        row.epoch.seconds += 100.0;
    CheckRefused(rows, SpotReason::NoSolution, "100 s later");
}

TEST(SpotCalibration, RefusesPositionsBeyondAllNumbers)
{
    for (const double size : {1e200, 1e307}) {
        std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 3));
        int epoch = 0;
        for (Fed& row : rows)
            if (row.hasEpoch) row.epoch.position.x = ++epoch % 2 == 0 ? size : -size;
        CheckRefused(rows, SpotReason::SensorsContradict, "elsewhere");
    }
}

TEST(SpotCalibration, HoldsNoMoreThan30000SamplesAnd3000Positions)
{
    InertialSample sample;
    sample.rate = {1.0, 2.0, 3.0};
    sample.acceleration = {0.0, 0.0, 1.0};
    field::AntennaEpoch epoch;
    for (const bool samples : {true, false}) {
        SpotCalibration spot({});
        EXPECT_TRUE(spot.Add(sample));
        EXPECT_TRUE(spot.Add(epoch));
        const int most = samples ? 30000 : 3000;
        const auto add = [&](int i) {
            InertialSample next = sample;
            field::AntennaEpoch nextEpoch = epoch;
            next.seconds = nextEpoch.seconds = 0.001 * i;
            return samples ? spot.Add(next) : spot.Add(nextEpoch);
        };
        for (int i = 1; i < most; ++i)
            ASSERT_TRUE(add(i)) << i;
        EXPECT_FALSE(add(most));
        EXPECT_EQ(spot.Estimate().reason, SpotReason::TooLong);
        EXPECT_EQ(spot.Estimate().samples, samples ? most : 1);
        EXPECT_EQ(spot.Estimate().epochs, samples ? 1 : most);
    }
}

TEST(SpotCalibration, TakesNothingThatIsNotFinite)
{
    SpotCalibration spot({});
    field::InertialSample sample;
    sample.seconds = 1.0;
    field::AntennaEpoch epoch;
    epoch.seconds = 1.0;
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (double* const value :
             {&sample.seconds, &sample.rate.x, &sample.rate.y, &sample.rate.z,
              &sample.acceleration.x, &sample.acceleration.y, &sample.acceleration.z,
              &sample.magnetic.x, &sample.magnetic.y, &sample.magnetic.z}) {
            const double good = std::exchange(*value, bad);
            EXPECT_FALSE(spot.Add(sample));
            *value = good;
        }
        for (const field::SensorVector& b : {
                 field::SensorVector{bad, 0.0, 0.0},
                 {0.0, bad, 0.0},
                 {0.0, 0.0, bad}
        })
            EXPECT_FALSE(spot.Add(sample, b));
        for (double* const value :
             {&epoch.seconds, &epoch.position.x, &epoch.position.y, &epoch.position.h}) {
            const double good = std::exchange(*value, bad);
            EXPECT_FALSE(spot.Add(epoch));
            *value = good;
        }
    }
    EXPECT_TRUE(spot.Add(sample));
    EXPECT_TRUE(spot.Add(epoch));
    EXPECT_EQ(spot.Estimate().samples, 1);
    EXPECT_EQ(spot.Estimate().epochs, 1);
    EXPECT_EQ(spot.Estimate().rejected, 2 * (10 + 3 + 4));
}

TEST(SpotText, IsOneSentenceForEachReason)
{
    SpotResult result;
    result.turned = 91.6;
    result.leanSpread = 3.4;
    result.tipStep = 0.0402;
    result.lengthError = 0.06;
    result.b.stuck = true;
    struct Case
    {
        SpotReason reason;
        const char* says;
    };
    constexpr Case kCases[] = {
        {SpotReason::Usable,            "usable"                                                           },
        {SpotReason::TooShort,          "go on: rock the pole and turn it about its axis for 20 s"         },
        {SpotReason::TooLong,           "this took too long: begin again, 20 s are enough"                 },
        {SpotReason::NoInertialSamples, "there are no inertial samples"                                    },
        {SpotReason::NoAntennaEpochs,   "there are no antenna positions"                                   },
        {SpotReason::TimeRanBack,       "the time of samples or antenna positions runs back or repeats"    },
        {SpotReason::Gap,               "the inertial samples pause for too long: begin again"             },
        {SpotReason::TurnMore,
         "turn the pole about its axis: it was turned by 92 degrees, a whole turn is wanted"               },
        {SpotReason::LeanFurther,
         "lean further in all directions: the pole's directions spread by 3 degrees only"                  },
        {SpotReason::GoOn,              "go on rocking and turning: something is not known well enough yet"},
        {SpotReason::TipMoved,          "the tip moved by about 40 mm: begin again"                        },
        {SpotReason::WrongLength,       "the pole is about 60 mm longer than its length says"              },
        {SpotReason::FieldDisturbed,
         "the magnetic field is not the same throughout: go away from iron and begin again"                },
        {SpotReason::SensorsContradict,
         "sensors and antenna contradict each other: check axes, signs, units and times"                   },
        {SpotReason::MagnetometerStuck,
         "magnetometer B does not follow the pole: an axis of it reads the same throughout"                },
        {SpotReason::NoSolution,        "the antenna positions lie outside of the samples' time"           },
    };
    for (const auto& [reason, says] : kCases) {
        result.reason = reason;
        EXPECT_EQ(SpotText(result), says);
    }
    result.reason = SpotReason::WrongLength;
    result.lengthError = -0.3;
    EXPECT_EQ(SpotText(result), "the pole is about 300 mm shorter than its length says");
    result.reason = SpotReason::MagnetometerStuck;
    result.a.stuck = true;
    EXPECT_EQ(SpotText(result),
              "magnetometer A does not follow the pole: an axis of it reads the same throughout");
}

TEST(SpotCalibration, AsksForMoreWhereTheAntennaIsPoor)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 4));
    for (Fed& row : rows)
        row.epoch.planSigma = row.epoch.heightSigma = 0.15;
    EXPECT_EQ(ResultOf(rows).reason, SpotReason::GoOn);
}

TEST(SpotCalibration, DoesWithoutMagnetometers)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 4));
    for (Fed& row : rows)
        row.sample.magnetic = row.magneticB = {};
    const SpotResult result = ResultOf(rows);
    EXPECT_TRUE(result.IsUsable()) << SpotText(result);
    EXPECT_FALSE(result.a.found);
    EXPECT_FALSE(result.b.found);
    const field::OccupationSetup setup = WithCalibration({}, result);
    EXPECT_EQ(setup.headingSigma, field::OccupationSetup().headingSigma);
}

// One axis is enough to be wrong, also beside readings that were left out.
TEST(SpotCalibration, NamesTheMagnetometerThatIsStuck)
{
    std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 4));
    for (Fed& row : rows)
        row.magneticB.y = 300.0;
    rows[1].magneticB = {};
    const SpotResult result = ResultOf(rows);
    EXPECT_EQ(result.reason, SpotReason::MagnetometerStuck);
    EXPECT_EQ(SpotText(result), "magnetometer B does not follow the pole: an axis of it reads the "
                                "same throughout");
    for (Fed& row : rows)
        row.sample.magnetic.z = -400.0;
    EXPECT_EQ(SpotText(ResultOf(rows)).substr(0, 14), "magnetometer A");
}

TEST(SpotCalibration, ChangesNothingWhereItIsNotUsable)
{
    SpotResult result;
    result.reason = SpotReason::TurnMore;
    result.axisX = 1.0;
    const field::OccupationSetup setup = WithCalibration({}, result);
    EXPECT_EQ(setup.axisX, 0.0);
    EXPECT_EQ(setup.axisSigma, field::OccupationSetup().axisSigma);
}

TEST(OccupationSetup, KeepsWhatItKnowsOfHeightAndDelay)
{
    const SpotResult result = CalibratedBy(FreePlan(), 9).result;
    ASSERT_TRUE(result.IsUsable());
    ASSERT_GT(result.delaySigma, 0.0);
    field::OccupationSetup known;
    known.delaySigma = 0.03;
    EXPECT_EQ(WithCalibration(known, result).sensorHeight, result.sensorHeight);
    EXPECT_EQ(WithCalibration(known, result).delay, result.delay);
    known.sensorHeight = 1.5;
    known.delay = 0.07;
    EXPECT_EQ(WithCalibration(known, result).sensorHeight, 1.5);
    EXPECT_EQ(WithCalibration(known, result).delay, 0.07);
    known.delay = 0.0;
    known.delaySigma = 0.0; // one clock
    EXPECT_EQ(WithCalibration(known, result).delay, 0.0);
    EXPECT_EQ(WithCalibration(known, result).delaySigma, 0.0);
}

TEST(SpotCalibration, BeginsAnewAfterClear)
{
    const std::vector<Fed> rows = RowsOf(SimulateOccupations(Sensor(), {}, FreePlan(), 4));
    SpotCalibration calibration({});
    calibration.Add(rows.front().sample);
    calibration.Clear();
    EXPECT_EQ(calibration.Estimate().samples, 0);
    EXPECT_TRUE(calibration.Add(rows.front().sample));
}

std::vector<double> ErrorsOf(const simulation::Occupations& log,
                             const field::OccupationSetup& setup,
                             const Incline_MagneticCorrectParameter& correction, Held& held)
{
    std::vector<double> errors;
    field::Occupation occupation(setup);
    for (std::size_t i = 0; i < log.rows.size(); ++i) {
        const OccupationRow& row = log.rows[i];
        InertialSample sample = SampleOf(row);
        const auto m = tiltpole::survey::Corrected(
            correction, {sample.magnetic.x, sample.magnetic.y, sample.magnetic.z});
        sample.magnetic = {m.x, m.y, m.z};
        occupation.Add(sample);
        field::AntennaEpoch epoch;
        epoch.seconds = sample.seconds;
        if (row.antenna) epoch.position = CoordinateOf(*row.antenna);
        if (row.antenna) occupation.Add(epoch);
        if (i + 1 < log.rows.size() && log.rows[i + 1].point == row.point) continue;
        const auto estimate = occupation.Estimate();
        const xyhCoordinate tip =
            CoordinateOf(log.points[static_cast<std::size_t>(row.point - 1)].tip);
        errors.push_back(1000.0 * PlanError(estimate, tip));
        held.Take(Covers(estimate, tip) ? 0.0 : 1.0, 0.1);
        occupation.Clear();
    }
    return errors;
}

// Mean squares fall to a third at least.
void CheckOccupationsImprove(const simulation::PlantedMotion& motion)
{
    double before = 0.0;
    double after = 0.0;
    Held held;
    for (std::uint64_t seed = 71; seed < 77; ++seed) {
        const SpotResult result = CalibratedBy(FreePlan(), seed).result;
        ASSERT_TRUE(result.IsUsable());
        OccupationPlan plan;
        plan.motion = motion;
        plan.points = 4;
        const auto log = SimulateOccupations(Sensor(), {}, plan, seed);
        Held ignored;
        for (const double error : ErrorsOf(log, {}, {}, ignored))
            before += error * error;
        const auto setup = WithCalibration({}, result);
        for (const double error : ErrorsOf(log, setup, result.a.correction, held))
            after += error * error;
    }
    EXPECT_LT(after, before / 3.0);
    EXPECT_LT(std::sqrt(after / held.all), 6.0);
    EXPECT_GE(held.Share(), 0.93);
}

TEST(SpotCalibration, MakesOccupationsBetter)
{
    simulation::PlantedMotion motion = simulation::UsualMotion(OccupationMotion::LeanIn);
    CheckOccupationsImprove(motion);
    motion.leanTo = 30.0;
    CheckOccupationsImprove(motion);
    CheckOccupationsImprove(simulation::UsualMotion(OccupationMotion::OppositeLeans));
}

TEST(OccupationSetup, KnownErrorsAreTakenOffWhole)
{
    const Calibrated calibrated = CalibratedBy(FreePlan(), 9);
    OccupationPlan plan;
    plan.points = 1;
    const auto log = SimulateOccupations(Sensor(), {}, plan, 9);
    field::OccupationSetup known = WithCalibration({}, calibrated.result);
    field::Occupation occupation(known);
    for (const OccupationRow& row : log.rows) {
        occupation.Add(SampleOf(row));
        if (row.antenna)
            occupation.Add(field::AntennaEpoch{row.truth.pose.seconds, CoordinateOf(*row.antenna)});
    }
    const auto estimate = occupation.Estimate();
    const auto& truth = calibrated.truth.gyroBias;
    EXPECT_NEAR(estimate.gyroBias.x, truth.x, 0.05);
    EXPECT_NEAR(estimate.gyroBias.y, truth.y, 0.05);
    EXPECT_NEAR(estimate.sensorHeight, 1.8, 0.03);
}

} // namespace
