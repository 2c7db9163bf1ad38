// SPDX-License-Identifier: MIT
//
// A native window on Qt: a widget that shows the picture of its WindowEvents pixel by pixel.
//
// Either side may end first. A QtWindow that ends takes its widget along, after the event that is
// under way; a widget that Qt destroys, with its parent for example, reports so and its QtWindow
// goes on without one. A handler may even destroy the widget in the middle of its event.
#pragma once

#include "framework/gui/detail/Toolkit.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <QBasicTimer>
#include <QPointF>
#include <QSize>
#include <QWidget>

#include <map>

namespace framework {

class QtWidget;

// Counts the events that windows are handling, one inside the other.
class EventScope
{
public:
    EventScope() { ++Windows().eventsUnderWay; }
    EventScope(const EventScope&) = delete;
    EventScope& operator=(const EventScope&) = delete;
    ~EventScope() { --Windows().eventsUnderWay; }
};

class QtWindow : public NativeWindow
{
public:
    QtWindow(WindowEvents& events, QWidget* parentWidget);
    QtWindow(const QtWindow&) = delete;
    QtWindow& operator=(const QtWindow&) = delete;
    ~QtWindow() override;

    void Place(int x, int y, int width, int height) override;
    void Resize(int width, int height) override;
    void Show(bool visible) override;
    std::optional<raster::Point> PlaceInForeignParent() const override;
    void SetParent(NativeWindow* parent) override;
    void TakeFocus() override;
    void SetTitle(const std::wstring& title) override;
    void RequestPaint() override;
    void StartTimer(std::uintptr_t id, unsigned milliseconds) override;
    bool StopTimer(std::uintptr_t id) override;
    void* Handle() override;

private:
    friend class QtWidget;
    QtWidget* m_widget; // null once Qt has destroyed it
};

class QtWidget : public QWidget
{
public:
    QtWidget(WindowEvents& events, QtWindow& window, QWidget* parentWidget);
    ~QtWidget() override;

    /// Cuts the tie to the window, which is ending, and destroys the widget as soon as that is
    /// safe.
    void Leave();

    void Place(int x, int y, int newWidth, int newHeight);
    void Resize(int newWidth, int newHeight);
    void MoveInto(QWidget* parentWidget);
    void StartTimer(std::uintptr_t id, unsigned milliseconds);
    bool StopTimer(std::uintptr_t id);
    std::optional<raster::Point> PlaceInForeignParent() const;

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    template <class Report>
    void Tell(Report report)
    {
        if (!m_events) return;
        const EventScope scope;
        report(*m_events);
    }
    void ReportMouse(MouseEvent::Kind kind, QMouseEvent& event);
    void ReportKey(bool isDown, QKeyEvent& event);
    void Answer(QEvent& event, bool isTaken);
    raster::Point InWindow(QPointF position) const;
    void Enclose(int newWidth, int newHeight);
    void FollowScale();
    void ResizeForScale();
    void ReportPlace();
    int ToDevice(double logical) const;
    QPointF ClientCorner() const; // inside the widget, device pixels
    const QtWidget* Outer() const;

    WindowEvents* m_events; // null once the window has ended
    QtWindow* m_window;
    std::map<std::uintptr_t, int> m_timers; // our id to the toolkit's
    bool m_isMovingHouse = false;           // into another parent
    QPoint m_origin;                        // as the window knows it [device pixels]
    QPoint m_position;                      // the same, of the widget [logical units]
    QSize m_placed;          // the size we set [logical units], until it is changed from outside
    QSize m_wanted;          // the size the window was given last [device pixels]
    QSize m_outdated;        // the same from before the scale changed, for a moment
    QBasicTimer m_settling;  // ends m_outdated
    QBasicTimer m_restoring; // sets m_placed again
    QPointF m_corner;        // of the window inside the widget [device pixels]
    double m_ratio;          // device pixels to a logical unit, as last seen
};

} // namespace framework
