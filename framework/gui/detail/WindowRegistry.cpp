// SPDX-License-Identifier: MIT
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>

namespace framework {

WindowRegistry& Windows()
{
    // Never destroyed: static objects of the host may end later than any of ours.
    static WindowRegistry& registry = *new WindowRegistry;
    return registry;
}

const WindowClass* WindowRegistry::Find(const std::wstring& name) const
{
    for (const auto& known : classes)
        if (known->name == name) return known.get();
    return nullptr;
}

bool WindowRegistry::Holds(const WindowRecord* window) const
{
    return std::any_of(windows.begin(), windows.end(),
                       [&](const auto& known) { return known.get() == window; });
}

void LeaveWindows()
{
    for (const std::shared_ptr<WindowRecord>& window : Windows().windows)
        window->DetachAll();
}

} // namespace framework
