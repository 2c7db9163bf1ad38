// SPDX-License-Identifier: MIT
//
// Numbers as text, with a decimal point in every locale.
#pragma once

#include <string>

namespace tiltpole::quality {

/// The number with so many decimals, right-aligned in `width` places; "-" for one that is none.
std::string Fixed(double number, int decimals, int width = 0);

/// The fewest digits that read back as the finite number: "0.1", "-5", "1000000", "1e+30".
std::string Shortest(double number);

} // namespace tiltpole::quality
