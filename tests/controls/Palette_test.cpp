// SPDX-License-Identifier: MIT
//
// Each control shows all of its own colors and no others.
#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"

#include "tests/controls/ControlTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace tiltpole::controls::test {
namespace {

using testing::UnorderedElementsAre;

constexpr COLORREF kOuter = RGB(0, 153, 255);
constexpr COLORREF kMiddle = RGB(255, 204, 0);
constexpr COLORREF kLabel = RGB(0, 0, 255);
constexpr COLORREF kLetter = RGB(255, 0, 255);

std::set<COLORREF> ColorsOf(CWnd& window)
{
    CRect client;
    window.GetClientRect(&client);
    std::set<COLORREF> colors;
    CClientDC dc(&window);
    for (int y = 0; y < client.Height(); ++y)
        for (int x = 0; x < client.Width(); ++x)
            colors.insert(dc.GetPixel(x, y));
    return colors;
}

TEST(Palette, OfTheDial)
{
    Placed<CGraphCompass> dial(240, 240);
    dial.control.SetFix(35);
    dial.control.SetValue(120);
    EXPECT_THAT(ColorsOf(dial.control),
                UnorderedElementsAre(RGB(102, 255, 255), kFace, kOuter, kMiddle, kTick, kLabel,
                                     kRed, RGB(128, 128, 128), RGB(233, 87, 50), kBlack, kGreen));
}

template <class Gauge>
void CheckGauge()
{
    Placed<Gauge> gauge(110, 260);
    gauge.control.SetFix(180);
    gauge.control.SetValue(180);
    EXPECT_THAT(ColorsOf(gauge.control),
                UnorderedElementsAre(kFace, kOuter, kMiddle, kTick, kLabel, kRed, kGreen));
}

TEST(Palette, OfTheGauges)
{
    CheckGauge<CGraphIncline_Left>();
    CheckGauge<CGraphIncline_Right>();
}

template <class Plot>
void CheckPlot(COLORREF track)
{
    Dialog dialog;
    Plot plot;
    ASSERT_TRUE(
        plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 306, 306), &dialog, 1));
    plot.AddTrackPoint(20, 20, 20);
    plot.AddCenterPoint(100, 100, 100);
    plot.UpdateWindow();
    EXPECT_THAT(ColorsOf(plot),
                UnorderedElementsAre(kBlack, RGB(0, 255, 255), kLetter, track, kRed));
}

TEST(Palette, OfThePlots)
{
    CheckPlot<CGraphMagnetic_XY>(kWhite);
    CheckPlot<CGraphMagnetic_XZ>(kGreen);
}

// The bounding box of all pixels of a color: right and bottom exclusive.
CRect ExtentOf(const Shown& shown, CSize size, COLORREF color)
{
    CRect extent(size.cx, size.cy, 0, 0);
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx; ++x) {
            if (shown.At(x, y) != color) continue;
            extent.left = std::min<int>(extent.left, x);
            extent.top = std::min<int>(extent.top, y);
            extent.right = std::max<int>(extent.right, x + 1);
            extent.bottom = std::max<int>(extent.bottom, y + 1);
        }
    }
    return extent;
}

// Client 300 x 300: corner at (20, 280), arms of 50 pixels, heads 3 pixels to either side. The end
// pixels of the arm and of the last line to each tip are set by the lines that start there.
TEST(AxisGlyph, StandsTwentyPixelsFromTheCorner)
{
    Dialog dialog;
    CGraphMagnetic_XY plot;
    plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 306, 306), &dialog, 1);
    plot.UpdateWindow();
    const Shown shown(plot);
    EXPECT_EQ(ExtentOf(shown, {300, 300}, RGB(0, 255, 255)), CRect(17, 230, 71, 284));
    const CRect letters = ExtentOf(shown, {300, 300}, kLetter);
    EXPECT_NEAR(letters.left, 17, 3) << "the vertical letter begins at column 17";
    EXPECT_GE(letters.top, 212) << "and hangs from row 212";
    EXPECT_LE(letters.top, 217);
    EXPECT_GE(letters.right, 80) << "the horizontal one begins at column 75";
    EXPECT_LE(letters.bottom, 286) << "and hangs from row 272";
}

// Only the hub around the center (120, 120) of a dial of 240 pixels is black: columns and rows 118
// to 122.
TEST(Hub, IsFivePixelsWide)
{
    Placed<CGraphCompass> dial(240, 240);
    EXPECT_EQ(ExtentOf(Shown(dial.control), {240, 240}, kBlack), CRect(118, 118, 123, 123));
}

// The inner ring's radius is 103: label boxes are centered 68 pixels from the center, so the number
// at 180 starts at row 120 + 68 - 17 and the one at 0 at row 120 - 68 - 17.
TEST(Labels, HangFromTheTopOfTheirBoxes)
{
    Placed<CGraphCompass> dial(240, 240);
    const CRect all = ExtentOf(Shown(dial.control), {240, 240}, kLabel);
    EXPECT_NEAR(all.top, 35 + 4, 2) << "digits begin a few pixels below the top of their cell";
    EXPECT_NEAR(all.bottom, 171 + 15, 2);
}

// The needle at north on a dial of 240 pixels: h = 3 * 18, so the base reaches 54 / 8 = 6.75 pixels
// to either side; the tip is 235 / 3 above and the tail 235 / 6 below the center.
TEST(NeedleOnTheDial, ReachesFromTipToTail)
{
    Placed<CGraphCompass> dial(240, 240);
    const CRect shadow = ExtentOf(Shown(dial.control), {240, 240}, RGB(128, 128, 128));
    EXPECT_EQ(shadow.top, 120 - 78 - 1) << "two pixels wide around the tip";
    EXPECT_EQ(shadow.bottom, 120 + 39 + 1);
    EXPECT_EQ(shadow.right, 120 + 7 + 1);
}

} // namespace
} // namespace tiltpole::controls::test
