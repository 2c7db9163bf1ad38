// SPDX-License-Identifier: MIT
//
// What windows of the class STATIC show, with or without a CStatic.
#pragma once

class CWnd;

namespace framework {

// Paints the text of the window as its style says. Call while it handles WM_PAINT.
void PaintStatic(CWnd& window);

} // namespace framework
