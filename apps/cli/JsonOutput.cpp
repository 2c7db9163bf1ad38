// SPDX-License-Identifier: MIT
#include "apps/cli/JsonOutput.h"

#include "apps/tables/Output.h"
#include <cmath>

namespace cli {

using nlohmann::ordered_json;

ordered_json JsonHeader(const std::string& command)
{
    ordered_json json;
    json["format"] = "tiltpole " + command;
    json["version"] = kJsonVersion;
    json["units"] = {
        {"_m",   "meters"            },
        {"_m2",  "square meters"     },
        {"_mm",  "millimeters"       },
        {"_deg", "degrees"           },
        {"_rad", "radians"           },
        {"_ppm", "parts per million" },
        {"_s",   "seconds"           },
        {"_hz",  "samples per second"}
    };
    return json;
}

ordered_json Figure(double value, bool known)
{
    if (!known || !std::isfinite(value)) return nullptr;
    return value;
}

ordered_json TextOrNull(const std::string& text)
{
    if (text.empty()) return nullptr;
    return text;
}

ordered_json PointJson(double north, double east, double height)
{
    ordered_json json;
    json["n_m"] = Figure(north);
    json["e_m"] = Figure(east);
    json["h_m"] = Figure(height);
    return json;
}

std::string JsonText(const ordered_json& json)
{
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

void PrintJson(const ordered_json& json)
{
    tables::Output output("-");
    output.Write(JsonText(json));
    output.Finish();
}

} // namespace cli
