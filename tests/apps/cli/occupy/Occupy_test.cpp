// SPDX-License-Identifier: MIT
//
// tiltpole occupy, run as a program.
#include "tests/apps/cli/occupy/OccupyRuns.h"

#include <cmath>
#include <gmock/gmock.h>
#include <numbers>

namespace {

using apps::test::Outcome;
using apps::test::ReadAll;
using apps::test::RunLine;
using nlohmann::json;
using occupy::test::kRecorded;
using occupy::test::kTruth;
using occupy::test::Recorded;
using occupy::test::Table;
using occupy::test::TableOf;
using testing::HasSubstr;
using testing::Not;

// What is wrong with a log, how it comes about, and what the program says.
struct Damage
{
    const char* what;
    void (*change)(Table&);
    const char* says;
};

void RatesInRadians(Table& table)
{
    for (const char* name : {"dGyro_x", "dGyro_y", "dGyro_z"})
        for (std::size_t i = 0; i < table.rows.size(); ++i)
            table.Cell(i, name) =
                fmt::format("{}", std::stod(table.Cell(i, name)) * std::numbers::pi / 180.0);
}

void ReverseRows(Table& table)
{
    std::reverse(table.rows.begin(), table.rows.end());
}

void StopTime(Table& table)
{
    table.Set("seconds", "7.5");
}

void HoldAntenna(Table& table)
{
    for (const char* name : {"x", "y", "h"}) {
        const std::string first = table.Cell(0, name);
        for (std::size_t i = 0; i < table.rows.size(); ++i)
            if (!table.Cell(i, name).empty()) table.Cell(i, name) = first;
    }
}

void BlankAntenna(Table& table)
{
    for (const char* name : {"x", "y", "h"})
        table.Set(name, "");
}

void RepeatRows(Table& table)
{
    Table once = table;
    table.rows.clear();
    for (const auto& row : once.rows)
        table.rows.insert(table.rows.end(), 2, row);
}

void DropASecond(Table& table)
{
    table.rows.erase(table.rows.begin() + 150, table.rows.begin() + 200);
}

using Occupy = occupy::test::OccupyRuns;

double Quantile(std::vector<double> values, double fraction)
{
    std::sort(values.begin(), values.end());
    const double at = fraction * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(at);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (at - std::floor(at)) * (values[above] - values[below]);
}

// Errors and coverage are computed here, from the table of the true tips.
TEST_F(Occupy, FindsTheTipsOfTheRecordedPoints)
{
    const json points = json::parse(RunOn(kRecorded, "--bias 0.75 --json").out)["points"];
    const Table truth = TableOf(ReadAll(kTruth));
    ASSERT_EQ(points.size(), 24U);
    std::vector<double> errors;
    int covered = 0;
    int heights = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const json& point = points[i];
        ASSERT_EQ(point["point"], truth.rows[i][0]);
        const double north = point["tip_m"]["N"].get<double>() - std::stod(truth.rows[i][1]);
        const double east = point["tip_m"]["E"].get<double>() - std::stod(truth.rows[i][2]);
        const double height = point["tip_m"]["h"].get<double>() - std::stod(truth.rows[i][3]);
        const json& ellipse = point["ellipse_95_m"];
        const double azimuth = ellipse["azimuth_deg"].get<double>() * std::numbers::pi / 180.0;
        const double along = north * std::cos(azimuth) + east * std::sin(azimuth);
        const double across = east * std::cos(azimuth) - north * std::sin(azimuth);
        errors.push_back(1000.0 * std::hypot(north, east));
        covered += std::hypot(along / ellipse["major"].get<double>(),
                              across / ellipse["minor"].get<double>())
                           <= 1.0
                       ? 1
                       : 0;
        heights += std::fabs(height) <= point["height_95_m"].get<double>() ? 1 : 0;
    }
    EXPECT_LE(Quantile(errors, 0.5), 12.0);
    EXPECT_LE(Quantile(errors, 0.9), 24.0);
    EXPECT_LE(Quantile(errors, 0.99), 31.0);
    EXPECT_GE(covered, 23);
    EXPECT_GE(heights, 23);

    const json summary =
        json::parse(RunOn(kRecorded, "--bias 0.75 --json --truth " + kTruth).out)["errors"]["all"];
    EXPECT_EQ(summary["points"], 24);
    EXPECT_NEAR(1000.0 * summary["horizontal_m"]["p90"].get<double>(), Quantile(errors, 0.9), 1e-6);
    EXPECT_EQ(summary["in_ellipse"], covered);
    EXPECT_EQ(summary["in_height_interval"], heights);
}

TEST_F(Occupy, KeepsThePointsApart)
{
    const json together = Points(Recorded({"3", "4"}));
    ASSERT_EQ(together.size(), 2U);
    EXPECT_EQ(together[0], Points(Recorded({"3"}))[0]);
    EXPECT_EQ(together[1], Points(Recorded({"4"}))[0]);
    const double apart =
        together[0]["tip_m"]["N"].get<double>() - together[1]["tip_m"]["N"].get<double>();
    EXPECT_GT(std::fabs(apart), 30.0);
}

TEST_F(Occupy, LeavesOutRowsBetweenPointsAndBeginsAnewAfterThem)
{
    Table table = Recorded({"1"});
    const json once = Points(table)[0];
    const Table second = Recorded({"1"});
    Table walk = Recorded({"2"});
    walk.Set("point", "");
    const Table* const parts[] = {&walk, &second};
    for (const Table* more : parts)
        table.rows.insert(table.rows.end(), more->rows.begin(), more->rows.end());
    const json points = Points(table);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0], once);
    EXPECT_EQ(points[1], once);
}

TEST_F(Occupy, CountsRowsWithoutAnEpoch)
{
    Table table = Recorded({"1"});
    const std::size_t x = table.Column("x");
    const auto epochs = std::count_if(table.rows.begin(), table.rows.end(),
                                      [x](const auto& row) { return !row[x].empty(); });
    const json point = Points(table)[0];
    EXPECT_EQ(point["samples"]["read"], table.rows.size());
    EXPECT_EQ(point["epochs"]["read"], epochs);
    EXPECT_LT(epochs, static_cast<std::ptrdiff_t>(table.rows.size()) / 8);
    EXPECT_EQ(point["epochs"]["used"].get<int>() + point["epochs"]["unused"].get<int>(), epochs);

    table.rows[0][x] = "";
    const Outcome partly = Run(table);
    EXPECT_EQ(partly.exitCode, 2);
    EXPECT_EQ(partly.err, m_path
                              + ":2: the antenna's N, E, h are blank in part: give all three or "
                                "none\n");
}

TEST_F(Occupy, RefusesAnOccupationInOneSentenceAndWritesNothing)
{
    // clang-format off
    constexpr Damage cases[] = {
        {"rates in rad/s",          RatesInRadians,   "the antenna moves but the gyros hardly turn: are the rates in degrees per second?"},
        {"time runs back",          ReverseRows,      "the time of samples or antenna positions runs back or repeats"},
        {"time stands",             StopTime,         "the time of samples or antenna positions runs back or repeats"},
        {"antenna of another pole", HoldAntenna,      "the gyros turn but the antenna does not move: are both of this pole?"},
        {"no antenna",              BlankAntenna,     "there are no antenna positions"},
        {"rows twice",              RepeatRows,       "the time of samples or antenna positions runs back or repeats"},
        {"a long gap",              DropASecond,      "the inertial samples pause too often or for too long: begin the point again"},
    };
    // clang-format on
    const std::string out = m_folder.Path("tips.csv");
    for (const Damage& bad : cases) {
        Table table = Recorded({"1"});
        bad.change(table);
        const Outcome outcome = Run(table, "--out " + out);
        EXPECT_EQ(outcome.exitCode, 1) << bad.what;
        EXPECT_EQ(outcome.err, m_path + ": point 1: " + bad.says + "\n") << bad.what;
        EXPECT_EQ(outcome.out, "") << bad.what;
        EXPECT_EQ(ReadAll(out), "") << bad.what;
        const json point = Points(table)[0];
        EXPECT_EQ(point["advice"], "refuse") << bad.what;
        EXPECT_EQ(point["reason"], bad.says) << bad.what;
    }
}

void Reverse(Table& table, const std::string& name)
{
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        table.Cell(i, name) = fmt::format("{}", -std::stod(table.Cell(i, name)));
}

void Exchange(Table& table, const std::string& a, const std::string& b)
{
    std::swap(table.header[table.Column(a)], table.header[table.Column(b)]);
}

// A rotation of the accelerometers' axes Q is undone by that of the gyros; a reflection also
// reverses the rates.
TEST_F(Occupy, NamesAxesThatGyrosAndAccelerometersDoNotShare)
{
    // clang-format off
    constexpr Damage cases[] = {
        {"gyro x reversed",      [](Table& t) { Reverse(t, "dGyro_x"); },            "-x, y, z"},
        {"gyro y reversed",      [](Table& t) { Reverse(t, "dGyro_y"); },            "x, -y, z"},
        {"gyro z reversed",      [](Table& t) { Reverse(t, "dGyro_z"); },            "x, y, -z"},
        {"gyro x, y exchanged",  [](Table& t) { Exchange(t, "dGyro_x", "dGyro_y"); }, "y, x, z"},
        {"gyro y, z exchanged",  [](Table& t) { Exchange(t, "dGyro_y", "dGyro_z"); }, "x, z, y"},
        {"force x reversed",     [](Table& t) { Reverse(t, "dAcc_x"); },             "x, -y, -z"},
        {"force x, y exchanged", [](Table& t) { Exchange(t, "dAcc_x", "dAcc_y"); },  "-y, -x, -z"},
        {"a mirrored sensor",
         [](Table& t) { Exchange(t, "dAcc_x", "dAcc_y"); Exchange(t, "dGyro_x", "dGyro_y"); },       "-x, -y, -z"},
    };
    // clang-format on
    const std::string out = m_folder.Path("tips.csv");
    for (const Damage& bad : cases) {
        Table table = Recorded({"1", "6", "14", "15"});
        bad.change(table);
        const Outcome outcome = Run(table, "--out " + out);
        EXPECT_EQ(outcome.exitCode, 1) << bad.what;
        EXPECT_EQ(outcome.err,
                  m_path
                      + ": point 1 and 3 more: gyros and accelerometers do not have the same axes: "
                        "they agree where the rates are read as "
                      + bad.says + "\n")
            << bad.what;
        EXPECT_EQ(outcome.out + ReadAll(out), "") << bad.what;
    }
}

TEST_F(Occupy, FindsTheAxesOfEveryMotionInOrder)
{
    for (const char* motion : {"lean-in", "opposite", "rock", "hold", "free"}) {
        const json run = Simulated(fmt::format("--seed 8 --anew --points 4 --motion {}", motion));
        ASSERT_EQ(run["points"].size(), 4U) << motion;
        for (const json& point : run["points"])
            EXPECT_NE(point["advice"], "refuse") << motion << ' ' << point["reason"];
    }
}

TEST_F(Occupy, KeepsTheOtherPointsWhereOneIsRefused)
{
    Table table = Recorded({"1", "2"});
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        if (table.Cell(i, "point") == "2") table.Cell(i, "seconds") = "0";
    const std::string out = m_folder.Path("tips.csv");
    const Outcome outcome = Run(table, "--out " + out);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, HasSubstr("runs back or repeats"));
    const Table tips = TableOf(ReadAll(out));
    ASSERT_EQ(tips.rows.size(), 2U);
    EXPECT_NE(tips.rows[0][tips.Column("tip_N_m")], "");
    EXPECT_EQ(tips.rows[1][tips.Column("advice")], "refuse");
    EXPECT_EQ(tips.rows[1][tips.Column("tip_N_m")], "");
    const json refused = Points(table)[1];
    EXPECT_TRUE(refused["tip_m"]["N"].is_null());
    EXPECT_TRUE(refused["ellipse_95_m"]["major"].is_null());
    EXPECT_TRUE(refused["height_95_m"].is_null());
}

TEST_F(Occupy, NamesWhatItCannotRead)
{
    // clang-format off
    constexpr Damage cases[] = {
        {"blank rates",        [](Table& t) { t.Set("dGyro_x", ""); },            ":2: dGyro_x is '', not a finite number"},
        {"blank magnetometer", [](Table& t) { t.Set("dMag_z", ""); },             ":2: dMag_z is '', not a finite number"},
        {"all blank",          [](Table& t) { for (std::size_t i = 1; i < t.header.size(); ++i) t.Set(t.header[i], ""); },
         ":2: dPitch is '', not a finite number"},
        {"no rates",           [](Table& t) { t.Remove("dGyro_y"); },             ":1: missing in the header: dGyro_y;"},
        {"no time",            [](Table& t) { t.Remove("seconds"); },             ":1: missing in the header: seconds;"},
        {"time as text",       [](Table& t) { t.Cell(3, "seconds") = "late"; },   ":5: seconds is 'late', not a finite number"},
        {"infinite height",    [](Table& t) { t.Cell(0, "h") = "inf"; },          ":2: h is 'inf', not a finite number"},
        {"another unit",       [](Table& t) { t.header[t.Column("dGyro_x")] = "gyro_x [rad/s]"; },
         ":1: dGyro_x is needed in degrees per second, but the column gyro_x [rad/s] is in rad/s"},
    };
    // clang-format on
    const std::string out = m_folder.Path("tips.csv");
    for (const Damage& bad : cases) {
        Table table = Recorded({"1"});
        bad.change(table);
        const Outcome outcome = Run(table, "--out " + out);
        EXPECT_EQ(outcome.exitCode, 2) << bad.what;
        EXPECT_THAT(outcome.err, testing::StartsWith(m_path + bad.says)) << bad.what;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << bad.what;
        EXPECT_EQ(outcome.out + ReadAll(out), "") << bad.what;
    }
}

TEST_F(Occupy, RefusesOptionsThatCannotBe)
{
    const Table table = Recorded({"1"});
    for (const char* arguments :
         {"--antenna-sd 0.004", "--antenna-sd 0,0.01", "--antenna-sd 0.004,0", "--pole-sd -1",
          "--delay 11", "--sensor-height 0", "--bias x", "--gyro-free --delay 0.1",
          "--gyro-free --no-magnetometer", "--plot tips.pdf"}) {
        const Outcome outcome = Run(table, arguments);
        EXPECT_EQ(outcome.exitCode, 2) << arguments;
        EXPECT_THAT(outcome.err, testing::StartsWith("tiltpole occupy: ")) << arguments;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << arguments;
    }
}

TEST_F(Occupy, RowsWithoutNamesAreNoPoint)
{
    Table table = Recorded({"1"});
    table.Set("point", "");
    const std::string out = m_folder.Path("tips.csv");
    const Outcome outcome = Run(table, "--out " + out);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err,
                HasSubstr(": there is no occupied point: the column with the names of points is "
                          "blank throughout\n"));
    EXPECT_EQ(ReadAll(out), "");
}

TEST_F(Occupy, ALogWithoutRowsIsANegativeResult)
{
    Table table = Recorded({"1"});
    table.rows.clear();
    const Outcome outcome = Run(table, "--json");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, m_path + ": there is no occupied point\n");
    EXPECT_TRUE(json::parse(outcome.out)["points"].empty());
}

TEST_F(Occupy, WritesAllFieldsOfAPointAsJson)
{
    const json point = Points(Recorded({"1"}), "--bias 0.75")[0];
    EXPECT_EQ(point["point"], "1");
    EXPECT_THAT(point["advice"].get<std::string>(), testing::AnyOf("store", "move"));
    EXPECT_FALSE(point["reason"].get<std::string>().empty());
    for (const char* coordinate : {"N", "E", "h"})
        EXPECT_TRUE(point["tip_m"][coordinate].is_number()) << coordinate;
    for (const char* axis : {"major", "minor", "azimuth_deg"})
        EXPECT_TRUE(point["ellipse_95_m"][axis].is_number()) << axis;
    EXPECT_TRUE(point["height_95_m"].is_number());
    EXPECT_TRUE(point["magnetometer_minus_track_deg"].is_number());
}

TEST_F(Occupy, WritesATableOfOneRowAPoint)
{
    const std::string out = m_folder.Path("tips.csv");
    const Outcome outcome =
        Run(Recorded({"1", "2"}), "--bias 0.75 --truth " + kTruth + " --out " + out);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const Table tips = TableOf(ReadAll(out));
    ASSERT_EQ(tips.rows.size(), 2U);
    EXPECT_EQ(tips.rows[0].size(), tips.header.size());
    const auto number = [&](const char* name) {
        return std::stod(tips.rows[1][tips.Column(name)]);
    };
    EXPECT_NEAR(number("tip_N_m") - number("error_N_m"), 238505.6680, 1e-5);
    EXPECT_NEAR(number("tip_E_m") - number("error_E_m"), 650142.7320, 1e-5);
    EXPECT_NEAR(number("error_plan_m"), std::hypot(number("error_N_m"), number("error_E_m")), 2e-6);
}

TEST_F(Occupy, PrintsOneRowAPointWithAdviceAndReason)
{
    const Outcome outcome = RunOn(kRecorded, "--bias 0.75 --truth " + kTruth);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("pole                    2.000 m, known to 2.0 mm"));
    EXPECT_THAT(outcome.out, HasSubstr("store: the tip is known to"));
    EXPECT_THAT(outcome.out, HasSubstr("\n24   "));
    EXPECT_THAT(outcome.out, HasSubstr("magnetometer"));
    EXPECT_THAT(outcome.out, HasSubstr("95 % ellipse holds"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("nan")));
}

TEST_F(Occupy, ComparesWithSingleSamplesAndTheirMeans)
{
    const json errors =
        json::parse(RunOn(kRecorded, "--bias 0.75 --json --truth " + kTruth).out)["errors"];
    const auto p90 = [&](const char* of) {
        return errors[of]["horizontal_m"]["p90"].get<double>();
    };
    EXPECT_NEAR(p90("single_samples"), 0.062, 0.001); // by `measure`, each point with its truth
    EXPECT_NEAR(p90("means"), 0.035, 0.001);
    EXPECT_LT(p90("all"), p90("means"));
    EXPECT_EQ(errors["means"]["tips"], 24);
    EXPECT_GT(errors["single_samples"]["tips"], 24 * 35);
}

TEST_F(Occupy, NamesTheColumnsThatItTookForOthers)
{
    Table table = Recorded({"1"});
    EXPECT_THAT(Run(table).out, HasSubstr("\ncolumns                 N from x, E from y\n"));
    table.header[table.Column("x")] = "N";
    table.header[table.Column("y")] = "E";
    EXPECT_THAT(Run(table).out, testing::AllOf(HasSubstr("\npoints "), Not(HasSubstr("columns"))));
}

TEST_F(Occupy, CountsRowsOfNoPointInTheText)
{
    Table table = Recorded({"1"});
    EXPECT_THAT(Run(table).out, Not(HasSubstr("rows of no point")));
    const std::size_t x = table.Column("x");
    const auto blank = [&](std::size_t i) {
        table.Cell(i, "point") = "";
        return table.rows[i][x].empty() ? 0 : 1;
    };
    const int epochs = blank(0) + blank(1) + blank(2);
    EXPECT_THAT(Run(table).out,
                HasSubstr(fmt::format("rows of no point        3, {} of them with an antenna "
                                      "position\n",
                                      epochs)));
}

TEST_F(Occupy, SaysWhyEpochsAreLeftOut)
{
    Table table = Recorded({"1"});
    std::vector<std::size_t> epochs;
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        if (!table.Cell(i, "x").empty()) epochs.push_back(i);
    table.Cell(epochs[20], "seconds") = table.Cell(epochs[19], "seconds");
    const Outcome late = Run(table);
    EXPECT_THAT(late.out,
                HasSubstr("epochs left out         point 1: 1 not later than the one before\n"));
    const Outcome delayed = Run(Recorded({"1"}), "--delay 0.05");
    EXPECT_THAT(delayed.out, HasSubstr("before the first sample or after the last\n"));
    const Outcome early = Run(Recorded({"1", "2"}), "--delay -0.2");
    EXPECT_THAT(early.out,
                HasSubstr("epochs left out         point 1: 1 before the first sample or after the "
                          "last\n                        point 2: 1 before the first sample"));
    EXPECT_THAT(Run(Recorded({"1"})).out, Not(HasSubstr("epochs left out")));
}

// What a picture is made of, by the colors in its SVG form.
struct Drawing
{
    std::string svg;

    int Count(std::string_view text) const
    {
        int count = 0;
        for (auto at = svg.find(text); at != std::string::npos; at = svg.find(text, at + 1))
            ++count;
        return count;
    }
    int Charts() const { return Count("stroke:rgb(55%,56%,58%)"); } // their frames
    int Singles() const { return Count("fill:rgb(33.7%,70.6%,91.4%)"); }
    int Means() const { return Count("fill:rgb(80%,47.5%,65.5%)"); }
    int Tips() const { return Count("fill:rgb(0%,44.7%,69.8%)"); }
    int BlueLines() const { return Count("stroke:rgb(0%,44.7%,69.8%)"); }
};

TEST_F(Occupy, DrawsThePoints)
{
    const std::string plot = m_folder.Path("tips.svg");
    const auto drawn = [&] { return Drawing{ReadAll(plot)}; };
    const Table two = Recorded({"1", "2"});
    EXPECT_EQ(Run(two, "--truth " + kTruth + " --plot " + plot).exitCode, 0);
    EXPECT_EQ(drawn().Charts(), 3 + 2 * 2) << "three ways, then track and tip of each point";
    EXPECT_GT(drawn().Singles(), 3 * 2 * 40);
    EXPECT_EQ(Run(two, "--plot " + plot).exitCode, 0);
    EXPECT_EQ(drawn().Charts(), 2 + 2 * 2);
    EXPECT_EQ(Run(Recorded({"1"}), "--plot " + plot).exitCode, 0);
    EXPECT_EQ(drawn().Charts(), 2);
    EXPECT_EQ(RunOn(kRecorded, "--plot " + plot + " --truth " + kTruth).exitCode, 0);
    EXPECT_EQ(drawn().Charts(), 3);
    EXPECT_EQ(drawn().Means(), 24);
    EXPECT_EQ(drawn().Tips(), 24);
    Table none = Recorded({"1"});
    BlankAntenna(none);
    const std::string unwritten = m_folder.Path("none.svg");
    EXPECT_EQ(Run(none, "--plot " + unwritten).exitCode, 1);
    EXPECT_EQ(ReadAll(unwritten), "");
}

TEST_F(Occupy, DrawsAPointWithoutATip)
{
    const std::string plot = m_folder.Path("tips.svg");
    struct Case
    {
        const char* what;
        void (*change)(Table&); // of the second point
        const char* options;
        int overview; // charts
        bool singles; // whether there are single samples of the second point
    };
    constexpr Case cases[] = {
        {"no antenna, no magnetometer",     BlankAntenna, "--no-magnetometer", 0, false},
        {"no antenna",                      BlankAntenna, "",                  2, false},
        {"time stands",                     StopTime,     "",                  2, true },
        {"time stands and no magnetometer", StopTime,     "--no-magnetometer", 0, false},
    };
    for (const Case& point : cases) {
        Table table = Recorded({"1"});
        Table second = Recorded({"2"});
        point.change(second);
        table.rows.insert(table.rows.end(), second.rows.begin(), second.rows.end());
        const std::string arguments = std::string(point.options) + " --plot " + plot;
        EXPECT_EQ(Run(Recorded({"1"}), arguments).exitCode, 0);
        const Drawing first{ReadAll(plot)};
        EXPECT_GT(first.BlueLines(), 0) << "the tip and its ellipse";
        EXPECT_EQ(Run(table, arguments).exitCode, 1) << point.what;
        const Drawing drawn{ReadAll(plot)};
        EXPECT_EQ(drawn.Charts(), point.overview + 2 * 2) << point.what;
        EXPECT_EQ(drawn.BlueLines(), first.BlueLines()) << point.what;

        EXPECT_EQ(Run(table, arguments + " --truth " + kTruth).exitCode, 1) << point.what;
        const Drawing compared{ReadAll(plot)};
        EXPECT_EQ(compared.Charts(), point.overview + 1 + 2 * 2) << point.what;
        EXPECT_EQ(compared.Singles() > drawn.Singles(), point.singles) << point.what;
    }
}

TEST_F(Occupy, DrawsALogFromStandardInput)
{
    const std::string plot = m_folder.Path("tips.svg");
    const Outcome outcome = apps::test::RunProgram({"occupy", "-", "--pole", "2", "--plot", plot},
                                                   Recorded({"1"}).Text());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ((Drawing{ReadAll(plot)}.Charts()), 2);
}

TEST_F(Occupy, KeepsItsFilesApart)
{
    const std::string log = m_folder.Write("log.csv", Recorded({"1"}).Text());
    const std::string truth = m_folder.Write("truth.csv", ReadAll(kTruth));
    for (const std::string& file : {log, truth}) {
        const std::string before = ReadAll(file);
        const Outcome outcome = RunOn(log, "--truth " + truth + " --out " + file);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.err,
                  file + ": is an input of this command; choose another output file\n");
        EXPECT_EQ(ReadAll(file), before);
    }
}

TEST_F(Occupy, RefusesATruthThatIsNotOfThisLog)
{
    const auto complaint = [this](const std::string& content) {
        const std::string truth = m_folder.Write("truth.csv", content);
        const Outcome outcome = Run(Recorded({"1"}), "--truth " + truth);
        EXPECT_EQ(outcome.exitCode, 2) << content;
        return outcome.err.substr(std::min(outcome.err.size(), truth.size()));
    };
    const std::string ofOthers = complaint("point,N,E,h\n7,1,2,3\n");
    EXPECT_EQ(ofOthers, ": has none of the points of " + m_path + "\n");
    EXPECT_EQ(complaint("point,N,E,h\n1,1,2,3\n1,1,2,3\n"),
              ":3: the point 1 is in the table twice\n");
    EXPECT_EQ(complaint("P,N,E,h\n1,1,2,3\n"),
              ":1: missing in the header: point; it names P, N, E, h\n");
    EXPECT_EQ(complaint("point,N,E\n1,1,2\n"),
              ":1: missing in the header: h; it names point, N, E\n");
}

// The second point is not in the table, the third has no tip.
TEST_F(Occupy, ComparesOnlyPointsThatAreInTheTableAndHaveATip)
{
    Table table = Recorded({"1", "2"});
    Table third = Recorded({"3"});
    StopTime(third);
    table.rows.insert(table.rows.end(), third.rows.begin(), third.rows.end());
    std::string known;
    std::istringstream rows(ReadAll(kTruth));
    for (std::string row; std::getline(rows, row);)
        if (!row.starts_with("2,")) known += row + "\n";
    const std::string truth = m_folder.Write("truth.csv", known);
    const json result = json::parse(Run(table, "--json --truth " + truth).out);
    EXPECT_TRUE(result["points"][0].contains("error"));
    EXPECT_FALSE(result["points"][1].contains("error"));
    EXPECT_FALSE(result["points"][2].contains("error"));
    EXPECT_EQ(result["errors"]["all"]["points"], 1);
    EXPECT_EQ(result["errors"]["means"]["tips"], 2) << "single samples need no occupation";
    const json one = json::parse(Run(Recorded({"1"}), "--json --truth " + truth).out);
    const json both = json::parse(Run(Recorded({"1", "3"}), "--json --truth " + truth).out);
    EXPECT_EQ(result["errors"]["all"], one["errors"]["all"]);
    EXPECT_EQ(result["errors"]["single_samples"], both["errors"]["single_samples"]);

    const Outcome without = Run(table, "--no-magnetometer --truth " + truth);
    EXPECT_THAT(without.out, testing::ContainsRegex("\n  occupation +1 "));
    EXPECT_THAT(without.out, Not(HasSubstr("single samples")));
    EXPECT_THAT(without.out, Not(HasSubstr("mean of a point")));
}

// Without a vote of the magnetometer the tip stays, and what it says shifts with the bias.
TEST_F(Occupy, ComparesTheMagnetometerWithTheTrack)
{
    const Table table = Recorded({"2"});
    const json a = Points(table, "--no-magnetometer --bias 1")[0];
    const json b = Points(table, "--no-magnetometer --bias 11")[0];
    EXPECT_EQ(a["tip_m"], b["tip_m"]);
    EXPECT_NEAR(a["magnetometer_minus_track_deg"].get<double>()
                    - b["magnetometer_minus_track_deg"].get<double>(),
                10.0, 1e-6);
    EXPECT_NE(Points(table, "--bias 11")[0]["tip_m"], b["tip_m"]);
}

TEST_F(Occupy, NeedsNoMagnetometer)
{
    Table table = Recorded({"2"});
    const json with = Points(table, "--no-magnetometer")[0];
    for (const char* name : {"dMag_x", "dMag_y", "dMag_z", "dMag_x_2", "dMag_y_2", "dMag_z_2"})
        table.Remove(name);
    const json without = Points(table, "--no-magnetometer")[0];
    EXPECT_EQ(without["tip_m"], with["tip_m"]);
    EXPECT_TRUE(without["magnetometer_minus_track_deg"].is_null());
    EXPECT_EQ(Run(table).exitCode, 2);
    const std::string out = m_folder.Path("tips.csv");
    const Outcome text = Run(table, "--no-magnetometer --out " + out);
    EXPECT_THAT(text.out, HasSubstr("magnetometer            not used\n"));
    EXPECT_THAT(text.out, testing::ContainsRegex("\n2 .* 316[.]4 +[0-9.]+ +- +[0-9.]+ +-\n"));
    Table tips = TableOf(ReadAll(out));
    EXPECT_EQ(tips.Cell(0, "magnetometer_minus_track_deg"), "");
    EXPECT_NE(tips.Cell(0, "heading_deg"), "");
}

TEST_F(Occupy, CorrectsTheMagnetometerByTheParameterFile)
{
    const std::string log = m_folder.Path("iron.csv");
    const std::string config = m_folder.Path("iron.cfg");
    ASSERT_EQ(RunLine("simulate occupations --seed 5 --points 1 --motion opposite --hard-iron-a "
                      "150,90,40 --out "
                      + log + " --config " + config)
                  .exitCode,
              0);
    const auto difference = [&](const std::string& arguments) {
        return std::fabs(json::parse(RunOn(log, "--json --no-magnetometer " + arguments)
                                         .out)["points"][0]["magnetometer_minus_track_deg"]
                             .get<double>());
    };
    EXPECT_LT(difference("--config " + config), 5.0);
    EXPECT_THAT(RunOn(log, "--config " + config).out,
                HasSubstr("magnetometer            " + config + ", heading bias 0.0000 degrees\n"));
    EXPECT_GT(difference(""), 10.0);
}

TEST_F(Occupy, FindsTheDelayOfTheAntenna)
{
    const std::string simulation = "--seed 3 --points 1 --motion rock --delay 0.06";
    const json found = Simulated(simulation)["points"][0];
    EXPECT_NEAR(found["delay_s"].get<double>(), 0.06, 0.01);
    const json given = Simulated(simulation, "--delay 0.06")["points"][0];
    if (given["delay_s"].is_number()) {
        EXPECT_NEAR(given["delay_s"].get<double>(), 0.06, 0.01);
    }
    EXPECT_LT(std::hypot(given["error"]["n_m"].get<double>(), given["error"]["e_m"].get<double>()),
              0.03);
}

TEST_F(Occupy, TakesThePolesOwnMotionOffWhereItFits)
{
    const json point = Simulated("--seed 3 --points 1 --motion rock")["points"][0];
    EXPECT_NEAR(point["sensor_height_m"].get<double>(), 1.8, 0.2);
    EXPECT_EQ(Simulated("--seed 3 --points 1 --motion rock",
                        "--sensor-height 1.75")["points"][0]["sensor_height_m"],
              1.75);
    EXPECT_TRUE(Points(Recorded({"1"}))[0]["sensor_height_m"].is_null());
}

TEST_F(Occupy, NamesATipThatSlipped)
{
    const json point =
        Simulated("--seed 3 --points 1 --motion opposite --slip 3:0.03:0.03:0")["points"][0];
    EXPECT_EQ(point["advice"], "refuse");
    EXPECT_THAT(point["reason"].get<std::string>(), HasSubstr("the tip moved"));
}

TEST_F(Occupy, ManagesWithoutGyros)
{
    Table table = Recorded({"1"});
    const json with = Points(table, "--gyro-free")[0];
    for (const char* name : {"dGyro_x", "dGyro_y", "dGyro_z", "dAcc_x", "dAcc_y", "dAcc_z"})
        table.Remove(name);
    const json without = Points(table, "--gyro-free")[0];
    EXPECT_TRUE(without["tip_m"]["N"].is_number());
    EXPECT_NEAR(without["tip_m"]["N"].get<double>(), with["tip_m"]["N"].get<double>(), 1e-6);
    EXPECT_TRUE(without["heading_deg"].is_null());

    const std::string out = m_folder.Path("found.csv");
    Simulated("--points 1 --seed 5 --motion hold --duration 8", "--gyro-free --out " + out);
    Table tips = TableOf(ReadAll(out));
    EXPECT_EQ(tips.Cell(0, "heading_deg"), "");
    EXPECT_NE(tips.Cell(0, "lean_deg"), "");
}

TEST_F(Occupy, StatedErrorsWidenTheRegion)
{
    const Table table = Recorded({"1"});
    const auto height = [](const json& point) { return point["height_95_m"].get<double>(); };
    const auto major = [](const json& point) {
        return point["ellipse_95_m"]["major"].get<double>();
    };
    const json usual = Points(table)[0];
    const json noisy = Points(table, "--antenna-sd 0.02,0.05")[0];
    EXPECT_GT(major(noisy), 1.3 * major(usual));
    EXPECT_GT(height(noisy), 1.3 * height(usual));
    const json longer = Points(table, "--pole-sd 0.02")[0];
    const double added = 1.96 * std::sqrt(0.02 * 0.02 - 0.002 * 0.002);
    EXPECT_NEAR(height(longer), std::hypot(height(usual), added), 1e-4);
}

// The true tip is said to be 0.1 m further north and higher.
TEST_F(Occupy, SaysWhereARegionDoesNotHold)
{
    const std::string truth =
        m_folder.Write("truth.csv", "point,N,E,h\n1,238570.825,650146.326,112.879\n");
    const json result = json::parse(Run(Recorded({"1"}), "--json --truth " + truth).out);
    EXPECT_FALSE(result["points"][0]["error"]["in_ellipse"].get<bool>());
    EXPECT_FALSE(result["points"][0]["error"]["in_height_interval"].get<bool>());
    EXPECT_NEAR(result["points"][0]["error"]["n_m"].get<double>(), -0.1, 0.03);
    EXPECT_EQ(result["errors"]["all"]["in_ellipse"], 0);
    EXPECT_EQ(result["errors"]["all"]["in_height_interval"], 0);
}

TEST_F(Occupy, HasAHelpPage)
{
    const auto outcome = RunLine("occupy --help");
    EXPECT_EQ(outcome.exitCode, 0);
    for (const char* text : {"seconds", "--gyro-free", "--truth", "Examples:", "Exit codes:"})
        EXPECT_THAT(outcome.output, HasSubstr(text));
}

} // namespace
