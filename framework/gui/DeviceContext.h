// SPDX-License-Identifier: MIT
//
// Device contexts: CDC draws on a bitmap or a window, CClientDC on a window at any time, CPaintDC
// while handling the paint message.
//
// Coordinates are device pixels from the upper left corner of the bitmap or client area; right and
// bottom edges are exclusive. Shapes set whole pixels and are never blended. Everything is clipped
// to the picture. Unless noted, a drawing call returns FALSE only without a picture to draw on.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/GdiObject.h"
#include "framework/gui/Types.h"

class CWnd;

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
    BOOL Polyline(const POINT* points, int count);
    /// Fills with the brush, then outlines with the pen. FALSE for fewer than two points.
    BOOL Polygon(const POINT* points, int count);
    BOOL Rectangle(int left, int top, int right, int bottom);
    BOOL Rectangle(LPCRECT rect);
    BOOL Ellipse(int left, int top, int right, int bottom);
    BOOL Ellipse(LPCRECT rect);
    void FillRect(LPCRECT rect, CBrush* brush);
    void FillSolidRect(LPCRECT rect, COLORREF color);
    COLORREF SetPixel(int x, int y, COLORREF color);
    /// Returns CLR_INVALID outside the picture.
    COLORREF GetPixel(int x, int y) const;

    /// SRCCOPY or SRCPAINT; FALSE for any other operation. Both contexts may be the same.
    BOOL BitBlt(int x, int y, int width, int height, CDC* source, int sourceX, int sourceY,
                DWORD operation);

    /// @{ Returns the height of the text; DT_CALCRECT only measures and writes `rect`.
    int DrawText(LPCTSTR text, int count, LPRECT rect, UINT format);
    int DrawText(const CString& text, LPRECT rect, UINT format);
    /// @}

    /// @{ Draws text with its upper left corner at (x, y). ETO_OPAQUE fills `rect` with the
    /// background color, ETO_CLIPPED clips the text to it; both are ignored without `rect`.
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count,
                    const int* spacing);
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString& text,
                    const int* spacing);
    BOOL TextOut(int x, int y, const CString& text);
    /// @}

    CSize GetTextExtent(const CString& text) const;

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
