// SPDX-License-Identifier: MIT
/// @file
/// Message maps: which member function of a class handles which window message.
///
///     class CDial : public CStatic
///     {
///         afx_msg void OnPaint();
///         afx_msg void OnReset();
///         DECLARE_MESSAGE_MAP()
///     };
///
///     BEGIN_MESSAGE_MAP(CDial, CStatic)
///     ON_WM_PAINT()
///     ON_COMMAND(IDC_RESET, &CDial::OnReset)
///     END_MESSAGE_MAP()
///
/// Where an entry names a member function, OnReset is as good as &CDial::OnReset.
#pragma once

#include "framework/gui/Types.h"

#include <bit>
#include <utility>
#include <vector>

class CWnd;

/// Handles a message if the map has an entry for it; `result` is then the message's result. Returns
/// FALSE without an entry, framework::kLeftOpen where the member leaves the rest to the default.
using AFX_PMSG = BOOL (*)(CWnd& window, UINT message, WPARAM wParam, LPARAM lParam,
                          LRESULT& result);

/// One entry of a message map: the message, and of a command the notification and the ids.
struct AFX_MSGMAP_ENTRY
{
    UINT nMessage; ///< 0 marks the end of the list
    UINT nCode;    ///< @{ of WM_COMMAND: the notification, and the ids from nID to nLastID
    UINT nID;
    UINT nLastID; ///< @}
};

/// The message map of a class, linked to that of its base class.
struct AFX_MSGMAP
{
    const AFX_MSGMAP* (*pfnGetBaseMap)(); ///< null for the map of CWnd
    AFX_PMSG pfnHandle;
    const AFX_MSGMAP_ENTRY* lpEntries; ///< in their order; empty before the first message
};

namespace framework {

/// The member was called, and the message is also handled by default.
inline constexpr BOOL kLeftOpen = 2;

/// Lists the entries of a message map.
class EntryList
{
public:
    static constexpr UINT kRequest = 0xFFFFFFFF; ///< no message: adds every entry to the list

    EntryList() : m_entries(1) {}
    bool IsListed() const { return m_isListed; }
    void SetListed() { m_isListed = true; }
    void Add(const AFX_MSGMAP_ENTRY& entry) { m_entries.insert(m_entries.end() - 1, entry); }
    const AFX_MSGMAP_ENTRY* Data() const { return m_entries.data(); }

private:
    std::vector<AFX_MSGMAP_ENTRY> m_entries;
    bool m_isListed = false;
};

/// Whether a message is that of an entry; a request for the list adds the entry to it.
inline bool IsFor(const AFX_MSGMAP_ENTRY& entry, UINT message, WPARAM wParam, LPARAM lParam)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a message carries pointers as numbers
    if (message == EntryList::kRequest) reinterpret_cast<EntryList*>(lParam)->Add(entry);
    if (message != entry.nMessage) return false;
    if (entry.nMessage != WM_COMMAND) return true;
    return HIWORD(wParam) == entry.nCode && LOWORD(wParam) >= entry.nID
           && LOWORD(wParam) <= entry.nLastID;
}

} // namespace framework

#define afx_msg

#define DECLARE_MESSAGE_MAP()                                                                      \
protected:                                                                                         \
    static const AFX_MSGMAP* GetThisMessageMap();                                                  \
    const AFX_MSGMAP* GetMessageMap() const override;                                              \
                                                                                                   \
private:                                                                                           \
    template <class MapSelf, class... MapNone>                                                     \
    BOOL HandleOwnMessage(MapSelf* mapSelf, UINT mapMessage, WPARAM mapWParam, LPARAM mapLParam,   \
                          LRESULT& mapResult, MapNone... mapNone);                                 \
                                                                                                   \
protected:

// NOLINTBEGIN(bugprone-macro-parentheses): a class name stands in no parentheses
#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                                     \
    const AFX_MSGMAP* theClass::GetMessageMap() const                                              \
    {                                                                                              \
        return GetThisMessageMap();                                                                \
    }                                                                                              \
    const AFX_MSGMAP* theClass::GetThisMessageMap()                                                \
    {                                                                                              \
        static framework::EntryList& entries = *new framework::EntryList;                          \
        static AFX_MSGMAP map = {                                                                  \
            &baseClass::GetThisMessageMap,                                                         \
            [](CWnd& window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {        \
                auto& self = static_cast<theClass&>(window);                                       \
                if (!entries.IsListed()) {                                                         \
                    framework::EntryList whole;                                                    \
                    self.HandleOwnMessage(&self, framework::EntryList::kRequest, 0,                \
                                          reinterpret_cast<LPARAM>(&whole), result);               \
                    whole.SetListed();                                                             \
                    entries = std::move(whole);                                                    \
                    map.lpEntries = entries.Data();                                                \
                }                                                                                  \
                return self.HandleOwnMessage(&self, message, wParam, lParam, result);              \
            },                                                                                     \
            entries.Data()};                                                                       \
        return &map;                                                                               \
    }                                                                                              \
    template <class MapSelf, class... MapNone>                                                     \
    BOOL theClass::HandleOwnMessage(                                                               \
        [[maybe_unused]] MapSelf* mapSelf, [[maybe_unused]] UINT mapMessage,                       \
        [[maybe_unused]] WPARAM mapWParam, [[maybe_unused]] LPARAM mapLParam,                      \
        [[maybe_unused]] LRESULT& mapResult, [[maybe_unused]] MapNone... mapNone)                  \
    {
// NOLINTEND(bugprone-macro-parentheses)

#define END_MESSAGE_MAP()                                                                          \
    return FALSE;                                                                                  \
    }

#define TILTPOLE_MESSAGE(message, call)                                                            \
    if (framework::IsFor({message, 0, 0, 0}, mapMessage, mapWParam, mapLParam)) {                  \
        mapResult = (call);                                                                        \
        return TRUE;                                                                               \
    }

// A member is named as Member or as &Class::Member; only one of the branches is compiled.
#define TILTPOLE_CALL(member, ...)                                                                 \
    if constexpr (#member[0] == '&')                                                               \
        framework::Handler<MapSelf>{mapSelf}.template Call<member>(                                \
            mapResult __VA_OPT__(, ) __VA_ARGS__, mapNone...);                                     \
    else                                                                                           \
        framework::SetResult(mapResult,                                                            \
                             [&] { return member(__VA_ARGS__ __VA_OPT__(, ) mapNone...); });

#define ON_WM_CREATE()                                                                             \
    TILTPOLE_MESSAGE(WM_CREATE, OnCreate(framework::PointerIn<LPCREATESTRUCT>(mapLParam)))
#define ON_WM_DESTROY() TILTPOLE_MESSAGE(WM_DESTROY, (OnDestroy(), 0))
#define ON_WM_NCDESTROY() TILTPOLE_MESSAGE(WM_NCDESTROY, (OnNcDestroy(), 0))
#define ON_WM_CLOSE() TILTPOLE_MESSAGE(WM_CLOSE, (OnClose(), 0))
#define ON_WM_PAINT() TILTPOLE_MESSAGE(WM_PAINT, (OnPaint(), 0))
#define ON_WM_ERASEBKGND()                                                                         \
    TILTPOLE_MESSAGE(WM_ERASEBKGND,                                                                \
                     OnEraseBkgnd(CDC::FromHandle(framework::PointerIn<HDC>(mapWParam))))
#define ON_WM_SHOWWINDOW()                                                                         \
    TILTPOLE_MESSAGE(WM_SHOWWINDOW, (OnShowWindow(mapWParam != 0, static_cast<UINT>(mapLParam)), 0))
#define ON_WM_ENABLE() TILTPOLE_MESSAGE(WM_ENABLE, (OnEnable(mapWParam != 0), 0))
#define ON_WM_MOVE()                                                                               \
    TILTPOLE_MESSAGE(WM_MOVE,                                                                      \
                     (OnMove(framework::LowWord(mapLParam), framework::HighWord(mapLParam)), 0))
#define ON_WM_SIZE()                                                                               \
    TILTPOLE_MESSAGE(WM_SIZE, (OnSize(static_cast<UINT>(mapWParam), framework::LowWord(mapLParam), \
                                      framework::HighWord(mapLParam)),                             \
                               0))
#define ON_WM_TIMER() TILTPOLE_MESSAGE(WM_TIMER, (OnTimer(mapWParam), 0))

#define ON_WM_SETFOCUS()                                                                           \
    TILTPOLE_MESSAGE(WM_SETFOCUS,                                                                  \
                     (OnSetFocus(CWnd::FromHandle(framework::PointerIn<HWND>(mapWParam))), 0))
#define ON_WM_KILLFOCUS()                                                                          \
    TILTPOLE_MESSAGE(WM_KILLFOCUS,                                                                 \
                     (OnKillFocus(CWnd::FromHandle(framework::PointerIn<HWND>(mapWParam))), 0))
#define TILTPOLE_KEY(message, member)                                                              \
    TILTPOLE_MESSAGE(                                                                              \
        message, (member(static_cast<UINT>(mapWParam), LOWORD(mapLParam), HIWORD(mapLParam)), 0))
#define ON_WM_KEYDOWN() TILTPOLE_KEY(WM_KEYDOWN, OnKeyDown)
#define ON_WM_KEYUP() TILTPOLE_KEY(WM_KEYUP, OnKeyUp)
#define ON_WM_CHAR() TILTPOLE_KEY(WM_CHAR, OnChar)
#define ON_WM_SYSKEYDOWN() TILTPOLE_KEY(WM_SYSKEYDOWN, OnSysKeyDown)
#define ON_WM_SYSKEYUP() TILTPOLE_KEY(WM_SYSKEYUP, OnSysKeyUp)
#define ON_WM_SYSCHAR() TILTPOLE_KEY(WM_SYSCHAR, OnSysChar)

#define TILTPOLE_MOUSE(message, member)                                                            \
    TILTPOLE_MESSAGE(message,                                                                      \
                     (member(static_cast<UINT>(mapWParam), framework::PointOf(mapLParam)), 0))
#define ON_WM_MOUSEMOVE() TILTPOLE_MOUSE(WM_MOUSEMOVE, OnMouseMove)
#define ON_WM_LBUTTONDOWN() TILTPOLE_MOUSE(WM_LBUTTONDOWN, OnLButtonDown)
#define ON_WM_LBUTTONUP() TILTPOLE_MOUSE(WM_LBUTTONUP, OnLButtonUp)
#define ON_WM_LBUTTONDBLCLK() TILTPOLE_MOUSE(WM_LBUTTONDBLCLK, OnLButtonDblClk)
#define ON_WM_RBUTTONDOWN() TILTPOLE_MOUSE(WM_RBUTTONDOWN, OnRButtonDown)
#define ON_WM_RBUTTONUP() TILTPOLE_MOUSE(WM_RBUTTONUP, OnRButtonUp)
#define ON_WM_RBUTTONDBLCLK() TILTPOLE_MOUSE(WM_RBUTTONDBLCLK, OnRButtonDblClk)
#define ON_WM_MBUTTONDOWN() TILTPOLE_MOUSE(WM_MBUTTONDOWN, OnMButtonDown)
#define ON_WM_MBUTTONUP() TILTPOLE_MOUSE(WM_MBUTTONUP, OnMButtonUp)
#define ON_WM_MBUTTONDBLCLK() TILTPOLE_MOUSE(WM_MBUTTONDBLCLK, OnMButtonDblClk)
#define ON_WM_MOUSEWHEEL()                                                                         \
    if (framework::IsFor({WM_MOUSEWHEEL, 0, 0, 0}, mapMessage, mapWParam, mapLParam)) {            \
        mapResult = OnMouseWheel(LOWORD(mapWParam), static_cast<short>(HIWORD(mapWParam)),         \
                                 framework::PointOf(mapLParam));                                   \
        return mapResult != 0 ? TRUE : framework::kLeftOpen;                                       \
    }
#define ON_WM_MOUSELEAVE() TILTPOLE_MESSAGE(WM_MOUSELEAVE, (OnMouseLeave(), 0))
#define ON_WM_CAPTURECHANGED()                                                                     \
    TILTPOLE_MESSAGE(                                                                              \
        WM_CAPTURECHANGED,                                                                         \
        (OnCaptureChanged(CWnd::FromHandle(framework::PointerIn<HWND>(mapLParam))), 0))

/// `member` is declared as LRESULT member(WPARAM, LPARAM).
#define ON_MESSAGE(message, member)                                                                \
    if (framework::IsFor({message, 0, 0, 0}, mapMessage, mapWParam, mapLParam)) {                  \
        TILTPOLE_CALL(member, mapWParam, mapLParam)                                                \
        return TRUE;                                                                               \
    }

/// A notification of the control with that id; `member` is declared as void member().
#define ON_CONTROL(code, id, member)                                                               \
    if (framework::IsFor({WM_COMMAND, code, id, id}, mapMessage, mapWParam, mapLParam)) {          \
        TILTPOLE_CALL(member)                                                                      \
        return TRUE;                                                                               \
    }
#define ON_COMMAND(id, member) ON_CONTROL(0U, id, member)
#define ON_STN_CLICKED(id, member) ON_CONTROL(STN_CLICKED, id, member)
#define ON_STN_DBLCLK(id, member) ON_CONTROL(STN_DBLCLK, id, member)
#define ON_STN_ENABLE(id, member) ON_CONTROL(STN_ENABLE, id, member)
#define ON_STN_DISABLE(id, member) ON_CONTROL(STN_DISABLE, id, member)
/// The commands from `first` to `last`; `member` is declared as void member(UINT id).
#define ON_COMMAND_RANGE(first, last, member)                                                      \
    if (framework::IsFor({WM_COMMAND, 0, first, last}, mapMessage, mapWParam, mapLParam)) {        \
        TILTPOLE_CALL(member, static_cast<UINT>(LOWORD(mapWParam)))                                \
        return TRUE;                                                                               \
    }

namespace framework {

/// The pointer passed in a message parameter.
template <class Pointer, class Parameter>
constexpr Pointer PointerIn(Parameter parameter)
{
    return std::bit_cast<Pointer>(parameter);
}

/// Two signed 16-bit numbers in one message parameter.
constexpr LPARAM PackWords(int low, int high)
{
    return MAKELPARAM(low, high);
}
constexpr int LowWord(LPARAM packed)
{
    return static_cast<std::int16_t>(packed & 0xFFFF);
}
constexpr int HighWord(LPARAM packed)
{
    return static_cast<std::int16_t>(packed >> 16 & 0xFFFF);
}
constexpr CPoint PointOf(LPARAM packed)
{
    return {LowWord(packed), HighWord(packed)};
}

/// Stores what `call` returns, or 0 if it returns nothing.
template <class Call>
void SetResult(LRESULT& result, Call call)
{
    if constexpr (requires { result = call(); })
        result = call();
    else {
        call();
        result = 0;
    }
}

/// Calls a member function that a message map names by its address.
template <class Self>
struct Handler
{
    Self* self;

    template <auto Member, class... Values>
    void Call(LRESULT& result, Values... values) const
    {
        SetResult(result, [&] { return (self->*Member)(values...); });
    }
};

} // namespace framework
