// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/Calibrate.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/calibrate/CalibrationDump.h"
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "apps/tables/Output.h"
#include "apps/tables/ReadFile.h"
#include "apps/tables/SampleLog.h"
#include "framework/core/MessageBox.h"
#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"
#include "quality/SolverRun.h"
#include <fmt/format.h>
#include <optional>

namespace cli {

namespace {

using quality::CalibrationReport;
using quality::CalibrationRun;

struct CalibrateOptions
{
    std::string horizontal;
    std::string vertical;
    std::string dump;
    std::string out;
    std::string report;
    std::string plot;
    int select = 0;
    int sensorType = 1;
    std::string method = "adjust";
    std::optional<double> biasA;
    std::optional<double> biasB;
    std::string biasFrom;
    bool force = false;
};

constexpr const char* kFooter = R"(
The turns are sample logs as `tiltpole measure` reads them, without antenna columns: in one the
upright pole is turned about its own axis (--horizontal), in the other it is turned over head
about the sensor's y axis (--vertical). The library's sample filters select samples, its solver
calibrates. --method joint uses the joint fit of both turns instead, which tolerates slanting
axes, an unsteady hand and magnets, but needs valid pitch and roll and 270 degrees of each turn.

The report goes to standard output, the library's messages to standard error. The parameter
file (--out) is only written when the calibration is accepted, that is good or usable; --force
writes it anyway. Bias angles given by --bias, --bias-b or --bias-from account for the mounting
of the sensor and for magnetic declination: they are added to those of the calibration and not
assessed. Without them, the bias angles of an existing parameter file are lost.

--dump reads the file Debug_MagneticAdjust_ErrorData_A.csv (or _B), to which the library appends
the horizontal samples of each failed calibration, and reports which fit fails on them.

Examples:
  tiltpole calibrate --horizontal h.csv --vertical v.csv --out pole.cfg --plot turns.png
  tiltpole calibrate --horizontal h.csv --vertical v.csv --method joint --out pole.cfg
  tiltpole calibrate --dump Debug_MagneticAdjust_ErrorData_A.csv

Exit codes: 0 accepted (or dump read), 1 not accepted, forced or not, 2 wrong use or unreadable
input.)";

struct Gloss
{
    std::wstring_view text;
    const char* english;
};

constexpr Gloss kGlosses[] = {
    {L"椭圆拟合失败,绕Z轴旋转数据有误!",
     "the ellipse fit failed: the data of the turn about Z are wrong" },
    {L"直线拟合失败,绕Z轴旋转数据有误!",
     "a line fit failed: the data of the turn about Z are wrong"      },
    {L"椭圆拟合失败,绕Y轴旋转数据有误!",
     "the ellipse fit failed: the data of the turn about Y are wrong" },
    {L"直线拟合失败,绕Y轴旋转数据有误!",
     "the line fit failed: the data of the turn about Y are wrong"    },
    {L"循环次数超限，磁力计校准参数精度不可靠!",
     "the pass limit was reached: the calibration may not be accurate"},
};

// Prints the library's messages on standard error, Chinese ones with a translation.
int ShowMessage(const wchar_t* text, const wchar_t* title, unsigned)
{
    std::string meaning;
    for (const Gloss& gloss : kGlosses)
        if (gloss.text == text) meaning = fmt::format(" ({})", gloss.english);
    fmt::print(stderr, "{}: {}{}\n", framework::ToUtf8(title), framework::ToUtf8(text), meaning);
    return IDOK;
}

// Restores the previous handler at the end of the scope.
class MessagesOnStandardError
{
public:
    MessagesOnStandardError() : m_former(framework::SetMessageBoxHandler(ShowMessage)) {}
    ~MessagesOnStandardError() { framework::SetMessageBoxHandler(m_former); }
    MessagesOnStandardError(const MessagesOnStandardError&) = delete;
    MessagesOnStandardError& operator=(const MessagesOnStandardError&) = delete;

private:
    framework::MessageBoxHandler m_former;
};

std::vector<PoseSensorData> ReadTurn(const std::string& path)
{
    std::vector<PoseSensorData> samples;
    tables::SampleLog log(path, {.mostBytes = tables::kMostInMemory, .onBadRow = {}});
    while (log.Next())
        samples.push_back(log.Pose());
    return samples;
}

struct BiasAngles
{
    double a = 0.0;
    double b = 0.0;
};

BiasAngles GivenBias(const CalibrateOptions& options)
{
    BiasAngles bias;
    if (!options.biasFrom.empty()) {
        CInclineSensor_Position position;
        LoadParameters(options.biasFrom, position);
        bias = {position.GetMagneticBiasAngle_A(), position.GetMagneticBiasAngle_B()};
    }
    return {options.biasA.value_or(bias.a), options.biasB.value_or(bias.b)};
}

CalibrationRun Calibrate(const CalibrateOptions& options)
{
    CalibrationRun run =
        quality::RunSolver({ReadTurn(options.horizontal), ReadTurn(options.vertical)},
                           options.sensorType, options.select);
    if (options.method == "adjust") {
        if (run.solverAnswer == 0) {
            fmt::print(stderr, "The horizontal samples were appended to the dumps in {}.\n",
                       framework::ToUtf8(framework::ApplicationDataFolder().GetString()));
        }
        return run;
    }
    const quality::JointFit fit = quality::FitJointly(run.recorded, options.sensorType);
    run.solverAnswer = fit.outcome == quality::JointFitOutcome::Fitted ? 1 : 0;
    if (run.solverAnswer == 1) {
        run.calibration = fit.calibration;
    } else {
        fmt::print(stderr, "The joint fit was rejected: {}.\n", Describe(fit.outcome));
    }
    return run;
}

void WriteReport(const std::string& path, const CalibrationReport& report,
                 const CalibrationRun& run, const std::string& method)
{
    nlohmann::ordered_json json = JsonOf(report, run);
    json["method"] = method;
    tables::WriteFile(path, json.dump(2) + "\n");
}

void Print(const std::string& text)
{
    tables::Output output("-");
    output.Write(text);
    output.Finish();
}

int Conclude(const CalibrateOptions& options, const CalibrationReport& report,
             const CalibrationRun& run)
{
    const bool accepted = IsAccepted(report.verdict);
    if (options.out.empty()) return accepted ? kDone : kNegative;
    if (!accepted && !options.force) {
        fmt::print(stderr,
                   "{}: not written, because the calibration is not accepted (--force "
                   "writes it)\n",
                   options.out);
        return kNegative;
    }
    const BiasAngles bias = GivenBias(options);
    quality::Calibration calibration = run.calibration;
    calibration.biasAngleA += bias.a;
    calibration.biasAngleB += bias.b;
    SaveParameters(options.out, calibration);
    for (const ParameterProblem& problem : CheckParameters(options.out))
        fmt::print(stderr, "{}: {} {}\n", options.out, problem.key, problem.what);
    return accepted ? kDone : kNegative;
}

int CalibrateTurns(const CalibrateOptions& options)
{
    GivenBias(options); // reports a bad file before any work is done
    tables::KeepInputs({options.out, options.report, options.plot},
                       {options.horizontal, options.vertical});
    const CalibrationRun run = Calibrate(options);
    const CalibrationReport report = quality::AssessCalibration(run);
    std::string text = ToText(report);
    if (options.method == "joint" && report.a.heading) {
        text +=
            "Calibrated with the joint fit: the heading error is the part that eight values cannot "
            "express.\nThe uncertainty of the fit itself is listed separately, and the verdict "
            "allows for it.\n";
    }
    Print(text);
    if (!options.report.empty()) WriteReport(options.report, report, run, options.method);
    if (!options.plot.empty()) SaveCalibrationPicture(options.plot, report, run);
    return Conclude(options, report, run);
}

int LookIntoDump(const CalibrateOptions& options)
{
    const auto attempts = ReadDump(options.dump);
    std::string text = fmt::format("{} failed calibration{} in {}\n", attempts.size(),
                                   attempts.size() == 1 ? "" : "s", options.dump);
    for (const auto& attempt : attempts)
        text += DescribeAttempt(attempt, options.sensorType);
    Print(text);
    return attempts.empty() ? kNegative : kDone;
}

void AddOptions(CLI::App& command, CalibrateOptions& options)
{
    command.add_option("--horizontal", options.horizontal, "Log of the turn about the z axis")
        ->type_name("FILE");
    command.add_option("--vertical", options.vertical, "Log of the turn about the y axis")
        ->type_name("FILE");
    command.add_option("--dump", options.dump, "Error dump of failed calibrations to inspect")
        ->type_name("FILE")
        ->excludes("--horizontal", "--vertical");
    command.add_option("--out", options.out, "Parameter file to write")->type_name("FILE");
    command.add_option("--report", options.report, "Write the report as JSON")->type_name("FILE");
    command
        .add_option("--plot", options.plot, "Plot of both turns, raw and corrected, .png or .svg")
        ->type_name("FILE")
        ->check(PictureName());
    command.add_option("--method", options.method, "'adjust' (the solver) or 'joint' [adjust]")
        ->check(CLI::IsMember({"adjust", "joint"}))
        ->type_name("WORD");
    command
        .add_option("--select", options.select,
                    "Thin each selected turn to about this many samples for the solver")
        ->check(CLI::PositiveNumber)
        ->type_name("WHOLE");
    command
        .add_option("--sensor-type", options.sensorType,
                    "Type of the sensor: its axis convention [1]")
        ->type_name("WHOLE");
    command.add_option("--bias", options.biasA, "Bias angle of magnetometer A to add [degrees]")
        ->type_name("ANGLE")
        ->check(FiniteNumber());
    command.add_option("--bias-b", options.biasB, "The same for magnetometer B [degrees]")
        ->type_name("ANGLE")
        ->check(FiniteNumber());
    command
        .add_option("--bias-from", options.biasFrom,
                    "Parameter file to take bias angles from, such as the previous one")
        ->type_name("FILE");
    command.add_flag("--force", options.force,
                     "Write the parameter file regardless of the verdict");
}

} // namespace

void AddCalibrateCommand(CLI::App& program, int& exitCode)
{
    CLI::App* command = program.add_subcommand(
        "calibrate", "Calibrate both magnetometers from two recorded turns and assess the result.");
    auto options = std::make_shared<CalibrateOptions>();
    AddOptions(*command, *options);
    command->footer(kFooter);
    command->callback([options, &exitCode] {
        const MessagesOnStandardError messages;
        if (!options->dump.empty()) {
            exitCode = LookIntoDump(*options);
            return;
        }
        if (options->horizontal.empty() || options->vertical.empty()) {
            throw CLI::RequiredError("--horizontal and --vertical, or --dump,");
        }
        exitCode = CalibrateTurns(*options);
    });
}

} // namespace cli
