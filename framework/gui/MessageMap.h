// SPDX-License-Identifier: MIT
//
// Message maps: which member function of a class handles which window message.
//
//   class CDial : public CStatic
//   {
//       afx_msg void OnPaint();
//       DECLARE_MESSAGE_MAP()
//   };
//
//   BEGIN_MESSAGE_MAP(CDial, CStatic)
//   ON_WM_PAINT()
//   END_MESSAGE_MAP()
#pragma once

#include "framework/gui/Types.h"

#include <bit>

class CWnd;

/// Calls the member function that handles a message and returns the message's result.
using AFX_PMSG = LRESULT (*)(CWnd& window, WPARAM wParam, LPARAM lParam);

struct AFX_MSGMAP_ENTRY
{
    UINT nMessage;
    AFX_PMSG pfn; ///< null marks the end of the table
};

struct AFX_MSGMAP
{
    const AFX_MSGMAP* (*pfnGetBaseMap)(); ///< null for the map of CWnd
    const AFX_MSGMAP_ENTRY* lpEntries;
};

#define afx_msg

#define DECLARE_MESSAGE_MAP()                                                                      \
protected:                                                                                         \
    static const AFX_MSGMAP* GetThisMessageMap();                                                  \
    const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                                     \
    const AFX_MSGMAP* theClass::GetMessageMap() const                                              \
    {                                                                                              \
        return GetThisMessageMap();                                                                \
    }                                                                                              \
    const AFX_MSGMAP* theClass::GetThisMessageMap()                                                \
    {                                                                                              \
        using ThisClass = theClass;                                                                \
        using TheBaseClass = baseClass;                                                            \
        static const AFX_MSGMAP_ENTRY entries[] = {

#define TILTPOLE_MESSAGE(message, result)                                                          \
    {message,                                                                                      \
     []([[maybe_unused]] CWnd& window, [[maybe_unused]] WPARAM wParam,                             \
        [[maybe_unused]] LPARAM lParam) -> LRESULT {                                               \
         auto& self = static_cast<ThisClass&>(window);                                             \
         return result;                                                                            \
     }},

#define ON_WM_CREATE()                                                                             \
    TILTPOLE_MESSAGE(WM_CREATE, self.OnCreate(framework::PointerIn<LPCREATESTRUCT>(lParam)))
#define ON_WM_PAINT() TILTPOLE_MESSAGE(WM_PAINT, (self.OnPaint(), 0))
#define ON_WM_ERASEBKGND()                                                                         \
    TILTPOLE_MESSAGE(WM_ERASEBKGND,                                                                \
                     self.OnEraseBkgnd(CDC::FromHandle(framework::PointerIn<HDC>(wParam))))
#define ON_WM_SIZE()                                                                               \
    TILTPOLE_MESSAGE(WM_SIZE, (self.OnSize(static_cast<UINT>(wParam), framework::LowWord(lParam),  \
                                           framework::HighWord(lParam)),                           \
                               0))
#define ON_WM_CLOSE() TILTPOLE_MESSAGE(WM_CLOSE, (self.OnClose(), 0))
#define ON_WM_DESTROY() TILTPOLE_MESSAGE(WM_DESTROY, (self.OnDestroy(), 0))
#define ON_WM_TIMER() TILTPOLE_MESSAGE(WM_TIMER, (self.OnTimer(wParam), 0))
#define ON_WM_SHOWWINDOW()                                                                         \
    TILTPOLE_MESSAGE(WM_SHOWWINDOW, (self.OnShowWindow(wParam != 0, static_cast<UINT>(lParam)), 0))
#define ON_WM_LBUTTONDOWN()                                                                        \
    TILTPOLE_MESSAGE(                                                                              \
        WM_LBUTTONDOWN,                                                                            \
        (self.OnLButtonDown(static_cast<UINT>(wParam), framework::PointOf(lParam)), 0))
#define ON_WM_LBUTTONUP()                                                                          \
    TILTPOLE_MESSAGE(WM_LBUTTONUP,                                                                 \
                     (self.OnLButtonUp(static_cast<UINT>(wParam), framework::PointOf(lParam)), 0))
#define ON_WM_MOUSEMOVE()                                                                          \
    TILTPOLE_MESSAGE(WM_MOUSEMOVE,                                                                 \
                     (self.OnMouseMove(static_cast<UINT>(wParam), framework::PointOf(lParam)), 0))

/// `member` is declared as LRESULT member(WPARAM, LPARAM).
#define ON_MESSAGE(message, member) TILTPOLE_MESSAGE(message, self.member(wParam, lParam))

#define END_MESSAGE_MAP()                                                                          \
    {                                                                                              \
        0, nullptr                                                                                 \
    }                                                                                              \
    }                                                                                              \
    ;                                                                                              \
    static const AFX_MSGMAP map = {&TheBaseClass::GetThisMessageMap, entries};                     \
    return &map;                                                                                   \
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
    return static_cast<LPARAM>((static_cast<DWORD>(low) & 0xFFFF)
                               | (static_cast<DWORD>(high) & 0xFFFF) << 16);
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

} // namespace framework
