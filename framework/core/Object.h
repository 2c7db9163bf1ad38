// SPDX-License-Identifier: MIT
/// @file
/// CObject and run-time class information.
///
/// DECLARE_DYNAMIC in a class and IMPLEMENT_DYNAMIC in its source file make its name, size and base
/// known at run time; with the DYNCREATE pair objects can also be created from that information.
///
///     class CGauge : public CObject { DECLARE_DYNCREATE(CGauge) };    // header
///     IMPLEMENT_DYNCREATE(CGauge, CObject)                            // source file
///     CObject* gauge = RUNTIME_CLASS(CGauge)->CreateObject();         // owned by the caller
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Types.h"

class CObject;

/// Run-time information about a class.
struct TILTPOLE_API CRuntimeClass
{
    LPCSTR m_lpszClassName;
    int m_nObjectSize;               // bytes
    UINT m_wSchema;                  // 0xFFFF: not serializable
    CObject* (*m_pfnCreateObject)(); // null for a class without DECLARE_DYNCREATE
    const CRuntimeClass* m_pBaseClass;

    /// A new object, owned by the caller; null for a class without DECLARE_DYNCREATE.
    CObject* CreateObject() const;
    /// Whether the class is `base` or derived from it.
    BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

/// Base of the framework's classes: not copyable, with run-time class information.
class TILTPOLE_API CObject
{
public:
    static const CRuntimeClass classCObject;

    virtual CRuntimeClass* GetRuntimeClass() const;
    // Inline, so that arrays which nobody else sees stay in registers; exported nevertheless.
    TILTPOLE_API virtual ~CObject() = default;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    BOOL IsKindOf(const CRuntimeClass* runtimeClass) const;

protected:
    CObject() = default;
};

#define RUNTIME_CLASS(class_name) (const_cast<CRuntimeClass*>(&class_name::class##class_name))

#define DECLARE_DYNAMIC(class_name)                                                                \
public:                                                                                            \
    static const CRuntimeClass class##class_name;                                                  \
    CRuntimeClass* GetRuntimeClass() const override;

#define DECLARE_DYNCREATE(class_name)                                                              \
    DECLARE_DYNAMIC(class_name)                                                                    \
    static CObject* CreateObject();

#define TILTPOLE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, create)                       \
    constinit const CRuntimeClass class_name::class##class_name = {                                \
        #class_name, sizeof(class_name), 0xFFFF, create,                                           \
        &base_class_name::class##base_class_name};                                                 \
    CRuntimeClass* class_name::GetRuntimeClass() const                                             \
    {                                                                                              \
        return RUNTIME_CLASS(class_name);                                                          \
    }

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                             \
    TILTPOLE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, nullptr)

// NOLINTBEGIN(bugprone-macro-parentheses): a class name takes none
#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                                           \
    CObject* class_name::CreateObject()                                                            \
    {                                                                                              \
        return new class_name;                                                                     \
    }                                                                                              \
    TILTPOLE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, class_name::CreateObject)
// NOLINTEND(bugprone-macro-parentheses)
