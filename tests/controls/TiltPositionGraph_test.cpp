// SPDX-License-Identifier: MIT
#include "controls/TiltPositionGraph.h"

#include "tests/controls/ControlTest.h"

namespace tiltpole::controls::test {
namespace {

constexpr COLORREF kAxis = RGB(56, 104, 169);

class Ground : public CView
{
public:
    CTiltPositionGraph* graph = nullptr;

protected:
    void OnDraw(CDC*) override
    {
        if (graph) graph->ReDraw();
    }
};

struct Reach : CTiltPositionGraph
{
    using CTiltPositionGraph::ClientToWorld;
    using CTiltPositionGraph::m_centers;
    using CTiltPositionGraph::m_current;
    using CTiltPositionGraph::m_points;
    using CTiltPositionGraph::m_reservedColor;
    using CTiltPositionGraph::m_spareText;
    using CTiltPositionGraph::m_world;
    using CTiltPositionGraph::WorldToClient;
};

TiltPoint_Sensor At(double x, double y, bool confirmed = true)
{
    TiltPoint_Sensor point;
    point.nSet = 1;
    point.nConfirmed = confirmed;
    point.dX = x;
    point.dY = y;
    return point;
}

// A view of 200 x 100 pixels.
struct TiltGraph : testing::Test
{
    Dialog dialog;
    Ground view;
    Reach graph;

    TiltGraph()
    {
        EXPECT_TRUE(view.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 200, 100),
                                &dialog, 1));
        view.UpdateWindow();
    }

    void Begin()
    {
        graph.SetView(&view);
        graph.InvalidateCtrl();
    }

    // Sets the view to one meter per hundred pixels, (1000, 500) in the lower left corner.
    void BeginAt(double scale)
    {
        Begin();
        graph.m_world = {1000.0, 500.0, scale};
        graph.InvalidateCtrl();
    }

    Shown Now()
    {
        graph.ReDraw();
        return Shown(view);
    }
};

TEST_F(TiltGraph, ShowsItsAxesOnBlack)
{
    Begin();
    const Shown shown = Now();
    EXPECT_EQ(shown.At(10, 90), kAxis);
    EXPECT_EQ(shown.At(59, 90), kAxis) << "the arm ends at 60";
    EXPECT_EQ(shown.At(10, 41), kAxis);
    EXPECT_EQ(shown.At(150, 50), kBlack);
    EXPECT_GT(shown.Count(RGB(122, 122, 122)), 5) << "the letters";
}

TEST_F(TiltGraph, IsBlackBeforeItsLayersAreMade)
{
    graph.SetView(&view);
    SoilBitmaps(200, 100);
    EXPECT_EQ(Now().Count(kBlack), 200 * 100);
}

TEST_F(TiltGraph, IsBlackBesideLayersThatAreTooSmall)
{
    Begin();
    view.MoveWindow(0, 0, 210, 120);
    SoilBitmaps(210, 120);
    const Shown shown = Now();
    EXPECT_EQ(shown.Count(kWhite), 0);
    EXPECT_EQ(shown.At(10, 90), kAxis);
}

TEST_F(TiltGraph, StaysWhereItIsWithoutObservations)
{
    BeginAt(0.01);
    graph.ZoomAll();
    EXPECT_EQ(graph.m_world.scale, 0.01);
    EXPECT_EQ(graph.m_world.originX, 1000.0);
    EXPECT_EQ(graph.m_world.originY, 500.0);
}

TEST_F(TiltGraph, DrawsNoDistancesToNoObservation)
{
    BeginAt(0.01);
    graph.SetCenterPoint(1, At(1000.8, 501.0));
    const Shown before = Now();
    {
        CClientDC dc(&view);
        graph.DrawLinkDistance(&dc, At(1000.1, 501.0));
    }
    EXPECT_EQ(Shown(view), before);
}

TEST_F(TiltGraph, ShowsAnObservationInsideAtOnce)
{
    BeginAt(0.01);
    graph.AddPoint(At(1000.5, 501.0));
    const Shown shown(view);
    EXPECT_EQ(shown.At(100, 50), kWhite);
    EXPECT_EQ(shown.At(96, 50), kWhite) << "two pixels wide, its end squared";
    EXPECT_EQ(shown.At(100, 53), kWhite);
    EXPECT_EQ(shown.At(105, 50), kBlack);
}

TEST_F(TiltGraph, ZoomsToAnObservationOutsideWithoutShowingIt)
{
    BeginAt(0.01);
    const Shown before = Now();
    graph.AddPoint(At(2000.0, 3000.0));
    EXPECT_EQ(Shown(view), before);
    EXPECT_EQ(graph.m_world.scale, 0.01);
    EXPECT_DOUBLE_EQ(graph.m_world.originX, 2000.0 - 0.5);
    EXPECT_DOUBLE_EQ(graph.m_world.originY, 3000.0 - 1.0);
    EXPECT_EQ(Now().At(100, 50), kWhite) << "a single one stands in the middle";
}

// The points lie on a diagonal that fits into the view after the second one.
TEST_F(TiltGraph, ZoomsWithTheSecondObservationInside)
{
    BeginAt(0.05);
    graph.AddPoint(At(1001.0, 502.0));
    EXPECT_EQ(graph.m_world.scale, 0.05) << "the first one changes nothing";
    const Shown before = Now();
    graph.AddPoint(At(1002.0, 503.0));
    EXPECT_DOUBLE_EQ(graph.m_world.scale, 1.0 / 100 * 1.2);
    EXPECT_FALSE(Now() == before);
}

// The view that the zoom chooses shows at the next ReDraw.
TEST_F(TiltGraph, ShowsANewObservationInTheOldViewBeforeItZooms)
{
    BeginAt(0.05);
    graph.AddPoint(At(1001.0, 502.0));
    graph.AddPoint(At(1002.0, 503.0));
    EXPECT_EQ(graph.m_world.scale, 1.0 / 100 * 1.2) << "zoomed";
    const Shown old(view);
    EXPECT_EQ(old.At(40, 80), kWhite) << "the first one where it was";
    EXPECT_EQ(old.At(60, 60), kWhite) << "the second one in the same view";
    EXPECT_EQ(Now().At(60, 60), kBlack);
}

TEST_F(TiltGraph, KeepsObservationsWithoutAView)
{
    graph.AddPoint(At(1.0, 1.0));
    graph.AddPoint(At(2.0, 2.0));
    graph.SetCenterPoint(1, At(1.0, 1.0));
    graph.DrawAll();
    graph.DrawCurrentPt(nullptr, At(1.0, 1.0));
    EXPECT_EQ(graph.m_points.GetSize(), 2);
    EXPECT_EQ(graph.m_centers[0].nSet, 0) << "a center needs a view";
    EXPECT_EQ(graph.m_current.nSet, 0);
    Begin();
    graph.ZoomAll();
    EXPECT_GT(Now().Count(kWhite), 20);
}

TEST_F(TiltGraph, StoresOnlyThreeCenters)
{
    BeginAt(0.01);
    graph.SetCenterPoint(0, At(1.0, 1.0));
    graph.SetCenterPoint(4, At(1.0, 1.0));
    for (const TiltPoint_Sensor& center : graph.m_centers)
        EXPECT_EQ(center.nSet, 0);
    graph.SetCenterPoint(3, At(1.0, 2.0));
    EXPECT_EQ(graph.m_centers[2].dY, 2.0);
}

// 0.15 m at one centimeter per pixel: a radius of 15 around (100, 50).
TEST_F(TiltGraph, DrawsAConfirmedCenterInGreenAtOnce)
{
    BeginAt(0.01);
    Now();
    graph.SetCenterPoint(1, At(1000.5, 501.0));
    EXPECT_EQ(Shown(view).At(115, 50), kGreen);
    EXPECT_EQ(Shown(view).At(100, 50), kBlack);
    graph.SetCenterPoint(2, At(1000.5, 500.3, false));
    EXPECT_EQ(Shown(view).At(45, 50), kBlack) << "not confirmed: not drawn by itself";
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(45, 50), kRed) << "but red among the circles";
}

// 0.15 m at 5 mm per pixel is 30 pixels; the line also covers one pixel to the left of its points.
TEST_F(TiltGraph, GivesCentersACircleOfFifteenCentimeters)
{
    BeginAt(0.005);
    graph.ReDraw();
    graph.SetCenterPoint(1, At(1000.25, 500.5));
    const Shown shown(view);
    EXPECT_EQ(shown.At(130, 50), kGreen);
    EXPECT_EQ(shown.At(129, 50), kGreen);
    EXPECT_EQ(shown.At(131, 50), kBlack);
    EXPECT_EQ(shown.At(128, 50), kBlack);
    EXPECT_EQ(shown.At(100, 20), kGreen);
    EXPECT_EQ(shown.At(100, 18), kBlack);
}

TEST_F(TiltGraph, LinksConfirmedCenters)
{
    BeginAt(0.01);
    graph.SetCenterPoint(1, At(1000.5, 500.5));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(100, 50), kBlack);
    graph.SetCenterPoint(2, At(1000.5, 501.5));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(100, 50), kGreen);
    EXPECT_EQ(Now().At(100, 30), kBlack);
    graph.SetCenterPoint(3, At(1000.9, 501.0));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(75, 30), kGreen) << "from 1 to 3, half way";
    EXPECT_EQ(Now().At(125, 30), kGreen) << "from 2 to 3, half way";
}

TEST_F(TiltGraph, DrawsDistancesUntilAllCentersAreConfirmed)
{
    BeginAt(0.01);
    graph.AddPoint(At(1000.1, 501.0));
    graph.SetCenterPoint(1, At(1000.8, 501.0));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(100, 55), kRed) << "center 1 to the latest observation";
    graph.SetCenterPoint(2, At(1000.8, 500.2));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(60, 55), kRed) << "center 2 as well, half way";
    graph.SetCenterPoint(3, At(1000.8, 501.8));
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(100, 55), kBlack);
}

TEST_F(TiltGraph, MarksTheCurrentPointOnItsView)
{
    BeginAt(0.01);
    Now();
    graph.DrawCurrentPt(nullptr, At(1000.5, 501.0));
    const Shown shown(view);
    EXPECT_EQ(shown.At(100, 50), kRed);
    EXPECT_EQ(shown.At(108, 50), kRed) << "the circle of radius 8";
    EXPECT_EQ(shown.At(104, 46), kBlack);
    EXPECT_EQ(graph.m_current.dX, 1000.5);
    graph.InvalidateCtrl();
    EXPECT_EQ(Now().At(108, 50), kRed) << "drawn again with the layers";
}

TEST_F(TiltGraph, ShowsNothingOfWhatNoPixelCanReach)
{
    BeginAt(0.01);
    const Shown before = Now();
    for (const double far : {-1e300, 1e300}) {
        graph.DrawCurrentPt(nullptr, At(1000.5, far));
        graph.DrawCurrentPt(nullptr, At(far, 501.0));
    }
    EXPECT_EQ(Shown(view), before);
}

TEST_F(TiltGraph, KeepsTheCurrentPointThroughClear)
{
    BeginAt(0.01);
    graph.AddPoint(At(1000.5, 501.5));
    graph.SetCenterPoint(1, At(1000.5, 500.5));
    graph.DrawCurrentPt(nullptr, At(1000.5, 501.0));
    graph.Clear();
    const Shown shown(view);
    EXPECT_EQ(shown.Count(kWhite), 0);
    EXPECT_EQ(shown.Count(kGreen), 0);
    EXPECT_EQ(shown.At(108, 50), kRed);
    EXPECT_EQ(graph.m_world.scale, 0.01);
    EXPECT_EQ(graph.m_centers[0].nSet, 0);
    EXPECT_EQ(graph.m_centers[0].dY, 500.5) << "only the flags are cleared";
}

TEST_F(TiltGraph, IsNotShownBelowTenPixels)
{
    for (const CSize size : {CSize(9, 50), CSize(50, 9)}) {
        view.MoveWindow(0, 0, size.cx, size.cy);
        view.UpdateWindow();
        BeginAt(0.01);
        graph.AddPoint(At(1000.1, 500.05));
        graph.ReDraw();
        EXPECT_EQ(Shown(view).Count(GetSysColor(COLOR_WINDOW)), 9 * 50) << "nothing is drawn";
    }
    view.MoveWindow(0, 0, 10, 10);
    graph.ReDraw();
    EXPECT_EQ(Shown(view).At(0, 0), kBlack);
}

TEST_F(TiltGraph, DrawsACircleAsChords)
{
    Begin();
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&memory, 60, 60);
    memory.SelectObject(&bitmap);
    const CRect all(0, 0, 60, 60);
    memory.FillSolidRect(&all, kBlack);
    CPen pen(PS_SOLID, 1, kWhite);
    memory.SelectObject(&pen);
    graph.DrawCircle(&memory, {30, 30}, 20);
    EXPECT_EQ(memory.GetPixel(50, 30), kWhite);
    EXPECT_EQ(memory.GetPixel(30, 10), kWhite);
    EXPECT_EQ(memory.GetPixel(30, 30), kBlack);
    for (const int radius : {0, -5, INT_MIN, INT_MAX})
        graph.DrawCircle(&memory, {30, 30}, radius);
    graph.DrawCircle(nullptr, {30, 30}, 20);
    graph.DrawCircle(nullptr, At(0, 0));
}

TEST_F(TiltGraph, DrawsNothingWithoutAContext)
{
    BeginAt(0.01);
    graph.SetCenterPoint(1, At(1000.5, 500.5));
    graph.SetCenterPoint(2, At(1000.5, 501.5));
    graph.AddPoint(At(1000.1, 501.0));
    const Shown before = Now();
    graph.DrawPoints(nullptr);
    graph.DrawCircles(nullptr);
    graph.DrawLinkLine(nullptr);
    graph.DrawLinkDistance(nullptr, At(1000.9, 501.9));
    EXPECT_EQ(Shown(view), before);
    EXPECT_EQ(Now(), before);
}

// The spare text and the reserved color are set and never read.
TEST_F(TiltGraph, LooksTheSameWhateverItsReservedMembersHold)
{
    BeginAt(0.01);
    graph.AddPoint(At(1000.5, 501.0));
    const Shown before = Now();
    graph.m_spareText = L"text";
    graph.m_reservedColor = RGB(1, 2, 3);
    graph.InvalidateCtrl();
    EXPECT_EQ(Now(), before);
}

TEST_F(TiltGraph, TakesTheRowFirstWhenItReadsAPixel)
{
    BeginAt(0.5);
    double x = 0;
    double y = 0;
    graph.ClientToWorld(90, 4, x, y);
    EXPECT_DOUBLE_EQ(x, 1005.0);
    EXPECT_DOUBLE_EQ(y, 502.0);
    long column = 0;
    long row = 0;
    graph.WorldToClient(1005.0, 502.0, column, row);
    EXPECT_EQ(column, 4);
    EXPECT_EQ(row, 90);
}

TEST_F(TiltGraph, ZoomsAtTheDocumentedCounts)
{
    BeginAt(0.01);
    std::vector<int> zoomed;
    for (int count = 1; count <= 121; ++count) {
        graph.m_world = {1000.0, 500.0, 0.02}; // back to a view that shows every observation
        graph.AddPoint(At(1000.2 + count % 7 * 0.1, 501.0 + count % 5 * 0.1));
        if (graph.m_world.scale != 0.02) zoomed.push_back(count);
    }
    EXPECT_EQ(zoomed, (std::vector<int>{2, 4, 6, 8, 10, 15, 20, 25, 30, 40, 50, 60, 120}));
}

} // namespace
} // namespace tiltpole::controls::test
