// SPDX-License-Identifier: MIT
#include "framework/gui/detail/EllipseRows.h"

#include <algorithm>

namespace framework::raster {

EllipseRows::EllipseRows(const Box& box)
{
    m_left = std::min(box.left, box.right);
    m_right = Wide{std::max(box.left, box.right)} - 1;
    const Wide top = std::min(box.top, box.bottom);
    const Wide bottom = Wide{std::max(box.top, box.bottom)} - 1;
    if (m_right < m_left || bottom < top) return;

    const Wide width = m_right - m_left;
    const Wide height = bottom - top;
    m_width = width;
    m_height = height;
    m_odd = height % 2;
    m_lowerMiddle = top + (height + 1) / 2;
    m_upperMiddle = top + height / 2;
    m_rows = height / 2 + 1;
    m_middleColumn = width / 2;
    Enter(0);
}

RowRange EllipseRows::Within(Wide top, Wide bottom) const
{
    const Wide first = std::max(top - m_lowerMiddle, m_upperMiddle - bottom + 1);
    const Wide last = std::max(bottom - 1 - m_lowerMiddle, m_upperMiddle - top);
    return {std::max<Wide>(first, 0), std::min(last + 1, m_rows)};
}

// A walk that begins in the outermost column is on the outline two rows further on. A row that is
// entered before the first column that leaves it is left there, wherever it was entered; and a row
// is entered at most one column behind that one, in the flat part as in the steep part. In the one
// row between them, where both steps have the same length, that one column makes a difference.
void EllipseRows::Seek(Wide row)
{
    m_row = std::max<Wide>(row - 2, 0);
    Enter(0);
    while (m_row < row)
        Next();
}

void EllipseRows::Next()
{
    const bool ends = m_last == m_middleColumn;
    const Wide column = ends || !LeavesColumn(m_last) ? m_last : m_last + 1;
    ++m_row;
    Enter(column);
}

// Looks for the column that leaves the row in steps that double, then by halves.
void EllipseRows::Enter(Wide column)
{
    m_first = column;
    Wide step = 1;
    while (column < m_middleColumn && !LeavesRow(column)) {
        m_last = column;
        column = std::min(column + step, m_middleColumn);
        step *= 2;
    }
    Wide low = column == m_first ? column : m_last + 1;
    while (low < column) {
        const Wide between = low + (column - low) / 2;
        if (LeavesRow(between))
            column = between;
        else
            low = between + 1;
    }
    m_last = column;
}

// floor(e / 4): of e only o·w² is no multiple of four, and the callers take care of it.
Huge EllipseRows::QuarterOfError(Wide column) const
{
    const Huge below = Huge{m_row} + 1;
    const Huge inward = Huge{column} + 1;
    return m_width * m_width * (below * (below + m_odd))
           - m_height * m_height * (inward * (m_width - inward));
}

bool EllipseRows::LeavesRow(Wide column) const
{
    const Huge most = m_width * m_width * (m_odd + 2 + 4 * Huge{m_row});
    return QuarterOfError(column) <= FloorDivide(most, 4);
}

bool EllipseRows::LeavesColumn(Wide column) const
{
    const Huge least =
        2 * m_height * m_height * (1 - m_width + 2 * Huge{column}) - m_odd * m_width * m_width;
    return QuarterOfError(column) >= CeilDivide(least, 4);
}

namespace {

// From this width on a line of one step along both axes lies within the squares at its ends.
constexpr int kSquarePen = 8;

// Calls draw(row) for each row of a quarter that the picture shows; `rows` stands there.
template <class Draw>
void ForVisibleRows(const Canvas& canvas, EllipseRows& rows, Draw draw)
{
    const RowRange range = rows.Within(canvas.clip.top, canvas.clip.bottom);
    if (range.first >= range.end) return;
    rows.Seek(range.first);
    for (Wide row = range.first; row < range.end; ++row) {
        draw(row);
        if (row + 1 < range.end) rows.Next();
    }
}

void DrawThinEllipse(const Canvas& canvas, EllipseRows& rows, Color color)
{
    ForVisibleRows(canvas, rows, [&](Wide row) {
        const EllipseRow at = rows.Current();
        for (const Wide y : {rows.LowerMiddle() + row, rows.UpperMiddle() - row}) {
            FillSpan(canvas, y, rows.Left() + at.first, rows.Left() + at.last + 1, color);
            FillSpan(canvas, y, rows.Right() - at.last, rows.Right() - at.first + 1, color);
        }
    });
}

// The points of the outline in one row and the step to the next as wide lines, in all quarters.
// Lines one step long along the row make one line.
void DrawChainedRow(const Canvas& canvas, const EllipseRows& rows, Wide row, EllipseRow at,
                    EllipseRow next, const Stroke& stroke)
{
    const auto line = [&](Wide x0, Wide y0, Wide x1, Wide y1) {
        DrawLine(canvas, {static_cast<int>(x0), static_cast<int>(y0)},
                 {static_cast<int>(x1), static_cast<int>(y1)}, stroke);
    };
    for (const Wide down : {-1, 1}) {
        const Wide y = (down > 0 ? rows.LowerMiddle() : rows.UpperMiddle()) + down * row;
        line(rows.Left() + at.first, y, rows.Left() + at.last, y);
        line(rows.Right() - at.first, y, rows.Right() - at.last, y);
        if (row + 1 == rows.Rows()) {
            line(rows.Left() + at.last, y, rows.Right() - at.last, y);
        } else {
            line(rows.Left() + at.last, y, rows.Left() + next.first, y + down);
            line(rows.Right() - at.last, y, rows.Right() - next.first, y + down);
        }
    }
    if (row == 0) {
        line(rows.Left(), rows.UpperMiddle(), rows.Left(), rows.LowerMiddle());
        line(rows.Right(), rows.UpperMiddle(), rows.Right(), rows.LowerMiddle());
    }
}

// The closed chain of wide lines through the points of the outline.
void DrawChainedEllipse(const Canvas& canvas, EllipseRows& rows, const Stroke& stroke)
{
    const Wide margin = Wide{stroke.width} + 1;
    const RowRange range = rows.Within(canvas.clip.top - margin, canvas.clip.bottom + margin);
    if (range.first >= range.end) return;
    rows.Seek(range.first);
    for (Wide row = range.first; row < range.end; ++row) {
        const EllipseRow at = rows.Current();
        if (row + 1 < rows.Rows()) rows.Next();
        DrawChainedRow(canvas, rows, row, at, rows.Current(), stroke);
    }
}

// What squares on a range of rows of one half set in row y, which all of them reach.
void FillSquares(const Canvas& canvas, EllipseRows& rows, Wide y, RowRange range,
                 const Stroke& stroke)
{
    range.first = std::max<Wide>(range.first, 0);
    range.end = std::min(range.end, rows.Rows());
    if (range.first >= range.end) return;
    rows.Seek(range.first);
    const Wide outer = rows.Current().first;
    rows.Seek(range.end - 1);
    const Wide inner = rows.Current().last;
    const Wide half = stroke.width / 2;
    FillSpan(canvas, y, rows.Left() + outer - half, rows.Left() + inner - half + stroke.width,
             stroke.color);
    FillSpan(canvas, y, rows.Right() - inner - half, rows.Right() - outer - half + stroke.width,
             stroke.color);
}

// An outline of squares: a pixel is set where a point of the outline lies within a pen's width. The
// points of a quarter follow each other without gaps, so those of some rows set one span.
void DrawSquaresAlongEllipse(const Canvas& canvas, EllipseRows& rows, const Stroke& stroke)
{
    const Wide half = stroke.width / 2;
    for (Wide y = canvas.clip.top; y < canvas.clip.bottom; ++y) {
        const Wide highest = y + half - stroke.width + 1; // rows whose squares reach y
        const Wide lowest = y + half;
        FillSquares(canvas, rows, y,
                    {highest - rows.LowerMiddle(), lowest - rows.LowerMiddle() + 1}, stroke);
        FillSquares(canvas, rows, y,
                    {rows.UpperMiddle() - lowest, rows.UpperMiddle() - highest + 1}, stroke);
    }
}

} // namespace

void FillEllipse(const Canvas& canvas, const Box& box, Color color)
{
    EllipseRows rows(box);
    ForVisibleRows(canvas, rows, [&](Wide row) {
        const Wide first = rows.Current().first;
        for (const Wide y : {rows.LowerMiddle() + row, rows.UpperMiddle() - row})
            FillSpan(canvas, y, rows.Left() + first, rows.Right() - first + 1, color);
    });
}

void DrawEllipse(const Canvas& canvas, const Box& box, const Stroke& stroke)
{
    EllipseRows rows(box);
    if (stroke.width <= 1)
        DrawThinEllipse(canvas, rows, stroke.color);
    else if (stroke.width < kSquarePen)
        DrawChainedEllipse(canvas, rows, stroke);
    else
        DrawSquaresAlongEllipse(canvas, rows, stroke);
}

} // namespace framework::raster
