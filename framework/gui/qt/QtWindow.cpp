// SPDX-License-Identifier: MIT
#include "framework/gui/qt/QtWindow.h"

#include "framework/gui/qt/QtPost.h"

#include <QCloseEvent>
#include <QPainter>
#include <QPointer>
#include <QTimerEvent>

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

namespace framework {
namespace {

constexpr int kSettling = 1000; // milliseconds, longer than the toolkit reports sizes it was given

} // namespace

QtWindow::QtWindow(WindowEvents& events, QWidget* parentWidget)
    : m_widget(new QtWidget(events, *this, parentWidget))
{}

QtWindow::~QtWindow()
{
    if (m_widget) m_widget->Leave();
}

void QtWindow::Place(int x, int y, int width, int height)
{
    if (m_widget) m_widget->Place(x, y, width, height);
}

void QtWindow::Resize(int width, int height)
{
    if (m_widget) m_widget->Resize(width, height);
}

void QtWindow::Show(bool visible)
{
    if (m_widget) m_widget->setVisible(visible);
}

std::optional<raster::Point> QtWindow::PlaceInForeignParent() const
{
    return m_widget ? m_widget->PlaceInForeignParent() : std::nullopt;
}

void QtWindow::SetParent(NativeWindow* parent)
{
    if (m_widget) m_widget->MoveInto(parent ? static_cast<QWidget*>(parent->Handle()) : nullptr);
}

void QtWindow::TakeFocus()
{
    const QPointer<QWidget> widget = m_widget; // handlers of the focus may end this window
    if (widget) widget->setFocus();
    if (widget && widget->window()->isVisible()) widget->activateWindow();
}

void QtWindow::SetTitle(const std::wstring& title)
{
    if (m_widget) m_widget->setWindowTitle(QString::fromStdWString(title));
}

void QtWindow::RequestPaint()
{
    if (m_widget) m_widget->update();
}

void QtWindow::StartTimer(std::uintptr_t id, unsigned milliseconds)
{
    if (m_widget) m_widget->StartTimer(id, milliseconds);
}

bool QtWindow::StopTimer(std::uintptr_t id)
{
    return m_widget && m_widget->StopTimer(id);
}

void* QtWindow::Handle()
{
    return static_cast<QWidget*>(m_widget);
}

QtWidget::QtWidget(WindowEvents& events, QtWindow& window, QWidget* parentWidget)
    : QWidget(parentWidget), m_events(&events), m_window(&window), m_ratio(devicePixelRatioF())
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    Post().Add(events, *this);
}

QtWidget::~QtWidget()
{
    Post().Remove(*this);
    if (m_window) m_window->m_widget = nullptr;
    if (WindowEvents* const events = std::exchange(m_events, nullptr)) events->OnNativeGone();
}

// Qt is still using a widget while one of its events is handled, and its parents with it.
void QtWidget::Leave()
{
    Post().Remove(*this);
    m_events = nullptr;
    m_window = nullptr;
    if (Windows().eventsUnderWay > 0)
        deleteLater();
    else
        delete this;
}

int QtWidget::ToDevice(double logical) const
{
    return static_cast<int>(std::lround(logical * devicePixelRatioF()));
}

QPointF QtWidget::ClientCorner() const
{
    const int frame = m_events ? m_events->FrameWidth() : 0;
    return m_corner + QPointF(frame, frame);
}

const QtWidget* QtWidget::Outer() const
{
    return dynamic_cast<const QtWidget*>(parentWidget());
}

// Widgets are placed in whole logical units, windows in device pixels: the widget is the smallest
// one that encloses the window, whose corner lies within the widget's first unit.
void QtWidget::Place(int x, int y, int newWidth, int newHeight)
{
    const double ratio = devicePixelRatioF();
    const QtWidget* const outer = Outer();
    const QPointF at = QPointF(x, y) + (outer ? outer->ClientCorner() : QPointF());
    m_origin = {x, y};
    m_position = {static_cast<int>(std::floor(at.x() / ratio)),
                  static_cast<int>(std::floor(at.y() / ratio))};
    m_corner = at - QPointF(m_position) * ratio;
    Enclose(newWidth, newHeight);
    setGeometry({m_position, m_placed});
}

void QtWidget::Resize(int newWidth, int newHeight)
{
    Enclose(newWidth, newHeight);
    resize(m_placed);
}

// The window stays shown or hidden, whatever the widget goes through.
void QtWidget::MoveInto(QWidget* parentWidget)
{
    m_isMovingHouse = true;
    setParent(parentWidget);
    m_isMovingHouse = false;
}

void QtWidget::Enclose(int newWidth, int newHeight)
{
    const double ratio = devicePixelRatioF();
    m_wanted = {newWidth, newHeight};
    m_placed = {static_cast<int>(std::ceil((m_corner.x() + newWidth) / ratio)),
                static_cast<int>(std::ceil((m_corner.y() + newHeight) / ratio))};
    // A widget larger than its window lets its parent show through there.
    setAttribute(Qt::WA_OpaquePaintEvent, isWindow() || ratio == 1);
    updateGeometry();
}

QSize QtWidget::sizeHint() const
{
    const double ratio = devicePixelRatioF();
    return {static_cast<int>(std::ceil(m_wanted.width() / ratio)),
            static_cast<int>(std::ceil(m_wanted.height() / ratio))};
}

std::optional<raster::Point> QtWidget::PlaceInForeignParent() const
{
    if (!parentWidget() || Outer()) return {};
    const QPointF at = mapToGlobal(QPointF()) * devicePixelRatioF() + m_corner;
    return raster::Point{static_cast<int>(std::lround(at.x())),
                         static_cast<int>(std::lround(at.y()))};
}

void QtWidget::StartTimer(std::uintptr_t id, unsigned milliseconds)
{
    int& timer = m_timers[id]; // first: a timer without a place here could not be stopped
    if (timer != 0) killTimer(timer);
    timer = startTimer(static_cast<int>(std::min(milliseconds, unsigned{INT_MAX})));
}

bool QtWidget::StopTimer(std::uintptr_t id)
{
    const auto known = m_timers.find(id);
    if (known == m_timers.end()) return false;
    killTimer(known->second);
    m_timers.erase(known);
    return true;
}

bool QtWidget::event(QEvent* event)
{
    if (const auto* const posted = dynamic_cast<const PostedEvent*>(event)) {
        Tell([&](WindowEvents& events) {
            events.OnNativePosted(posted->message, posted->wParam, posted->lParam);
        });
        return true;
    }
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::ScreenChangeInternal) FollowScale();
    // Qt gives the focus to widgets that tabs reach; a window that is used gets it in any case.
    if (event->type() == QEvent::WindowActivate && m_events && isWindow() && !focusWidget())
        setFocus(Qt::ActiveWindowFocusReason);
    return handled;
}

// Windows keep their device pixels when the scale changes, unless a layout decides on their size.
void QtWidget::FollowScale()
{
    const double ratio = devicePixelRatioF();
    if (std::exchange(m_ratio, ratio) == ratio || !m_events) return;
    if (!isWindow() && !Outer()) m_corner = {}; // the widgets around decide on its place
    if (size() != m_placed)
        Tell([&](WindowEvents& events) {
            events.OnNativeResize(ToDevice(width()), ToDevice(height()));
        });
    else if (isWindow())
        ResizeForScale();
    else if (Outer())
        Place(m_origin.x(), m_origin.y(), m_wanted.width(), m_wanted.height());
    else
        Resize(m_wanted.width(), m_wanted.height());
    if (!isWindow() && !Outer()) ReportPlace();
    update();
}

// A move to the other screen that is under way sets the size from before once more.
void QtWidget::ResizeForScale()
{
    m_outdated = m_placed;
    m_settling.start(kSettling, this);
    Resize(m_wanted.width(), m_wanted.height());
}

void QtWidget::paintEvent(QPaintEvent*)
{
    Tell([](WindowEvents& events) { events.OnNativePaint(); });
    if (!m_events) return;
    const double ratio = devicePixelRatioF();
    QPainter painter(this);
    if (isWindow() && ratio != 1) painter.fillRect(rect(), Qt::black);
    painter.scale(1 / ratio, 1 / ratio);
    painter.translate(m_corner);
    for (const FramePiece& piece : m_events->Frame())
        painter.fillRect(piece.box.left, piece.box.top, piece.box.right - piece.box.left,
                         piece.box.bottom - piece.box.top, QColor::fromRgb(piece.color));

    const raster::Canvas picture = m_events->ClientPicture();
    const int pictureWidth = picture.clip.right;
    const int pictureHeight = picture.clip.bottom;
    if (pictureWidth <= 0 || pictureHeight <= 0) return;
    const QImage image(reinterpret_cast<const uchar*>(picture.pixels), pictureWidth, pictureHeight,
                       static_cast<qsizetype>(picture.stride) * 4, QImage::Format_RGB32);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(m_events->FrameWidth(), m_events->FrameWidth(), image);
}

void QtWidget::resizeEvent(QResizeEvent*)
{
    // The size that was set may arrive much later, when the widget is first shown.
    if (size() == m_placed) return;
    if (size() == m_outdated) {
        m_restoring.start(0, this);
        return;
    }
    m_placed = {};
    m_corner = {};
    Tell([&](WindowEvents& events) {
        events.OnNativeResize(ToDevice(width()), ToDevice(height()));
    });
}

void QtWidget::moveEvent(QMoveEvent*)
{
    const QPoint position = geometry().topLeft();
    if (position == m_position) return;
    m_position = position;
    ReportPlace();
}

// Only a place that is another in device pixels is news to the window.
void QtWidget::ReportPlace()
{
    const QtWidget* const outer = Outer();
    const QPointF at = QPointF(m_position) * devicePixelRatioF() + m_corner
                       - (outer ? outer->ClientCorner() : QPointF());
    m_origin = at.toPoint();
    Tell([&](WindowEvents& events) { events.OnNativeMove(m_origin.x(), m_origin.y()); });
}

void QtWidget::showEvent(QShowEvent*)
{
    FollowScale();
    Tell([](WindowEvents& events) { events.OnNativeShown(true); });
}

// Also sent when a parent is hidden, which leaves the widget's own state.
void QtWidget::hideEvent(QHideEvent*)
{
    if (isHidden() && !m_isMovingHouse)
        Tell([](WindowEvents& events) { events.OnNativeShown(false); });
}

// The window decides whether to close.
void QtWidget::closeEvent(QCloseEvent* event)
{
    const QPointer<QtWidget> self(this);
    Tell([](WindowEvents& events) { events.OnNativeClose(); });
    if (self) event->setAccepted(!m_events || isHidden());
}

void QtWidget::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_settling.timerId()) {
        m_settling.stop();
        m_outdated = {};
        return;
    }
    if (event->timerId() == m_restoring.timerId()) {
        m_restoring.stop();
        if (!m_placed.isNull()) resize(m_placed);
        return;
    }
    for (const auto& [id, timer] : m_timers) {
        if (timer != event->timerId()) continue;
        Tell([ticked = id](WindowEvents& events) { events.OnNativeTimer(ticked); });
        return;
    }
}

} // namespace framework
