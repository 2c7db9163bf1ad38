// SPDX-License-Identifier: MIT
//
// CTiltPositionGraph: the antenna positions of a pole about its tip, north up, on a view of the host.
#include "controls/TiltPositionGraph.h"

#include "Dialog.h"

#include <cmath>
#include <cstdio>

namespace {

class Ground : public CView
{
public:
    CTiltPositionGraph m_graph;

protected:
    void OnDraw(CDC*) override { m_graph.ReDraw(); }
};

TiltPoint_Sensor Observation(double north, double east)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.nConfirmed = 1;
    point.dX = 1000.0 + north; // [m]
    point.dY = 2000.0 + east;
    return point;
}

} // namespace

int main(int argc, char** argv)
{
    const dialog::Memory application(argc, argv);
    dialog::Dialog host;

    auto* const ground = new Ground; // deletes itself after its window
    ground->Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 250, 250), &host, 1);
    ground->m_graph.SetView(ground);
    ground->m_graph.InvalidateCtrl();
    for (int i = 0; i < 12; ++i)
        ground->m_graph.AddPoint(
            Observation(0.5 * std::cos(0.5236 * i), 0.5 * std::sin(0.5236 * i)));
    ground->m_graph.SetCenterPoint(1, Observation(0.2, 0.0)); // circles joined by lines
    ground->m_graph.SetCenterPoint(2, Observation(-0.1, 0.2));
    ground->m_graph.SetCenterPoint(3, Observation(-0.1, -0.2));
    ground->m_graph.InvalidateCtrl();
    ground->m_graph.ReDraw();
    const CPoint cloud = dialog::MiddleOf(*ground, RGB(255, 255, 255));
    std::printf("observations about the middle: %s\n",
                std::abs(cloud.x - 125) < 10 && std::abs(cloud.y - 125) < 10 ? "yes" : "no");
    std::printf("centers: %s\n",
                dialog::CountOf(*ground, RGB(0, 255, 0)) > 0 ? "confirmed" : "not shown");

    ground->m_graph.DrawCurrentPt(nullptr, Observation(0.3, 0.3)); // where the antenna is now
    const CPoint now = dialog::MiddleOf(*ground, RGB(255, 0, 0));
    std::printf("now: %s\n",
                now.x > 125 && now.y < 125 ? "right and above, northeast" : "elsewhere");
    dialog::Save(*ground, "tilt_position_graph.png");
}
