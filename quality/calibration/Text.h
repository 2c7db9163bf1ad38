// SPDX-License-Identifier: MIT
//
// Numbers as text, with a decimal point in every locale.
#pragma once

#include <string>

namespace tiltpole::quality {

/// The number with so many decimals, right-aligned in `width` places; "-" for one that is none.
std::string Fixed(double number, int decimals, int width = 0);

} // namespace tiltpole::quality
