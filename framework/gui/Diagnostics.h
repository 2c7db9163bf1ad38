// SPDX-License-Identifier: MIT
/// @file
/// Checks and messages for developers, and casts that ask the run-time class.
///
///     auto* const view = DYNAMIC_DOWNCAST(GroundView, GetDlgItem(IDC_GROUND)); // null if not
///     ASSERT(view);
///     VERIFY(view->DestroyWindow());
///     TRACE(L"%d observations\n", count);
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"

#include <cassert>

namespace framework {

/// Writes a text to standard error, as UTF-8.
TILTPOLE_API void WriteTrace(const CString& text);

/// Writes a text formatted as CString::Format does.
template <class Format, class... Arguments>
void Trace(const Format* format, const Arguments&... arguments)
{
    CString text;
    text.Format(CString(format), arguments...);
    WriteTrace(text);
}

} // namespace framework

// In builds with NDEBUG, ASSERT and TRACE evaluate nothing; VERIFY always evaluates its argument.
#ifndef ASSERT
#define ASSERT(condition) assert(condition)
#endif
#ifndef VERIFY
#ifdef NDEBUG
#define VERIFY(condition) static_cast<void>(condition)
#else
#define VERIFY(condition) assert(condition)
#endif
#endif
#ifndef TRACE
#ifdef NDEBUG
#define TRACE(...) static_cast<void>(0)
#else
#define TRACE(...) framework::Trace(__VA_ARGS__)
#endif
#endif

/// `object` as a `class_name*`; null if it is null or of another class.
#define DYNAMIC_DOWNCAST(class_name, object)                                                       \
    framework::DownCast<class_name>(object, RUNTIME_CLASS(class_name))

/// `object` as a `class_name*`, which it must be or null.
// NOLINTNEXTLINE(bugprone-macro-parentheses): names a class, as hosts write it
#define STATIC_DOWNCAST(class_name, object) static_cast<class_name*>(object)

namespace framework {

template <class Class>
Class* DownCast(CObject* object, const CRuntimeClass* wanted)
{
    return object && object->IsKindOf(wanted) ? static_cast<Class*>(object) : nullptr;
}
template <class Class>
const Class* DownCast(const CObject* object, const CRuntimeClass* wanted)
{
    return object && object->IsKindOf(wanted) ? static_cast<const Class*>(object) : nullptr;
}

} // namespace framework
