// SPDX-License-Identifier: MIT
#pragma once

#include "field/Epoch.h"

namespace tiltpole::field {

/// The larger, the better the position: fixed, float, differential, single, estimated, none.
inline int FixRank(::field::Fix fix)
{
    using ::field::Fix;
    switch (fix) {
    case Fix::Fixed:
        return 5;
    case Fix::Float:
        return 4;
    case Fix::Differential:
        return 3;
    case Fix::Single:
        return 2;
    case Fix::Estimated:
        return 1;
    case Fix::Invalid:
        break;
    }
    return 0;
}

} // namespace tiltpole::field
