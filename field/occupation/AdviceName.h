// SPDX-License-Identifier: MIT
#pragma once

#include "field/Occupation.h"

#include <string_view>

namespace tiltpole::field {

/// store, move or refuse, as tables and JSON have it.
constexpr std::string_view AdviceName(::field::OccupationAdvice advice)
{
    switch (advice) {
    case ::field::OccupationAdvice::Store:
        return "store";
    case ::field::OccupationAdvice::Move:
        return "move";
    case ::field::OccupationAdvice::Refuse:
        break;
    }
    return "refuse";
}

} // namespace tiltpole::field
