// SPDX-License-Identifier: MIT
#include "framework/core/Object.h"

constinit const CRuntimeClass CObject::classCObject = {"CObject", sizeof(CObject), 0xFFFF, nullptr,
                                                       nullptr};

CObject* CRuntimeClass::CreateObject() const
{
    return m_pfnCreateObject == nullptr ? nullptr : m_pfnCreateObject();
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const
{
    for (const CRuntimeClass* one = this; one != nullptr; one = one->m_pBaseClass)
        if (one == base) return TRUE;
    return FALSE;
}

CRuntimeClass* CObject::GetRuntimeClass() const
{
    return RUNTIME_CLASS(CObject);
}

BOOL CObject::IsKindOf(const CRuntimeClass* runtimeClass) const
{
    return GetRuntimeClass()->IsDerivedFrom(runtimeClass);
}
