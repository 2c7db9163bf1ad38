// SPDX-License-Identifier: MIT
#include "simulation/LogText.h"

#include "simulation/TruthText.h"
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <locale>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using namespace simulation;
using testing::ElementsAre;
using testing::StartsWith;

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

// Every kind of noise and fault at once, so that every line of code has a share in the bytes.
PoseSensor BusySensor()
{
    PoseSensor sensor;
    sensor.a.softIron.rows = {
        Point3{1.02,  0.01, -0.02},
        {0.05,  0.97, 0.03 },
        {-0.04, 0.02, 1.06 }
    };
    sensor.a.hardIron = {35.0, -20.0, 12.0};
    sensor.a.noise = 1.5;
    sensor.b.hardIron = {-15.0, 8.0, 40.0};
    sensor.b.noise = 2.0;
    sensor.magneticStep = 0.25;
    sensor.tiltNoise = 0.05;
    sensor.gyroNoise = 0.1;
    sensor.accelerationNoise = 0.002;
    return sensor;
}

TurnPlan BusyTurn(TurnAxis axis)
{
    return {
        .axis = axis,
        .samples = 300,
        .startHeading = 123.0,
        .levelError = 2.0,
        .levelDirection = 40.0,
        .axisError = 1.5,
        .axisDirection = 70.0,
        .wobble = 0.8,
        .unevenness = 0.3,
        .stops = {{90.0, 1.0}  },
        .turningsBack = {{200.0, 15.0}},
        .losses = {.share = 0.05, .gaps = {{3.0, 3.5}}},
        .magnets = {{6.0, 8.0, 80.0, 0.7, 30.0, 20.0, false}            },
        .startOfDay = 86395.0
    };
}

// FNV-1a, 64 bits.
std::uint64_t HashOf(const std::string& bytes)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 1099511628211U;
    }
    return hash;
}

// The known answers of seed 42, found with g++ -O2 on x86-64 and the same with clang++, -O0 and
// -O3.
TEST(LogText, SameSeedGivesTheSameBytesEverywhere)
{
    const EarthField field{534.0, 66.0, 3.5};
    const auto turn = [&field](TurnAxis axis) {
        return HashOf(TextOf(SimulateTurn(BusySensor(), field, BusyTurn(axis), 42)));
    };
    EXPECT_EQ(turn(TurnAxis::Horizontal), 13766956827784917854U);
    EXPECT_EQ(turn(TurnAxis::Vertical), 830661337156822543U);
    const auto walk = [&field](PoleGeometry geometry) {
        return HashOf(TextOf(SimulateWalk(BusySensor(), field, {.geometry = geometry}, 42)));
    };
    EXPECT_EQ(walk(PoleGeometry::Rigid), 7920922771101205064U);
    EXPECT_EQ(walk(PoleGeometry::ByFormula), 13404832548715045495U);
    EXPECT_EQ(HashOf(TextOf(SimulatePoints({.inclineNoise = 0.1, .outliers = 2}, 42))),
              6638836972040919168U);
}

TEST(LogText, AnotherSeedGivesOtherBytes)
{
    const auto text = [](std::uint64_t seed) {
        return TextOf(SimulateTurn(BusySensor(), {}, BusyTurn(TurnAxis::Horizontal), seed));
    };
    EXPECT_NE(text(1), text(2));
    EXPECT_EQ(text(1), text(1));
}

TEST(LogText, TurnHasOneLineForEachSampleUnderItsColumns)
{
    const Recording turn = SimulateTurn({}, {500.0, 0.0, 0.0}, {.samples = 3, .rate = 1.0}, 1);
    const std::vector<std::string> lines = Split(TextOf(turn), '\n');
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "Index,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
                        "dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,"
                        "seconds,heading_true,pitch_true,roll_true,disturbed_true");
    EXPECT_THAT(lines[1], StartsWith("0,10:00:00,0.00000000,0.00000000,"));
    const std::vector<std::string> fields = Split(lines[2], ',');
    EXPECT_EQ(fields.size(), Split(lines[0], ',').size());
    EXPECT_EQ(fields[1], "10:00:01");
    EXPECT_EQ(fields[11], "-492.403877"); // 500 cos 190
    EXPECT_EQ(fields[18], "190.00000000");
}

TEST(LogText, WalkCarriesAntennaAndTruth)
{
    const Walk walk = SimulateWalk({}, {}, {.points = 2}, 1);
    const std::vector<std::string> lines = Split(TextOf(walk), '\n');
    ASSERT_EQ(lines.size(), walk.samples.size() + 1);
    const std::vector<std::string> names = Split(lines[0], ',');
    const std::vector<std::string> fields = Split(lines[1], ',');
    ASSERT_EQ(fields.size(), names.size());
    EXPECT_EQ(names[17], "x");
    EXPECT_EQ(names[25], "point_true");
    EXPECT_EQ(fields[25], "1");
    EXPECT_EQ(fields[26], "4500000.000000");
    EXPECT_EQ(names[26], "tip_x_true");
}

TEST(LogText, PointsAreNamedInOrder)
{
    const std::vector<std::string> lines = Split(TextOf(SimulatePoints({.points = 3}, 1)), '\n');
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_THAT(lines[0], StartsWith("name,x,y,h,incline,"));
    EXPECT_THAT(lines[1], StartsWith("P01,"));
    EXPECT_THAT(lines[3], StartsWith("P03,"));
    EXPECT_EQ(Split(lines[3], ',').size(), Split(lines[0], ',').size());
}

struct DecimalComma : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(LogText, NumbersDoNotFollowTheLocale)
{
    const std::string before = TextOf(SimulatePoints({.points = 3}, 1));
    const std::locale usual = std::locale::global({std::locale(), new DecimalComma});
    const std::string after = TextOf(SimulatePoints({.points = 3}, 1));
    const std::string truth = TruthOfPoints(1, {}, {});
    std::locale::global(usual);
    EXPECT_EQ(after, before);
    EXPECT_EQ(truth, TruthOfPoints(1, {}, {}));
}

TEST(TruthText, HoldsTheCorrectionThatUndoesTheDistortion)
{
    Scene scene;
    scene.sensor.a.hardIron = {35.0, -20.0, 12.0};
    scene.sensor.b.softIron.rows[0].y = 0.1;
    scene.field.declination = 3.5;
    const auto truth =
        nlohmann::json::parse(TruthOfTurns(scene, {
                                                      {.plan = {}, .samples = 500}
    }));
    EXPECT_EQ(truth["seed"], 1);
    EXPECT_EQ(truth["bias_a_deg"], -3.5);
    EXPECT_EQ(truth["sensor"]["magnetometer_a"]["correction"]["y0"], -20.0);
    EXPECT_TRUE(truth["sensor"]["magnetometer_b"]["correction"].is_null());
    EXPECT_EQ(truth["horizontal_turn"]["samples_written"], 500);
    EXPECT_FALSE(truth.contains("vertical_turn"));
}

TEST(TruthText, NamesEveryTipOfAWalk)
{
    const WalkPlan plan{.points = 4, .startOfDay = 43200.5};
    const Walk walk = SimulateWalk({}, {}, plan, 1);
    const auto truth = nlohmann::json::parse(TruthOfWalk({}, plan, walk));
    ASSERT_EQ(truth["tips"].size(), 4U);
    EXPECT_EQ(truth["tips"][2]["n_m"], walk.tips[2].x);
    EXPECT_EQ(truth["samples_written"], walk.samples.size());
    EXPECT_EQ(truth["start_of_day_s"], 43200.5);
}

TEST(TruthText, NamesTheOutliersOfAPointSet)
{
    const PointsPlan plan{.points = 10, .outliers = 2};
    const std::vector<AntennaPosition> positions = SimulatePoints(plan, 1);
    const auto truth = nlohmann::json::parse(TruthOfPoints(1, plan, positions));
    EXPECT_THAT(truth["outliers"], ElementsAre(5, 10));
    EXPECT_EQ(truth["tip"]["h_m"], 100.0);
}

} // namespace
