// SPDX-License-Identifier: MIT
/// @class CFrameWnd
/// CFrameWnd: the main window of a program.
///
///     class MainFrame : public CFrameWnd
///     {
///         afx_msg int OnCreate(LPCREATESTRUCT created); // makes the controls
///         afx_msg void OnSize(UINT type, int width, int height); // places them
///         DECLARE_MESSAGE_MAP()
///     };
///
///     auto* const frame = new MainFrame; // deletes itself
///     if (!frame->Create(nullptr, L"Survey pole")) return 1;
///     frame->ShowWindow(SW_SHOW);
///     return application.Run();
#pragma once

#include "framework/gui/Wnd.h"

class TILTPOLE_API CFrameWnd : public CWnd
{
    DECLARE_DYNCREATE(CFrameWnd)

public:
    CFrameWnd() = default;

    /// A place and size that the framework chooses.
    static const CRect rectDefault;

    /// Creates a top-level window, or a child with WS_CHILD; a null class name stands for a class
    /// with double clicks and the color of windows. `parent` owns a top-level frame, which ends
    /// with it. `menuName` is ignored. FALSE where CreateEx returns FALSE.
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style = WS_OVERLAPPEDWINDOW,
                        const RECT& rect = rectDefault, CWnd* parent = nullptr,
                        LPCTSTR menuName = nullptr, DWORD exStyle = 0,
                        CCreateContext* context = nullptr);

    /// Gives the client area to the child with the id AFX_IDW_PANE_FIRST, if there is one.
    virtual void RecalcLayout(BOOL notify = TRUE);

protected:
    BOOL PreCreateWindow(CREATESTRUCT& created) override;
    /// Deletes a frame that was made with new.
    void PostNcDestroy() override;

    afx_msg void OnSize(UINT type, int width, int height);

    DECLARE_MESSAGE_MAP()

private:
    using CWnd::Create;
};
