// SPDX-License-Identifier: MIT
#include "apps/cli/OptionChecks.h"

#include "apps/charts/Picture.h"
#include "apps/tables/Numbers.h"
#include <fmt/format.h>

namespace cli {

CLI::Validator FiniteNumber()
{
    return {[](std::string& text) {
                return tables::ParseNumber(text) ? std::string{}
                                                 : "'" + text + "' is not a finite number";
            },
            "", "finite number"};
}

CLI::Validator PositiveNumber()
{
    return {[](std::string& text) {
                const auto value = tables::ParseNumber(text);
                return value && *value > 0.0 ? std::string{}
                                             : "'" + text + "' is not a number above zero";
            },
            "", "positive number"};
}

CLI::Validator NumberList(std::size_t count)
{
    return {[count](std::string& text) {
                return tables::ParseNumbers(text, count)
                           ? std::string{}
                           : fmt::format("'{}' is not {} numbers with commas "
                                         "between them",
                                         text, count);
            },
            "", "numbers"};
}

CLI::Validator PictureName()
{
    return {[](std::string& path) {
                return charts::IsPictureName(path) ? std::string{}
                                                   : "'" + path + "' does not end in .png or .svg";
            },
            "", "picture name"};
}

} // namespace cli
