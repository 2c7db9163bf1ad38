// SPDX-License-Identifier: MIT
//
// tiltpole occupy on logs with wrong units, axes and columns: nothing of them may be stored.
#include "tests/apps/cli/occupy/OccupyRuns.h"

#include <cmath>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>

namespace {

using apps::test::Outcome;
using apps::test::ReadAll;
using nlohmann::json;
using occupy::test::Recorded;
using occupy::test::Table;
using occupy::test::TableOf;
using testing::HasSubstr;
using testing::Not;

class OccupyMistakes : public occupy::test::OccupyRuns
{
protected:
    Table Log(const std::string& simulation)
    {
        const std::string log = m_folder.Path("simulated.csv");
        EXPECT_EQ(
            apps::test::RunLine("simulate occupations --out " + log + " " + simulation).exitCode,
            0);
        return TableOf(ReadAll(log));
    }
};

void Scale(Table& table, const std::vector<std::string>& names, double factor, int decimals = 9)
{
    for (const std::string& name : names)
        for (std::size_t i = 0; i < table.rows.size(); ++i) {
            std::string& cell = table.Cell(i, name);
            if (!cell.empty()) cell = fmt::format("{:.{}f}", factor * std::stod(cell), decimals);
        }
}

void Shift(Table& table, const std::string& name, double by, std::size_t from = 0)
{
    for (std::size_t i = from; i < table.rows.size(); ++i) {
        std::string& cell = table.Cell(i, name);
        if (!cell.empty()) cell = fmt::format("{:.4f}", std::stod(cell) + by);
    }
}

void Exchange(Table& table, const std::string& a, const std::string& b)
{
    std::swap(table.header[table.Column(a)], table.header[table.Column(b)]);
}

const std::vector<std::string> kForces{"dAcc_x", "dAcc_y", "dAcc_z"};
const std::vector<std::string> kRates{"dGyro_x", "dGyro_y", "dGyro_z"};

// A rock about a single axis tells a mirrored track from the true one only by chance.
TEST_F(OccupyMistakes, NoPointOfALogWithForeignAxesIsStored)
{
    const Table right = Log("--anew --points 16 --seed 11 --motion rock --amplitude 15");
    const std::function<void(Table&)> changes[] = {
        [](Table& t) { Exchange(t, "dGyro_x", "dGyro_y"); },
        [](Table& t) { Exchange(t, "dAcc_x", "dAcc_y"); },
        [](Table& t) { Scale(t, {"dAcc_x"}, -1.0); },
    };
    for (const auto& change : changes) {
        Table table = right;
        change(table);
        for (const json& point : Points(table))
            EXPECT_EQ(point["advice"], "refuse") << point["reason"];
    }
    for (const json& point : Points(right))
        EXPECT_EQ(point["advice"], "store") << point["reason"];
}

// Rocked within a second, so that means of a second show nothing of the turns of gravity.
TEST_F(OccupyMistakes, ASinglePointWithForeignAxesIsRefusedWithoutTheMagnetometer)
{
    const std::function<void(Table&)> changes[] = {
        [](Table& t) { Exchange(t, "dGyro_x", "dGyro_y"); },
        [](Table& t) { Exchange(t, "dAcc_x", "dAcc_y"); },
    };
    for (const char* seed : {"1", "3", "5", "9"}) {
        const Table right =
            Log("--points 1 --motion rock --amplitude 15 --seed " + std::string(seed));
        EXPECT_EQ(Run(right, "--no-magnetometer").exitCode, 0) << seed;
        for (const auto& change : changes) {
            Table table = right;
            change(table);
            const std::string tip = m_folder.Path("tip.csv");
            const Outcome outcome = Run(table, "--no-magnetometer --out " + tip);
            EXPECT_EQ(outcome.exitCode, 1) << seed;
            EXPECT_THAT(outcome.err,
                        HasSubstr("gyros and accelerometers do not have the same axes"))
                << seed;
            EXPECT_FALSE(std::filesystem::exists(tip)) << seed;
        }
    }
}

// Three rates of 100000 degrees/s passed for exchanged axes of the whole log.
TEST_F(OccupyMistakes, RatesThatNoPoleHasAreNamedAndLeftOut)
{
    const Table right = Log("--points 2 --seed 11");
    const json tips = Points(right);
    for (const char* rate : {"100000", "-4001", "500", "-250"}) {
        Table table = right;
        for (const std::size_t row : {98U, 198U, 298U})
            table.Cell(row, "dGyro_x") = rate;
        const Outcome outcome = Run(table, "--json");
        EXPECT_EQ(outcome.exitCode, 0) << rate;
        EXPECT_THAT(outcome.err, HasSubstr(fmt::format(
                                     ": 3 of {} rows have rates that no pole has, the first in "
                                     "line 100 ({} degrees/s); left out\n",
                                     table.rows.size(), rate)));
        const json points = json::parse(outcome.out)["points"];
        ASSERT_EQ(points.size(), 2U);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(points[i]["advice"], "store") << points[i]["reason"];
            for (const char* axis : {"N", "E", "h"})
                EXPECT_NEAR(points[i]["tip_m"][axis].get<double>(),
                            tips[i]["tip_m"][axis].get<double>(), 0.002)
                    << rate;
        }
    }
}

TEST_F(OccupyMistakes, ASingleRateThatNoPoleHasIsNamedByItsLine)
{
    Table table = Log("--points 1 --seed 11");
    table.Cell(98, "dGyro_x") = "100000";
    EXPECT_THAT(Run(table).err, HasSubstr(fmt::format(
                                    ": 1 of {} rows has rates that no pole has, it is in line 100 "
                                    "(100000 degrees/s); left out\n",
                                    table.rows.size())));
}

TEST_F(OccupyMistakes, RatesOfAnotherUnitAreNotLeftOut)
{
    Table table = Log("--points 1 --seed 11 --motion rock");
    Scale(table, kRates, 1000.0);
    const Outcome outcome = Run(table, "--json");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("rows have rates that no pole has, the first in line "));
    EXPECT_THAT(outcome.err, HasSubstr(": are the rates in degrees per second?\n"));
}

TEST_F(OccupyMistakes, AFastRockIsNoSpike)
{
    const Table table =
        Log("--points 1 --seed 11 --motion rock --amplitude 20 --frequency 3 --rate 20");
    EXPECT_THAT(Run(table, "--json").err, testing::Not(HasSubstr("rates that no pole has")));
}

TEST_F(OccupyMistakes, APartOfThePointsSpeaksForTheSensors)
{
    Table table = Log("--points 8 --seed 11 --motion rock --amplitude 15");
    for (auto& row : table.rows)
        if (row.front() == "1" || row.front() == "2")
            std::swap(row[table.Column("dAcc_x")], row[table.Column("dAcc_y")]);
    const json points = Points(table);
    ASSERT_EQ(points.size(), 8U);
    EXPECT_THAT(points[0]["reason"].get<std::string>(),
                testing::StartsWith("gyros and accelerometers do not have the same axes"));
    EXPECT_EQ(points[7]["reason"],
              "the sensors contradict the antenna at 2 of 8 points of this log: check axes, signs "
              "and units");
    EXPECT_EQ(points[7]["advice"], "refuse");
    EXPECT_TRUE(points[7]["tip_m"]["N"].is_null());
}

TEST_F(OccupyMistakes, APointWithoutRowsKeepsItsOwnReason)
{
    Table table = Log("--points 8 --seed 11 --motion rock --amplitude 15");
    std::size_t rows = 0; // of the fourth point, of which a second is left
    std::erase_if(table.rows, [&](const auto& row) { return row.front() == "4" && ++rows > 50; });
    for (auto& row : table.rows) {
        if (row.front() == "1" || row.front() == "2")
            std::swap(row[table.Column("dAcc_x")], row[table.Column("dAcc_y")]);
        if (row.front() == "3")
            for (const char* name : {"x", "y", "h"})
                row[table.Column(name)] = "";
    }
    const json doubted = Points(table);
    EXPECT_EQ(doubted[2]["reason"], "there are no antenna positions");
    EXPECT_EQ(doubted[3]["advice"], "move");
    EXPECT_EQ(doubted[7]["reason"],
              "the sensors contradict the antenna at 2 of 6 points of this log: check axes, signs "
              "and units");

    for (auto& row : table.rows)
        if (row.front() != "1" && row.front() != "2")
            std::swap(row[table.Column("dAcc_x")], row[table.Column("dAcc_y")]);
    const json foreign = Points(table);
    EXPECT_EQ(foreign[2]["reason"], "there are no antenna positions");
    EXPECT_EQ(foreign[3]["reason"], doubted[3]["reason"]);
    EXPECT_THAT(foreign[7]["reason"].get<std::string>(),
                testing::StartsWith("gyros and accelerometers do not have the same axes"));
}

TEST_F(OccupyMistakes, FewDoubtfulPointsOfManyDoNotSpeakForTheSensors)
{
    Table table = Log("--points 12 --seed 11 --motion rock --amplitude 15");
    for (auto& row : table.rows)
        if (row.front() == "1" || row.front() == "2")
            std::swap(row[table.Column("dAcc_x")], row[table.Column("dAcc_y")]);
    const json points = Points(table);
    ASSERT_EQ(points.size(), 12U);
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_EQ(points[i]["advice"] == "refuse", i < 2) << i << points[i]["reason"];
}

TEST_F(OccupyMistakes, AMagnetometerFarFromTheTrackIsNamed)
{
    const Table table = Log("--points 1 --seed 3 --motion opposite");
    EXPECT_EQ(Points(table, "--bias 40")[0]["advice"], "store");
    const json point = Points(table, "--bias 170")[0];
    EXPECT_EQ(point["advice"], "refuse");
    EXPECT_THAT(point["reason"].get<std::string>(),
                testing::MatchesRegex("the headings of magnetometer and track differ by 1[67]. "
                                      "degrees: is a magnet near, or are axes exchanged.*"));
    EXPECT_EQ(Points(table, "--bias 170 --no-magnetometer")[0]["advice"], "store");
}

struct Mistake
{
    const char* what;
    std::function<void(Table&)> make;
    const char* says;
};

TEST_F(OccupyMistakes, AreNamedInOneSentence)
{
    // clang-format off
    const Mistake mistakes[] = {
        {"no heights",        [](Table& t) { Scale(t, {"h"}, 0.0); },
         "the antenna's height is 0.000 m throughout: the log lacks heights"},
        {"one height",        [](Table& t) { Scale(t, {"h"}, 0.0); Shift(t, "h", 312.5); },
         "the antenna's height is 312.500 m throughout: the log lacks heights"},
        {"a dead sensor",     [](Table& t) { Scale(t, kForces, 0.0); },
         "the accelerations are 0 throughout: is there an accelerometer?"},
        {"m/s²",              [](Table& t) { Scale(t, kForces, 9.80665); },
         "the accelerations average 9.83 g: are they in m/s²?"},
        {"mg",                [](Table& t) { Scale(t, kForces, 1000.0); },
         "are they in another unit?"},
        {"weight, not force", [](Table& t) { Scale(t, kForces, -1.0); },
         "the accelerations average -0.97 g along z, where a plumb pole at rest reads +1 g: are the signs reversed?"},
        {"z down",            [](Table& t) { Scale(t, {"dAcc_y", "dAcc_z", "dGyro_y", "dGyro_z"}, -1.0); },
         "are the signs reversed?"},
        {"minutes",           [](Table& t) { Scale(t, {"seconds"}, 1.0 / 60.0); },
         "the rows are 0.00033 s apart, not 0.002 to 0.25 s: is the time in seconds?"},
        {"kiloseconds",       [](Table& t) { Scale(t, {"seconds"}, 1e-3); },
         "the rows are 2e-05 s apart, not 0.002 to 0.25 s: is the time in seconds?"},
        {"milliseconds",      [](Table& t) { Scale(t, {"seconds"}, 1000.0); },
         "the rows are 20 s apart, not 0.002 to 0.25 s: is the time in seconds?"},
        {"whole seconds",     [](Table& t) { Scale(t, {"seconds"}, 1.0, 0); },
         "the time of samples or antenna positions runs back or repeats"},
        {"shuffled rows",     [](Table& t) { for (std::size_t i = 0; i < t.rows.size(); ++i) std::swap(t.rows[i], t.rows[i * 7919 % t.rows.size()]); },
         "the time of samples or antenna positions runs back or repeats"},
        {"two places",        [](Table& t) { Shift(t, "x", 70.0, t.rows.size() / 2); },
         "the antenna moves by 70."},
    };
    // clang-format on
    const Table right = Log("--points 1 --seed 3 --motion opposite");
    for (const Mistake& mistake : mistakes) {
        Table table = right;
        mistake.make(table);
        const Outcome outcome = Run(table);
        EXPECT_EQ(outcome.exitCode, 1) << mistake.what;
        EXPECT_EQ(outcome.out, "") << mistake.what;
        EXPECT_THAT(outcome.err, testing::StartsWith(m_path + ": point 1: ")) << mistake.what;
        EXPECT_THAT(outcome.err, HasSubstr(mistake.says)) << mistake.what;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << mistake.what;
    }
}

TEST_F(OccupyMistakes, OfALogWithoutNamesAreTheReasonWhyThereIsNoPoint)
{
    // clang-format off
    const Mistake mistakes[] = {
        {"minutes",      [](Table& t) { Scale(t, {"seconds"}, 1.0 / 60.0); },  "the rows are 0.00033 s apart"},
        {"milliseconds", [](Table& t) { Scale(t, {"seconds"}, 1000.0); },      "the rows are 20 s apart"},
        {"whole seconds", [](Table& t) { Scale(t, {"seconds"}, 1.0, 0); },     "the time of the rows runs back or repeats"},
        {"no antenna",   [](Table& t) { for (const char* name : {"x", "y", "h"}) t.Set(name, ""); }, "there are no antenna positions"},
        {"rad/s",        [](Table& t) { Scale(t, kRates, std::acos(-1.0) / 180.0); },
         "degrees per second: are the rates in degrees per second?"},
    };
    // clang-format on
    const Table right = Log("--points 1 --seed 3 --motion rock --amplitude 15");
    for (const Mistake& mistake : mistakes) {
        Table table = right;
        mistake.make(table);
        table.Remove("point");
        const Outcome outcome = Run(table);
        EXPECT_EQ(outcome.exitCode, 1) << mistake.what;
        EXPECT_THAT(outcome.err, testing::StartsWith(m_path + ": there is no occupied point: "))
            << mistake.what;
        EXPECT_THAT(outcome.err, HasSubstr(mistake.says)) << mistake.what;
    }
    Table blank = right;
    blank.Set("point", "");
    EXPECT_THAT(Run(blank).err, HasSubstr("the column with the names of points is blank"));
}

TEST_F(OccupyMistakes, AForceInOtherUnitsIsNamedWithoutNames)
{
    Table table = Log("--points 1 --seed 3 --motion opposite");
    table.Remove("point");
    Scale(table, kForces, 9.80665);
    EXPECT_THAT(Run(table).err, HasSubstr("are they in m/s²?"));
}

TEST_F(OccupyMistakes, AnEpochThatTheLoggerHoldsCountsOnce)
{
    const Table once = Log("--points 1 --seed 3 --motion opposite");
    Table held = once;
    for (const char* name : {"x", "y", "h"})
        for (std::size_t i = 1; i < held.rows.size(); ++i)
            if (held.Cell(i, name).empty()) held.Cell(i, name) = held.Cell(i - 1, name);
    const json expected = Points(once)[0];
    json point = Points(held)[0];
    EXPECT_EQ(point["tip_m"], expected["tip_m"]);
    EXPECT_EQ(point["epochs"]["read"], expected["epochs"]["read"]);
    EXPECT_EQ(point["epochs"]["held"].get<int>() + point["epochs"]["read"].get<int>(),
              point["samples"]["read"]);
    EXPECT_EQ(expected["epochs"]["held"], 0);
    EXPECT_THAT(Run(held).out, HasSubstr("held over from the row before"));
    held.Remove("point");
    EXPECT_EQ(Points(held)[0]["advice"], "store");
}

// At 50 rows a second.
TEST_F(OccupyMistakes, AnEpochIsHeldOverForAMomentOnly)
{
    const Table once = Log("--points 1 --seed 3 --motion opposite");
    const int epochs = Points(once)[0]["epochs"]["read"].get<int>();
    Table held = once;
    const std::size_t first = 100;
    int lost = 0;
    for (std::size_t i = first + 1; i < first + 100; ++i) {
        lost += held.Cell(i, "x").empty() ? 0 : 1;
        for (const char* name : {"x", "y", "h"})
            held.Cell(i, name) = held.Cell(first, name);
    }
    ASSERT_NE(held.Cell(first, "x"), "");
    const json point = Points(held)[0];
    EXPECT_EQ(point["epochs"]["read"], epochs - lost + 1) << "again after 1.2 s";
    EXPECT_EQ(point["epochs"]["held"], 98);
}

TEST_F(OccupyMistakes, AnEpochThatDiffersInOneCoordinateIsNotHeldOver)
{
    const Table once = Log("--points 1 --seed 3 --motion opposite");
    const int epochs = Points(once)[0]["epochs"]["read"].get<int>();
    for (const std::string moved : {"x", "y", "h"}) {
        Table table = once;
        for (const char* name : {"x", "y", "h"})
            table.Cell(101, name) = table.Cell(100, name);
        table.Cell(101, moved) = fmt::format("{:.4f}", std::stod(table.Cell(100, moved)) + 0.001);
        const json point = Points(table)[0];
        EXPECT_EQ(point["epochs"]["read"], epochs + 1) << moved;
        EXPECT_EQ(point["epochs"]["held"], 0) << moved;
    }
}

TEST_F(OccupyMistakes, ARefusedTipIsNotInTheTable)
{
    Table table = Log("--seed 3 --points 2 --motion opposite --slip 3:0.03:0.03:0");
    const Table still = Log("--seed 3 --points 2 --motion opposite");
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        if (table.rows[i].front() == "2") table.rows[i] = still.rows[i];
    const std::string out = m_folder.Path("tips.csv");
    const Outcome outcome = Run(table, "--out " + out);
    Table tips = TableOf(ReadAll(out));
    ASSERT_EQ(tips.Cell(0, "advice"), "refuse") << outcome.out;
    for (const char* name :
         {"tip_N_m", "tip_E_m", "tip_h_m", "ellipse_major_m", "ellipse_minor_m", "height_95_m"}) {
        EXPECT_EQ(tips.Cell(0, name), "") << name;
        EXPECT_NE(tips.Cell(1, name), "") << name;
    }
    EXPECT_THAT(outcome.out, testing::ContainsRegex("\n1 +refuse +- +- +- +- +- +- +-  the tip"));
    EXPECT_TRUE(Points(table)[0]["tip_m"]["N"].is_number()) << "with the advice beside it";
}

TEST_F(OccupyMistakes, WideNumbersStayApart)
{
    Table table = Log("--points 1 --seed 3 --motion opposite");
    const Outcome outcome = Run(table, "--pole-sd 90");
    EXPECT_THAT(outcome.out, testing::ContainsRegex(
                                 "\n1 +[a-z]+( +-?[0-9]+[.][0-9]+){5} +[0-9]+ +[0-9]+[.][0-9]  "))
        << outcome.out;
}

TEST_F(OccupyMistakes, WhatIsKnownOfTheSensorWidensTheRegion)
{
    const Table table = Log("--points 1 --seed 3 --motion opposite");
    const auto major = [&](const std::string& arguments) {
        return Points(table, arguments)[0]["ellipse_95_m"]["major"].get<double>();
    };
    const double usual = major("");
    EXPECT_EQ(major("--axis-sd 0.15 --accelerometer-sd 0.15"), usual);
    EXPECT_GT(major("--axis-sd 1"), 1.3 * usual);
    EXPECT_GT(major("--accelerometer-sd 1"), 1.3 * usual);
    EXPECT_EQ(Run(table, "--axis-sd 0").exitCode, 2);
    EXPECT_EQ(Run(table, "--accelerometer-sd 50").exitCode, 2);
    EXPECT_THAT(Run(table).out, HasSubstr("parallel to the pole to 0.15 degrees"));
}

} // namespace
