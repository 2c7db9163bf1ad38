// SPDX-License-Identifier: MIT
//
// Controls are created and destroyed without leaking, and work while hidden.
#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"

#include "tests/controls/ControlTest.h"

#include <malloc.h>
#include <ostream>

namespace tiltpole::controls::test {
namespace {

constexpr DWORD kShown = WS_CHILD | WS_VISIBLE;
const CRect kPlace(0, 0, 64, 96);

template <class Meter>
void ShowMeter(Dialog& dialog)
{
    Meter meter;
    ASSERT_TRUE(meter.Create(L"", kShown, kPlace, &dialog, 1));
    meter.UpdateWindow();
    meter.SetValue(180);
    meter.SetFix(180);
}

// A static control of the host's dialog that the control takes over.
void ShowSubclassed(Dialog& dialog)
{
    const HWND item =
        CreateWindowExW(0, L"STATIC", L"", kShown, 0, 0, 64, 96, dialog.GetSafeHwnd(), 2);
    CGraphCompass dial;
    ASSERT_TRUE(dial.SubclassWindow(item));
    dial.Invalidate();
    dial.UpdateWindow();
    dial.SetFix(20);
    EXPECT_EQ(Shown(dial).At(32, 48), kBlack);
}

template <class Plot>
void ShowPlot(Dialog& dialog)
{
    Plot plot;
    ASSERT_TRUE(plot.Create(nullptr, nullptr, kShown, kPlace, &dialog, 3));
    plot.AddTrackPoint(0, 0, 0);
    plot.AddCenterPoint(5, 5, 5);
    plot.UpdateWindow();
}

class Ground : public CView
{
protected:
    void OnDraw(CDC*) override {}
};

void ShowTiltGraph(Dialog& dialog)
{
    Ground view;
    ASSERT_TRUE(view.Create(nullptr, nullptr, kShown, kPlace, &dialog, 4));
    CTiltPositionGraph graph;
    graph.SetView(&view);
    graph.InvalidateCtrl();
    TiltPoint_Sensor point;
    point.nSet = point.nConfirmed = 1;
    graph.AddPoint(point);
    graph.SetCenterPoint(1, point);
    graph.DrawCurrentPt(nullptr, point);
    graph.ReDraw();
}

struct Life
{
    const char* name;
    void (*show)(Dialog& dialog);

    friend std::ostream& operator<<(std::ostream& out, const Life& life)
    {
        return out << life.name;
    }
};

class Lifetime : public testing::TestWithParam<Life>
{};

TEST_P(Lifetime, LeavesNothingBehindInTenThousandRounds)
{
    Dialog dialog;
    for (int i = 0; i < 200; ++i)
        GetParam().show(dialog);
    const std::size_t held = mallinfo2().uordblks;
    for (int i = 0; i < 10000; ++i)
        GetParam().show(dialog);
    EXPECT_NEAR(static_cast<double>(mallinfo2().uordblks), static_cast<double>(held), 4096);
    EXPECT_EQ(dialog.GetDlgItem(1), nullptr) << "and no window";
}

INSTANTIATE_TEST_SUITE_P(Controls, Lifetime,
                         testing::Values(Life{"Compass", ShowMeter<CGraphCompass>},
                                         Life{"InclineLeft", ShowMeter<CGraphIncline_Left>},
                                         Life{"InclineRight", ShowMeter<CGraphIncline_Right>},
                                         Life{"Subclassed", ShowSubclassed},
                                         Life{"MagneticXY", ShowPlot<CGraphMagnetic_XY>},
                                         Life{"MagneticXZ", ShowPlot<CGraphMagnetic_XZ>},
                                         Life{"TiltGraph", ShowTiltGraph}),
                         [](const auto& life) { return life.param.name; });

TEST(HiddenControl, ShowsWhatItWasToldOnceShown)
{
    Dialog dialog;
    CGraphCompass dial;
    ASSERT_TRUE(dial.Create(L"", WS_CHILD, CRect(0, 0, 240, 240), &dialog, 1));
    CGraphMagnetic_XY plot;
    ASSERT_TRUE(plot.Create(nullptr, nullptr, WS_CHILD, CRect(0, 0, 306, 306), &dialog, 2));
    dial.SetValue(90);
    dial.SetFix(270);
    plot.AddTrackPoint(0, 0, 0);
    dial.UpdateWindow();
    plot.UpdateWindow();
    EXPECT_EQ(Shown(dial).Count(kRed), 0) << "nothing is painted while hidden";

    dial.ShowWindow(SW_SHOW);
    plot.ShowWindow(SW_SHOW);
    dial.UpdateWindow();
    plot.UpdateWindow();
    EXPECT_EQ(Shown(dial).At(150, 120), kRed);
    EXPECT_EQ(Shown(dial).At(120 - 108, 120), kGreen);
    EXPECT_EQ(Shown(plot).At(200, 100), kWhite) << "500 counts of 2.5 a pixel from left and bottom";
}

TEST(HiddenControl, GoesOnWhenItIsHiddenAgain)
{
    Dialog dialog;
    CGraphCompass dial;
    ASSERT_TRUE(dial.Create(L"", kShown, CRect(0, 0, 240, 240), &dialog, 1));
    dial.UpdateWindow();
    dialog.ShowWindow(SW_HIDE);
    dial.SetValue(90);
    dial.Invalidate();
    dial.UpdateWindow();
    CRect pending;
    EXPECT_TRUE(dial.GetUpdateRect(&pending)) << "waits for its parent";
    dialog.ShowWindow(SW_SHOW);
    dial.UpdateWindow();
    EXPECT_EQ(Shown(dial).At(150, 120), kRed);
}

} // namespace
} // namespace tiltpole::controls::test
