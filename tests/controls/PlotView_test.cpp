// SPDX-License-Identifier: MIT
#include "controls/plot/PlotView.h"
#include "controls/tilt/TiltView.h"

#include <gtest/gtest.h>

#include <limits>

namespace tiltpole::controls {
namespace {

const CRect kClient(0, 0, 200, 100);

TEST(PlotView, MapsCountsToPixelsUpwards)
{
    const PlotView view{-500, -500, 2.5};
    long x = 0;
    long y = 0;
    view.ToClient(kClient, -500, -500, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 100);
    view.ToClient(kClient, 0, -300, x, y);
    EXPECT_EQ(x, 200);
    EXPECT_EQ(y, 20);
    view.ToClient(kClient, -502, -500, x, y);
    EXPECT_EQ(x, 0) << "-0.8 + 0.5 is cut to 0";
}

TEST(PlotView, MapsEverythingToTheCornerWithoutAScale)
{
    for (const double scale : {0.0, -3.0, 0.0000009}) {
        const PlotView view{7, 7, scale};
        long x = 5;
        long y = 5;
        view.ToClient(kClient, 100, 100, x, y);
        EXPECT_EQ(x, 0) << scale;
        EXPECT_EQ(y, 0) << scale;
    }
}

TEST(PlotView, ReadsTheColumnFromItsResult)
{
    const PlotView view{10, 20, 2.0};
    long x = 30;
    long y = 0;
    view.ToWorld(kClient, 90, x, y);
    EXPECT_EQ(x, 70);
    EXPECT_EQ(y, 40);
}

TEST(PlotView, WritesOneLine)
{
    EXPECT_EQ((PlotView{-500, -500, 2.5}.ToLine("GRAPHMAGNETIC_XY:")),
              "GRAPHMAGNETIC_XY:-500, -500, 2.500000,\r\n");
    EXPECT_EQ((PlotView{0, -500, 3.0}.ToLine("GRAPHMAGNETIC_XZ:")),
              "GRAPHMAGNETIC_XZ:0, -500, 3.000000,\r\n");
}

struct FileCase
{
    const wchar_t* text;
    PlotView expected;
    const char* why;
};

TEST(PlotView, TakesTheFieldsThatAreThere)
{
    const FileCase cases[] = {
        {L"GRAPHMAGNETIC_XZ:12, -34, 1.250000,\r\n",       {12, -34, 1.25},             "all three"              },
        {L"GRAPHMAGNETIC_XZ:12",                           {12, 2, 3.5},                "only the first"         },
        {L"GRAPHMAGNETIC_XZ:",                             {0, 2, 3.5},                 "nothing after the key"  },
        {L"GRAPHMAGNETIC_XZ:12,9",                         {12, 9, 3.5},                "the scale is missing"   },
        {L"GRAPHMAGNETIC_XY:12, 9, 8,",                    {1, 2, 3.5},                 "another key"            },
        {L"",                                              {1, 2, 3.5},                 "empty"                  },
        {L"junk GRAPHMAGNETIC_XZ:  7x, y, z,",             {7, 0, 0.0},                 "malformed numbers are 0"},
        {L"GRAPHMAGNETIC_XZ:,,",                           {0, 0, 0.0},                 "empty fields are there" },
        {L"GRAPHMAGNETIC_XZ:1, 2, -5,",                    {1, 2, -5.0},                "no range check"         },
        {L"GRAPHMAGNETIC_XZ:99999999999, -99999999999, 1", {INT32_MAX, INT32_MIN, 1.0}, "limits"                 },
    };
    for (const FileCase& c : cases) {
        PlotView view{1, 2, 3.5};
        view.TakeFrom(c.text, L"GRAPHMAGNETIC_XZ:");
        EXPECT_EQ(view.originX, c.expected.originX) << c.why;
        EXPECT_EQ(view.originY, c.expected.originY) << c.why;
        EXPECT_EQ(view.scale, c.expected.scale) << c.why;
    }
}

// 400 counts over 200 pixels exceed 100 over 100: scale 2 · 1.5; center (200, 50) - half the area.
TEST(PlotExtent, FitsWithAMarginAroundTheMiddle)
{
    PlotExtent extent{0, 0, 0, 0};
    extent.Include(400, 100);
    extent.Include(100, 50);
    const PlotView view = extent.FitInto(kClient);
    EXPECT_EQ(view.scale, 3.0);
    EXPECT_EQ(view.originX, -99) << "-100 + 0.5, cut toward zero";
    EXPECT_EQ(view.originY, -99);
}

TEST(PlotExtent, SpansTheWholeRangeOfAnInt)
{
    PlotExtent extent{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN};
    extent.Include(INT32_MAX, INT32_MAX);
    EXPECT_NEAR(extent.FitInto(kClient).scale, 4294967295.0 / 100 * 1.5, 1e-6);
}

TEST(TiltView, PutsNorthingUpAndEastingRight)
{
    const TiltView view{1000.0, 500.0, 0.01};
    long x = 0;
    long y = 0;
    view.ToClient(kClient, 1000.0, 500.0, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 100);
    view.ToClient(kClient, 1000.5, 501.2, x, y);
    EXPECT_EQ(x, 120);
    EXPECT_EQ(y, 50);
    const TiltView flat{0, 0, 0.0000001};
    flat.ToClient(kClient, 5, 5, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
}

TEST(TiltView, TakesTheRowFirst)
{
    const TiltView view{1000.0, 500.0, 0.5};
    double x = 0;
    double y = 0;
    view.ToWorld(kClient, 90, 4, x, y);
    EXPECT_DOUBLE_EQ(x, 1005.0);
    EXPECT_DOUBLE_EQ(y, 502.0);
}

TEST(TiltExtent, NeverZoomsFinerThanACentimeterAPixel)
{
    TiltExtent cluster{10.0, 10.0, 20.0, 20.0};
    cluster.Include(10.001, 20.001);
    EXPECT_EQ(cluster.FitInto(kClient).scale, 0.01);

    TiltExtent wide{0.0, 0.0, 0.0, 0.0};
    wide.Include(10.0, 10.0);
    const TiltView view = wide.FitInto(kClient);
    EXPECT_DOUBLE_EQ(view.scale, 0.12) << "10 m over 100 pixels, a fifth more";
    EXPECT_DOUBLE_EQ(view.originX, 5.0 - 6.0);
    EXPECT_DOUBLE_EQ(view.originY, 5.0 - 12.0);
}

TEST(TiltZoom, ComesRarerWithMoreObservations)
{
    std::vector<int> zoomed;
    for (int count = 1; count <= 180; ++count)
        if (ZoomsAt(count)) zoomed.push_back(count);
    EXPECT_EQ(zoomed, (std::vector<int>{2, 4, 6, 8, 10, 15, 20, 25, 30, 40, 50, 60, 120, 180}));
}

} // namespace
} // namespace tiltpole::controls
