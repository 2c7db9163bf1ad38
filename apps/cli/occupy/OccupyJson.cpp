// SPDX-License-Identifier: MIT
#include "apps/cli/JsonOutput.h"
#include "apps/cli/occupy/OccupyReport.h"
#include "apps/cli/occupy/TrueTips.h"
#include "field/occupation/AdviceName.h"
#include <cmath>

namespace cli {

namespace {

using nlohmann::ordered_json;

ordered_json PercentilesJson(tables::Percentiles& values)
{
    const bool any = values.Count() > 0;
    return {
        {"p50", Figure(values.At(0.5),  any)},
        {"p90", Figure(values.At(0.9),  any)},
        {"p99", Figure(values.At(0.99), any)},
        {"max", Figure(values.Max(),    any)}
    };
}

ordered_json DistancesJson(ErrorSummary& summary)
{
    ordered_json json;
    json["points"] = summary.Count();
    json["horizontal_m"] = PercentilesJson(summary.plan);
    json["height_m"] = PercentilesJson(summary.height);
    return json;
}

ordered_json ErrorsJson(ErrorSummary summary)
{
    ordered_json json = DistancesJson(summary);
    json["in_ellipse"] = summary.inEllipse;
    json["in_height_interval"] = summary.inInterval;
    return json;
}

ordered_json SamplesJson(ErrorSummary summary)
{
    ordered_json json = DistancesJson(summary);
    json.erase("points");
    json["tips"] = summary.Count();
    return json;
}

void AddRegion(ordered_json& json, const field::OccupationEstimate& e)
{
    json["tip_m"] = {
        {"N", Figure(e.tip.x, e.hasTip)},
        {"E", Figure(e.tip.y, e.hasTip)},
        {"h", Figure(e.tip.h, e.hasTip)}
    };
    json["ellipse_95_m"] = {
        {"major",       Figure(e.ellipseMajor,   e.hasTip)},
        {"minor",       Figure(e.ellipseMinor,   e.hasTip)},
        {"azimuth_deg", Figure(e.ellipseAzimuth, e.hasTip)}
    };
    json["height_95_m"] = Figure(e.heightHalfInterval, e.hasTip);
}

void AddCounts(ordered_json& json, const OccupiedPoint& point)
{
    json["duration_s"] = Figure(point.estimate.seconds);
    json["samples"] = {
        {"read", point.samples      },
        {"late", point.lateSamples  },
        {"gaps", point.estimate.gaps}
    };
    json["epochs"] = {
        {"read",     point.epochs           },
        {"used",     point.estimate.epochs  },
        {"doubtful", point.estimate.doubtful},
        {"late",     point.lateEpochs       },
        {"unused",   point.UnusedEpochs()   },
        {"held",     point.repeatedEpochs   },
        {"outside",  point.outsideEpochs    }
    };
}

void AddAttitude(ordered_json& json, const OccupiedPoint& point, const OccupySetup& setup)
{
    const field::OccupationEstimate& e = point.estimate;
    const auto delay = DelayOf(point, setup);
    json["heading_deg"] = Figure(e.heading, e.hasTip && !setup.gyroFree);
    json["heading_sd_deg"] = Figure(e.headingSigma, e.hasTip);
    json["lean_deg"] = Figure(e.lean, e.hasTip);
    json["magnetometer_minus_track_deg"] = Figure(e.magneticDifference, e.hasTip);
    json["delay_s"] = Figure(delay.value_or(0.0), delay.has_value());
    json["delay_sd_s"] = Figure(e.delaySigma, delay.has_value());
    json["sensor_height_m"] = Figure(e.sensorHeight, e.sensorHeight > 0.0);
}

void AddChecks(ordered_json& json, const field::OccupationEstimate& e)
{
    const bool checked = e.lengthSigma > 0.0;
    json["length_error_m"] = Figure(e.lengthError, checked);
    json["length_error_sd_m"] = Figure(e.lengthSigma, checked);
    json["plan_residual_m"] = Figure(e.planResidual, e.hasTip);
    json["height_residual_m"] = Figure(e.heightResidual, e.hasTip);
    json["variance_factor"] = Figure(e.varianceFactor, e.hasTip);
}

// Times from the first sample of the point.
ordered_json DisturbanceJson(const OccupiedPoint& point)
{
    ordered_json json;
    json["part"] = Figure(point.estimate.disturbedPart);
    json["spans"] = ordered_json::array();
    for (const field::DisturbedSpan& span : point.field.disturbances)
        json["spans"].push_back({
            {"from_s", Figure(span.from - point.from)},
            {"to_s",   Figure(span.to - point.from)  },
            {"reason", TextOf(span)                  }
        });
    return json;
}

ordered_json OccupationJson(const OccupiedPoint& point, const OccupySetup& setup)
{
    ordered_json json;
    json["point"] = point.name;
    json["advice"] = tiltpole::field::AdviceName(point.estimate.advice);
    json["reason"] = point.Reason();
    AddRegion(json, point.estimate);
    AddCounts(json, point);
    AddAttitude(json, point, setup);
    AddChecks(json, point.estimate);
    json["disturbed"] = nullptr;
    if (setup.field) json["disturbed"] = DisturbanceJson(point);
    if (point.error)
        json["error"] = {
            {"n_m",                Figure(point.error->north) },
            {"e_m",                Figure(point.error->east)  },
            {"h_m",                Figure(point.error->height)},
            {"in_ellipse",         point.error->inEllipse     },
            {"in_height_interval", point.error->inInterval    }
        };
    return json;
}

ordered_json CalibrationJson(const OccupySetup& setup)
{
    const xyhCoordinate& place = setup.spot.result.tip;
    return {
        {"file",     setup.calibration                                                       },
        {"made_utc", setup.spot.madeUtc                                                      },
        {"place_m",  {{"N", Figure(place.x)}, {"E", Figure(place.y)}, {"h", Figure(place.h)}}}
    };
}

} // namespace

ordered_json OccupyJson(const OccupyResult& result)
{
    const OccupySetup& setup = result.setup;
    ordered_json json = JsonHeader("occupy");
    json["log"] = setup.log;
    json["columns"] = result.columns;
    json["pole_length_m"] = setup.occupation.poleLength;
    json["sensor_type"] = setup.occupation.sensorType;
    json["config"] = nullptr;
    if (!setup.config.empty()) json["config"] = setup.config;
    json["calibration"] = nullptr;
    if (!setup.calibration.empty()) json["calibration"] = CalibrationJson(setup);
    json["bias_deg"] = setup.occupation.magneticBias;
    json["field"] = nullptr;
    if (setup.field)
        json["field"] = {
            {"expected_strength", Figure(setup.field->strength)},
            {"expected_dip_deg",  Figure(setup.field->dip)     }
        };
    json["uses_magnetometer"] = setup.occupation.useMagnetometer;
    json["uses_gyros"] = !setup.gyroFree;
    json["points_told_apart_by"] = result.toldApart ? "motion" : "names";
    json["rows_of_no_point"] = {
        {"samples", result.otherRows  },
        {"epochs",  result.otherEpochs}
    };
    json["points"] = ordered_json::array();
    for (const OccupiedPoint& point : result.points)
        json["points"].push_back(OccupationJson(point, setup));
    if (setup.truth.empty()) return json;
    ordered_json& errors = json["errors"];
    errors["truth"] = setup.truth;
    errors["single_samples"] = SamplesJson(SummaryOfSamples(result));
    errors["means"] = SamplesJson(SummaryOfMeans(result));
    errors["all"] = ErrorsJson(SummaryOf(result, false));
    errors["stored"] = ErrorsJson(SummaryOf(result, true));
    return json;
}

} // namespace cli
