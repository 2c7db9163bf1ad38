// SPDX-License-Identifier: MIT
#include "apps/tables/Csv.h"
#include "positioning/InclineSensor_Position.h"
#include "tests/apps/RunProgram.h"
#include "tests/apps/SampleRows.h"
#include "tests/apps/ScratchFile.h"
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <unistd.h>

namespace {

using apps::test::kLogHeader;
using apps::test::LogRow;
using apps::test::Outcome;
using apps::test::ReadAll;
using apps::test::RunProgram;
using apps::test::ScratchFolder;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kExample = TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv";
constexpr double kLastDigit = 0.51e-6; // half of the last printed digit

Outcome Measure(const std::string& content, std::vector<std::string> more = {})
{
    std::vector<std::string> arguments = {"measure", "-", "--pole", "2"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunProgram(arguments, content);
}

// One number from the rows that a run wrote.
double Value(const std::string& rows, const std::string& column, int row = 0)
{
    const ScratchFolder folder;
    tables::CsvReader reader(folder.Write("rows.csv", rows));
    for (int i = 0; i <= row; ++i)
        EXPECT_TRUE(reader.Next());
    return reader.Number(reader.Require(column));
}

TEST(Measure, APlumbPoleStandsBelowItsAntenna)
{
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "0"));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NEAR(Value(outcome.out, "tip_N_m"), 4500000.25, kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "tip_E_m"), 500000.5, kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "tip_h_m"), 98.0, kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "tilt_deg"), 0.0, kLastDigit);
}

// With roll 10 the pole leans by 10 degrees: 2 m·sin 10° in the plane, 2 m·cos 10° down.
TEST(Measure, ALeaningPoleStepsAsideAndDown)
{
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "10"));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const double north = Value(outcome.out, "tip_N_m") - Value(outcome.out, "antenna_N_m");
    const double east = Value(outcome.out, "tip_E_m") - Value(outcome.out, "antenna_E_m");
    EXPECT_NEAR(std::hypot(north, east), 0.347296355, 3.0 * kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "tip_h_m"), 100.0 - 1.969615506, kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "tilt_deg"), 10.0, kLastDigit);
}

TEST(Measure, ReadsTheAntennaUnderOtherNames)
{
    std::string log = kLogHeader + LogRow("0", "10");
    const Outcome usual = Measure(log);
    log.replace(log.find(",x,y,h"), 6, ",Northing [m],Easting [m],Height [m]");
    const Outcome other = Measure(log);
    EXPECT_EQ(other.out, usual.out) << other.err;
    EXPECT_THAT(other.err, HasSubstr("columns                 N from Northing [m], E from Easting "
                                     "[m], h from Height [m]\n"));
    log.replace(log.find("Northing [m]"), 12, "Northing [mm]");
    EXPECT_EQ(
        Measure(log).err,
        "<stdin>:1: a coordinate is needed in meters, but the column Northing [mm] is in mm\n");
    EXPECT_EQ(Measure(log, {"--columns", "N=Easting [m],E=Time"}).exitCode, 2);
}

TEST(Measure, NamesNoColumnsThatHaveTheirUsualNames)
{
    std::string log = kLogHeader + LogRow("0", "10");
    EXPECT_THAT(Measure(log).err, HasSubstr("\ncolumns "));
    log.replace(log.find(",x,y,h"), 6, ",N,E,h");
    const Outcome outcome = Measure(log);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, Not(HasSubstr("columns ")));
}

TEST(Measure, SubtractsTheBiasFromTheHeading)
{
    const std::string log = kLogHeader + LogRow("0", "10");
    const double plain = Value(Measure(log).out, "heading_A_deg");
    const double biased = Value(Measure(log, {"--bias", "-12.5"}).out, "heading_A_deg");
    EXPECT_NEAR(biased - plain, 12.5, 2.0 * kLastDigit);
    const double other = Value(Measure(log, {"--bias", "-12.5"}).out, "heading_B_deg");
    EXPECT_NEAR(other, Value(Measure(log).out, "heading_B_deg"), kLastDigit);
    const Outcome ofB = Measure(log, {"--bias-b", "-12.5"});
    EXPECT_NEAR(Value(ofB.out, "heading_B_deg") - other, 12.5, 2.0 * kLastDigit);
    EXPECT_NEAR(Value(ofB.out, "heading_A_deg"), plain, kLastDigit);
}

TEST(Measure, FlagsStillAndDisturbedSamples)
{
    std::string disturbed = LogRow("0", "10");
    disturbed.replace(disturbed.find("-400"), 4, "-900");
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "10") + LogRow("0", "10") + disturbed);
    EXPECT_EQ(Value(outcome.out, "still", 0), 0.0) << "nothing came before";
    EXPECT_EQ(Value(outcome.out, "still", 1), 1.0);
    EXPECT_EQ(Value(outcome.out, "interference", 1), 0.0);
    EXPECT_EQ(Value(outcome.out, "interference", 2), 1.0);
    EXPECT_THAT(outcome.err, HasSubstr("magnetic interference   1 samples (33.3 %)"));
}

TEST(Measure, GivesTheSameRowsForEveryDialect)
{
    const std::string plain = kLogHeader + LogRow("1", "10") + LogRow("2", "-3");
    const Outcome expected = Measure(plain);
    ASSERT_EQ(expected.exitCode, 0);
    std::string other = "\xEF\xBB\xBF";
    for (const char c : plain)
        other += c == ',' ? ";" : c == '\n' ? "\r\n\r\n" : std::string(1, c);
    const Outcome outcome = Measure(other);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, expected.out);
}

TEST(Measure, CarriesUnknownColumnsAndTheTimeThrough)
{
    const Outcome outcome =
        Measure("note,tip_N_m," + kLogHeader + "\"a \"\"b\"\"; c, d\",7," + LogRow("0", "0"));
    EXPECT_THAT(outcome.out, StartsWith("note,log_tip_N_m,Time,antenna_N_m,"));
    EXPECT_THAT(outcome.out, HasSubstr("\n\"a \"\"b\"\"; c, d\",7,10:57:07,4500000.250000,"));
}

TEST(Measure, StopsAtABadRowAndLeavesTheOldFile)
{
    const ScratchFolder folder;
    const std::string log =
        folder.Write("log.csv", kLogHeader + LogRow("0", "0") + LogRow("nan", "0"));
    const std::string out = folder.Write("tips.csv", "old");
    const Outcome outcome = RunProgram({"measure", log, "--pole", "2", "--out", out});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, log + ":3: dPitch is 'nan', not a finite number\n");
    EXPECT_EQ(ReadAll(out), "old");
    EXPECT_EQ(folder.Names().size(), 2U);
}

TEST(Measure, SkipsListsAndCountsBadRows)
{
    const std::string tooLarge = "10:57:07,0,0,400,0,0,-400,0,0,1e308,0,0\n";
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "0") + LogRow("x", "0") + "1,2\n"
                                        + tooLarge + LogRow("1", "0"),
                                    {"--skip-bad"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(
        outcome.err,
        AllOf(HasSubstr("<stdin>:3: dPitch is 'x', not a finite number (skipped)\n"),
              HasSubstr("<stdin>:4: 2 fields where the header names 12 columns (skipped)"),
              HasSubstr("<stdin>:5: x is 1e+308, not between -100000000 and 100000000 m (skipped)"),
              HasSubstr("2 measured, 3 rows skipped")));
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 3);
}

TEST(Measure, ListsAHundredSkippedRowsAndCountsTheRest)
{
    std::string log = kLogHeader + LogRow("0", "0");
    for (int i = 0; i < 150; ++i)
        log += "short\n";
    const Outcome outcome = Measure(log, {"--skip-bad"});
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("<stdin>:102: "), Not(HasSubstr("<stdin>:103: ")),
                                   HasSubstr("50 more rows were skipped.\n"),
                                   HasSubstr("1 measured, 150 rows skipped")));
}

TEST(Measure, ALogWithoutSamplesIsANegativeResult)
{
    const Outcome outcome = Measure(kLogHeader);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "<stdin>: no sample could be measured\n");
}

TEST(Measure, RejectsInvalidOptions)
{
    const std::vector<std::string> cases[] = {
        {"--pole",        "0"             },
        {"--pole",        "-1"            },
        {"--pole",        "1e9"           },
        {"--pole",        "nan"           },
        {"--pole",        "2,0"           },
        {"--truth",       "1,2"           },
        {"--truth",       "1,2,x"         },
        {"--bias",        "inf"           },
        {"--plot",        "tips.jpeg"     },
        {"--sensor-type", "1.5"           },
        {"--sensor-type", "one"           },
        {"--config",      "none.cfg"      },
        {"--out",         "/none/tips.csv"},
    };
    for (const auto& options : cases) {
        std::vector<std::string> arguments = {"measure", kExample};
        if (options[0] != "--pole") arguments.insert(arguments.end(), {"--pole", "2"});
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << options[0] << ' ' << options[1];
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(Measure, UsesTheCalibrationOfAParameterFile)
{
    const ScratchFolder folder;
    CInclineSensor_Position calibrated;
    Incline_MagneticCorrectParameter correction;
    correction.y0 = -400.0; // raw (400, 0, 0) becomes (400, 400, 0): a turn of 45 degrees
    calibrated.SetMagneticCorrectPar_A(correction);
    calibrated.SetMagneticBiasAngle_A(5.0);
    ASSERT_EQ(calibrated.ConfigSave(folder.Path("pole.cfg").c_str()), 1);

    const std::string log = kLogHeader + LogRow("0", "0");
    const double heading =
        Value(Measure(log, {"--config", folder.Path("pole.cfg")}).out, "heading_A_deg");
    EXPECT_NEAR(heading, 40.0, kLastDigit);
    const double other = Value(
        Measure(log, {"--config", folder.Path("pole.cfg"), "--bias", "7"}).out, "heading_A_deg");
    EXPECT_NEAR(other, 38.0, kLastDigit) << "--bias replaces the file's";
}

TEST(Measure, APartialParameterFileNeedsAnOption)
{
    const ScratchFolder folder;
    const std::string config = folder.Write("pole.cfg", "[MagneticBiasAngle_A]5\r\n");
    const std::string log = kLogHeader + LogRow("0", "0");
    const Outcome refused = Measure(log, {"--config", config});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.err, HasSubstr("pole.cfg: MagneticA.a is missing; "));
    const Outcome accepted = Measure(log, {"--config", config, "--partial-config"});
    EXPECT_EQ(accepted.exitCode, 0);
    EXPECT_NEAR(Value(accepted.out, "heading_A_deg"), 355.0, kLastDigit);
}

TEST(Measure, TheSensorTypeChoosesTheAxes)
{
    const std::string log = kLogHeader + LogRow("0", "0"); // field along x
    EXPECT_NEAR(Value(Measure(log).out, "heading_A_deg"), 0.0, kLastDigit);
    EXPECT_NEAR(Value(Measure(log, {"--sensor-type", "0"}).out, "heading_A_deg"), 270.0,
                kLastDigit);
}

TEST(Measure, JsonIsTheOnlyThingOnStandardOutput)
{
    const Outcome outcome = Measure(kLogHeader + LogRow("0", "10") + "bad\n",
                                    {"--json", "--skip-bad", "--truth", "4500000,500000,98"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["samples"], 1);
    EXPECT_EQ(json["skipped"]["count"], 1);
    EXPECT_NEAR(json["tilt_deg"]["max"].get<double>(), 10.0, 1e-9);
    EXPECT_NEAR(json["error_height_m"]["p50"].get<double>(), 2.0 - 1.969615506, 1e-8);
}

TEST(Measure, JsonOfAnEmptyLogIsStillJson)
{
    const Outcome outcome = Measure(kLogHeader, {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(nlohmann::json::parse(outcome.out)["samples"], 0);
}

TEST(Measure, RowsGoToTheFileAndJsonToStandardOutput)
{
    const ScratchFolder folder;
    const Outcome outcome =
        Measure(kLogHeader + LogRow("0", "0"), {"--json", "--out", folder.Path("tips.csv")});
    EXPECT_NEAR(Value(ReadAll(folder.Path("tips.csv")), "tip_h_m"), 98.0, kLastDigit);
    EXPECT_TRUE(nlohmann::json::accept(outcome.out));
}

// The recorded pole with the identity and a bias of 0.75 degrees lies about 11, 42 and 102 mm
// off at the median, the 90th and the 99th percentile.
TEST(Measure, FindsTheTipOfTheRecordedPole)
{
    const ScratchFolder folder;
    const Outcome outcome =
        RunProgram({"measure", kExample, "--pole", "2.0", "--bias", "0.75", "--truth",
                    "238540.000,650135.000,112.500", "--json", "--plot", folder.Path("tips.svg")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["samples"], 2071);
    EXPECT_NEAR(json["tilt_deg"]["max"].get<double>(), 35.0, 0.05);
    EXPECT_NEAR(json["error_horizontal_m"]["p50"].get<double>(), 0.011, 0.0006);
    EXPECT_NEAR(json["error_horizontal_m"]["p90"].get<double>(), 0.042, 0.0006);
    EXPECT_NEAR(json["error_horizontal_m"]["p99"].get<double>(), 0.102, 0.0006);
    EXPECT_THAT(ReadAll(folder.Path("tips.svg")), HasSubstr("</svg>"));
}

TEST(Measure, AFullDiskIsAnError)
{
    const Outcome outcome =
        apps::test::RunProgramInto("/dev/full", {"measure", kExample, "--pole", "2"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, "<stdout>: cannot be written: No space left on device\n");
}

TEST(Measure, AClosedPipeIsNotAnError)
{
    const Outcome outcome =
        apps::test::RunProgramIntoClosedPipe({"measure", kExample, "--pole", "2"});
    EXPECT_EQ(outcome.out, "I");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST(Measure, ShowsProgressOnATerminalWhenTheLogIsLong)
{
    int block = 0;
    const auto slowly = [&]() -> std::string {
        if (++block == 1) return kLogHeader + LogRow("0", "0");
        if (block > 12) return {};
        usleep(120'000);
        return LogRow("0", "1");
    };
    const Outcome outcome =
        apps::test::RunProgramOnTerminal({"measure", "-", "--pole", "2"}, slowly);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, HasSubstr(" MB/s"));
    EXPECT_THAT(outcome.err, HasSubstr("\r\x1b[Klog ")) << "wiped before the summary";

    block = 12;
    EXPECT_THAT(RunProgram({"measure", kExample, "--pole", "2"}).err, Not(HasSubstr("MB/s")));
}

// A log of 60 MB needs no more memory than a short one, apart from the exact percentiles and the
// points of the picture, which are bounded.
TEST(Measure, MemoryStaysBoundedOnALongLog)
{
    // An address sanitizer keeps what was freed; that is not the program's memory.
    const char* const options = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", (std::string(options ? options : "") + ":quarantine_size_mb=1").c_str(),
           1);
    constexpr std::size_t kBlocks = 60;
    std::string block;
    while (block.size() < 1'000'000)
        block += LogRow("0.25", "10.5");
    std::size_t sent = 0;
    const auto stream = [&]() -> std::string {
        if (sent == kBlocks) return {};
        return sent++ == 0 ? kLogHeader : block;
    };
    const ScratchFolder folder;
    const std::vector<std::string> arguments = {
        "measure", "-",    "--pole", "2", "--out", "/dev/null", "--plot", folder.Path("tips.png"),
        "--truth", "1,2,3"};
    const Outcome little = RunProgram(arguments, kLogHeader + block);
    const Outcome much = RunProgram(arguments, stream);
    ASSERT_EQ(much.exitCode, 0) << much.err;
    EXPECT_THAT(much.err, HasSubstr("percentiles are accurate to 0.1 %"));
    // KiB: 4 series of 2^18 doubles while they are exact, and what the allocator retains.
    constexpr long kAllowed = 40 * 1024;
    EXPECT_LT(much.peakMemory, little.peakMemory + kAllowed);
}

// A level pole in a field of 500 counts (dip 53.13 degrees, sine 0.8); 6 s of it are 20 % stronger.
std::string LogWithAMagnet()
{
    std::string log = "Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h\n";
    for (int second = 0; second < 30; ++second) {
        const bool near = second >= 10 && second <= 15;
        const char* reading = near ? "360,0,-480,-360,0,-480" : "300,0,-400,-300,0,-400";
        log += "10:00:" + std::string(second < 10 ? "0" : "") + std::to_string(second) + ",0,0,"
               + reading + ",4500000,500000,100\n";
    }
    return log;
}

TEST(Measure, TellsWhenTheFieldWasDisturbedAndHow)
{
    const Outcome outcome = Measure(LogWithAMagnet(), {"--field", "500,53.13"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("10:00:10 to 10:00:15, 20 % too strong\n"));
    EXPECT_THAT(outcome.err, HasSubstr("500 counts, dip 53.1 degrees, median; expected 500, 53.1"));
    EXPECT_EQ(Value(outcome.out, "field_disturbed", 5), 0.0);
    EXPECT_EQ(Value(outcome.out, "field_disturbed", 12), 1.0);
    EXPECT_EQ(Value(outcome.out, "field_disturbed", 20), 0.0);
    EXPECT_NEAR(Value(outcome.out, "field_strength", 12), 600.0, kLastDigit);
    EXPECT_NEAR(Value(outcome.out, "field_dip_deg", 12), 53.130102, kLastDigit);
}

// The column `seconds` begins anywhere, the time of day says when.
TEST(Measure, TellsTheTimeOfDayWhereSecondsHaveAColumnOfTheirOwn)
{
    std::string log;
    int second = -1;
    std::istringstream lines(LogWithAMagnet());
    for (std::string line; std::getline(lines, line); ++second)
        log += line + (second < 0 ? ",seconds" : "," + std::to_string(500 + second)) + '\n';
    const Outcome outcome = Measure(log, {"--field", "500,53.13"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("10:00:10 to 10:00:15, 20 % too strong\n"));
}

// The rows of a log, each without what is before its first comma and with `more` behind it.
std::string WithoutTime(const std::string& log, const std::function<std::string(int)>& more)
{
    std::string text;
    int row = -1;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line); ++row)
        text += line.substr(line.find(',') + 1) + more(row) + '\n';
    return text;
}

TEST(Measure, TellsSecondsOrSamplesOfADisturbanceWhereThereIsNoTimeOfDay)
{
    const auto seconds = [](int row) {
        return row < 0 ? std::string(",seconds") : ',' + std::to_string(500 + row);
    };
    const std::vector<std::string> options = {"--field", "500,53.13"};
    EXPECT_THAT(Measure(WithoutTime(LogWithAMagnet(), seconds), options).err,
                HasSubstr("510.0 s to 515.0 s, 20 % too strong\n"));
    const auto nothing = [](int) { return std::string(); };
    EXPECT_THAT(Measure(WithoutTime(LogWithAMagnet(), nothing), options).err,
                HasSubstr("sample 11 to sample 16, 20 % too strong\n"));
}

TEST(Measure, TakesTheTimeOfDayWhereSecondsAreBlank)
{
    std::string log;
    std::istringstream lines(LogWithAMagnet());
    for (std::string line; std::getline(lines, line);)
        log += line + (log.empty() ? ",seconds\n" : ",\n");
    EXPECT_THAT(Measure(log, {"--field", "500,53.13"}).err,
                HasSubstr("10:00:10 to 10:00:15, 20 % too strong\n"));
}

TEST(Measure, ListsTenDisturbancesAndCountsTheRest)
{
    std::string log =
        "dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h,seconds\n";
    for (int second = 0; second < 12 * 40; ++second) {
        const char* reading =
            second % 40 >= 30 ? "360,0,-480,-360,0,-480" : "300,0,-400,-300,0,-400";
        log +=
            "0,0," + std::string(reading) + ",4500000,500000,100," + std::to_string(second) + '\n';
    }
    const Outcome outcome = Measure(log, {"--field", "500,53.13"});
    EXPECT_THAT(outcome.err, HasSubstr("390.0 s to 399.0 s, "));
    EXPECT_THAT(outcome.err, Not(HasSubstr("430.0 s to ")));
    EXPECT_THAT(outcome.err, HasSubstr(" and 2 more\n"));
}

TEST(Measure, DrawsNothingAndTellsNoFieldWithoutASample)
{
    const ScratchFolder folder;
    const Outcome outcome =
        Measure(kLogHeader, {"--plot", folder.Path("none.png"), "--field", "500,53.13", "--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(nlohmann::json::parse(outcome.out).count("field"), 0U);
    EXPECT_TRUE(folder.Names().empty());
}

TEST(Measure, RenamesCarriedColumnsThatHaveTheNameOfOneOfItsOwn)
{
    std::string log =
        kLogHeader.substr(0, kLogHeader.size() - 1) + ",tilt_deg,error_N_m,field_strength,note\n";
    const std::string row = LogRow("0", "10");
    log += row.substr(0, row.size() - 1) + ",1,2,3,4\n";
    const std::string out = Measure(log).out;
    EXPECT_THAT(out.substr(0, out.find('\n')),
                HasSubstr("log_tilt_deg,log_error_N_m,log_field_strength,note"));
}

TEST(Measure, TellsOfALongLogThatItsPercentilesAreRounded)
{
    std::string log = kLogHeader;
    const std::string row = LogRow("0.25", "10.5");
    for (int i = 0; i <= 1 << 18; ++i)
        log += row;
    EXPECT_EQ(nlohmann::json::parse(Measure(log, {"--json"}).out)["percentiles"], "within 0.1 %");
    EXPECT_EQ(nlohmann::json::parse(Measure(kLogHeader + row, {"--json"}).out)["percentiles"],
              "exact");
}

TEST(Measure, ListsDisturbedSpansAsJson)
{
    const Outcome outcome = Measure(LogWithAMagnet(), {"--field", "500,53.13", "--json"});
    const auto field = nlohmann::json::parse(outcome.out)["field"];
    ASSERT_EQ(field["spans"].size(), 1U);
    EXPECT_EQ(field["spans"][0]["from"], "10:00:10");
    EXPECT_EQ(field["spans"][0]["reason"], "20 % too strong");
    EXPECT_EQ(nlohmann::json::parse(Measure(LogWithAMagnet(), {"--json"}).out).count("field"), 0U);
}

// Slopes of 60 degrees both ways are those of no pole: which way is down is not known.
TEST(Measure, TellsNoDipWhereNoPoleHasThisPitchAndRoll)
{
    const std::vector<std::string> field = {"--field", "400,0"};
    const Outcome alone = Measure(kLogHeader + LogRow("60", "60"), field);
    ASSERT_EQ(alone.exitCode, 0) << alone.err;
    EXPECT_THAT(alone.err, HasSubstr("400 counts, dip not known, median; expected 400, 0.0\n"));
    EXPECT_THAT(alone.out, EndsWith(",400.000000,,0\n"));
    const Outcome both = Measure(kLogHeader + LogRow("60", "60") + LogRow("0", "0"), field);
    EXPECT_THAT(both.err, HasSubstr("0.0 degrees, median; expected 400, 0.0\n"));
    EXPECT_NEAR(Value(both.out, "field_dip_deg", 1), 0.0, kLastDigit);
}

TEST(Measure, RefusesAFieldThatCannotBe)
{
    for (const char* field : {"500", "0,60", "-5,60", "500,91", "500,60,1", "strong,60"}) {
        const Outcome outcome = Measure(LogWithAMagnet(), {"--field", field});
        EXPECT_EQ(outcome.exitCode, 2) << field;
        EXPECT_THAT(outcome.err, HasSubstr("--field")) << field;
    }
}

} // namespace
