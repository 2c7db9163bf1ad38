// SPDX-License-Identifier: MIT
#include "apps/cli/ColumnsOption.h"

#include "apps/tables/Numbers.h"
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace cli {

namespace {

constexpr const char* kOption = "--columns";

std::vector<std::string> Parts(const std::string& text)
{
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        parts.emplace_back(tables::Trim({text.data() + at, end - at}));
        if (parts.back().empty()) throw CLI::ValidationError(kOption, "a name is empty");
        at = end + 1;
    }
    return parts;
}

tables::ColumnChoice ParseChoice(const std::string& text, const std::vector<std::string>& order,
                                 const std::vector<std::string>& keys)
{
    const std::vector<std::string> parts = Parts(text);
    tables::ColumnChoice choice;
    if (text.find('=') == std::string::npos) {
        if (parts.size() != order.size()) {
            throw CLI::ValidationError(
                kOption,
                fmt::format("takes the names of {}, or KEY=NAME with a key among {}, not '{}'",
                            fmt::join(order, ", "), fmt::join(keys, ", "), text));
        }
        for (std::size_t i = 0; i < parts.size(); ++i)
            choice[order[i]] = parts[i];
        return choice;
    }
    for (const std::string& part : parts) {
        const std::size_t equals = std::min(part.find('='), part.size());
        const std::string key = part.substr(0, equals);
        if (std::find(keys.begin(), keys.end(), key) == keys.end() || equals + 1 >= part.size())
            throw CLI::ValidationError(kOption,
                                       fmt::format("'{}' is not KEY=NAME with a key among {}", part,
                                                   fmt::join(keys, ", ")));
        if (!choice.emplace(key, part.substr(equals + 1)).second)
            throw CLI::ValidationError(kOption, fmt::format("{} is given twice", key));
    }
    return choice;
}

} // namespace

void AddColumnsOption(CLI::App& command, tables::ColumnChoice& choice,
                      std::vector<std::string> order, std::vector<std::string> more)
{
    const std::string names = fmt::format("{}|", fmt::join(order, ","));
    std::vector<std::string> keys = order;
    keys.insert(keys.end(), more.begin(), more.end());
    const auto take = [&choice, order = std::move(order), keys](const std::string& text) {
        choice = ParseChoice(text, order, keys);
    };
    command
        .add_option_function<std::string>(
            kOption, take, "Names of the columns to read, where the header's names are others")
        ->type_name(names + "KEY=NAME,...");
}

} // namespace cli
