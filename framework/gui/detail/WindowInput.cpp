// SPDX-License-Identifier: MIT
//
// Mouse, keyboard and focus: which window gets the message.
#include "framework/gui/MessageMap.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <array>
#include <memory>
#include <utility>

namespace framework {
namespace {

using Kind = MouseEvent::Kind;

// Statics let the mouse through unless they notify.
bool IsTransparent(const WindowRecord& window)
{
    return window.IsStatic() && !(window.style & SS_NOTIFY);
}

// The window at a point of `window`: itself, one of its children, or null. Disabled windows and
// those that let the mouse through leave it to their parent.
WindowRecord* Under(WindowRecord& window, raster::Point at)
{
    if (!(window.style & WS_VISIBLE) || (window.style & WS_DISABLED)) return nullptr;
    if (at.x < 0 || at.y < 0 || at.x >= window.width || at.y >= window.height) return nullptr;
    const int frame = window.FrameWidth();
    const raster::Point client{at.x - frame, at.y - frame};
    if (client.x >= 0 && client.y >= 0 && client.x < window.ClientWidth()
        && client.y < window.ClientHeight()) {
        for (auto child = window.children.rbegin(); child != window.children.rend(); ++child) {
            const POINT origin = (*child)->origin;
            if (WindowRecord* const found =
                    Under(**child, {client.x - origin.x, client.y - origin.y}))
                return found;
        }
    }
    return IsTransparent(window) ? nullptr : &window;
}

UINT MessageOf(const MouseEvent& event, const WindowRecord& window)
{
    if (event.kind == Kind::Move) return WM_MOUSEMOVE;
    constexpr std::array<std::array<UINT, 3>, 3> messages{
        {{WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK},
         {WM_RBUTTONDOWN, WM_RBUTTONUP, WM_RBUTTONDBLCLK},
         {WM_MBUTTONDOWN, WM_MBUTTONUP, WM_MBUTTONDBLCLK}}
    };
    const auto& [down, up, twice] = messages.at(static_cast<std::size_t>(event.button));
    if (event.kind == Kind::Up) return up;
    const bool knowsTwice = (window.windowClass->style & CS_DBLCLKS) != 0;
    return event.kind == Kind::DoubleClick && knowsTwice ? twice : down;
}

bool IsOverClient(const WindowRecord& window, POINT onScreen)
{
    const POINT corner = window.ClientOnScreen();
    const int x = onScreen.x - corner.x;
    const int y = onScreen.y - corner.y;
    return x >= 0 && y >= 0 && x < window.ClientWidth() && y < window.ClientHeight();
}

// The pointer is over the client area of another window, or of none of ours.
void TellWhoIsLeft(const WindowRecord* entered)
{
    WindowRecord* const watched = Windows().watched;
    if (!watched || watched == entered) return;
    Windows().watched = nullptr;
    watched->Send(WM_MOUSELEAVE, 0, 0);
}

// False where all windows from `target` outwards leave the wheel open.
bool SendWheel(WindowRecord& target, const MouseEvent& event, POINT onScreen)
{
    WindowRecord* outermost = &target;
    while (outermost->parent)
        outermost = outermost->parent;
    const std::shared_ptr<WindowRecord> last = outermost->shared_from_this();
    last->isLeftOpen = false;
    target.Send(WM_MOUSEWHEEL, MAKEWPARAM(static_cast<int>(event.held), event.turned),
                PackWords(onScreen.x, onScreen.y));
    return !last->isLeftOpen;
}

} // namespace

bool WindowRecord::OnNativeMouse(const MouseEvent& event)
{
    const std::shared_ptr<WindowRecord> kept = shared_from_this();
    if (event.kind == Kind::Leave) {
        if (Windows().watched == this) TellWhoIsLeft(nullptr);
        return true;
    }
    WindowRecord* top = this;
    raster::Point at = event.at;
    while (top->parent) {
        const int frame = top->parent->FrameWidth();
        at = {at.x + top->origin.x + frame, at.y + top->origin.y + frame};
        top = top->parent;
    }
    WindowRecord* const under = Under(*top, at);
    WindowRecord* const found = Windows().capture ? Windows().capture : under;
    const std::shared_ptr<WindowRecord> target = found ? found->shared_from_this() : nullptr;
    const POINT corner = CornerOnScreen();
    const POINT onScreen{corner.x + event.at.x, corner.y + event.at.y};
    TellWhoIsLeft(under && IsOverClient(*under, onScreen) ? under : nullptr);
    if (!target || target->isGone) return false;

    const bool isCaptured = Windows().capture == target.get();
    if (!isCaptured && !IsOverClient(*target, onScreen)) return true; // on the frame
    const POINT client = target->ClientOnScreen();
    const int x = onScreen.x - client.x;
    const int y = onScreen.y - client.y;
    if (event.kind == Kind::Wheel) return SendWheel(*target, event, onScreen);
    target->Send(MessageOf(event, *target), event.held, PackWords(x, y));
    return true;
}

bool WindowRecord::OnNativeKey(const KeyEvent& event)
{
    if (style & WS_DISABLED) return false;
    const std::shared_ptr<WindowRecord> kept = shared_from_this();
    DWORD words = 1; // how often
    if (event.isExtended) words |= 0x01000000;
    if (event.isWithAlt) words |= 0x20000000;
    if (event.isRepeat || !event.isDown) words |= 0x40000000;
    if (!event.isDown) words |= 0x80000000;
    bool isAnswered = false;
    const auto send = [&](UINT message, UINT value) {
        isLeftOpen = false;
        Send(message, value, static_cast<LPARAM>(words));
        isAnswered = isAnswered || !isLeftOpen;
    };
    const UINT down = event.isWithAlt ? WM_SYSKEYDOWN : WM_KEYDOWN;
    const UINT up = event.isWithAlt ? WM_SYSKEYUP : WM_KEYUP;
    if (event.key != 0) send(event.isDown ? down : up, event.key);
    for (const wchar_t character : event.typed)
        if (!isGone) send(event.isWithAlt ? WM_SYSCHAR : WM_CHAR, static_cast<UINT>(character));
    return isAnswered;
}

void WindowRecord::OnNativeFocus(bool has)
{
    if (has)
        MoveFocus(this);
    else if (Windows().focus == this)
        MoveFocus(nullptr);
}

LRESULT WindowRecord::AnswerInput(UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto notify = [this](UINT code) {
        if (!IsStatic() || !(style & SS_NOTIFY) || !parent) return;
        parent->Send(WM_COMMAND, MAKEWPARAM(static_cast<int>(id), static_cast<int>(code)),
                     reinterpret_cast<LPARAM>(static_cast<HWND>(this)));
    };
    // A handler that answers a key may move or hide its window, with messages of their own.
    const bool isKey = message >= WM_KEYDOWN && message <= WM_SYSCHAR;
    const bool isPassedOn = isLeftOpen;
    if (isKey || message == WM_MOUSEWHEEL) isLeftOpen = true;
    switch (message) {
    case WM_LBUTTONDOWN:
        notify(STN_CLICKED);
        return 0;
    case WM_LBUTTONDBLCLK:
        notify(STN_DBLCLK);
        return 0;
    case WM_ENABLE:
        notify(wParam ? STN_ENABLE : STN_DISABLE);
        return 0;
    case WM_MOUSEWHEEL: // once, also where the member that leaves it open has asked for the default
        return parent && !isPassedOn ? parent->Send(message, wParam, lParam) : 0;
    default:
        return 0;
    }
}

void Forget(const WindowRecord& window)
{
    WindowRegistry& all = Windows();
    for (WindowRecord** role : {&all.focus, &all.capture, &all.watched})
        if (*role == &window) *role = nullptr;
    for (const std::shared_ptr<WindowRecord>& other : all.windows)
        for (WindowRecord** tie : {&other->owner, &other->ownedBy})
            if (*tie == &window) *tie = nullptr;
}

void MoveFocus(WindowRecord* next)
{
    WindowRecord* const previous = std::exchange(Windows().focus, next);
    if (previous == next) return;
    const std::shared_ptr<WindowRecord> before = previous ? previous->shared_from_this() : nullptr;
    const std::shared_ptr<WindowRecord> after = next ? next->shared_from_this() : nullptr;
    if (before) before->Send(WM_KILLFOCUS, reinterpret_cast<WPARAM>(next), 0);
    // The handler may have moved it on, or destroyed either.
    if (!after || after->isGone || Windows().focus != next) return;
    const bool isThere = before && !before->isGone;
    after->Send(WM_SETFOCUS, reinterpret_cast<WPARAM>(isThere ? previous : nullptr), 0);
}

void GiveFocus(WindowRecord& next)
{
    const std::shared_ptr<WindowRecord> kept = next.shared_from_this();
    MoveFocus(&next);
    if (Windows().focus == &next && next.native) next.native->TakeFocus();
}

void LeaveFocus(const WindowRecord& window)
{
    if (!Windows().focus || !Windows().focus->IsInside(window)) return;
    WindowRecord* next = window.parent;
    while (next && next->isEnding)
        next = next->parent;
    if (next) GiveFocus(*next);
}

void MoveCapture(WindowRecord* next)
{
    WindowRecord* const previous = std::exchange(Windows().capture, next);
    if (previous && previous != next)
        previous->Send(WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(next));
}

} // namespace framework
