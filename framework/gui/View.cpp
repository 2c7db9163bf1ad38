// SPDX-License-Identifier: MIT
#include "framework/gui/View.h"

#include "framework/gui/detail/FrameClass.h"

IMPLEMENT_DYNAMIC(CView, CWnd)

BEGIN_MESSAGE_MAP(CView, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

BOOL CView::PreCreateWindow(CREATESTRUCT& created)
{
    framework::UseFrameClass(created);
    return CWnd::PreCreateWindow(created);
}

void CView::PostNcDestroy()
{
    if (IsMadeWithNew()) delete this;
}

void CView::OnInitialUpdate()
{
    OnUpdate(nullptr, 0, nullptr);
}

void CView::OnUpdate(CView*, LPARAM, CObject*)
{
    Invalidate();
}

void CView::OnPrepareDC(CDC*) {}

void CView::OnPaint()
{
    CPaintDC dc(this);
    if (!dc.GetSafeHdc()) return;
    OnPrepareDC(&dc);
    OnDraw(&dc);
}
