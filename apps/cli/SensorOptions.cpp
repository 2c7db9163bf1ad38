// SPDX-License-Identifier: MIT
#include "apps/cli/SensorOptions.h"

#include "apps/cli/OptionChecks.h"
#include "apps/tables/Numbers.h"

namespace cli {

namespace {

CLI::Validator StrengthAndDip()
{
    const auto problemOf = [](const std::string& text) -> std::string {
        const auto shape = tables::ParseNumbers(text, 2);
        if (!shape) return "'" + text + "' is not STRENGTH,DIP";
        if (!((*shape)[0] > 0.0)) return "the strength must be above 0";
        const std::string dip = tables::OutsideOf(tables::simulated::kSlant, (*shape)[1]);
        return dip.empty() ? dip : "the dip " + dip;
    };
    return {problemOf, "", "STRENGTH,DIP"};
}

} // namespace

CLI::Option* AddConfigOptions(CLI::App& command, std::string& config, bool& partial)
{
    CLI::Option* const added =
        command
            .add_option("--config", config,
                        "Parameter file of the calibration; without it, raw readings are used")
            ->type_name("FILE");
    command.add_flag("--partial-config", partial,
                     "Accept a parameter file with missing keys, which keep their defaults");
    return added;
}

void AddSensorTypeOption(CLI::App& command, int& type, const std::string& more)
{
    command
        .add_option("--sensor-type", type,
                    "1 (default): x forward, y left, z up the pole; other values: x right, y "
                    "forward, z up"
                        + more)
        ->type_name("N");
}

void AddBiasOption(CLI::App& command, std::optional<double>& bias)
{
    command
        .add_option("--bias", bias,
                    "Heading bias of magnetometer A [degrees], subtracted from its heading; "
                    "overrides --config")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngle));
}

CLI::Option* AddFieldOption(CLI::App& command, std::string& field, const std::string& use)
{
    return command
        .add_option("--field", field,
                    "Strength [counts] and dip [degrees] of the undisturbed field, as the report "
                    "of the calibration has them; "
                        + use)
        ->type_name("STRENGTH,DIP")
        ->check(StrengthAndDip());
}

} // namespace cli
