// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/Calibrate.h"

#include "apps/cli/ColumnsOption.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/calibrate/CalibrateOnTheSpot.h"
#include "apps/cli/calibrate/CalibrationDump.h"
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "apps/cli/calibrate/CalibrationRecord.h"
#include "apps/cli/calibrate/CalibrationRuns.h"
#include "apps/cli/calibrate/LibraryMessages.h"
#include "apps/cli/occupy/OccupationLog.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "apps/tables/ReadFile.h"
#include "apps/tables/SampleLog.h"
#include "quality/JointFit.h"
#include <algorithm>
#include <fmt/format.h>
#include <optional>

namespace cli {

namespace {

using quality::CalibrationReport;

struct CalibrateOptions
{
    std::string horizontal;
    std::string vertical;
    std::string dump;
    std::string spot;             // log of a calibration on the spot
    double poleLength = 0.0;      // of the same [m]
    tables::ColumnChoice columns; // of both turns
    std::string out;
    std::string report;
    std::string plot;
    int select = 0;
    int sensorType = 1;
    std::string method = "adjust";
    std::optional<double> biasA;
    std::optional<double> biasB;
    std::string biasFrom;
    bool acceptUnchecked = false;
    bool force = false;
    bool json = false;
};

constexpr const char* kFooter = R"(
The turns are sample logs as `tiltpole measure` reads them, without antenna columns: in one the
upright pole is turned about its own axis (--horizontal), in the other it is turned over head
about the sensor's y axis (--vertical). The library's sample filters select samples, its solver
calibrates. Where its calibration is not accepted, the joint fit of both turns is shown beside
it. --method joint takes that instead: it tolerates slanting axes, an unsteady hand and magnets,
as turns made by hand have them, but needs valid pitch and roll and 270 degrees of each turn.

The report goes to standard output, the library's messages to standard error. The parameter
file (--out) is only written when the calibration is accepted, that is good or usable. One that
is unchecked, because there is no joint fit to check it, is written with --accept-unchecked;
--force writes any, and leaves the exit code at 1.

A bias angle is subtracted from the heading. Given by --bias and --bias-b, it leads from
magnetic north to the north that is wanted: minus the declination for true north. It does not
stand for how the sensor sits on the pole: lean and heading share the sensor's axes, so that
such an angle cancels, and entering it moves the tip. The joint fit finds an angle of its own
for each magnetometer, to which the given one is added. Beside the parameter file a record
(pole.cfg.json beside pole.cfg) keeps the two apart; --bias-from takes the given angles of an
earlier calibration from it. Without --bias and --bias-from they are 0.

--on-the-spot needs no turntable: plant the tip on any fixed point, then rock the pole in all
directions by 15 degrees and turn it about its axis once, for 20 s. The log is one as `tiltpole
occupy` reads it, of one point. Antenna track and gyros give the attitude at every moment, and from
it follow the magnetometers' hard and soft iron and their bias angles (here all of them is found),
the axis of the pole in the sensor, and the errors of accelerometers and gyros. What the parameter
file has no keys for is written beside it (pole.cfg.spot.json), for `tiltpole occupy --calibration`.
A calibration that cannot be used is told with its reason, and nothing is written.

--dump describes Debug_MagneticAdjust_ErrorData_A.csv (or _B), to which the library appends the
horizontal samples of each failed calibration, and tells which fit fails on them. Only
--sensor-type can be given with it.

Examples:
  tiltpole calibrate --horizontal h.csv --vertical v.csv --out pole.cfg --plot turns.png
  tiltpole calibrate --horizontal h.csv --vertical v.csv --method joint --out pole.cfg
  tiltpole calibrate --on-the-spot rocked.csv --pole 2.0 --out pole.cfg
  tiltpole calibrate --dump Debug_MagneticAdjust_ErrorData_A.csv

Exit codes: 0 accepted (or dump read), 1 not accepted or unchecked, forced or not, 2 wrong use or
unreadable input.)";

std::vector<PoseSensorData> ReadTurn(const std::string& path, const tables::ColumnChoice& columns)
{
    std::vector<PoseSensorData> samples;
    tables::SampleLog log(path,
                          {.mostBytes = tables::kMostInMemory, .onBadRow = {}, .columns = columns});
    while (log.Next())
        samples.push_back(log.Pose());
    return samples;
}

bool IsJoint(const CalibrateOptions& options)
{
    return options.method == "joint";
}

BiasAngles GivenBias(const CalibrateOptions& options)
{
    BiasAngles bias;
    const bool needsFile = !options.biasA || !options.biasB;
    if (!options.biasFrom.empty() && needsFile) {
        bias = GivenAnglesOf(options.biasFrom, IsJoint(options));
    }
    return {options.biasA.value_or(bias.a), options.biasB.value_or(bias.b)};
}

nlohmann::ordered_json ReportJson(const CalibrateOptions& options, const Assessed& chosen,
                                  const std::optional<Assessed>& alternative)
{
    nlohmann::ordered_json json = JsonOf(chosen.report, chosen.run);
    json["method"] = options.method;
    json["alternative"] = nullptr;
    if (alternative) {
        json["alternative"] = JsonOf(alternative->report, alternative->run);
        json["alternative"]["method"] = "joint";
    }
    return json;
}

void Print(const std::string& text)
{
    tables::Output output("-");
    output.Write(text);
    output.Finish();
}

// Why the parameter file is not written, and what would write one.
std::string Refusal(const CalibrationReport& report, const std::optional<Assessed>& alternative)
{
    if (report.verdict == quality::Verdict::Unchecked) {
        return "not written, because nothing checks the calibration (--accept-unchecked writes it)";
    }
    std::string text = "not written, because the calibration is not accepted (";
    if (alternative && IsAccepted(alternative->report.verdict)) {
        text += "--method joint writes the joint fit, which is accepted; ";
    }
    return text + "--force writes it)";
}

int Conclude(tables::OutputFiles& files, const CalibrateOptions& options, const BiasAngles& bias,
             const Assessed& chosen, const std::optional<Assessed>& alternative)
{
    const CalibrationReport& report = chosen.report;
    const bool accepted =
        IsAccepted(report.verdict)
        || (options.acceptUnchecked && report.verdict == quality::Verdict::Unchecked);
    const int exitCode = accepted ? kDone : kNegative;
    if (options.out.empty()) return exitCode;
    if (!accepted && !options.force) {
        tables::Tell("{}: {}\n", options.out, Refusal(report, alternative));
        return exitCode;
    }
    SaveWithRecord(files, options.out, chosen.run.calibration, bias,
                   {report.isJoint ? "joint" : "adjust", std::string(Name(report.verdict))});
    return exitCode;
}

int CalibrateTurns(const CalibrateOptions& options)
{
    const std::string record = RecordOf(options.out);
    tables::KeepApart(
        {"-", options.out, record, options.report, options.plot},
        {options.horizontal, options.vertical, options.biasFrom, RecordOf(options.biasFrom)});
    CheckRecordName(options.out);
    const BiasAngles bias = GivenBias(options); // reports a bad file before any work is done
    const quality::CalibrationTurns turns = {ReadTurn(options.horizontal, options.columns),
                                             ReadTurn(options.vertical, options.columns)};
    const auto assess = IsJoint(options) ? AssessJointFit : AssessSolver;
    const Assessed chosen = assess(turns, options.sensorType, options.select);
    std::optional<Assessed> alternative;
    if (!IsJoint(options) && !IsAccepted(chosen.report.verdict)) {
        alternative = AssessJointFit(turns, options.sensorType, options.select);
    }
    const nlohmann::ordered_json json = ReportJson(options, chosen, alternative);
    Print(options.json
              ? JsonText(json)
              : ToText(chosen.report)
                    + (alternative ? DescribeAlternative(alternative->report) : std::string()));
    if (IsJoint(options) && chosen.run.solverAnswer == 0) {
        tables::Tell("The joint fit was rejected: {}.\n", Describe(chosen.report.jointFit));
    }
    tables::OutputFiles files;
    files.Write(options.report, JsonText(json));
    if (!options.plot.empty())
        SaveCalibrationPicture(files, options.plot, chosen.report, chosen.run);
    const int exitCode = Conclude(files, options, bias, chosen, alternative);
    files.Finish();
    return exitCode;
}

// Options that a way of working does not use would be ignored.
// @param why  what it does instead
void RefuseOthersThan(const CLI::App& command, const std::vector<std::string>& used,
                      const std::string& why)
{
    std::string others;
    for (const CLI::Option* option : command.get_options()) {
        const std::string name = option->get_name();
        if (option->count() == 0 || std::ranges::find(used, name) != used.end()) continue;
        others += (others.empty() ? "" : ", ") + name;
    }
    if (others.empty()) return;
    throw CLI::ValidationError(fmt::format("{}: leave out {}", why, others),
                               CLI::ExitCodes::ValidationError);
}

int CalibrateSpot(const CLI::App& command, const CalibrateOptions& options)
{
    RefuseOthersThan(command,
                     {"--on-the-spot", "--pole", "--out", "--columns", "--sensor-type", "--json"},
                     "--on-the-spot finds everything from one log");
    if (command.get_option("--pole")->count() == 0) throw CLI::RequiredError("--pole");
    return CalibrateOnTheSpot({options.spot, options.poleLength, options.sensorType,
                               options.columns, options.out, options.json});
}

int LookIntoDump(const CalibrateOptions& options)
{
    tables::KeepApart({"-"}, {options.dump});
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
    AddColumnsOption(command, options.columns, {"N", "E", "h"}, OccupationKeys());
    command
        .add_option("--on-the-spot", options.spot,
                    "Log of a pole that is rocked and turned about its axis on a fixed tip")
        ->type_name("FILE");
    command
        .add_option("--pole", options.poleLength,
                    "With --on-the-spot: pole length, antenna to tip [m]")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    command.add_option("--dump", options.dump, "Error dump of failed calibrations to inspect")
        ->type_name("FILE");
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
    command
        .add_option("--bias", options.biasA,
                    "From magnetic north to the north wanted, magnetometer A [degrees]")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngle));
    command.add_option("--bias-b", options.biasB, "The same for magnetometer B [degrees]")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngle));
    command
        .add_option("--bias-from", options.biasFrom,
                    "Parameter file whose given bias angles to take, such as the previous one")
        ->type_name("FILE");
    command.add_flag("--accept-unchecked", options.acceptUnchecked,
                     "Accept a calibration whose headings nothing could check");
    command.add_flag("--json", options.json, "Print the report as JSON instead of text");
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
    command->callback([options, command, &exitCode] {
        const MessagesOnStandardError messages;
        if (!options->dump.empty()) {
            RefuseOthersThan(*command, {"--dump", "--sensor-type"},
                             "--dump only describes a dump, without a calibration");
            exitCode = LookIntoDump(*options);
            return;
        }
        if (!options->spot.empty()) {
            exitCode = CalibrateSpot(*command, *options);
            return;
        }
        if (command->get_option("--pole")->count() > 0)
            throw CLI::ValidationError("--pole belongs to --on-the-spot",
                                       CLI::ExitCodes::ValidationError);
        if (options->horizontal.empty() || options->vertical.empty()) {
            throw CLI::RequiredError("--horizontal and --vertical, or --on-the-spot, or --dump,");
        }
        exitCode = CalibrateTurns(*options);
    });
}

} // namespace cli
