// SPDX-License-Identifier: MIT
//
// The window class of frames and views that are created without one.
#pragma once

#include "framework/gui/Types.h"

namespace framework {

// With double clicks and the color of windows; a class that is named stays.
void UseFrameClass(CREATESTRUCT& created);

} // namespace framework
