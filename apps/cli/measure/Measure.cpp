// SPDX-License-Identifier: MIT
#include "apps/cli/measure/Measure.h"

#include "apps/cli/ColumnsOption.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/SensorOptions.h"
#include "apps/cli/measure/FieldWatch.h"
#include "apps/cli/measure/MeasurePicture.h"
#include "apps/cli/measure/TipTable.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/Progress.h"
#include "apps/tables/SampleLog.h"
#include "field/ExactAttitude.h"
#include "survey/Correction.h"
#include <cmath>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

struct MeasureOptions
{
    std::string log;
    tables::ColumnChoice columns;
    double poleLength = 0.0;
    std::string config;
    bool partialConfig = false;
    int sensorType = 1;
    std::optional<double> biasA;
    std::optional<double> biasB;
    std::string truth; // N,E,h
    std::string out;   // empty: standard output
    std::string plot;
    std::string field; // STRENGTH,DIP
    bool turns = false;
    bool exact = false;
    bool skipBad = false;
    bool json = false;
};

constexpr const char* kFooter = R"(
The log is a text file with a header that names the columns and one row per sample:
  dPitch, dRoll                    inclination of the pole [degrees]
  dMag_x, dMag_y, dMag_z           magnetometer A [counts]
  dMag_x_2, dMag_y_2, dMag_z_2     magnetometer B [counts]
  N, E, h or x, y, h               antenna: N (x), E (y) and height [m]; rows on which all three
                                   are blank have no tip and are counted
  point                            names of points; the mean tip is given for each
Names may be spelt as in Northing [m], antenna_N_m or mag_a_x; --columns names others. Two
columns that could both be meant are an error. Time (hh:mm:ss) and the sensor's other
columns are read if present; columns with other names are carried through to the result.
Fields are separated by , ; TAB or blanks and the decimal sign is a point.

The result has one row per sample. These columns follow the carried ones:
  antenna_N_m, antenna_E_m, antenna_h_m           antenna: N (x), E (y), height
  tip_N_m, tip_E_m, tip_h_m                       tip of the pole: N (x), E (y), height
  heading_A_deg, heading_B_deg, heading_Y_deg     from magnetometer A, from B, and A minus
                                                  the tilt direction
  tilt_deg                                        from the plumb line
  still, interference                             1 or 0
with --field, field_strength, field_dip_deg and field_disturbed (1 or 0);
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

field::PitchRoll MeaningOf(const MeasureOptions& options)
{
    return options.turns ? field::PitchRoll::Turns : field::PitchRoll::Slopes;
}

MeasureSetup SetupOf(const MeasureOptions& options, const CInclineSensor_Position& position)
{
    MeasureSetup setup{options.log,
                       options.config,
                       options.poleLength,
                       options.sensorType,
                       position.GetMagneticBiasAngle_A(),
                       position.GetMagneticBiasAngle_B(),
                       std::nullopt,
                       std::nullopt};
    if (options.exact) setup.exact = MeaningOf(options);
    if (const auto truth = tables::ParseNumbers(options.truth, 3)) {
        setup.truth = xyhCoordinate{(*truth)[0], (*truth)[1], (*truth)[2]};
    }
    return setup;
}

FieldWatchSetup WatchSetup(const MeasureOptions& options, const CInclineSensor_Position& position)
{
    FieldWatchSetup setup;
    const std::vector<double> shape = tables::ParseNumbers(options.field, 2).value();
    setup.expected = {shape[0], shape[1]};
    setup.meaning = MeaningOf(options);
    setup.sensorType = options.sensorType;
    setup.a = position.GetMagneticCorrectPar_A();
    setup.b = position.GetMagneticCorrectPar_B();
    return setup;
}

// In [0, 360).
double InTurn(double angle)
{
    const double turned = std::fmod(angle, 360.0);
    return turned < 0.0 ? turned + 360.0 : turned;
}

bool IsFinite(const Measurement& m)
{
    return std::isfinite(m.tip.x) && std::isfinite(m.tip.y) && std::isfinite(m.tip.h)
           && std::isfinite(m.pose.dYaw) && std::isfinite(m.pose.dYaw_2);
}

// Headings of both magnetometers by the exact attitude, and the tip by that of A.
void MakeExact(Measurement& m, const CInclineSensor_Position& position, const MeasureSetup& setup)
{
    const field::Tilt tilt{m.pose.dPitch, m.pose.dRoll, *setup.exact, setup.sensorType};
    const survey::Reading a = survey::Corrected(position.GetMagneticCorrectPar_A(),
                                                survey::ReadingOf(m.pose, survey::Magnetometer::A));
    const survey::Reading b = survey::Corrected(position.GetMagneticCorrectPar_B(),
                                                survey::ReadingOf(m.pose, survey::Magnetometer::B));
    const double headingY = m.pose.dYaw_Y - m.pose.dYaw;
    m.pose.dYaw = InTurn(field::MagneticHeading(tilt, {a.x, a.y, a.z}) - setup.biasA);
    m.pose.dYaw_2 = InTurn(field::MagneticHeading(tilt, {-b.x, -b.y, b.z}) - setup.biasB);
    m.pose.dYaw_Y = InTurn(m.pose.dYaw + headingY);
    m.tip = field::ExactTip(m.antenna, setup.poleLength, tilt, m.pose.dYaw);
}

std::optional<Measurement> MeasureSample(CInclineSensor_Position& position,
                                         const tables::SampleLog& log, const MeasureSetup& setup)
{
    Measurement m{log.Antenna(), log.Antenna(), log.Pose(), 0.0, false, false, {}};
    if (position.Position(m.pose, setup.poleLength, m.tip) != 1) return std::nullopt;
    if (setup.exact) MakeExact(m, position, setup);
    if (!IsFinite(m)) return std::nullopt;
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
          m_summary(SetupOf(options, m_position)), m_log(options.log, {.antenna = true,
                                                                       .blankAntenna = true,
                                                                       .onBadRow = BadRowHandler(),
                                                                       .columns = options.columns}),
          m_point(m_log.Rows().Find("point")), m_picture(m_summary.Setup().truth),
          m_progress(m_log.Rows().Size(), tables::Unit::Bytes)
    {
        if (!options.field.empty()) m_watch.emplace(WatchSetup(options, m_position), m_log);
        m_summary.SetColumns(tables::DescribeColumns(m_log.Rows(), m_log.UsedColumns()));
        const bool rowsGoOut = !options.out.empty() || !options.json;
        if (!rowsGoOut) return;
        tables::Output& rows = m_files.Open(options.out.empty() ? "-" : options.out);
        m_table.emplace(rows, m_log, m_summary.Setup().truth, m_watch.has_value());
    }

    int Measure()
    {
        while (m_log.Next()) {
            m_progress.Update(m_log.Rows().BytesRead());
            MeasureRow();
        }
        m_progress.Wipe();
        return Conclude();
    }

private:
    // A row without an antenna position still says whether the pole is still and the field quiet.
    void MeasureRow()
    {
        auto measurement = MeasureSample(m_position, m_log, m_summary.Setup());
        if (!measurement) {
            m_log.Reject(m_options.exact
                             ? "the values are too large, or pitch and roll too steep, for a tip"
                             : "the values are too large to compute a tip");
            return;
        }
        if (m_watch) measurement->field = m_watch->Add(m_log.Pose());
        if (!m_log.HasAntenna()) return m_summary.PassWithoutAntenna();
        const auto name = m_point ? std::optional(m_log.Rows().Field(*m_point)) : std::nullopt;
        m_summary.Add(*measurement, name);
        if (!m_options.plot.empty()) m_picture.Add(*measurement);
        if (m_table) m_table->Add(*measurement);
    }

    std::function<void(const std::string&)> BadRowHandler()
    {
        if (!m_options.skipBad) return {};
        return [this](const std::string& message) {
            if (!m_summary.Skip(message)) return;
            m_progress.Wipe();
            tables::Tell("{} (skipped)\n", message);
        };
    }

    int Conclude()
    {
        const std::uint64_t unnamed =
            m_summary.Skipped()
            - std::min<std::uint64_t>(m_summary.Skipped(), MeasureSummary::kMostNamed);
        if (unnamed > 0) tables::Tell("{} more rows were skipped.\n", unnamed);
        const bool draws = !m_options.plot.empty() && m_summary.Samples() > 0;
        if (draws) m_picture.Save(m_files, m_options.plot, m_summary);
        m_files.Finish();
        if (m_options.json) PrintJson(Json());
        if (m_summary.Samples() == 0) {
            tables::Tell("{}: no sample could be measured{}\n", m_log.Rows().Name(),
                         m_summary.WithoutAntenna() > 0 ? ": no row has an antenna position" : "");
            return kNegative;
        }
        if (!m_options.json) tables::TellText(m_summary.Text() + (m_watch ? m_watch->Text() : ""));
        return kDone;
    }

    nlohmann::ordered_json Json()
    {
        nlohmann::ordered_json json = m_summary.Json();
        if (m_watch && m_summary.Samples() > 0) json["field"] = m_watch->Json();
        return json;
    }

    const MeasureOptions& m_options;
    CInclineSensor_Position m_position;
    MeasureSummary m_summary;
    tables::SampleLog m_log;
    std::optional<std::size_t> m_point; // column with the names of points
    std::optional<FieldWatch> m_watch;
    MeasurePicture m_picture;
    tables::Progress m_progress;
    tables::OutputFiles m_files;
    std::optional<TipTable> m_table;
};

void AddInputOptions(CLI::App& command, MeasureOptions& options)
{
    command.add_option("LOG", options.log, "Sample log; - is standard input")
        ->required()
        ->type_name("FILE");
    AddColumnsOption(command, options.columns, {"N", "E", "h"}, tables::SampleLog::ColumnKeys());
    command.add_option("--pole", options.poleLength, "Pole length, antenna to tip [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    AddConfigOptions(command, options.config, options.partialConfig);
    AddSensorTypeOption(command, options.sensorType,
                        ". Type 2 also adds the tilt direction to the projection");
    AddBiasOption(command, options.biasA);
    command.add_option("--bias-b", options.biasB, "The same for magnetometer B")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngle));
    AddFieldOption(command, options.field, "marks the samples whose field differs");
    command
        .add_option_function<std::string>(
            "--attitude", [&options](const std::string& word) { options.exact = word == "exact"; },
            "standard (default): heading and tip by the library's position class, which is off by "
            "14 mm at a lean of 20 degrees and more beyond; exact: see --pitch-roll")
        ->check(CLI::IsMember({"standard", "exact"}))
        ->type_name("WORD");
    command
        .add_option_function<std::string>(
            "--pitch-roll",
            [&options](const std::string& word) { options.turns = word == "turns"; },
            "What pitch and roll are, for --attitude exact and --field: slopes (default) of the "
            "forward and the left axis, or turns")
        ->check(CLI::IsMember({"slopes", "turns"}))
        ->type_name("WORD");
    command.add_flag("--skip-bad", options.skipBad,
                     "Skip rows that cannot be read; they are listed and counted");
}

void AddOutputOptions(CLI::App& command, MeasureOptions& options)
{
    command.add_option("--truth", options.truth, "True tip [m]; adds the errors of the tips")
        ->type_name("N,E,h")
        ->check(PointInSpace());
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
        const bool usesStandardOutput = options->json || options->out.empty();
        tables::KeepApart({usesStandardOutput ? "-" : "", options->out, options->plot},
                          {options->log, options->config});
        exitCode = Run(*options).Measure();
    });
}

} // namespace cli
