// SPDX-License-Identifier: MIT
#include "controls/GraphCompass.h"

#include "tests/controls/ControlTest.h"

#include <malloc.h>

#include <cmath>
#include <cstring>

namespace tiltpole::controls::test {
namespace {

// 240 x 240: center (120, 120), diameter 235, unit 3, rings 118, 113 and 103.
struct Dial : Placed<CGraphCompass>
{
    Dial() : Placed(240, 240) {}
};

TEST(Compass, BeginsAtNorthInItsColors)
{
    Dial dial;
    EXPECT_EQ(dial.control.GetValue(), 0.0);
    EXPECT_EQ(dial.control.GetMeterBackColor(), RGB(102, 255, 255));
    const Shown shown(dial.control);
    EXPECT_EQ(shown.At(0, 0), RGB(102, 255, 255)) << "around the dial";
    EXPECT_EQ(shown.At(120, 90), kRed) << "the needle points up";
    EXPECT_EQ(shown.At(60, 120), kFace) << "the dial beside it";
    EXPECT_EQ(shown.At(120, 120), kBlack) << "the hub";
}

TEST(Compass, MovesTheNeedleAtOnceWithoutAPaint)
{
    Dial dial;
    dial.control.SetValue(90);
    const Shown shown(dial.control);
    EXPECT_EQ(shown.At(150, 120), kRed) << "inside the needle";
    EXPECT_EQ(shown.At(150, 130), kFace) << "dial beside it";
    EXPECT_EQ(shown.At(120, 90), kFace) << "the old needle is gone";
    CRect none;
    EXPECT_FALSE(dial.control.GetUpdateRect(&none)) << "nothing was invalidated";
}

TEST(Compass, OnlyStoresTheValueBeforeItsFirstPaint)
{
    CGraphCompass unseen;
    unseen.SetValue(123.5);
    EXPECT_EQ(unseen.GetValue(), 123.5);
    Dialog dialog;
    CGraphCompass hidden;
    ASSERT_TRUE(hidden.Create(L"", WS_CHILD, CRect(0, 0, 100, 100), &dialog, 1));
    hidden.SetValue(7);
    EXPECT_EQ(hidden.GetValue(), 7.0);
    EXPECT_EQ(Shown(hidden).Count(kRed), 0);
}

TEST(Compass, KeepsValuesOutsideACircleAsGiven)
{
    Dial dial;
    dial.control.SetValue(370);
    EXPECT_EQ(dial.control.GetValue(), 370.0);
    for (const double heading : {-1e9, 1e300, std::nan("")}) {
        dial.control.SetValue(heading);
        EXPECT_EQ(Shown(dial.control).At(239, 0), RGB(102, 255, 255)) << heading;
    }
}

struct Reach : CGraphCompass
{
    using CGraphCompass::m_face;
    using CGraphCompass::m_rings;
};

TEST(Compass, MeasuresItsDiameterByItsSmallerSide)
{
    struct Case
    {
        int width, height, diameter, unit, outer;
        const char* why;
    };
    const Case cases[] = {
        {5,   5,   0,   0, 0,  "no dial"                         },
        {1,   90,  -4,  0, -1, "-2 + 0.5, cut toward zero"       },
        {64,  64,  59,  0, 30, "below 60 the needle has no width"},
        {65,  200, 60,  1, 30, "60"                              },
        {124, 124, 119, 1, 60, "up to 119"                       },
        {300, 125, 120, 2, 60, "120"                             },
    };
    for (const Case& c : cases) {
        const Placed<Reach> dial(c.width, c.height);
        EXPECT_EQ(dial.control.m_face.diameter, c.diameter) << c.why;
        EXPECT_EQ(dial.control.m_face.needleUnit, c.unit) << c.why;
        EXPECT_EQ(dial.control.m_rings.outer, c.outer) << c.why;
    }
}

// At east P0 is above the axis, P2 below it. The two-pixel gray edge lies on P1-P2-P3 up to 90
// degrees and on P1-P0-P3 beyond.
TEST(Compass, ChangesTheShadowSideAtNinetyDegrees)
{
    constexpr COLORREF kShadow = RGB(128, 128, 128);
    Dial dial;
    const auto shadowRows = [&dial](double heading, int from, int to) {
        dial.control.SetValue(heading);
        const Shown shown(dial.control);
        int count = 0;
        for (int y = from; y < to; ++y)
            for (int x = 85; x < 195; ++x)
                count += shown.At(x, y) == kShadow;
        return count;
    };
    EXPECT_GT(shadowRows(90.0, 122, 130), 50);
    EXPECT_EQ(shadowRows(90.0, 108, 118), 0);
    EXPECT_GT(shadowRows(90.000001, 110, 119), 50);
    EXPECT_EQ(shadowRows(90.000001, 123, 132), 0);
    EXPECT_GT(shadowRows(-270.0, 122, 130), 50) << "no wrapping: -270 is not above 90";
}

// Ticks of 7.8 pixels every thirty degrees, half as long in between; their outer ends lie on the
// ring of radius 103.
TEST(Compass, HasLongTicksAtThirtyDegrees)
{
    const Dial dial;
    const Shown shown(const_cast<CGraphCompass&>(dial.control));
    EXPECT_EQ(shown.At(120 + 102, 119), kTick);
    EXPECT_EQ(shown.At(120 + 96, 119), kTick) << "the long tick at 90 ends at 223 - 7.8";
    EXPECT_EQ(shown.At(120 + 92, 119), kFace);
    const auto on = [&](double radius, double heading) {
        const double a = (heading - 180) * 3.141592653589793 / 180;
        return shown.At(static_cast<int>(120 - radius * std::sin(a)),
                        static_cast<int>(120 + radius * std::cos(a)));
    };
    EXPECT_EQ(on(101, 50), kTick);
    EXPECT_EQ(on(96, 50), kFace) << "the short tick ends at 99";
}

// How many pixels the number at a heading has, on a dial of 240 pixels. Label centers lie 68 pixels
// from the center; text hangs from the top of a box of 34 pixels.
int InkOfLabel(const Shown& shown, int heading)
{
    const double a = (heading - 180) * 3.141592653589793 / 180;
    const int x = static_cast<int>(120 - 68 * std::sin(a) + 0.5);
    const int y = static_cast<int>(120 + 68 * std::cos(a) + 0.5);
    int ink = 0;
    for (int row = y - 17; row < y + 3; ++row)
        for (int column = x - 17; column < x + 17; ++column)
            ink += shown.At(column, row) == RGB(0, 0, 255);
    return ink;
}

TEST(Compass, LabelsEveryThirtyDegrees)
{
    const Dial dial;
    const Shown shown(const_cast<CGraphCompass&>(dial.control));
    for (int heading = 30; heading < 360; heading += 30) {
        EXPECT_GT(InkOfLabel(shown, heading), 15) << heading;
        EXPECT_LT(InkOfLabel(shown, heading), 250) << heading;
    }
}

TEST(Compass, LabelsNorthWithASingleZero)
{
    Dial dial;
    dial.control.SetValue(180); // the needle points away from it
    const Shown shown(dial.control);
    EXPECT_GT(InkOfLabel(shown, 0), 15);
    EXPECT_LT(InkOfLabel(shown, 0), InkOfLabel(shown, 30)) << "a figure less than 30";
}

TEST(Compass, MarksAFixAcrossTheBandAtOnce)
{
    Dial dial;
    const int before = Shown(dial.control).Count(kGreen);
    dial.control.SetFix(90);
    const Shown marked(dial.control);
    EXPECT_EQ(before, 0);
    EXPECT_EQ(marked.At(228, 120), kGreen) << "in the middle of the band";
    EXPECT_EQ(marked.At(228, 124), kFace);

    dial.control.SetFix(90);
    EXPECT_EQ(Shown(dial.control), marked) << "listed already";
    dial.control.SetFix(450);
    EXPECT_EQ(Shown(dial.control), marked) << "another entry at the same place";
    EXPECT_EQ(dial.Repainted().Count(kGreen), marked.Count(kGreen));
}

TEST(Compass, LeavesTheContextsOfOthersAloneWhenItDrawsFixes)
{
    Dial dial;
    CDC* const lent = dial.control.GetDC();
    lent->SetTextColor(RGB(1, 2, 3));
    for (int fix = 0; fix < 100; ++fix)
        dial.control.SetFix(fix);
    EXPECT_EQ(lent->GetTextColor(), RGB(1, 2, 3));
    EXPECT_EQ(dial.control.ReleaseDC(lent), 1);
}

TEST(Compass, DrawsFixesOnTheWindowItHas)
{
    Dialog dialog;
    CGraphCompass dial;
    for (const int fix : {90, 270}) {
        ASSERT_TRUE(dial.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 240, 240), &dialog, 1));
        dial.UpdateWindow();
        dial.SetFix(fix);
        EXPECT_EQ(Shown(dial).At(fix == 90 ? 228 : 12, 120), kGreen) << fix;
        dial.DestroyWindow();
    }
}

TEST(Compass, ShowsItsFixesOverTheNeedleInEveryComposition)
{
    Dial dial;
    dial.control.SetFix(0);
    dial.control.SetFix(45);
    const int green = Shown(dial.control).Count(kGreen);
    dial.control.SetValue(200);
    EXPECT_EQ(Shown(dial.control).Count(kGreen), green);
    dial.control.ClearFix();
    EXPECT_EQ(Shown(dial.control).Count(kGreen), green) << "gone with the next paint";
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control).Count(kGreen), 0);
}

TEST(Compass, TakesANewBackColorWithTheNextPaint)
{
    Dial dial;
    dial.control.SetMeterBackColor(RGB(1, 2, 3));
    EXPECT_EQ(Shown(dial.control).At(0, 0), RGB(102, 255, 255));
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control).At(0, 0), RGB(1, 2, 3));

    CGraphCompass unpainted;
    ASSERT_TRUE(unpainted.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 9, 9), &dial.dialog, 2));
    unpainted.ValidateRect(nullptr);
    unpainted.SetMeterBackColor(RGB(4, 5, 6));
    EXPECT_EQ(unpainted.GetMeterBackColor(), RGB(4, 5, 6));
    CRect pending;
    EXPECT_TRUE(unpainted.GetUpdateRect(&pending)) << "invalidated all the same";
}

TEST(Compass, KeepsTheSizeOfItsBackgroundUntilReconstructed)
{
    Dial dial;
    dial.control.MoveWindow(0, 0, 300, 300);
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control).At(120, 120), kBlack) << "the hub stays where it was";
    dial.control.ReconstructControl();
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control).At(150, 150), kBlack);
    EXPECT_NE(Shown(dial.control).At(120, 120), kBlack);
}

TEST(Compass, IsBlackBesideABackgroundThatIsTooSmall)
{
    Placed<CGraphCompass> dial(100, 100);
    dial.control.MoveWindow(0, 0, 120, 130);
    SoilBitmaps(120, 130);
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control).Count(kBlack), 21 + 120 * 130 - 100 * 100) << "the hub has 21";
}

TEST(Compass, SurvivesEverySize)
{
    for (const int side : {0, 1, 4, 5, 6, 59, 64, 65, 124, 125}) {
        Placed<CGraphCompass> dial(side, side);
        dial.control.SetValue(77);
        dial.control.SetFix(10);
        dial.control.Invalidate();
        dial.control.UpdateWindow();
    }
    Placed<CGraphCompass> wide(700, 60);
    EXPECT_EQ(Shown(wide.control).At(350, 30), kBlack);
}

TEST(Compass, AddsOneStyleBitWhenItTakesOverAControl)
{
    Dialog dialog;
    CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 50, 50, dialog.GetSafeHwnd(),
                    9);
    CGraphCompass dial;
    ASSERT_TRUE(dial.SubclassDlgItem(9, &dialog));
    EXPECT_EQ(dial.GetStyle(), WS_CHILD | WS_VISIBLE | 0x4000u);
}

TEST(Compass, IsKnownAtRunTime)
{
    const CGraphCompass dial;
    const CRuntimeClass* const known = dial.GetRuntimeClass();
    EXPECT_STREQ(known->m_lpszClassName, "CGraphCompass");
    EXPECT_EQ(known->m_wSchema, 0xFFFFu);
    EXPECT_TRUE(dial.IsKindOf(RUNTIME_CLASS(CStatic)));
}

TEST(Compass, ErasesNothing)
{
    CGraphCompass dial;
    CDC memory;
    EXPECT_FALSE(dial.OnEraseBkgnd(&memory));
    EXPECT_FALSE(dial.OnEraseBkgnd(nullptr));
}

TEST(Compass, DrawsNothingWithoutAContext)
{
    Dial dial;
    dial.control.SetFix(30);
    const Shown before = dial.Repainted();
    CRect other(0, 0, 50, 70);
    dial.control.DrawBackground(nullptr, other);
    dial.control.DrawPointer(nullptr, 10);
    dial.control.DrawFixSign(nullptr);
    EXPECT_EQ(dial.Repainted(), before) << "center and rings of the last background are kept";
}

// The reserved color is set and never read.
TEST(Compass, LooksTheSameWhateverItsReservedColorIs)
{
    Placed<Reach> dial(100, 100);
    const Shown before(dial.control);
    dial.control.m_face.reservedColor = RGB(1, 2, 3);
    dial.control.ReconstructControl();
    dial.control.UpdateWindow();
    EXPECT_EQ(Shown(dial.control), before);
}

TEST(Compass, TakesAMillionValuesAndFixesWithoutGrowing)
{
    Placed<CGraphCompass> dial(40, 40);
    const Shown before = [&] {
        dial.control.SetValue(12);
        return Shown(dial.control);
    }();
    const auto call = [&dial](int i) {
        dial.control.SetValue(i % 360);
        if (i % 100 != 0) return;
        dial.control.SetFix(i);
        dial.control.ClearFix();
    };
    for (int i = 0; i < 10000; ++i)
        call(i);
    const std::size_t held = mallinfo2().uordblks;
    for (int i = 0; i < 1000000; ++i)
        call(i);
    EXPECT_NEAR(static_cast<double>(mallinfo2().uordblks), static_cast<double>(held), 4096);
    dial.control.UpdateWindow();
    dial.control.SetValue(12);
    EXPECT_EQ(Shown(dial.control), before);
}

} // namespace
} // namespace tiltpole::controls::test
