// SPDX-License-Identifier: MIT
//
// Device contexts: CDC draws on a bitmap or a window, CClientDC on a window at any time, CPaintDC
// in answer to the paint message.
//
// Coordinates are device pixels from the upper left corner of the bitmap or client area; right and
// bottom edges are exclusive. Shapes set whole pixels and are never blended. What lies outside the
// picture is not drawn. A drawing call answers FALSE only without a picture to draw on.
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

    /// The host's own object of a handle where there is one, else one that the framework lends for
    /// as long as the handle lives. Null for a null handle.
    static CDC* FromHandle(HDC handle);
    BOOL Attach(HDC handle);
    HDC Detach();

    /// Makes this a context in memory that draws on the bitmap selected into it, and on nothing
    /// before. FALSE when there is a handle already.
    BOOL CreateCompatibleDC(CDC* like);
    /// Gives up the handle and everything selected. FALSE when there is none.
    BOOL DeleteDC();

    /// @{ Selects an object and returns the one selected before; null, with nothing changed, for a
    /// null object or handle, or a bitmap that another context holds.
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
    /// With a pen one pixel wide the end pixel stays unset.
    BOOL LineTo(int x, int y);
    BOOL LineTo(POINT point) { return LineTo(point.x, point.y); }
    BOOL Polyline(const POINT* points, int count);
    /// Inside with the brush, then the closed outline with the pen. FALSE below two points.
    BOOL Polygon(const POINT* points, int count);
    BOOL Rectangle(int left, int top, int right, int bottom);
    BOOL Rectangle(LPCRECT rect);
    BOOL Ellipse(int left, int top, int right, int bottom);
    BOOL Ellipse(LPCRECT rect);
    void FillRect(LPCRECT rect, CBrush* brush);
    void FillSolidRect(LPCRECT rect, COLORREF color);
    COLORREF SetPixel(int x, int y, COLORREF color);
    /// CLR_INVALID outside the picture.
    COLORREF GetPixel(int x, int y) const;

    /// SRCCOPY or SRCPAINT; FALSE for another operation. The contexts may be the same one.
    BOOL BitBlt(int x, int y, int width, int height, CDC* source, int sourceX, int sourceY,
                DWORD operation);

    /// @{ Returns the height of the text; DT_CALCRECT only measures and writes `rect`.
    int DrawText(LPCTSTR text, int count, LPRECT rect, UINT format);
    int DrawText(const CString& text, LPRECT rect, UINT format);
    /// @}

    /// @{ Text from its upper left corner. ETO_OPAQUE fills `rect` with the background color,
    /// ETO_CLIPPED keeps the text inside it; without `rect` neither does anything.
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

/// A context of a window's client area for the life of the object.
class TILTPOLE_API CClientDC : public CDC
{
    DECLARE_DYNAMIC(CClientDC)

public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

protected:
    HWND m_hWnd = nullptr;
};

/// The context of a paint message: erases what is to be erased, draws inside what is invalid, and
/// shows the result when it goes.
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
