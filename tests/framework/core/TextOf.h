// SPDX-License-Identifier: MIT
//
// Readable messages for wide text in test failures.
#pragma once

#include "framework/core/String.h"
#include "framework/core/TextConversion.h"

#include <ostream>
#include <string>

/// A CString in a failure message, and a comparison that includes text after a 0.
inline std::wstring Whole(const CString& text)
{
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

inline void PrintTo(const CString& text, std::ostream* out)
{
    *out << '"' << framework::ToUtf8(Whole(text)) << '"';
}
