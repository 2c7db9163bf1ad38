// SPDX-License-Identifier: MIT
#include "controls/drawing/MeterFace.h"

#include "controls/drawing/Blit.h"

#include "framework/core/String.h"
#include "framework/gui/Selected.h"

#include <algorithm>

namespace tiltpole::controls {

using framework::Selected;

void MeterFace::PrepareBackground(CDC& target, const CRect& clientNow,
                                  const std::function<void()>& draw)
{
    client = clientNow;
    if (background.GetSafeHdc()) return;
    try {
        PreparePicture(background, backgroundBitmap, target, client.Size());
        draw();
    } catch (...) {
        DropBackground();
        throw;
    }
}

void MeterFace::DropBackground()
{
    background.DeleteDC();
    backgroundBitmap.DeleteObject();
}

void MeterFace::Compose(CDC& target, const std::function<void(CDC&)>& drawOver)
{
    CBitmap picture;
    CDC memory; // ends before the picture, which it uses
    PreparePicture(memory, picture, target, client.Size());
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

void MeterFace::AddFix(int degrees, const std::function<void()>& draw)
{
    for (INT_PTR i = 0; i < fixes.GetSize(); ++i)
        if (fixes.GetAt(i) == degrees) return;
    const INT_PTR added = fixes.Add(degrees);
    try {
        draw();
    } catch (...) {
        fixes.RemoveAt(added);
        throw;
    }
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
