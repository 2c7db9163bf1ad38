// SPDX-License-Identifier: MIT
#pragma once

#include "field/Bridge.h"

#include <string_view>

namespace tiltpole::field {

/// A reason in a word or two, as $PTLTS has it: "moving", "no pose"; empty for a number that is none.
std::string_view ReasonName(::field::Reason::Code code);

} // namespace tiltpole::field
