// SPDX-License-Identifier: MIT
#include "apps/live/ReportText.h"

#include "field/nmea/ReasonName.h"
#include "field/nmea/StateName.h"
#include "field/occupation/AdviceName.h"
#include <cmath>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace live {

namespace {

using field::Fix;
using field::Report;
using field::State;
using nlohmann::ordered_json;
using tiltpole::field::AdviceName;
using tiltpole::field::ReasonName;
using tiltpole::field::StateName;

const char* NameOf(Fix fix)
{
    switch (fix) {
    case Fix::Invalid:
        return "no fix";
    case Fix::Single:
        return "single";
    case Fix::Differential:
        return "differential";
    case Fix::Fixed:
        return "fixed";
    case Fix::Float:
        return "float";
    case Fix::Estimated:
        return "estimated";
    }
    return "no fix";
}

double Millimeters(double variance)
{
    return 1000.0 * std::sqrt(variance);
}

ordered_json Figure(double value)
{
    return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr);
}

ordered_json TipJson(const field::Tip& tip)
{
    ordered_json json;
    json["latitude"] = Figure(tip.position.latitude);
    json["longitude"] = Figure(tip.position.longitude);
    json["ellipsoidalHeight"] = Figure(tip.position.ellipsoidalHeight);
    json["sd_n_m"] = Figure(std::sqrt(tip.sigma.nn));
    json["sd_e_m"] = Figure(std::sqrt(tip.sigma.ee));
    json["sd_h_m"] = Figure(std::sqrt(tip.sigma.hh));
    json["cov_ne_m2"] = Figure(tip.sigma.ne);
    json["lean_deg"] = Figure(tip.tilt);
    json["azimuth_true_deg"] = Figure(tip.azimuthTrue);
    json["heading_true_deg"] = Figure(tip.headingTrue);
    json["declination_deg"] = Figure(tip.declination);
    json["antenna_speed_m_s"] = Figure(tip.antennaSpeed);
    return json;
}

ordered_json OccupationJson(const field::OccupationEstimate& estimate)
{
    ordered_json json;
    json["advice"] = AdviceName(estimate.advice);
    json["text"] = OccupationText(estimate);
    json["seconds"] = Figure(estimate.seconds);
    json["epochs"] = estimate.epochs;
    json["ellipse_major_m"] = nullptr;
    json["height_half_interval_m"] = nullptr;
    json["lean_deg"] = nullptr;
    if (!estimate.hasTip) return json;
    json["ellipse_major_m"] = Figure(estimate.ellipseMajor);
    json["height_half_interval_m"] = Figure(estimate.heightHalfInterval);
    json["lean_deg"] = Figure(estimate.lean);
    return json;
}

} // namespace

std::string ClockText(const std::string& utc)
{
    constexpr std::size_t kWidth = 10;
    if (utc.size() < 6) return std::string(kWidth, ' ');
    const std::string tenth = utc.size() > 7 ? utc.substr(7, 1) : "0";
    return fmt::format("{}:{}:{}.{}", utc.substr(0, 2), utc.substr(2, 2), utc.substr(4, 2), tenth);
}

std::string StateLine(const Report& report)
{
    const std::string front =
        fmt::format("{} {:<6} ", ClockText(report.epoch.utc), StateName(report.verdict.state));
    if (report.verdict.state != State::Store || !report.tip) {
        const auto& reasons = report.verdict.reasons;
        return front + (reasons.empty() ? "the tip is not known" : reasons.front().text);
    }
    const field::Tip tip = JudgedTip(report);
    const field::Epoch& epoch = report.epoch;
    const std::string age =
        epoch.correctionAge ? fmt::format(" age {:.1f}", *epoch.correctionAge) : std::string();
    return front
           + fmt::format("lean {:.1f} to {:.0f}  sd {:.0f} {:.0f} {:.0f} mm (N E h)  {} {} sat{}",
                         tip.tilt, tip.azimuthTrue, Millimeters(tip.sigma.nn),
                         Millimeters(tip.sigma.ee), Millimeters(tip.sigma.hh), NameOf(epoch.fix),
                         epoch.satellites, age);
}

field::Tip JudgedTip(const Report& report)
{
    field::Tip tip = *report.tip;
    if (!report.byOccupation || !report.occupation || !report.occupationTip) return tip;
    const auto& c = report.occupation->covariance;
    tip.position = *report.occupationTip;
    tip.sigma = {c[0][0], c[0][1], c[1][1], c[0][2], c[1][2], c[2][2]};
    return tip;
}

std::string ReportJson(const Report& report)
{
    const field::Epoch& epoch = report.epoch;
    std::string state(StateName(report.verdict.state));
    for (char& c : state)
        c = static_cast<char>(c - 'A' + 'a');
    ordered_json json;
    json["utc"] = epoch.utc;
    json["date"] = nullptr;
    if (epoch.date) {
        const std::chrono::year_month_day day(*epoch.date);
        json["date"] =
            fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    }
    json["state"] = state;
    json["reasons"] = ordered_json::array();
    json["codes"] = ordered_json::array();
    for (const field::Reason& reason : report.verdict.reasons) {
        json["reasons"].push_back(reason.text);
        json["codes"].push_back(ReasonName(reason.code));
    }
    json["tip"] = report.tip ? TipJson(JudgedTip(report)) : ordered_json(nullptr);
    json["quality"] = static_cast<int>(epoch.fix);
    json["satellites"] = epoch.satellites;
    json["age_s"] = epoch.correctionAge ? Figure(*epoch.correctionAge) : ordered_json(nullptr);
    json["station"] = epoch.station;
    json["geoid_m"] = Figure(epoch.geoidSeparation);
    json["occupation"] =
        report.occupation ? OccupationJson(*report.occupation) : ordered_json(nullptr);
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + '\n';
}

std::string CountersText(const field::Counters& c)
{
    return fmt::format("receiver   {} lines, {} of them bad, {} refused, {} not used; {} epochs, "
                       "{} repeated\n"
                       "pose       {} samples; {} bad, {} refused\n"
                       "epochs     {} store, {} wait, {} block\n",
                       c.receiverLines, c.receiverBad, c.receiverRefused, c.receiverOther, c.epochs,
                       c.repeated, c.poses, c.posesBad, c.posesRefused, c.stored, c.waited,
                       c.blocked);
}

} // namespace live
