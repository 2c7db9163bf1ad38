// SPDX-License-Identifier: MIT
#include "apps/cli/SpotSidecar.h"

#include "apps/cli/JsonOutput.h"
#include "apps/cli/calibrate/CalibrationRecord.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <limits>
#include <string_view>

namespace cli {

namespace {

using nlohmann::ordered_json;

constexpr const char* kFormat = "tiltpole spot calibration";
constexpr std::uint64_t kLargest = std::uint64_t{1} << 20; // bytes

constexpr tables::Range kSlant{-90.0, 90.0, "degrees"}; // of the pole's axis, of a field
constexpr tables::Range kAngleSigma{0.0, 180.0, "degrees"};
constexpr tables::Range kSensorSigma{0.0, 1e6, ""};
constexpr tables::Range kOnThePole{-100.0, 100.0, "m"};
constexpr tables::Range kDelaySigma{0.0, 10.0, "s"};
constexpr tables::Range kStrength{0.0, 1e7, "counts"};

ordered_json VectorJson(const field::SensorVector& v)
{
    return {Figure(v.x), Figure(v.y), Figure(v.z)};
}

ordered_json VectorJson(const field::SpotVector& v)
{
    return {
        {"value", VectorJson(v.value)},
        {"sd",    VectorJson(v.sigma)}
    };
}

ordered_json MagnetometerJson(const field::SpotMagnetometer& m)
{
    if (!m.found) return nullptr;
    ordered_json soft = ordered_json::array();
    for (const auto& row : m.softIron)
        soft.push_back({row[0], row[1], row[2]});
    const auto& c = m.correction;
    ordered_json json;
    json["hard_iron_counts"] = VectorJson(m.hardIron);
    json["soft_iron"] = soft;
    json["soft_iron_sd"] = Figure(m.softIronSigma);
    json["correction"] = {
        {"x0", c.x0},
        {"y0", c.y0},
        {"z0", c.z0},
        {"a",  c.a },
        {"b",  c.b },
        {"c",  c.c },
        {"d",  c.d },
        {"e",  c.e }
    };
    json["bias_found_deg"] = Figure(m.bias);
    json["bias_sd_deg"] = Figure(m.biasSigma);
    json["strength_counts"] = Figure(m.strength);
    json["strength_sd_counts"] = Figure(m.strengthSigma);
    json["dip_deg"] = Figure(m.dip);
    json["dip_sd_deg"] = Figure(m.dipSigma);
    json["residual_counts"] = Figure(m.residual);
    return json;
}

// Reads members of an object and says which one is missing.
class Members
{
public:
    Members(const std::string& file, const ordered_json& json, std::string path = {})
        : m_file(file), m_json(json), m_path(std::move(path))
    {}

    double Number(const char* key, const tables::Range& range) const
    {
        if (m_json.contains(key) && m_json[key].is_number())
            return Within(range, key, m_json[key].get<double>());
        throw tables::InputError(m_file, fmt::format("{}{} is not a number", m_path, key));
    }

    int Integer(const char* key) const
    {
        const bool isInteger = m_json.contains(key) && m_json[key].is_number_integer();
        const double value = isInteger ? m_json[key].get<double>() : std::nan("");
        if (std::fabs(value) <= std::numeric_limits<int>::max()) return static_cast<int>(value);
        throw tables::InputError(m_file, fmt::format("{}{} is not an integer", m_path, key));
    }

    Members At(const char* key) const
    {
        if (m_json.contains(key) && m_json[key].is_object())
            return {m_file, m_json[key], m_path + key + "."};
        throw tables::InputError(m_file, fmt::format("{}{} is not an object", m_path, key));
    }

    bool IsNull(const char* key) const { return m_json.contains(key) && m_json[key].is_null(); }

    field::SensorVector Vector(const char* key, const tables::Range& range) const
    {
        const bool isArray =
            m_json.contains(key) && m_json[key].is_array() && m_json[key].size() == 3;
        if (isArray) {
            const ordered_json& v = m_json[key];
            if (v[0].is_number() && v[1].is_number() && v[2].is_number())
                return {Within(range, key, v[0].get<double>()),
                        Within(range, key, v[1].get<double>()),
                        Within(range, key, v[2].get<double>())};
        }
        throw tables::InputError(m_file, fmt::format("{}{} is not three numbers", m_path, key));
    }

    field::SpotVector SpotVector(const char* key, const tables::Range& range) const
    {
        const Members members = At(key);
        return {members.Vector("value", range), members.Vector("sd", kSensorSigma)};
    }

private:
    double Within(const tables::Range& range, const char* key, double value) const
    {
        const std::string problem = tables::OutsideOf(range, value);
        if (problem.empty()) return value;
        throw tables::InputError(m_file, fmt::format("{}{} {}", m_path, key, problem));
    }

    const std::string& m_file;
    const ordered_json& m_json;
    std::string m_path;
};

field::SpotMagnetometer MagnetometerIn(const Members& json, const char* key)
{
    field::SpotMagnetometer m;
    if (json.IsNull(key)) return m;
    const Members members = json.At(key);
    m.found = true;
    m.hardIron = members.SpotVector("hard_iron_counts", tables::kReading);
    const Members c = members.At("correction");
    m.correction.x0 = c.Number("x0", tables::kReading);
    m.correction.y0 = c.Number("y0", tables::kReading);
    m.correction.z0 = c.Number("z0", tables::kReading);
    m.correction.a = c.Number("a", tables::kCorrectionShare);
    m.correction.b = c.Number("b", tables::kCorrectionScale);
    m.correction.c = c.Number("c", tables::kCorrectionShare);
    m.correction.d = c.Number("d", tables::kCorrectionShare);
    m.correction.e = c.Number("e", tables::kCorrectionScale);
    m.bias = members.Number("bias_found_deg", tables::kAngle);
    m.biasSigma = members.Number("bias_sd_deg", kAngleSigma);
    m.strength = members.Number("strength_counts", kStrength);
    m.dip = members.Number("dip_deg", kSlant);
    return m;
}

// Seconds since 1970; NaN where the text is no such time.
double SecondsOf(const std::string& utc)
{
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (std::sscanf(utc.c_str(), "%d-%u-%uT%d:%d:%dZ", &year, &month, &day, &hour, &minute, &second)
        != 6)
        return std::nan("");
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!date.ok()) return std::nan("");
    const auto days = std::chrono::sys_days(date).time_since_epoch().count();
    return 86400.0 * static_cast<double>(days) + 3600.0 * hour + 60.0 * minute + second;
}

std::chrono::sys_seconds Now()
{
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

} // namespace

std::string SpotSidecarOf(const std::string& parameterFile)
{
    constexpr std::string_view kEnd = ".json";
    const std::string record = RecordOf(parameterFile);
    if (record.empty()) return {};
    return record.substr(0, record.size() - kEnd.size()) + ".spot.json";
}

void CheckSidecarName(const std::string& parameterFile)
{
    CheckNameBeside(parameterFile, SpotSidecarOf(parameterFile), "sidecar", kFormat);
}

quality::Calibration CalibrationOf(const field::SpotResult& result)
{
    quality::Calibration calibration;
    calibration.correctionA = result.a.correction;
    calibration.correctionB = result.b.correction;
    calibration.biasAngleA = result.a.bias;
    calibration.biasAngleB = result.b.bias;
    return calibration;
}

ordered_json SpotJson(const SpotSidecar& sidecar, const std::string& refusal)
{
    const field::SpotResult& found = sidecar.result;
    ordered_json json = JsonHeader("spot calibration");
    json["units"]["_counts"] = "raw readings of a magnetometer";
    json["units"]["_g"] = "standard gravity";
    json["units"]["_dps"] = "degrees per second";
    json["verdict"] = refusal.empty() ? "usable" : "not usable";
    json["reason"] = refusal.empty() ? SpotText(found) : refusal;
    json["made_utc"] = sidecar.madeUtc;
    json["pole_m"] = sidecar.poleLength;
    json["sensor_type"] = sidecar.sensorType;
    json["duration_s"] = Figure(found.seconds);
    json["samples"] = found.samples;
    json["epochs"] = found.epochs;
    json["values"] = nullptr;
    if (!found.hasValues) return json;
    ordered_json& values = json["values"];
    values["place_m"] = {
        {"N", Figure(found.tip.x)},
        {"E", Figure(found.tip.y)},
        {"h", Figure(found.tip.h)}
    };
    values["turned_deg"] = Figure(found.turned);
    values["lean_spread_deg"] = Figure(found.leanSpread);
    values["axis_x_deg"] = Figure(found.axisX);
    values["axis_y_deg"] = Figure(found.axisY);
    values["axis_sd_deg"] = Figure(found.axisSigma);
    values["accelerometer_bias_g"] = VectorJson(found.accelerometerBias);
    values["gyro_bias_dps"] = VectorJson(found.gyroBias);
    values["gyro_scale"] = VectorJson(found.gyroScale);
    values["sensor_height_m"] = Figure(found.sensorHeight);
    values["sensor_height_sd_m"] = Figure(found.sensorHeightSigma);
    values["delay_s"] = Figure(-found.delay);
    values["delay_sd_s"] = Figure(found.delaySigma);
    values["pole_error_m"] = Figure(found.lengthError);
    values["pole_error_sd_m"] = Figure(found.lengthSigma);
    values["plan_residual_m"] = Figure(found.planResidual);
    values["height_residual_m"] = Figure(found.heightResidual);
    values["magnetometer_a"] = MagnetometerJson(found.a);
    values["magnetometer_b"] = MagnetometerJson(found.b);
    return json;
}

SpotSidecar ReadSpotSidecar(const std::string& path)
{
    const ordered_json json = ordered_json::parse(tables::ReadFile(path, kLargest), nullptr, false);
    if (!json.is_object() || !json.contains("format") || json["format"] != kFormat)
        throw tables::InputError(path, "is not a calibration on the spot (it ends in .spot.json)");
    if (!json.contains("version") || json["version"] != kJsonVersion)
        throw tables::InputError(
            path, fmt::format("is not of version {}, which this program reads", kJsonVersion));
    if (!json.contains("verdict") || json["verdict"] != "usable")
        throw tables::InputError(path, "is a calibration that cannot be used");
    const Members members(path, json);
    SpotSidecar sidecar;
    sidecar.poleLength = members.Number("pole_m", tables::kPoleLength);
    sidecar.sensorType = members.Integer("sensor_type");
    if (json.contains("made_utc") && json["made_utc"].is_string())
        sidecar.madeUtc = json["made_utc"].get<std::string>();
    const Members values = members.At("values");
    field::SpotResult& found = sidecar.result;
    found.reason = field::SpotReason::Usable;
    found.hasValues = true;
    const Members place = values.At("place_m");
    found.tip = {place.Number("N", tables::kCoordinate), place.Number("E", tables::kCoordinate),
                 place.Number("h", tables::kHeight)};
    found.axisX = values.Number("axis_x_deg", kSlant);
    found.axisY = values.Number("axis_y_deg", kSlant);
    found.axisSigma = values.Number("axis_sd_deg", kAngleSigma);
    found.accelerometerBias = values.SpotVector("accelerometer_bias_g", tables::kSensorValue);
    found.gyroBias = values.SpotVector("gyro_bias_dps", tables::kSensorValue);
    found.sensorHeight = values.Number("sensor_height_m", kOnThePole);
    found.delay = -values.Number("delay_s", tables::kDelay);
    found.delaySigma = values.Number("delay_sd_s", kDelaySigma);
    found.a = MagnetometerIn(values, "magnetometer_a");
    found.b = MagnetometerIn(values, "magnetometer_b");
    return sidecar;
}

std::string AgeOf(const SpotSidecar& sidecar)
{
    const double now = static_cast<double>(Now().time_since_epoch().count());
    const double age = now - SecondsOf(sidecar.madeUtc);
    if (!(age >= 0.0)) return {};
    if (age < 3600.0) return fmt::format("{:.0f} min", std::floor(age / 60.0));
    if (age < 172800.0) return fmt::format("{:.0f} h", std::floor(age / 3600.0));
    return fmt::format("{:.0f} days", std::floor(age / 86400.0));
}

std::string NowUtc()
{
    const std::chrono::sys_seconds now = Now();
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(now - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

} // namespace cli
