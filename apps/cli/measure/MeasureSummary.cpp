// SPDX-License-Identifier: MIT
#include "apps/cli/measure/MeasureSummary.h"

#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

std::string Line(std::string_view label, const std::string& text)
{
    return fmt::format("{:<24}{}\n", label, text);
}

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
        {"min",  values.Min()   },
        {"p50",  values.At(0.5) },
        {"p90",  values.At(0.9) },
        {"p99",  values.At(0.99)},
        {"max",  values.Max()   },
        {"mean", values.Mean()  }
    };
}

nlohmann::ordered_json ExtentJson(const tables::Extent& values)
{
    return {
        {"min",  values.Min() },
        {"mean", values.Mean()},
        {"max",  values.Max() }
    };
}

nlohmann::ordered_json PointJson(const xyhCoordinate& point)
{
    return {
        {"N", point.x},
        {"E", point.y},
        {"h", point.h}
    };
}

} // namespace

void MeasureSummary::Add(const Measurement& m)
{
    m_tilt.Add(m.tilt);
    m_reach.Add(PlanError(m.tip, m.antenna));
    m_tip[0].Add(m.tip.x);
    m_tip[1].Add(m.tip.y);
    m_tip[2].Add(m.tip.h);
    m_still += m.still ? 1 : 0;
    m_interference += m.interference ? 1 : 0;
    if (m_setup.truth) {
        m_planError.Add(PlanError(m.tip, *m_setup.truth));
        m_heightError.Add(std::fabs(m.tip.h - m_setup.truth->h));
    }
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
    text += Line("samples", fmt::format("{} measured, {} rows skipped", Samples(), m_skipped));
    text += Line("pole",
                 fmt::format("{:.3f} m, sensor type {}", m_setup.poleLength, m_setup.sensorType));
    text += Line("calibration", fmt::format("{}, heading bias A {:.4f}, B {:.4f} degrees", config,
                                            m_setup.biasA, m_setup.biasB));
    text += Line("tilt", fmt::format("{:.1f} to {:.1f} degrees, median {:.1f}", m_tilt.Min(),
                                     m_tilt.Max(), m_tilt.At(0.5)));
    text += Line("held still", Share(m_still, Samples()));
    text += Line("magnetic interference", Share(m_interference, Samples()));
    text +=
        Line("antenna to tip, plan", fmt::format("{:.3f} to {:.3f} m, median {:.3f}", m_reach.Min(),
                                                 m_reach.Max(), m_reach.At(0.5)));
    text += Line("tip, mean", Point(m_tip[0].Mean(), m_tip[1].Mean(), m_tip[2].Mean()));
    if (m_setup.truth) {
        const xyhCoordinate& truth = *m_setup.truth;
        text += Line("tip, true", Point(truth.x, truth.y, truth.h));
        text += Line("mean minus true tip",
                     fmt::format("N {:+.4f}  E {:+.4f}  h {:+.4f} m", m_tip[0].Mean() - truth.x,
                                 m_tip[1].Mean() - truth.y, m_tip[2].Mean() - truth.h));
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
    nlohmann::ordered_json json;
    json["log"] = m_setup.log;
    json["samples"] = Samples();
    json["skipped"] = {
        {"count", m_skipped},
        {"rows",  m_named  }
    };
    json["pole_length_m"] = m_setup.poleLength;
    json["sensor_type"] = m_setup.sensorType;
    json["config"] = nullptr;
    if (!m_setup.config.empty()) json["config"] = m_setup.config;
    json["bias_A_deg"] = m_setup.biasA;
    json["bias_B_deg"] = m_setup.biasB;
    if (Samples() == 0) return json;
    json["still_samples"] = m_still;
    json["interference_samples"] = m_interference;
    json["percentiles"] = m_tilt.IsExact() ? "exact" : "within 0.1 %";
    json["tilt_deg"] = SpreadJson(m_tilt);
    json["antenna_to_tip_plan_m"] = SpreadJson(m_reach);
    json["tip_m"] = {
        {"N", ExtentJson(m_tip[0])},
        {"E", ExtentJson(m_tip[1])},
        {"h", ExtentJson(m_tip[2])}
    };
    if (m_setup.truth) {
        json["true_tip_m"] = PointJson(*m_setup.truth);
        json["error_horizontal_m"] = SpreadJson(m_planError);
        json["error_height_m"] = SpreadJson(m_heightError);
    }
    return json;
}

} // namespace cli
