// SPDX-License-Identifier: MIT
//
// CGraphIncline_Left: an angle of 0 to 180 degrees, 0 at the bottom: the pitch of a pole, plus 90.
#include "controls/GraphIncline_Left.h"

#include "Dialog.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const dialog::Memory application(argc, argv);
    dialog::Dialog host;

    CGraphIncline_Left gauge;
    gauge.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 100, 240), &host, 1);
    gauge.UpdateWindow();
    for (const double angle : {0.0, 90.0, 180.0}) {
        gauge.SetValue(angle); // degrees; drawn at once
        const CPoint pointer = dialog::MiddleOf(gauge, RGB(255, 0, 0));
        std::printf("%3.0f degrees: pointer %s\n", gauge.GetValue(),
                    pointer.y < 80    ? "at the top"
                    : pointer.y > 160 ? "at the bottom"
                                      : "in the middle");
    }
    gauge.SetValue(200.0); // outside the scale: ignored
    std::printf("still %.0f degrees\n", gauge.GetValue());
    gauge.SetFix(100); // an angle to hold
    std::printf("mark: %s\n", dialog::CountOf(gauge, RGB(0, 255, 0)) > 0 ? "shown" : "not shown");
    dialog::Save(gauge, "graph_incline_left.png");
}
