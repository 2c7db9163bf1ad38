// SPDX-License-Identifier: MIT
/// @class CView
/// CView: a window whose contents the host draws in OnDraw.
///
/// A view is usually made with new and then deletes itself after its window: whoever made it only
/// keeps a pointer. A view that is a variable or a member stays the host's.
///
///     auto* const view = new GroundView;
///     view->Create(nullptr, nullptr, AFX_WS_DEFAULT_VIEW, rect, &frame, IDC_GROUND);
#pragma once

#include "framework/gui/Wnd.h"

class TILTPOLE_API CView : public CWnd
{
    DECLARE_DYNAMIC(CView)

public:
    /// Calls OnUpdate; a host calls it once its view is created.
    virtual void OnInitialUpdate();

protected:
    CView() = default;

    /// A view without a class name gets one with double clicks and the color of windows.
    BOOL PreCreateWindow(CREATESTRUCT& created) override;

    /// What the view shows has changed: invalidates it. The arguments are the host's own.
    virtual void OnUpdate(CView* sender, LPARAM hint, CObject* object);

    /// Called before OnDraw with the same context.
    virtual void OnPrepareDC(CDC* dc);
    /// Draws the view.
    virtual void OnDraw(CDC* dc) = 0;

    /// Deletes a view that was made with new.
    void PostNcDestroy() override;

    afx_msg void OnPaint();

    DECLARE_MESSAGE_MAP()
};
