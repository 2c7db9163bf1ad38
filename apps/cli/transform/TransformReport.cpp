// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformReport.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr double kPartsPerMillion = 1e6;

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
        text += fmt::format("  {:<18}{:>12.4f}{:>12.4f}{:>12.4f}\n", fit.rows[k].name, r.residualX,
                            r.residualY, std::hypot(r.residualX, r.residualY));
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
        text += fmt::format("  {:<18}{:>13.4f}{:>18.5f}{:>14.4f}{:>14.4f}{:>10.4f}\n",
                            fit.rows[k].name, (r.without.dScale - 1.0) * kPartsPerMillion,
                            r.without.dRotate * kArcSecondsPerRadian, r.without.dDx, r.without.dDy,
                            std::hypot(r.predictionX, r.predictionY));
    }
    return text
           + "The miss is the distance of the omitted pair from where the fit to the others puts "
             "it.\n";
}

nlohmann::json ParseFile(const std::string& path)
{
    const std::string text = tables::ReadFile(path);
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        const auto end =
            text.begin()
            + static_cast<std::ptrdiff_t>(std::min<std::size_t>(error.byte, text.size()));
        const auto line = 1 + std::count(text.begin(), end, '\n');
        throw tables::InputError(path, static_cast<std::uint64_t>(line), "not valid JSON");
    }
}

double NumberIn(const nlohmann::json& object, const char* key, const std::string& path)
{
    const auto found = object.find(key);
    if (found == object.end())
        throw tables::InputError(path, fmt::format("\"{}\" is missing", key));
    if (!found->is_number() || !std::isfinite(found->get<double>()))
        throw tables::InputError(path, fmt::format("\"{}\" is not a number", key));
    return found->get<double>();
}

} // namespace

std::string FitText(const std::string& file, const TransformFit& fit)
{
    const Magnetic_FourParameter& p = fit.parameters;
    const std::size_t n = fit.rows.size();
    std::string text = Line("file", file);
    text += Line("pairs", fmt::format("{}", n));
    text += Line("scale", fmt::format("{:.12f} ({:+.4f} ppm)", p.dScale,
                                      (p.dScale - 1.0) * kPartsPerMillion));
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
    return {
        {"scale",    p.dScale },
        {"rotation", p.dRotate},
        {"dx",       p.dDx    },
        {"dy",       p.dDy    },
        {"x0",       p.dX0    },
        {"y0",       p.dY0    }
    };
}

nlohmann::ordered_json FitJson(const std::string& file, const TransformFit& fit)
{
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (std::size_t k = 0; k < fit.rows.size(); ++k) {
        const PairResult& r = fit.results[k];
        nlohmann::ordered_json point = {
            {"name",     fit.rows[k].name          },
            {"line",     fit.rows[k].line          },
            {"residual", {r.residualX, r.residualY}}
        };
        if (fit.HasWithout()) {
            point["fit_without"] = ParametersJson(r.without);
            point["miss"] = {r.predictionX, r.predictionY};
        }
        points.push_back(point);
    }
    nlohmann::ordered_json json = {
        {"file",        file                          },
        {"parameters",  ParametersJson(fit.parameters)},
        {"proj",        HelmertString(fit.parameters) },
        {"rms",         fit.Rms()                     },
        {"rms_divisor", fit.rows.size()               }
    };
    if (fit.rows.size() > 2) {
        json["unit_error"] = fit.UnitError();
        json["unit_error_divisor"] = 2 * fit.rows.size() - 4;
    }
    json["points"] = points;
    return json;
}

Magnetic_FourParameter ReadParameters(const std::string& path)
{
    const nlohmann::json file = ParseFile(path);
    const nlohmann::json& object =
        file.is_object() && file.contains("parameters") ? file["parameters"] : file;
    if (!object.is_object()) throw tables::InputError(path, "contains no parameters");
    Magnetic_FourParameter p;
    p.dScale = NumberIn(object, "scale", path);
    p.dRotate = NumberIn(object, "rotation", path);
    p.dDx = NumberIn(object, "dx", path);
    p.dDy = NumberIn(object, "dy", path);
    if (object.contains("x0")) p.dX0 = NumberIn(object, "x0", path);
    if (object.contains("y0")) p.dY0 = NumberIn(object, "y0", path);
    if (!(p.dScale > 0.0)) throw tables::InputError(path, "\"scale\" is not positive");
    return p;
}

} // namespace cli
