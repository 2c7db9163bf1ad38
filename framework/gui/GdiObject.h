// SPDX-License-Identifier: MIT
//
// Pens, brushes, fonts and bitmaps: what a device context draws with and on.
//
// An object owns its handle and deletes it when it goes. Deleting one that is still selected is
// harmless: the context keeps what it has selected until it selects something else.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/Types.h"

class CDC;

class TILTPOLE_API CGdiObject : public CObject
{
    DECLARE_DYNCREATE(CGdiObject)

public:
    CGdiObject() = default;
    ~CGdiObject() override;

    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    operator HGDIOBJ() const { return m_hObject; }

    /// The object of a handle: the host's own where there is one, else one that the framework lends
    /// for as long as the handle lives. Null for a null handle.
    static CGdiObject* FromHandle(HGDIOBJ handle);

    /// Takes over a handle; FALSE, with nothing changed, when this object has one or the handle is
    /// null.
    BOOL Attach(HGDIOBJ handle);
    /// Gives the handle away; the caller deletes it.
    HGDIOBJ Detach();

    /// FALSE when there is no handle.
    BOOL DeleteObject();

    /// Makes this the stock object of that index (WHITE_BRUSH ... SYSTEM_FONT).
    BOOL CreateStockObject(int index);

    HGDIOBJ m_hObject = nullptr;

protected:
    BOOL Hold(HGDIOBJ made);
};

class TILTPOLE_API CPen : public CGdiObject
{
    DECLARE_DYNAMIC(CPen)

public:
    CPen() = default;
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }

    /// PS_SOLID or PS_NULL; width in pixels, 0 draws as 1. FALSE for another style.
    BOOL CreatePen(int style, int width, COLORREF color);
    static CPen* FromHandle(HPEN handle);
};

class TILTPOLE_API CBrush : public CGdiObject
{
    DECLARE_DYNAMIC(CBrush)

public:
    CBrush() = default;
    explicit CBrush(COLORREF color) { CreateSolidBrush(color); }

    BOOL CreateSolidBrush(COLORREF color);
    static CBrush* FromHandle(HBRUSH handle);
};

class TILTPOLE_API CFont : public CGdiObject
{
    DECLARE_DYNAMIC(CFont)

public:
    CFont() = default;

    /// A face that the system does not have falls back to its usual one.
    BOOL CreateFontIndirect(const LOGFONT* font);
    BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic,
                    BYTE underline, BYTE strikeOut, BYTE charSet, BYTE outPrecision,
                    BYTE clipPrecision, BYTE quality, BYTE pitchAndFamily, LPCTSTR face);
    static CFont* FromHandle(HFONT handle);
};

class TILTPOLE_API CBitmap : public CGdiObject
{
    DECLARE_DYNAMIC(CBitmap)

public:
    CBitmap() = default;

    /// A picture of 32 bits a pixel; what it shows at first is not defined. A width or height of 0
    /// gives one pixel, a negative one fails.
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    /// Width and height in pixels.
    CSize GetSize() const;
    static CBitmap* FromHandle(HBITMAP handle);
};
