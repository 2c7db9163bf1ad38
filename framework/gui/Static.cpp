// SPDX-License-Identifier: MIT
#include "framework/gui/Static.h"

#include "framework/gui/Selected.h"
#include "framework/gui/detail/PaintStatic.h"

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
    framework::PaintStatic(*this);
}

namespace framework {
namespace {

UINT FormatOf(DWORD style)
{
    UINT format = style & SS_NOPREFIX ? DT_NOPREFIX : 0;
    if (style & SS_CENTERIMAGE) format |= DT_SINGLELINE | DT_VCENTER;
    switch (style & SS_TYPEMASK) {
    case SS_LEFT:
        return format | DT_LEFT | DT_WORDBREAK;
    case SS_CENTER:
        return format | DT_CENTER | DT_WORDBREAK;
    case SS_RIGHT:
        return format | DT_RIGHT | DT_WORDBREAK;
    default:
        return format | DT_LEFT;
    }
}

} // namespace

void PaintStatic(CWnd& window)
{
    CPaintDC dc(&window);
    if (!dc.GetSafeHdc()) return;
    CRect client;
    window.GetClientRect(&client);
    CString text;
    window.GetWindowText(text);
    CFont* const font = window.GetFont();
    std::optional<Selected<CFont>> useFont;
    if (font) useFont.emplace(dc, *font);
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(GetSysColor(COLOR_WINDOWTEXT));
    dc.DrawText(text, &client, FormatOf(window.GetStyle()));
}

} // namespace framework
