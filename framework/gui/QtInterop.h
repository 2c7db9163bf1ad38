// SPDX-License-Identifier: MIT
//
// For hosts built on Qt: the widget of a window, to stand in a layout of theirs.
#pragma once

#include "framework/core/Export.h"

class CWnd;
class QWidget;

namespace framework {

/// The widget that shows `window`; null before it is created. The window owns it: a host that puts
/// it into a layout destroys the window first. Its size in the layout becomes the window's size.
TILTPOLE_API QWidget* NativeWidget(CWnd& window);

} // namespace framework
