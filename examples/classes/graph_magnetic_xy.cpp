// SPDX-License-Identifier: MIT
//
// CGraphMagnetic_XY: the readings of the horizontal turn as crosses while they are recorded, and the
// center that was found.
#include "controls/GraphMagnetic_XY.h"

#include "Dialog.h"
#include "Turn.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const dialog::Memory application(argc, argv);
    dialog::Dialog host;

    CGraphMagnetic_XY plot;
    plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 250, 250), &host, 1);
    plot.UpdateWindow();
    for (const PoseSensorData& sample : turn::Record(turn::Axis::Z, 5.0))
        plot.AddTrackPoint(static_cast<int>(std::lround(sample.dMag_x)),
                           static_cast<int>(std::lround(sample.dMag_y)),
                           static_cast<int>(std::lround(sample.dMag_z)));
    plot.ZoomAll(); // and saves the view for the next run
    plot.AddCenterPoint(60, -90, -405);
    plot.UpdateWindow();

    const CPoint center = dialog::MiddleOf(plot, RGB(255, 0, 0));
    const bool inTheMiddle = center.x > 110 && center.x < 140 && center.y > 110 && center.y < 140;
    std::printf("center %s\n", inTheMiddle ? "in the middle of the picture" : "elsewhere");
    std::printf("distance of two pixels: %d\n", plot.GetDistance(CPoint(0, 0), CPoint(30, 40)));
    dialog::Save(plot, "graph_magnetic_xy.png");

    plot.Clear();
    plot.UpdateWindow();
    std::printf("cleared: %d red pixels\n", dialog::CountOf(plot, RGB(255, 0, 0)));
}
