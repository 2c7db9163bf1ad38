// SPDX-License-Identifier: MIT
//
// Creation and destruction of windows.
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/Image.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <new>

using framework::ToColor;
using framework::WindowClass;
using framework::WindowRecord;
using framework::Windows;

namespace framework {
namespace {

constexpr const wchar_t* kStaticClass = L"STATIC";
constexpr const wchar_t* kPlainClass = L"tiltpole.Plain";

bool IsSameName(const std::wstring& a, const std::wstring& b)
{
    const auto lower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](wchar_t x, wchar_t y) { return lower(x) == lower(y); });
}

const WindowClass* AddClass(std::wstring name, UINT style, const GdiRecord* background)
{
    auto made = std::make_unique<WindowClass>();
    made->name = std::move(name);
    made->style = style;
    made->hasBackground = background && !background->isNull;
    if (background) made->background = background->fill;
    Windows().classes.push_back(std::move(made));
    return Windows().classes.back().get();
}

const WindowClass* AddGray(const wchar_t* name)
{
    const WindowClass* added = AddClass(name, 0, nullptr);
    WindowClass& made = *Windows().classes.back();
    made.hasBackground = true;
    made.background = ToColor(GetSysColor(COLOR_BTNFACE));
    return added;
}

// Finds a class by name; the framework's own classes are registered on first use.
const WindowClass* ClassOf(LPCTSTR name)
{
    const std::wstring wanted = name ? name : kPlainClass;
    for (const auto& known : Windows().classes)
        if (IsSameName(known->name, wanted)) return known.get();
    if (IsSameName(wanted, kStaticClass)) return AddGray(kStaticClass);
    if (wanted == kPlainClass) return AddGray(kPlainClass);
    return nullptr;
}

struct Request
{
    CREATESTRUCT values;
    UINT_PTR id;
};

// Creates the window without sending its first messages; null on failure.
WindowRecord* Make(const Request& request, CWnd* owner)
{
    const CREATESTRUCT& values = request.values;
    const WindowClass* windowClass = ClassOf(values.lpszClass);
    Toolkit* toolkit = CurrentToolkit();
    if (!windowClass || !toolkit) return nullptr;
    if (values.hwndParent && !Windows().Holds(values.hwndParent)) return nullptr;
    if ((values.style & WS_CHILD) && !values.hwndParent) return nullptr;

    auto made = std::make_unique<WindowRecord>();
    made->windowClass = windowClass;
    made->parent = values.style & WS_CHILD ? values.hwndParent : nullptr;
    made->id = request.id;
    made->style = values.style & ~WS_VISIBLE;
    made->exStyle = values.dwExStyle;
    made->origin = {values.x, values.y};
    made->text = values.lpszName ? values.lpszName : L"";
    WindowRecord* const window = made.get();
    Windows().windows.push_back(std::move(made));
    if (window->parent) window->parent->children.push_back(window);
    if (owner) {
        owner->Attach(window);
        owner->PreSubclassWindow();
    }
    window->native =
        toolkit->MakeWindow(*window, window->parent ? window->parent->native.get() : nullptr);
    window->native->SetTitle(window->text);
    window->native->Place(values.x, values.y, std::max(0, values.cx), std::max(0, values.cy));
    window->Resize(values.cx, values.cy);
    return window;
}

WindowRecord* Create(Request request, CWnd* owner)
{
    WindowRecord* const window = Make(request, owner);
    if (!window) return nullptr;
    const LRESULT answer = window->Send(WM_CREATE, 0, reinterpret_cast<LPARAM>(&request.values));
    if (!Windows().Holds(window)) return nullptr;
    if (answer == -1) {
        Destroy(window);
        return nullptr;
    }
    if (request.values.style & WS_VISIBLE) CWnd::FromHandle(window)->ShowWindow(SW_SHOW);
    return window;
}

} // namespace

void Destroy(WindowRecord* window)
{
    window->Send(WM_DESTROY, 0, 0);
    while (Windows().Holds(window) && !window->children.empty())
        Destroy(window->children.back());
    if (!Windows().Holds(window)) return;
    window->Send(WM_NCDESTROY, 0, 0);

    if (window->parent) std::erase(window->parent->children, window);
    window->native.reset();
    CWnd* const last = CWnd::FromHandlePermanent(window);
    std::erase_if(Windows().windows, [&](const auto& known) { return known.get() == window; });
    if (last) WindowRecord::ReportGone(*last);
}

} // namespace framework

BOOL AfxRegisterClass(const WNDCLASS* windowClass)
{
    if (!windowClass || !windowClass->lpszClassName || !*windowClass->lpszClassName) return FALSE;
    if (framework::ClassOf(windowClass->lpszClassName)) return FALSE;
    framework::AddClass(windowClass->lpszClassName, windowClass->style, windowClass->hbrBackground);
    return TRUE;
}

LPCTSTR AfxRegisterWndClass(UINT style, void*, HBRUSH background, void*)
{
    CString name;
    name.Format(
        L"tiltpole.%x.%llx", style,
        static_cast<unsigned long long>(background ? ToColor(0) + background->fill + 1 : 0));
    if (const WindowClass* known = Windows().Find(name.GetString())) return known->name.c_str();
    return framework::AddClass(name.GetString(), style, background)->name.c_str();
}

HWND CreateWindowExW(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x,
                     int y, int width, int height, HWND parent, UINT_PTR id)
{
    return framework::Create(
        {
            {nullptr, parent, height, width, y, x, style, windowName, className, exStyle},
            id
    },
        nullptr);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y,
                    int width, int height, HWND parent, UINT_PTR id, LPVOID parameter)
{
    if (m_hWnd) return FALSE;
    const framework::Request request{
        {parameter, parent, height, width, y, x, style, windowName, className, exStyle},
        id
    };
    return framework::Create(request, this) != nullptr;
}
