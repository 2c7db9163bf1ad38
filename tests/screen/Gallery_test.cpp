// SPDX-License-Identifier: MIT
#include "tests/screen/Screenshot.h"

#include "apps/gallery/Frame.h"

namespace screen::test {
namespace {

bool Holds(const QImage& picture, const QRect& part, COLORREF color)
{
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (picture.pixel(x, y) == ToRgb(color)) return true;
    return false;
}

// The window as a user sees it, in the middle of the recording and at its end.
TEST(Gallery, ShowsThePoleOnTheScreen)
{
    const QTemporaryDir beside;
    framework::SetModulePath(
        CString(beside.filePath(QStringLiteral("gallery")).toStdString().c_str()));
    gallery::Frame frame(gallery::ReadReplay(TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv"));
    ASSERT_TRUE(frame.Open());
    frame.KillTimer(1);
    for (int samples = 0; frame.Step(1) && samples < 400;)
        ++samples;
    ASSERT_EQ(SettleOnScreen(frame), 0) << "in the middle";
    const QImage early = ScreenAt(frame);
    while (frame.Step(10))
        ;
    ASSERT_EQ(SettleOnScreen(frame), 0) << "at the end";
    const QImage late = ScreenAt(frame);
    EXPECT_GT(CountDifferences(early, late), 1000) << "needles moved, plots filled";
    const QByteArray kept = qgetenv("TILTPOLE_SCREENSHOT");
    if (!kept.isEmpty()) {
        EXPECT_TRUE(late.save(QString::fromLocal8Bit(kept)));
    }

    EXPECT_TRUE(Holds(late, {10, 10, 260, 260}, RGB(255, 0, 0))) << "the dial's needle";
    EXPECT_TRUE(Holds(late, {280, 10, 110, 260}, RGB(255, 0, 0))) << "the left pointer";
    EXPECT_TRUE(Holds(late, {400, 10, 110, 260}, RGB(255, 0, 0))) << "the right pointer";
    EXPECT_EQ(late.pixel(260, 275), ToRgb(RGB(192, 192, 192))) << "the window between controls";
    EXPECT_TRUE(Holds(late, {13, 283, 239, 200}, RGB(255, 255, 255))) << "crosses, horizontal turn";
    EXPECT_TRUE(Holds(late, {268, 283, 239, 200}, RGB(0, 255, 0))) << "crosses, vertical turn";
    EXPECT_TRUE(Holds(late, {521, 11, 448, 480}, RGB(255, 0, 0))) << "the current observation";
    EXPECT_TRUE(Holds(late, {521, 11, 448, 480}, RGB(255, 255, 255))) << "observations";
    framework::SetModulePath(CString());
}

} // namespace
} // namespace screen::test
