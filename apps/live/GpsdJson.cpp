// SPDX-License-Identifier: MIT
#include "apps/live/GpsdJson.h"

#include "field/nmea/SentenceText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

using tiltpole::field::PositionText;
using tiltpole::field::SentenceText;

namespace {

using Json = nlohmann::json;

constexpr double kKnot = 1852.0 / 3600.0; // m/s

std::optional<double> NumberOf(const Json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number()) return std::nullopt;
    const double value = found->get<double>();
    if (!std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<int> IntegerOf(const Json& object, const char* key)
{
    const std::optional<double> value = NumberOf(object, key);
    if (!value || std::fabs(*value) > 1e6) return std::nullopt;
    return static_cast<int>(*value);
}

struct Time
{
    std::string utc;  // hhmmss.sss
    std::string date; // ddmmyy
};

// "2026-11-22T13:07:58.000Z"; the engine judges the digits.
std::optional<Time> TimeOf(const Json& object)
{
    const auto found = object.find("time");
    if (found == object.end() || !found->is_string()) return std::nullopt;
    const std::string& text = found->get_ref<const std::string&>();
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    if (text.size() <= kForm.size() || text.size() > 30 || text.back() != 'Z') return std::nullopt;
    for (std::size_t i = 0; i < text.size() - 1; ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        const char form = i < kForm.size() ? kForm[i] : i == kForm.size() ? '.' : '0';
        if (form == '0' ? !isDigit : text[i] != form) return std::nullopt;
    }
    const auto part = [&text](std::size_t at, std::size_t size) { return text.substr(at, size); };
    return Time{part(11, 2) + part(14, 2) + part(17, text.size() - 18),
                part(8, 2) + part(5, 2) + part(2, 2)};
}

// Of GGA, by gpsd's status and mode.
int QualityOf(const Json& tpv)
{
    constexpr int kFixMode = 2;
    if (IntegerOf(tpv, "mode").value_or(0) < kFixMode) return 0;
    switch (IntegerOf(tpv, "status").value_or(1)) {
    case 2:
        return 2; // differential
    case 3:
        return 4; // fixed
    case 4:
        return 5; // float
    case 5:
    case 6:
    case 8:
        return 6; // dead reckoning, with satellites or without; simulated
    default:
        return 1;
    }
}

char ModeOf(int quality)
{
    constexpr std::string_view kModes = "NAD RFE";
    return kModes[static_cast<std::size_t>(quality)];
}

std::string TextOf(std::optional<int> value, std::size_t digits)
{
    if (!value || *value < 0) return {};
    const std::string text = std::to_string(*value);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

struct Heights
{
    double orthometric;
    double separation;
};

// gpsd gives two or three of: above the ellipsoid, above the geoid, the distance of these.
std::optional<Heights> HeightsOf(const Json& tpv)
{
    const std::optional<double> ellipsoidal = NumberOf(tpv, "altHAE");
    const std::optional<double> orthometric = NumberOf(tpv, "altMSL");
    const std::optional<double> separation = NumberOf(tpv, "geoidSep");
    if (orthometric && separation) return Heights{*orthometric, *separation};
    if (orthometric && ellipsoidal) return Heights{*orthometric, *ellipsoidal - *orthometric};
    if (ellipsoidal && separation) return Heights{*ellipsoidal - *separation, *separation};
    return std::nullopt;
}

std::string GstOf(const Json& gst)
{
    const std::optional<Time> time = TimeOf(gst);
    if (!time) return {};
    return SentenceText("GNGST")
        .Text(time->utc)
        .Number(NumberOf(gst, "rms"), 4)
        .Number(NumberOf(gst, "major"), 4)
        .Number(NumberOf(gst, "minor"), 4)
        .Number(NumberOf(gst, "orient"), 1)
        .Number(NumberOf(gst, "lat"), 4)
        .Number(NumberOf(gst, "lon"), 4)
        .Number(NumberOf(gst, "alt"), 4)
        .Framed();
}

std::string TpvOf(const Json& tpv, const std::string& satellites, const std::string& hdop)
{
    const std::optional<Time> time = TimeOf(tpv);
    if (!time) return {};
    const std::optional<double> latitude = NumberOf(tpv, "lat");
    const std::optional<double> longitude = NumberOf(tpv, "lon");
    const std::optional<Heights> heights = HeightsOf(tpv);
    const int quality = QualityOf(tpv);
    if (quality > 0 && (!latitude || !longitude || !heights)) return {}; // the epoch's next has all
    const char mode = ModeOf(quality);
    const std::string place = quality > 0 ? PositionText(*latitude, *longitude) : ",,,";
    SentenceText gga("GNGGA");
    gga.Text(time->utc).Text(place).Text(std::to_string(quality)).Text(satellites).Text(hdop);
    if (quality > 0)
        gga.Number(heights->orthometric, 4).Text("M").Number(heights->separation, 4).Text("M");
    else
        gga.Text(",M,,M");
    gga.Number(NumberOf(tpv, "dgpsAge"), 1).Text(TextOf(IntegerOf(tpv, "dgpsSta"), 4));

    std::optional<double> knots = NumberOf(tpv, "speed");
    if (knots) *knots /= kKnot;
    SentenceText rmc("GNRMC");
    rmc.Text(time->utc).Text(quality > 0 ? "A" : "V").Text(place).Number(knots, 3);
    rmc.Number(NumberOf(tpv, "track"), 2).Text(time->date).Text({}).Text({});
    return gga.Framed() + rmc.Text({&mode, 1}).Framed();
}

} // namespace

std::string GpsdJson::Feed(std::string_view line)
{
    if (line.size() > kLongestLine) return {};
    const Json object = Json::parse(line.begin(), line.end(), nullptr, false);
    if (!object.is_object()) return {};
    const auto kind = object.find("class");
    if (kind == object.end() || !kind->is_string()) return {};
    if (*kind == "GST") return GstOf(object);
    if (*kind == "TPV") return TpvOf(object, m_satellites, m_hdop);
    if (*kind != "SKY") return {};

    if (const auto used = IntegerOf(object, "uSat")) {
        m_satellites = TextOf(std::clamp(*used, 0, 99), 2);
    } else if (const auto list = object.find("satellites");
               list != object.end() && list->is_array()) {
        const auto isUsed = [](const Json& satellite) {
            return satellite.is_object() && satellite.value("used", Json()) == true;
        };
        const auto count = std::count_if(list->begin(), list->end(), isUsed);
        m_satellites = TextOf(static_cast<int>(std::min<std::ptrdiff_t>(count, 99)), 2);
    }
    if (const auto hdop = NumberOf(object, "hdop"); hdop && *hdop >= 0.0 && *hdop < 1000.0)
        m_hdop = fmt::format("{:.2f}", *hdop);
    return {};
}
