// SPDX-License-Identifier: MIT
//
// Controls are created, painted and destroyed without leaking, and work while hidden. Ten thousand
// lives and a million paints of each kind: ./dev soak --controls.
#include "tests/controls/Endured.h"

#include "framework/core/Paths.h"
#include "framework/gui/detail/WindowRegistry.h"
#include "tests/ScratchFolder.h"
#include "tests/controls/ControlTest.h"
#include "tests/reference/FailingAllocations.h"

namespace tiltpole::controls::test {
namespace {

class Lifetime : public testing::TestWithParam<Kind>
{
protected:
    Lifetime() { framework::SetModulePath(CString(m_folder.Path("host").c_str())); }
    ~Lifetime() override { framework::SetModulePath(CString()); }

    void Live(int rounds)
    {
        for (int i = 0; i < rounds; ++i) {
            GetParam().live();
            m_events.DispatchPending();
        }
    }

private:
    static int& NoArguments()
    {
        static int none = 0;
        return none;
    }

    ScratchFolder m_folder;
    framework::Application m_events{NoArguments(), nullptr, framework::Display::Memory};
};

TEST_P(Lifetime, LeavesNoBlockAndNoWindow)
{
    Live(20); // fonts, classes and the toolkit's own memory are made with the first ones
    const long held = reference::HeldBlocks();
    const std::size_t windows = framework::Windows().windows.size();
    Live(50);
    EXPECT_EQ(framework::Windows().windows.size(), windows);
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    EXPECT_EQ(reference::HeldBlocks(), held);
}

INSTANTIATE_TEST_SUITE_P(Controls, Lifetime, testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });

class Painting : public Lifetime
{
protected:
    void Paint(Painted& painted, long from, long to)
    {
        for (long n = from; n < to; ++n)
            painted.Paint(n);
    }
};

TEST_P(Painting, HoldsTheSameBlocksPeriodAfterPeriod)
{
    const std::unique_ptr<Painted> painted = GetParam().make();
    const long period = painted->Period();
    Paint(*painted, 0, 2 * period);
    const long held = reference::HeldBlocks();
    const long periods = 2000 / period;
    Paint(*painted, 2 * period, (2 + periods) * period);
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    EXPECT_EQ(reference::HeldBlocks(), held);
}

TEST_P(Painting, ShowsAnotherPictureForAnotherValue)
{
    const std::unique_ptr<Painted> painted = GetParam().make();
    const long period = painted->Period();
    Paint(*painted, 0, period + 7);
    const std::uint64_t seventh = PictureOf(painted->Window());
    Paint(*painted, period + 7, period + 8);
    EXPECT_NE(PictureOf(painted->Window()), seventh);
    Paint(*painted, period + 8, 2 * period + 7);
    EXPECT_EQ(PictureOf(painted->Window()), seventh) << "a period later";
}

std::vector<Kind> PaintedKinds()
{
    std::vector<Kind> painted(kKinds.begin(), kKinds.end());
    std::erase_if(painted, [](const Kind& kind) { return kind.make == nullptr; });
    return painted;
}

INSTANTIATE_TEST_SUITE_P(Controls, Painting, testing::ValuesIn(PaintedKinds()),
                         [](const auto& kind) { return kind.param.name; });

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
    ASSERT_TRUE(dial.Create(L"", kInHost, CRect(0, 0, 240, 240), &dialog, 1));
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
