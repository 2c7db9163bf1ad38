// SPDX-License-Identifier: MIT
//
// Pens, brushes, fonts and bitmaps: what a device context draws with and on.
//
// An object owns its handle and deletes it in its destructor. Deleting a selected object is
// harmless: the context keeps using it until something else is selected.
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

    /// The host's own object for the handle if there is one, otherwise a temporary object that the
    /// framework owns and that lives as long as the handle. Null for a null handle.
    static CGdiObject* FromHandle(HGDIOBJ handle);

    /// Takes ownership of a handle. Returns FALSE and changes nothing when this object already has
    /// one or the handle is null.
    BOOL Attach(HGDIOBJ handle);
    /// Releases ownership of the handle; the caller deletes it.
    HGDIOBJ Detach();

    /// Returns FALSE without a handle.
    BOOL DeleteObject();

    /// Attaches the stock object with that index (WHITE_BRUSH ... SYSTEM_FONT).
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

    /// PS_SOLID or PS_NULL; width in pixels, 0 means 1. FALSE for any other style.
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

    /// A face that is not installed is replaced by the default face.
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

    /// Creates a picture with 32 bits per pixel and undefined content. A width or height of 0 gives
    /// a bitmap of one pixel; a negative one fails.
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    /// Width and height in pixels.
    CSize GetSize() const;
    static CBitmap* FromHandle(HBITMAP handle);
};
