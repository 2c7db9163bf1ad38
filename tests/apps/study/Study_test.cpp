// SPDX-License-Identifier: MIT
//
// The study program: one calibration under each condition.
#include "simulation/trials/Conditions.h"
#include "simulation/trials/OccupationCases.h"

#include "tests/apps/RunProgram.h"
#include "tests/apps/ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using apps::test::Outcome;
using apps::test::RunProgram;

// A line of the table of conditions: its name, and the figures behind it.
struct Row
{
    std::string name;
    std::vector<double> figures;

    // Shares that were called good, usable, unchecked, poor and refused [percent].
    double Called() const
    {
        return figures[6] + figures[7] + figures[8] + figures[9] + figures[10];
    }
};

std::vector<Row> FirstTable(const std::string& text)
{
    constexpr std::size_t kNameWidth = 24;
    std::istringstream lines(text);
    std::vector<Row> rows;
    std::string line;
    while (std::getline(lines, line) && !line.starts_with("condition"))
        ;
    while (std::getline(lines, line) && !line.empty()) {
        Row row;
        row.name = line.substr(0, kNameWidth);
        row.name.erase(row.name.find_last_not_of(' ') + 1);
        std::istringstream figures(line.substr(kNameWidth));
        for (double figure = 0.0; figures >> figure;)
            row.figures.push_back(figure);
        rows.push_back(row);
    }
    return rows;
}

TEST(Study, GivesEachConditionARowAndEachCalibrationAVerdict)
{
    const Outcome outcome = RunProgram({"--runs", "1", "--seed", "3"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Row> rows = FirstTable(outcome.out);
    const std::vector<study::Condition> conditions = study::Conditions();
    ASSERT_EQ(rows.size(), conditions.size() + 1);
    for (std::size_t k = 0; k < conditions.size(); ++k) {
        EXPECT_EQ(rows[k].name, conditions[k].name);
        ASSERT_EQ(rows[k].figures.size(), 14U) << rows[k].name;
        EXPECT_EQ(rows[k].Called(), 100.0) << rows[k].name;
    }
    EXPECT_EQ(rows.back().name, "all");
    EXPECT_NEAR(rows.back().Called(), 100.0, 2.0) << "each share is rounded";
}

TEST(Study, PrintsTheSameForTheSameSeedOnly)
{
    const std::vector<std::string> careful = {"--runs", "2", "--only", "careful", "--seed"};
    const auto printed = [&careful](const char* seed) {
        std::vector<std::string> arguments = careful;
        arguments.emplace_back(seed);
        return RunProgram(arguments).out;
    };
    const std::string first = printed("5");
    EXPECT_THAT(first, testing::HasSubstr("careful operator"));
    EXPECT_EQ(printed("5"), first);
    EXPECT_NE(printed("6"), first);
}

// The cells of the lines of tables that are neither a header nor its rule.
std::vector<std::vector<std::string>> Cells(const std::string& text)
{
    std::istringstream lines(text);
    std::vector<std::vector<std::string>> rows;
    bool body = false;
    for (std::string line; std::getline(lines, line);) {
        if (body && !line.empty()) {
            std::vector<std::string> cells;
            for (std::size_t at = 2, end = 0; (end = line.find(" |", at)) != std::string::npos;
                 at = end + 3)
                cells.push_back(line.substr(at, end - at));
            rows.push_back(cells);
        }
        if (line.starts_with("|---")) body = true;
        if (line.empty()) body = false;
    }
    return rows;
}

TEST(Study, GivesOccupationsOfEachMotionAndFaultARow)
{
    const std::vector<std::string> arguments{"--occupations",
                                             "--runs",
                                             "3",
                                             "--seed",
                                             "2",
                                             "--bias",
                                             "0.75",
                                             "--log",
                                             TILTPOLE_SOURCE_DIR "/examples/occupations.csv",
                                             "--truth",
                                             TILTPOLE_SOURCE_DIR "/examples/occupations-truth.csv"};
    const Outcome outcome = RunProgram(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = Cells(outcome.out);
    const auto motions = simulation::OccupationMotions();
    const auto faults = simulation::OccupationFaults();
    ASSERT_EQ(rows.size(), 1 + 2 * motions.size() + faults.size());
    EXPECT_EQ(rows[0][0], "recorded");
    EXPECT_EQ(rows[0][1], "24");
    EXPECT_THAT(rows[0][2], testing::StartsWith("31.2 / 61.8 / 92.9")) << "as `occupy` has it";
    for (std::size_t i = 0; i < motions.size(); ++i) {
        EXPECT_EQ(rows[1 + 2 * i][0], motions[i].name);
        EXPECT_EQ(rows[1 + 2 * i][1], "3");
        EXPECT_EQ(rows[2 + 2 * i][0], motions[i].name + ", calibrated");
        EXPECT_EQ(rows[2 + 2 * i][1], "3");
    }
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const auto& row = rows[1 + 2 * motions.size() + i];
        EXPECT_EQ(row[0], faults[i].name);
        EXPECT_NEAR(std::stod(row[1]) + std::stod(row[2]) + std::stod(row[3]), 100.0, 0.2);
    }
    EXPECT_EQ(RunProgram(arguments).out, outcome.out);
}

TEST(Study, OccupationsTakeTheirErrorsFromTheSeed)
{
    const auto printed = [](const char* seed) {
        return RunProgram({"--occupations", "--runs", "2", "--only", "lean in, 5", "--seed", seed})
            .out;
    };
    EXPECT_EQ(Cells(printed("5")).size(), 4U);
    EXPECT_NE(printed("5"), printed("6"));
    const Outcome none = RunProgram({"--occupations", "--only", "nothing like it"});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.err, "tiltpole_study: no occupation has 'nothing like it' in its name\n");
    EXPECT_EQ(RunProgram({"--occupations", "--log", "points.csv"}).exitCode, 2);
}

TEST(Study, NamesSlipsAndWrongLengthsOfEachMotion)
{
    const std::vector<std::string> arguments{"--slips", "--runs", "6", "--seed", "4"};
    const Outcome outcome = RunProgram(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = Cells(outcome.out);
    const auto motions = simulation::SlipMotions();
    ASSERT_EQ(rows.size(), 2 * motions.size());
    const auto percent = [](const std::string& cell) { return std::stod(cell); };
    for (std::size_t i = 0; i < motions.size(); ++i) {
        const auto& named = rows[i];
        ASSERT_EQ(named.size(), 8U);
        EXPECT_EQ(named[0], motions[i].name);
        EXPECT_GE(percent(named[1]), 83.0) << "slips named";
        EXPECT_LE(percent(named[2]), 17.0) << "slips stored";
        EXPECT_GE(percent(named[3]), 83.0) << "wrong lengths named";
        EXPECT_EQ(percent(named[5]), 0.0) << "wrong lengths stored";
        EXPECT_GE(percent(named[7]), 83.0) << "sound ones stored";
        const auto& ellipse = rows[motions.size() + i];
        ASSERT_EQ(ellipse.size(), 5U);
        EXPECT_EQ(ellipse[0], motions[i].name);
        EXPECT_GT(percent(ellipse[2]), 5.0) << "[mm]";
    }
    EXPECT_EQ(RunProgram(arguments).out, outcome.out);
    EXPECT_EQ(Cells(RunProgram({"--slips", "--runs", "1", "--only", "rocked"}).out).size(), 6U);
    EXPECT_EQ(RunProgram({"--slips", "--only", "nothing like it"}).err,
              "tiltpole_study: no occupation has 'nothing like it' in its name\n");
}

// Numbers of a cell like "100.0 / 0.0 / 0.0"; "-" is left out.
std::vector<double> FiguresIn(const std::string& cell)
{
    std::istringstream words(cell);
    std::vector<double> figures;
    for (std::string word; words >> word;)
        if (word != "/" && word != "-") figures.push_back(std::stod(word));
    return figures;
}

TEST(Study, GivesLivePolesOfEachMotionARow)
{
    const std::vector<std::string> arguments{"--live", "--runs", "1", "--only",
                                             "lasting 1 s, 10 Hz"};
    const Outcome outcome = RunProgram(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = Cells(outcome.out);
    ASSERT_EQ(rows.size(), 4U);
    const char* const motions[] = {"rocked slowly from 12 to 28 degrees",
                                   "rocked by 5 degrees about 10", "lean in from 5 to 30 degrees",
                                   "rocked and turned"};
    constexpr std::size_t kFigures[] = {2, 1, 2, 3, 2, 2};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        ASSERT_EQ(rows[i].size(), 7U);
        EXPECT_EQ(rows[i][0], std::string(motions[i]) + ", lasting 1 s, 10 Hz");
        const bool stored = FiguresIn(rows[i][1])[0] > 0.0;
        for (std::size_t column = 1; column < rows[i].size(); ++column) {
            const auto figures = FiguresIn(rows[i][column]);
            const bool ofStored = column > 4; // nothing stored: nothing that could hold
            EXPECT_EQ(figures.size(), ofStored && !stored ? 0U : kFigures[column - 1]);
            for (const double figure : figures) {
                EXPECT_GE(figure, 0.0) << rows[i][0];
                EXPECT_LE(figure, 100.0) << rows[i][0];
            }
        }
        EXPECT_EQ(FiguresIn(rows[i][3])[0], 100.0) << "a slip of 30 mm is named";
        EXPECT_EQ(FiguresIn(rows[i][3])[1], 0.0) << "and not stored";
    }
    EXPECT_EQ(rows[1][1], "0.0 / 0.0") << "5 degrees about 10 are too little to store by";
    EXPECT_EQ(rows[3][1], "100.0 / 100.0") << "rocked and turned";
    EXPECT_EQ(RunProgram(arguments).out, outcome.out);
}

TEST(Study, LivePolesHaveErrorsOfEachKind)
{
    for (const char* errors : {"new in each epoch", "lasting 3 s", "partly lasting 30 s"}) {
        const std::string name = std::string("rocked and turned, ") + errors + ", 5 Hz";
        const auto rows =
            Cells(RunProgram({"--live", "--runs", "2", "--seed", "3", "--only", name}).out);
        ASSERT_EQ(rows.size(), 1U) << name;
        EXPECT_EQ(rows[0][0], name);
        EXPECT_EQ(FiguresIn(rows[0][1])[0], 100.0) << "stored at some time";
    }
    EXPECT_EQ(RunProgram({"--live", "--only", "nothing like it"}).err,
              "tiltpole_study: no line has 'nothing like it' in its name\n");
}

// Rows of the table of faults: nine figures of the solver, nine of the joint fit.
std::vector<Row> FaultRows(const std::string& text)
{
    std::istringstream lines(text);
    std::vector<Row> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Rank correlation")) break;
        if (line.starts_with("    ")) continue; // the heads of the columns
        Row row{line.substr(0, line.find("  ")), {}};
        std::istringstream figures(line.substr(24));
        for (double figure = 0.0; figures >> figure;)
            row.figures.push_back(figure);
        rows.push_back(row);
    }
    return rows;
}

TEST(Study, GivesEachFaultARowOfBothMethods)
{
    const Outcome outcome =
        RunProgram({"--faults", "--runs", "3", "--seed", "2", "--only", "an eighth"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Row> rows = FaultRows(outcome.out);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].name, "an eighth of the rate");
    EXPECT_EQ(rows[1].name, "careful, an eighth");
    EXPECT_EQ(rows[2].name, "all");
    for (const Row& row : rows)
        ASSERT_EQ(row.figures.size(), 18U) << row.name;
    for (const std::size_t method : {0U, 9U}) {
        for (std::size_t count = method; count < method + 6; ++count)
            EXPECT_EQ(rows[0].figures[count] + rows[1].figures[count], rows[2].figures[count]);
        for (const Row& row : rows) {
            EXPECT_LE(row.figures[method] + row.figures[method + 3], row.name == "all" ? 6.0 : 3.0)
                << "called good or usable";
            EXPECT_LE(row.figures[method + 6], row.figures[method + 7])
                << "the error as used is not above the worse of both";
        }
    }
    EXPECT_THAT(outcome.out, testing::ContainsRegex("is below half of the solver's: *-?[01].[0-9]+ "
                                                    "\\([0-6] of [0-6]\\)\n$"));
}

TEST(Study, CallsNoCalibrationOfAMirroredAxisGood)
{
    const Outcome outcome =
        RunProgram({"--faults", "--runs", "3", "--seed", "2", "--only", "mirrored"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Row> rows = FaultRows(outcome.out);
    ASSERT_EQ(rows.size(), 3U);
    for (const Row& row : rows)
        EXPECT_THAT(row.figures, testing::Each(0.0)) << row.name;
    EXPECT_THAT(outcome.out, testing::EndsWith(" (0 of 0)\n")) << "none has a bound";
}

TEST(Study, JointFitsStandMoreOutliersThanTheSolver)
{
    const Outcome outcome =
        RunProgram({"--faults", "--runs", "3", "--seed", "2", "--only", "outliers"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Row> rows = FaultRows(outcome.out);
    ASSERT_EQ(rows.size(), 3U);
    for (const Row& row : rows)
        ASSERT_EQ(row.figures.size(), 18U) << row.name;
    const auto taken = [&](std::size_t method) { // called good or usable, of six
        return rows[2].figures[method] + rows[2].figures[method + 3];
    };
    EXPECT_LE(taken(0), 2.0) << "the solver";
    EXPECT_GE(taken(9), 5.0) << "the joint fit";
}

TEST(Study, GivesFaultsOfOccupationsAlone)
{
    const auto rows = Cells(
        RunProgram({"--occupations", "--runs", "2", "--only", "off by 60 mm for the last"}).out);
    ASSERT_EQ(rows.size(), 2U);
    for (const auto& row : rows) {
        EXPECT_THAT(row[0], testing::StartsWith("off by 60 mm for the last 2 s, "));
        EXPECT_EQ(row[3], "100.0") << "refused";
    }
}

TEST(Study, VariationsAreConditionsOfTheirOwn)
{
    const Outcome outcome =
        RunProgram({"--variations", "--runs", "1", "--only", "60 to 100 samples"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = FirstTable(outcome.out);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].name, "60 to 100 samples");
    EXPECT_EQ(rows[0].Called(), 100.0);
}

TEST(Study, TellsHowOftenTheRegionsOfTipsHold)
{
    const Outcome outcome = RunProgram({"--tips", "--runs", "60"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = Cells(outcome.out);
    ASSERT_EQ(rows.size(), 36U) << "18 cones, errors as stated and slow ones";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        ASSERT_EQ(row.size(), 9U);
        EXPECT_EQ(row[0], i < 18 ? "as stated" : "slow");
        const double stored = std::stod(row[4]); // of 60
        for (const std::size_t column : {5U, 6U}) {
            if (stored < 83.0) {
                EXPECT_EQ(row[column], "-") << "a share of fewer than 50 says nothing";
            } else {
                EXPECT_GE(std::stod(row[column]), 80.0) << row[0] << row[1] << row[2];
            }
        }
        EXPECT_EQ(row[7] == "-", stored == 0.0);
        EXPECT_EQ(row[8] == "-", stored == 0.0);
        if (stored > 0.0) {
            EXPECT_LE(std::stod(row[7]), 50.0) << "semi-major axis [mm]";
        }
    }
    EXPECT_EQ(rows[16][1], "60");
    EXPECT_EQ(rows[16][4], "100.0") << "60 positions up to 40 degrees all around";
}

TEST(Study, TakesTheErrorsOfTipsFromARecording)
{
    const apps::test::ScratchFolder folder;
    std::string epochs;
    for (int i = 0; i < 950; ++i)
        epochs += std::to_string(7 * i % 11) + "e-3 " + std::to_string(5 * i % 13) + "e-3 "
                  + std::to_string(3 * i % 17) + "e-3 " + std::to_string(i) + "\n";
    const Outcome outcome =
        RunProgram({"--tips", "--runs", "2", "--recording", folder.Write("antenna.txt", epochs)});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto rows = Cells(outcome.out);
    ASSERT_EQ(rows.size(), 90U);
    EXPECT_EQ(rows[36][0], "recorded, 1 s");
    EXPECT_EQ(rows[54][0], "recorded, 4 s");
    EXPECT_EQ(rows[72][0], "recorded, 15 s");
    EXPECT_EQ(rows[88][4], "100.0") << "60 positions up to 40 degrees all around";
}

TEST(Study, TellsWrongUseInOneSentence)
{
    const Outcome name = RunProgram({"--only", "nothing like it"});
    EXPECT_EQ(name.exitCode, 2);
    EXPECT_EQ(name.err, "tiltpole_study: no condition has 'nothing like it' in its name\n");
    const Outcome missing = RunProgram({"--tips", "--recording", "/dev/null/none"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_EQ(missing.err, "tiltpole_study: /dev/null/none: Not a directory\n");
    const Outcome empty = RunProgram({"--tips", "--recording", "/dev/null"});
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_EQ(empty.err,
              "tiltpole_study: /dev/null: has 0 epochs \"E N h time\", fewer than 901\n");
    const Outcome number = RunProgram({"--runs", "none"});
    EXPECT_EQ(number.exitCode, 2);
    EXPECT_EQ(std::count(number.err.begin(), number.err.end(), '\n'), 1) << number.err;
}

} // namespace
