// SPDX-License-Identifier: MIT
//
// Runs `tiltpole calibrate` on simulated turns in files.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include "tests/ScratchFolder.h"
#include "tests/apps/RunProgram.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace apps::test {

class CalibrateFixture : public ::testing::Test
{
protected:
    void Simulate(const std::vector<std::string>& faults = {})
    {
        std::vector<std::string> arguments = {
            "simulate",   "turns",         "--horizontal", Path("h.csv"),
            "--vertical", Path("v.csv"),   "--seed",       "4",
            "--noise-a",  "0.3",           "--noise-b",    "0.3",
            "--config",   Path("true.cfg")};
        arguments.insert(arguments.end(), faults.begin(), faults.end());
        const Outcome outcome = RunProgram(arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    }

    Outcome Run(const std::vector<std::string>& more = {})
    {
        std::vector<std::string> arguments = {"calibrate", "--horizontal", Path("h.csv"),
                                              "--vertical", Path("v.csv")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    CInclineSensor_Position Parameters(const std::string& name) const
    {
        CInclineSensor_Position position;
        EXPECT_EQ(position.ConfigRead(Path(name).c_str()), 1) << name;
        return position;
    }

    const ScratchFolder m_folder;
};

} // namespace apps::test
