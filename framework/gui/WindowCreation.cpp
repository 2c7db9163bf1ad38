// SPDX-License-Identifier: MIT
//
// Creation and destruction of windows.
#include "framework/gui/MessageMap.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/Image.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

using framework::WindowClass;
using framework::WindowRecord;
using framework::Windows;

namespace framework {
namespace {

constexpr const wchar_t* kStaticClass = L"STATIC";
constexpr const wchar_t* kPlainClass = L"tiltpole.Plain";
constexpr std::uintptr_t kSystemColors = 31; // handles up to here are no brushes
constexpr int kUsualPlace = 40;              // pixels; both coordinates
constexpr int kUsualWidth = 640;
constexpr int kUsualHeight = 480;

bool IsSameName(const std::wstring& a, const std::wstring& b)
{
    const auto lower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](wchar_t x, wchar_t y) { return lower(x) == lower(y); });
}

// The color that windows with that background are erased in; none where they are not. Small numbers
// stand for system colors, plus 1.
std::optional<raster::Color> FillOf(HBRUSH background)
{
    const auto number = reinterpret_cast<std::uintptr_t>(background);
    if (number == 0) return std::nullopt;
    if (number <= kSystemColors) return ToColor(GetSysColor(static_cast<int>(number) - 1));
    if (background->isNull) return std::nullopt;
    return background->fill;
}

const WindowClass* AddClass(std::wstring name, UINT style, std::optional<raster::Color> background)
{
    auto made = std::make_unique<WindowClass>();
    made->name = std::move(name);
    made->style = style;
    made->hasBackground = background.has_value();
    made->background = background.value_or(0);
    Windows().classes.push_back(std::move(made));
    return Windows().classes.back().get();
}

const WindowClass* AddGray(const wchar_t* name)
{
    const WindowClass* added = AddClass(name, CS_DBLCLKS, ToColor(GetSysColor(COLOR_BTNFACE)));
    WindowClass& made = *Windows().classes.back();
    made.isStatic = name == std::wstring_view(kStaticClass);
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

// The window as requested, without anything on the screen; null where it cannot be.
std::shared_ptr<WindowRecord> Make(const CREATESTRUCT& values)
{
    const WindowClass* windowClass = ClassOf(values.lpszClass);
    if (!windowClass || !CurrentToolkit()) return nullptr;
    if (values.hwndParent && !Windows().Holds(values.hwndParent)) return nullptr;
    if ((values.style & WS_CHILD) && !values.hwndParent) return nullptr;

    auto made = std::make_shared<WindowRecord>();
    made->windowClass = windowClass;
    made->applications = Windows().applications;
    made->parent = values.style & WS_CHILD ? values.hwndParent : nullptr;
    made->ownedBy = values.style & WS_CHILD ? nullptr : values.hwndParent;
    made->id = reinterpret_cast<UINT_PTR>(values.hMenu);
    made->style = values.style & ~WS_VISIBLE;
    made->exStyle = values.dwExStyle;
    made->origin = {values.x, values.y};
    made->text = values.lpszName ? values.lpszName : L"";
    return made;
}

void Enter(const std::shared_ptr<WindowRecord>& window)
{
    Windows().windows.push_back(window);
    if (window->parent) window->parent->children.push_back(window.get());
}

// Takes a window out of all lists and ends its native window.
void Remove(WindowRecord& window)
{
    const std::shared_ptr<WindowRecord> kept = window.shared_from_this();
    if (window.parent) std::erase(window.parent->children, &window);
    std::erase(Windows().windows, kept);
    Forget(window);
    window.isGone = true;
    window.native.reset();
    window.LetGo();
}

// Gives it a picture and a native window; false short of memory.
bool Furnish(WindowRecord& window, const CREATESTRUCT& values)
{
    if (window.SetSize(values.cx, values.cy) == WindowRecord::Sized::NoMemory) return false;
    NativeWindow* const outer = window.parent ? window.parent->native.get() : nullptr;
    window.native = CurrentToolkit()->MakeWindow(window, outer);
    window.native->SetTitle(window.text);
    window.origin = {values.x, values.y}; // a host may have moved it before
    window.native->Place(values.x, values.y, window.width, window.height);
    return true;
}

// The messages of a new window, in the order of the windowing system. Every handler may destroy it.
bool Announce(WindowRecord& window, CREATESTRUCT& values)
{
    if (window.Send(WM_CREATE, 0, reinterpret_cast<LPARAM>(&values)) == -1) return false;
    if (!window.isGone) window.ReportSize();
    if (!window.isGone) window.ReportMove();
    if (!window.isGone && values.style & WS_VISIBLE) CWnd::FromHandle(&window)->ShowWindow(SW_SHOW);
    return !window.isGone;
}

// Places and sizes that the framework chooses.
void Choose(CREATESTRUCT& values)
{
    if (values.x == CW_USEDEFAULT || values.y == CW_USEDEFAULT) values.x = values.y = kUsualPlace;
    if (values.cx == CW_USEDEFAULT || values.cy == CW_USEDEFAULT) {
        values.cx = kUsualWidth;
        values.cy = kUsualHeight;
    }
}

WindowRecord* Create(CREATESTRUCT values, CWnd* owner, bool& wasAttached)
{
    Choose(values);
    std::shared_ptr<WindowRecord> window;
    try {
        window = Make(values);
        if (!window) return nullptr;
        Enter(window);
        if (owner) {
            wasAttached = owner->Attach(window.get());
            owner->PreSubclassWindow();
        }
        if (!window->isGone && Furnish(*window, values) && Announce(*window, values))
            return window.get();
    } catch (const std::bad_alloc&) {
    }
    if (window && (wasAttached || !window->attached.empty() || window->temporary))
        Destroy(window.get());
    else if (window)
        Remove(*window); // nobody has heard of it
    return nullptr;
}

// Ids of child windows travel as menus.
HMENU AsMenu(WindowId id)
{
    return PointerIn<HMENU>(id.Value());
}

} // namespace

void DestroyOwned(const WindowRecord& owner)
{
    const std::vector<std::shared_ptr<WindowRecord>>& all = Windows().windows;
    const auto next = [&] {
        return std::find_if(all.begin(), all.end(), [&](const auto& window) {
            return window->ownedBy == &owner && !window->isEnding;
        });
    };
    for (auto owned = next(); owned != all.end(); owned = next())
        Destroy(owned->get());
}

void Destroy(WindowRecord* window)
{
    if (std::exchange(window->isEnding, true)) return;
    const std::shared_ptr<WindowRecord> kept = window->shared_from_this();
    LeaveFocus(*window);
    DestroyOwned(*window);
    window->Send(WM_DESTROY, 0, 0);
    while (!window->children.empty()) {
        WindowRecord* const child = window->children.back();
        if (child->isEnding) { // one of its handlers destroys this window
            window->children.pop_back();
            child->parent = nullptr;
        }
        Destroy(child);
    }
    window->Send(WM_NCDESTROY, 0, 0);
    Remove(*window);
}

void DestroyWindowsOf(int applications)
{
    const std::vector<std::shared_ptr<WindowRecord>> windows = Windows().windows;
    for (const std::shared_ptr<WindowRecord>& window : windows)
        if (window->applications >= applications) Destroy(window.get());
}

} // namespace framework

BOOL AfxRegisterClass(const WNDCLASS* windowClass)
{
    if (!windowClass || !windowClass->lpszClassName || !*windowClass->lpszClassName) return FALSE;
    if (framework::ClassOf(windowClass->lpszClassName)) return FALSE;
    framework::AddClass(windowClass->lpszClassName, windowClass->style,
                        framework::FillOf(windowClass->hbrBackground));
    return TRUE;
}

LPCTSTR AfxRegisterWndClass(UINT style, void*, HBRUSH background, void*)
{
    const std::optional<framework::raster::Color> fill = framework::FillOf(background);
    CString name;
    name.Format(L"tiltpole.%x.%llx", style, fill ? *fill + 1ULL : 0ULL);
    if (const WindowClass* known = Windows().Find(name.GetString())) return known->name.c_str();
    return framework::AddClass(name.GetString(), style, fill)->name.c_str();
}

HWND CreateWindowExW(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x,
                     int y, int width, int height, HWND parent, framework::WindowId id)
{
    bool wasAttached = false;
    return framework::Create({nullptr, nullptr, framework::AsMenu(id), parent, height, width, y, x,
                              style, windowName, className, exStyle},
                             nullptr, wasAttached);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y,
                    int width, int height, HWND parent, framework::WindowId id, LPVOID parameter)
{
    if (m_hWnd) return FALSE;
    CREATESTRUCT values{
        parameter, nullptr, framework::AsMenu(id), parent, height, width, y, x, style, windowName,
        className, exStyle};
    bool wasAttached = false;
    bool isMade = false;
    try {
        isMade = PreCreateWindow(values) && framework::Create(values, this, wasAttached) != nullptr;
    } catch (const std::bad_alloc&) { // short of the name of its class
    }
    if (!isMade && !wasAttached) PostNcDestroy();
    return isMade;
}
