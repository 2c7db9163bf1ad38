// SPDX-License-Identifier: MIT
//
// All windows and window classes of the process.
#pragma once

#include "framework/gui/detail/WindowRecord.h"

#include <memory>
#include <string>
#include <vector>

namespace framework {

// Windows are destroyed with the Application; classes stay registered until the process ends.
struct WindowRegistry
{
    std::vector<std::shared_ptr<WindowRecord>> windows; // in the order of their creation
    std::vector<std::unique_ptr<WindowClass>> classes;
    WindowRecord* focus = nullptr;   // gets the keyboard messages
    WindowRecord* capture = nullptr; // gets all mouse messages
    WindowRecord* watched = nullptr; // gets WM_MOUSELEAVE
    int applications = 0;            // that exist, one inside the other
    int eventsUnderWay = 0;          // that native windows are reporting

    const WindowClass* Find(const std::wstring& name) const;
    bool Holds(const WindowRecord* window) const;
};

WindowRegistry& Windows();

// Ends all that the registry knows of a window beside its place in the lists.
void Forget(const WindowRecord& window);

// @{ Null for none. Sends WM_KILLFOCUS and WM_SETFOCUS, or WM_CAPTURECHANGED.
void MoveFocus(WindowRecord* next);
void MoveCapture(WindowRecord* next);
// @}

// Moves the focus and the toolkit's with it.
void GiveFocus(WindowRecord& next);

// A window ends or is hidden: the focus, if it or one inside it has it, goes to its parent.
void LeaveFocus(const WindowRecord& window);

// Destroys a window, those it owns and its children; nothing where that is under way already.
void Destroy(WindowRecord* window);

// Destroys the top-level windows that were created for `owner`.
void DestroyOwned(const WindowRecord& owner);

// The process ends: the windows stay until then without the objects of the host, which learn nothing.
void LeaveWindows();

// Destroys the windows made while at least that many applications existed.
void DestroyWindowsOf(int applications);

} // namespace framework
