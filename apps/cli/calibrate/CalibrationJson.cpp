// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationOutput.h"

#include "apps/cli/JsonOutput.h"

namespace cli {

namespace {

using nlohmann::ordered_json;
using quality::MagnetometerFigures;
using quality::TurnFigures;

ordered_json Number(double value)
{
    return Figure(value);
}

ordered_json Optional(const std::optional<double>& value)
{
    return value ? Number(*value) : ordered_json(nullptr);
}

// Null where the log has no accelerations, which then were not checked.
ordered_json AccelerationJson(const std::optional<quality::TurnAcceleration>& a)
{
    if (!a) return nullptr;
    ordered_json json;
    json["length_g"] = Number(a->length);
    json["left_out_share"] = Number(a->leftOut);
    json["outward_g"] = Optional(a->outward);
    return json;
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
    json["off_circle_a_share"] = Number(t.circleA);
    json["off_circle_b_share"] = Number(t.circleB);
    json["axis_error_deg"] = Number(t.axisError);
    json["wobble_deg"] = Number(t.wobble);
    json["level_error_deg"] = Optional(t.levelError);
    json["acceleration"] = AccelerationJson(t.acceleration);
    return json;
}

ordered_json DirectionJson(const quality::Direction& d)
{
    return {
        {"azimuth_deg",   Number(d.azimuth)  },
        {"elevation_deg", Number(d.elevation)}
    };
}

ordered_json HiddenJson(const quality::HiddenError& hidden)
{
    ordered_json json;
    json["tilt_deg"] = Number(hidden.tilt);
    json["turns_deg"] = Number(hidden.turns);
    json["noise_deg"] = Number(hidden.noise);
    json["dip_difference_deg"] = Number(hidden.dipDifference);
    return json;
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
    json["hidden"] = HiddenJson(heading->hidden);
    return json;
}

ordered_json FieldChangeJson(const std::optional<quality::FieldChange>& change)
{
    if (!change) return nullptr;
    ordered_json json;
    json["length_share"] = Number(change->length);
    json["dip_deg"] = Number(change->dip);
    return json;
}

// Numbers are null where nothing was checked.
ordered_json TiltErrorJson(const quality::TiltError& error)
{
    const bool checked = error.pitchDeviation > 0.0;
    ordered_json json;
    json["pitch_deg"] = Figure(error.pitch, checked);
    json["pitch_deviation_deg"] = Figure(error.pitchDeviation, checked);
    json["roll_deg"] = Figure(error.roll, checked);
    json["roll_deviation_deg"] = Figure(error.rollDeviation, checked);
    return json;
}

ordered_json TiltJson(const quality::TiltEvidence& tilt)
{
    ordered_json json;
    json["offset"] = TiltErrorJson(tilt.offset);
    json["drift"] = TiltErrorJson(tilt.drift);
    json["swing_deg"] = Number(tilt.swing);
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
    json["field_change"] = FieldChangeJson(m.change);
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

} // namespace

ordered_json CalibrationJson(const quality::Calibration& c)
{
    ordered_json json;
    json["magnetometer_a"] = CorrectionJson(c.correctionA);
    json["magnetometer_b"] = CorrectionJson(c.correctionB);
    json["translation"] = {Number(c.translation.dX), Number(c.translation.dY),
                           Number(c.translation.dZ)};
    json["bias_a_deg"] = Number(c.biasAngleA);
    json["bias_b_deg"] = Number(c.biasAngleB);
    return json;
}

ordered_json JsonOf(const quality::CalibrationReport& report, const quality::CalibrationRun& run)
{
    ordered_json json = JsonHeader("calibrate");
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
    json["heading_uncertainty_deg"] =
        judged ? Number(report.headingUncertainty) : ordered_json(nullptr);
    json["heading_bound_deg"] = judged ? Number(report.headingBound) : ordered_json(nullptr);
    json["sensor_type"] = run.sensorType;
    json["horizontal"] = TurnJson(report.horizontal);
    json["vertical"] = TurnJson(report.vertical);
    json["magnetometer_a"] = MagnetometerJson(report.a);
    json["magnetometer_b"] = MagnetometerJson(report.b);
    json["tilt"] = report.a.heading ? TiltJson(report.tilt) : ordered_json(nullptr);
    json["suspects"] = report.suspects;
    json["agreement_a_b"] = nullptr;
    if (report.agreement) {
        ordered_json agreement;
        agreement["mean_deg"] = Number(report.agreement->mean);
        agreement["deviation_deg"] = Number(report.agreement->deviation);
        agreement["largest_deg"] = Number(report.agreement->largest);
        agreement["systematic_deg"] = Number(report.agreement->systematic);
        json["agreement_a_b"] = agreement;
    }
    json["calibration"] = CalibrationJson(run.calibration);
    return json;
}

} // namespace cli
