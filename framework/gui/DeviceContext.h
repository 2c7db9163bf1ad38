// SPDX-License-Identifier: MIT
/// @file
/// Device contexts: CDC draws on a bitmap or a window, CClientDC on a window at any time, CPaintDC
/// while handling the paint message.
///
/// Coordinates are device pixels from the upper left corner of the bitmap or client area; right and
/// bottom edges are exclusive. Shapes set whole pixels and are never blended. Everything is clipped
/// to the picture. Unless noted, a drawing call returns FALSE only without a handle or for a null
/// argument; where memory runs out it throws std::bad_alloc, and what was drawn by then stays.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/GdiObject.h"
#include "framework/gui/Types.h"

class CWnd;

/// Draws on the bitmap that is selected into it, or on a window; deletes its handle at its own end.
class TILTPOLE_API CDC : public CObject
{
    DECLARE_DYNCREATE(CDC)

public:
    CDC() = default;
    ~CDC() override;

    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }

    /// The host's own object for the handle if there is one, otherwise a temporary object that the
    /// framework owns and that lives as long as the handle. Null for a null handle.
    static CDC* FromHandle(HDC handle);
    BOOL Attach(HDC handle);
    HDC Detach();

    /// Creates a memory context. It draws on the bitmap selected into it; until one is selected,
    /// drawing has no effect. FALSE when there is a handle already.
    BOOL CreateCompatibleDC(CDC* like);
    /// Deletes the handle and deselects everything. FALSE without a handle.
    BOOL DeleteDC();

    /// @{ Selects an object and returns the previous one. Returns null and changes nothing for a
    /// null object or handle, or for a bitmap that is selected into another context.
    CPen* SelectObject(CPen* pen);
    CBrush* SelectObject(CBrush* brush);
    CFont* SelectObject(CFont* font);
    CBitmap* SelectObject(CBitmap* bitmap);
    CGdiObject* SelectObject(CGdiObject* object);
    CGdiObject* SelectStockObject(int index);
    /// @}

    /// Keeps the selected objects, colors, modes, position, alignment and clip for RestoreDC.
    /// Returns the number of kept states, 0 without a handle.
    int SaveDC();
    /// Returns to the state that SaveDC returned as `saved`, or with -1 to the last one, with -2 to
    /// the one before, and so on; forgets it and the later ones. A bitmap that is selected into
    /// another context meanwhile does not come back. FALSE if there is no such state.
    BOOL RestoreDC(int saved);

    /// @{ Limits drawing to the part of a rectangle that could be drawn on before. Returns
    /// SIMPLEREGION, or NULLREGION if nothing is left.
    int IntersectClipRect(int left, int top, int right, int bottom);
    int IntersectClipRect(LPCRECT rect);
    /// @}
    /// The rectangle that can be drawn on; returns as IntersectClipRect.
    int GetClipBox(LPRECT rect) const;

    CPen* GetCurrentPen() const;
    CBrush* GetCurrentBrush() const;
    CFont* GetCurrentFont() const;
    CBitmap* GetCurrentBitmap() const;

    /// @{ Each setter returns the previous value; CLR_INVALID or 0 without a handle.
    COLORREF SetTextColor(COLORREF color);
    COLORREF GetTextColor() const;
    COLORREF SetBkColor(COLORREF color);
    COLORREF GetBkColor() const;
    int SetBkMode(int mode);
    int GetBkMode() const;
    /// @}

    CPoint GetCurrentPosition() const;
    CPoint MoveTo(int x, int y); ///< returns the previous position
    CPoint MoveTo(POINT point) { return MoveTo(point.x, point.y); }
    /// With a pen one pixel wide the end pixel is not drawn.
    BOOL LineTo(int x, int y);
    BOOL LineTo(POINT point) { return LineTo(point.x, point.y); }
    /// Draws lines from point to point. FALSE for fewer than two points.
    BOOL Polyline(const POINT* points, int count);
    /// @{ Fills with the brush, then outlines with the pen. The corners of a rectangle may be
    /// swapped. FALSE for fewer than two points.
    BOOL Polygon(const POINT* points, int count);
    BOOL Rectangle(int left, int top, int right, int bottom);
    BOOL Rectangle(LPCRECT rect);
    BOOL Ellipse(int left, int top, int right, int bottom);
    BOOL Ellipse(LPCRECT rect);
    /// @}
    void FillRect(LPCRECT rect, CBrush* brush);
    /// @{ Fills with a color, which becomes the background color.
    void FillSolidRect(LPCRECT rect, COLORREF color);
    void FillSolidRect(int x, int y, int width, int height, COLORREF color);
    /// @}
    /// Returns the color, or CLR_INVALID outside the picture or the clip.
    COLORREF SetPixel(int x, int y, COLORREF color);
    /// Returns CLR_INVALID outside the picture or the clip.
    COLORREF GetPixel(int x, int y) const;

    /// PATCOPY, PATINVERT, DSTINVERT, BLACKNESS or WHITENESS; FALSE for any other operation.
    BOOL PatBlt(int x, int y, int width, int height, DWORD operation);
    /// SRCCOPY or SRCPAINT; FALSE for any other operation. Both contexts may be the same.
    BOOL BitBlt(int x, int y, int width, int height, CDC* source, int sourceX, int sourceY,
                DWORD operation);

    /// @{ Draws lines of text; DT_WORDBREAK breaks those wider than `rect` between words. "&"
    /// underlines the next character ("&&" is one "&") unless DT_NOPREFIX is given. Returns the
    /// height of the text; DT_CALCRECT only measures and writes `rect`.
    int DrawText(LPCTSTR text, int count, LPRECT rect, UINT format);
    int DrawText(const CString& text, LPRECT rect, UINT format);
    /// @}

    /// @{ Which point of a text TextOut and ExtTextOut place at (x, y): TA_LEFT, TA_CENTER or
    /// TA_RIGHT with TA_TOP, TA_BASELINE or TA_BOTTOM. SetTextAlign returns the previous value.
    /// GDI_ERROR without a handle.
    UINT SetTextAlign(UINT flags);
    UINT GetTextAlign() const;
    /// @}

    /// @{ Draws text with its upper left corner at (x, y), unless SetTextAlign chose another point.
    /// ETO_OPAQUE fills `rect` with the background color, ETO_CLIPPED clips the text to it; both
    /// are ignored without `rect`.
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count,
                    const int* spacing);
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString& text,
                    const int* spacing);
    BOOL TextOut(int x, int y, const CString& text);
    /// @}

    CSize GetTextExtent(const CString& text) const;
    /// The measures of the selected font. FALSE without a handle.
    BOOL GetTextMetrics(LPTEXTMETRIC metrics) const;

    /// The window this context draws on; null for one in memory.
    CWnd* GetWindow() const;

    HDC m_hDC = nullptr;

private:
    void DrawLine(LPCTSTR text, int count, POINT at);
};

/// A context for a window's client area during the lifetime of the object.
class TILTPOLE_API CClientDC : public CDC
{
    DECLARE_DYNAMIC(CClientDC)

public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

protected:
    HWND m_hWnd = nullptr;
};

/// A context for a whole window: coordinates start at its upper left corner, edges included. The
/// edges themselves cannot be drawn on.
class TILTPOLE_API CWindowDC : public CDC
{
    DECLARE_DYNAMIC(CWindowDC)

public:
    explicit CWindowDC(CWnd* window);
    ~CWindowDC() override;

protected:
    HWND m_hWnd = nullptr;
};

/// The context for handling a paint message: erases the background where needed, clips drawing to
/// the invalid area, and shows the result when it is destroyed.
class TILTPOLE_API CPaintDC : public CDC
{
    DECLARE_DYNAMIC(CPaintDC)

public:
    explicit CPaintDC(CWnd* window);
    ~CPaintDC() override;

    PAINTSTRUCT m_ps;

protected:
    HWND m_hWnd = nullptr;
};
