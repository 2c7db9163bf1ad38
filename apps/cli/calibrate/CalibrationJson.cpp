// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationOutput.h"
#include <cmath>

namespace cli {

namespace {

using nlohmann::ordered_json;
using quality::MagnetometerFigures;
using quality::TurnFigures;

// NaN and infinities become null: JSON cannot express them.
ordered_json Number(double value)
{
    return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr);
}

ordered_json TurnJson(const TurnFigures& t)
{
    ordered_json missing = ordered_json::array();
    for (const quality::MissingSector& sector : t.missing)
        missing.push_back(sector.Name());
    ordered_json json;
    json["samples_recorded"] = t.recorded;
    json["samples_used"] = t.used;
    json["covered_deg"] = Number(t.covered);
    json["missing_sectors"] = missing;
    json["turning_back_share"] = Number(t.turningBack);
    json["off_circle_A_share"] = Number(t.circleA);
    json["off_circle_B_share"] = Number(t.circleB);
    json["axis_error_deg"] = Number(t.axisError);
    json["wobble_deg"] = Number(t.wobble);
    json["level_error_deg"] = t.levelError ? Number(*t.levelError) : ordered_json(nullptr);
    return json;
}

ordered_json DirectionJson(const quality::Direction& d)
{
    return {
        {"azimuth_deg",   Number(d.azimuth)  },
        {"elevation_deg", Number(d.elevation)}
    };
}

ordered_json HeadingJson(const std::optional<quality::HeadingError>& heading)
{
    if (!heading) return nullptr;
    ordered_json json;
    json["rms_deg"] = Number(heading->rms);
    json["rms_level_deg"] = Number(heading->rmsLevel);
    json["rms_tilt15_deg"] = Number(heading->rms15);
    json["rms_tilt30_deg"] = Number(heading->rms30);
    json["constant_deg"] = Number(heading->constant);
    json["joint_fit_uncertainty_deg"] = Number(heading->uncertainty);
    json["tip_tilt15_mm"] = Number(heading->tip15);
    json["tip_tilt30_mm"] = Number(heading->tip30);
    return json;
}

ordered_json MagnetometerJson(const MagnetometerFigures& m)
{
    ordered_json json;
    json["field_spread_raw"] = Number(m.spreadBefore);
    json["field_spread_corrected"] = Number(m.spreadAfter);
    json["hard_iron_counts"] = Number(m.hardIron.size);
    json["hard_iron_share"] = Number(m.hardIronShare);
    json["hard_iron_direction"] = DirectionJson(m.hardIron);
    json["soft_iron_share"] = Number(m.softIron.size);
    json["soft_iron_direction"] = DirectionJson(m.softIron);
    json["disturbed_share"] = Number(m.disturbed);
    json["heading_error"] = HeadingJson(m.heading);
    return json;
}

ordered_json CorrectionJson(const Incline_MagneticCorrectParameter& v)
{
    ordered_json json;
    json["a"] = Number(v.a);
    json["b"] = Number(v.b);
    json["c"] = Number(v.c);
    json["d"] = Number(v.d);
    json["e"] = Number(v.e);
    json["x0"] = Number(v.x0);
    json["y0"] = Number(v.y0);
    json["z0"] = Number(v.z0);
    return json;
}

ordered_json CalibrationJson(const quality::Calibration& c)
{
    ordered_json json;
    json["magnetometer_A"] = CorrectionJson(c.correctionA);
    json["magnetometer_B"] = CorrectionJson(c.correctionB);
    json["translation"] = {Number(c.translation.dX), Number(c.translation.dY),
                           Number(c.translation.dZ)};
    json["bias_A_deg"] = Number(c.biasAngleA);
    json["bias_B_deg"] = Number(c.biasAngleB);
    return json;
}

} // namespace

ordered_json JsonOf(const quality::CalibrationReport& report, const quality::CalibrationRun& run)
{
    ordered_json json;
    json["verdict"] = Name(report.verdict);
    json["accepted"] = IsAccepted(report.verdict);
    json["weaker"] = report.weak;
    json["weaker_because"] =
        report.weak ? ordered_json(Describe(report.jointFit)) : ordered_json(nullptr);
    json["reason"] = Name(report.reason);
    json["reason_text"] = Explain(report.reason);
    json["advice"] = Advice(report.reason);
    const bool judged = !report.weak && report.a.heading;
    json["heading_error_deg"] = judged ? Number(report.headingError) : ordered_json(nullptr);
    json["heading_bound_deg"] = judged ? Number(report.headingBound) : ordered_json(nullptr);
    json["sensor_type"] = run.sensorType;
    json["horizontal"] = TurnJson(report.horizontal);
    json["vertical"] = TurnJson(report.vertical);
    json["magnetometer_A"] = MagnetometerJson(report.a);
    json["magnetometer_B"] = MagnetometerJson(report.b);
    json["agreement_A_B"] = nullptr;
    if (report.agreement) {
        ordered_json agreement;
        agreement["mean_deg"] = Number(report.agreement->mean);
        agreement["deviation_deg"] = Number(report.agreement->deviation);
        agreement["largest_deg"] = Number(report.agreement->largest);
        json["agreement_A_B"] = agreement;
    }
    json["calibration"] = CalibrationJson(run.calibration);
    return json;
}

} // namespace cli
