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
    std::vector<std::unique_ptr<WindowRecord>> windows;
    std::vector<std::unique_ptr<WindowClass>> classes;

    const WindowClass* Find(const std::wstring& name) const;
    bool Holds(const WindowRecord* window) const;
};

WindowRegistry& Windows();

// Destroys a window and its children.
void Destroy(WindowRecord* window);

} // namespace framework
