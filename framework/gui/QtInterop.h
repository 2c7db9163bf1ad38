// SPDX-License-Identifier: MIT
/// @file
/// For hosts built on Qt: the widget of a window, for use in the host's layouts.
#pragma once

#include "framework/core/Export.h"

class CWnd;
class QWidget;

namespace framework {

/// The widget that shows `window`; null before the window is created. Destroying the window
/// destroys the widget; where Qt destroys the widget first, with its parent for example, the window
/// is destroyed as if it were closed. Its size hint is the size the window was given; the window
/// takes the size the layout gives the widget.
TILTPOLE_API QWidget* NativeWidget(CWnd& window);

} // namespace framework
