// SPDX-License-Identifier: MIT
//
// CStatic: a label, and the window that drawn controls are made of.
#pragma once

#include "framework/gui/Wnd.h"

class TILTPOLE_API CStatic : public CWnd
{
    DECLARE_DYNAMIC(CStatic)

public:
    CStatic() = default;

    /// A child of class STATIC; FALSE where CWnd::Create answers FALSE.
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent,
                        UINT id = 0xFFFF);

protected:
    afx_msg void OnPaint();

    DECLARE_MESSAGE_MAP()

private:
    using CWnd::Create;
};
