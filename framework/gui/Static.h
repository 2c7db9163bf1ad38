// SPDX-License-Identifier: MIT
/// @class CStatic
/// CStatic: a label, and the base class of controls that draw themselves.
#pragma once

#include "framework/gui/Wnd.h"

class TILTPOLE_API CStatic : public CWnd
{
    DECLARE_DYNAMIC(CStatic)

public:
    CStatic() = default;

    /// Creates a child window of class STATIC; FALSE where CWnd::Create fails.
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent,
                        UINT id = 0xFFFF);

protected:
    afx_msg void OnPaint();

    DECLARE_MESSAGE_MAP()

private:
    using CWnd::Create;
};
