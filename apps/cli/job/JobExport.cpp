// SPDX-License-Identifier: MIT
#include "apps/cli/job/JobExport.h"

#include "apps/cli/JsonOutput.h"
#include "apps/tables/CsvField.h"
#include "field/job/JobTime.h"
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <string_view>

namespace cli {

namespace {

constexpr int kLengthDigits = 4;  // 0.1 mm
constexpr int kDegreeDigits = 10; // 0.01 mm
constexpr int kAngleDigits = 2;

double HeightOf(const field::JobPoint& point, ExportHeight height)
{
    return height == ExportHeight::Received ? point.receivedHeight : point.tip.ellipsoidalHeight;
}

// A line of fields. What is not known stays empty.
class Row
{
public:
    void Text(std::string_view text)
    {
        Separate();
        // A note may have been typed in several lines; a row is one.
        std::string line(text);
        for (char& c : line)
            if (static_cast<unsigned char>(c) < 0x20) c = ' ';
        tables::AppendField(m_row, line);
    }

    void Number(double value, int decimals)
    {
        Separate();
        if (!std::isfinite(value)) return;
        const std::string digits = fmt::format("{:.{}f}", value, decimals);
        const bool zero = digits.find_first_not_of("-0.") == std::string::npos;
        const std::string_view shown = digits;
        m_row.append(zero && digits.front() == '-' ? shown.substr(1) : shown);
    }

    void Integer(std::int64_t value)
    {
        Separate();
        fmt::format_to(std::back_inserter(m_row), "{}", value);
    }

    void End()
    {
        m_row.push_back('\n');
        m_first = true;
    }

    std::string All() const { return fmt::to_string(m_row); }

private:
    void Separate()
    {
        if (!m_first) m_row.push_back(',');
        m_first = false;
    }

    fmt::memory_buffer m_row;
    bool m_first = true;
};

std::string PlainTable(const std::vector<NamedPoint>& points, const ExportChoice& choice,
                       Projection& projection)
{
    Row rows;
    for (const NamedPoint& named : points) {
        const PlanePoint place = projection.Place(named.point.tip, named.name);
        const bool northFirst = choice.format == ExportFormat::Pnezd;
        rows.Text(named.name);
        rows.Number(northFirst ? place.north : place.east, kLengthDigits);
        rows.Number(northFirst ? place.east : place.north, kLengthDigits);
        rows.Number(HeightOf(named.point, choice.height), kLengthDigits);
        rows.Text(named.point.code);
        rows.End();
    }
    return rows.All();
}

const char* NameOf(ExportHeight height)
{
    return height == ExportHeight::Received ? "received" : "ellipsoidal";
}

std::string Table(const std::vector<NamedPoint>& points, const ExportChoice& choice,
                  Projection* projection)
{
    Row rows;
    const std::string_view place = projection != nullptr ? "N_m,E_m" : "latitude_deg,longitude_deg";
    std::string header =
        fmt::format("name,{},h_m,height,geoid_m,code,note,utc,sd_N_m,sd_E_m,sd_h_m,epochs,left_out,"
                    "tilt_deg,azimuth_true_deg,quality,station,age_s,gate,forced,setup\n",
                    place);
    for (const NamedPoint& named : points) {
        const field::JobPoint& point = named.point;
        rows.Text(named.name);
        if (projection != nullptr) {
            const PlanePoint plane = projection->Place(point.tip, named.name);
            rows.Number(plane.north, kLengthDigits);
            rows.Number(plane.east, kLengthDigits);
        } else {
            rows.Number(point.tip.latitude, kDegreeDigits);
            rows.Number(point.tip.longitude, kDegreeDigits);
        }
        rows.Number(HeightOf(point, choice.height), kLengthDigits);
        rows.Text(NameOf(choice.height));
        rows.Number(point.geoid, kLengthDigits);
        rows.Text(point.code);
        rows.Text(point.note);
        rows.Text(field::JobTimeText(point.utc));
        rows.Number(std::sqrt(point.sigma.nn), kLengthDigits);
        rows.Number(std::sqrt(point.sigma.ee), kLengthDigits);
        rows.Number(std::sqrt(point.sigma.hh), kLengthDigits);
        rows.Integer(point.epochs);
        rows.Integer(point.leftOut);
        rows.Number(point.tilt, kAngleDigits);
        rows.Number(point.azimuthTrue, kAngleDigits);
        rows.Integer(static_cast<int>(point.quality));
        rows.Text(point.station);
        rows.Number(point.correctionAge, 1);
        rows.Text(point.gate);
        rows.Integer(point.forced ? 1 : 0);
        rows.Integer(point.setup);
        rows.End();
    }
    return header + rows.All();
}

// To so many decimals: JSON would show the last bits.
nlohmann::ordered_json Rounded(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return Figure(std::round(value * scale) / scale);
}

nlohmann::ordered_json Properties(const NamedPoint& named)
{
    const field::JobPoint& point = named.point;
    nlohmann::ordered_json json;
    json["name"] = named.name;
    json["code"] = TextOrNull(point.code);
    json["note"] = TextOrNull(point.note);
    json["utc"] = field::JobTimeText(point.utc);
    json["h_ell_m"] = Rounded(point.tip.ellipsoidalHeight, kLengthDigits);
    json["h_received_m"] = Rounded(point.receivedHeight, kLengthDigits);
    json["geoid_m"] = Rounded(point.geoid, kLengthDigits);
    json["sd_n_m"] = Rounded(std::sqrt(point.sigma.nn), kLengthDigits);
    json["sd_e_m"] = Rounded(std::sqrt(point.sigma.ee), kLengthDigits);
    json["sd_h_m"] = Rounded(std::sqrt(point.sigma.hh), kLengthDigits);
    json["epochs"] = point.epochs;
    json["left_out"] = point.leftOut;
    json["tilt_deg"] = Rounded(point.tilt, kAngleDigits);
    json["azimuth_true_deg"] = Rounded(point.azimuthTrue, kAngleDigits);
    json["quality"] = static_cast<int>(point.quality);
    json["station"] = TextOrNull(point.station);
    json["age_s"] = Figure(point.correctionAge);
    json["gate"] = TextOrNull(point.gate);
    json["forced"] = point.forced;
    return json;
}

std::string GeoJson(const std::vector<NamedPoint>& points)
{
    nlohmann::ordered_json json;
    json["type"] = "FeatureCollection";
    json["features"] = nlohmann::ordered_json::array();
    for (const NamedPoint& named : points) {
        const field::Geodetic& tip = named.point.tip;
        nlohmann::ordered_json feature;
        feature["type"] = "Feature";
        feature["geometry"] = {
            {"type",        "Point"                         },
            {"coordinates",
             {Rounded(tip.longitude, kDegreeDigits), Rounded(tip.latitude, kDegreeDigits),
              Rounded(tip.ellipsoidalHeight, kLengthDigits)}}
        };
        feature["properties"] = Properties(named);
        json["features"].push_back(std::move(feature));
    }
    return JsonText(json);
}

} // namespace

std::string ExportText(const std::vector<NamedPoint>& points, const ExportChoice& choice,
                       Projection* projection)
{
    switch (choice.format) {
    case ExportFormat::Pnezd:
    case ExportFormat::Penzd:
        return PlainTable(points, choice, *projection);
    case ExportFormat::GeoJson:
        return GeoJson(points);
    case ExportFormat::Csv:
        break;
    }
    return Table(points, choice, projection);
}

} // namespace cli
