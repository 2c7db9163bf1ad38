// SPDX-License-Identifier: MIT
#include "apps/cli/job/Job.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/SummaryLine.h"
#include "apps/cli/job/JobExport.h"
#include "apps/cli/job/JobList.h"
#include "apps/cli/job/JobRecompute.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/Ranges.h"
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <memory>
#include <optional>

namespace cli {

namespace {

constexpr const char* kListFooter = R"(
Prints the setups, one line for each stored point and the events. Heights are above the
ellipsoid, standard deviations in millimeters; n is the number of epochs in the mean, q
the quality of GGA and set the setup.

Example:
  tiltpole job list site.gpkg

Exit codes: 0 success, 2 wrong use, or the file is no job.)";

constexpr const char* kExportFooter = R"(
Points that were replaced or declared void are left out; a point that replaces others
has the name of the first one. Formats:
  pnezd      name, northing, easting, height, code; no header
  penzd      name, easting, northing, height, code; no header
  csv        a header and everything that is known of a point
  geojson    RFC 7946: longitude and latitude of WGS 84, height above the ellipsoid
Lengths are in meters with four decimals, latitude and longitude in degrees with ten.
What is not known is left empty.

--crs is a projected system that PROJ knows, such as EPSG:32634, with northing and easting
in meters. pnezd and penzd need it; csv has latitude and longitude without it. The height is
taken as it was stored, above the ellipsoid (--height ellipsoidal) or above the geoid of the
receiver (--height received), never from the system. A summary on standard error names what
PROJ did.

Examples:
  tiltpole job export site.gpkg --format pnezd --crs EPSG:32634 --height received --out site.txt
  tiltpole job export site.gpkg --format geojson --out site.geojson

Exit codes: 0 success, 1 the job has no point, 2 wrong use, or the file is no job.)";

constexpr const char* kRecomputeFooter = R"(
Solves the epochs of stored points again, with another pole length, delay or calibration.
Each result is a new point that replaces the old one; nothing is deleted, and the name under
which a point is exported stays. POINTS are names and ranges with commas between them, such
as 12-40, P3,P7-P9 or all; points that were replaced or declared void are left out.

A point is recomputed if its epochs, with the setup that it was stored with, give the stored
tip again within 1 mm. With another delay, the pose of an epoch is found between those of the
point's epochs, so the first or the last one can drop out.

Examples:
  tiltpole job recompute site.gpkg 12-40 --pole 1.8
  tiltpole job recompute site.gpkg all --delay 0.130,0.007 --dry-run
  tiltpole job recompute site.gpkg P104 --config new-pole.cfg

Exit codes: 0 success, 1 no point could be recomputed, 2 wrong use, or the file is no job.)";

const std::map<std::string, ExportFormat> kFormats{
    {"pnezd",   ExportFormat::Pnezd  },
    {"penzd",   ExportFormat::Penzd  },
    {"csv",     ExportFormat::Csv    },
    {"geojson", ExportFormat::GeoJson}
};
const std::map<std::string, ExportHeight> kHeights{
    {"ellipsoidal", ExportHeight::Ellipsoidal},
    {"received",    ExportHeight::Received   }
};

struct ExportOptions
{
    std::string job;
    std::string format;
    std::string height; // empty: not given
    std::string crs;
    std::string out = "-";
};

int RunList(const std::string& path, bool json)
{
    const field::JobStore job = OpenJob(path, field::JobAccess::Read);
    if (json)
        PrintJson(JobListJson(path, job));
    else
        tables::WriteFile("-", JobListText(path, job));
    return kDone;
}

/// @throws InputError for options that do not fit each other
ExportChoice ChoiceOf(const ExportOptions& options)
{
    ExportChoice choice;
    choice.format = kFormats.at(options.format);
    if (choice.format == ExportFormat::GeoJson) {
        if (!options.crs.empty()) throw tables::InputError("GeoJSON is in WGS 84: leave --crs out");
        if (options.height == "received")
            throw tables::InputError("heights of GeoJSON are above the ellipsoid; h_received_m of "
                                     "a point is the received one");
        return choice;
    }
    if (options.height.empty())
        throw tables::InputError("--height is needed: ellipsoidal or received");
    choice.height = kHeights.at(options.height);
    if (options.crs.empty() && choice.format != ExportFormat::Csv)
        throw tables::InputError("--crs is needed for northing and easting, such as EPSG:32634");
    return choice;
}

std::string NamesOutside(const std::vector<NamedPoint>& points, const Projection& projection)
{
    std::string names;
    for (const NamedPoint& named : points)
        if (!projection.IsMeantFor(named.point.tip))
            names += (names.empty() ? "" : ", ") + named.name;
    return names;
}

void TellProjection(const std::vector<NamedPoint>& points, const std::string& crs,
                    const Projection& projection)
{
    tables::TellText(Line("system", crs + ", " + projection.Title()));
    tables::TellText(Line("by PROJ", projection.Operation()));
    const std::string outside = NamesOutside(points, projection);
    if (!outside.empty()) tables::TellText(Line("outside its area", outside));
}

int RunExport(const ExportOptions& options)
{
    tables::KeepApart({options.out}, {options.job});
    const ExportChoice choice = ChoiceOf(options);
    const field::JobStore job = OpenJob(options.job, field::JobAccess::Read);
    const std::vector<NamedPoint> points = CurrentPointsOf(job);
    for (const NamedPoint& named : points)
        if (!std::isfinite(named.point.tip.latitude))
            throw tables::InputError(
                options.job, "point " + named.name + " has no geometry of a point with a height");
    std::optional<Projection> projection;
    if (!options.crs.empty()) projection.emplace(options.crs);
    const std::string text = ExportText(points, choice, projection ? &*projection : nullptr);
    if (points.empty()) {
        tables::Tell("{}: there is no point to export\n", options.job);
        return kNegative;
    }
    tables::WriteFile(options.out, text);
    tables::TellText(Line("points", fmt::format("{}", points.size())));
    if (projection) TellProjection(points, options.crs, *projection);
    if (choice.format != ExportFormat::GeoJson)
        tables::TellText(Line("heights", choice.height == ExportHeight::Received
                                             ? "above the geoid of the receiver"
                                             : "above the ellipsoid"));
    return kDone;
}

template <class Value>
std::vector<std::string> NamesOf(const std::map<std::string, Value>& values)
{
    std::vector<std::string> names;
    for (const auto& value : values)
        names.push_back(value.first);
    return names;
}

void AddList(CLI::App& job, int& exitCode)
{
    const auto path = std::make_shared<std::string>();
    CLI::App* const command = job.add_subcommand("list", "Print what is in a job.");
    command->footer(kListFooter);
    command->add_option("JOB", *path, "The job")->required()->type_name("FILE");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print JSON instead of text, with every value");
    command->callback([path, json, &exitCode] { exitCode = RunList(*path, *json); });
}

void AddExport(CLI::App& job, int& exitCode)
{
    const auto options = std::make_shared<ExportOptions>();
    CLI::App* const command =
        job.add_subcommand("export", "Write the points of a job as a table or as GeoJSON.");
    command->footer(kExportFooter);
    command->add_option("JOB", options->job, "The job")->required()->type_name("FILE");
    command->add_option("--format", options->format, "pnezd, penzd, csv or geojson")
        ->required()
        ->type_name("FORMAT")
        ->check(CLI::IsMember(NamesOf(kFormats)));
    command->add_option("--crs", options->crs, "Projected system of northing and easting")
        ->type_name("SYSTEM");
    command->add_option("--height", options->height, "ellipsoidal or received")
        ->type_name("HEIGHT")
        ->check(CLI::IsMember(NamesOf(kHeights)));
    command->add_option("--out", options->out, "File to write; default standard output")
        ->type_name("FILE");
    command->callback([options, &exitCode] { exitCode = RunExport(*options); });
}

// SECONDS or SECONDS,SD.
CLI::Validator DelayWithSigma()
{
    return {[](std::string& text) {
                const bool two = text.find(',') != std::string::npos;
                const auto values = tables::ParseNumbers(text, two ? 2 : 1);
                if (!values) return "'" + text + "' is not a delay, or a delay and its sd";
                if (two && !((*values)[1] > 0.0 && (*values)[1] <= 1.0))
                    return std::string("the sd of the delay is not between 0 and 1 s");
                return tables::OutsideOf(tables::kDelay, values->front());
            },
            "", "delay"};
}

void AddRecompute(CLI::App& job, int& exitCode)
{
    const auto options = std::make_shared<RecomputeOptions>();
    CLI::App* const command = job.add_subcommand(
        "recompute", "Compute stored points again, with another pole, delay or calibration.");
    command->footer(kRecomputeFooter);
    command->add_option("JOB", options->job, "The job")->required()->type_name("FILE");
    command->add_option("POINTS", options->points, "Names, ranges or all")
        ->required()
        ->type_name("NAMES");
    command->add_option("--pole", options->pole, "From the tip to the antenna reference point [m]")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    command
        ->add_option("--delay", options->delay,
                     "Of the antenna behind the pose, and its standard deviation [s]")
        ->type_name("SECONDS[,SD]")
        ->check(DelayWithSigma());
    command->add_option("--config", options->config, "Parameter file of the calibration")
        ->type_name("FILE");
    command->add_flag("--dry-run", options->dryRun, "Print the result without storing it");
    command->callback([options, &exitCode] { exitCode = RunRecompute(*options); });
}

} // namespace

void AddJobCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const job =
        program.add_subcommand("job", "List, export and recompute the points of a job.");
    job->require_subcommand(1);
    AddList(*job, exitCode);
    AddExport(*job, exitCode);
    AddRecompute(*job, exitCode);
}

} // namespace cli
