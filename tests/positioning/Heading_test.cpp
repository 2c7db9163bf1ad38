// SPDX-License-Identifier: MIT
#include "positioning/detail/Measure.h"
#include "tests/positioning/Reach.h"
#include "tests/reference/LiteralPosition.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr double kRoundOff = 1e-12; // [degrees], two roundings of a heading
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// On a level pole the heading follows directly from the horizontal field.
void CheckLevelHeading(int type, Field field, double expectedA, double expectedB)
{
    Reach sensor(type);
    PoseSensorData sample = Sample(0, 0, field, field);
    EXPECT_EQ(sensor.CalculateYaw_A(sample), 1);
    EXPECT_EQ(sensor.CalculateYaw_B(sample), 1);
    EXPECT_NEAR(sample.dYaw, expectedA, kRoundOff) << field.x << ' ' << field.y << ' ' << type;
    EXPECT_NEAR(sample.dYaw_2, expectedB, kRoundOff) << field.x << ' ' << field.y << ' ' << type;
}

TEST(Heading, FollowsTheFieldClockwiseForTheFirstConvention)
{
    CheckLevelHeading(1, {1, 0, 0}, 0, 0);
    CheckLevelHeading(1, {0, 1, 0}, 90, 90);
    CheckLevelHeading(1, {0, -1, 0}, 270, 270);
    CheckLevelHeading(1, {-1, 0, 5}, 180, 180);
    CheckLevelHeading(1, {1, 1, -7}, 45, 45);
}

TEST(Heading, CountsFromTheYAxisForEveryOtherConvention)
{
    for (const int type : {0, 2, -5}) {
        CheckLevelHeading(type, {0, 1, 0}, 0, 0);
        CheckLevelHeading(type, {1, 0, 0}, 270, 270);
        CheckLevelHeading(type, {-1, 0, 3}, 90, 90);
        CheckLevelHeading(type, {0, -1, -3}, 180, 180);
    }
}

Field Turned(Field m, int axis, double angle) // right-handed about axis 0, 1 [rad]
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    if (axis == 0) return {m.x, c * m.y - s * m.z, s * m.y + c * m.z};
    return {c * m.x + s * m.z, m.y, -s * m.x + c * m.z};
}

// The reading of the tilted sensor is built by rotations; the heading must not depend on the lean.
TEST(Heading, DoesNotChangeWithTheLean)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> lean(-60, 60);
    std::uniform_real_distribution<double> turn(0, 360);
    for (int i = 0; i < 2000; ++i) {
        const double pitch = lean(random);
        const double roll = lean(random);
        const double p = pitch * kPi / 180;
        const double r = roll * kPi / 180;
        const double heading = turn(random);
        const double h = heading * kPi / 180;

        // First convention: y and z of the reading are reversed, then Ry(p)·Rx(r) levels it.
        const Field level{200 * std::cos(h), -200 * std::sin(h), 430};
        const Field tilted = Turned(Turned(level, 1, -p), 0, -r);
        PoseSensorData sample = Sample(pitch, roll, {tilted.x, -tilted.y, -tilted.z});
        Reach(1).CalculateYaw_A(sample);
        EXPECT_NEAR(std::remainder(sample.dYaw - heading, 360), 0, kRoundOff);

        // Second convention: Rx(p)·Ry(r) levels the unchanged reading.
        const Field other{-200 * std::sin(h), 200 * std::cos(h), 430};
        const Field seen = Turned(Turned(other, 0, -p), 1, -r);
        sample = Sample(pitch, roll, seen);
        Reach(0).CalculateYaw_A(sample);
        EXPECT_NEAR(std::remainder(sample.dYaw - heading, 360), 0, kRoundOff);

        // Magnetometer B sees the pose reversed.
        sample = Sample(-pitch, -roll, {}, seen);
        Reach(0).CalculateYaw_B(sample);
        EXPECT_NEAR(std::remainder(sample.dYaw_2 - heading, 360), 0, kRoundOff);
    }
}

TEST(Heading, LeavesTheReadingAsItIsWithoutACorrection)
{
    constexpr Field readings[] = {
        {0.1,   -310.7,  44.3 },
        {1e-9,  3e8,     -2.5 },
        {-1e12, 1.0 / 3, 1e-12},
    };
    for (const Field& m : readings) {
        Reach sensor;
        PoseSensorData sample = Sample(4, -3, m, m);
        sensor.CalculateYaw_A(sample);
        sensor.CalculateYaw_B(sample);
        EXPECT_EQ(sample.dMag_x, m.x);
        EXPECT_EQ(sample.dMag_y, m.y);
        EXPECT_EQ(sample.dMag_z, m.z);
        EXPECT_EQ(sample.dMag_x_2, m.x);
        EXPECT_EQ(sample.dMag_y_2, m.y);
        EXPECT_EQ(sample.dMag_z_2, m.z);
    }
}

// CalculateYaw_A leaves its sines and cosines to CalculateYaw_B, which computes them for any other
// pose.
TEST(Heading, OfBHasTheSameBitsWhateverPoseAHad)
{
    constexpr double angles[] = {0.0, -0.0, 1e-300, 3.5, -8.25, 90.0, -180.0, kInfinity, kNaN};
    constexpr Field fields[] = {
  // In the second the sign of a zero shows.
        {-150, 290,  400},
        {-0.0, -0.0, 400}
    };
    const auto headingAfterA = [](const Field& field, int type, double pitch, double roll,
                                  double ofA, double rollOfA) {
        Reach sensor(type);
        PoseSensorData earlier = Sample(ofA, rollOfA, field);
        PoseSensorData sample = Sample(pitch, roll, field, field);
        sensor.CalculateYaw_A(earlier);
        sensor.CalculateYaw_B(sample);
        return std::bit_cast<std::uint64_t>(sample.dYaw_2);
    };
    for (const Field& field : fields)
        for (const int type : kSensorTypes)
            for (const double pitch : angles)
                for (const double roll : angles) {
                    const auto expected = headingAfterA(field, type, pitch, roll, 11, -7);
                    for (const double ofA : {pitch, -pitch, 11.0})
                        for (const double rollOfA : {roll, -roll, -7.0})
                            EXPECT_EQ(headingAfterA(field, type, pitch, roll, ofA, rollOfA),
                                      expected)
                                << "pitch " << pitch << ", roll " << roll << ", A at " << ofA << ' '
                                << rollOfA;
                }
}

TEST(Heading, CorrectsTheReadingInPlaceFromRawValues)
{
    Reach sensor;
    Incline_MagneticCorrectParameter par;
    par.a = 2;
    sensor.SetMagneticCorrectPar_A(par);
    PoseSensorData sample = Sample(0, 0, {5, 7, 11}, {50, 70, 110});
    sensor.CalculateYaw_A(sample);
    EXPECT_EQ(sample.dMag_x, 5.0);
    EXPECT_EQ(sample.dMag_y, 17.0) << "raised by twice the raw x";
    EXPECT_EQ(sample.dMag_z, 11.0);
    EXPECT_EQ(sample.dMag_y_2, 70.0) << "the other magnetometer is left alone";

    par = {1, 2, 3, 0.5, 0.25, 2, 4, 8};
    sensor.SetMagneticCorrectPar_B(par);
    sensor.CalculateYaw_B(sample);
    EXPECT_EQ(sample.dMag_x_2, 49.0);
    EXPECT_EQ(sample.dMag_y_2, 0.5 * 50 + 4 * 70 - 2);
    EXPECT_EQ(sample.dMag_z_2, 0.25 * 50 + 2 * 70 + 8 * 110 - 3);
    EXPECT_EQ(sample.dMag_y, 17.0);
}

TEST(Heading, IsLessTheBiasOfItsMagnetometer)
{
    for (const int type : kSensorTypes) {
        PoseSensorData plain = Sample(4, -3, {120, 90, -300});
        PoseSensorData biased = plain;
        Reach sensor(type);
        sensor.CalculateYaw_A(plain);
        sensor.CalculateYaw_B(plain);
        sensor.SetMagneticBiasAngle_A(10);
        sensor.SetMagneticBiasAngle_B(-20);
        sensor.CalculateYaw_A(biased);
        sensor.CalculateYaw_B(biased);
        EXPECT_NEAR(std::remainder(plain.dYaw - biased.dYaw - 10, 360), 0, kRoundOff);
        EXPECT_NEAR(std::remainder(plain.dYaw_2 - biased.dYaw_2 + 20, 360), 0, kRoundOff);
    }
}

struct WrapCase
{
    double bias, expected;
    const char* why;
};

// Both the formula and its caller normalize, each by one step.
TEST(Heading, IsNormalizedByTwoStepsAtMost)
{
    constexpr WrapCase cases[] = {
        {10,    350,  "one step up"           },
        {-10,   10,   "none needed"           },
        {500,   220,  "two steps up"          },
        {-700,  340,  "one step down"         },
        {-1000, 280,  "two steps down"        },
        {900,   -180, "a third is not taken"  },
        {-1200, 480,  "nor downwards"         },
        {-360,  360,  "a full turn stays"     },
        {360,   0,    "a turn less is no turn"},
    };
    for (const WrapCase& c : cases) {
        Reach sensor;
        sensor.SetMagneticBiasAngle_A(c.bias);
        sensor.SetMagneticBiasAngle_B(c.bias);
        PoseSensorData sample = Sample(0, 0, {1, 0, 0}, {1, 0, 0});
        sensor.CalculateYaw_A(sample);
        sensor.CalculateYaw_B(sample);
        EXPECT_EQ(sample.dYaw, c.expected) << c.why;
        EXPECT_EQ(sample.dYaw_2, c.expected) << c.why;
    }
}

// A bias equal to the heading: the result is 0 or just below 360, depending on the last digit of
// the step-by-step formulas.
TEST(Heading, TurnsWhereItsFormulasTurn)
{
    for (const int type : kSensorTypes)
        for (int direction = -180; direction <= 180; ++direction)
            for (const double pitch : {0.0, 9.0, -31.0}) {
                const double angle = direction * kPi / 180.0;
                literal::Setup setup;
                setup.sensorType = type;
                Reach sensor(type);
                PoseSensorData sample =
                    Sample(pitch, 20, {400 * std::cos(angle), 400 * std::sin(angle), 90});
                const auto plain = literal::Measure(setup, sample, 2.0, {});
                setup.biasA = plain.yaw;
                setup.biasB = plain.yaw2;
                sensor.SetMagneticBiasAngle_A(setup.biasA);
                sensor.SetMagneticBiasAngle_B(setup.biasB);
                const auto expected = literal::Measure(setup, sample, 2.0, {});
                xyhCoordinate point;
                sensor.Position(sample, 2.0, point);
                EXPECT_EQ(sample.dYaw, expected.yaw) << direction << ", type " << type;
                EXPECT_EQ(sample.dYaw_2, expected.yaw2) << direction << ", type " << type;
            }
}

// tan² 45° = 1, tan 45°·tan 30° = 1/√3; acos(−1/√3) = 125.2643896827547.
TEST(TiltDirection, IsSubtractedFromTheHeading)
{
    PoseSensorData sample = Sample(45, 30, {1, 0, 0});
    Reach sensor;
    sensor.CalculateYaw_A(sample);
    EXPECT_NEAR(std::remainder(sample.dYaw - sample.dYaw_Y - 125.2643896827547, 360), 0, 1e-11);

    sample = Sample(45, -30, {1, 0, 0});
    sensor.CalculateYaw_A(sample);
    EXPECT_NEAR(std::remainder(sample.dYaw - sample.dYaw_Y - 54.7356103172453, 360), 0, 1e-11);
}

TEST(TiltDirection, IsLimitedWhereTheTangentsAreSteep)
{
    PoseSensorData sample = Sample(60, 60, {300, 20, -10});
    Reach sensor;
    sensor.CalculateYaw_A(sample);
    EXPECT_NEAR(std::remainder(sample.dYaw - sample.dYaw_Y - 180, 360), 0, kRoundOff);
}

TEST(TiltDirection, IsNinetyWhereATiltAngleIsZero)
{
    for (const int type : kSensorTypes)
        for (const auto& [pitch, roll] : {
                 std::pair{0.0,  0.0 },
                 {0.0,  12.0},
                 {-7.0, 0.0 }
        }) {
            PoseSensorData sample = Sample(pitch, roll, {30, 40, 50});
            Reach(type).CalculateYaw_A(sample);
            EXPECT_NEAR(std::remainder(sample.dYaw - sample.dYaw_Y - 90, 360), 0, kRoundOff)
                << pitch << ' ' << roll << ", type " << type;
        }
}

// The heading of a reading along x alone equals the tilt direction: the difference is 0 or 360,
// depending on the last digit of the step-by-step formulas.
TEST(TiltDirection, TurnsWhereItsFormulasTurn)
{
    for (const int type : kSensorTypes)
        for (int pitch = -175; pitch <= 175; pitch += 5)
            for (int roll = -175; roll <= 175; roll += 5)
                for (const double x : {-100.0, 100.0}) {
                    literal::Setup setup;
                    setup.sensorType = type;
                    PoseSensorData shown = Sample(pitch, roll, {x, 0, 0});
                    PoseSensorData measured = shown;
                    const auto expected = literal::Measure(setup, shown, 2.0, {});
                    if (std::isnan(expected.yawY)) continue; // a tilt angle of 0
                    xyhCoordinate point;
                    Reach(type).CalculateYaw_A(shown);
                    Reach(type).Position(measured, 2.0, point);
                    EXPECT_NEAR(shown.dYaw_Y, expected.yawY, 1e-10) << pitch << ' ' << roll;
                    EXPECT_NEAR(measured.dYaw_Y, expected.yawY, 1e-10) << pitch << ' ' << roll;
                }
}

// A first sample at the reference of a new object: all zero.
int StillAfter(double field, double pitch, double roll)
{
    Reach sensor;
    PoseSensorData sample = Sample(pitch, roll, {field, 0, 0});
    sensor.CalculateYaw_A(sample);
    return sensor.IsStationary();
}

// Squares of strengths that are squared without loss, from 1e-150 to 1e150.
TEST(Strength, IsUsualWhereItsSquareIs)
{
    using tiltpole::positioning::IsUsualSquare;
    using tiltpole::positioning::IsUsualStrength;
    for (const double strength : {1e-149, 1.0, 1e149}) {
        EXPECT_TRUE(IsUsualStrength(strength)) << strength;
        EXPECT_TRUE(IsUsualSquare(strength * strength)) << strength;
    }
    for (const double strength : {0.0, 1e-151, 1e151, std::nan("")}) {
        EXPECT_FALSE(IsUsualStrength(strength)) << strength;
        EXPECT_FALSE(IsUsualSquare(strength * strength)) << strength;
    }
}

TEST(Stillness, HoldsUpToItsLimits)
{
    EXPECT_EQ(StillAfter(1000, 0, 0), 1);
    EXPECT_EQ(StillAfter(1000.0001, 0, 0), 0);
    EXPECT_EQ(StillAfter(0, 0.5, -0.5), 1);
    EXPECT_EQ(StillAfter(0, 0.500001, 0), 0);
    EXPECT_EQ(StillAfter(0, 0, -0.500001), 0);
    EXPECT_EQ(StillAfter(kNaN, 0, 0), 0);
    EXPECT_EQ(StillAfter(0, 0, kNaN), 0);
}

TEST(Stillness, AddsTheDifferencesOfTheThreeAxes)
{
    Reach sensor;
    PoseSensorData sample = Sample(0, 0, {400, -400, 200});
    sensor.CalculateYaw_A(sample);
    EXPECT_EQ(sensor.IsStationary(), 1);
    sample = Sample(0, 0, {400, -400, 201});
    sensor.CalculateYaw_A(sample);
    EXPECT_EQ(sensor.IsStationary(), 0);
}

TEST(Stillness, BeginsWithTheSecondOfTwoEqualSamples)
{
    Reach sensor;
    const PoseSensorData sample = Sample(12, -8, {1500, 300, -430});
    PoseSensorData first = sample;
    sensor.CalculateYaw_A(first);
    EXPECT_EQ(sensor.IsStationary(), 0);
    PoseSensorData second = sample;
    sensor.CalculateYaw_A(second);
    EXPECT_EQ(sensor.IsStationary(), 1);
}

TEST(Stillness, MeasuresSlowDriftAgainstTheFirstSample)
{
    Reach sensor;
    const auto stillAt = [&](double roll) {
        PoseSensorData sample = Sample(0, roll, {200, 0, -430});
        sensor.CalculateYaw_A(sample);
        return sensor.IsStationary();
    };
    EXPECT_EQ(stillAt(10.0), 0);
    EXPECT_EQ(stillAt(10.25), 1);
    EXPECT_EQ(stillAt(10.5), 1);
    EXPECT_EQ(stillAt(10.6), 0) << "0.1 from the last, 0.6 from the first";
    EXPECT_EQ(stillAt(10.25), 1) << "10.6 is the new reference";
    EXPECT_EQ(stillAt(10.0), 0);
}

TEST(Stillness, LooksAtCorrectedReadings)
{
    Reach sensor;
    Incline_MagneticCorrectParameter par;
    par.x0 = 5000;
    sensor.SetMagneticCorrectPar_A(par);
    PoseSensorData sample = Sample(0, 0, {5000, 0, 0});
    sensor.CalculateYaw_A(sample);
    EXPECT_EQ(sensor.IsStationary(), 1);
}

int InterferenceFor(Field b, Incline_MagneticTranslationParameter offset = {})
{
    Reach sensor;
    sensor.SetMagneticTranslationPar(offset);
    PoseSensorData sample = Sample(0, 0, {100, 50, 20}, b);
    sensor.CalculateYaw_A(sample);
    sensor.CalculateYaw_B(sample);
    return sensor.IsMagneticInterference();
}

TEST(Interference, IsJudgedBesideTheReadingThatAExpects)
{
    EXPECT_EQ(InterferenceFor({-100, -50, 20}), 0) << "as expected";
    EXPECT_EQ(InterferenceFor({-200, -150, 120}), 0) << "300.0 in sum";
    EXPECT_EQ(InterferenceFor({-200.1, -150, 120}), 1) << "300.1 in sum";
    EXPECT_EQ(InterferenceFor({100, 50, 20}), 0) << "x and y not opposed: 300.0 in sum";
    EXPECT_EQ(InterferenceFor({100.5, 50, 20}), 1);
}

TEST(Interference, ShiftsTheExpectedReadingByTheTranslation)
{
    EXPECT_EQ(InterferenceFor({-1100, -2050, 3020}, {1000, 2000, 3000}), 0);
    EXPECT_EQ(InterferenceFor({-100, -50, 20}, {1000, 2000, 3000}), 1);
}

TEST(Interference, KeepsItsLastValueUntilTheNextSample)
{
    Reach sensor;
    PoseSensorData disturbed = Sample(0, 0, {100, 50, 20}, {900, 0, 0});
    sensor.CalculateYaw_A(disturbed);
    EXPECT_EQ(sensor.IsMagneticInterference(), 0);
    sensor.CalculateYaw_B(disturbed);
    EXPECT_EQ(sensor.IsMagneticInterference(), 1);
    PoseSensorData quiet = Sample(0, 0, {100, 50, 20});
    sensor.CalculateYaw_A(quiet);
    EXPECT_EQ(sensor.IsMagneticInterference(), 1);
    sensor.CalculateYaw_B(quiet);
    EXPECT_EQ(sensor.IsMagneticInterference(), 0);
}

struct VectorCase
{
    double dx, dy, expected;
    const char* why;
};

TEST(VectorAzimuth, CoversEveryQuadrant)
{
    constexpr VectorCase cases[] = {
        {0,     5,      90,  "along y"                         },
        {0,     -5,     270, "against y"                       },
        {0,     0,      0,   "no direction"                    },
        {9e-7,  -2,     270, "dx too small to count"           },
        {-9e-7, 0,      0,   "nor in the null vector"          },
        {1,     1,      45,  "first"                           },
        {-1,    1,      135, "second"                          },
        {-1,    -1,     225, "third"                           },
        {1,     -1,     315, "fourth"                          },
        {3,     0,      0,   "along x"                         },
        {-3,    0,      180, "against x"                       },
        {1e-6,  0,      0,   "the limit itself counts"         },
        {1,     -1e-20, 360, "hardly below x rounds to a turn" },
        {kNaN,  1,      0,   "what is no number has no azimuth"},
        {1,     kNaN,   0,   "on either axis"                  },
    };
    for (const VectorCase& c : cases)
        EXPECT_NEAR(CInclineSensor_Position{}.ConverseYaw_True(c.dx, c.dy), c.expected, kRoundOff)
            << c.why;
}

TEST(VectorYaw, IsTheAzimuthAndItsOppositeBeforeAnyProjection)
{
    double yaw = 0;
    double opposite = 0;
    EXPECT_EQ(CInclineSensor_Position{}.ConverseYaw(0, 5, yaw, opposite), 1);
    EXPECT_NEAR(yaw, 90, kRoundOff);
    EXPECT_NEAR(opposite, 270, kRoundOff);
    CInclineSensor_Position{}.ConverseYaw(-1, -1, yaw, opposite);
    EXPECT_NEAR(yaw, 225, kRoundOff);
    EXPECT_NEAR(opposite, 45, kRoundOff);
}

// Pure roll to the right turns the projection by -90 degrees.
TEST(VectorYaw, IsLessTheKeptProjectionAngle)
{
    double yaw = 0;
    double opposite = 0;
    Reach sensor;
    sensor.GetAngleofPoleProject(0, 10, 0, 0);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_EQ(yaw, 0.0) << "not kept";
    sensor.GetAngleofPoleProject(0, 10, 0, 1);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_NEAR(yaw, 90, kRoundOff);
    EXPECT_NEAR(opposite, 270, kRoundOff);
    for (const int other : {-1, 2, 256}) {
        sensor.GetAngleofPoleProject(0, -10, 0, other);
        sensor.ConverseYaw(1, 0, yaw, opposite);
        EXPECT_NEAR(yaw, 270, kRoundOff) << "kept for any number but 0";
        sensor.GetAngleofPoleProject(0, 10, 0, 1);
    }
}

} // namespace
