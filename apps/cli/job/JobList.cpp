// SPDX-License-Identifier: MIT
#include "apps/cli/job/JobList.h"

#include "apps/cli/JsonOutput.h"
#include "apps/cli/SummaryLine.h"
#include "field/job/JobTime.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

using nlohmann::ordered_json;

// "-" for what is not known.
std::string Shown(double value, int decimals, int width)
{
    return std::isfinite(value) ? fmt::format("{:{}.{}f}", value, width, decimals)
                                : fmt::format("{:>{}}", "-", width);
}

std::string SetupText(const field::JobSetup& setup)
{
    std::string text =
        fmt::format("pole {} + {} m, sensor type {}, delay {} ms, heading sd {} degrees",
                    Shown(setup.poleLength, 4, 0), Shown(setup.phaseCenter, 4, 0), setup.sensorType,
                    Shown(setup.delay * 1000.0, 0, 0), Shown(setup.headingSigma, 1, 0));
    text += setup.calibration.empty()
                ? ", no calibration"
                : fmt::format(", calibration of {} bytes", setup.calibration.size());
    text += setup.model.empty() ? ", north by the calibration" : ", north by " + setup.model;
    return text;
}

std::string StateText(const NamedPoint& named)
{
    switch (named.state) {
    case PointState::Replaced:
        return "replaced";
    case PointState::Void:
        return "void: " + named.point.voidReason.value_or("");
    case PointState::Current:
        break;
    }
    if (named.point.forced) return "forced";
    return named.point.byOccupation ? "occupation" : "";
}

std::string PointLine(const NamedPoint& named, std::size_t nameWidth)
{
    const field::JobPoint& point = named.point;
    const auto millimeters = [](double variance) {
        return Shown(std::sqrt(variance) * 1000.0, 0, 5);
    };
    std::string line = fmt::format(
        "{:<{}} {}  {} {} {} {}{}{} {} {:>3} {:>2} {:>3}  ", point.name, nameWidth,
        field::JobTimeText(point.utc).substr(0, 19), Shown(point.tip.latitude, 8, 12),
        Shown(point.tip.longitude, 8, 13), Shown(point.tip.ellipsoidalHeight, 3, 9),
        millimeters(point.sigma.nn), millimeters(point.sigma.ee), millimeters(point.sigma.hh),
        Shown(point.tilt, 1, 5), point.epochs, static_cast<int>(point.quality), point.setup);
    line += point.code;
    const std::string state = StateText(named);
    if (!state.empty()) line += (point.code.empty() ? "" : "  ") + ("(" + state + ")");
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

ordered_json SetupJson(const field::JobSetup& setup)
{
    ordered_json json;
    json["id"] = setup.id;
    json["made_utc"] = field::JobTimeText(setup.made);
    json["pole_m"] = Figure(setup.poleLength);
    json["arp_to_apc_m"] = Figure(setup.phaseCenter);
    json["pole_sd_m"] = Figure(setup.lengthSigma);
    json["sensor_type"] = setup.sensorType;
    json["calibration_bytes"] = setup.calibration.size();
    json["heading_sd_deg"] = Figure(setup.headingSigma);
    json["tilt_sd_deg"] = Figure(setup.tiltSigma);
    json["delay_s"] = Figure(setup.delay);
    json["delay_sd_s"] = Figure(setup.delaySigma);
    json["axis_offset_deg"] = Figure(setup.axisOffset);
    json["north"] = TextOrNull(setup.north);
    json["model"] = TextOrNull(setup.model);
    json["program"] = TextOrNull(setup.program);
    return json;
}

const char* NameOf(PointState state)
{
    switch (state) {
    case PointState::Replaced:
        return "replaced";
    case PointState::Void:
        return "void";
    case PointState::Current:
        break;
    }
    return "current";
}

ordered_json PlaceJson(const field::Geodetic& place)
{
    return {
        {"latitude_deg",  Figure(place.latitude)         },
        {"longitude_deg", Figure(place.longitude)        },
        {"h_ell_m",       Figure(place.ellipsoidalHeight)}
    };
}

ordered_json StoredPointJson(const NamedPoint& named)
{
    const field::JobPoint& point = named.point;
    ordered_json json;
    json["id"] = point.id;
    json["name"] = named.name;
    json["row_name"] = point.name;
    json["code"] = TextOrNull(point.code);
    json["note"] = TextOrNull(point.note);
    json["state"] = NameOf(named.state);
    json["void_reason"] = TextOrNull(point.voidReason.value_or(""));
    json["replaces"] = point.replaces ? ordered_json(*point.replaces) : ordered_json(nullptr);
    json["utc"] = field::JobTimeText(point.utc);
    json["setup"] = point.setup;
    json["tip"] = PlaceJson(point.tip);
    json["h_received_m"] = Figure(point.receivedHeight);
    json["geoid_m"] = Figure(point.geoid);
    json["sd_n_m"] = Figure(std::sqrt(point.sigma.nn));
    json["sd_e_m"] = Figure(std::sqrt(point.sigma.ee));
    json["sd_h_m"] = Figure(std::sqrt(point.sigma.hh));
    json["cov_ne_m2"] = Figure(point.sigma.ne);
    json["method"] = point.byOccupation ? "occupation" : "mean";
    json["epochs"] = point.epochs;
    json["left_out"] = point.leftOut;
    json["lean_deg"] = Figure(point.tilt);
    json["azimuth_true_deg"] = Figure(point.azimuthTrue);
    json["declination_deg"] = Figure(point.declination);
    json["quality"] = static_cast<int>(point.quality);
    json["station"] = TextOrNull(point.station);
    json["age_s"] = Figure(point.correctionAge);
    json["antenna"] = PlaceJson(point.antenna);
    json["gate"] = TextOrNull(point.gate);
    json["forced"] = point.forced;
    return json;
}

ordered_json EventJson(const field::JobEvent& event)
{
    return {
        {"utc",  field::JobTimeText(event.utc)},
        {"kind", event.kind                   },
        {"text", TextOrNull(event.text)       }
    };
}

} // namespace

nlohmann::ordered_json JobListJson(const std::string& path, const field::JobStore& job)
{
    ordered_json json = JsonHeader("job list");
    json["job"] = path;
    json["setups"] = ordered_json::array();
    for (const field::JobSetup& setup : ValueOf(job.Setups()))
        json["setups"].push_back(SetupJson(setup));
    json["points"] = ordered_json::array();
    for (const NamedPoint& named : PointsOf(job))
        json["points"].push_back(StoredPointJson(named));
    json["events"] = ordered_json::array();
    for (const field::JobEvent& event : ValueOf(job.Events()))
        json["events"].push_back(EventJson(event));
    return json;
}

std::string JobListText(const std::string& path, const field::JobStore& job)
{
    const std::vector<NamedPoint> points = PointsOf(job);
    const auto count = [&](PointState state) {
        return std::count_if(points.begin(), points.end(),
                             [&](const NamedPoint& named) { return named.state == state; });
    };
    std::string text = Line("job", path);
    text +=
        Line("points", fmt::format("{} current, {} replaced, {} void", count(PointState::Current),
                                   count(PointState::Replaced), count(PointState::Void)));
    for (const field::JobSetup& setup : ValueOf(job.Setups()))
        text += Line(fmt::format("setup {}", setup.id), SetupText(setup));
    if (!points.empty()) {
        std::size_t width = 5;
        for (const NamedPoint& named : points)
            width = std::max(width, named.point.name.size());
        text += fmt::format("\n{:<{}} {:<19}  {:>12} {:>13} {:>9} {:>15} {:>5} {:>3} {:>2} {:>3}  "
                            "{}\n",
                            "point", width, "UTC", "latitude", "longitude", "h ell [m]",
                            "sd N E h [mm]", "lean", "n", "q", "set", "code");
        for (const NamedPoint& named : points)
            text += PointLine(named, width);
    }
    const std::vector<field::JobEvent> events = ValueOf(job.Events());
    if (!events.empty()) text += "\n";
    for (const field::JobEvent& event : events)
        text += fmt::format("{}  {}: {}\n", field::JobTimeText(event.utc).substr(0, 19), event.kind,
                            event.text);
    return text;
}

} // namespace cli
