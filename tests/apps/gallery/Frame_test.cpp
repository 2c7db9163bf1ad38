// SPDX-License-Identifier: MIT
//
// The window of the gallery: its keys, its layout, where its views go.
#include "apps/gallery/Gallery.h"
#include "framework/gui/QtInterop.h"

#include "tests/ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

namespace gallery::test {
namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);

// Poses that turn about a circle of half a meter.
std::vector<ReplaySample> Turning(int samples)
{
    std::vector<ReplaySample> replay;
    for (int i = 0; i < samples; ++i) {
        const double a = 0.05 * i;
        ReplaySample sample{};
        sample.pose.dYaw = i % 360;
        sample.pose.dMag_x = 300 * std::cos(a);
        sample.pose.dMag_y = 300 * std::sin(a);
        sample.pose.dMag_z = 300 * std::sin(a);
        sample.antenna = {1000 + 0.5 * std::cos(a), 2000 + 0.5 * std::sin(a), 100};
        replay.push_back(sample);
    }
    return replay;
}

struct Environment
{
    ScratchFolder folder;
    Environment() { ::setenv("XDG_STATE_HOME", folder.Native().c_str(), 1); }
    ~Environment()
    {
        ::unsetenv("XDG_STATE_HOME");
        framework::SetModulePath(CString());
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
};

struct GalleryWindow : testing::Test
{
    Environment environment;
    Frame frame{Turning(200)};

    GalleryWindow()
    {
        EXPECT_TRUE(KeepViews());
        EXPECT_TRUE(frame.Open());
        ListenToKeys(frame);
        frame.KillTimer(1); // the samples come by the tests
    }

    void Press(int key)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(framework::NativeWidget(frame), &press);
    }

    CRect PlaceOf(Frame::Id id)
    {
        CRect window;
        CRect place;
        frame.GetWindowRect(&window);
        frame.GetDlgItem(static_cast<int>(id))->GetWindowRect(&place);
        return {place.left - window.left, place.top - window.top, place.right - window.left,
                place.bottom - window.top};
    }

    // Pixels of one color in a column of a control; -1 for a color that is nowhere.
    int RightmostIn(Frame::Id id, COLORREF color)
    {
        CWnd& control = *frame.GetDlgItem(static_cast<int>(id));
        control.UpdateWindow();
        CRect client;
        control.GetClientRect(&client);
        CClientDC dc(&control);
        for (int x = client.right - 1; x >= 0; --x)
            for (int y = 0; y < client.bottom; ++y)
                if (dc.GetPixel(x, y) == color) return x;
        return -1;
    }
};

bool Waited(const std::function<bool()>& isDone)
{
    QElapsedTimer waited;
    for (waited.start(); !isDone() && !waited.hasExpired(5000);)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return isDone();
}

TEST_F(GalleryWindow, PausesAndGoesOnBySpace)
{
    EXPECT_FALSE(frame.IsPaused());
    Press(Qt::Key_Space);
    EXPECT_TRUE(frame.IsPaused());
    Press(Qt::Key_Space);
    EXPECT_FALSE(frame.IsPaused());
    EXPECT_TRUE(Waited([this] { return frame.Position() > 0; }));
    Press(Qt::Key_Space);
    EXPECT_TRUE(frame.IsPaused());
    EXPECT_FALSE(frame.KillTimer(1)) << "no sample comes any more";
}

TEST_F(GalleryWindow, StepsByTheArrowsAndPauses)
{
    frame.Step(50);
    Press(Qt::Key_Right);
    EXPECT_EQ(frame.Position(), 51u);
    EXPECT_TRUE(frame.IsPaused());
    Press(Qt::Key_Left);
    Press(Qt::Key_Left);
    EXPECT_EQ(frame.Position(), 49u);
    Press(Qt::Key_Down);
    Press(Qt::Key_Down);
    EXPECT_EQ(frame.Position(), 51u);
    Press(Qt::Key_Up);
    Press(Qt::Key_Up);
    EXPECT_EQ(frame.Position(), 49u);
    CString caption;
    frame.GetDlgItem(Frame::kCaption)->GetWindowText(caption);
    EXPECT_EQ(caption.Find(L"sample 49 "), 0);
}

TEST_F(GalleryWindow, StopsAtBothEnds)
{
    Press(Qt::Key_Left);
    EXPECT_EQ(frame.Position(), 0u);
    frame.Step(1000);
    EXPECT_EQ(frame.Position(), 200u);
    Press(Qt::Key_Right);
    EXPECT_EQ(frame.Position(), 200u);
}

TEST_F(GalleryWindow, TicksUntilTheLastSample)
{
    const auto tick = [this] {
        frame.Press(Frame::Key::Pause);
        frame.Press(Frame::Key::Pause); // sets the timer
        frame.SendMessage(WM_TIMER, 1);
        return frame.KillTimer(1) == TRUE;
    };
    frame.Step(50);
    EXPECT_TRUE(tick());
    EXPECT_GT(frame.Position(), 50u);
    frame.Step(1000);
    EXPECT_FALSE(tick());
}

TEST_F(GalleryWindow, TakesAwayWhatASampleAddedWhenItStepsBack)
{
    frame.Step(50);
    Press(Qt::Key_Right); // the 51st sample is a cross, as every fifth one
    Press(Qt::Key_Left);
    const int before = RightmostIn(Frame::kHorizontal, kWhite);
    Press(Qt::Key_Left);
    Press(Qt::Key_Right);
    EXPECT_GT(before, 0);
    EXPECT_EQ(RightmostIn(Frame::kHorizontal, kWhite), before);
}

TEST_F(GalleryWindow, ClosesByEscape)
{
    const QPointer<QWidget> widget = framework::NativeWidget(frame);
    Press(Qt::Key_Escape);
    EXPECT_TRUE(Waited([&] { return frame.GetSafeHwnd() == nullptr; }));
    EXPECT_TRUE(widget.isNull());
}

TEST_F(GalleryWindow, LeavesOtherKeysAlone)
{
    frame.Step(5);
    Press(Qt::Key_A);
    EXPECT_EQ(frame.Position(), 5u);
    EXPECT_FALSE(frame.IsPaused());
}

TEST_F(GalleryWindow, LaysItsControlsOutInItsSize)
{
    EXPECT_EQ(PlaceOf(Frame::kDial), CRect(10, 10, 270, 270));
    frame.Step(200);
    frame.MoveWindow(0, 0, 2 * Frame::kWidth, 2 * Frame::kHeight);
    EXPECT_EQ(PlaceOf(Frame::kDial), CRect(20, 20, 540, 540));
    EXPECT_EQ(PlaceOf(Frame::kGround), CRect(1040, 20, 1940, 1140));
    // The crosses reach into the right half of the larger plot once the size has lasted.
    EXPECT_TRUE(Waited([this] {
        return RightmostIn(Frame::kHorizontal, kWhite) > 245
               && RightmostIn(Frame::kGround, kWhite) > 450;
    }));
    EXPECT_GT(RightmostIn(Frame::kDial, RGB(0, 153, 255)), 480) << "the dial is drawn anew";
}

TEST_F(GalleryWindow, KeepsItsViewsInTheFolderForStates)
{
    frame.Step(200);
    frame.Rebuild();
    EXPECT_NE(environment.folder.Read("tiltpole/GraphMagnetic_XY.cfg"), "");
    EXPECT_NE(environment.folder.Read("tiltpole/GraphMagnetic_XZ.cfg"), "");
}

TEST(GalleryScale, OpensItLarger)
{
    Frame frame(Turning(1));
    ASSERT_TRUE(frame.Open(1.5));
    CRect client;
    frame.GetClientRect(&client);
    EXPECT_EQ(client.Width(), Frame::kWidth * 3 / 2);
    EXPECT_GT(ScaleOfScreen(), 0.1);
    EXPECT_LE(ScaleOfScreen(), 1.0) << "a unit is a pixel here";
}

} // namespace
} // namespace gallery::test
