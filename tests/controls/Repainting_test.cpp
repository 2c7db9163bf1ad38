// SPDX-License-Identifier: MIT
//
// Which calls ask for a paint, and whether the background is erased first.
#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"
#include "framework/gui/Borrowed.h"

#include "tests/ScratchFolder.h"
#include "tests/controls/ControlTest.h"

#include <functional>
#include <memory>
#include <ostream>
#include <type_traits>
#include <vector>

namespace tiltpole::controls::test {
namespace {

enum class Asks { Nothing, Paint, ErasingPaint };

void PrintTo(Asks asks, std::ostream* out)
{
    constexpr const char* kNames[] = {"nothing", "a paint", "a paint with erasing"};
    *out << kNames[static_cast<int>(asks)];
}

// Counts what its window is asked for.
template <class Base>
class Counted : public Base
{
public:
    int paints = 0;
    int erasures = 0;
    bool endsErased = false; // destroys its window when it is erased

    using Base::GetThisMessageMap;

    Asks After(const std::function<void(Counted&)>& call)
    {
        this->UpdateWindow();
        paints = erasures = 0;
        call(*this);
        this->UpdateWindow();
        EXPECT_LE(paints, 1);
        if (paints == 0) return Asks::Nothing;
        return erasures > 0 ? Asks::ErasingPaint : Asks::Paint;
    }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        paints += message == WM_PAINT;
        erasures += message == WM_ERASEBKGND;
        if (message == WM_ERASEBKGND && endsErased) return this->DestroyWindow();
        return Base::WindowProc(message, wParam, lParam);
    }
};

// Numbers of the messages in a class's own map, in its order.
std::vector<UINT> MessagesOf(const AFX_MSGMAP& map)
{
    std::vector<UINT> messages;
    for (const AFX_MSGMAP_ENTRY* entry = map.lpEntries; entry->nMessage != 0; ++entry)
        messages.push_back(entry->nMessage);
    return messages;
}

template <class Control>
struct Meter : testing::Test, Placed<Counted<Control>>
{
    Meter() : Placed<Counted<Control>>(120, 180) {}
};

using Meters = testing::Types<CGraphCompass, CGraphIncline_Left, CGraphIncline_Right>;
TYPED_TEST_SUITE(Meter, Meters);

TYPED_TEST(Meter, IsErasedOnlyForANewBackground)
{
    Counted<TypeParam>& meter = this->control;
    EXPECT_EQ(meter.After([](auto& m) { m.SetValue(180); }), Asks::Nothing);
    EXPECT_EQ(meter.After([](auto& m) { m.SetFix(180); }), Asks::Nothing);
    EXPECT_EQ(meter.After([](auto& m) { m.ClearFix(); }), Asks::Paint);
    EXPECT_EQ(meter.After([](auto& m) { m.ReconstructControl(); }), Asks::ErasingPaint);
    EXPECT_EQ(meter.After([](auto& m) { m.SetMeterBackColor(RGB(9, 9, 9)); }), Asks::ErasingPaint);
}

TYPED_TEST(Meter, IsErasedForANewBackgroundThoughItHadNone)
{
    Counted<TypeParam> unpainted;
    ASSERT_TRUE(
        unpainted.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 20, 20), &this->dialog, 2));
    unpainted.ValidateRect(nullptr);
    EXPECT_EQ(unpainted.After([](auto& m) { m.ReconstructControl(); }), Asks::ErasingPaint);
}

TYPED_TEST(Meter, HandlesPaintingAndErasingAndNoOtherMessage)
{
    const AFX_MSGMAP& map = *Counted<TypeParam>::GetThisMessageMap();
    EXPECT_EQ(MessagesOf(map), (std::vector<UINT>{WM_PAINT, WM_ERASEBKGND}));
    EXPECT_EQ(map.pfnGetBaseMap(), Counted<CStatic>::GetThisMessageMap());
}

// A plain static control on the same dialog does erase.
TYPED_TEST(Meter, AnswersZeroToErasingAndLeavesItsPixels)
{
    const auto erase = [](CWnd& window) {
        const framework::Borrowed dc(window);
        return window.SendMessage(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc->GetSafeHdc()));
    };
    const Shown before(this->control);
    EXPECT_EQ(erase(this->control), 0);
    EXPECT_EQ(Shown(this->control), before);
    CStatic plain;
    ASSERT_TRUE(plain.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 9, 9), &this->dialog, 3));
    EXPECT_NE(erase(plain), 0);
}

TYPED_TEST(Meter, MarksAFixBeforeItsFirstPaintInItsPlaceFromThePaintOn)
{
    Counted<TypeParam> early;
    early.SetFix(180); // without a window
    ASSERT_TRUE(early.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 120, 180), &this->dialog, 2));
    early.SetFix(180); // listed already
    EXPECT_EQ(Shown(early).Count(kGreen), 0);
    early.SetFix(200 - (std::is_same_v<TypeParam, CGraphIncline_Left> ? 60 : 0));
    EXPECT_EQ(Shown(early).At(0, 0), kGreen) << "a dot in the corner: nothing is measured yet";
    EXPECT_LE(Shown(early).Count(kGreen), 9);
    early.UpdateWindow();

    this->control.SetFix(180);
    this->control.SetFix(200 - (std::is_same_v<TypeParam, CGraphIncline_Left> ? 60 : 0));
    EXPECT_EQ(Shown(early), this->Repainted()) << "as if they had been set after the paint";
}

TYPED_TEST(Meter, MayEndWhileItIsErased)
{
    const Shown before(this->control);
    this->control.endsErased = true;
    this->control.ReconstructControl();
    EXPECT_NO_THROW(this->control.UpdateWindow());
    EXPECT_FALSE(this->control.GetSafeHwnd());
    this->control.endsErased = false;
    ASSERT_TRUE(
        this->control.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 120, 180), &this->dialog, 1));
    EXPECT_EQ(this->Repainted(), before) << "another life";
}

// A plot of 300 x 300 pixels that shows (0, 0) and not (100000, 0).
template <class Control>
struct PlotCalls : testing::Test
{
    ScratchFolder folder;
    Dialog dialog;
    std::unique_ptr<Counted<Control>> plot;

    PlotCalls()
    {
        framework::SetModulePath(CString(folder.Path("host").c_str()));
        plot = std::make_unique<Counted<Control>>();
        EXPECT_TRUE(plot->Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 306, 306),
                                 &dialog, 3));
    }
    ~PlotCalls() override { framework::SetModulePath(CString()); }
};

using Plots = testing::Types<CGraphMagnetic_XY, CGraphMagnetic_XZ>;
TYPED_TEST_SUITE(PlotCalls, Plots);

TYPED_TEST(PlotCalls, EraseOnlyForAnotherView)
{
    Counted<TypeParam>& asked = *this->plot;
    EXPECT_EQ(asked.After([](auto& p) { p.AddTrackPoint(0, 0, 0); }), Asks::Paint);
    EXPECT_EQ(asked.After([](auto& p) { p.AddCenterPoint(0, 0, 0); }), Asks::Paint);
    EXPECT_EQ(asked.After([](auto& p) { p.AddCenterPoint(100000, 0, 0); }), Asks::Nothing);
    for (int outside = 1; outside <= 10; ++outside)
        EXPECT_EQ(asked.After([](auto& p) { p.AddTrackPoint(100000, 0, 0); }), Asks::Nothing)
            << outside;
    EXPECT_EQ(asked.After([](auto& p) { p.AddTrackPoint(100000, 0, 0); }), Asks::ErasingPaint)
        << "the eleventh zooms";
    EXPECT_EQ(asked.After([](auto& p) { p.ZoomAll(); }), Asks::ErasingPaint);
    EXPECT_EQ(asked.After([](auto& p) { p.Clear(); }), Asks::ErasingPaint);
    EXPECT_EQ(asked.After([](auto& p) { p.ZoomAll(); }), Asks::Nothing) << "nothing to fit";
}

TYPED_TEST(PlotCalls, HandlePaintingAndNoOtherMessage)
{
    const AFX_MSGMAP& map = *Counted<TypeParam>::GetThisMessageMap();
    EXPECT_EQ(MessagesOf(map), std::vector<UINT>{WM_PAINT});
    EXPECT_EQ(map.pfnGetBaseMap(), Counted<CWnd>::GetThisMessageMap());
}

TYPED_TEST(PlotCalls, MayEndThePlotWhileItIsErased)
{
    this->plot->endsErased = true;
    this->plot->Clear();
    EXPECT_NO_THROW(this->plot->UpdateWindow());
    EXPECT_FALSE(this->plot->GetSafeHwnd());
    EXPECT_NO_THROW(this->plot->AddTrackPoint(0, 0, 0));
}

class Ground : public CView
{
protected:
    void OnDraw(CDC*) override {}
};

// The graph draws at once, or leaves it to the next ReDraw.
TEST(TiltGraphCalls, NeverAskForAPaint)
{
    Dialog dialog;
    Counted<Ground> view;
    ASSERT_TRUE(
        view.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 200, 100), &dialog, 1));
    EXPECT_EQ(view.After([](Counted<Ground>& v) {
        CTiltPositionGraph graph;
        graph.SetView(&v);
        graph.InvalidateCtrl();
        TiltPoint_Sensor point;
        point.nSet = point.nConfirmed = 1;
        graph.AddPoint(point);
        point.dX = 1000; // outside
        graph.AddPoint(point);
        graph.SetCenterPoint(1, point);
        graph.DrawCurrentPt(nullptr, point);
        graph.ZoomAll();
        graph.DrawAll();
        graph.ReDraw();
        graph.Clear();
    }),
              Asks::Nothing);
}

} // namespace
} // namespace tiltpole::controls::test
