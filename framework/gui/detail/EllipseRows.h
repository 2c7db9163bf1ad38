// SPDX-License-Identifier: MIT
//
// The outline of an ellipse row by row, from any row on, without walking the rows before it.
#pragma once

#include "framework/gui/detail/RasterParts.h"

namespace framework::raster {

// The outline's pixels in one row of a quarter: columns counted from the side of the box inwards,
// both included.
struct EllipseRow
{
    Wide first;
    Wide last;
};

// Rows of a quarter that begin at `first` and end before `end`; none where end <= first.
struct RowRange
{
    Wide first;
    Wide end;
};

// Integer ellipse in a rectangle after A. Zingl, "A Rasterizing Algorithm for Drawing Curves"
// (2012), both step tests on the same doubled error. The walk goes from the middle row to the tip
// of a quarter. With w and h the distances between the first and last columns and rows, at column i
// and row j of the quarter, o = 1 where h is odd and otherwise 0:
//
//   error     e = 4·w²·(j + 1)·(j + 1 + o) − 4·h²·(i + 1)·(w − i − 1) + o·w²
//   next row     if 2·e ≤ 4·w²·(o + 1 + 2·j)
//   next column  if 2·e ≥ 4·h²·(1 − w + 2·i), both may be taken at once
//
// The walk ends in the middle column; the rows that are left up to the tip have a pixel there.
class EllipseRows
{
public:
    explicit EllipseRows(const Box& box);

    /// Rows of a quarter, 0 for an empty box. Row j lies j below LowerMiddle and j above
    /// UpperMiddle.
    Wide Rows() const { return m_rows; }
    Wide Left() const { return m_left; }
    Wide Right() const { return m_right; }
    Wide LowerMiddle() const { return m_lowerMiddle; }
    Wide UpperMiddle() const { return m_upperMiddle; }
    /// Rows of a quarter of which a picture's rows [top, bottom) show the upper or the lower half.
    RowRange Within(Wide top, Wide bottom) const;

    /// Goes to a row, 0 to Rows() - 1.
    void Seek(Wide row);
    /// Goes on to the next row.
    void Next();
    EllipseRow Current() const { return {m_first, m_last}; }

private:
    void Enter(Wide column);
    Huge QuarterOfError(Wide column) const;
    bool LeavesRow(Wide column) const;
    bool LeavesColumn(Wide column) const;

    Wide m_left = 0;
    Wide m_right = 0;
    Wide m_lowerMiddle = 0;
    Wide m_upperMiddle = 0;
    Wide m_rows = 0;
    Wide m_middleColumn = 0;
    Huge m_width = 0;
    Huge m_height = 0;
    Huge m_odd = 0;

    Wide m_row = 0;
    Wide m_first = 0;
    Wide m_last = 0;
};

} // namespace framework::raster
