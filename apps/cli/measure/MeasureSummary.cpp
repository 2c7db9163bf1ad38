// SPDX-License-Identifier: MIT
#include "apps/cli/measure/MeasureSummary.h"

#include "apps/cli/JsonOutput.h"
#include "apps/cli/SummaryLine.h"
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

std::string Point(double n, double e, double h)
{
    return fmt::format("N {:.4f}  E {:.4f}  h {:.4f} m", n, e, h);
}

std::string Share(std::uint64_t part, std::uint64_t whole)
{
    return fmt::format("{} samples ({:.1f} %)", part,
                       100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

std::string ErrorRow(std::string_view label, tables::Percentiles& errors)
{
    constexpr double kMillimeters = 1000.0;
    return fmt::format("  {:<22}{:9.1f}{:9.1f}{:9.1f}{:9.1f}\n", label,
                       kMillimeters * errors.At(0.5), kMillimeters * errors.At(0.9),
                       kMillimeters * errors.At(0.99), kMillimeters * errors.Max());
}

nlohmann::ordered_json SpreadJson(tables::Percentiles& values)
{
    return {
        {"min",  Figure(values.Min())   },
        {"p50",  Figure(values.At(0.5)) },
        {"p90",  Figure(values.At(0.9)) },
        {"p99",  Figure(values.At(0.99))},
        {"max",  Figure(values.Max())   },
        {"mean", Figure(values.Mean())  }
    };
}

nlohmann::ordered_json ExtentJson(const tables::Extent& values, bool hasMean)
{
    return {
        {"min",  Figure(values.Min())},
        {"mean", Figure(values.Mean(), hasMean)},
        {"max",      Figure(values.Max())                     }
    };
}

const char* PitchRollText(field::PitchRoll meaning)
{
    return meaning == field::PitchRoll::Turns ? "turns" : "slopes";
}

} // namespace

void MeasureSummary::Add(const Measurement& m, std::optional<std::string_view> point)
{
    m_tilt.Add(m.tilt);
    m_reach.Add(PlanError(m.tip, m.antenna));
    m_tips.Add(m.tip, point);
    m_antennaHeight.Add(m.antenna.h);
    m_still += m.still ? 1 : 0;
    m_interference += m.interference ? 1 : 0;
    if (m_setup.truth) {
        m_planError.Add(PlanError(m.tip, *m_setup.truth));
        m_heightError.Add(std::fabs(m.tip.h - m_setup.truth->h));
    }
}

// Noise alone keeps heights from being alike, a pole that leans more so.
std::optional<std::string> MeasureSummary::HeightProblem() const
{
    constexpr std::uint64_t kFewest = 8;
    constexpr double kLeans = 2.0; // [degrees]
    const bool alike =
        m_antennaHeight.Count() >= kFewest && m_antennaHeight.Min() == m_antennaHeight.Max();
    if (!alike || (m_antennaHeight.Min() != 0.0 && m_tilt.Max() - m_tilt.Min() < kLeans))
        return std::nullopt;
    return fmt::format("the antenna's height is {:.3f} m throughout: the log lacks heights, and "
                       "those of the tips are wrong",
                       m_antennaHeight.Min());
}

bool MeasureSummary::Skip(const std::string& message)
{
    ++m_skipped;
    if (m_named.size() == kMostNamed) return false;
    m_named.push_back(message);
    return true;
}

std::string MeasureSummary::Text()
{
    const std::string config = m_setup.config.empty() ? "identity" : m_setup.config;
    std::string text = Line("log", m_setup.log);
    if (!m_columns.empty()) text += Line("columns", m_columns);
    text += Line("samples", fmt::format("{} measured, {} rows skipped", Samples(), m_skipped));
    if (m_withoutAntenna > 0)
        text +=
            Line("", fmt::format("{} rows have no antenna position, so no tip", m_withoutAntenna));
    text += Line("pole",
                 fmt::format("{:.3f} m, sensor type {}", m_setup.poleLength, m_setup.sensorType));
    text += Line("calibration", fmt::format("{}, heading bias A {:.4f}, B {:.4f} degrees", config,
                                            m_setup.biasA, m_setup.biasB));
    if (m_setup.exact)
        text += Line("attitude",
                     fmt::format("exact, pitch and roll as {}", PitchRollText(*m_setup.exact)));
    text += Line("tilt", fmt::format("{:.1f} to {:.1f} degrees, median {:.1f}", m_tilt.Min(),
                                     m_tilt.Max(), m_tilt.At(0.5)));
    text += Line("held still", Share(m_still, Samples()));
    text += Line("magnetic interference", Share(m_interference, Samples()));
    text +=
        Line("antenna to tip, plan", fmt::format("{:.3f} to {:.3f} m, median {:.3f}", m_reach.Min(),
                                                 m_reach.Max(), m_reach.At(0.5)));
    if (const auto problem = HeightProblem()) text += Line("warning", *problem);
    text += m_tips.Text();
    if (m_setup.truth) {
        const xyhCoordinate& truth = *m_setup.truth;
        text += Line("tip, true", Point(truth.x, truth.y, truth.h));
        const auto& tips = m_tips.All();
        if (m_tips.IsOnePlace())
            text += Line("mean minus true tip",
                         fmt::format("N {:+.4f}  E {:+.4f}  h {:+.4f} m", tips[0].Mean() - truth.x,
                                     tips[1].Mean() - truth.y, tips[2].Mean() - truth.h));
        text += fmt::format("{:<24}{:>9}{:>9}{:>9}{:>9}\n", "tip error [mm]", "p50", "p90", "p99",
                            "max");
        text += ErrorRow("horizontal", m_planError);
        text += ErrorRow("height, absolute", m_heightError);
    }
    if (!m_tilt.IsExact()) text += "With this many samples, percentiles are accurate to 0.1 %.\n";
    return text;
}

nlohmann::ordered_json MeasureSummary::Json()
{
    nlohmann::ordered_json json = JsonHeader("measure");
    json["log"] = m_setup.log;
    json["columns"] = m_columns;
    json["samples"] = Samples();
    json["skipped"] = {
        {"count", m_skipped},
        {"rows",  m_named  }
    };
    json["rows_without_antenna"] = m_withoutAntenna;
    json["attitude"] = m_setup.exact ? "exact" : "standard";
    json["pitch_roll"] = nullptr;
    if (m_setup.exact) json["pitch_roll"] = PitchRollText(*m_setup.exact);
    json["pole_length_m"] = m_setup.poleLength;
    json["sensor_type"] = m_setup.sensorType;
    json["config"] = nullptr;
    if (!m_setup.config.empty()) json["config"] = m_setup.config;
    json["bias_a_deg"] = m_setup.biasA;
    json["bias_b_deg"] = m_setup.biasB;
    if (Samples() == 0) return json;
    json["still_samples"] = m_still;
    json["interference_samples"] = m_interference;
    json["percentiles"] = m_tilt.IsExact() ? "exact" : "within 0.1 %";
    json["tilt_deg"] = SpreadJson(m_tilt);
    json["antenna_to_tip_plan_m"] = SpreadJson(m_reach);
    const auto& tips = m_tips.All();
    const bool onePlace = m_tips.IsOnePlace();
    json["one_point"] = onePlace;
    json["tip"] = {
        {"n_m", ExtentJson(tips[0], onePlace)},
        {"e_m", ExtentJson(tips[1], onePlace)},
        {"h_m", ExtentJson(tips[2], onePlace)}
    };
    json["points"] = m_tips.Json();
    json["warnings"] = nlohmann::ordered_json::array();
    if (const auto problem = HeightProblem()) json["warnings"].push_back(*problem);
    if (m_setup.truth) {
        const xyhCoordinate& truth = *m_setup.truth;
        json["true_tip"] = PointJson(truth.x, truth.y, truth.h);
        json["error_horizontal_m"] = SpreadJson(m_planError);
        json["error_height_m"] = SpreadJson(m_heightError);
    }
    return json;
}

} // namespace cli
