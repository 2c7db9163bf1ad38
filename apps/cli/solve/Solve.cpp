// SPDX-License-Identifier: MIT
#include "apps/cli/solve/Solve.h"

#include "apps/cli/ColumnsOption.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/solve/SolvePicture.h"
#include "apps/cli/solve/SolveReport.h"
#include "apps/tables/ColumnNames.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/Progress.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include <fmt/format.h>
#include <memory>

namespace cli {

namespace {

struct SolveOptions
{
    SolveSetup setup;
    tables::ColumnChoice columns;
    std::string plot;
    bool json = false;
};

constexpr const char* kFooter = R"(
The tip of the pole stays on one point while the antenna is observed at many tilts. The
input is a text file with a header that names the columns and one row per observation:
  N, E, h     antenna: northing, easting, height [m]; x is N and y is E
  incline     tilt of the pole from the plumb line [degrees]; optional, may be empty
  name        optional; without it, rows are identified by their line
Names may be spelt as in Northing [m] or antenna_N_m, as tiltpole measure writes them;
--columns names others. Two columns that could both be meant are an error. Other columns
are ignored. Fields are separated by , ; TAB or blanks and the decimal sign is a point.
Coordinates are always read and written in the order N, E, h.

Positions are rejected when they lean by more than --cutoff, or when they are closer in
plan to an accepted position than 0.15 antenna heights (0.5 m where that is below 0.1 m).
The report lists every position as accepted or rejected.

There are two results. The search tries every combination of four positions, takes one
step from each and grades the best: grade 1 is accepted, a negative grade states a
problem. The least-squares tip uses all positions at once with the antenna height as
radius; it comes with a 95 % ellipse in plan, a 95 % height interval, its largest residual
and a warning for narrow cones. Ellipse and interval rest on the stated errors: residuals
can widen them, never narrow them. Errors that all positions share, and a wrong antenna
height, leave no residuals and count as stated. The last sentence recommends which tip to
store.

Examples:
  tiltpole solve points.csv --height 2.0
  tiltpole solve points.csv --height 1.8 --cutoff 30 --plot tip.svg
  tiltpole solve points.csv --height 2.0 --json | jq .estimate.tip.n_m

Exit codes: 0 a tip can be stored, 1 it cannot, 2 wrong use or unreadable input.)";

constexpr tables::Quantity kIncline{"incline", tables::ColumnUnit::Degrees,
                                    "incline inclination tilt", ""};
constexpr tables::Quantity kName{"name", tables::ColumnUnit::None, "name label point", ""};

// The rows of the table; `columns` tells which columns were read.
std::vector<AntennaRow> ReadRows(const SolveOptions& options, std::string& columns)
{
    tables::CsvReader csv(options.setup.file, tables::kMostInMemory);
    std::vector<std::string> missing;
    const auto point = tables::FindPointColumns(csv, options.columns, missing);
    if (!point) throw csv.MissingColumns(missing);
    const auto incline = tables::FindColumn(csv, kIncline, options.columns);
    const auto name = tables::FindColumn(csv, kName, options.columns);
    std::vector<std::pair<std::string, std::size_t>> used = {
        {"N", point->north },
        {"E", point->east  },
        {"h", point->height}
    };
    if (incline) used.emplace_back(kIncline.key, *incline);
    if (name) used.emplace_back(kName.key, *name);
    columns = tables::DescribeColumns(csv, used);
    std::vector<AntennaRow> rows;
    while (csv.Next()) {
        AntennaRow row;
        row.line = csv.Line();
        row.name = name ? std::string(csv.Field(*name)) : fmt::format("line {}", row.line);
        row.antenna = {tables::NumberIn(csv, point->north, tables::kCoordinate),
                       tables::NumberIn(csv, point->east, tables::kCoordinate),
                       tables::NumberIn(csv, point->height, tables::kHeight)};
        if (incline && !tables::Trim(csv.Field(*incline)).empty())
            row.incline = tables::NumberIn(csv, *incline, tables::kAngle);
        rows.push_back(std::move(row));
    }
    return rows;
}

int Run(const SolveOptions& options)
{
    tables::KeepApart({"-", options.plot}, {options.setup.file});
    constexpr double kSteps = 1e6;
    tables::Progress meter(static_cast<std::uint64_t>(kSteps), tables::Unit::None);
    SolveSetup setup = options.setup;
    std::vector<AntennaRow> rows = ReadRows(options, setup.columns);
    const SolvedTip solved = SolveTip(setup, std::move(rows), [&](double fraction) {
        meter.Update(static_cast<std::uint64_t>(fraction * kSteps));
    });
    meter.Wipe();
    if (!options.plot.empty()) SaveSolvePicture(options.plot, solved);

    if (options.json) {
        PrintJson(SolveJson(solved));
    } else {
        tables::WriteFile("-", SolveText(solved));
    }
    return solved.estimate.verdict == quality::TipVerdict::Store ? kDone : kNegative;
}

} // namespace

void AddSolveCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<SolveOptions>();
    SolveSetup& setup = options->setup;
    CLI::App* const command =
        program.add_subcommand("solve", "Compute the tip from many antenna positions around it.");
    command->footer(kFooter);
    command->add_option("POINTS", setup.file, "Antenna positions; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("--height", setup.antennaHeight, "Antenna height above the tip [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    AddColumnsOption(*command, options->columns, {"N", "E", "h"}, {kIncline.key, kName.key});
    command->add_option("--cutoff", setup.cutoff, "Largest incline [degrees]; default 45")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kCutoff));
    command
        ->add_option("--plan-error", setup.errors.plan,
                     "Standard deviation of antenna N and E each, from position to position [m]; "
                     "default 0.008")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviation));
    command
        ->add_option("--height-error", setup.errors.height,
                     "Standard deviation of the antenna's height, likewise [m]; default 0.015")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviation));
    command
        ->add_option("--shared-plan-error", setup.errors.sharedPlan,
                     "Standard deviation of what all antenna N, and all E, have in common [m]; "
                     "default 0.003")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviationOrZero));
    command
        ->add_option("--shared-height-error", setup.errors.sharedHeight,
                     "Standard deviation of what all antenna heights have in common [m]; default "
                     "0.0105")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviationOrZero));
    command
        ->add_option("--antenna-height-error", setup.errors.antennaHeight,
                     "Standard deviation of the --height given [m]; default 0.002")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviationOrZero));
    command
        ->add_option("--plot", options->plot, "Plot of antennas, tips and residuals, .png or .svg")
        ->type_name("FILE")
        ->check(PictureName());
    command->add_flag("--json", options->json, "Print the results as JSON");
    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace cli
