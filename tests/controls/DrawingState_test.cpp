// SPDX-License-Identifier: MIT
//
// What a control's drawing steps leave selected in the context that the host gives them.
#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"

#include "tests/controls/ControlTest.h"

#include <functional>
#include <type_traits>

namespace tiltpole::controls::test {
namespace {

constexpr COLORREF kOdd = RGB(11, 22, 33);

// A picture in memory with drawing objects of the host selected.
struct HostContext
{
    CBitmap picture;
    CPen pen{PS_SOLID, 1, kOdd};
    CBrush brush{kOdd};
    CFont font;
    CDC dc;

    HostContext()
    {
        dc.CreateCompatibleDC(nullptr);
        picture.CreateCompatibleBitmap(&dc, 240, 240);
        font.CreateFont(11, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, L"");
        dc.SelectObject(&picture);
        dc.SelectObject(&pen);
        dc.SelectObject(&brush);
        dc.SelectObject(&font);
    }

    int Drawn() const
    {
        int count = 0;
        for (int y = 0; y < 240; ++y)
            for (int x = 0; x < 240; ++x)
                count += dc.GetPixel(x, y) != kBlack;
        return count;
    }

    void ExpectRestored(const char* step) const
    {
        EXPECT_GT(Drawn(), 0) << step << " draws something, or it shows nothing here";
        EXPECT_EQ(dc.GetCurrentPen(), &pen) << step;
        EXPECT_EQ(dc.GetCurrentBrush(), &brush) << step;
        EXPECT_EQ(dc.GetCurrentFont(), &font) << step;
        EXPECT_EQ(dc.GetCurrentBitmap(), &picture) << step;
    }
};

void ExpectRestoredBy(const char* step, const std::function<void(CDC*)>& draw)
{
    HostContext context;
    draw(&context.dc);
    context.ExpectRestored(step);
}

template <class Base>
struct Meter : Base
{
    const MeterFace& Face() const
    {
        if constexpr (std::is_same_v<Base, CGraphCompass>)
            return this->m_face;
        else
            return this->m_gauge.Face();
    }
};

template <class Control>
struct MeterSteps : testing::Test, Placed<Meter<Control>>
{
    MeterSteps() : Placed<Meter<Control>>(240, 240) {}
};

using Meters = testing::Types<CGraphCompass, CGraphIncline_Left, CGraphIncline_Right>;
TYPED_TEST_SUITE(MeterSteps, Meters);

TYPED_TEST(MeterSteps, RestorePenBrushAndFont)
{
    auto& meter = this->control;
    meter.SetFix(180);
    CRect all(0, 0, 240, 240);
    ExpectRestoredBy("background", [&](CDC* dc) { meter.DrawBackground(dc, all); });
    ExpectRestoredBy("pointer", [&](CDC* dc) { meter.DrawPointer(dc, 180); });
    ExpectRestoredBy("fixes", [&](CDC* dc) { meter.DrawFixSign(dc); });
}

// The context that marks are drawn with at once is kept; its pen is not.
TYPED_TEST(MeterSteps, RestoreThePenOfTheContextForFixes)
{
    this->control.SetFix(180);
    CDC* const context = this->control.Face().fixContext;
    ASSERT_NE(context, nullptr);
    HGDIOBJ const usual = context->GetCurrentPen()->m_hObject;
    EXPECT_EQ(usual, CClientDC(&this->control).GetCurrentPen()->m_hObject);
}

TEST(DialSteps, OutlineTheHubWithThePenOfTheHost)
{
    Placed<CGraphCompass> dial(240, 240);
    HostContext context;
    dial.control.DrawPointer(&context.dc, 90);
    int outline = 0;
    for (int y = 118; y < 123; ++y)
        for (int x = 118; x < 123; ++x)
            outline += context.dc.GetPixel(x, y) == kOdd;
    EXPECT_GE(outline, 8);
    EXPECT_EQ(context.dc.GetPixel(120, 120), kBlack) << "inside";
}

template <class Control>
struct PlotSteps : testing::Test
{};

using Plots = testing::Types<CGraphMagnetic_XY, CGraphMagnetic_XZ>;
TYPED_TEST_SUITE(PlotSteps, Plots);

TYPED_TEST(PlotSteps, RestorePenBrushAndFont)
{
    Dialog dialog;
    TypeParam plot;
    ASSERT_TRUE(
        plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 240, 240), &dialog, 1));
    plot.AddTrackPoint(0, 0, 0);
    plot.AddCenterPoint(50, 50, 50);
    ExpectRestoredBy("samples", [&](CDC* dc) { plot.DrawTrackPoints(dc); });
    ExpectRestoredBy("centers", [&](CDC* dc) { plot.DrawCenterPoints(dc); });
}

class Ground : public CView
{
protected:
    void OnDraw(CDC*) override {}
};

struct Graph : CTiltPositionGraph
{
    using CTiltPositionGraph::m_layers;
    using CTiltPositionGraph::m_world;
};

struct TiltSteps : testing::Test
{
    Dialog dialog;
    Ground view;
    Graph graph;

    TiltSteps()
    {
        EXPECT_TRUE(view.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 240, 240),
                                &dialog, 1));
        graph.SetView(&view);
        graph.InvalidateCtrl();
        graph.m_world.scale = 0.01;
    }

    static TiltPoint_Sensor At(double x, double y)
    {
        TiltPoint_Sensor point;
        point.nSet = point.nConfirmed = 1;
        point.dX = x;
        point.dY = y;
        return point;
    }
};

TEST_F(TiltSteps, RestorePenBrushAndFont)
{
    graph.AddPoint(At(1.0, 1.0));
    graph.SetCenterPoint(1, At(1.5, 0.5));
    graph.SetCenterPoint(2, At(0.5, 1.5));
    ExpectRestoredBy("observations", [&](CDC* dc) { graph.DrawPoints(dc); });
    ExpectRestoredBy("centers", [&](CDC* dc) { graph.DrawCircles(dc); });
    ExpectRestoredBy("a center", [&](CDC* dc) { graph.DrawCircle(dc, At(1.0, 1.0)); });
    ExpectRestoredBy("a circle", [&](CDC* dc) { graph.DrawCircle(dc, {120, 120}, 20); });
    ExpectRestoredBy("links", [&](CDC* dc) { graph.DrawLinkLine(dc); });
    ExpectRestoredBy("distances", [&](CDC* dc) { graph.DrawLinkDistance(dc, At(1.0, 1.0)); });
    ExpectRestoredBy("current", [&](CDC* dc) { graph.DrawCurrentPt(dc, At(1.0, 1.0)); });
}

TEST_F(TiltSteps, DrawACircleWithThePenOfTheHost)
{
    HostContext context;
    graph.DrawCircle(&context.dc, {120, 120}, 20);
    EXPECT_EQ(context.dc.GetPixel(140, 120), kOdd);
}

TEST_F(TiltSteps, LeaveTheirLayersAsTheyWereMade)
{
    graph.AddPoint(At(1.0, 1.0));
    graph.InvalidateCtrl();
    CDC fresh;
    fresh.CreateCompatibleDC(nullptr);
    for (const CDC* layer : {&graph.m_layers.grid.dc, &graph.m_layers.points.dc}) {
        EXPECT_EQ(layer->GetCurrentPen()->m_hObject, fresh.GetCurrentPen()->m_hObject);
        EXPECT_EQ(layer->GetCurrentBrush()->m_hObject, fresh.GetCurrentBrush()->m_hObject);
        EXPECT_EQ(layer->GetCurrentFont()->m_hObject, fresh.GetCurrentFont()->m_hObject);
    }
}

} // namespace
} // namespace tiltpole::controls::test
