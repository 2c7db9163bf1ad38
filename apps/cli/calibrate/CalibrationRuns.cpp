// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationRuns.h"

#include "apps/tables/Messages.h"
#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"
#include "quality/JointFit.h"
#include "quality/SolverRun.h"

#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <utility>

namespace cli {

namespace {

namespace fs = std::filesystem;

std::string DumpFolder()
{
    return framework::ToUtf8(framework::ApplicationDataFolder().GetString());
}

// The dumps of failed calibrations, by their sizes before a run.
class DumpWatch
{
public:
    DumpWatch()
    {
        for (const char* name :
             {"Debug_MagneticAdjust_ErrorData_A.csv", "Debug_MagneticAdjust_ErrorData_B.csv"})
            m_dumps.push_back({DumpFolder() + '/' + name, 0});
        for (Dump& dump : m_dumps)
            dump.size = SizeOf(dump.name);
    }

    // Says on standard error what has been appended since, for a run that failed.
    void Tell() const
    {
        bool appended = false;
        for (const Dump& dump : m_dumps) {
            if (SizeOf(dump.name) <= dump.size) continue;
            tables::Tell("The horizontal samples were appended to {}.\n", dump.name);
            appended = true;
        }
        if (appended) return;
        tables::Tell("The horizontal samples could not be appended to a dump in {}.\n",
                     DumpFolder());
    }

private:
    struct Dump
    {
        std::string name;
        std::uintmax_t size;
    };

    static std::uintmax_t SizeOf(const std::string& name)
    {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(name, error);
        return error ? 0 : size;
    }

    std::vector<Dump> m_dumps;
};

std::string Line(const char* label, std::string_view content)
{
    return fmt::format("  {:30}{}\n", label, content);
}

} // namespace

Assessed AssessSolver(quality::CalibrationTurns turns, int sensorType, int select)
{
    const DumpWatch dumps;
    Assessed solved;
    solved.run = quality::RunSolver(std::move(turns), sensorType, select);
    if (solved.run.solverAnswer == 0) dumps.Tell();
    solved.report = quality::AssessCalibration(solved.run);
    return solved;
}

Assessed AssessJointFit(quality::CalibrationTurns turns, int sensorType, int select)
{
    Assessed joint;
    joint.run = quality::RunJointFit(std::move(turns), sensorType, select);
    joint.report = quality::AssessCalibration(joint.run);
    return joint;
}

std::string DescribeAlternative(const quality::CalibrationReport& joint)
{
    std::string text = "Joint fit of the same turns\n";
    if (joint.jointFit != quality::JointFitOutcome::Fitted) {
        return text + Line("verdict", fmt::format("none: {}", Describe(joint.jointFit)));
    }
    text += Line("verdict", Headline(joint));
    text += Line("reason", Explain(joint.reason));
    text += Line("what to do", IsAccepted(joint.verdict)
                                   ? "Take it with --method joint, or record both turns again."
                                   : Advice(joint.reason));
    return text;
}

} // namespace cli
