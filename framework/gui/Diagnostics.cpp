// SPDX-License-Identifier: MIT
#include "framework/gui/Diagnostics.h"

#include "framework/core/TextConversion.h"

#include <cstdio>
#include <string>

void framework::WriteTrace(const CString& text)
{
    const std::string bytes = ToUtf8(text.GetString());
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}
