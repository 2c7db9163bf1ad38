// SPDX-License-Identifier: MIT
#include "framework/gui/qt/QtWindow.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimerEvent>

#include <cmath>
#include <utility>

namespace framework {

QtWindow::QtWindow(WindowEvents& events, QWidget* parentWidget)
    : QWidget(parentWidget), m_events(events)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
}

QtWindow::~QtWindow()
{
    // The widgets of child windows belong to those windows, not to this widget.
    const QObjectList own = children();
    for (QObject* child : own)
        if (auto* widget = dynamic_cast<QtWindow*>(child)) widget->setParent(nullptr);
}

int QtWindow::ToDevice(double logical) const
{
    return static_cast<int>(std::lround(logical * devicePixelRatioF()));
}

QPointF QtWindow::ClientCorner() const
{
    return m_corner + QPointF(m_events.FrameWidth(), m_events.FrameWidth());
}

// Widgets are placed in whole logical units, windows in device pixels: the widget is the smallest
// one that encloses the window, whose corner lies within the widget's first unit.
void QtWindow::Place(int x, int y, int newWidth, int newHeight)
{
    const double ratio = devicePixelRatioF();
    const auto* outer = dynamic_cast<const QtWindow*>(parentWidget());
    const QPointF at = QPointF(x, y) + (outer ? outer->ClientCorner() : QPointF());
    const int left = static_cast<int>(std::floor(at.x() / ratio));
    const int top = static_cast<int>(std::floor(at.y() / ratio));
    m_corner = at - QPointF(left, top) * ratio;
    m_placed = {static_cast<int>(std::ceil((m_corner.x() + newWidth) / ratio)),
                static_cast<int>(std::ceil((m_corner.y() + newHeight) / ratio))};
    // A widget larger than its window lets what is behind it show through.
    setAttribute(Qt::WA_OpaquePaintEvent, isWindow() || ratio == 1);
    setGeometry(left, top, m_placed.width(), m_placed.height());
}

void QtWindow::Show(bool visible)
{
    setVisible(visible);
}

void QtWindow::SetTitle(const std::wstring& title)
{
    setWindowTitle(QString::fromStdWString(title));
}

void QtWindow::RequestPaint()
{
    update();
}

void QtWindow::StartTimer(std::uintptr_t id, unsigned milliseconds)
{
    StopTimer(id);
    m_timers[id] = startTimer(static_cast<int>(milliseconds));
}

bool QtWindow::StopTimer(std::uintptr_t id)
{
    const auto known = m_timers.find(id);
    if (known == m_timers.end()) return false;
    killTimer(known->second);
    m_timers.erase(known);
    return true;
}

void* QtWindow::Handle()
{
    return static_cast<QWidget*>(this);
}

void QtWindow::paintEvent(QPaintEvent*)
{
    m_events.OnNativePaint();

    const double ratio = devicePixelRatioF();
    QPainter painter(this);
    if (isWindow() && ratio != 1) painter.fillRect(rect(), Qt::black);
    painter.scale(1 / ratio, 1 / ratio);
    painter.translate(m_corner);
    for (const FramePiece& piece : m_events.Frame())
        painter.fillRect(piece.box.left, piece.box.top, piece.box.right - piece.box.left,
                         piece.box.bottom - piece.box.top, QColor::fromRgb(piece.color));

    const raster::Canvas picture = m_events.ClientPicture();
    const int pictureWidth = picture.clip.right;
    const int pictureHeight = picture.clip.bottom;
    if (pictureWidth <= 0 || pictureHeight <= 0) return;
    const QImage image(reinterpret_cast<const uchar*>(picture.pixels), pictureWidth, pictureHeight,
                       static_cast<qsizetype>(picture.stride) * 4, QImage::Format_RGB32);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(m_events.FrameWidth(), m_events.FrameWidth(), image);
}

void QtWindow::resizeEvent(QResizeEvent*)
{
    // The size set by Place may arrive much later, when the widget is first shown.
    if (size() == m_placed) return;
    m_placed = {};
    m_corner = {};
    m_events.OnNativeResize(ToDevice(width()), ToDevice(height()));
}

// The window decides whether to close. Deferred, because closing deletes this widget.
void QtWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    if (m_closing == 0) m_closing = startTimer(0);
}

void QtWindow::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_closing) {
        killTimer(std::exchange(m_closing, 0));
        m_events.OnNativeClose();
        return;
    }
    for (const auto& [id, timer] : m_timers) {
        if (timer != event->timerId()) continue;
        m_events.OnNativeTimer(id);
        return;
    }
}

void QtWindow::ReportMouse(WindowEvents::Mouse what, const QMouseEvent& event)
{
    const QPointF at = event.position() * devicePixelRatioF() - m_corner;
    m_events.OnNativeMouse(what, static_cast<int>(std::floor(at.x())),
                           static_cast<int>(std::floor(at.y())));
}

void QtWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) ReportMouse(WindowEvents::Mouse::Down, *event);
}

void QtWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) ReportMouse(WindowEvents::Mouse::Up, *event);
}

void QtWindow::mouseMoveEvent(QMouseEvent* event)
{
    ReportMouse(WindowEvents::Mouse::Move, *event);
}

} // namespace framework
