// SPDX-License-Identifier: MIT
#include "framework/gui/WindowCalls.h"

#include "framework/core/Paths.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <array>

namespace framework {

struct ModuleRecord
{};

} // namespace framework

using framework::Windows;

BOOL IsWindow(HWND window)
{
    return Windows().Holds(window);
}

LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return Windows().Holds(window) ? window->Send(message, wParam, lParam) : 0;
}

BOOL PostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return framework::PostTo(window, message, wParam, lParam);
}

BOOL ReleaseCapture()
{
    const bool had = Windows().capture != nullptr;
    framework::MoveCapture(nullptr);
    return had;
}

BOOL TrackMouseEvent(TRACKMOUSEEVENT* request)
{
    if (!request || !Windows().Holds(request->hwndTrack)) return FALSE;
    if (request->dwFlags == TME_LEAVE) {
        Windows().watched = request->hwndTrack;
        return TRUE;
    }
    if (request->dwFlags != (TME_LEAVE | TME_CANCEL)) return FALSE;
    if (Windows().watched == request->hwndTrack) Windows().watched = nullptr;
    return TRUE;
}

int AfxMessageBox(LPCTSTR text, UINT style, UINT)
{
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(AfxGetInstanceHandle(), path.data(), MAX_PATH);
    const CString full(path.data());
    const CString name = full.Mid(full.ReverseFind(L'/') + 1);
    return MessageBoxW(nullptr, text, name.IsEmpty() ? nullptr : name.GetString(), style);
}

HINSTANCE AfxGetInstanceHandle()
{
    static framework::ModuleRecord program;
    return &program;
}
