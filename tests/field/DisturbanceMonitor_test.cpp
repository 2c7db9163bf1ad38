// SPDX-License-Identifier: MIT
#include "field/DisturbanceMonitor.h"

#include "simulation/Occupation.h"
#include "survey/Angle.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace field;
using tiltpole::survey::Deg2Rad;

constexpr FieldShape kExpected{500.0, 60.0};

// What a level sensor of type 1 reads of a field that dips below the north.
SensorVector LevelReading(const FieldShape& shape)
{
    const double dip = Deg2Rad(shape.dip);
    return {shape.strength * std::cos(dip), 0.0, -shape.strength * std::sin(dip)};
}

MonitorSample LevelSample(double seconds, const FieldShape& shape)
{
    MonitorSample sample;
    sample.seconds = seconds;
    sample.a = LevelReading(shape);
    return sample;
}

TEST(FieldShape, OfALevelReadingIsItsLengthAndSlope)
{
    const FieldShape shape = ShapeOf({}, {300.0, 0.0, -400.0});
    EXPECT_NEAR(shape.strength, 500.0, 1e-12);
    EXPECT_NEAR(shape.dip, 53.130102354156, 1e-9);        // asin 0.8
    EXPECT_LT(ShapeOf({}, {300.0, 0.0, 400.0}).dip, 0.0); // southern hemisphere
}

TEST(FieldShape, DoesNotDependOnHowThePoleStands)
{
    // A field straight down, seen with the nose up by 20 degrees: partly backward.
    const double p = Deg2Rad(20.0);
    const FieldShape shape =
        ShapeOf({.pitch = 20.0}, {-100.0 * std::sin(p), 0.0, -100.0 * std::cos(p)});
    EXPECT_NEAR(shape.dip, 90.0, 1e-5);
    // With the right side down by 20 degrees, for a sensor with x to the right.
    const FieldShape rolled =
        ShapeOf({.roll = 20.0, .sensorType = 0}, {100.0 * std::sin(p), 0.0, -100.0 * std::cos(p)});
    EXPECT_NEAR(rolled.dip, 90.0, 1e-5);
}

TEST(FieldShape, OfNothingIsNothing)
{
    EXPECT_EQ(ShapeOf({}, {}).strength, 0.0);
    EXPECT_EQ(ShapeOf({}, {}).dip, 0.0);
    EXPECT_FALSE(MedianShape({}).has_value());
    const auto middle = MedianShape({
        {500.0, 60.0},
        {900.0, 10.0},
        {510.0, 61.0}
    });
    EXPECT_EQ(middle->strength, 510.0);
    EXPECT_EQ(middle->dip, 60.0);
}

TEST(DisturbanceMonitor, SuspectsLengthAndDipBeyondTheirLimits)
{
    struct Case
    {
        FieldShape shape;
        DisturbanceReason reason;
        const char* why;
    };
    constexpr Case cases[] = {
        {{500.0, 60.0}, DisturbanceReason::Nothing,  "as calibrated"         },
        {{529.0, 60.0}, DisturbanceReason::Nothing,  "5.8 % too strong"      },
        {{531.0, 60.0}, DisturbanceReason::Strength, "6.2 % too strong"      },
        {{469.0, 60.0}, DisturbanceReason::Strength, "6.2 % too weak"        },
        {{500.0, 63.4}, DisturbanceReason::Nothing,  "3.4 degrees too steep" },
        {{500.0, 56.4}, DisturbanceReason::Dip,      "3.6 degrees too flat"  },
        {{522.0, 63.0}, DisturbanceReason::Dip,      "0.73 and 0.86 together"},
    };
    for (const Case& c : cases) {
        const MonitorVerdict verdict = DisturbanceMonitor(kExpected).Add(LevelSample(0.0, c.shape));
        EXPECT_EQ(verdict.reason, c.reason) << c.why;
        EXPECT_EQ(verdict.suspect, c.reason != DisturbanceReason::Nothing) << c.why;
    }
}

TEST(DisturbanceMonitor, TakesAKnownVerticalInsteadOfTheTilt)
{
    MonitorSample sample = LevelSample(0.0, kExpected);
    sample.tilt.pitch = 20.0;
    EXPECT_TRUE(DisturbanceMonitor(kExpected).Add(sample).suspect);
    sample.up = field::SensorVector{0.0, 0.0, 3.0}; // of any length
    const MonitorVerdict verdict = DisturbanceMonitor(kExpected).Add(sample);
    EXPECT_FALSE(verdict.suspect);
    EXPECT_NEAR(verdict.shape.dip, kExpected.dip, 1e-9);
}

TEST(DisturbanceMonitor, ComparesTheMagnetometers)
{
    MonitorSample sample = LevelSample(0.0, kExpected);
    sample.b = sample.a;
    sample.b->y += 69.0; // 13.8 % of the field
    EXPECT_FALSE(DisturbanceMonitor(kExpected).Add(sample).suspect);
    sample.b->y += 2.0;
    EXPECT_EQ(DisturbanceMonitor(kExpected).Add(sample).reason, DisturbanceReason::Pair);
}

TEST(DisturbanceMonitor, ComparesTheHeadingWithTheTrack)
{
    MonitorSample sample = LevelSample(0.0, kExpected);
    sample.magneticHeading = 355.0;
    sample.track = 10.0;
    sample.trackDeviation = 3.0; // with 4 of the magnetometer: 5, three times that is allowed
    EXPECT_FALSE(DisturbanceMonitor(kExpected).Add(sample).suspect);
    sample.track = 10.1;
    EXPECT_EQ(DisturbanceMonitor(kExpected).Add(sample).reason, DisturbanceReason::Track);
    sample.magneticHeading.reset();
    EXPECT_FALSE(DisturbanceMonitor(kExpected).Add(sample).suspect);
}

// At 8 Hz: quiet, 12.5 s of a field that is 28 % too strong at its worst, quiet.
TEST(DisturbanceMonitor, TellsFromWhenToWhenAndHowMuch)
{
    DisturbanceMonitor monitor(kExpected);
    for (int i = 0; i < 300; ++i) {
        const double seconds = 36000.0 + 0.125 * i;
        const double strength = i < 100 || i > 200 ? 500.0 : i == 150 ? 640.0 : 600.0;
        const bool disturbed = monitor.Add(LevelSample(seconds, {strength, 60.0})).disturbed;
        EXPECT_EQ(disturbed, i >= 102 && i <= 208) << i; // begins late, ends late
    }
    ASSERT_EQ(monitor.Spans().size(), 1U);
    const DisturbedSpan& span = monitor.Spans()[0];
    EXPECT_NEAR(span.from, 36012.5, 1e-9);
    EXPECT_NEAR(span.to, 36025.0, 1e-9);
    EXPECT_EQ(TextOf(span), "28 % too strong");
    EXPECT_FALSE(monitor.IsDisturbed());
}

TEST(DisturbanceMonitor, HoldsOnWhileTheFieldVariesAboutTheLimit)
{
    DisturbanceMonitor monitor(kExpected);
    for (int i = 0; i < 200; ++i)
        monitor.Add(LevelSample(0.1 * i, {i % 40 < 20 ? 535.0 : 524.0, 60.0})); // 7 and 4.8 %
    EXPECT_EQ(monitor.Spans().size(), 1U);
}

TEST(DisturbanceMonitor, PassesOverSingleSamplesAndEndsAtGaps)
{
    DisturbanceMonitor monitor(kExpected);
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(
            monitor.Add(LevelSample(0.1 * i, {i % 5 == 0 ? 700.0 : 500.0, 60.0})).disturbed);
    for (int i = 100; i < 110; ++i)
        monitor.Add(LevelSample(0.1 * i, {700.0, 60.0}));
    EXPECT_TRUE(monitor.IsDisturbed());
    EXPECT_FALSE(monitor.Add(LevelSample(30.0, {700.0, 60.0})).disturbed);
    EXPECT_EQ(monitor.Spans().size(), 1U);
    EXPECT_TRUE(monitor.Add(LevelSample(31.0, {700.0, 60.0})).disturbed);
    EXPECT_FALSE(monitor.Add(LevelSample(0.0, {700.0, 60.0})).disturbed); // the next point
}

TEST(DisturbanceMonitor, SaysNothingOfWhatIsNoNumber)
{
    DisturbanceMonitor monitor(kExpected);
    MonitorSample sample = LevelSample(0.0, kExpected);
    sample.tilt.pitch = std::numeric_limits<double>::quiet_NaN();
    const MonitorVerdict verdict = monitor.Add(sample);
    EXPECT_FALSE(verdict.suspect);
    EXPECT_TRUE(std::isnan(verdict.score));
}

TEST(DisturbedSpan, IsToldInWords)
{
    const auto text = [](DisturbanceReason reason, double amount) {
        return TextOf({.reason = reason, .amount = amount});
    };
    EXPECT_EQ(text(DisturbanceReason::Strength, -0.124), "12 % too weak");
    EXPECT_EQ(text(DisturbanceReason::Dip, 7.2), "7 degrees too steep");
    EXPECT_EQ(text(DisturbanceReason::Dip, -4.4), "4 degrees too flat");
    EXPECT_EQ(text(DisturbanceReason::Pair, 0.4), "magnetometers differ by 40 %");
    EXPECT_EQ(text(DisturbanceReason::Track, -25.3), "heading 25 degrees off the track");
    EXPECT_EQ(text(DisturbanceReason::Nothing, 0.0), "not disturbed");
}

// Samples marked of a pole that leans in beside a magnet, or without one.
struct Counts
{
    int samples = 0;
    int marked = 0;
};

Counts MarkedOf(const simulation::OccupationPlan& plan, std::uint64_t seed, double leastError)
{
    simulation::PoseSensor sensor;
    sensor.a.noise = sensor.b.noise = 1.0;
    sensor.rollReport = simulation::RollReport::Inclination;
    sensor.filterTime = 2.0;
    const auto log = SimulateOccupations(sensor, {}, plan, seed);
    DisturbanceMonitor monitor({534.0, 66.0});
    Counts counts;
    for (const simulation::OccupationRow& row : log.rows) {
        const PoseSensorData& s = row.sample;
        MonitorSample sample;
        sample.seconds = 10.0 * row.point + row.truth.pose.seconds;
        sample.tilt = {.pitch = s.dPitch, .roll = s.dRoll};
        sample.a = {s.dMag_x, s.dMag_y, s.dMag_z};
        sample.b = SensorVector{-s.dMag_x_2, -s.dMag_y_2, s.dMag_z_2};
        const bool marked = monitor.Add(sample).disturbed;
        const double error = std::remainder(
            MagneticHeading(sample.tilt, sample.a) - row.truth.pose.angles.heading, 360.0);
        if (std::fabs(error) < leastError) continue;
        ++counts.samples;
        if (marked) ++counts.marked;
    }
    return counts;
}

// Magnets of random strength, place and axis, 0.5 to 2 m beside the pole.
TEST(DisturbanceMonitor, MarksMostHeadingsThatAMagnetTurnsByFiveDegrees)
{
    Counts wrong;
    Counts quiet;
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        simulation::Generator random(seed, simulation::Stream::Outliers);
        simulation::OccupationPlan plan;
        plan.points = 2;
        plan.rate = 10.0;
        const Counts none = MarkedOf(plan, seed, 0.0);
        quiet.samples += none.samples;
        quiet.marked += none.marked;

        const double away = random.Uniform(0.5, 2.0);
        const double azimuth = Deg2Rad(random.Uniform(0.0, 360.0));
        const double height = random.Uniform(0.0, 1.8);
        const double distance = std::hypot(away, 1.8 - height);
        const double strength = random.Uniform(20.0, 150.0) * distance * distance * distance / 1.5;
        plan.dipoles = {
            {-100.0,
             100.0, strength,
             {away * std::cos(azimuth), away * std::sin(azimuth), -height},
             random.Uniform(0.0, 360.0),
             random.Uniform(-90.0, 90.0)}
        };
        const Counts some = MarkedOf(plan, seed, 5.0);
        wrong.samples += some.samples;
        wrong.marked += some.marked;
    }
    EXPECT_GT(wrong.samples, 1500);
    EXPECT_GE(wrong.marked, 0.70 * wrong.samples) << wrong.marked << " of " << wrong.samples;
    EXPECT_LE(quiet.marked, 0.05 * quiet.samples) << quiet.marked << " of " << quiet.samples;
    RecordProperty("marked", wrong.marked);
    RecordProperty("wrong", wrong.samples);
    RecordProperty("false_alarms", quiet.marked);
}

TEST(DisturbanceMonitor, HearsOneMagnetometerWhereTheOtherReadsNothing)
{
    DisturbanceMonitor monitor(kExpected);
    MonitorSample sample = LevelSample(0.0, {700.0, 60.0});
    sample.b = SensorVector{std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0};
    EXPECT_TRUE(monitor.Add(sample).suspect);
}

TEST(DisturbanceMonitor, HearsAStrengthWhereTheInclinationIsNotKnown)
{
    DisturbanceMonitor monitor(kExpected);
    MonitorSample sample = LevelSample(0.0, {700.0, 60.0});
    sample.tilt.pitch = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(monitor.Add(sample).suspect);
    sample.a = LevelReading(kExpected);
    EXPECT_TRUE(std::isnan(monitor.Add(sample).score));
}

TEST(DisturbanceMonitor, GoesOnThroughSamplesOfWhichNothingCanBeSaid)
{
    DisturbanceMonitor monitor(kExpected);
    double t = 0.0;
    for (; t < 1.0; t += 0.1)
        monitor.Add(LevelSample(t, {700.0, 60.0}));
    ASSERT_TRUE(monitor.IsDisturbed());
    MonitorSample unknown;
    unknown.a.x = std::numeric_limits<double>::quiet_NaN();
    for (; t < 4.0; t += 0.1) {
        unknown.seconds = t;
        monitor.Add(unknown);
    }
    EXPECT_TRUE(monitor.IsDisturbed());
    MonitorSample timeless = LevelSample(std::numeric_limits<double>::quiet_NaN(), {700.0, 60.0});
    DisturbanceMonitor other(kExpected);
    other.Add(timeless);
    other.Add(timeless);
    EXPECT_TRUE(other.Spans().empty());
}

TEST(FieldShape, MiddleOfMoreIsThatOfThoseThatAreKnown)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto middle = MedianShape({
        {500.0, nan },
        {nan,   60.0},
        {480.0, 58.0}
    });
    ASSERT_TRUE(middle.has_value());
    EXPECT_EQ(middle->strength, 480.0);
    EXPECT_EQ(middle->dip, 58.0);
    EXPECT_FALSE(MedianShape({
                                 {nan, nan}
    })
                     .has_value());
}

} // namespace
