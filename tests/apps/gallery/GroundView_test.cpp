// SPDX-License-Identifier: MIT
//
// The tilt graph of the gallery answers the mouse.
#include "apps/gallery/GroundView.h"
#include "framework/gui/QtInterop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWidget>

#include <vector>

namespace gallery::test {
namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr int kSide = 320; // pixels
constexpr int kLabel = 24; // pixels; the rows of the label

struct HoveredGround : testing::Test
{
    CWnd host;
    GroundView view;

    HoveredGround()
    {
        host.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP | WS_VISIBLE, 0, 0, 400, 400,
                      nullptr, nullptr);
        view.Create(nullptr, nullptr, AFX_WS_DEFAULT_VIEW, CRect(10, 10, 10 + kSide, 10 + kSide),
                    &host, 1);
        view.Renew();
        Add(1000.0, 2000.0); // south-west, so at the lower left
        Add(1001.5, 2001.0); // north-east
        view.graph->ZoomAll();
        view.Show();
    }

    void Add(double x, double y)
    {
        TiltPoint_Sensor point;
        point.nSet = 1;
        point.dX = x;
        point.dY = y;
        point.dH = 55.25;
        view.graph->AddPoint(point);
    }

    std::vector<COLORREF> Pixels()
    {
        CClientDC dc(&view);
        std::vector<COLORREF> pixels;
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
                pixels.push_back(dc.GetPixel(x, y));
        return pixels;
    }

    // A white pixel of the crosses: the leftmost, or the rightmost.
    CPoint WhitePixel(bool leftmost)
    {
        CClientDC dc(&view);
        for (int i = 0; i < kSide; ++i)
            for (int y = kLabel; y < kSide; ++y) {
                const int x = leftmost ? i : kSide - 1 - i;
                if (dc.GetPixel(x, y) == kWhite) return {x, y};
            }
        return {-1, -1};
    }

    void MoveTo(CPoint at)
    {
        const QPoint local(at.x, at.y);
        QWidget* const widget = framework::NativeWidget(view);
        QMouseEvent event(QEvent::MouseMove, local, widget->mapToGlobal(local), Qt::NoButton, {},
                          {});
        QCoreApplication::sendEvent(widget, &event);
    }
};

TEST_F(HoveredGround, KnowsTheObservationUnderThePointer)
{
    MoveTo(WhitePixel(true));
    EXPECT_EQ(view.Hovered(), 1);
    MoveTo(WhitePixel(false));
    EXPECT_EQ(view.Hovered(), 2);
    MoveTo({kSide / 2, kSide / 2});
    EXPECT_EQ(view.Hovered(), 0) << "between them";
    EXPECT_EQ(view.graph->Describe(2), L"observation 2:  N 1001.500  E 2001.000  H 55.250 m");
    EXPECT_EQ(view.graph->Describe(0), L"");
    EXPECT_EQ(view.graph->Describe(3), L"");
}

TEST_F(HoveredGround, ShowsItUntilThePointerLeaves)
{
    const std::vector<COLORREF> before = Pixels();
    MoveTo(WhitePixel(false));
    const std::vector<COLORREF> during = Pixels();
    EXPECT_NE(during, before);
    view.Show();
    EXPECT_EQ(Pixels(), during) << "also after the graph is drawn again";

    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(framework::NativeWidget(view), &leave);
    EXPECT_EQ(view.Hovered(), 0);
    EXPECT_EQ(Pixels(), before);
}

TEST_F(HoveredGround, PrefersTheNearerOfTwo)
{
    Add(1000.0, 1999.985); // a pixel or two to the left of the first
    view.graph->ZoomAll();
    view.Show();
    MoveTo(WhitePixel(true));
    EXPECT_EQ(view.Hovered(), 3);
}

TEST_F(HoveredGround, StaysAsItIsWhileThePointerStaysOnAnObservation)
{
    MoveTo(WhitePixel(false));
    const std::vector<COLORREF> before = Pixels();
    MoveTo(WhitePixel(false));
    EXPECT_EQ(view.Hovered(), 2);
    EXPECT_EQ(Pixels(), before);
}

TEST_F(HoveredGround, HasNothingUnderThePointerWithoutAGraph)
{
    view.graph.reset();
    const std::vector<COLORREF> before = Pixels();
    MoveTo({kSide / 2, kSide / 2});
    view.Show();
    EXPECT_EQ(view.Hovered(), 0);
    EXPECT_EQ(Pixels(), before);
}

} // namespace
} // namespace gallery::test
