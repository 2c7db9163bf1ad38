// SPDX-License-Identifier: MIT
//
// tiltpole occupy on logs that do not name their points.
#include "tests/apps/cli/occupy/OccupyRuns.h"

#include <cmath>
#include <gmock/gmock.h>
#include <map>

namespace {

using apps::test::Outcome;
using apps::test::ReadAll;
using nlohmann::json;
using occupy::test::kRecorded;
using occupy::test::kTruth;
using occupy::test::Recorded;
using occupy::test::Table;
using occupy::test::TableOf;
using testing::HasSubstr;

constexpr double kRate = 50.0;     // rows per second of simulated logs
constexpr std::size_t kEvery = 10; // of them one has an epoch

double Number(const Table& table, std::size_t row, const std::string& name)
{
    return std::stod(table.rows[row][table.Column(name)]);
}

// The rows of a log one after the other, with a walk of some seconds between two points: the pole
// is carried upright, the antenna goes straight from place to place.
Table WithWalks(const Table& points, double walk)
{
    Table log = points;
    log.rows.clear();
    for (std::size_t i = 0; i < points.rows.size(); ++i) {
        const bool first = i > 0 && points.rows[i].front() != points.rows[i - 1].front();
        const auto steps = static_cast<std::size_t>(first ? walk * kRate : 0);
        for (std::size_t step = 1; step < steps; ++step) {
            std::vector<std::string> row = points.rows[i];
            const double share = static_cast<double>(step) / static_cast<double>(steps);
            std::size_t from = i - 1;
            while (points.rows[from][points.Column("x")].empty())
                --from;
            for (const char* name : {"x", "y", "h"}) {
                const double a = Number(points, from, name);
                const double b = Number(points, i, name);
                row[points.Column(name)] =
                    step % kEvery == 0 ? fmt::format("{:.4f}", a + share * (b - a)) : "";
            }
            for (const char* name : {"dGyro_x", "dGyro_y", "dGyro_z", "dAcc_x", "dAcc_y"})
                row[points.Column(name)] = "0";
            row[points.Column("dAcc_z")] = "1";
            log.rows.push_back(row);
        }
        log.rows.push_back(points.rows[i]);
    }
    for (std::size_t i = 0; i < log.rows.size(); ++i)
        log.Cell(i, "seconds") = fmt::format("{:.3f}", static_cast<double>(i) / kRate);
    return log;
}

class PointsByMotion : public occupy::test::OccupyRuns
{
protected:
    // Points of 8 s with the names that they have in the table of the true tips.
    Table Simulated(const std::string& options)
    {
        const std::string log = m_folder.Path("simulated.csv");
        m_truth = m_folder.Path("tips.csv");
        const auto outcome = apps::test::RunLine("simulate occupations --duration 8 --seed 4 --out "
                                                 + log + " --truth " + m_truth + " " + options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        return TableOf(ReadAll(log));
    }
    json Unnamed(Table table, const std::string& arguments = "")
    {
        table.Remove("point");
        return json::parse(Run(table, arguments + " --json").out);
    }

    std::string m_truth;
};

double PlanError(const json& point)
{
    return std::hypot(point["error"]["n_m"].get<double>(), point["error"]["e_m"].get<double>());
}

// Its seconds begin anew at each point.
TEST_F(PointsByMotion, FindsTheRecordedPointsWithoutTheirNames)
{
    const Table table = TableOf(ReadAll(kRecorded));
    const json found = Unnamed(table, "--bias 0.75 --truth " + kTruth);
    EXPECT_EQ(found["points_told_apart_by"], "motion");
    const json named = json::parse(RunOn(kRecorded, "--bias 0.75 --json").out);
    EXPECT_EQ(named["points_told_apart_by"], "names");
    ASSERT_EQ(found["points"].size(), 24U);
    for (std::size_t i = 0; i < 24; ++i) {
        const json& point = found["points"][i];
        EXPECT_EQ(point["point"], std::to_string(i + 1));
        EXPECT_EQ(point["epochs"], named["points"][i]["epochs"]);
        EXPECT_NEAR(point["tip_m"]["N"].get<double>(),
                    named["points"][i]["tip_m"]["N"].get<double>(), 0.003);
    }
}

TEST_F(PointsByMotion, LeavesTheWalksOut)
{
    for (const char* motion : {"lean-in", "opposite", "rock"}) {
        const Table log = WithWalks(Simulated(fmt::format("--points 3 --motion {}", motion)), 6.0);
        const json found = Unnamed(log, "--truth " + m_truth);
        ASSERT_EQ(found["points"].size(), 3U) << motion;
        std::size_t rows = found["rows_of_no_point"]["samples"].get<std::size_t>();
        EXPECT_GT(rows, static_cast<std::size_t>(2 * 6 * kRate)) << motion;
        for (const json& point : found["points"]) {
            EXPECT_LT(PlanError(point), 0.04) << motion;
            rows += point["samples"]["read"].get<std::size_t>();
        }
        EXPECT_EQ(rows, log.rows.size()) << motion;
        Table unnamed = log;
        unnamed.Remove("point");
        EXPECT_THAT(
            Run(unnamed).out,
            testing::AllOf(HasSubstr("told apart by motion: the log does not name them\n"),
                           HasSubstr(fmt::format(
                               "rows of no point        {}, {} of them with an antenna position\n",
                               found["rows_of_no_point"]["samples"].get<int>(),
                               found["rows_of_no_point"]["epochs"].get<int>()))))
            << motion;
    }
}

TEST_F(PointsByMotion, KeepsPlacesAFootApart)
{
    const Table log =
        WithWalks(Simulated("--points 4 --motion opposite --spacing 0.3 --relief 0"), 1.0);
    const json found = Unnamed(log, "--truth " + m_truth);
    ASSERT_EQ(found["points"].size(), 4U);
    for (const json& point : found["points"])
        EXPECT_LT(PlanError(point), 0.04) << point["point"];
}

// The tip creeps on while the pole is held: at every speed the points that are found are not
// stored, for nothing stood.
TEST_F(PointsByMotion, StoresNoTipOfAnAntennaThatGlides)
{
    for (const double speed : {0.01, 0.02, 0.05, 0.2, 1.0}) { // m/s
        Table log = Simulated("--points 1 --motion rock");
        for (std::size_t i = 0; i < log.rows.size(); ++i)
            if (!log.Cell(i, "x").empty())
                log.Cell(i, "x") = fmt::format(
                    "{:.4f}", Number(log, i, "x") + speed * static_cast<double>(i) / kRate);
        const json found = Unnamed(log);
        for (const json& point : found["points"])
            EXPECT_NE(point["advice"], "store") << speed << ' ' << point["reason"];
    }
}

TEST_F(PointsByMotion, EndsAPointWhereSensorsOrAntennaPause)
{
    const Table whole = Simulated("--points 1 --motion rock");
    ASSERT_EQ(Unnamed(whole)["points"].size(), 1U);
    Table gyros = whole;
    gyros.rows.erase(gyros.rows.begin() + 190, gyros.rows.begin() + 220);
    EXPECT_EQ(Unnamed(gyros)["points"].size(), 2U);
    Table antenna = whole;
    for (std::size_t i = 120; i < 280; ++i)
        for (const char* name : {"x", "y", "h"})
            antenna.Cell(i, name) = "";
    EXPECT_EQ(Unnamed(antenna)["points"].size(), 2U);
}

TEST_F(PointsByMotion, ForgivesASingleEpochThatIsOff)
{
    Table log = Simulated("--points 1 --motion rock");
    log.Cell(200, "x") = fmt::format("{:.4f}", Number(log, 200, "x") + 0.4);
    const json found = Unnamed(log, "--truth " + m_truth);
    ASSERT_EQ(found["points"].size(), 1U);
    EXPECT_EQ(found["points"][0]["epochs"]["read"], 40);
    EXPECT_LT(PlanError(found["points"][0]), 0.04);
}

TEST_F(PointsByMotion, ANameThatCoversTwoPlacesIsRefused)
{
    for (const char* spacing : {"0.1", "0.3", "5"}) {
        Table log = WithWalks(
            Simulated(fmt::format("--points 2 --motion opposite --spacing {}", spacing)), 2.0);
        log.Set("point", "A");
        const json points = Points(log);
        ASSERT_EQ(points.size(), 1U);
        EXPECT_EQ(points[0]["advice"], "refuse") << spacing << ' ' << points[0]["reason"];
    }
}

TEST_F(PointsByMotion, NeedsNamesWithoutGyros)
{
    Table log = Recorded({"1"});
    log.Remove("point");
    const Outcome outcome = Run(log, "--gyro-free");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, m_path
                               + ": without gyros nothing tells points apart: add a column "
                                 "`point` with their names\n");
}

TEST_F(PointsByMotion, SaysThatNothingStood)
{
    Table log = Recorded({"1"});
    log.Remove("point");
    log.rows.resize(60);
    const Outcome outcome = Run(log);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err,
              m_path
                  + ": there is no occupied point: nowhere does the tip stand for 2 s: the longest "
                    "of 1 stop lasts 1.1 s, the second after a walk and the one before it left "
                    "out; the antenna moves by 0.3 m\n");
}

} // namespace
