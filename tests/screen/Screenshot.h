// SPDX-License-Identifier: MIT
//
// What stands on the screen, read back from the windowing system.
#pragma once

#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTemporaryDir>
#include <QThread>
#include <QtGlobal>

namespace screen::test {

/// The part of the screen that a top-level window without a frame covers, in device pixels.
inline QImage ScreenAt(CWnd& window)
{
    CRect place;
    window.GetWindowRect(&place);
    const QImage all = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    QImage part = all.copy(place.left, place.top, place.Width(), place.Height())
                      .convertToFormat(QImage::Format_RGB32);
    part.setDevicePixelRatio(1);
    return part;
}

/// The picture that the window keeps in memory.
inline QImage PictureOf(CWnd& window)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    EXPECT_TRUE(framework::SaveWindowImage(window, CString(path.toStdString().c_str())));
    return QImage(path).convertToFormat(QImage::Format_RGB32);
}

inline int CountDifferences(const QImage& a, const QImage& b)
{
    if (a.size() != b.size()) return a.width() * a.height() + b.width() * b.height();
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y);
    return count;
}

/// Lets events run until the screen shows what the window keeps, or ten seconds are over. Returns
/// the number of pixels that differ.
inline int SettleOnScreen(CWnd& window)
{
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        QCoreApplication::processEvents();
        const int differences = CountDifferences(ScreenAt(window), PictureOf(window));
        if (differences == 0 || waited.hasExpired(10000)) return differences;
        QThread::msleep(20);
    }
}

inline QRgb ToRgb(COLORREF color)
{
    return qRgb(GetRValue(color), GetGValue(color), GetBValue(color));
}

} // namespace screen::test
