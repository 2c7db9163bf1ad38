// SPDX-License-Identifier: MIT
//
// The study program: one calibration under each condition.
#include "simulation/trials/Conditions.h"

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

    // Shares that were called good, usable, poor and refused [percent].
    double Called() const { return figures[6] + figures[7] + figures[8] + figures[9]; }
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
        ASSERT_EQ(rows[k].figures.size(), 13U) << rows[k].name;
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

TEST(Study, TellsWrongUseInOneSentence)
{
    const Outcome name = RunProgram({"--only", "nothing like it"});
    EXPECT_EQ(name.exitCode, 2);
    EXPECT_EQ(name.err, "tiltpole_study: no condition has 'nothing like it' in its name\n");
    const Outcome number = RunProgram({"--runs", "none"});
    EXPECT_EQ(number.exitCode, 2);
    EXPECT_EQ(std::count(number.err.begin(), number.err.end(), '\n'), 1) << number.err;
}

} // namespace
