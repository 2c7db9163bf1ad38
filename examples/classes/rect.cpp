// SPDX-License-Identifier: MIT
//
// CPoint, CSize and CRect: the right and the bottom edge are not part of a rectangle.
#include "framework/core/Rect.h"

#include <cstdio>

int main()
{
    const CRect dial(10, 10, 110, 60); // left, top, right, bottom
    std::printf("%d x %d\n", dial.Width(), dial.Height());
    std::printf("(10, 59) inside: %d, (110, 60) inside: %d\n", dial.PtInRect({10, 59}) != FALSE,
                dial.PtInRect({110, 60}) != FALSE);
    const CPoint center = dial.TopLeft() + CSize(dial.Width() / 2, dial.Height() / 2);
    std::printf("center %d, %d\n", static_cast<int>(center.x), static_cast<int>(center.y));
}
