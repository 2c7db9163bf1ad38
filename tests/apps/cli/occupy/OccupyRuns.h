// SPDX-License-Identifier: MIT
//
// Logs of occupied points as tables that a test can change, and runs of tiltpole occupy on them.
#pragma once

#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace occupy::test {

inline const std::string kRecorded = TILTPOLE_SOURCE_DIR "/examples/occupations.csv";
inline const std::string kTruth = TILTPOLE_SOURCE_DIR "/examples/occupations-truth.csv";

inline std::vector<std::string> Split(const std::string& line)
{
    std::vector<std::string> fields(1);
    for (const char character : line) {
        if (character == ',') {
            fields.emplace_back();
        } else {
            fields.back() += character;
        }
    }
    return fields;
}

struct Table
{
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;

    std::size_t Column(const std::string& name) const
    {
        const auto found = std::find(header.begin(), header.end(), name);
        EXPECT_NE(found, header.end()) << name;
        return static_cast<std::size_t>(found - header.begin());
    }
    void Set(const std::string& name, const std::string& text)
    {
        const std::size_t column = Column(name);
        for (auto& row : rows)
            row[column] = text;
    }
    void Remove(const std::string& name)
    {
        const auto column = static_cast<std::ptrdiff_t>(Column(name));
        header.erase(header.begin() + column);
        for (auto& row : rows)
            row.erase(row.begin() + column);
    }
    std::string& Cell(std::size_t row, const std::string& name) { return rows[row][Column(name)]; }
    std::string Text() const
    {
        std::string text = fmt::format("{}\n", fmt::join(header, ","));
        for (const auto& row : rows)
            text += fmt::format("{}\n", fmt::join(row, ","));
        return text;
    }
};

inline Table TableOf(const std::string& text)
{
    std::istringstream stream(text);
    Table table;
    std::string line;
    std::getline(stream, line);
    table.header = Split(line);
    while (std::getline(stream, line))
        table.rows.push_back(Split(line));
    return table;
}

// The rows of some recorded points.
inline Table Recorded(const std::vector<std::string>& points)
{
    std::istringstream stream(apps::test::ReadAll(kRecorded));
    std::string text;
    for (std::string line; std::getline(stream, line);) {
        const std::string point = line.substr(0, line.find(','));
        const bool wanted = std::find(points.begin(), points.end(), point) != points.end();
        if (text.empty() || wanted) text += line + "\n";
    }
    return TableOf(text);
}

class OccupyRuns : public testing::Test
{
protected:
    static apps::test::Outcome RunOn(const std::string& path, const std::string& arguments = "")
    {
        std::vector<std::string> words{"occupy", path, "--pole", "2.0"};
        std::istringstream stream(arguments);
        for (std::string word; stream >> word;)
            words.push_back(word);
        return apps::test::RunProgram(words);
    }
    apps::test::Outcome Run(const Table& table, const std::string& arguments = "")
    {
        m_path = m_folder.Write("log.csv", table.Text());
        return RunOn(m_path, arguments);
    }
    nlohmann::json Points(const Table& table, const std::string& arguments = "")
    {
        return nlohmann::json::parse(Run(table, arguments + " --json").out)["points"];
    }
    nlohmann::json Simulated(const std::string& simulation, const std::string& arguments = "")
    {
        const std::string log = m_folder.Path("simulated.csv");
        const std::string truth = m_folder.Path("tips.csv");
        EXPECT_EQ(apps::test::RunLine("simulate occupations --out " + log + " --truth " + truth
                                      + " " + simulation)
                      .exitCode,
                  0);
        return nlohmann::json::parse(RunOn(log, "--json --truth " + truth + " " + arguments).out);
    }

    apps::test::ScratchFolder m_folder;
    std::string m_path;
};

} // namespace occupy::test
