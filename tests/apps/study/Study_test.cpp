// SPDX-License-Identifier: MIT
//
// The study program: one calibration under each condition.
#include "simulation/trials/Conditions.h"
#include "simulation/trials/OccupationCases.h"

#include "tests/apps/RunProgram.h"

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
