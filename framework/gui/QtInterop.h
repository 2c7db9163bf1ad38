// SPDX-License-Identifier: MIT
//
// For hosts built on Qt: the widget of a window, for use in the host's layouts.
#pragma once

#include "framework/core/Export.h"

class CWnd;
class QWidget;

namespace framework {

/// The widget that shows `window`; null before the window is created. The window owns the widget:
/// destroy the window before the layout. The window takes the size the layout gives the widget.
TILTPOLE_API QWidget* NativeWidget(CWnd& window);

} // namespace framework
