// SPDX-License-Identifier: MIT
#include "controls/drawing/Layers.h"

#include "controls/drawing/Blit.h"
#include "controls/drawing/Pixel.h"
#include "controls/drawing/Segment.h"
#include "framework/gui/Selected.h"

namespace tiltpole::controls {
namespace {

using framework::Selected;

constexpr int kArm = 50; // pixels
constexpr int kHeadLength = 3;
constexpr int kCrossArm = 3;

// The face is spelled "Arical" on purpose. No system has it: text falls back to the usual face.
void MakeLetterFont(CFont& font)
{
    font.CreateFont(14, 0, 0, 0, 150, 0, 0, 0, 0, 0, 0, 0, 32, L"Arical");
}

} // namespace

void Layer::Refill(CDC& like, const CRect& client, COLORREF color)
{
    PreparePicture(dc, bitmap, like, client.Size());
    dc.SetBkColor(color);
    CBrush brush(color);
    dc.FillRect(&client, &brush);
}

void Layers::Present(CDC& target, const CRect& client, const std::function<void(CDC&)>& afterwards)
{
    CBitmap picture;
    CDC memory; // ends before the picture, which it uses
    PreparePicture(memory, picture, target, client.Size());
    const int width = client.Width();
    const int height = client.Height();
    CopyOntoFresh(memory, client.Size(), grid.dc, grid.bitmap);
    memory.BitBlt(0, 0, width, height, &points.dc, 0, 0, SRCPAINT);
    target.BitBlt(0, 0, width, height, &memory, 0, 0, SRCCOPY);
    afterwards(memory);
}

void AxisGlyph::Draw(CDC& dc) const
{
    const int x = corner.x;
    const int y = corner.y;
    {
        CPen pen(PS_SOLID, 0, lineColor);
        const Selected usePen(dc, pen);
        dc.MoveTo(corner);
        dc.LineTo(x + kArm, y);
        dc.LineTo(x + kArm - kHeadLength, y - kHeadLength);
        dc.LineTo(x + kArm - kHeadLength, y + kHeadLength);
        dc.LineTo(x + kArm, y);
        dc.MoveTo(corner);
        dc.LineTo(x, y - kArm);
        dc.LineTo(x - kHeadLength, y - kArm + kHeadLength);
        dc.LineTo(x + kHeadLength, y - kArm + kHeadLength);
        dc.LineTo(x, y - kArm);
    }
    CFont font;
    MakeLetterFont(font);
    const Selected useFont(dc, font);
    dc.SetTextColor(textColor);
    dc.ExtTextOut(x - 3, y - kArm - 18, ETO_CLIPPED, nullptr, &vertical, 1, nullptr);
    dc.ExtTextOut(x + kArm + 5, y - 8, ETO_CLIPPED, nullptr, &horizontal, 1, nullptr);
}

void DrawCross(CDC& dc, CPoint at)
{
    DrawSegment(dc, {Shifted(at.x, -kCrossArm), at.y}, {Shifted(at.x, kCrossArm), at.y});
    DrawSegment(dc, {at.x, Shifted(at.y, -kCrossArm)}, {at.x, Shifted(at.y, kCrossArm)});
}

} // namespace tiltpole::controls
