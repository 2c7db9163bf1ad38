// SPDX-License-Identifier: MIT
#include "framework/gui/View.h"

IMPLEMENT_DYNAMIC(CView, CWnd)

BEGIN_MESSAGE_MAP(CView, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

void CView::OnPrepareDC(CDC*) {}

void CView::OnPaint()
{
    CPaintDC dc(this);
    if (!dc.GetSafeHdc()) return;
    OnPrepareDC(&dc);
    OnDraw(&dc);
}
