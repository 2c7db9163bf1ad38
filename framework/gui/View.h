// SPDX-License-Identifier: MIT
//
// CView: a window whose contents the host draws in OnDraw.
#pragma once

#include "framework/gui/Wnd.h"

class TILTPOLE_API CView : public CWnd
{
    DECLARE_DYNAMIC(CView)

protected:
    CView() = default;

    /// Called before OnDraw with the same context.
    virtual void OnPrepareDC(CDC* dc);
    /// Draws the view.
    virtual void OnDraw(CDC* dc) = 0;

    afx_msg void OnPaint();

    DECLARE_MESSAGE_MAP()
};
