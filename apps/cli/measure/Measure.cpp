// SPDX-License-Identifier: MIT
#include "apps/cli/measure/Measure.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/measure/MeasurePicture.h"
#include "apps/cli/measure/TipTable.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/Progress.h"
#include "apps/tables/SampleLog.h"
#include <cmath>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

struct MeasureOptions
{
    std::string log;
    double poleLength = 0.0;
    std::string config;
    bool partialConfig = false;
    int sensorType = 1;
    std::optional<double> biasA;
    std::optional<double> biasB;
    std::string truth; // N,E,h
    std::string out;   // empty: standard output
    std::string plot;
    bool skipBad = false;
    bool json = false;
};

constexpr const char* kFooter = R"(
The log is a text file with a header that names the columns and one row per sample:
  dPitch, dRoll                    inclination of the pole [degrees]
  dMag_x, dMag_y, dMag_z           magnetometer A [counts]
  dMag_x_2, dMag_y_2, dMag_z_2     magnetometer B [counts]
  x, y, h                          antenna: N (x), E (y) and height [m]
Time (hh:mm:ss) and the sensor's other columns are read if present; columns with other
names are carried through to the result. Fields are separated by , or ; and the decimal
sign is a point.

The result has one row per sample. These columns follow the carried ones:
  antenna_N_m, antenna_E_m, antenna_h_m           antenna: N (x), E (y), height
  tip_N_m, tip_E_m, tip_h_m                       tip of the pole: N (x), E (y), height
  heading_A_deg, heading_B_deg, heading_Y_deg     from magnetometer A, from B, and A minus
                                                  the tilt direction
  tilt_deg                                        from the plumb line
  still, interference                             1 or 0
and, with --truth, error_N_m, error_E_m, error_plan_m, error_h_m (tip minus truth).
The rows go to standard output, a summary to standard error. With --json the summary goes
to standard output instead, and the rows are only written to the file given by --out.

Examples:
  tiltpole measure walk.csv --pole 2.0 --config pole.cfg --out tips.csv
  tiltpole measure walk.csv --pole 1.8 --config pole.cfg --json | jq .tilt_deg.max
  tiltpole measure replay.csv --pole 2.0 --bias 0.75 \
      --truth 238540.000,650135.000,112.500 --out tips.csv --plot tips.svg
  zcat walk.csv.gz | tiltpole measure - --pole 2.0 --config pole.cfg --skip-bad

Exit codes: 0 success, 1 no sample could be measured, 2 wrong use or unreadable input.)";

CInclineSensor_Position MakePosition(const MeasureOptions& options)
{
    CInclineSensor_Position position;
    position.SetSensorType(options.sensorType);
    if (!options.config.empty()) LoadParameters(options.config, position, options.partialConfig);
    if (options.biasA) position.SetMagneticBiasAngle_A(*options.biasA);
    if (options.biasB) position.SetMagneticBiasAngle_B(*options.biasB);
    return position;
}

MeasureSetup SetupOf(const MeasureOptions& options, const CInclineSensor_Position& position)
{
    MeasureSetup setup{options.log,
                       options.config,
                       options.poleLength,
                       options.sensorType,
                       position.GetMagneticBiasAngle_A(),
                       position.GetMagneticBiasAngle_B(),
                       std::nullopt};
    if (const auto truth = tables::ParseNumbers(options.truth, 3)) {
        setup.truth = xyhCoordinate{(*truth)[0], (*truth)[1], (*truth)[2]};
    }
    return setup;
}

bool IsFinite(const Measurement& m)
{
    return std::isfinite(m.tip.x) && std::isfinite(m.tip.y) && std::isfinite(m.tip.h)
           && std::isfinite(m.pose.dYaw) && std::isfinite(m.pose.dYaw_2);
}

std::optional<Measurement> MeasureSample(CInclineSensor_Position& position,
                                         const tables::SampleLog& log, double poleLength)
{
    Measurement m{log.Antenna(), log.Antenna(), log.Pose(), 0.0, false, false};
    if (position.Position(m.pose, poleLength, m.tip) != 1 || !IsFinite(m)) return std::nullopt;
    m.tilt = 90.0 - position.GetAngleofPoletoHorizontal(m.pose.dPitch, m.pose.dRoll);
    m.still = position.IsStationary() != 0;
    m.interference = position.IsMagneticInterference() != 0;
    return m;
}

// One run over a log.
class Run
{
public:
    explicit Run(const MeasureOptions& options)
        : m_options(options), m_position(MakePosition(options)),
          m_summary(SetupOf(options, m_position)),
          m_log(options.log, {.antenna = true, .onBadRow = BadRowHandler()}),
          m_picture(m_summary.Setup().truth), m_progress(m_log.Rows().Size(), tables::Unit::Bytes)
    {
        const bool rowsGoOut = !options.out.empty() || !options.json;
        if (!rowsGoOut) return;
        m_output.emplace(options.out.empty() ? "-" : options.out);
        m_table.emplace(*m_output, m_log, m_summary.Setup().truth);
    }

    int Measure()
    {
        while (m_log.Next()) {
            m_progress.Update(m_log.Rows().BytesRead());
            const auto measurement = MeasureSample(m_position, m_log, m_options.poleLength);
            if (!measurement) {
                m_log.Reject("the values are too large to compute a tip");
                continue;
            }
            m_summary.Add(*measurement);
            if (!m_options.plot.empty()) m_picture.Add(*measurement);
            if (m_table) m_table->Add(*measurement);
        }
        m_progress.Wipe();
        return Conclude();
    }

private:
    std::function<void(const std::string&)> BadRowHandler()
    {
        if (!m_options.skipBad) return {};
        return [this](const std::string& message) {
            if (!m_summary.Skip(message)) return;
            m_progress.Wipe();
            fmt::print(stderr, "{} (skipped)\n", message);
        };
    }

    int Conclude()
    {
        const std::uint64_t unnamed =
            m_summary.Skipped()
            - std::min<std::uint64_t>(m_summary.Skipped(), MeasureSummary::kMostNamed);
        if (unnamed > 0) fmt::print(stderr, "{} more rows were skipped.\n", unnamed);
        if (m_output) m_output->Finish();
        if (m_options.json) WriteJson();
        if (m_summary.Samples() == 0) {
            fmt::print(stderr, "{}: no sample could be measured\n", m_log.Rows().Name());
            return kNegative;
        }
        if (!m_options.plot.empty()) m_picture.Save(m_options.plot, m_summary);
        if (!m_options.json) fmt::print(stderr, "{}", m_summary.Text());
        return kDone;
    }

    void WriteJson()
    {
        using nlohmann::ordered_json;
        tables::Output output("-");
        output.Write(m_summary.Json().dump(2, ' ', false, ordered_json::error_handler_t::replace));
        output.Write("\n");
        output.Finish();
    }

    const MeasureOptions& m_options;
    CInclineSensor_Position m_position;
    MeasureSummary m_summary;
    tables::SampleLog m_log;
    MeasurePicture m_picture;
    tables::Progress m_progress;
    std::optional<tables::Output> m_output;
    std::optional<TipTable> m_table;
};

void AddInputOptions(CLI::App& command, MeasureOptions& options)
{
    command.add_option("LOG", options.log, "Sample log; - is standard input")
        ->required()
        ->type_name("FILE");
    command.add_option("--pole", options.poleLength, "Pole length, antenna to tip [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(PositiveNumber());
    command
        .add_option("--config", options.config,
                    "Parameter file of the calibration; without it, raw readings are used")
        ->type_name("FILE");
    command.add_flag("--partial-config", options.partialConfig,
                     "Accept a parameter file with missing keys, which keep their defaults");
    command
        .add_option("--sensor-type", options.sensorType,
                    "1 (default): x forward, y left, z up the pole; other values: x right, y "
                    "forward, z up. Type 2 also adds the tilt direction to the projection")
        ->type_name("N");
    command
        .add_option("--bias", options.biasA,
                    "Heading bias of magnetometer A [degrees], subtracted from the heading; "
                    "overrides --config")
        ->type_name("ANGLE")
        ->check(FiniteNumber());
    command.add_option("--bias-b", options.biasB, "The same for magnetometer B")
        ->type_name("ANGLE")
        ->check(FiniteNumber());
    command.add_flag("--skip-bad", options.skipBad,
                     "Skip rows that cannot be read; they are listed and counted");
}

void AddOutputOptions(CLI::App& command, MeasureOptions& options)
{
    command.add_option("--truth", options.truth, "True tip [m]; adds the errors of the tips")
        ->type_name("N,E,h")
        ->check(NumberList(3));
    command.add_option("--out", options.out, "Output file of the rows, replaced when complete")
        ->type_name("FILE");
    command.add_option("--plot", options.plot, "Plot of antenna and tips, .png or .svg")
        ->type_name("FILE")
        ->check(PictureName());
    command.add_flag("--json", options.json, "Write the summary as JSON to standard output");
}

} // namespace

void AddMeasureCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<MeasureOptions>();
    CLI::App* const command =
        program.add_subcommand("measure", "Compute the tip of the pole for every sample of a log.");
    command->footer(kFooter);
    AddInputOptions(*command, *options);
    AddOutputOptions(*command, *options);
    command->callback([options, &exitCode] {
        tables::KeepInputs({options->out, options->plot}, {options->log, options->config});
        exitCode = Run(*options).Measure();
    });
}

} // namespace cli
