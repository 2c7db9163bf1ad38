// SPDX-License-Identifier: MIT
#include "framework/gui/Static.h"

#include "framework/gui/Selected.h"

#include <optional>

IMPLEMENT_DYNAMIC(CStatic, CWnd)

BEGIN_MESSAGE_MAP(CStatic, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

BOOL CStatic::Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent, UINT id)
{
    return CWnd::Create(L"STATIC", text, style, rect, parent, id);
}

void CStatic::OnPaint()
{
    CPaintDC dc(this);
    if (!dc.GetSafeHdc()) return;
    CRect client;
    GetClientRect(&client);
    CString text;
    GetWindowText(text);
    CFont* const font = GetFont();
    std::optional<framework::Selected<CFont>> useFont;
    if (font) useFont.emplace(dc, *font);
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(GetSysColor(COLOR_WINDOWTEXT));
    const DWORD alignment = GetStyle() & (SS_CENTER | SS_RIGHT);
    dc.DrawText(text, &client,
                alignment == SS_CENTER  ? DT_CENTER
                : alignment == SS_RIGHT ? DT_RIGHT
                                        : DT_LEFT);
}
