// SPDX-License-Identifier: MIT
//
// tiltpole calibrate --on-the-spot, and tiltpole occupy with what it found.
#include "apps/cli/SpotSidecar.h"
#include "apps/tables/Errors.h"
#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"
#include "tests/apps/cli/occupy/OccupyRuns.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using apps::test::RunLine;
using apps::test::RunProgram;
using apps::test::ScratchFolder;
using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class OnTheSpot : public testing::Test
{
protected:
    // A log of the motion `free` of one seed, whose sensor has the same errors in every log.
    std::string Rocked(const std::string& options = {}) const
    {
        Simulate("--motion free --points 1 " + options, "rocked.csv");
        return m_folder.Path("rocked.csv");
    }
    void Simulate(const std::string& options, const std::string& name, int seed = 12) const
    {
        const auto done =
            RunLine("simulate occupations --seed " + std::to_string(seed) + " " + options
                    + " --out " + m_folder.Path(name) + " --truth " + m_folder.Path("tips.csv")
                    + " --scene " + m_folder.Path("scene.json"));
        ASSERT_EQ(done.exitCode, 0) << done.output;
    }
    apps::test::Outcome Calibrate(const std::string& log, const std::string& options = {}) const
    {
        std::vector<std::string> arguments{"calibrate", "--on-the-spot", log, "--pole", "2"};
        std::istringstream words(options);
        for (std::string word; words >> word;)
            arguments.push_back(word);
        return RunProgram(arguments);
    }
    std::string Out() const { return " --out " + m_folder.Path("pole.cfg"); }
    std::string Sidecar() const { return m_folder.Path("pole.cfg.spot.json"); }
    void ExpectNothingWritten() const
    {
        for (const std::string& name : m_folder.Names())
            EXPECT_FALSE(name.starts_with("pole.cfg")) << name;
    }

    ScratchFolder m_folder;
};

TEST_F(OnTheSpot, WritesParameterFileRecordAndSidecar)
{
    const auto done = Calibrate(Rocked(), Out());
    ASSERT_EQ(done.exitCode, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("calibration             usable\n"));
    const json record = json::parse(m_folder.Read("pole.cfg.json"));
    const json sidecar = json::parse(m_folder.Read("pole.cfg.spot.json"));
    EXPECT_EQ(record["method"], "spot");
    EXPECT_EQ(record["bias_given_a_deg"], 0.0);
    const json& a = sidecar["values"]["magnetometer_a"];
    EXPECT_NEAR(record["bias_found_a_deg"].get<double>(), a["bias_found_deg"].get<double>(), 1e-9);
    EXPECT_NEAR(record["calibration"]["magnetometer_a"]["x0"].get<double>(),
                a["correction"]["x0"].get<double>(), 1e-9);
    EXPECT_THAT(m_folder.Read("pole.cfg"), HasSubstr("MagneticBiasAngle_A"));
}

TEST_F(OnTheSpot, SaysHowWellItKnowsTheIron)
{
    const std::string log = Rocked();
    const std::string text = Calibrate(log).out;
    const json values = json::parse(Calibrate(log, "--json").out)["values"];
    for (const char* name : {"magnetometer_a", "magnetometer_b"}) {
        const json& m = values[name];
        EXPECT_THAT(text,
                    HasSubstr(fmt::format("soft iron to {:.4f}; readings fit to {:.1f} counts\n",
                                          m["soft_iron_sd"].get<double>(),
                                          m["residual_counts"].get<double>())));
    }
}

TEST_F(OnTheSpot, FindsWhatTheSceneSays)
{
    const json found = json::parse(Calibrate(Rocked(), "--json").out)["values"];
    const json truth = json::parse(m_folder.Read("scene.json"));
    const json& errors = truth["points"][0];
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found["magnetometer_a"]["hard_iron_counts"]["value"][i].get<double>(),
                    errors["hard_iron_a_counts"][i].get<double>(), 3.0);
        EXPECT_NEAR(found["accelerometer_bias_g"]["value"][i].get<double>(),
                    errors["acceleration_bias_g"][i].get<double>(), 0.0015);
    }
}

TEST_F(OnTheSpot, WritesNothingWhereItCannotBeUsed)
{
    const auto done = Calibrate(Rocked("--turn 90"), Out());
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.out,
                HasSubstr("not usable: turn the pole about its axis: it was turned by 9"));
    EXPECT_THAT(done.err,
                HasSubstr("pole.cfg: not written, because the calibration cannot be used"));
    ExpectNothingWritten();
}

TEST_F(OnTheSpot, ReplacesNoFileThatIsNotItsOwn)
{
    const std::string log = Rocked();
    for (const char* name : {"pole.cfg.json", "pole.cfg.spot.json"}) {
        const std::string mine = m_folder.Write(name, "{\"format\": \"mine\"}\n");
        const auto done = Calibrate(log, Out());
        EXPECT_EQ(done.exitCode, 2) << name;
        EXPECT_EQ(done.out, "") << name;
        EXPECT_THAT(done.err, HasSubstr(mine + ": is where the ")) << name;
        EXPECT_EQ(m_folder.Read(name), "{\"format\": \"mine\"}\n");
        std::filesystem::remove(mine);
        ExpectNothingWritten();
    }
    std::filesystem::create_directory(Sidecar());
    EXPECT_EQ(Calibrate(log, Out()).exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("pole.cfg")));
    std::filesystem::remove(Sidecar());
    EXPECT_EQ(Calibrate(log, Out()).exitCode, 0);
    EXPECT_EQ(Calibrate(log, Out()).exitCode, 0) << "its own files";
}

TEST_F(OnTheSpot, RefusesInputThatItCannotUse)
{
    const std::string log = Rocked();
    const std::string on = "calibrate --on-the-spot " + log;
    const std::pair<std::string, std::string> cases[] = {
        {on + Out(),                                         "--pole is required"              },
        {on + " --pole 2 --bias 1",                          "leave out --bias"                },
        {on + " --pole 2 --bias 1 --method joint",           "leave out --method, --bias"      },
        {"calibrate --pole 2 --horizontal a --vertical b",   "--pole belongs to --on-the-spot" },
        {"calibrate --on-the-spot no.csv --pole 2",          "no.csv"                          },
        {on + " --pole 2 --out " + log,                      "rocked.csv"                      },
        {"occupy " + log + " --pole 2 --calibration " + log, "is not a calibration on the spot"},
    };
    for (const auto& [line, expected] : cases) {
        const auto done = RunLine(line);
        EXPECT_EQ(done.exitCode, 2) << line;
        EXPECT_THAT(done.output, HasSubstr(expected)) << line;
    }
    Simulate("--motion free --points 2 --duration 11", "two.csv");
    const auto two = Calibrate(m_folder.Path("two.csv"), Out());
    EXPECT_EQ(two.exitCode, 2);
    EXPECT_THAT(two.err, HasSubstr("has more than one point"));
    ExpectNothingWritten();
}

using occupy::test::Table;

TEST_F(OnTheSpot, NeedsTheTimeButNoNames)
{
    const std::string log = Rocked();
    Table table = occupy::test::TableOf(m_folder.Read("rocked.csv"));
    table.Remove("point");
    const std::string unnamed = m_folder.Write("unnamed.csv", table.Text());
    EXPECT_EQ(json::parse(Calibrate(unnamed, "--json").out)["values"],
              json::parse(Calibrate(log, "--json").out)["values"]);
    table.Remove("seconds");
    const auto timeless = Calibrate(m_folder.Write("timeless.csv", table.Text()), Out());
    EXPECT_EQ(timeless.exitCode, 2);
    EXPECT_THAT(timeless.err, HasSubstr("timeless.csv:1: missing in the header: seconds;"));
    ExpectNothingWritten();
}

void Scale(Table& table, const std::vector<std::string>& columns, double factor)
{
    for (const std::string& name : columns)
        for (std::size_t i = 0; i < table.rows.size(); ++i)
            if (std::string& cell = table.Cell(i, name); !cell.empty())
                cell = fmt::format("{}", factor * std::stod(cell));
}

void Exchange(Table& table, const std::string& a, const std::string& b)
{
    std::swap(table.header[table.Column(a)], table.header[table.Column(b)]);
}

void Blank(Table& table, const std::vector<std::string>& columns)
{
    for (const std::string& name : columns)
        table.Set(name, "");
}

TEST_F(OnTheSpot, NamesWhatIsWrongWithALog)
{
    struct Mistake
    {
        const char* what;
        std::function<void(Table&)> make;
        const char* says;
    };
    constexpr const char* kContradiction =
        "sensors and antenna contradict each other: check axes, signs, units and times";
    // clang-format off
    const Mistake mistakes[] = {
        {"rates in rad/s",   [](Table& t) { Scale(t, {"dGyro_x", "dGyro_y", "dGyro_z"}, std::acos(-1.0) / 180.0); }, kContradiction},
        {"a reversed rate",  [](Table& t) { Scale(t, {"dGyro_z"}, -1.0); },         kContradiction},
        {"exchanged rates",  [](Table& t) { Exchange(t, "dGyro_x", "dGyro_y"); },   kContradiction},
        {"a reversed force", [](Table& t) { Scale(t, {"dAcc_x"}, -1.0); },          kContradiction},
        {"weight, not force", [](Table& t) { Scale(t, {"dAcc_x", "dAcc_y", "dAcc_z"}, -1.0); }, kContradiction},
        {"N and E exchanged", [](Table& t) { Exchange(t, "x", "y"); },              kContradiction},
        {"forces in m/s²",   [](Table& t) { Scale(t, {"dAcc_x", "dAcc_y", "dAcc_z"}, 9.80665); }, kContradiction},
        {"a still antenna",  [](Table& t) { for (const char* name : {"x", "y", "h"}) for (auto& row : t.rows) if (!row[t.Column(name)].empty()) row[t.Column(name)] = t.rows[0][t.Column(name)]; }, kContradiction},
        {"no antenna",       [](Table& t) { Blank(t, {"x", "y", "h"}); },           "there are no antenna positions"},
        {"three seconds",    [](Table& t) { t.rows.erase(t.rows.begin() + 400, t.rows.begin() + 550); },
         "the inertial samples pause for too long: begin again"},
        {"rows backwards",   [](Table& t) { std::reverse(t.rows.begin(), t.rows.end()); },
         "the time of samples or antenna positions runs back or repeats"},
        {"rows twice",       [](Table& t) { const auto rows = t.rows; t.rows.clear(); for (const auto& row : rows) t.rows.insert(t.rows.end(), 2, row); },
         "the time of samples or antenna positions runs back or repeats"},
        {"one row",          [](Table& t) { t.rows.resize(1); },                    "go on: rock the pole and turn it about its axis for 20 s"},
        {"no row",           [](Table& t) { t.rows.clear(); },                      "there are no inertial samples"},
    };
    // clang-format on
    Rocked();
    const Table right = occupy::test::TableOf(m_folder.Read("rocked.csv"));
    for (const Mistake& mistake : mistakes) {
        Table table = right;
        mistake.make(table);
        const auto done = Calibrate(m_folder.Write("bad.csv", table.Text()), Out());
        EXPECT_EQ(done.exitCode, 1) << mistake.what;
        EXPECT_THAT(done.out, HasSubstr(std::string("not usable: ") + mistake.says + "\n"))
            << mistake.what;
        EXPECT_THAT(done.err,
                    HasSubstr("pole.cfg: not written, because the calibration cannot be used"))
            << mistake.what;
        ExpectNothingWritten();
    }
}

TEST_F(OnTheSpot, WritesNothingFromADeadMagnetometer)
{
    Rocked();
    const Table right = occupy::test::TableOf(m_folder.Read("rocked.csv"));
    struct Case
    {
        const char* reading;
        const char* says;
    };
    constexpr Case cases[] = {
        {"0",   "not usable: magnetometer A reads 0 throughout: "                    },
        {"300", "not usable: magnetometer A does not follow the pole: an axis of it "},
    };
    for (const auto& [reading, says] : cases) {
        Table table = right;
        for (const char* name : {"dMag_x", "dMag_y", "dMag_z", "dMag_x_2", "dMag_y_2", "dMag_z_2"})
            table.Set(name, reading);
        const auto done = Calibrate(m_folder.Write("bad.csv", table.Text()), Out());
        EXPECT_EQ(done.exitCode, 1) << reading;
        EXPECT_THAT(done.out, HasSubstr(says)) << reading;
        EXPECT_THAT(done.err,
                    HasSubstr("pole.cfg: not written, because the calibration cannot be used"));
        ExpectNothingWritten();
    }
}

TEST_F(OnTheSpot, LeavesOutRatesThatNoPoleHas)
{
    Rocked();
    Table table = occupy::test::TableOf(m_folder.Read("rocked.csv"));
    for (const std::size_t row : {98U, 198U, 298U})
        table.Cell(row, "dGyro_y") = "100000";
    const auto done = Calibrate(m_folder.Write("spikes.csv", table.Text()), Out());
    EXPECT_EQ(done.exitCode, 0) << done.out;
    EXPECT_THAT(done.err, HasSubstr("spikes.csv: 3 of 1000 rows have rates that no pole has, the "
                                    "first in line 100 (100000 degrees/s); left out\n"));
}

TEST_F(OnTheSpot, MakesOccupationsBetter)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    Simulate("--lean-to 30 --points 6", "leaned.csv");
    const std::string occupy =
        "occupy " + m_folder.Path("leaned.csv") + " --pole 2 --truth " + m_folder.Path("tips.csv");
    const auto errorOf = [](const std::string& line) {
        return json::parse(RunLine(line + " --json").output)["errors"]["all"]["horizontal_m"]["max"]
            .get<double>();
    };
    const double before = errorOf(occupy);
    const double after = errorOf(occupy + " --calibration " + Sidecar());
    EXPECT_LT(after, 0.012);
    EXPECT_LT(after, before);
    const auto text = RunLine(occupy + " --calibration " + Sidecar()).output;
    EXPECT_THAT(text, HasSubstr("ago)\n"));
    EXPECT_THAT(text, HasSubstr("at N 4500000.0"));
}

TEST_F(OnTheSpot, IsRefusedInAnotherField)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    const auto refused = [this](const std::string& field) {
        Simulate("--points 1 " + field, "elsewhere.csv");
        return RunLine("occupy " + m_folder.Path("elsewhere.csv") + " --pole 2 --calibration "
                       + Sidecar());
    };
    const auto weaker = refused("--strength 480");
    EXPECT_EQ(weaker.exitCode, 1);
    EXPECT_THAT(weaker.output, HasSubstr("% weaker than at the calibration"));
    const auto stronger = refused("--strength 590");
    EXPECT_EQ(stronger.exitCode, 1);
    EXPECT_THAT(stronger.output, HasSubstr("% stronger than at the calibration"));
    const auto steeper = refused("--dip 72");
    EXPECT_EQ(steeper.exitCode, 1);
    EXPECT_THAT(steeper.output, HasSubstr("degrees steeper than at the calibration"));
    const auto flatter = refused("--dip 60");
    EXPECT_EQ(flatter.exitCode, 1);
    EXPECT_THAT(flatter.output, HasSubstr("degrees flatter than at the calibration"));
    EXPECT_EQ(RunLine("occupy " + m_folder.Path("elsewhere.csv")
                      + " --pole 2 --no-magnetometer --calibration " + Sidecar())
                  .exitCode,
              0);
}

TEST_F(OnTheSpot, IsNotRefusedWhereNoMagnetometerShowsAField)
{
    const std::string log = Rocked();
    ASSERT_EQ(Calibrate(log, Out()).exitCode, 0);
    Table dead = occupy::test::TableOf(m_folder.Read("rocked.csv"));
    for (const char* name : {"dMag_x", "dMag_y", "dMag_z", "dMag_x_2", "dMag_y_2", "dMag_z_2"})
        dead.Set(name, "0");
    const std::string rest = " --pole 2 --json --calibration " + Sidecar();
    const auto done = RunLine("occupy " + m_folder.Write("dead.csv", dead.Text()) + rest);
    EXPECT_EQ(done.exitCode, 0) << done.output;
    const json result = json::parse(done.output);
    EXPECT_TRUE(result["points"][0]["magnetometer_minus_track_deg"].is_null());
    EXPECT_EQ(result["points"][0]["disturbed"]["part"], 0.0);

    // One that was not found has no field to watch for.
    json sidecar = json::parse(m_folder.Read("pole.cfg.spot.json"));
    sidecar["values"]["magnetometer_a"] = nullptr;
    m_folder.Write("pole.cfg.spot.json", sidecar.dump());
    const json unwatched = json::parse(RunLine("occupy " + log + rest).output);
    EXPECT_TRUE(unwatched["field"].is_null());
}

TEST_F(OnTheSpot, IsToldInTheTextOfAnOccupation)
{
    const std::string log = Rocked();
    ASSERT_EQ(Calibrate(log, Out()).exitCode, 0);
    json sidecar = json::parse(m_folder.Read("pole.cfg.spot.json"));
    sidecar["made_utc"] = "9999-01-01T00:00:00Z";
    sidecar["values"]["delay_s"] = 0.025;
    m_folder.Write("pole.cfg.spot.json", sidecar.dump());
    const std::string occupy = "occupy " + log + " --pole 2 --calibration " + Sidecar();
    const std::string text = RunLine(occupy).output;
    EXPECT_THAT(text,
                HasSubstr("calibration             " + Sidecar() + ", made 9999-01-01T00:00:00Z\n"))
        << "no age of what is yet to come";
    EXPECT_THAT(text, HasSubstr("antenna 25.0 ms behind the sensors\n"));
    EXPECT_THAT(RunLine(occupy + " --delay 0.02").output,
                testing::Not(HasSubstr("behind the sensors\n")))
        << "the given one takes its place";
}

// The filter takes accelerations for gravity: of a pole that is rocked hard about a wide lean the dip by
// its pitch and roll is off by 4 to 6 degrees.
TEST_F(OnTheSpot, IsTheSameFieldWhereThePoleIsRockedHard)
{
    for (const int seed : {3, 7}) {
        Simulate("--points 1 --motion free", "rocked.csv", seed);
        ASSERT_EQ(Calibrate(m_folder.Path("rocked.csv"), Out()).exitCode, 0);
        for (const std::string motion : {"--frequency 1.2 --amplitude 10 --lean-from 35",
                                         "--frequency 1 --amplitude 15 --lean-from 30"}) {
            Simulate("--points 1 --motion rock " + motion, "hard.csv", seed);
            const auto done = RunLine("occupy " + m_folder.Path("hard.csv")
                                      + " --pole 2 --calibration " + Sidecar());
            EXPECT_EQ(done.exitCode, 0) << seed << motion << done.output;
        }
        Simulate("--points 1 --motion rock --amplitude 10 --lean-from 35 --dip 60", "flat.csv",
                 seed);
        const auto flat =
            RunLine("occupy " + m_folder.Path("flat.csv") + " --pole 2 --calibration " + Sidecar());
        EXPECT_THAT(flat.output, HasSubstr("degrees flatter than at the calibration")) << seed;
    }
}

TEST_F(OnTheSpot, ItsFieldMarksAMagnetOfOnePoint)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    Simulate("--points 1 --motion hold --magnet 3:100:150:60", "magnet.csv");
    const json result = json::parse(RunLine("occupy " + m_folder.Path("magnet.csv")
                                            + " --pole 2 --json --calibration " + Sidecar())
                                        .output);
    EXPECT_NEAR(result["field"]["expected_strength"].get<double>(), 534.0, 10.0);
    EXPECT_NEAR(result["points"][0]["disturbed"]["part"].get<double>(), 0.4, 0.1);
}

// Each of them would move a tip or hide that it is moved.
TEST_F(OnTheSpot, ASidecarWithAValueThatCannotBeIsRefused)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    const json whole = json::parse(m_folder.Read("pole.cfg.spot.json"));
    struct Damage
    {
        const char* place;
        double value;
        const char* reason;
    };
    constexpr Damage kDamages[] = {
        {"/sensor_type",                           1.5,  "sensor_type is not an integer"        },
        {"/pole_m",                                -2.0, "pole_m is -2, not between 0.01 and"   },
        {"/values/axis_sd_deg",                    -0.1, "values.axis_sd_deg is -0.1, not"      },
        {"/values/axis_x_deg",                     200,  "values.axis_x_deg is 200, not between"},
        {"/values/delay_s",                        1e6,  "values.delay_s is 1000000, not"       },
        {"/values/gyro_bias_dps/sd/1",             -1,   "values.gyro_bias_dps.sd is -1, not"   },
        {"/values/magnetometer_a/correction/b",    -1,   "correction.b is -1, not between 0.1"  },
        {"/values/magnetometer_a/correction/a",    9,    "correction.a is 9, not between -5"    },
        {"/values/magnetometer_b/bias_found_deg",  3600, "bias_found_deg is 3600, not between"  },
        {"/values/magnetometer_a/strength_counts", -1,   "strength_counts is -1, not between 0" },
    };
    for (const Damage& damage : kDamages) {
        json damaged = whole;
        damaged[json::json_pointer(damage.place)] = damage.value;
        m_folder.Write("pole.cfg.spot.json", damaged.dump());
        const auto done = RunLine("occupy " + m_folder.Path("rocked.csv")
                                  + " --pole 2 --calibration " + Sidecar());
        EXPECT_EQ(done.exitCode, 2) << damage.place;
        EXPECT_THAT(done.output, HasSubstr(damage.reason));
    }
}

TEST_F(OnTheSpot, ASidecarThatLacksAMemberOrHasAnotherKindOfItIsRefused)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    const json whole = json::parse(m_folder.Read("pole.cfg.spot.json"));
    struct Damage
    {
        const char* place;
        json value; // null: without the member
        const char* reason;
    };
    const std::string foreign = "is not a calibration on the spot (it ends in .spot.json)";
    const std::string version = "is not of version 1, which this program reads";
    const Damage damages[] = {
        {"/format",                              nullptr,       foreign.c_str()                         },
        {"/format",                              "mine",        foreign.c_str()                         },
        {"/version",                             nullptr,       version.c_str()                         },
        {"/version",                             99,            version.c_str()                         },
        {"/verdict",                             nullptr,       "is a calibration that cannot be used"  },
        {"/verdict",                             "not usable",  "is a calibration that cannot be used"  },
        {"/pole_m",                              nullptr,       "pole_m is not a number"                },
        {"/pole_m",                              "2",           "pole_m is not a number"                },
        {"/sensor_type",                         nullptr,       "sensor_type is not an integer"         },
        {"/sensor_type",                         3000000000,    "sensor_type is not an integer"         },
        {"/values",                              nullptr,       "values is not an object"               },
        {"/values",                              json::array(), "values is not an object"               },
        {"/values/place_m/E",                    nullptr,       "values.place_m.E is not a number"      },
        {"/values/gyro_bias_dps",                1.5,           "values.gyro_bias_dps is not an object" },
        {"/values/gyro_bias_dps/value",          nullptr,       "gyro_bias_dps.value is not three numb" },
        {"/values/gyro_bias_dps/value",          2,             "gyro_bias_dps.value is not three numb" },
        {"/values/gyro_bias_dps/value",          {1, 2},        "gyro_bias_dps.value is not three numb" },
        {"/values/gyro_bias_dps/value",          {"1", 2, 3},   "gyro_bias_dps.value is not three numb" },
        {"/values/gyro_bias_dps/value",          {1, "2", 3},   "gyro_bias_dps.value is not three numb" },
        {"/values/gyro_bias_dps/value",          {1, 2, "3"},   "gyro_bias_dps.value is not three numb" },
        {"/values/magnetometer_a",               nullptr,       "values.magnetometer_a is not an object"},
        {"/values/magnetometer_b/correction/x0", nullptr,       "magnetometer_b.correction.x0 is not a" },
    };
    for (const Damage& damage : damages) {
        json damaged = whole;
        const json::json_pointer place(damage.place);
        if (damage.value.is_null())
            damaged[place.parent_pointer()].erase(place.back());
        else
            damaged[place] = damage.value;
        m_folder.Write("pole.cfg.spot.json", damaged.dump());
        try {
            cli::ReadSpotSidecar(Sidecar());
            ADD_FAILURE() << damage.place << ' ' << damage.value << " is taken";
        } catch (const tables::InputError& error) {
            EXPECT_THAT(error.what(), StartsWith(Sidecar() + ": ")) << damage.place;
            EXPECT_THAT(error.what(), HasSubstr(damage.reason)) << damage.place;
        }
    }
}

TEST_F(OnTheSpot, ASidecarMayLackAMagnetometer)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    json sidecar = json::parse(m_folder.Read("pole.cfg.spot.json"));
    sidecar["values"]["magnetometer_b"] = nullptr;
    m_folder.Write("pole.cfg.spot.json", sidecar.dump());
    const cli::SpotSidecar read = cli::ReadSpotSidecar(Sidecar());
    EXPECT_TRUE(read.result.a.found);
    EXPECT_FALSE(read.result.b.found);
    sidecar["made_utc"] = 2026;
    m_folder.Write("pole.cfg.spot.json", sidecar.dump());
    EXPECT_EQ(cli::ReadSpotSidecar(Sidecar()).madeUtc, "");
}

// The time so many seconds ago, as a sidecar has it.
std::string UtcBefore(std::chrono::seconds age)
{
    const auto then = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() - age);
    std::tm utc{};
    ::gmtime_r(&then, &utc);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", utc.tm_year + 1900, utc.tm_mon + 1,
                       utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
}

TEST(SpotSidecar, IsAsOldAsItsTimeSays)
{
    using namespace std::chrono_literals;
    const auto ageOf = [](const std::string& madeUtc) {
        cli::SpotSidecar sidecar;
        sidecar.madeUtc = madeUtc;
        return cli::AgeOf(sidecar);
    };
    EXPECT_EQ(ageOf(cli::NowUtc()), "0 min");
    EXPECT_EQ(ageOf(UtcBefore(59min + 30s)), "59 min");
    EXPECT_EQ(ageOf(UtcBefore(1h + 1s)), "1 h");
    EXPECT_EQ(ageOf(UtcBefore(47h + 59min)), "47 h");
    EXPECT_EQ(ageOf(UtcBefore(48h + 1s)), "2 days");
    EXPECT_EQ(ageOf(UtcBefore(24h * 400 + 1min)), "400 days");
    EXPECT_EQ(ageOf(UtcBefore(-1h)), "") << "in the future";
    EXPECT_EQ(ageOf(""), "");
    EXPECT_EQ(ageOf("yesterday"), "");
    EXPECT_EQ(ageOf("2026-02-30T10:00:00Z"), "") << "no day of the calendar";
}

TEST_F(OnTheSpot, IsRefusedForAnotherSensorType)
{
    ASSERT_EQ(Calibrate(Rocked(), Out()).exitCode, 0);
    const auto done =
        RunLine("occupy " + Rocked() + " --pole 2 --sensor-type 2 --calibration " + Sidecar());
    EXPECT_EQ(done.exitCode, 2);
    EXPECT_THAT(done.output, HasSubstr("is of a sensor of type 1"));
}

} // namespace
