// SPDX-License-Identifier: MIT
#include "apps/cli/solve/SolveReport.h"

#include "apps/cli/JsonOutput.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>

namespace cli {

namespace {

using quality::TipVerdict;

constexpr std::size_t kEnough = 15; // positions that a controller collects before it solves

std::string Line(std::string_view label, const std::string& text)
{
    return fmt::format("{:<24}{}\n", label, text);
}

std::string Point(const xyhCoord& p)
{
    return fmt::format("N {:.4f}  E {:.4f}  h {:.4f} m", p.x, p.y, p.h);
}

double Millimeters(double meters)
{
    return 1000.0 * meters;
}

// Four positions leave no redundancy to test the radius or a single residual with.
bool HasTests(const quality::TipEstimate& e)
{
    return e.used > 4;
}

std::string PointError(double error)
{
    if (!std::isfinite(error)) return "unknown: four positions leave no redundancy";
    return fmt::format("{:.1f} mm", Millimeters(error));
}

std::string PositionLines(const SolvedTip& solved)
{
    const std::size_t read = solved.rows.size();
    const std::size_t taken = solved.taken.size();
    std::string text = Line(
        "positions", fmt::format("{} read, {} accepted, {} rejected", read, taken, read - taken));
    for (const AntennaRow& row : solved.rows) {
        text += fmt::format("  {:<22}{}\n", row.name,
                            row.refusal.empty() ? "accepted" : "rejected: " + row.refusal);
    }
    const auto unknown = std::count_if(solved.rows.begin(), solved.rows.end(),
                                       [](const AntennaRow& row) { return !row.incline; });
    if (unknown > 0)
        text += Line(
            "", fmt::format("{} positions without an incline were not tested for it", unknown));
    if (taken < kEnough) {
        text += Line(
            "", fmt::format("fewer than the {} positions that a controller waits for", kEnough));
    }
    return text;
}

std::string SearchLines(const SolvedTip& solved)
{
    const TiltPoint_State& state = solved.state;
    std::string text = "\nSearch over all combinations of four positions\n";
    if (solved.HasSearched()) {
        text += Line("  tip", Point(solved.searched));
        text += Line("  radius", fmt::format("{:.4f} m, {:+.1f} mm from the antenna height",
                                             state.dRadius, Millimeters(state.dRadiusExcess)));
        text += Line("  point error", PointError(state.dPointError));
        text +=
            Line("  geometry figure", fmt::format("{:.3f}, height cofactor {:.4f}",
                                                  state.dGeometryFigure, state.dHeightCofactor));
    }
    const GradeWords words = WordsOf(state.nStatus);
    text += Line("  grade", fmt::format("{}: {}", state.nStatus, words.meaning));
    text += Line("  what to do", words.advice);
    return text;
}

// What the positions themselves say about the antenna height; four say nothing.
std::string FreeRadius(const quality::TipEstimate& e)
{
    if (!HasTests(e) || !std::isfinite(e.radiusExcessLimit))
        return "these positions do not check the antenna height";
    return fmt::format("{:+.0f} mm; antenna height checked only to {:.0f} mm",
                       Millimeters(e.radiusExcess), Millimeters(e.radiusExcessLimit));
}

std::string Ellipse(const quality::TipEstimate& e)
{
    if (!std::isfinite(e.ellipseMajor)) return "open: these positions leave the tip undetermined";
    return fmt::format("semi-axes {:.1f} x {:.1f} mm, the major one at {:.0f} degrees from N",
                       Millimeters(e.ellipseMajor), Millimeters(e.ellipseMinor), e.ellipseAzimuth);
}

std::string HeightInterval(const quality::TipEstimate& e)
{
    if (!std::isfinite(e.heightHalfInterval)) return "open";
    return fmt::format("+/- {:.1f} mm", Millimeters(e.heightHalfInterval));
}

std::string StatedErrors(const quality::AntennaErrors& errors)
{
    return fmt::format("plan {:.4g} mm, height {:.4g} mm each; {:.4g} and {:.4g} mm shared by all; "
                       "antenna height {:.4g} mm",
                       Millimeters(errors.plan), Millimeters(errors.height),
                       Millimeters(errors.sharedPlan), Millimeters(errors.sharedHeight),
                       Millimeters(errors.antennaHeight));
}

std::string EstimateLines(const SolvedTip& solved)
{
    const quality::TipEstimate& e = solved.estimate;
    std::string text = "\nLeast squares with the antenna height as radius\n";
    if (!solved.HasEstimate()) return text + Line("  tip", "none");
    text += Line("  tip", Point(e.tip));
    text += Line("  errors as stated", StatedErrors(solved.setup.errors));
    text += Line("  95 % ellipse in plan", Ellipse(e));
    text += Line("  95 % of the height", HeightInterval(e));
    text +=
        Line("  residuals", fmt::format("{:.1f} mm rms, largest {:+.1f} mm at {}",
                                        Millimeters(e.residualRms), Millimeters(e.largestResidual),
                                        solved.RowOf(e.largestResidualIndex).name));
    if (HasTests(e)) {
        text += Line("  least likely residual",
                     fmt::format("{:+.1f} mm at {}, {:.2f} of the limit for chance",
                                 Millimeters(e.suspectResidual), solved.RowOf(e.suspectIndex).name,
                                 e.suspectRatio));
    }
    text += Line("  radius, if estimated", FreeRadius(e));
    text += Line("  spread of directions", fmt::format("{:.1f} degrees{}", e.directionSpread,
                                                       e.narrowCone ? ": a narrow cone" : ""));
    if (e.ambiguous) text += Line("  second tip, fits equally", Point(e.otherTip));
    if (e.narrowCone && e.verdict != TipVerdict::Store) {
        text +=
            "  Warning: the positions lie in a narrow cone. A sphere can fit them to a tenth of a\n"
            "  millimeter and still miss the tip by centimeters; lean the pole further, in all "
            "directions.\n";
    }
    return text;
}

double Distance(const xyhCoord& p, const xyhCoord& q)
{
    return std::hypot(p.x - q.x, p.y - q.y, p.h - q.h);
}

const char* VerdictName(TipVerdict verdict)
{
    switch (verdict) {
    case TipVerdict::NoSolution:
        return "no_solution";
    case TipVerdict::Outlier:
        return "outlier";
    case TipVerdict::WrongRadius:
        return "wrong_radius";
    case TipVerdict::Ambiguous:
        return "ambiguous";
    case TipVerdict::TooUncertain:
        return "too_uncertain";
    case TipVerdict::Store:
        return "store";
    }
    return "";
}

nlohmann::ordered_json PointJson(const xyhCoord& point)
{
    return cli::PointJson(point.x, point.y, point.h);
}

nlohmann::ordered_json SearchJson(const SolvedTip& solved)
{
    const GradeWords words = WordsOf(solved.state.nStatus);
    nlohmann::ordered_json json = {
        {"grade",   solved.state.nStatus},
        {"meaning", words.meaning       },
        {"advice",  words.advice        }
    };
    if (!solved.HasSearched()) return json;
    json["tip"] = PointJson(solved.searched);
    json["radius_m"] = Figure(solved.state.dRadius);
    json["radius_excess_m"] = Figure(solved.state.dRadiusExcess);
    json["point_error_m"] = Figure(solved.state.dPointError);
    json["geometry_figure"] = Figure(solved.state.dGeometryFigure);
    json["height_cofactor"] = Figure(solved.state.dHeightCofactor);
    return json;
}

nlohmann::ordered_json EstimateJson(const SolvedTip& solved)
{
    const quality::TipEstimate& e = solved.estimate;
    nlohmann::ordered_json json = {
        {"verdict", VerdictName(e.verdict)}
    };
    if (!solved.HasEstimate()) return json;
    const quality::AntennaErrors& errors = solved.setup.errors;
    json["stated_errors"] = {
        {"plan_m",           errors.plan         },
        {"height_m",         errors.height       },
        {"shared_plan_m",    errors.sharedPlan   },
        {"shared_height_m",  errors.sharedHeight },
        {"antenna_height_m", errors.antennaHeight}
    };
    json["tip"] = PointJson(e.tip);
    json["covariance_m2"] = e.covariance;
    json["ellipse95"] = {
        {"major_m",     Figure(e.ellipseMajor)  },
        {"minor_m",     Figure(e.ellipseMinor)  },
        {"azimuth_deg", Figure(e.ellipseAzimuth)}
    };
    json["height95_m"] = Figure(e.heightHalfInterval);
    json["residual_rms_m"] = Figure(e.residualRms);
    json["largest_residual"] = {
        {"point",   solved.RowOf(e.largestResidualIndex).name},
        {"value_m", Figure(e.largestResidual)                }
    };
    json["suspect"]["point"] = solved.RowOf(e.suspectIndex).name;
    json["suspect"]["value_m"] = Figure(e.suspectResidual);
    json["suspect"]["ratio"] = Figure(e.suspectRatio, HasTests(e));
    json["radius_excess_m"] = Figure(e.radiusExcess, HasTests(e));
    json["radius_excess_limit_m"] = Figure(e.radiusExcessLimit, HasTests(e));
    json["direction_spread_deg"] = Figure(e.directionSpread);
    json["narrow_cone"] = e.narrowCone;
    if (e.ambiguous) json["other_tip"] = PointJson(e.otherTip);
    return json;
}

} // namespace

GradeWords WordsOf(int status)
{
    switch (status) {
    case kTiltPointAccepted:
        return {"accepted", "nothing"};
    case kTiltPointPoor:
        return {
            "point error above 50 mm or geometry figure above 2.0",
            "look at the least-squares tip: the point error of this search grows with the number "
            "of positions"};
    case kTiltPointError40:
        return {"point error above 40 mm with a geometry figure above 1.0",
                "observe more positions, leaning further and in all directions"};
    case kTiltPointError35:
        return {"point error above 35 mm with a geometry figure above 1.2",
                "observe more positions, leaning further and in all directions"};
    case kTiltPointError30:
        return {"point error above 30 mm with a geometry figure above 1.5",
                "observe more positions, leaning further and in all directions"};
    case kTiltPointRadius:
        return {"point error above 20 mm, geometry figure above 1.2, radius off by more than 40 mm",
                "check the antenna height, then observe more positions"};
    case kTiltPointImplausible:
        return {"the tip is above the first antenna position or too far below it",
                "check heights and antenna height, and that the tip stayed on its point"};
    case kTiltPointTooFew:
        return {"fewer than four positions", "observe more positions"};
    case kTiltPointNoSphere:
        return {"no four positions lie on a sphere of the antenna height within 50 mm",
                "check the antenna height, and that the tip stayed on its point"};
    default:
        return {"unknown", "nothing"};
    }
}

std::string Recommendation(const SolvedTip& solved)
{
    const quality::TipEstimate& e = solved.estimate;
    switch (e.verdict) {
    case TipVerdict::Store: {
        const double apart = std::hypot(e.tip.x - solved.searched.x, e.tip.y - solved.searched.y);
        std::string text =
            "Store the least-squares tip: it uses all positions at once, and its ellipse and "
            "height interval hold at 95 % for errors as stated.";
        if (solved.HasSearched()) {
            text +=
                fmt::format(" The searched tip is {:.1f} mm away in plan; it comes from one step "
                            "from four positions.",
                            Millimeters(apart));
        }
        return text;
    }
    case TipVerdict::Outlier:
        return fmt::format("Store neither: {} lies {:+.1f} mm off the sphere, more than chance "
                           "allows. Remove it or observe it again.",
                           solved.RowOf(e.suspectIndex).name, Millimeters(e.suspectResidual));
    case TipVerdict::WrongRadius:
        return fmt::format(
            "Store neither: the positions fit a radius that differs by {:+.1f} mm from the "
            "antenna height. Check the antenna height.",
            Millimeters(e.radiusExcess));
    case TipVerdict::Ambiguous:
        return fmt::format(
            "Store neither: the positions lie almost in one plane, and a tip "
            "{:.1f} mm away, on the other side of it, fits equally well. Observe more "
            "positions, leaning out of that plane.",
            Millimeters(Distance(e.tip, e.otherTip)));
    case TipVerdict::TooUncertain:
        return fmt::format("Store neither: the 95 % region exceeds {:.0f} mm. Observe more "
                           "positions, leaning further and in all directions.",
                           Millimeters(quality::kTipTolerance));
    case TipVerdict::NoSolution:
        break;
    }
    return "Store neither: there is no least-squares solution. "
           "Observe more positions, leaning in all directions.";
}

std::string SolveText(const SolvedTip& solved)
{
    const SolveSetup& setup = solved.setup;
    std::string text = Line("file", setup.file);
    if (!setup.columns.empty()) text += Line("columns", setup.columns);
    text += Line("antenna height", fmt::format("{:.4f} m, cut-off {:.4g} degrees",
                                               setup.antennaHeight, setup.cutoff));
    text += PositionLines(solved);
    text += SearchLines(solved);
    text += EstimateLines(solved);
    return text + "\n" + Recommendation(solved) + "\n";
}

nlohmann::ordered_json SolveJson(const SolvedTip& solved)
{
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (const AntennaRow& row : solved.rows) {
        nlohmann::ordered_json point = {
            {"name",     row.name           },
            {"line",     row.line           },
            {"accepted", row.refusal.empty()}
        };
        if (!row.refusal.empty()) point["reason"] = row.refusal;
        points.push_back(point);
    }
    const SolveSetup& setup = solved.setup;
    nlohmann::ordered_json json = JsonHeader("solve");
    json["file"] = setup.file;
    json["columns"] = setup.columns;
    json["antenna_height_m"] = setup.antennaHeight;
    json["cutoff_deg"] = setup.cutoff;
    json["points"] = points;
    json["search"] = SearchJson(solved);
    json["estimate"] = EstimateJson(solved);
    json["store"] = solved.estimate.verdict == TipVerdict::Store;
    json["recommendation"] = Recommendation(solved);
    return json;
}

} // namespace cli
