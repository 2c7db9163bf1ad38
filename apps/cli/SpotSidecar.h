// SPDX-License-Identifier: MIT
//
// What a calibration on the spot found beside the values of the parameter file: pole.cfg.spot.json
// beside pole.cfg. docs/schemas/spot-calibration.schema.json describes it.
#pragma once

#include "field/DisturbanceMonitor.h"
#include "field/SpotCalibration.h"
#include "quality/Calibration.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// The name of the sidecar of a parameter file; empty where there is no record either, see
/// RecordOf.
std::string SpotSidecarOf(const std::string& parameterFile);

/// Makes sure that writing the sidecar of `parameterFile` does not replace another kind of file.
/// @throws InputError naming that file
void CheckSidecarName(const std::string& parameterFile);

/// What a calibration on the spot is used with.
struct SpotSidecar
{
    field::SpotResult result; // as far as the sidecar keeps it
    double poleLength = 0.0;  // [m]
    int sensorType = 1;
    std::string madeUtc; // "2026-05-04T13:07:58Z"
};

/// The values that the parameter file takes: corrections and bias angles as they were found.
quality::Calibration CalibrationOf(const field::SpotResult& result);

/// @param refusal  why it is not usable; empty: it is
nlohmann::ordered_json SpotJson(const SpotSidecar& sidecar, const std::string& refusal);

/// @throws InputError where it cannot be read, is not a sidecar of this version, or has a value that
///         cannot be: those of the parameter file have its limits
SpotSidecar ReadSpotSidecar(const std::string& path);

/// "59 min", "47 h", "2 days": from then to now; empty where the time cannot be read or lies in
/// the future.
std::string AgeOf(const SpotSidecar& sidecar);

/// The time now, as in `madeUtc`.
std::string NowUtc();

} // namespace cli
