// SPDX-License-Identifier: MIT
#include "apps/cli/transform/Transform.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/transform/TransformReport.h"
#include "apps/tables/Csv.h"
#include "apps/tables/CsvField.h"
#include "apps/tables/Output.h"
#include "apps/tables/ReadFile.h"
#include <fmt/format.h>
#include <memory>
#include <utility>

namespace cli {

namespace {

struct FitOptions
{
    std::string pairs;
    std::string only; // COLUMN=VALUE, or empty
    std::string out;
    bool json = false;
};

struct ApplyOptions
{
    std::string points;
    std::string parameters;
    std::vector<std::string> columns; // of x and y, or empty
    std::string out;
    bool inverse = false;
};

constexpr const char* kFitFooter = R"(
The input is a text file with a header that names the columns and one row per point:
  x_source, y_source    the point in the first system [m]
  x_target, y_target    the same point in the second system [m]
  name                  optional; without it, rows are identified by their line
Which coordinate is x does not matter as long as all four columns agree.

The transform is x' = k(cos t x - sin t y) + dx, y' = k(sin t x + cos t y) + dy; the angle t
counts from x toward y. The fit needs two pairs whose source points differ; with three or
more it is repeated without each pair in turn. tiltpole transform apply accepts the file
written by --out and the output of --json.

Examples:
  tiltpole transform fit pairs.csv --out local.json
  tiltpole transform fit icgc_similarity.csv --only direction=forward --json

Exit codes: 0 success, 1 the pairs do not allow a fit, 2 wrong use or unreadable input.)";

constexpr const char* kApplyFooter = R"(
The input is a text file with a header that names the columns. The two coordinate columns
are replaced, all others are carried through. Coordinates are written to 0.1 mm. The
parameter file is JSON as tiltpole transform fit writes it:
  {"scale": 1, "rotation": 0, "dx": 0, "dy": 0}        rotation in radians, dx and dy in m
and may contain the rotation center x0, y0 of the forward direction.

Examples:
  tiltpole transform apply --parameters local.json points.csv --out transformed.csv
  tiltpole transform apply --inverse --parameters local.json --columns E,N points.csv

Exit codes: 0 success, 2 wrong use or unreadable input.)";

// Selects the rows with this text in this column.
struct RowFilter
{
    std::size_t column;
    std::string value;
};

std::optional<RowFilter> FilterOf(const std::string& only, const tables::CsvReader& csv)
{
    if (only.empty()) return std::nullopt;
    const auto equals = only.find('=');
    return RowFilter{csv.Require(only.substr(0, equals)), only.substr(equals + 1)};
}

std::vector<PairRow> ReadPairs(const FitOptions& options)
{
    tables::CsvReader csv(options.pairs, tables::kMostInMemory);
    const std::size_t columns[] = {csv.Require("x_source"), csv.Require("y_source"),
                                   csv.Require("x_target"), csv.Require("y_target")};
    const auto name = csv.Find("name");
    const auto filter = FilterOf(options.only, csv);
    std::vector<PairRow> rows;
    while (csv.Next()) {
        if (filter && csv.Field(filter->column) != filter->value) continue;
        PairRow row;
        row.line = csv.Line();
        row.name = name ? std::string(csv.Field(*name)) : fmt::format("line {}", row.line);
        row.pair.xSource = csv.Number(columns[0]);
        row.pair.ySource = csv.Number(columns[1]);
        row.pair.xTarget = csv.Number(columns[2]);
        row.pair.yTarget = csv.Number(columns[3]);
        rows.push_back(std::move(row));
    }
    return rows;
}

bool SourcesDiffer(const std::vector<PairRow>& rows)
{
    for (const PairRow& row : rows) {
        if (row.pair.xSource != rows.front().pair.xSource
            || row.pair.ySource != rows.front().pair.ySource)
            return true;
    }
    return false;
}

int RunFit(const FitOptions& options)
{
    tables::KeepInputs({options.out}, {options.pairs});
    std::vector<PairRow> rows = ReadPairs(options);
    if (!SourcesDiffer(rows)) {
        fmt::print(stderr, "{}: a fit needs two pairs with different source points\n",
                   options.pairs);
        return kNegative;
    }
    const TransformFit fit = FitTransform(std::move(rows));
    if (!options.out.empty())
        tables::WriteFile(options.out, ParametersJson(fit.parameters).dump(2) + "\n");

    using nlohmann::ordered_json;
    tables::Output output("-");
    output.Write(options.json ? FitJson(options.pairs, fit)
                                        .dump(2, ' ', false, ordered_json::error_handler_t::replace)
                                    + "\n"
                              : FitText(options.pairs, fit));
    output.Finish();
    return kDone;
}

std::pair<std::size_t, std::size_t> CoordinateColumns(const ApplyOptions& options,
                                                      const tables::CsvReader& csv)
{
    if (const auto& names = options.columns; !names.empty()) {
        if (names[0] == names[1])
            throw CLI::ValidationError("--columns", "x and y are the same column");
        return {csv.Require(names[0]), csv.Require(names[1])};
    }
    if (csv.Find("N") && csv.Find("E")) return {*csv.Find("N"), *csv.Find("E")};
    return {csv.Require("x"), csv.Require("y")};
}

int RunApply(const ApplyOptions& options)
{
    tables::KeepInputs({options.out}, {options.points, options.parameters});
    const Magnetic_FourParameter p = ReadParameters(options.parameters);
    CMagneticConvert convert;
    convert.SetFourParameter(p.dDx, p.dDy, p.dRotate, p.dScale, p.dX0, p.dY0);
    if (options.inverse && (p.dX0 != 0.0 || p.dY0 != 0.0))
        fmt::print(stderr, "The rotation center is not used by --inverse.\n");

    tables::CsvReader csv(options.points);
    const auto columns = CoordinateColumns(options, csv);
    const std::size_t xColumn = columns.first;
    const std::size_t yColumn = columns.second;
    tables::Output output(options.out.empty() ? "-" : options.out);
    fmt::memory_buffer line;
    const auto writeLine = [&](const auto& field) {
        line.clear();
        for (std::size_t k = 0; k < csv.Columns().size(); ++k) {
            if (k > 0) line.push_back(',');
            tables::AppendField(line, field(k));
        }
        line.push_back('\n');
        output.Write({line.data(), line.size()});
    };
    writeLine([&](std::size_t k) { return std::string_view(csv.Columns()[k]); });
    while (csv.Next()) {
        double x = csv.Number(xColumn);
        double y = csv.Number(yColumn);
        options.inverse ? convert.XYtoXY1(x, y) : convert.XYtoXY(x, y);
        const std::string xText = fmt::format("{:.4f}", x);
        const std::string yText = fmt::format("{:.4f}", y);
        writeLine([&](std::size_t k) {
            return k == xColumn ? xText : k == yColumn ? yText : csv.Field(k);
        });
    }
    output.Finish();
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
    command->add_option("--only", options->only, "Use only rows with this value in this column")
        ->type_name("COLUMN=VALUE")
        ->check(ColumnEqualsValue());
    command
        ->add_option("--out", options->out, "Output file of the parameters, replaced when complete")
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
    command
        ->add_option("--columns", options->columns,
                     "Names of the x and y columns; default N,E or x,y")
        ->delimiter(',')
        ->expected(2)
        ->type_name("NAME");
    command->add_option("--out", options->out, "Output file of the rows, replaced when complete")
        ->type_name("FILE");
    command->add_flag("--inverse", options->inverse,
                      "Transform from the second system back to the first");
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
