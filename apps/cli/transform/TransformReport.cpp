// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformReport.h"

#include "apps/cli/JsonOutput.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace cli {

namespace {

// Limits of a parameter file. A rotation beyond a turn is in another unit than radians.
constexpr tables::Range kScale{1e-6, 1e6, ""};
constexpr tables::Range kRotation{-6.2832, 6.2832, "radians"};
constexpr tables::Range kShift{-1e9, 1e9, "m"};

std::string Line(std::string_view label, const std::string& text)
{
    return fmt::format("{:<20}{}\n", label, text);
}

std::string ResidualTable(const TransformFit& fit)
{
    std::string text =
        fmt::format("\n{:<20}{:>12}{:>12}{:>12}\n", "residual [m]", "x", "y", "length");
    for (std::size_t k = 0; k < fit.rows.size(); ++k) {
        const PairResult& r = fit.results[k];
        text += fmt::format("  {:<18} {:>11.4f} {:>11.4f} {:>11.4f}\n", fit.rows[k].name,
                            r.residualX, r.residualY, r.ResidualLength());
    }
    return text;
}

std::string WithoutTable(const TransformFit& fit)
{
    std::string text =
        fmt::format("\n{:<20}{:>13}{:>18}{:>14}{:>14}{:>10}\n", "fit without", "scale [ppm]",
                    "rotation [arcsec]", "dx [m]", "dy [m]", "miss [m]");
    for (std::size_t k = 0; k < fit.rows.size(); ++k) {
        const PairResult& r = fit.results[k];
        if (!r.without) {
            text += fmt::format("  {:<18}{:>13}{:>18}{:>14}{:>14}{:>10}\n", fit.rows[k].name, "-",
                                "-", "-", "-", "-");
            continue;
        }
        const auto& [p, missX, missY] = *r.without;
        text +=
            fmt::format("  {:<18} {:>12.4f} {:>17.5f} {:>13.4f} {:>13.4f} {:>9.4f}\n",
                        fit.rows[k].name, (p.dScale - 1.0) * kPartsPerMillion,
                        p.dRotate * kArcSecondsPerRadian, p.dDx, p.dDy, std::hypot(missX, missY));
    }
    return text
           + "The miss is the distance of the omitted pair from where the fit to the others puts "
             "it.\n";
}

std::string VerdictText(const FitReport& report, const FitJudgment& judgment)
{
    std::string text = Line("verdict", WordOf(judgment.verdict));
    for (const std::string& reason : judgment.reasons)
        text += Line("  reason", reason);
    for (const std::string& sentence : judgment.notChecked)
        text += Line("  not checked", sentence);
    text +=
        Line("limits", fmt::format("scale {} ppm, residual {} m, chance of a pair {}",
                                   report.limits.scale, report.limits.residual, kOutlierChance));
    if (report.fit.rows.size() < 4) return text;
    const std::size_t worst = *report.fit.Worst();
    const PairResult& r = report.fit.results[worst];
    if (!r.without) return text;
    return text
           + Line("worst pair",
                  fmt::format("{}, {:.4f} m from the fit to the others (chance {:.2g})",
                              report.fit.rows[worst].name,
                              std::hypot(r.without->missX, r.without->missY), r.chance));
}

nlohmann::ordered_json PointJson(const PairRow& row, const PairResult& r, bool hasWithout)
{
    nlohmann::ordered_json point;
    point["name"] = row.name;
    point["line"] = row.line;
    point["residual_x_m"] = Figure(r.residualX);
    point["residual_y_m"] = Figure(r.residualY);
    point["redundancy"] = Figure(r.redundancy);
    if (!hasWithout) return point;
    point["chance"] = Figure(r.chance);
    point["fit_without"] = nullptr;
    point["miss_x_m"] = nullptr;
    point["miss_y_m"] = nullptr;
    if (r.without) {
        point["fit_without"] = ParametersJson(r.without->parameters);
        point["miss_x_m"] = Figure(r.without->missX);
        point["miss_y_m"] = Figure(r.without->missY);
    }
    return point;
}

nlohmann::json ParseFile(const std::string& path)
{
    const std::string text = tables::ReadFile(path);
    std::string key; // the last one read
    const auto keepKey = [&key](int, nlohmann::json::parse_event_t event, nlohmann::json& value) {
        if (event == nlohmann::json::parse_event_t::key) key = value.get<std::string>();
        return true;
    };
    try {
        return nlohmann::json::parse(text, keepKey);
    } catch (const nlohmann::json::parse_error& error) {
        const auto end =
            text.begin()
            + static_cast<std::ptrdiff_t>(std::min<std::size_t>(error.byte, text.size()));
        const auto line = 1 + std::count(text.begin(), end, '\n');
        throw tables::InputError(path, static_cast<std::uint64_t>(line), "not valid JSON");
    } catch (const nlohmann::json::out_of_range&) {
        throw tables::InputError(path, fmt::format("\"{}\" is too large a number", key));
    }
}

// Files written by hand may leave the unit out of the names.
double NumberOf(const nlohmann::json& object, const char* key, const tables::Range& range,
                const std::string& path, const char* plainKey = "")
{
    auto found = object.find(key);
    if (found == object.end()) found = object.find(plainKey);
    if (found == object.end())
        throw tables::InputError(path, fmt::format("\"{}\" is missing", key));
    if (!found->is_number())
        throw tables::InputError(path, fmt::format("\"{}\" is not a number", found.key()));
    const double value = found->get<double>();
    const std::string problem = tables::OutsideOf(range, value);
    if (!problem.empty())
        throw tables::InputError(path, fmt::format("\"{}\" {}", found.key(), problem));
    return value;
}

} // namespace

std::string FitText(const FitReport& report, const FitJudgment& judgment)
{
    const TransformFit& fit = report.fit;
    const Magnetic_FourParameter& p = fit.parameters;
    const std::size_t n = fit.rows.size();
    std::string text = Line("file", report.file);
    text += Line("pairs", report.dropped.empty()
                              ? fmt::format("{}", n)
                              : fmt::format("{}, without {}", n, fmt::join(report.dropped, ", ")));
    text += VerdictText(report, judgment);
    text += Line("scale", fmt::format("{:.12f} ({:+.4f} ppm)", p.dScale, fit.ScaleExcess()));
    text += Line("rotation", fmt::format("{:.12g} radians ({:+.5f} arc seconds), from x toward y",
                                         p.dRotate, p.dRotate * kArcSecondsPerRadian));
    text += Line("dx, dy", fmt::format("{:.4f} {:.4f} m", p.dDx, p.dDy));
    text += Line(
        "rms per point",
        fmt::format("{:.4f} m (squares of both coordinates, divided by n = {})", fit.Rms(), n));
    text +=
        Line("unit error", n > 2 ? fmt::format("{:.4f} m per coordinate (divided by 2n - 4 = {})",
                                               fit.UnitError(), 2 * n - 4)
                                 : std::string("unknown: two pairs leave no redundancy"));
    text += Line("PROJ", HelmertString(p));
    text += ResidualTable(fit);
    if (fit.HasWithout()) text += WithoutTable(fit);
    return text;
}

nlohmann::ordered_json ParametersJson(const Magnetic_FourParameter& p)
{
    nlohmann::ordered_json json;
    json["scale"] = Figure(p.dScale);
    json["rotation_rad"] = Figure(p.dRotate);
    json["dx_m"] = Figure(p.dDx);
    json["dy_m"] = Figure(p.dDy);
    json["x0_m"] = Figure(p.dX0);
    json["y0_m"] = Figure(p.dY0);
    return json;
}

nlohmann::ordered_json FitJson(const FitReport& report, const FitJudgment& judgment)
{
    const TransformFit& fit = report.fit;
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (std::size_t k = 0; k < fit.rows.size(); ++k)
        points.push_back(PointJson(fit.rows[k], fit.results[k], fit.HasWithout()));
    const bool mayBeUsed = MayBeUsed(judgment.verdict, report.acceptUnchecked);
    nlohmann::ordered_json json = JsonHeader("transform fit");
    json["file"] = report.file;
    json["verdict"] = WordOf(judgment.verdict);
    json["reasons"] = judgment.reasons;
    json["not_checked"] = judgment.notChecked;
    json["limits"]["scale_ppm"] = report.limits.scale;
    json["limits"]["residual_m"] = report.limits.residual;
    json["limits"]["chance"] = kOutlierChance;
    json["dropped"] = report.dropped;
    const std::string before = mayBeUsed ? "" : fmt::format("{}_", WordOf(judgment.verdict));
    json[before + "parameters"] = ParametersJson(fit.parameters);
    json["scale_excess_ppm"] = Figure(fit.ScaleExcess());
    json["proj"] = HelmertString(fit.parameters);
    json["rms_m"] = Figure(fit.Rms());
    json["rms_divisor"] = fit.rows.size();
    if (fit.rows.size() > 2) {
        json["unit_error_m"] = Figure(fit.UnitError());
        json["unit_error_divisor"] = 2 * fit.rows.size() - 4;
    }
    if (fit.rows.size() > 3) {
        const PairRow& worst = fit.rows[*fit.Worst()];
        json["worst"] = {
            {"name", worst.name},
            {"line", worst.line}
        };
    }
    json["points"] = points;
    return json;
}

Magnetic_FourParameter ReadParameters(const std::string& path)
{
    const nlohmann::json file = ParseFile(path);
    const nlohmann::json& object =
        file.is_object() && file.contains("parameters") ? file["parameters"] : file;
    if (file.is_object() && file.contains("refused_parameters"))
        throw tables::InputError(path, "holds a fit that was refused");
    if (file.is_object() && file.contains("unchecked_parameters"))
        throw tables::InputError(path, "holds a fit that was unchecked, and not accepted");
    if (!object.is_object()) throw tables::InputError(path, "contains no parameters");
    Magnetic_FourParameter p;
    p.dScale = NumberOf(object, "scale", kScale, path);
    p.dRotate = NumberOf(object, "rotation_rad", kRotation, path, "rotation");
    p.dDx = NumberOf(object, "dx_m", kShift, path, "dx");
    p.dDy = NumberOf(object, "dy_m", kShift, path, "dy");
    const auto has = [&](const char* key, const char* plainKey) {
        return object.contains(key) || object.contains(plainKey);
    };
    if (has("x0_m", "x0")) p.dX0 = NumberOf(object, "x0_m", tables::kCoordinate, path, "x0");
    if (has("y0_m", "y0")) p.dY0 = NumberOf(object, "y0_m", tables::kCoordinate, path, "y0");
    return p;
}

} // namespace cli
