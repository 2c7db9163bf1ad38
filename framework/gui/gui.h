// SPDX-License-Identifier: MIT
/// @file
/// Includes every header of the windowed part of the framework.
#pragma once

#include "framework/core/core.h"         // IWYU pragma: export
#include "framework/gui/Application.h"   // IWYU pragma: export
#include "framework/gui/DeviceContext.h" // IWYU pragma: export
#include "framework/gui/Diagnostics.h"   // IWYU pragma: export
#include "framework/gui/FrameWnd.h"      // IWYU pragma: export
#include "framework/gui/GdiObject.h"     // IWYU pragma: export
#include "framework/gui/MessageMap.h"    // IWYU pragma: export
#include "framework/gui/Messages.h"      // IWYU pragma: export
#include "framework/gui/Static.h"        // IWYU pragma: export
#include "framework/gui/Types.h"         // IWYU pragma: export
#include "framework/gui/View.h"          // IWYU pragma: export
#include "framework/gui/WindowCalls.h"   // IWYU pragma: export
#include "framework/gui/Wnd.h"           // IWYU pragma: export
