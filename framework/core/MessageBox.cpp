// SPDX-License-Identifier: MIT
#include "framework/core/MessageBox.h"

#include "framework/core/TextConversion.h"

#include <cstdio>
#include <string>
#include <utility>

namespace {

int WriteToStandardError(const wchar_t* text, const wchar_t* title, unsigned)
{
    const std::string line = framework::ToUtf8(title) + ": " + framework::ToUtf8(text) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
    return IDOK;
}

framework::MessageBoxHandler& CurrentHandler()
{
    static framework::MessageBoxHandler handler = WriteToStandardError;
    return handler;
}

} // namespace

int MessageBoxW(HWND, const wchar_t* text, const wchar_t* title, UINT style)
{
    // A copy, because the handler may replace itself while it runs.
    const framework::MessageBoxHandler handler = CurrentHandler();
    return handler(text == nullptr ? L"" : text, title == nullptr ? L"Error" : title, style);
}

namespace framework {

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler)
{
    if (!handler) handler = WriteToStandardError;
    return std::exchange(CurrentHandler(), std::move(handler));
}

} // namespace framework
