// SPDX-License-Identifier: MIT
#include "apps/cli/transform/Transform.h"

#include "apps/cli/ColumnsOption.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/transform/TransformPairs.h"
#include "apps/cli/transform/TransformReport.h"
#include "apps/tables/ColumnNames.h"
#include "apps/tables/CsvField.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include <fmt/format.h>
#include <memory>
#include <utility>

namespace cli {

namespace {

struct FitOptions
{
    std::string pairs;
    tables::ColumnChoice columns;
    std::string only; // COLUMN=VALUE, or empty
    std::vector<std::string> drop;
    FitLimits limits;
    bool acceptUnchecked = false;
    std::string out;
    bool json = false;
};

struct ApplyOptions
{
    std::string points;
    std::string parameters;
    tables::ColumnChoice columns;
    std::string out;
    bool inverse = false;
    bool json = false;
};

constexpr tables::Range kScaleLimit{0.0, 1e12, "ppm"};

constexpr const char* kFitFooter = R"(
The input is a text file with a header that names the columns and one row per point:
  x_source, y_source    the point in the first system [m]
  x_target, y_target    the same point in the second system [m]
  name                  optional; without it, rows are identified by their line
Which coordinate is x does not matter as long as all four columns agree. N_source, from_N or
Northing_source [m] and so on are x, E_source and so on y; --columns names others.
Coordinates lie between -1e8 and 1e8 m.

The transform is x' = k(cos t x - sin t y) + dx, y' = k(sin t x + cos t y) + dy; the angle t
counts from x toward y. The fit needs two pairs whose source points differ; with three or
more it is repeated without each pair in turn. tiltpole transform apply accepts the file
written by --out and the output of --json.

The fit is refused, and nothing written, when the scale or a residual is beyond its limit,
when a pair does not belong to the others, or when the axes look exchanged or mirrored. Two
pairs leave no redundancy: only the scale is checked. Such a fit, and one whose points lie on
a line, is unchecked and only written with --accept-unchecked.

Examples:
  tiltpole transform fit pairs.csv --out local.json
  tiltpole transform fit pairs.csv --drop P7 --drop 12 --out local.json
  tiltpole transform fit icgc_similarity.csv --only direction=forward --json

Exit codes: 0 success, 1 the fit is refused, unchecked or impossible, 2 wrong use or unreadable input.)";

constexpr const char* kApplyFooter = R"(
The input is a text file with a header that names the columns. Coordinates are N and E, x
and y, or pairs such as antenna_N_m and antenna_E_m, tip_N_m and tip_E_m: every pair is
transformed, or the one that --columns names. All other columns are carried through.
Coordinates are written to 0.1 mm; before and after the transform they lie between -1e8
and 1e8 m. The parameter file is JSON as tiltpole transform fit writes it:
  {"scale": 1, "rotation_rad": 0, "dx_m": 0, "dy_m": 0}
and may contain the rotation center x0_m, y0_m of the forward direction.

Examples:
  tiltpole transform apply --parameters local.json points.csv --out transformed.csv
  tiltpole transform apply --inverse --parameters local.json --columns E,N points.csv

Exit codes: 0 success, 2 wrong use or unreadable input.)";

bool SourcesDiffer(const std::vector<PairRow>& rows)
{
    for (const PairRow& row : rows) {
        if (row.pair.xSource != rows.front().pair.xSource
            || row.pair.ySource != rows.front().pair.ySource)
            return true;
    }
    return false;
}

std::string ParameterFileText(const Magnetic_FourParameter& parameters)
{
    nlohmann::ordered_json json = JsonHeader("transform parameters");
    json.update(ParametersJson(parameters));
    return JsonText(json);
}

int RunFit(const FitOptions& options)
{
    tables::KeepApart({"-", options.out}, {options.pairs});
    std::vector<PairRow> rows = ReadPairs(options.pairs, options.columns, options.only);
    DropPairs(rows, options.drop, options.pairs);
    if (!SourcesDiffer(rows)) {
        tables::Tell("{}: a fit needs two pairs with different source points\n", options.pairs);
        return kNegative;
    }
    const FitReport report{options.pairs, FitTransform(std::move(rows)), options.limits,
                           options.drop, options.acceptUnchecked};
    const FitJudgment judgment = JudgeFit(report.fit, options.limits);
    const bool mayBeUsed = MayBeUsed(judgment.verdict, options.acceptUnchecked);
    if (!options.out.empty() && mayBeUsed)
        tables::WriteFile(options.out, ParameterFileText(report.fit.parameters));
    if (options.json) {
        PrintJson(FitJson(report, judgment));
    } else {
        tables::WriteFile("-", FitText(report, judgment));
    }
    if (mayBeUsed) return kDone;
    if (!options.out.empty()) {
        tables::Tell("{}: not written, because the fit is {}\n", options.out,
                     judgment.verdict == FitVerdict::Refused
                         ? "refused"
                         : "unchecked (--accept-unchecked writes it)");
    }
    return kNegative;
}

// Every pair of coordinates in the table: a table of measure has antennas and tips.
std::vector<tables::PlaneColumns> CoordinateColumns(const ApplyOptions& options,
                                                    const tables::CsvReader& csv)
{
    const tables::PlaneQuantity plane{"x", "y", "antenna tip"};
    auto pairs = tables::FindPlanePairs(csv, plane, options.columns);
    for (std::size_t i = 1; i < pairs.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            if (pairs[i].tag == pairs[k].tag)
                throw csv.HeaderError(
                    fmt::format("x could be the column {} or the column {}: choose with --columns",
                                csv.Columns()[pairs[k].first], csv.Columns()[pairs[i].first]));
    if (pairs.empty()) throw csv.MissingColumns({"N (or x)", "E (or y)"});
    return pairs;
}

nlohmann::ordered_json ApplyJson(const ApplyOptions& options, const tables::CsvReader& csv,
                                 const std::vector<tables::PlaneColumns>& pairs, std::uint64_t rows)
{
    nlohmann::ordered_json json = JsonHeader("transform apply");
    json["file"] = options.points;
    json["parameter_file"] = options.parameters;
    json["inverse"] = options.inverse;
    json["out"] =
        options.out.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(options.out);
    json["columns"] = nlohmann::ordered_json::array();
    for (const tables::PlaneColumns& pair : pairs)
        json["columns"].push_back({
            {"x", csv.Columns()[pair.first] },
            {"y", csv.Columns()[pair.second]}
        });
    json["rows"] = rows;
    return json;
}

// Parameters of another region or unit lead off the planet.
void RefuseTransformed(const tables::CsvReader& csv, std::size_t column, double value)
{
    const std::string problem = tables::OutsideOf(tables::kCoordinate, value);
    if (!problem.empty()) throw csv.Error("transformed, " + csv.Columns()[column] + ' ' + problem);
}

int RunApply(const ApplyOptions& options)
{
    const bool usesStandardOutput = options.json || options.out.empty();
    tables::KeepApart({usesStandardOutput ? "-" : "", options.out},
                      {options.points, options.parameters});
    const Magnetic_FourParameter p = ReadParameters(options.parameters);
    CMagneticConvert convert;
    convert.SetFourParameter(p.dDx, p.dDy, p.dRotate, p.dScale, p.dX0, p.dY0);
    if (options.inverse && (p.dX0 != 0.0 || p.dY0 != 0.0))
        tables::Tell("The rotation center is not used by --inverse.\n");

    tables::CsvReader csv(options.points);
    const auto pairs = CoordinateColumns(options, csv);
    std::optional<tables::Output> output;
    if (!options.out.empty() || !options.json)
        output.emplace(options.out.empty() ? "-" : options.out);
    std::uint64_t rows = 0;
    fmt::memory_buffer line;
    const auto writeLine = [&](const auto& field) {
        line.clear();
        for (std::size_t k = 0; k < csv.Columns().size(); ++k) {
            if (k > 0) line.push_back(',');
            tables::AppendField(line, field(k));
        }
        line.push_back('\n');
        if (output) output->Write({line.data(), line.size()});
    };
    writeLine([&](std::size_t k) { return std::string_view(csv.Columns()[k]); });
    while (csv.Next()) {
        std::vector<std::string> fields;
        for (std::size_t k = 0; k < csv.Columns().size(); ++k)
            fields.emplace_back(csv.Field(k));
        for (const tables::PlaneColumns& pair : pairs) {
            double x = tables::NumberIn(csv, pair.first, tables::kCoordinate);
            double y = tables::NumberIn(csv, pair.second, tables::kCoordinate);
            options.inverse ? convert.XYtoXY1(x, y) : convert.XYtoXY(x, y);
            RefuseTransformed(csv, pair.first, x);
            RefuseTransformed(csv, pair.second, y);
            fields[pair.first] = fmt::format("{:.4f}", x);
            fields[pair.second] = fmt::format("{:.4f}", y);
        }
        writeLine([&](std::size_t k) { return std::string_view(fields[k]); });
        ++rows;
    }
    if (output) output->Finish();
    if (options.json) PrintJson(ApplyJson(options, csv, pairs, rows));
    return kDone;
}

CLI::Validator ColumnEqualsValue()
{
    return {[](const std::string& text) {
                const auto equals = text.find('=');
                const bool fits = equals != std::string::npos && equals > 0;
                return fits ? std::string() : text + " is not COLUMN=VALUE";
            },
            "", "column equals value"};
}

void AddFit(CLI::App& transform, int& exitCode)
{
    const auto options = std::make_shared<FitOptions>();
    CLI::App* const command =
        transform.add_subcommand("fit", "Fit scale, rotation and shift to point pairs.");
    command->footer(kFitFooter);
    command->add_option("PAIRS", options->pairs, "Point pairs; - is standard input")
        ->required()
        ->type_name("FILE");
    AddColumnsOption(*command, options->columns, {"x_source", "y_source", "x_target", "y_target"},
                     {kPairName.key});
    command->add_option("--only", options->only, "Use only rows with this value in this column")
        ->type_name("COLUMN=VALUE")
        ->check(ColumnEqualsValue());
    command
        ->add_option("--drop", options->drop, "Leave out the pair of this name or line; repeatable")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME_OR_LINE");
    command
        ->add_option("--scale-limit", options->limits.scale,
                     "Largest difference of the scale from 1 [ppm]; default 1000")
        ->type_name("PPM")
        ->check(NumberIn(kScaleLimit));
    command
        ->add_option("--residual-limit", options->limits.residual,
                     "Largest residual of a pair [m]; default 0.05")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviation));
    command->add_flag("--accept-unchecked", options->acceptUnchecked,
                      "Accept a fit that the pairs cannot check");
    command
        ->add_option("--out", options->out,
                     "Output file of the parameters, replaced when complete and accepted")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Print the results as JSON");
    command->callback([options, &exitCode] { exitCode = RunFit(*options); });
}

void AddApply(CLI::App& transform, int& exitCode)
{
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App* const command = transform.add_subcommand("apply", "Transform the points of a file.");
    command->footer(kApplyFooter);
    command->add_option("POINTS", options->points, "Points; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("--parameters", options->parameters, "Parameter file, JSON")
        ->required()
        ->type_name("FILE");
    AddColumnsOption(*command, options->columns, {"x", "y"});
    command->add_option("--out", options->out, "Output file of the rows, replaced when complete")
        ->type_name("FILE");
    command->add_flag("--inverse", options->inverse,
                      "Transform from the second system back to the first");
    command->add_flag("--json", options->json,
                      "Print what was done as JSON; rows are then only written to --out");
    command->callback([options, &exitCode] { exitCode = RunApply(*options); });
}

} // namespace

void AddTransformCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command =
        program.add_subcommand("transform", "Fit or apply a plane similarity transform.");
    command->require_subcommand(1);
    AddFit(*command, exitCode);
    AddApply(*command, exitCode);
}

} // namespace cli
