// SPDX-License-Identifier: MIT
#include "apps/cli/simulate/SimulateOutput.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"

namespace cli {

using nlohmann::ordered_json;

void Say(const std::string& sentence)
{
    tables::Tell("{}\n", sentence);
}

void AddJson(CLI::App& command, bool& json)
{
    command.add_flag("--json", json, "Print what was written as JSON; needs a file for the log");
}

CLI::Option* AddFile(CLI::App& command, const char* option, std::string& path,
                     const char* description)
{
    return command.add_option(option, path, description)->type_name("FILE");
}

ordered_json NameOrNull(const std::string& path)
{
    return path.empty() ? ordered_json(nullptr) : ordered_json(path);
}

void RefuseLogOnJson(bool json, const std::string& out)
{
    if (json && out == "-") throw tables::InputError("--json needs a file for the log: give --out");
}

} // namespace cli
