// SPDX-License-Identifier: MIT
// The recorded points of examples/occupations.csv.
#include "field/Occupation.h"

#include "tests/field/OccupationFigures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using field::Occupation;
using field::OccupationEstimate;
using field_tests::Covers;
using field_tests::PlanError;
using field_tests::Quantile;

struct Row
{
    field::InertialSample sample;
    field::AntennaEpoch epoch;
    bool hasEpoch = false;
};

std::vector<double> NumbersOf(const std::string& line, std::size_t fields)
{
    std::vector<double> numbers;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');)
        numbers.push_back(field.empty() ? NAN : std::atof(field.c_str()));
    numbers.resize(fields, NAN);
    return numbers;
}

template <class Take>
void ReadTable(const std::string& name, std::size_t fields, Take take)
{
    std::string path = TILTPOLE_SOURCE_DIR "/examples/";
    path += name;
    std::ifstream file(path);
    ASSERT_TRUE(file.good()) << name;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line))
        take(NumbersOf(line, fields));
}

std::map<int, std::vector<Row>> ReadPoints()
{
    std::map<int, std::vector<Row>> points;
    ReadTable("occupations.csv", 19, [&points](const std::vector<double>& n) {
        Row row;
        row.sample.seconds = row.epoch.seconds = n[1];
        row.sample.tilt.pitch = n[2];
        row.sample.tilt.roll = n[3];
        row.sample.rate = {n[4], n[5], n[6]};
        row.sample.acceleration = {n[7], n[8], n[9]};
        row.sample.magnetic = {n[10], n[11], n[12]};
        row.hasEpoch = std::isfinite(n[16]);
        row.epoch.position = {n[16], n[17], n[18]};
        points[static_cast<int>(n[0])].push_back(row);
    });
    return points;
}

std::map<int, xyhCoordinate> ReadTruth()
{
    std::map<int, xyhCoordinate> truth;
    ReadTable("occupations-truth.csv", 7, [&truth](const std::vector<double>& n) {
        truth[static_cast<int>(n[0])] = {n[1], n[2], n[3]};
    });
    return truth;
}

OccupationEstimate EstimateOf(const std::vector<Row>& rows, bool gyros)
{
    field::OccupationSetup setup;
    setup.magneticBias = 0.75;
    Occupation occupation(setup);
    for (const Row& row : rows) {
        occupation.Add(row.sample);
        if (row.hasEpoch) occupation.Add(row.epoch);
    }
    return gyros ? occupation.Estimate() : occupation.EstimateWithoutGyros();
}

TEST(OccupationRecorded, TwentyFourPointsKeepTheirFigures)
{
    const auto truth = ReadTruth();
    std::vector<double> errors;
    int covered = 0;
    int heights = 0;
    int stored = 0;
    for (const auto& [point, rows] : ReadPoints()) {
        const auto e = EstimateOf(rows, true);
        const auto& t = truth.at(point);
        errors.push_back(1000.0 * PlanError(e, t));
        covered += Covers(e, t) ? 1 : 0;
        heights += std::fabs(e.tip.h - t.h) <= e.heightHalfInterval ? 1 : 0;
        stored += e.advice == field::OccupationAdvice::Store ? 1 : 0;
    }
    ASSERT_EQ(errors.size(), 24U);
    EXPECT_LT(Quantile(errors, 0.5), 9.0);
    EXPECT_LT(Quantile(errors, 0.9), 14.0);
    EXPECT_LT(Quantile(errors, 0.99), 19.5);
    EXPECT_GE(covered, 23);
    EXPECT_GE(heights, 23);
    EXPECT_GE(stored, 22);
}

// A hand is accelerated too slowly for three seconds to show how much.
TEST(OccupationRecorded, EllipsesOfThreeSecondsHold)
{
    const auto truth = ReadTruth();
    int windows = 0;
    int covered = 0;
    int wrong = 0;
    for (const auto& [point, rows] : ReadPoints())
        for (const double from : {0.0, 3.0, 6.0}) {
            std::vector<Row> part;
            for (const Row& row : rows)
                if (row.sample.seconds >= from && row.sample.seconds <= from + 3.0)
                    part.push_back(row);
            const auto e = EstimateOf(part, true);
            if (!e.hasTip) continue;
            const bool isCovered = Covers(e, truth.at(point));
            ++windows;
            covered += isCovered ? 1 : 0;
            wrong += e.advice == field::OccupationAdvice::Store && !isCovered ? 1 : 0;
        }
    EXPECT_GE(windows, 60);
    EXPECT_GE(covered, 0.93 * windows) << windows;
    EXPECT_LE(wrong, 1);
}

// Most of the points were rocked; what is not refused keeps its region.
TEST(OccupationRecorded, WithoutGyrosMostPointsAreRefusedAsRocked)
{
    const auto truth = ReadTruth();
    int rocked = 0;
    int wrong = 0;
    for (const auto& [point, rows] : ReadPoints()) {
        const auto e = EstimateOf(rows, false);
        rocked += e.reason == field::OccupationReason::Rocked ? 1 : 0;
        const bool stored = e.advice == field::OccupationAdvice::Store;
        wrong += stored && !Covers(e, truth.at(point)) ? 1 : 0;
    }
    EXPECT_GE(rocked, 12);
    EXPECT_EQ(wrong, 0);
}

TEST(OccupationRecorded, SensorsMovedByHandDoNotFitAPlantedPole)
{
    for (const auto& [point, rows] : ReadPoints())
        EXPECT_EQ(EstimateOf(rows, true).sensorHeight, 0.0) << point;
}

} // namespace
