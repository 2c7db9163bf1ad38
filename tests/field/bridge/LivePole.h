// SPDX-License-Identifier: MIT
//
// A pole on a receiver and a pose sensor for tests: the reports of what both send.
//
//     const auto reports = ReportsOf(setup, RecordsOf(ReplayTrack(), {.delay = 0.12}));
#pragma once

#include "tests/field/bridge/LiveTrack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace live_pole {

using field::Report;

/// The line of a report that begins with $GNxxx or $Pxxx; empty: none.
inline std::string LineOf(const Report& report, const std::string& type)
{
    const std::size_t begin = report.nmea.find(type);
    if (begin == std::string::npos) return "";
    return report.nmea.substr(begin, report.nmea.find("\r\n", begin) - begin);
}

/// A field of a line, 1 the first after the address.
inline std::string FieldOf(const std::string& line, int number)
{
    std::istringstream cells(line.substr(0, line.find('*')));
    std::string cell;
    for (int i = 0; i <= number; ++i) {
        cell.clear();
        std::getline(cells, cell, ',');
    }
    return cell;
}

/// A number; NaN where the text is none.
inline double NumberOf(const std::string& text)
{
    double value = 0.0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc{} && read.ptr == text.data() + text.size() ? value : std::nan("");
}

/// Degrees of field `number` (dddmm.mmmm) with the hemisphere behind it; NaN where it is empty.
inline double DegreesOf(const std::string& line, int number)
{
    const double value = NumberOf(FieldOf(line, number));
    const double whole = std::floor(value / 100.0);
    const std::string side = FieldOf(line, number + 1);
    const double degrees = whole + (value - 100.0 * whole) / 60.0;
    return side == "S" || side == "W" ? -degrees : degrees;
}

/// The tips that GGA and RMC of a report name, RMC with the height of GGA; those of quality 6, which
/// name no tip, apart.
inline std::vector<field::Geodetic> PlacesOf(const Report& report)
{
    const std::string gga = LineOf(report, "$GNGGA");
    const std::string rmc = LineOf(report, "$GNRMC");
    const double height = NumberOf(FieldOf(gga, 9)) + NumberOf(FieldOf(gga, 11));
    std::vector<field::Geodetic> places;
    if (!FieldOf(gga, 2).empty() && FieldOf(gga, 6) != "6")
        places.push_back({DegreesOf(gga, 2), DegreesOf(gga, 4), height});
    if (!FieldOf(rmc, 3).empty() && FieldOf(rmc, 12) != "E")
        places.push_back({DegreesOf(rmc, 3), DegreesOf(rmc, 5), height});
    return places;
}

/// What holds of every report: sentences of six kinds only, a tip wherever GGA or RMC have coordinates, and
/// never those of the antenna but with quality 6.
inline void CheckSentences(const Report& report)
{
    std::istringstream lines(report.nmea);
    std::string line;
    while (std::getline(lines, line)) {
        const std::string kind = line.substr(0, line.find(','));
        const bool known = kind == "$GNGGA" || kind == "$GNRMC" || kind == "$GNGST"
                           || kind.ends_with("GSA") || kind == "$PTLTS" || kind == "$PTLTA";
        EXPECT_TRUE(known && line.ends_with('\r')) << line;
    }
    for (const field::Geodetic& place : PlacesOf(report)) {
        ASSERT_TRUE(report.tip) << report.nmea;
        constexpr double kDigit = 0.001; // more than the last one [m]
        if (std::sin(report.tip->tilt * kPi / 180.0) < kDigit) continue; // a plumb pole
        const xyhCoordinate d = field::Difference(report.epoch.antenna, place);
        EXPECT_GT(std::hypot(d.x, d.y), kDigit) << report.nmea;
    }
}

inline std::vector<Report> ReportsOf(field::Bridge& bridge, const std::vector<Record>& records)
{
    std::vector<Report> reports;
    const auto take = [&] {
        for (Report& report : bridge.Take()) {
            CheckSentences(report);
            reports.push_back(std::move(report));
        }
    };
    for (const Record& record : records) {
        field::Play(bridge, record);
        take();
    }
    if (!records.empty()) bridge.Tick(records.back().at + std::chrono::milliseconds(150));
    take();
    return reports;
}

inline std::vector<Report> ReportsOf(const field::Setup& setup, const std::vector<Record>& records)
{
    field::Bridge bridge(setup);
    return ReportsOf(bridge, records);
}

/// Of the track's time of an epoch [s].
inline double SecondsOf(const Report& report)
{
    const auto moment = std::chrono::duration<double>(report.epoch.moment).count();
    return moment - kFirst;
}

inline bool Has(const Report& report, field::Reason::Code code)
{
    return std::ranges::find(report.verdict.reasons, code, &field::Reason::code)
           != report.verdict.reasons.end();
}

inline std::string ReasonsOf(const Report& report)
{
    std::string text;
    for (const field::Reason& reason : report.verdict.reasons)
        text += reason.text + "; ";
    return text;
}

/// Plan error of a tip against the track's [m].
inline double PlanError(const Report& report)
{
    const xyhCoordinate d = field::Difference(kTip, report.tip->position);
    return std::hypot(d.x, d.y);
}

/// Latitude to longitude of the GGA an epoch was made of.
inline std::string ReceivedPlace(const Report& report)
{
    const std::string& lines = report.epoch.lines;
    const std::size_t gga = lines.find("GGA,");
    if (gga == std::string::npos) return "";
    const std::size_t begin = lines.find(',', gga + 4) + 1;
    std::size_t end = begin;
    for (int commas = 0; end < lines.size(); ++end) {
        if (lines[end] == ',' && ++commas == 4) break;
    }
    return lines.substr(begin, end - begin);
}

/// Whether GGA or RMC carry the coordinates of the antenna.
inline bool CarriesAntenna(const Report& report)
{
    const std::string place = ReceivedPlace(report);
    if (place.empty() || place.front() == ',') return false;
    return LineOf(report, "GGA").find(place) != std::string::npos
           || LineOf(report, "RMC").find(place) != std::string::npos;
}

/// The value below which a part of them lies; of an empty vector NaN.
inline double Percentile(std::vector<double> values, double part)
{
    if (values.empty()) return std::nan("");
    std::ranges::sort(values);
    const auto index = static_cast<std::size_t>(part * static_cast<double>(values.size()));
    return values[std::min(index, values.size() - 1)];
}

} // namespace live_pole
