// SPDX-License-Identifier: MIT
//
// Qt's events of mouse, keyboard and focus, as those of a window.
#include "framework/gui/Messages.h"
#include "framework/gui/qt/QtWindow.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace framework {
namespace {

using Kind = MouseEvent::Kind;

unsigned Held(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers)
{
    unsigned held = 0;
    if (buttons & Qt::LeftButton) held |= MK_LBUTTON;
    if (buttons & Qt::RightButton) held |= MK_RBUTTON;
    if (buttons & Qt::MiddleButton) held |= MK_MBUTTON;
    if (modifiers & Qt::ShiftModifier) held |= MK_SHIFT;
    if (modifiers & Qt::ControlModifier) held |= MK_CONTROL;
    return held;
}

std::optional<MouseEvent::Button> ButtonOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return MouseEvent::Button::Left;
    case Qt::RightButton:
        return MouseEvent::Button::Right;
    case Qt::MiddleButton:
        return MouseEvent::Button::Middle;
    default:
        return {};
    }
}

struct KeyPair
{
    Qt::Key theirs;
    unsigned ours;
};

constexpr KeyPair kKeys[]{
    KeyPair{Qt::Key_Backspace, VK_BACK      },
    KeyPair{Qt::Key_Tab,       VK_TAB       },
    KeyPair{Qt::Key_Backtab,   VK_TAB       },
    KeyPair{Qt::Key_Return,    VK_RETURN    },
    KeyPair{Qt::Key_Enter,     VK_RETURN    },
    KeyPair{Qt::Key_Shift,     VK_SHIFT     },
    KeyPair{Qt::Key_Control,   VK_CONTROL   },
    KeyPair{Qt::Key_Alt,       VK_MENU      },
    KeyPair{Qt::Key_Pause,     VK_PAUSE     },
    KeyPair{Qt::Key_CapsLock,  VK_CAPITAL   },
    KeyPair{Qt::Key_Escape,    VK_ESCAPE    },
    KeyPair{Qt::Key_Space,     VK_SPACE     },
    KeyPair{Qt::Key_PageUp,    VK_PRIOR     },
    KeyPair{Qt::Key_PageDown,  VK_NEXT      },
    KeyPair{Qt::Key_End,       VK_END       },
    KeyPair{Qt::Key_Home,      VK_HOME      },
    KeyPair{Qt::Key_Left,      VK_LEFT      },
    KeyPair{Qt::Key_Up,        VK_UP        },
    KeyPair{Qt::Key_Right,     VK_RIGHT     },
    KeyPair{Qt::Key_Down,      VK_DOWN      },
    KeyPair{Qt::Key_Insert,    VK_INSERT    },
    KeyPair{Qt::Key_Delete,    VK_DELETE    },
    KeyPair{Qt::Key_Plus,      VK_OEM_PLUS  },
    KeyPair{Qt::Key_Equal,     VK_OEM_PLUS  },
    KeyPair{Qt::Key_Comma,     VK_OEM_COMMA },
    KeyPair{Qt::Key_Minus,     VK_OEM_MINUS },
    KeyPair{Qt::Key_Period,    VK_OEM_PERIOD},
};

constexpr KeyPair kKeysOfNumberPad[]{
    KeyPair{Qt::Key_Asterisk, VK_MULTIPLY},
    KeyPair{Qt::Key_Plus,     VK_ADD     },
    KeyPair{Qt::Key_Minus,    VK_SUBTRACT},
    KeyPair{Qt::Key_Period,   VK_DECIMAL },
    KeyPair{Qt::Key_Comma,    VK_DECIMAL },
    KeyPair{Qt::Key_Slash,    VK_DIVIDE  },
};

template <class Table>
unsigned Find(const Table& table, int key)
{
    const auto known = std::find_if(std::begin(table), std::end(table),
                                    [key](const KeyPair& pair) { return pair.theirs == key; });
    return known == std::end(table) ? 0 : known->ours;
}

// The number of a key; 0 for one without.
unsigned KeyOf(const QKeyEvent& event)
{
    const int key = event.key();
    const bool isOfNumberPad = (event.modifiers() & Qt::KeypadModifier) != 0;
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return static_cast<unsigned>(key) + (isOfNumberPad ? VK_NUMPAD0 - Qt::Key_0 : 0U);
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<unsigned>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return VK_F1 + static_cast<unsigned>(key - Qt::Key_F1);
    if (isOfNumberPad)
        if (const unsigned found = Find(kKeysOfNumberPad, key)) return found;
    return Find(kKeys, key);
}

// Of the keys that a keyboard has twice, on the number pad and beside it: those beside it, but Enter
// and the slash of the number pad.
bool IsExtended(const QKeyEvent& event)
{
    const bool isOfNumberPad = (event.modifiers() & Qt::KeypadModifier) != 0;
    switch (event.key()) {
    case Qt::Key_Enter:
    case Qt::Key_NumLock:
        return true;
    case Qt::Key_Slash:
        return isOfNumberPad;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_End:
    case Qt::Key_Home:
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_Insert:
    case Qt::Key_Delete:
        return !isOfNumberPad;
    default:
        return false;
    }
}

} // namespace

raster::Point QtWidget::InWindow(QPointF position) const
{
    const QPointF at = position * devicePixelRatioF() - m_corner;
    return {static_cast<int>(std::floor(at.x())), static_cast<int>(std::floor(at.y()))};
}

void QtWidget::ReportMouse(Kind kind, QMouseEvent& event)
{
    MouseEvent told;
    told.kind = kind;
    if (kind != Kind::Move) {
        const auto button = ButtonOf(event.button());
        if (!button) {
            event.ignore();
            return;
        }
        told.button = *button;
    }
    told.held = Held(event.buttons(), event.modifiers());
    told.at = InWindow(event.position());
    bool isTaken = false;
    const QPointer<QtWidget> self(this);
    Tell([&](WindowEvents& events) { isTaken = events.OnNativeMouse(told); });
    if (self) Answer(event, isTaken);
}

// Surrounding windows of ours have had their turn.
void QtWidget::Answer(QEvent& event, bool isTaken)
{
    event.setAccepted(isTaken || Outer() || !parentWidget());
}

void QtWidget::mousePressEvent(QMouseEvent* event)
{
    ReportMouse(Kind::Down, *event);
}

void QtWidget::mouseReleaseEvent(QMouseEvent* event)
{
    ReportMouse(Kind::Up, *event);
}

void QtWidget::mouseMoveEvent(QMouseEvent* event)
{
    ReportMouse(Kind::Move, *event);
}

void QtWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    ReportMouse(Kind::DoubleClick, *event);
}

void QtWidget::wheelEvent(QWheelEvent* event)
{
    MouseEvent told;
    told.kind = Kind::Wheel;
    told.turned = event->angleDelta().y();
    told.held = Held(event->buttons(), event->modifiers());
    told.at = InWindow(event->position());
    bool isTaken = false;
    const QPointer<QtWidget> self(this);
    if (told.turned != 0) Tell([&](WindowEvents& events) { isTaken = events.OnNativeMouse(told); });
    if (self) Answer(*event, isTaken);
}

void QtWidget::leaveEvent(QEvent*)
{
    MouseEvent told;
    told.kind = Kind::Leave;
    Tell([&](WindowEvents& events) { events.OnNativeMouse(told); });
}

void QtWidget::ReportKey(bool isDown, QKeyEvent& event)
{
    KeyEvent told;
    told.isDown = isDown;
    told.isRepeat = event.isAutoRepeat();
    told.isExtended = IsExtended(event);
    told.isWithAlt = (event.modifiers() & Qt::AltModifier) != 0;
    told.key = KeyOf(event);
    if (isDown && told.key != VK_DELETE) told.typed = event.text().toStdWString();
    bool isAnswered = false;
    const QPointer<QtWidget> self(this);
    // A key that is held goes down again and again, but up only once.
    if (isDown || !told.isRepeat)
        Tell([&](WindowEvents& events) { isAnswered = events.OnNativeKey(told); });
    if (self) Answer(event, isAnswered);
}

void QtWidget::keyPressEvent(QKeyEvent* event)
{
    ReportKey(true, *event);
}

void QtWidget::keyReleaseEvent(QKeyEvent* event)
{
    ReportKey(false, *event);
}

void QtWidget::focusInEvent(QFocusEvent*)
{
    Tell([](WindowEvents& events) { events.OnNativeFocus(true); });
}

void QtWidget::focusOutEvent(QFocusEvent*)
{
    Tell([](WindowEvents& events) { events.OnNativeFocus(false); });
}

} // namespace framework
