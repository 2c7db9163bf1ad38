// SPDX-License-Identifier: MIT
#include "framework/gui/FrameWnd.h"

#include "framework/gui/detail/FrameClass.h"

IMPLEMENT_DYNCREATE(CFrameWnd, CWnd)

BEGIN_MESSAGE_MAP(CFrameWnd, CWnd)
ON_WM_SIZE()
END_MESSAGE_MAP()

const CRect CFrameWnd::rectDefault(CW_USEDEFAULT, CW_USEDEFAULT, 0, 0);

BOOL CFrameWnd::Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                       CWnd* parent, LPCTSTR, DWORD exStyle, CCreateContext* context)
{
    const bool isDefault = rect.left == CW_USEDEFAULT;
    return CreateEx(exStyle, className, windowName, style, rect.left, rect.top,
                    isDefault ? CW_USEDEFAULT : rect.right - rect.left,
                    isDefault ? CW_USEDEFAULT : rect.bottom - rect.top,
                    parent ? parent->GetSafeHwnd() : nullptr, nullptr, context);
}

BOOL CFrameWnd::PreCreateWindow(CREATESTRUCT& created)
{
    framework::UseFrameClass(created);
    return CWnd::PreCreateWindow(created);
}

void CFrameWnd::PostNcDestroy()
{
    if (IsMadeWithNew()) delete this;
}

void CFrameWnd::RecalcLayout(BOOL)
{
    CRect client;
    GetClientRect(&client);
    if (CWnd* const pane = GetDlgItem(static_cast<int>(AFX_IDW_PANE_FIRST)))
        pane->MoveWindow(&client);
}

void CFrameWnd::OnSize(UINT, int, int)
{
    Default();
    RecalcLayout();
}

namespace framework {

void UseFrameClass(CREATESTRUCT& created)
{
    if (created.lpszClass) return;
    created.lpszClass = AfxRegisterWndClass(CS_DBLCLKS, nullptr, CBrush(GetSysColor(COLOR_WINDOW)));
}

} // namespace framework
