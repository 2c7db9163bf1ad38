// SPDX-License-Identifier: MIT
//
// What stands behind the handles: drawing objects, device contexts and windows.
#pragma once

#include "framework/gui/Types.h"
#include "framework/gui/detail/Raster.h"
#include "framework/gui/detail/Toolkit.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class CDC;
class CGdiObject;
class CWnd;

namespace framework {

constexpr raster::Color ToColor(COLORREF color)
{
    return static_cast<raster::Color>(GetRValue(color) << 16 | GetGValue(color) << 8
                                      | GetBValue(color));
}
constexpr COLORREF ToColorRef(raster::Color color)
{
    return RGB(static_cast<int>(color >> 16), static_cast<int>(color >> 8),
               static_cast<int>(color));
}

constexpr raster::Box ToBox(const RECT& rect)
{
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// A picture in memory. Its pixels are what the memory happened to hold until they are drawn.
struct Image
{
    Image(int givenWidth, int givenHeight);

    raster::Canvas View() const
    {
        return {
            pixels.get(), width, {0, 0, width, height}
        };
    }

    int width;
    int height;
    std::unique_ptr<raster::Color[]> pixels;
};

enum class GdiKind { Pen, Brush, Font, Bitmap };

// One drawing object, counted by its handle and by the contexts that have it selected: a deleted
// object goes when the last context lets it go.
struct GdiRecord
{
    explicit GdiRecord(GdiKind givenKind);
    GdiRecord(const GdiRecord&) = delete;
    GdiRecord& operator=(const GdiRecord&) = delete;
    ~GdiRecord();

    GdiKind kind;
    int references = 1;
    CGdiObject* attached = nullptr;        // the object a host made
    std::unique_ptr<CGdiObject> temporary; // the one the framework lends
    DcRecord* selectedInto = nullptr;      // bitmaps: one context at a time

    bool isNull = false; // draws nothing
    raster::Stroke stroke;
    raster::Color fill = 0;
    FontRequest font;
    std::shared_ptr<Image> image;
};

// A counted reference to a drawing object.
class GdiReference
{
public:
    GdiReference() = default;
    explicit GdiReference(GdiRecord* record) : m_record(record)
    {
        if (m_record) ++m_record->references;
    }
    GdiReference(GdiReference&& other) noexcept : m_record(std::exchange(other.m_record, nullptr))
    {}
    GdiReference& operator=(GdiReference&& other) noexcept
    {
        std::swap(m_record, other.m_record);
        return *this;
    }
    ~GdiReference() { Release(m_record); }

    GdiRecord* Get() const { return m_record; }
    GdiRecord* operator->() const { return m_record; }

    static void Release(GdiRecord* record);

private:
    GdiRecord* m_record = nullptr;
};

GdiRecord* StockRecord(int index);

// What a context in memory has selected before its first bitmap: a bitmap without a picture, the
// same for all contexts.
GdiRecord* EmptyBitmap();

// A device context: where it draws and with what.
struct DcRecord
{
    DcRecord();
    DcRecord(const DcRecord&) = delete;
    DcRecord& operator=(const DcRecord&) = delete;
    ~DcRecord();

    raster::Canvas Target() const; // empty without a picture
    void Touched() const;          // the window's picture has changed

    std::shared_ptr<Image> image; // the bitmap's or the window's
    raster::Box clip;             // what of it may be drawn on
    WindowRecord* window = nullptr;
    GdiReference bitmap;
    GdiReference pen;
    GdiReference brush;
    GdiReference font;
    GdiReference retired; // selected last: what SelectObject returns stays, even when deleted
    COLORREF textColor = RGB(0, 0, 0);
    COLORREF backColor = RGB(255, 255, 255);
    int backMode = OPAQUE;
    POINT position{0, 0};
    CDC* attached = nullptr;
    std::unique_ptr<CDC> temporary;
};

// What windows made alike have in common.
struct WindowClass
{
    std::wstring name;
    UINT style = 0;
    bool hasBackground = false;
    raster::Color background = 0;
};

// One window. Its picture holds the client area and keeps what was drawn until the next paint.
struct WindowRecord : WindowEvents
{
    WindowRecord() = default;
    WindowRecord(const WindowRecord&) = delete;
    WindowRecord& operator=(const WindowRecord&) = delete;
    ~WindowRecord() override;

    // What the toolkit reports.
    void OnNativePaint() override;
    void OnNativeResize(int width, int height) override;
    void OnNativeClose() override;
    void OnNativeTimer(std::uintptr_t id) override;
    void OnNativeMouse(Mouse what, int x, int y) override;
    raster::Canvas ClientPicture() const override;
    std::vector<FramePiece> Frame() const override;
    int FrameWidth() const override;

    int ClientWidth() const;
    int ClientHeight() const;
    bool IsShown() const; // with all its ancestors
    void Resize(int width, int height);
    void Invalidate(raster::Box box, bool erase);
    void Paint(); // sends the paint message when something is invalid and the window is shown
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam);

    // The last call of a window's life: the record is gone by then.
    static void TellGone(CWnd& window);

    DcRecord* LendContext();
    bool TakeBack(const DcRecord* context);

    const WindowClass* windowClass = nullptr;
    std::vector<CWnd*> attached; // the last one answers messages
    std::unique_ptr<CWnd> temporary;
    WindowRecord* parent = nullptr;
    std::vector<WindowRecord*> children;
    UINT_PTR id = 0;
    DWORD style = 0;
    DWORD exStyle = 0;
    POINT origin{0, 0}; // in the parent's client area, or on the screen
    int width = 0;      // frame included
    int height = 0;
    std::wstring text;
    GdiReference font;
    std::shared_ptr<Image> image;
    raster::Box invalid;
    bool erase = false;
    bool isPainting = false;
    bool presentRequested = false;
    std::vector<std::unique_ptr<DcRecord>> lent; // oldest first
    std::unique_ptr<NativeWindow> native;
};

// All windows and window classes there are, held by the toolkit's connection.
struct WindowRegistry
{
    std::vector<std::unique_ptr<WindowRecord>> windows;
    std::vector<std::unique_ptr<WindowClass>> classes;

    const WindowClass* Find(const std::wstring& name) const;
    bool Holds(const WindowRecord* window) const;
};

WindowRegistry& Windows();

// Ends a window and its children.
void Destroy(WindowRecord* window);

} // namespace framework
