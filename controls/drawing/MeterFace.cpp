// SPDX-License-Identifier: MIT
#include "controls/drawing/MeterFace.h"

#include "controls/drawing/Blit.h"

#include "framework/core/String.h"
#include "framework/gui/Selected.h"

#include <algorithm>

namespace tiltpole::controls {

using framework::Selected;

bool MeterFace::PrepareBackground(CDC& target, const CRect& clientNow)
{
    client = clientNow;
    if (background.GetSafeHdc() && backgroundBitmap.GetSafeHandle()) return false;
    background.CreateCompatibleDC(&target);
    backgroundBitmap.CreateCompatibleBitmap(&target, client.Width(), client.Height());
    previousBitmap = background.SelectObject(&backgroundBitmap);
    return true;
}

void MeterFace::DropBackground()
{
    if (!previousBitmap || !backgroundBitmap.GetSafeHandle() || !background.GetSafeHdc()) return;
    background.SelectObject(previousBitmap);
    background.DeleteDC();
    backgroundBitmap.DeleteObject();
}

void MeterFace::Compose(CDC& target, const std::function<void(CDC&)>& drawOver)
{
    CDC memory;
    memory.CreateCompatibleDC(&target);
    CBitmap picture;
    picture.CreateCompatibleBitmap(&target, client.Width(), client.Height());
    const Selected usePicture(memory, picture);
    CopyOntoFresh(memory, client.Size(), background, backgroundBitmap);
    drawOver(memory);
    target.BitBlt(0, 0, client.Width(), client.Height(), &memory, 0, 0, SRCCOPY);
}

void MeterFace::FillAndMeasure(CDC& dc, const CRect& rect)
{
    CPen noPen(PS_NULL, 1, RGB(0, 0, 0));
    CBrush fill(backColor);
    const Selected usePen(dc, noPen);
    const Selected useBrush(dc, fill);
    dc.SetBkColor(backColor);
    dc.FillRect(&rect, &fill);
    dc.Rectangle(&rect);

    center = rect.CenterPoint();
    diameter = std::min(rect.Width(), rect.Height()) - 5;
    needleUnit = diameter / 60;
}

bool MeterFace::AddFix(int degrees)
{
    for (INT_PTR i = 0; i < fixes.GetSize(); ++i)
        if (fixes.GetAt(i) == degrees) return false;
    fixes.Add(degrees);
    return true;
}

CDC* MeterFace::FixContext(CWnd& window)
{
    auto* const handle = window.GetSafeHwnd();
    if (!fixContext || fixWindow != handle) fixContext = window.GetDC();
    fixWindow = handle;
    return fixContext;
}

void MeterFace::TakeWindow(CWnd& window)
{
    fixContext = nullptr;
    window.ModifyStyle(0, kMeterStyle);
}

void MakeLabelFont(CFont& font)
{
    font.CreateFont(18, 0, 0, 0, FW_BOLD, 0, 0, 0, 0, 0, 0, 0, 0, L"Tahoma");
}

void DrawLabel(CDC& dc, CPoint at, int number)
{
    CString text;
    text.Format(L"%d", number);
    CRect box(at.x - kLabelHalf, at.y - kLabelHalf, at.x + kLabelHalf, at.y + kLabelHalf);
    dc.DrawText(text, &box, DT_CENTER);
}

} // namespace tiltpole::controls
