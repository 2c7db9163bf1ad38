// SPDX-License-Identifier: MIT
#pragma once

#include "field/Bridge.h"

#include <string_view>

namespace tiltpole::field {

/// STORE, WAIT or BLOCK, as $PTLTS and the programs have it; BLOCK for a number that is none.
constexpr std::string_view StateName(::field::State state)
{
    switch (state) {
    case ::field::State::Store:
        return "STORE";
    case ::field::State::Wait:
        return "WAIT";
    case ::field::State::Block:
        break;
    }
    return "BLOCK";
}

} // namespace tiltpole::field
