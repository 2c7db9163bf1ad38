// SPDX-License-Identifier: MIT
/// @file
/// Pens, brushes, fonts and bitmaps: what a device context draws with and on.
///
/// An object owns its handle and deletes it in its destructor. Making another one with the same
/// object deletes the previous one, except for stock objects. Deleting a selected object is
/// harmless: the context keeps using it until something else is selected.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/Types.h"

class CDC;

/// A handle of a drawing object and its owner: the base class of pens, brushes, fonts and bitmaps.
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

    /// Attaches the stock object with that index (WHITE_BRUSH ... DEFAULT_GUI_FONT). FALSE for any
    /// other index, or where there is a handle already.
    BOOL CreateStockObject(int index);

    HGDIOBJ m_hObject = nullptr;

protected:
    BOOL Hold(HGDIOBJ made);
};

/// Draws lines and the borders of shapes.
class TILTPOLE_API CPen : public CGdiObject
{
    DECLARE_DYNAMIC(CPen)

public:
    CPen() = default;
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }

    /// PS_SOLID or PS_NULL; width in pixels, 0 means 1. FALSE for any other style. Pens wider than
    /// 3 pixels have square ends.
    BOOL CreatePen(int style, int width, COLORREF color);
    static CPen* FromHandle(HPEN handle);
};

/// Fills shapes with one color.
class TILTPOLE_API CBrush : public CGdiObject
{
    DECLARE_DYNAMIC(CBrush)

public:
    CBrush() = default;
    explicit CBrush(COLORREF color) { CreateSolidBrush(color); }

    BOOL CreateSolidBrush(COLORREF color);
    static CBrush* FromHandle(HBRUSH handle);
};

/// A face in one size, for text.
class TILTPOLE_API CFont : public CGdiObject
{
    DECLARE_DYNAMIC(CFont)

public:
    CFont() = default;

    /// @{ A positive height is that of the cell [pixels], which the font fills as far as it can; a
    /// negative one that of the characters; 0 means a cell of 16. Height, weight, italic and face
    /// count, the rest is ignored. A face that is not installed is replaced by the default face.
    /// FALSE for a null `font`.
    BOOL CreateFontIndirect(const LOGFONT* font);
    BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic,
                    BYTE underline, BYTE strikeOut, BYTE charSet, BYTE outPrecision,
                    BYTE clipPrecision, BYTE quality, BYTE pitchAndFamily, LPCTSTR face);
    /// @}
    /// `tenths` of a point, 96 pixels to the inch; `dc` is ignored.
    BOOL CreatePointFont(int tenths, LPCTSTR face, CDC* dc = nullptr);
    static CFont* FromHandle(HFONT handle);
};

/// A picture in memory, which a device context draws on or copies from.
class TILTPOLE_API CBitmap : public CGdiObject
{
    DECLARE_DYNAMIC(CBitmap)

public:
    CBitmap() = default;

    /// Creates a picture with 32 bits per pixel and undefined content. A width or height of 0 gives
    /// a bitmap of one pixel. FALSE for a negative one, or where memory runs out.
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    /// Width and height in pixels.
    CSize GetSize() const;
    static CBitmap* FromHandle(HBITMAP handle);
};

/// The handle of a predefined object (WHITE_BRUSH ... DEFAULT_GUI_FONT), which is never deleted;
/// null for any other index.
TILTPOLE_API HGDIOBJ GetStockObject(int index);
