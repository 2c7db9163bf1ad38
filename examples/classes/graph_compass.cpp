// SPDX-License-Identifier: MIT
//
// CGraphCompass: a heading on a round dial. The needle is red, marked headings are green.
#include "controls/GraphCompass.h"

#include "Dialog.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const dialog::Memory application(argc, argv);
    dialog::Dialog host;

    CGraphCompass dial;
    dial.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 240, 240), &host, 1);
    dial.UpdateWindow();
    for (const double heading : {0.0, 90.0, 180.0}) {
        dial.SetValue(heading); // degrees; drawn at once
        const CPoint needle = dialog::MiddleOf(dial, RGB(255, 0, 0));
        std::printf("heading %.0f: the needle lies %s, %s\n", dial.GetValue(),
                    needle.x > 130   ? "right"
                    : needle.x < 110 ? "left"
                                     : "in the middle",
                    needle.y > 130   ? "below"
                    : needle.y < 110 ? "above"
                                     : "at half the height");
    }
    dial.SetFix(45); // a heading to walk on
    std::printf("mark: %s\n", dialog::CountOf(dial, RGB(0, 255, 0)) > 0 ? "shown" : "not shown");
    dialog::Save(dial, "graph_compass.png");
}
