// SPDX-License-Identifier: MIT
#include "quality/TurnFigures.h"

namespace quality {

std::string MissingSector::Name() const
{
    const auto three = [](int degrees) {
        const std::string digits = std::to_string(degrees);
        return std::string(3 - digits.size(), '0') + digits;
    };
    return three(from) + "-" + three(to);
}

} // namespace quality
