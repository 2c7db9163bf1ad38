// SPDX-License-Identifier: MIT
#include "apps/cli/Solve.h"

#include "apps/cli/Csv.h"
#include "apps/cli/Numbers.h"
#include "apps/cli/Output.h"
#include "apps/cli/Plot.h"
#include "apps/cli/Progress.h"
#include "apps/cli/SolvePicture.h"
#include "apps/cli/SolveReport.h"
#include <fmt/format.h>
#include <memory>

namespace cli {

namespace {

struct SolveOptions
{
    SolveSetup setup;
    std::string plot;
    bool json = false;
};

constexpr const char* kFooter = R"(
The tip of the pole stays on one point while the antenna is observed at many tilts. The
file is text with one row for each observation and a header that names the columns:
  N, E, h     antenna: northing, easting, height [m]; x, y, h mean the same in this order
  incline     tilt of the pole from the plumb line [degrees]; may be missing or empty
  name        may be missing: rows are then called by their line
Other columns are passed over. Fields are separated by , or ; and the decimal sign is a
point. Coordinates are always read and written in the order N, E, h.

Every position is said to be taken or refused: one that leans by more than --cutoff is
refused, and one closer in plan to a taken position than 0.15 antenna heights (0.5 m where
that is below 0.1 m).

Two results follow. The search visits every combination of four positions, takes one step
from each and grades the best: grade 1 is accepted, a negative grade says what is wrong.
The least-squares tip uses all positions at once with the antenna height as radius, and
states a 95 % ellipse in plan, a 95 % height interval, its largest residual and a warning
for narrow cones. The last sentence says which one to store and why.

Examples:
  tiltpole solve points.csv --height 2.0
  tiltpole solve points.csv --height 1.8 --cutoff 30 --plot tip.svg
  tiltpole solve points.csv --height 2.0 --json | jq .estimate.tip

Exit codes: 0 a tip is worth storing, 1 it is not, 2 wrong use or unreadable input.)";

std::size_t Coordinate(const CsvReader& csv, const char* name, const char* otherName)
{
    if (const auto column = csv.Find(name)) return *column;
    if (const auto column = csv.Find(otherName)) return *column;
    return csv.Require(name);
}

std::vector<AntennaRow> ReadRows(const std::string& path)
{
    CsvReader csv(path);
    const std::size_t north = Coordinate(csv, "N", "x");
    const std::size_t east = Coordinate(csv, "E", "y");
    const std::size_t height = csv.Require("h");
    const auto incline = csv.Find("incline");
    const auto name = csv.Find("name");
    std::vector<AntennaRow> rows;
    while (csv.Next()) {
        AntennaRow row;
        row.line = csv.Line();
        row.name = name ? std::string(csv.Field(*name)) : fmt::format("line {}", row.line);
        row.antenna = {csv.Number(north), csv.Number(east), csv.Number(height)};
        if (incline && !Trim(csv.Field(*incline)).empty()) row.incline = csv.Number(*incline);
        rows.push_back(std::move(row));
    }
    return rows;
}

int Run(const SolveOptions& options)
{
    KeepInputs({options.plot}, {options.setup.file});
    constexpr double kSteps = 1e6;
    Progress meter(static_cast<std::uint64_t>(kSteps), Unit::None);
    const SolvedTip solved =
        SolveTip(options.setup, ReadRows(options.setup.file), [&](double fraction) {
            meter.Update(static_cast<std::uint64_t>(fraction * kSteps));
        });
    meter.Wipe();
    if (!options.plot.empty()) SaveSolvePicture(options.plot, solved);

    using nlohmann::ordered_json;
    Output output("-");
    output.Write(options.json
                     ? SolveJson(solved).dump(2, ' ', false, ordered_json::error_handler_t::replace)
                           + "\n"
                     : SolveText(solved));
    output.Finish();
    return solved.estimate.verdict == quality::TipVerdict::Store ? kDone : kNegative;
}

} // namespace

void AddSolveCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<SolveOptions>();
    SolveSetup& setup = options->setup;
    CLI::App* const command =
        program.add_subcommand("solve", "The tip from many antenna positions about it.");
    command->footer(kFooter);
    command->add_option("POINTS", setup.file, "Antenna positions; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("--height", setup.antennaHeight, "Antenna height above the tip [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(PositiveNumber());
    command->add_option("--cutoff", setup.cutoff, "Largest incline [degrees]; default 45")
        ->type_name("ANGLE")
        ->check(FiniteNumber());
    command
        ->add_option(
            "--plan-error", setup.errors.plan,
            "Standard deviation of antenna N and E each [m]; default 0.008. Only its ratio "
            "to --height-error counts")
        ->type_name("LENGTH")
        ->check(PositiveNumber());
    command
        ->add_option("--height-error", setup.errors.height,
                     "Standard deviation of the antenna's height [m]; default 0.015")
        ->type_name("LENGTH")
        ->check(PositiveNumber());
    command
        ->add_option("--plot", options->plot,
                     "Picture of antennas, tips and residuals, .png or .svg")
        ->type_name("FILE")
        ->check(PictureName());
    command->add_flag("--json", options->json, "Results as JSON");
    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace cli
