// SPDX-License-Identifier: MIT
//
// A native window on Qt: a widget that shows the picture of its WindowEvents pixel by pixel.
#pragma once

#include "framework/gui/detail/Toolkit.h"

#include <QPointF>
#include <QSize>
#include <QWidget>

#include <map>

namespace framework {

class QtWindow : public QWidget, public NativeWindow
{
public:
    QtWindow(WindowEvents& events, QWidget* parentWidget);
    ~QtWindow() override;

    void Place(int x, int y, int newWidth, int newHeight) override;
    void Show(bool visible) override;
    void SetTitle(const std::wstring& title) override;
    void RequestPaint() override;
    void StartTimer(std::uintptr_t id, unsigned milliseconds) override;
    bool StopTimer(std::uintptr_t id) override;
    void* Handle() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void ReportMouse(WindowEvents::Mouse what, const QMouseEvent& event);
    int ToDevice(double logical) const;
    QPointF ClientCorner() const; // inside the widget, device pixels

    WindowEvents& m_events;
    std::map<std::uintptr_t, int> m_timers; // our id to the toolkit's
    int m_closing = 0;                      // the toolkit's timer between a close event and its end
    QSize m_placed;                         // the size we set, until it is changed from outside
    QPointF m_corner;                       // of the window inside the widget, device pixels
};

} // namespace framework
