// SPDX-License-Identifier: MIT
//
// What the JSON outputs of all commands have in common. Names are in lower case with the unit as
// their last word (`radius_m`, `tilt_deg`, `scale_ppm`; `_m2` square meters, `_mm` millimeters);
// what has no unit has no such word. A figure that is not known or not finite is null. docs/schemas
// describes each format; a member that is removed, renamed or means something else raises
// `version`.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace cli {

inline constexpr int kJsonVersion = 1;

/// The first members of an output: `format` ("tiltpole solve"), `version`, and `units`, the meaning
/// of the last words of names.
nlohmann::ordered_json JsonHeader(const std::string& command);

/// The value, or null: JSON cannot express NaN and infinities.
nlohmann::ordered_json Figure(double value, bool known = true);

/// The text, or null where it is empty.
nlohmann::ordered_json TextOrNull(const std::string& text);

/// {"n_m": ..., "e_m": ..., "h_m": ...}
nlohmann::ordered_json PointJson(double north, double east, double height);

/// The text of the object and a line end; bytes that are not UTF-8 are replaced.
std::string JsonText(const nlohmann::ordered_json& json);

/// Writes it to standard output.
/// @throws InputError when it cannot be written
void PrintJson(const nlohmann::ordered_json& json);

} // namespace cli
