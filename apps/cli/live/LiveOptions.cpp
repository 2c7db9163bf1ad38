// SPDX-License-Identifier: MIT
#include "apps/cli/live/LiveOptions.h"

#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/SpotSidecar.h"
#include "apps/cli/calibrate/CalibrationRecord.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <cmath>
#include <filesystem>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr tables::Range kPhaseCenter{-1.0, 1.0, "m"};
constexpr tables::Range kAppHeight{0.0, 100.0, "m"};
constexpr tables::Range kSmallAngle{0.0, 45.0, "degrees"};
constexpr tables::Range kTimeSigma{0.0, 10.0, "s"};
constexpr tables::Range kAge{0.0, 1000.0, "s"};
constexpr tables::Range kLimit{1e-4, 1000.0, "m"};
constexpr tables::Range kSpeed{1e-4, 100.0, "m/s"};
constexpr tables::Range kLean{0.1, 80.0, "degrees"};
constexpr tables::Range kDays{0.0, 36500.0, "days"};
constexpr tables::Range kPart{1e-4, 1.0, ""};
constexpr tables::Range kAngleLimit{0.01, 90.0, "degrees"};

struct DelayText
{
    double delay = 0.0;
    std::optional<double> sigma;
};

std::optional<DelayText> ReadDelay(const std::string& text)
{
    if (const auto both = tables::ParseNumbers(text, 2)) return DelayText{(*both)[0], (*both)[1]};
    if (const auto delay = tables::ParseNumber(text)) return DelayText{*delay, std::nullopt};
    return std::nullopt;
}

CLI::Validator DelayAndSigma()
{
    const auto problemOf = [](const std::string& text) -> std::string {
        const auto read = ReadDelay(text);
        if (!read) return "'" + text + "' is not DELAY or DELAY,SD, as in 0.124,0.007";
        const std::string delay = tables::OutsideOf(tables::kDelay, read->delay);
        if (!delay.empty()) return "DELAY " + delay;
        const std::string sigma =
            read->sigma ? tables::OutsideOf(kTimeSigma, *read->sigma) : std::string();
        return sigma.empty() ? sigma : "SD " + sigma;
    };
    return {problemOf, "", "DELAY[,SD]"};
}

// Days of a text like "2026-05-04T13:07:58Z".
std::optional<std::chrono::sys_days> DayOf(const std::string& utc)
{
    if (utc.size() < 10) return std::nullopt;
    const auto number = [&](std::size_t at, std::size_t size) {
        return tables::ParseNumber(std::string_view(utc).substr(at, size)).value_or(0.0);
    };
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(number(0, 4))),
                                           std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                           std::chrono::day(static_cast<unsigned>(number(8, 2)))};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days(date);
}

bool IsThere(const std::string& path)
{
    std::error_code error;
    return !path.empty() && std::filesystem::is_regular_file(path, error);
}

bool SameCorrection(const Incline_MagneticCorrectParameter& a,
                    const Incline_MagneticCorrectParameter& b)
{
    constexpr double kWritten = 1e-4; // what the parameter file may have rounded
    return std::fabs(a.x0 - b.x0) < 0.01 && std::fabs(a.y0 - b.y0) < 0.01
           && std::fabs(a.z0 - b.z0) < 0.01 && std::fabs(a.a - b.a) < kWritten
           && std::fabs(a.b - b.b) < kWritten && std::fabs(a.c - b.c) < kWritten;
}

// What the files beside the parameter file say of its calibration: verdict, date, field.
void ReadCompanions(const std::string& config, field::CalibrationFile& calibration)
{
    const std::string record = RecordOf(config);
    if (IsThere(record)) {
        const auto json = nlohmann::ordered_json::parse(tables::ReadFile(record), nullptr, false);
        const std::string verdict =
            json.is_object() && json.contains("verdict") && json["verdict"].is_string()
                ? json["verdict"].get<std::string>()
                : std::string();
        if (!verdict.empty()) calibration.usable = verdict == "good" || verdict == "usable";
    }
    const std::string name = SpotSidecarOf(config);
    if (!IsThere(name)) return;
    const SpotSidecar sidecar = ReadSpotSidecar(name);
    const field::SpotMagnetometer& a = sidecar.result.a;
    if (!a.found || !SameCorrection(a.correction, calibration.sensor.GetMagneticCorrectPar_A())) {
        tables::Tell("{}: is of another calibration than {}, and is not used\n", name, config);
        return;
    }
    calibration.made = DayOf(sidecar.madeUtc);
    calibration.field = field::FieldShape{a.strength, a.dip};
}

// Adds options that take a number.
auto NumbersOf(CLI::App& command)
{
    return
        [&command](const char* name, double& value, const char* text, const tables::Range& range) {
            command.add_option(name, value, text)->type_name("NUMBER")->check(NumberIn(range));
        };
}

void AddSigmaOptions(CLI::App& command, PoleOptions& options)
{
    field::Setup& setup = options.setup;
    const auto add = NumbersOf(command);
    add("--tilt-sd", setup.tiltSigma,
        "Standard deviation of pitch and of roll [degrees]; default 0.1", kSmallAngle);
    add("--heading-sd", setup.headingSigma,
        "Standard deviation of the heading, without that of the declination [degrees]; default 2.5",
        kSmallAngle);
    add("--pole-sd", setup.lengthSigma,
        "Standard deviation of the pole's length [m]; default 0.001", tables::kDeviationOrZero);
}

void AddLimitOptions(CLI::App& command, field::GateLimits& limits)
{
    const auto add = NumbersOf(command);
    command.add_flag("--allow-float", limits.allowFloat, "A float solution may be stored, too");
    add("--max-age", limits.correctionAge, "Largest age of corrections [s]; default 10", kAge);
    command.add_option("--min-satellites", limits.satellites, "Fewest satellites; default 5")
        ->type_name("N")
        ->check(IntegerIn(0, 100));
    add("--max-epoch-age", limits.epochAge, "Largest age of an epoch [s]; default 1", kAge);
    add("--max-plan-sd", limits.planSigma,
        "Largest standard deviation of the tip, north or east [m]; default 0.03", kLimit);
    add("--max-height-sd", limits.heightSigma,
        "Largest standard deviation of the tip's height [m]; default 0.04", kLimit);
    add("--max-time-sd", limits.timeSigma,
        "Largest standard deviation of the time between pose and antenna while the pole moves [s]; "
        "default 0.02",
        kTimeSigma);
    add("--max-pose-gap", limits.poseGap, "Longest pause between poses [s]; default 0.05",
        kTimeSigma);
    add("--max-speed", limits.antennaSpeed, "Largest speed of the antenna [m/s]; default 0.05",
        kSpeed);
    add("--still-for", limits.stillFor, "How long the pole has to be still [s]; default 0.5", kAge);
    add("--max-lean", limits.lean, "Largest lean [degrees]; default 30", kLean);
    add("--note-lean", limits.leanNoted, "Lean from which on a note is made [degrees]; default 15",
        kLean);
    add("--max-calibration-days", limits.calibrationDays,
        "Age of the calibration from which on a note is made; default 30", kDays);
    add("--max-field-strength", limits.fieldStrength,
        "Largest part by which the field may be stronger or weaker than expected; default 0.05",
        kPart);
    add("--max-field-dip", limits.fieldDip,
        "Largest difference of the field's dip from the expected one [degrees]; default 5",
        kAngleLimit);
    add("--max-field-pair", limits.fieldPair,
        "Largest difference of magnetometers A and B, as part of the strength; default 0.05",
        kPart);
    add("--max-bad-lines", limits.badLines,
        "Largest part of bad lines of the receiver in 10 s; default 0.05", kPart);
    add("--max-datum-step", limits.datumStep,
        "Largest step between fixed epochs that is not taken for another base [m]; default 0.3",
        kLimit);
}

} // namespace

void AddPoleOptions(CLI::App& command, PoleOptions& options)
{
    field::Setup& setup = options.setup;
    command
        .add_option("--pole", setup.poleLength,
                    "Pole length, tip to the antenna's reference point [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    command
        .add_option("--apc", setup.phaseCenter,
                    "Height of the antenna's phase center above its reference point [m]; default 0")
        ->type_name("LENGTH")
        ->check(NumberIn(kPhaseCenter));
    command
        .add_option(
            "--app-height", setup.appHeight,
            "Antenna height that the app subtracts and cannot be told not to [m]; default 0")
        ->type_name("LENGTH")
        ->check(NumberIn(kAppHeight));
    command
        .add_option("--config", options.config,
                    "Parameter file of the calibration; without it no tip may be stored")
        ->type_name("FILE");
    command.add_flag("--partial-config", options.partialConfig,
                     "Accept a parameter file with missing keys; no tip may be stored then");
    command
        .add_option("--sensor-type", options.sensorType,
                    "1: x forward, y left, z up the pole; other values: x right, y forward, z up. "
                    "Default 1, of serial frames 2")
        ->type_name("N");
    command
        .add_option(
            "--pose-format", options.poseFormat,
            "What the pose sensor sends: ptps ($PTPS sentences, default), csv (rows under a "
            "header) or frames (frames of 11 bytes, 0x55 first)")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"ptps", "csv", "frames"}));
    command
        .add_option("--north", options.north,
                    "model (default): the bias of the parameter file is the axis offset, the "
                    "declination comes from the World Magnetic Model; file: the bias holds both")
        ->type_name("SOURCE")
        ->check(CLI::IsMember({"model", "file"}));
    command
        .add_option("--delay", options.delay,
                    "How much later the receiver tells of a moment than the pose sensor, and its "
                    "standard deviation [s], as --find-delay prints them; without it only a still "
                    "pole is measured")
        ->type_name("DELAY[,SD]")
        ->check(DelayAndSigma());
    command
        .add_option("--profile", options.profile,
                    "What is sent while the tip is not known: strict (default), empty coordinates; "
                    "qfield, the point under the antenna with quality 6 and a large deviation")
        ->type_name("NAME")
        ->check(CLI::IsMember({"strict", "qfield"}));
    command.add_flag("--enforce", setup.enforce,
                     "Send no tip that must not be stored, whatever the reason");
    AddSigmaOptions(command, options);
    AddLimitOptions(command, setup.limits);
}

field::Setup SetupOf(const PoleOptions& options)
{
    field::Setup setup = options.setup;
    using field::PoseFormat;
    setup.poseFormat = options.poseFormat == "csv"      ? PoseFormat::Csv
                       : options.poseFormat == "frames" ? PoseFormat::SerialFrames
                                                        : PoseFormat::Ptps;
    const int usualType = setup.poseFormat == PoseFormat::SerialFrames ? 2 : 1;
    setup.sensorType = options.sensorType.value_or(usualType);
    setup.north = options.north == "file" ? field::NorthSource::File : field::NorthSource::Model;
    setup.profile = options.profile == "qfield" ? field::Profile::QField : field::Profile::Strict;
    if (const auto delay = ReadDelay(options.delay)) {
        constexpr double kGivenAlone = 0.007; // s, what --find-delay reaches
        setup.delay = delay->delay;
        setup.delaySigma = delay->sigma.value_or(kGivenAlone);
    }
    field::CalibrationFile& calibration = setup.calibration;
    calibration.sensor.SetSensorType(setup.sensorType);
    if (options.config.empty()) return setup;
    LoadParameters(options.config, calibration.sensor, options.partialConfig);
    calibration.sensor.SetSensorType(setup.sensorType);
    calibration.bytes = tables::ReadFile(options.config, quality::kLargestParameterFile);
    CInclineSensor_Position whole;
    calibration.complete =
        quality::LoadParameterText(calibration.bytes, whole, quality::ParameterKeys::All).empty();
    ReadCompanions(options.config, calibration);
    return setup;
}

std::string PoseFormatName(const PoleOptions& options)
{
    if (options.poseFormat == "csv") return "rows";
    return options.poseFormat == "frames" ? "frames" : "$PTPS";
}

CLI::Validator SourceText()
{
    return {[](std::string& text) { return live::ParseSource(text).problem; }, "", "source"};
}

CLI::Validator SinkText()
{
    return {[](std::string& text) { return live::ParseSink(text).problem; }, "", "sink"};
}

CLI::Validator AddressRangeText()
{
    return {[](std::string& text) { return live::ParseRange(text).problem; }, "", "addresses"};
}

live::Endpoint SourceOf(const std::string& text)
{
    return live::ParseSource(text).endpoint.value_or(live::Endpoint{});
}

live::Endpoint SinkOf(const std::string& text)
{
    return live::ParseSink(text).endpoint.value_or(live::Endpoint{});
}

std::vector<live::Endpoint> SinksOf(const std::vector<std::string>& texts)
{
    std::vector<live::Endpoint> sinks;
    sinks.reserve(texts.size());
    for (const std::string& text : texts)
        sinks.push_back(SinkOf(text));
    return sinks;
}

std::vector<live::AddressRange> RangesOf(const std::vector<std::string>& texts)
{
    std::vector<live::AddressRange> ranges;
    for (const std::string& text : texts)
        if (const auto parsed = live::ParseRange(text); parsed.range)
            ranges.push_back(*parsed.range);
    return ranges;
}

} // namespace cli
