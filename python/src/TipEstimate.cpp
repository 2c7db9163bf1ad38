// SPDX-License-Identifier: MIT
#include "quality/TipEstimate.h"

#include "python/src/Arrays.h"
#include "python/src/Bindings.h"

#include <string>

namespace tiltpole::python {

namespace {

using quality::AntennaErrors;
using quality::TipEstimate;
using quality::TipVerdict;

constexpr const char* kSolveDoc =
    R"(The tip from many antenna positions around it, without any heading: least squares with the
antenna height as the radius of a sphere.

antennas        (n, 3): N, E, h [m]; rows that are not finite are left out
antenna_height  antenna to tip [m], above 0
plan_error, height_error                standard deviations from position to position [m], above 0
shared_plan_error, shared_height_error  of what all positions share [m]
antenna_height_error                    of antenna_height [m]

Returns a TipEstimate. Its regions rest on these errors; residuals widen them and never narrow them.
Store the tip only where `store` is true. Raises ValueError where a shape or a value cannot be.)";

std::string NameOf(TipVerdict verdict)
{
    switch (verdict) {
    case TipVerdict::NoSolution:
        return "no solution";
    case TipVerdict::Outlier:
        return "outlier";
    case TipVerdict::WrongRadius:
        return "wrong radius";
    case TipVerdict::Ambiguous:
        return "ambiguous";
    case TipVerdict::TooUncertain:
        return "too uncertain";
    case TipVerdict::Store:
        return "store";
    }
    return {};
}

bool IsSize(double value, bool mayBeZero)
{
    return value > 0.0 ? value <= 100.0 : mayBeZero && value == 0.0;
}

TipEstimate Solve(const Doubles& antennas, double height, const AntennaErrors& errors)
{
    const Rows rows(antennas, 3, "antennas");
    if (!IsSize(height, false))
        throw py::value_error("antenna_height must be above 0 and at most 100 m");
    const bool stated = IsSize(errors.plan, false) && IsSize(errors.height, false)
                        && IsSize(errors.sharedPlan, true) && IsSize(errors.sharedHeight, true)
                        && IsSize(errors.antennaHeight, true);
    if (!stated)
        throw py::value_error("errors must be above 0 (shared ones and that of the antenna height "
                              "may be 0) and at most 100 m");
    std::vector<xyhCoord> positions;
    positions.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        positions.push_back({rows[i][0], rows[i][1], rows[i][2]});
    const py::gil_scoped_release release;
    return quality::EstimateTip(positions, height, errors);
}

} // namespace

void AddTipEstimate(py::module_& module)
{
    py::class_<TipEstimate>(
        module, "TipEstimate",
        "A tip with its 95 % regions. Lengths are in meters, angles in degrees.")
        .def_property_readonly(
            "store", [](const TipEstimate& e) { return e.verdict == TipVerdict::Store; },
            "Whether the tip may be stored.")
        .def_property_readonly(
            "verdict", [](const TipEstimate& e) { return NameOf(e.verdict); },
            "'store', 'no solution', 'outlier', 'wrong radius', 'ambiguous' or 'too uncertain'.")
        .def_property_readonly(
            "tip", [](const TipEstimate& e) { return ArrayOf(e.tip); }, "N, E, h [m].")
        .def_property_readonly(
            "covariance", [](const TipEstimate& e) { return MatrixOf(e.covariance); },
            "Of N, E, h [m²].")
        .def_readonly("ellipse_major", &TipEstimate::ellipseMajor, "Semi-axis, 95 % [m].")
        .def_readonly("ellipse_minor", &TipEstimate::ellipseMinor, "Semi-axis, 95 % [m].")
        .def_readonly("ellipse_azimuth", &TipEstimate::ellipseAzimuth,
                      "Azimuth of the major axis [degrees].")
        .def_readonly("height_half_interval", &TipEstimate::heightHalfInterval, "95 % [m].")
        .def_readonly("residual_rms", &TipEstimate::residualRms,
                      "Of distances to the tip less the antenna height [m].")
        .def_readonly("used", &TipEstimate::used, "Positions that are finite.")
        .def_readonly("suspect_index", &TipEstimate::suspectIndex,
                      "Of the position whose residual is least likely.")
        .def_readonly("suspect_ratio", &TipEstimate::suspectRatio,
                      "Its residual to what chance allows; above 1 it is an outlier, no unit.")
        .def_readonly("radius_excess", &TipEstimate::radiusExcess,
                      "Fitted radius minus antenna height, were it free [m].")
        .def_readonly("radius_excess_limit", &TipEstimate::radiusExcessLimit,
                      "A smaller error of the antenna height goes unnoticed [m].")
        .def_readonly("direction_spread", &TipEstimate::directionSpread,
                      "Of the directions from tip to antenna, RMS [degrees].")
        .def("__repr__", [](const TipEstimate& e) {
            return "<TipEstimate: " + NameOf(e.verdict) + ", " + std::to_string(e.used)
                   + " positions>";
        });

    const AntennaErrors defaults;
    module.def(
        "solve",
        [](const Doubles& antennas, double height, double plan, double up, double sharedPlan,
           double sharedUp, double ofHeight) {
            return Solve(antennas, height, {plan, up, sharedPlan, sharedUp, ofHeight});
        },
        py::arg("antennas"), py::arg("antenna_height"), py::kw_only(),
        py::arg("plan_error") = defaults.plan, py::arg("height_error") = defaults.height,
        py::arg("shared_plan_error") = defaults.sharedPlan,
        py::arg("shared_height_error") = defaults.sharedHeight,
        py::arg("antenna_height_error") = defaults.antennaHeight, kSolveDoc);
}

} // namespace tiltpole::python
