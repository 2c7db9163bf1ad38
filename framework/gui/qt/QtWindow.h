// A native window on Qt: a widget that shows the picture of its WindowEvents pixel by pixel.
#pragma once

#include "framework/gui/detail/Toolkit.h"

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
    void Present() override;
    void StartTimer(std::uintptr_t id, unsigned milliseconds) override;
    void StopTimer(std::uintptr_t id) override;
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

    WindowEvents& m_events;
    std::map<std::uintptr_t, int> m_timers; // ours to the toolkit's
    bool m_placing = false;
};

} // namespace framework
